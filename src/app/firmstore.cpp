#include "firmstore.h"

#include "courses/coursestore.h"
#include "data/sqlerror.h"
#include "firststart.h"

#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>

namespace zarek {

std::optional<FirmRow> readFirmRow(QSqlDatabase db)
{
    FirmProfileLoad load = LoadFirmProfile(db);
    if (!load.profile)
        return std::nullopt;
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT id, row_version FROM ZarekCfg ORDER BY id")) || !query.next())
        return std::nullopt;
    return FirmRow{query.value(0).toLongLong(), query.value(1).toInt(), *load.profile};
}

std::optional<UserMessage> writeFirmRow(QSqlDatabase db, const FirmRow &row)
{
    const QString title = QStringLiteral("ГРЕШКА при запис!");
    const FirmProfile &p = row.profile;
    QSqlQuery query(db);
    query.prepare(QStringLiteral("UPDATE ZarekCfg SET UserName = ?, UserAdres = ?, UserCity = ?, UserCountry = ?, "
                                 "UserDanN = ?, UserBULSTAT = ?, UserMOL = ?, UserEmail = ?, UserTel = ?, UserGSM = ?, "
                                 "UserURL = ?, row_version = row_version + 1 WHERE id = ? AND row_version = ?"));
    for (const QString &value : {p.UserName, p.UserAdres, p.UserCity, p.UserCountry, p.UserDanN, p.UserBULSTAT,
                                 p.UserMOL, p.UserEmail, p.UserTel, p.UserGSM, p.UserURL})
        query.addBindValue(value);
    query.addBindValue(row.id);
    query.addBindValue(row.rowVersion);
    if (!query.exec())
        return sqlErrorMessage(title, query.lastError());
    if (query.numRowsAffected() != 1)
        return CourseStore::conflictMessage(title);
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
    return std::nullopt;
}

}
