#include "firststart.h"

#include "data/sqlerror.h"
#include "data/transaction.h"
#include "app/passwordhash.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

int rowCount(QSqlDatabase db, const QString &table)
{
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + table) || !query.next())
        return 0;
    return query.value(0).toInt();
}

QString optional(const QString &text)
{
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? QStringLiteral(" ") : trimmed;
}

}

bool needsFirstStart(QSqlDatabase db)
{
    return rowCount(db, QStringLiteral("ZarekCfg")) == 0 || rowCount(db, QStringLiteral("Users")) == 0;
}

std::optional<UserMessage> createFirmAndAdministrator(QSqlDatabase db, const FirmProfile &firm,
                                                       const QString &adminName, const QString &password)
{
    const QString title = QStringLiteral("ГРЕШКА при запис!");
    if (const auto missing = checkRequiredFirmFields(firm))
        return missing;
    if (adminName.trimmed().isEmpty() || password.isEmpty())
        return UserMessage::twoLines(QStringLiteral("   ВНИМАНИЕ!"), QStringLiteral("Няма име или парола на администратора!"),
                                     QStringLiteral("Моля, въведете име и парола на администратора!"),
                                     UserMessage::Icon::Critical);
    Transaction transaction(db);
    QSqlQuery query(db);
    if (rowCount(db, QStringLiteral("ZarekCfg")) == 0) {
        query.prepare(QStringLiteral("INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserCountry, UserDanN, "
                                     "UserBULSTAT, UserMOL, UserEmail, UserTel, UserGSM, UserURL) "
                                     "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
        for (const QString &value : {firm.UserName.trimmed(), firm.UserAdres.trimmed(), firm.UserCity.trimmed(),
                                     optional(firm.UserCountry), optional(firm.UserDanN), optional(firm.UserBULSTAT),
                                     optional(firm.UserMOL), optional(firm.UserEmail), firm.UserTel.trimmed(),
                                     firm.UserGSM.trimmed(), optional(firm.UserURL)})
            query.addBindValue(value);
        if (!query.exec())
            return sqlErrorMessage(title, query.lastError());
    }
    query.prepare(QStringLiteral("INSERT INTO Users (Ime, Password, Vid) VALUES (?, ?, 'A')"));
    query.addBindValue(adminName.trimmed());
    query.addBindValue(hashPassword(password));
    if (!query.exec())
        return sqlErrorMessage(title, query.lastError());
    if (!transaction.commit())
        return sqlErrorMessage(title, db.lastError());
    return std::nullopt;
}

}
