#include "database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlQuery>

namespace zarek {

namespace {

bool prepareSqliteFolder(const QString &path, QString *error)
{
    const QString folder = QFileInfo(path).absolutePath();
    if (QDir(folder).exists())
        return true;
    if (!QDir().mkpath(folder)) {
        if (error)
            *error = QStringLiteral("Не може да се създаде папката %1").arg(folder);
        return false;
    }
    QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return true;
}

bool execPragma(QSqlDatabase &db, const QString &pragma, QString *error)
{
    QSqlQuery query(db);
    if (query.exec(pragma))
        return true;
    if (error)
        *error = query.lastError().text();
    return false;
}

}

QSqlDatabase openDatabase(const DatabaseConfig &config, const QString &connectionName, QString *error)
{
    if (QSqlDatabase::contains(connectionName))
        QSqlDatabase::removeDatabase(connectionName);

    if (config.engine == DatabaseConfig::Engine::PostgreSQL) {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), connectionName);
        db.setHostName(config.host);
        db.setPort(config.port);
        db.setDatabaseName(config.databaseName);
        db.setUserName(config.user);
        db.setPassword(config.password);
        if (!db.open() && error)
            *error = db.lastError().text();
        return db;
    }

    if (!prepareSqliteFolder(config.sqlitePath, error))
        return QSqlDatabase();
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connectionName);
    db.setDatabaseName(config.sqlitePath);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
    if (!db.open()) {
        if (error)
            *error = db.lastError().text();
        return db;
    }
    // chmod touches no descriptor of the open database, so SQLite's locks are safe.
    QFile::setPermissions(config.sqlitePath, QFile::ReadOwner | QFile::WriteOwner);
    if (!execPragma(db, QStringLiteral("PRAGMA journal_mode=WAL"), error)
        || !execPragma(db, QStringLiteral("PRAGMA synchronous=NORMAL"), error)) {
        db.close();
    }
    return db;
}

bool databaseIsNew(const DatabaseConfig &config)
{
    return config.engine == DatabaseConfig::Engine::SQLite && !QFileInfo::exists(config.sqlitePath);
}

void closeDatabase(const QString &connectionName)
{
    {
        QSqlDatabase db = QSqlDatabase::database(connectionName, false);
        if (db.isOpen())
            db.close();
    }
    QSqlDatabase::removeDatabase(connectionName);
}

}
