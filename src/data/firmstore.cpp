#include "firmstore.h"

#include "core/eik.h"
#include "data/query.h"
#include "data/sqlerror.h"

#include <QSqlRecord>
#include <QVariant>

namespace zarek {

namespace {

QString optionalField(const QVariant &value)
{
    const QString trimmed = value.toString().trimmed();
    return trimmed.isEmpty() ? QStringLiteral(" ") : trimmed;
}

}

FirmProfileLoad LoadFirmProfile(QSqlDatabase &db)
{
    Query query(db, QStringLiteral("SELECT * FROM ZarekCfg ORDER BY id"));
    if (auto failure = query.run(QStringLiteral("ГРЕШКА при четене!")))
        return {std::nullopt, failure};
    if (!query.next())
        return {std::nullopt, UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Липсват данни!"),
                                                    QStringLiteral("Излизам от програмата!"),
                                                    UserMessage::Icon::Exclamation)};
    const QSqlRecord row = query.record();
    FirmProfile profile;
    profile.UserName = row.value(QStringLiteral("UserName")).toString().trimmed();
    profile.UserAdres = row.value(QStringLiteral("UserAdres")).toString().trimmed();
    profile.UserTel = row.value(QStringLiteral("UserTel")).toString().trimmed();
    profile.UserGSM = row.value(QStringLiteral("UserGSM")).toString().trimmed();
    profile.UserCity = row.value(QStringLiteral("UserCity")).toString().trimmed();
    profile.UserMOL = optionalField(row.value(QStringLiteral("UserMOL")));
    profile.UserBULSTAT = optionalField(row.value(QStringLiteral("UserBULSTAT")));
    profile.UserDanN = optionalField(row.value(QStringLiteral("UserDanN")));
    profile.UserEmail = optionalField(row.value(QStringLiteral("UserEmail")));
    profile.UserCountry = optionalField(row.value(QStringLiteral("UserCountry")));
    profile.UserURL = optionalField(row.value(QStringLiteral("UserURL")));
    for (auto [column, member] : {std::pair{"UserIBAN", &FirmProfile::UserIBAN}, {"UserBank", &FirmProfile::UserBank},
                                  {"UserBIC", &FirmProfile::UserBIC}, {"UserMiasto", &FirmProfile::UserMiasto},
                                  {"UserSastavil", &FirmProfile::UserSastavil}})
        profile.*member = row.value(QLatin1String(column)).toString().trimmed();
    return {profile, std::nullopt};
}

std::optional<FirmRow> readFirmRow(QSqlDatabase db)
{
    FirmProfileLoad load = LoadFirmProfile(db);
    if (!load.profile)
        return std::nullopt;
    Query query(db, QStringLiteral("SELECT id, row_version FROM ZarekCfg ORDER BY id"));
    if (query.run(QString()) || !query.next())
        return std::nullopt;
    return FirmRow{query.value(0).toLongLong(), query.value(1).toInt(), *load.profile};
}

std::optional<UserMessage> writeFirmRow(QSqlDatabase db, const FirmRow &row)
{
    const QString title = QStringLiteral("ГРЕШКА при запис!");
    const FirmProfile &p = row.profile;
    // The account an invoice names is refused here as on the screen: a wrong one is never written.
    if (!p.UserIBAN.trimmed().isEmpty()) {
        if (auto bad = checkIban(p.UserIBAN))
            return bad;
    }
    if (auto failure = executeOnVersion(
            db, title,
            QStringLiteral("UPDATE ZarekCfg SET UserName = ?, UserAdres = ?, UserCity = ?, UserCountry = ?, "
                           "UserDanN = ?, UserBULSTAT = ?, UserMOL = ?, UserEmail = ?, UserTel = ?, "
                           "UserGSM = ?, UserURL = ?, UserIBAN = ?, UserBank = ?, UserBIC = ?, UserMiasto = ?, "
                           "UserSastavil = ?, row_version = row_version + 1 WHERE id = ? AND row_version = ?"),
            {p.UserName, p.UserAdres, p.UserCity, p.UserCountry, p.UserDanN, p.UserBULSTAT, p.UserMOL, p.UserEmail,
             p.UserTel, p.UserGSM, p.UserURL, p.UserIBAN.trimmed(), p.UserBank.trimmed(), p.UserBIC.trimmed(),
             p.UserMiasto.trimmed(), p.UserSastavil.trimmed(), row.id, row.rowVersion}))
        return failure;
    return std::nullopt;
}

std::optional<UserMessage> acceptFirmFields(const FirmProfile &typed, FirmProfile &profile)
{
    const std::pair<const QString *, QString *> required[] = {
        {&typed.UserName, &profile.UserName}, {&typed.UserAdres, &profile.UserAdres}, {&typed.UserCity, &profile.UserCity},
        {&typed.UserTel, &profile.UserTel},   {&typed.UserGSM, &profile.UserGSM}};
    for (int i = 0; i < 5; ++i) {
        const auto &[from, to] = required[i];
        if (from->trimmed().isEmpty())
            return requiredFirmFieldMessage(i);
        *to = from->trimmed();  // stored at once: a later refusal leaves the earlier fields changed
    }
    const std::pair<const QString *, QString *> optional[] = {
        {&typed.UserMOL, &profile.UserMOL},     {&typed.UserBULSTAT, &profile.UserBULSTAT},
        {&typed.UserDanN, &profile.UserDanN},   {&typed.UserEmail, &profile.UserEmail},
        {&typed.UserCountry, &profile.UserCountry}, {&typed.UserURL, &profile.UserURL}};
    for (const auto &[from, to] : optional)
        *to = from->trimmed().isEmpty() ? QStringLiteral(" ") : from->trimmed();
    for (QString FirmProfile::*member : {&FirmProfile::UserIBAN, &FirmProfile::UserBank, &FirmProfile::UserBIC,
                                         &FirmProfile::UserMiasto, &FirmProfile::UserSastavil})
        profile.*member = (typed.*member).trimmed();
    return std::nullopt;
}

}
