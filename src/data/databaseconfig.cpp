#include "databaseconfig.h"

#include "data/schema.h"

#include <QDir>
#include <QRegularExpression>
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

QString DatabaseConfig::redacted(const QString &text)
{
    QString out = text;
    const qsizetype scheme = out.indexOf(QLatin1String("://"));
    if (scheme >= 0) {
        // A host never holds '@', so the last one ends the user part, however odd the password.
        const qsizetype at = out.lastIndexOf(QLatin1Char('@'));
        const qsizetype colon = out.indexOf(QLatin1Char(':'), scheme + 3);
        if (at > scheme && colon >= 0 && colon < at)
            out.replace(colon + 1, at - colon - 1, QStringLiteral("***"));
    }
    static const QRegularExpression passwordParameter(QStringLiteral("(password=)[^&\\s]*"),
                                                      QRegularExpression::CaseInsensitiveOption);
    out.replace(passwordParameter, QStringLiteral("\\1***"));
    return out;
}

bool holdsPassword(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (!trimmed.startsWith(QLatin1String("postgresql://"), Qt::CaseInsensitive)
        && !trimmed.startsWith(QLatin1String("postgres://"), Qt::CaseInsensitive))
        return false;
    return DatabaseConfig::redacted(text) != text || text.contains(QLatin1String(":***@"))
           || text.contains(QLatin1String("password=***"), Qt::CaseInsensitive);
}

std::optional<UserMessage> commandLinePasswordMessage(const QString &commandLineValue)
{
    if (!holdsPassword(commandLineValue))
        return std::nullopt;
    return UserMessage::twoLines(
        databaseOpenTitle(),
        QStringLiteral("Паролата на базата данни не се пише в командния ред: той се вижда от всички потребители на "
                       "компютъра!"),
        QStringLiteral("Моля, задайте адреса без парола (postgresql://потребител@сървър:порт/база), а паролата запишете "
                       "в ~/.pgpass (ред сървър:порт:база:потребител:парола, файлът с права 0600), във файла, посочен "
                       "в PGPASSFILE, или в PGPASSWORD (вижте README)."),
        UserMessage::Icon::Critical);
}

std::optional<DatabaseConfig> resolveDatabaseConfig(const QString &commandLineValue, const QString &environmentValue)
{
    if (!commandLineValue.trimmed().isEmpty()) {
        if (holdsPassword(commandLineValue))
            return std::nullopt;
        return DatabaseConfig::fromText(commandLineValue);
    }
    if (!environmentValue.trimmed().isEmpty())
        return DatabaseConfig::fromText(environmentValue);
    return DatabaseConfig::defaultSqlite();
}

}
