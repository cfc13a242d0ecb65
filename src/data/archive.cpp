#include "archive.h"

#include "data/archivesnapshot.h"
#include "data/databaseconfig.h"
#include "data/dialect.h"
#include "data/schema.h"
#include "data/sqlitefile.h"

#include <QDir>
#include <QFileInfo>
#include <system_error>

namespace zarek {

using namespace archiving;

namespace {

// True when path names the live SQLite database or one of its side files: an archive written
// there would replace the database under its own open connection.
bool isLiveDatabase(const QSqlDatabase &db, const QString &path)
{
    if (dialectOf(db) != Dialect::SQLite)
        return false;
    QString target = QFileInfo(path).absoluteFilePath();
    for (const char *side : {"-wal", "-shm", "-journal"}) {
        if (target.endsWith(QLatin1String(side)))
            target.chop(int(qstrlen(side)));
    }
    const QString live = QFileInfo(db.databaseName()).absoluteFilePath();
    if (QDir::cleanPath(target) == QDir::cleanPath(live))
        return true;
    std::error_code error;
    return std::filesystem::equivalent(fsPath(target), fsPath(live), error) && !error;
}

}

QString archiveErrorTitle()
{
    return QStringLiteral("ГРЕШКА при запис на данни!");
}

QString restoreErrorTitle()
{
    return QStringLiteral("ГРЕШКА при зареждане на данни!");
}

QString yearCloseErrorTitle()
{
    return QStringLiteral("ГРЕШКА при приключване на годината!");
}

const QList<SchemaTable> &schemaTables()
{
    static const QList<SchemaTable> tables = [] {
        QList<SchemaTable> list;
        PrivateConnection memory(QStringLiteral(":memory:"));
        QSqlDatabase db = memory.db();
        if (!db.isOpen() || upgradeSchema(db))
            return list;
        QStringList names;
        {
            QSqlQuery query(db);
            query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' "
                                      "AND name <> 'zarek_schema' ORDER BY rowid"));
            while (query.next())
                names.append(query.value(0).toString());
        }
        for (const QString &name : std::as_const(names)) {
            SchemaTable table{name, {}};
            QSqlQuery info(db);
            info.exec(QStringLiteral("PRAGMA table_info(%1)").arg(quoted(name)));
            while (info.next())
                table.columns.append(info.value(1).toString());
            list.append(table);
        }
        return list;
    }();
    return tables;
}

QString archiveFolder(const QSqlDatabase &db)
{
    if (dialectOf(db) == Dialect::SQLite)
        return QFileInfo(db.databaseName()).absolutePath();
    return QFileInfo(DatabaseConfig::defaultSqlite().sqlitePath).absolutePath();
}

Checked<RowCounts> writeArchive(QSqlDatabase db, const QString &path, const ArchiveProgress &progress)
{
    const QString request = QStringLiteral("Моля, изберете друго място или освободете място на диска!");
    const auto refusal = [&](const QString &fault) {
        return UserMessage::twoLines(archiveErrorTitle(), fault, request, UserMessage::Icon::Critical);
    };
    const QFileInfo target(path);
    if (path.trimmed().isEmpty())
        return refusal(QStringLiteral("Не е посочен файл за архива!"));
    if (isLiveDatabase(db, path))
        return UserMessage::twoLines(archiveErrorTitle(),
                                     QStringLiteral("Файлът %1 е текущата база данни!").arg(shown(target.absoluteFilePath())),
                                     QStringLiteral("Моля, изберете друго име за архива!"), UserMessage::Icon::Critical);
    if (!target.absoluteDir().exists())
        return refusal(QStringLiteral("Папката %1 не съществува!").arg(shown(target.absolutePath())));
    if (target.exists() && !target.isFile())
        return refusal(QStringLiteral("%1 не е файл!").arg(shown(target.absoluteFilePath())));

    // The whole file is read first: a damaged page copied into an archive would pass for a good one.
    if (dialectOf(db) == Dialect::SQLite) {
        if (auto damage = checkDatabaseIntegrity(db.databaseName())) {
            damage->title = archiveErrorTitle();
            return *damage;
        }
    }
    removeDeadWorkFiles(target.absolutePath());
    Steps steps(progress, schemaTables().size() + 2);
    RowCounts counts;
    if (auto fault = writeArchiveFile(db, target.absoluteFilePath(), steps, &counts)) {
        if (fault->busy)
            return busyMessage(archiveErrorTitle(), QStringLiteral("Моля, опитайте отново след малко!"));
        return refusal(QStringLiteral("Архивът %1 не може да бъде записан: %2").arg(shown(target.absoluteFilePath()), fault->text));
    }
    steps.finish();
    return counts;
}

}
