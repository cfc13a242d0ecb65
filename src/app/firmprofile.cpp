#include "firmprofile.h"

#include "data/sqlerror.h"
#include "version.h"

#include <QSqlQuery>
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
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT * FROM ZarekCfg ORDER BY id")))
        return {std::nullopt, sqlErrorMessage(QStringLiteral("ГРЕШКА при четене!"), query.lastError())};
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
    return {profile, std::nullopt};
}

QString mainWindowTitle(const FirmProfile &profile)
{
    return QStringLiteral("Зарек ") + version::text() + QStringLiteral(" - ") + profile.UserName;
}

}
