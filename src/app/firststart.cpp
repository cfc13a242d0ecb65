#include "firststart.h"

#include "app/passwordhash.h"
#include "core/textcheck.h"
#include "data/changeoverstore.h"
#include "data/query.h"
#include "data/schema.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QVariant>

namespace zarek {

namespace {

const QString saveTitle = QStringLiteral("ГРЕШКА при запис!");

QString optional(const QString &text)
{
    const QString trimmed = text.trimmed();
    return trimmed.isEmpty() ? QStringLiteral(" ") : trimmed;
}

UserMessage lockFailure(const Transaction &transaction)
{
    return transaction.timedOut() ? databaseBusyMessage() : sqlErrorMessage(saveTitle, transaction.lastError());
}

}

namespace {

// What the start state reads, as columns of one statement: firm, user, any data.
QString startStateColumns()
{
    QStringList data;
    for (const QString &table : mainTables())
        data.append(QStringLiteral("EXISTS (SELECT 1 FROM %1)").arg(table));
    return QStringLiteral("EXISTS (SELECT 1 FROM ZarekCfg), EXISTS (SELECT 1 FROM Users), %1")
        .arg(data.join(QStringLiteral(" OR ")));
}

StartState startStateAt(const Query &query, int first)
{
    StartState state;
    state.hasFirm = query.value(first).toBool();
    state.hasUser = query.value(first + 1).toBool();
    state.hasData = query.value(first + 2).toBool();
    return state;
}

// The common start, a database already at this program's schema, in one statement and without
// the write lock: nothing is written, and a schema once current stays so. Anything else (a new,
// older, newer or foreign database, or a failure) gives nothing, and the locked way decides.
std::optional<StartState> readCurrentStartState(QSqlDatabase db)
{
    Query query(db, QStringLiteral("SELECT CASE WHEN %1 THEN 1 ELSE 0 END, %2").arg(schemaIsCurrentSql(), startStateColumns()));
    if (query.runOnce(QString()) || !query.next() || query.value(0).toInt() != 1)
        return std::nullopt;
    return startStateAt(query, 1);
}

}

StartState readStartState(QSqlDatabase db)
{
    // One statement: on a server each is a round trip, and the start makes this one before sign-in.
    Query query(db, QStringLiteral("SELECT ") + startStateColumns());
    if (query.runOnce(QString()) || !query.next())
        return {};
    return startStateAt(query, 0);
}

bool needsFirstStart(QSqlDatabase db)
{
    return readStartState(db).needsFirstStart();
}

Checked<StartState> prepareDatabase(QSqlDatabase db)
{
    if (const std::optional<StartState> current = readCurrentStartState(db))
        return *current;
    Transaction lock(db, Transaction::Lock::Writer);
    if (!lock.isActive())
        return lock.timedOut() ? databaseBusyMessage()
                               : sqlErrorMessage(databaseOpenTitle(), lock.lastError());
    if (const auto failure = upgradeSchema(db))
        return *failure;
    const StartState state = readStartState(db);
    if (!lock.commit())
        return sqlErrorMessage(databaseOpenTitle(), lock.lastError());
    return state;
}

UserMessage administratorExistsMessage()
{
    return UserMessage::twoLines(QStringLiteral("Информация"),
                                 QStringLiteral("Базата данни вече е подготвена от друго копие на програмата!"),
                                 QStringLiteral("Влезте с името и паролата, въведени там."),
                                 UserMessage::Icon::Information);
}

UserMessage databaseHoldsDataMessage()
{
    return UserMessage::twoLines(QStringLiteral("   ВНИМАНИЕ!"),
                                 QStringLiteral("Базата данни вече съдържа данни!"),
                                 QStringLiteral("Демонстрационна фирма се създава само в нова база данни."),
                                 UserMessage::Icon::Critical);
}

std::optional<UserMessage> createFirmAndAdministrator(QSqlDatabase db, const FirmProfile &firm,
                                                       const QString &adminName, const QString &password,
                                                       bool euroFromStart, const QDate &today)
{
    const QString name = adminName.trimmed();
    // The slow hash is made before the lock is taken.
    const QString hash = password.isEmpty() ? QString() : hashPassword(password);

    Transaction transaction(db, Transaction::Lock::Writer);
    if (!transaction.isActive())
        return lockFailure(transaction);
    const StartState state = readStartState(db);
    if (state.hasUser)
        return administratorExistsMessage();
    if (!state.hasFirm) {
        if (const auto missing = checkRequiredFirmFields(firm))
            return missing;
    }
    if (name.isEmpty() || password.isEmpty())
        return UserMessage::twoLines(QStringLiteral("   ВНИМАНИЕ!"), QStringLiteral("Няма име или парола на администратора!"),
                                     QStringLiteral("Моля, въведете име и парола на администратора!"),
                                     UserMessage::Icon::Critical);
    QStringList texts{adminName, password};
    if (!state.hasFirm) {
        for (const QString *field : {&firm.UserName, &firm.UserAdres, &firm.UserCity, &firm.UserCountry, &firm.UserDanN,
                                     &firm.UserBULSTAT, &firm.UserMOL, &firm.UserEmail, &firm.UserTel, &firm.UserGSM,
                                     &firm.UserURL})
            texts.append(*field);
    }
    if (auto refused = checkTypedTexts(texts, QStringLiteral("   ВНИМАНИЕ!")))
        return refused;

    if (!state.hasFirm) {
        if (auto failure = execute(db, saveTitle,
                                   QStringLiteral("INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserCountry, "
                                                  "UserDanN, UserBULSTAT, UserMOL, UserEmail, UserTel, UserGSM, "
                                                  "UserURL) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                                   {firm.UserName.trimmed(), firm.UserAdres.trimmed(), firm.UserCity.trimmed(),
                                    optional(firm.UserCountry), optional(firm.UserDanN), optional(firm.UserBULSTAT),
                                    optional(firm.UserMOL), optional(firm.UserEmail), firm.UserTel.trimmed(),
                                    firm.UserGSM.trimmed(), optional(firm.UserURL)}))
            return failure;
        if (euroFromStart) {
            const Checked<Changeover> recorded = loadChangeover(db);
            if (!recorded)
                return recorded.message();
            if (!recorded.value().isSet()) {
                if (auto failure = recordChangeover(db, euroStartDate(today)))
                    return failure;
            }
        }
    }
    if (auto failure = execute(db, saveTitle, QStringLiteral("INSERT INTO Users (Ime, Password, Vid) VALUES (?, ?, 'A')"),
                               {name, hash}))
        return failure;
    if (!transaction.commit())
        return sqlErrorMessage(saveTitle, transaction.lastError());
    return std::nullopt;
}

}
