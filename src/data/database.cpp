#include "database.h"

#include "data/query.h"
#include "data/sqlitefile.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>

namespace zarek {

namespace {

UserMessage openFailure(const QString &fault, const QString &request)
{
    return UserMessage::twoLines(QStringLiteral("ГРЕШКА при отваряне на базата данни!"), fault, request,
                                 UserMessage::Icon::Critical);
}

// libpq's words, with the password blanked out should they ever quote it.
QString connectionErrorText(const QSqlError &error, const QString &password)
{
    // One line: libpq breaks its messages over lines and indents them with tabs.
    QString text = error.databaseText().simplified();
    if (text.isEmpty())
        text = error.text().simplified();
    if (!password.isEmpty())
        text.replace(password, QStringLiteral("***"));
    return text;
}

Checked<QSqlDatabase> connectPostgreSQL(const DatabaseConfig &config, const QString &connectionName)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connectionName);
    db.setHostName(config.host);
    db.setPort(config.port);
    db.setDatabaseName(config.databaseName);
    db.setUserName(config.user);
    // Without one, libpq looks in PGPASSWORD, ~/.pgpass and PGPASSFILE itself.
    if (!config.password.isEmpty())
        db.setPassword(config.password);
    if (!db.open())
        return openFailure(QStringLiteral("Няма връзка с базата данни %1: %2")
                               .arg(config.describe(), connectionErrorText(db.lastError(), config.password)),
                           QStringLiteral("Моля, проверете адреса, потребителя и паролата!"));
    return db;
}

constexpr int busyTimeoutMs = 10000;  // how long a statement waits for another copy's lock

// Turning a file to WAL upgrades a read lock to a write lock, and SQLite answers "database is locked"
// at once, without its busy handler, while another copy does the same: two copies starting on one
// file met exactly that. Such a statement is tried again for as long as the busy timeout.
bool execWhileBusy(QSqlQuery &query, const QString &statement)
{
    const QDeadlineTimer deadline(busyTimeoutMs);
    while (!query.exec(statement)) {
        const bool busy = (query.lastError().nativeErrorCode().toInt() & 0xFF) == 5;  // SQLITE_BUSY and its kinds
        if (!busy || deadline.hasExpired())
            return false;
        QThread::msleep(10);
    }
    return true;
}

Checked<QSqlDatabase> connectSqlite(const DatabaseConfig &config, const QString &connectionName)
{
    const QString path = config.sqlitePath;
    const bool ownFolder = QFileInfo(path).absolutePath() == QFileInfo(DatabaseConfig::defaultSqlite().sqlitePath).absolutePath();
    if (auto failure = prepareDatabaseFolder(path, ownFolder))
        return *failure;
    if (!QFileInfo::exists(path)) {
        if (auto failure = createDatabaseFile(path))
            return *failure;
    }
    if (auto failure = checkDatabaseFile(path))
        return *failure;

    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
    db.setDatabaseName(path);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(busyTimeoutMs));
    if (!db.open())
        return openFailure(QStringLiteral("Базата данни %1 не може да бъде отворена: %2")
                               .arg(QDir::toNativeSeparators(path), db.lastError().databaseText().simplified()),
                           QStringLiteral("Моля, проверете файла и правата за достъп до него!"));
    QSqlQuery query(db);
    // A statement's own scratch structures (the rows an INSERT … RETURNING gives back, a DISTINCT's
    // index) are kept in memory: as files, each save made and removed one in the temporary folder.
    // Large sorts still spill to files of their own.
    for (const char *pragma : {"PRAGMA journal_mode=WAL", "PRAGMA synchronous=NORMAL", "PRAGMA temp_store=MEMORY"}) {
        if (!execWhileBusy(query, QString::fromLatin1(pragma))) {
            const QString text = query.lastError().databaseText().simplified();
            db.close();
            return openFailure(QStringLiteral("Базата данни %1 не може да бъде отворена: %2")
                                   .arg(QDir::toNativeSeparators(path), text),
                               QStringLiteral("Моля, опитайте отново след малко!"));
        }
    }
    return db;
}

}

Checked<QSqlDatabase> connectDatabase(const DatabaseConfig &config, const QString &connectionName)
{
    if (QSqlDatabase::contains(connectionName)) {
        forgetStatements(connectionName);
        QSqlDatabase::removeDatabase(connectionName);
    }
    if (config.engine == DatabaseConfig::Engine::PostgreSQL)
        return connectPostgreSQL(config, connectionName);
    return connectSqlite(config, connectionName);
}

QSqlDatabase openDatabase(const DatabaseConfig &config, const QString &connectionName, QString *error)
{
    const Checked<QSqlDatabase> db = connectDatabase(config, connectionName);
    if (db)
        return db.value();
    if (error)
        *error = db.message().text;
    return QSqlDatabase::contains(connectionName) ? QSqlDatabase::database(connectionName, false) : QSqlDatabase();
}

bool databaseIsNew(const DatabaseConfig &config)
{
    return config.engine == DatabaseConfig::Engine::SQLite && !QFileInfo::exists(config.sqlitePath);
}

void closeDatabase(const QString &connectionName)
{
    forgetStatements(connectionName);
    {
        QSqlDatabase db = QSqlDatabase::database(connectionName, false);
        if (db.isOpen())
            db.close();
    }
    QSqlDatabase::removeDatabase(connectionName);
}

bool needsPassword(const QString &connectionError)
{
    // libpq: "fe_sendauth: no password supplied", "password authentication failed for user ...".
    return connectionError.contains(QLatin1String("password"), Qt::CaseInsensitive);
}

}
