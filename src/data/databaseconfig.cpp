#include "databaseconfig.h"

#include <QDir>
#include <QStandardPaths>
#include <QUrl>

namespace zarek {

DatabaseConfig DatabaseConfig::defaultSqlite()
{
    DatabaseConfig config;
    QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (folder.isEmpty())
        folder = QDir::homePath() + QStringLiteral("/.local/share/Zarek");
    config.sqlitePath = QDir(folder).filePath(QStringLiteral("Zarek.db"));
    return config;
}

std::optional<DatabaseConfig> DatabaseConfig::fromText(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return std::nullopt;

    if (trimmed.startsWith(QStringLiteral("postgresql://")) || trimmed.startsWith(QStringLiteral("postgres://"))) {
        const QUrl url(trimmed);
        if (!url.isValid() || url.host().isEmpty())
            return std::nullopt;
        DatabaseConfig config;
        config.engine = Engine::PostgreSQL;
        config.host = url.host();
        config.port = url.port(5432);
        config.databaseName = url.path().mid(1);
        config.user = url.userName();
        config.password = url.password();
        if (config.databaseName.isEmpty())
            return std::nullopt;
        return config;
    }

    DatabaseConfig config;
    config.sqlitePath = QDir::cleanPath(QDir::current().absoluteFilePath(trimmed));
    return config;
}

QString DatabaseConfig::describe() const
{
    if (engine == Engine::SQLite)
        return QStringLiteral("SQLite: %1").arg(QDir::toNativeSeparators(sqlitePath));
    return QStringLiteral("PostgreSQL: %1@%2:%3/%4").arg(user, host).arg(port).arg(databaseName);
}

std::optional<DatabaseConfig> resolveDatabaseConfig(const QString &commandLineValue, const QString &environmentValue)
{
    if (!commandLineValue.trimmed().isEmpty())
        return DatabaseConfig::fromText(commandLineValue);
    if (!environmentValue.trimmed().isEmpty())
        return DatabaseConfig::fromText(environmentValue);
    return DatabaseConfig::defaultSqlite();
}

}
