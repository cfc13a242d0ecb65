#include "archivesupport.h"

#include "data/dialect.h"
#include "data/sqlitefile.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlField>
#include <QSqlRecord>
#include <QUuid>
#include <QVariant>
#include <system_error>

#pragma GCC visibility push(hidden)
#include <sqlite3.h>
#pragma GCC visibility pop

#include <QSqlDriver>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace zarek::archiving {

namespace {

const QFile::Permissions privateFile = QFile::ReadOwner | QFile::WriteOwner;

}

QString shown(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

QString quoted(const QString &identifier)
{
    QString inner = identifier;
    inner.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + inner + QLatin1Char('"');
}

QString quotedList(const QStringList &identifiers)
{
    QStringList out;
    for (const QString &identifier : identifiers)
        out.append(quoted(identifier));
    return out.join(QStringLiteral(", "));
}

QString uniqueSuffix()
{
    return QUuid::createUuid().toString(QUuid::Id128).left(12);
}

QString engineText(const QSqlError &error)
{
    QString text = error.databaseText().simplified();
    if (text.isEmpty())
        text = error.text().simplified();
    return text;
}

std::filesystem::path fsPath(const QString &path)
{
    return std::filesystem::path(QFile::encodeName(path).toStdString());
}

Fault engineFault(const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    // SQLite: SQLITE_BUSY (5); PostgreSQL: lock_not_available.
    return {engineText(error), code == QLatin1String("5") || code == QLatin1String("55P03")};
}

QString readOnlyOptions()
{
    return QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=2000");
}

void skipSyncs(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("PRAGMA synchronous = OFF"));
}

void largeCache(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("PRAGMA cache_size = -131072"));
}

std::optional<Fault> resolveNames(QSqlDatabase db, QList<TableNames> &out)
{
    out.clear();
    const bool pg = dialectOf(db) == Dialect::PostgreSQL;
    const QStringList tables = pg ? db.tables(QSql::Tables) : QStringList();
    for (const SchemaTable &table : schemaTables()) {
        TableNames names{table.name, table.name, table.columns, {}};
        if (pg) {
            const auto found = std::find_if(tables.begin(), tables.end(), [&](const QString &name) {
                return name.compare(table.name, Qt::CaseInsensitive) == 0;
            });
            if (found == tables.end())
                return Fault{QStringLiteral("в базата данни няма таблица %1").arg(table.name)};
            names.table = *found;
            const QSqlRecord record = db.record(names.table);
            names.columns.clear();
            for (const QString &column : table.columns) {
                int index = -1;
                for (int i = 0; i < record.count() && index < 0; ++i) {
                    if (record.fieldName(i).compare(column, Qt::CaseInsensitive) == 0)
                        index = i;
                }
                if (index < 0)
                    return Fault{QStringLiteral("в таблица %1 няма поле %2").arg(table.name, column)};
                names.columns.append(record.fieldName(index));
                names.types.append(record.field(index).metaType().id());
            }
        }
        out.append(names);
    }
    return std::nullopt;
}

std::optional<Fault> countRows(QSqlDatabase db, const QList<TableNames> &tables, RowCounts &counts)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    for (const TableNames &table : tables) {
        if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + quoted(table.table)) || !query.next())
            return engineFault(query.lastError());
        counts.insert(table.key, query.value(0).toLongLong());
    }
    return std::nullopt;
}

std::optional<Fault> createEmptyFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, privateFile))
        return Fault{file.errorString()};
    file.close();
    QFile::setPermissions(path, privateFile);
    return std::nullopt;
}

std::optional<Fault> copyFileInto(const QString &from, const QString &to)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly))
        return Fault{source.errorString()};
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::ExistingOnly))
        return Fault{target.errorString()};
    QByteArray buffer(4 << 20, Qt::Uninitialized);
    for (;;) {
        const qint64 read = source.read(buffer.data(), buffer.size());
        if (read < 0)
            return Fault{source.errorString()};
        if (read == 0)
            break;
        if (target.write(buffer.constData(), read) != read)
            return Fault{target.errorString()};
    }
    if (!target.flush())
        return Fault{target.errorString()};
    return std::nullopt;
}

void removeWorkFile(const QString &path)
{
    if (path.isEmpty())
        return;
    QFile::remove(path);
    QFile::remove(path + QStringLiteral("-journal"));
    QFile::remove(path + QStringLiteral("-wal"));
    QFile::remove(path + QStringLiteral("-shm"));
}

int removeDeadWorkFiles(const QString &folder)
{
    const QDir dir(folder);
    if (folder.isEmpty() || !dir.exists())
        return 0;
    const QString mark = WorkFile::workFileMark();
    const QString lockSuffix = WorkFile::workLockSuffix();
    const QString journal = QStringLiteral("-journal");
    int removed = 0;
    const QStringList names =
        dir.entryList({QStringLiteral(".*") + mark + QLatin1Char('*')}, QDir::Files | QDir::Hidden | QDir::System);
    // The work files themselves: each with a lock its owner no longer holds, or with none at all.
    for (const QString &name : names) {
        if (name.endsWith(lockSuffix) || name.endsWith(journal))
            continue;
        const QString path = dir.filePath(name);
        QLockFile lock(path + lockSuffix);
        lock.setStaleLockTime(0);
        if (!lock.tryLock(0))
            continue;  // a running copy's
        removeWorkFile(path);
        lock.unlock();
        ++removed;
    }
    // What is left of a dead copy: a journal without its file, a lock without its file.
    for (const QString &name : names) {
        const QString path = dir.filePath(name);
        if (name.endsWith(journal) && !QFileInfo::exists(path.chopped(journal.size()))) {
            QFile::remove(path);
        } else if (name.endsWith(lockSuffix) && !QFileInfo::exists(path.chopped(lockSuffix.size()))) {
            QLockFile lock(path);
            lock.setStaleLockTime(0);
            if (lock.tryLock(0))
                lock.unlock();
        }
    }
    return removed;
}

void syncToDisk(const QString &path)
{
#ifdef Q_OS_UNIX
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
#else
    Q_UNUSED(path);
#endif
}

std::optional<Fault> moveInto(const QString &from, const QString &to)
{
    std::error_code error;
    std::filesystem::rename(fsPath(from), fsPath(to), error);
    if (error)
        return Fault{QString::fromLocal8Bit(error.message().c_str())};
    return std::nullopt;
}

QString freeName(const QString &folder, const QString &base, const QString &suffix)
{
    const QDir dir(folder);
    QString path = dir.filePath(base + suffix);
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = dir.filePath(QStringLiteral("%1 (%2)%3").arg(base).arg(n).arg(suffix));
    return path;
}

std::optional<Fault> ensureFolder(const QString &folder)
{
    // Made private, as the program's data folder is: the archives hold the firm's whole data.
    if (auto failure = prepareDatabaseFolder(QDir(folder).filePath(QStringLiteral("archive")), false))
        return Fault{failure->text.section(QLatin1Char('\n'), 0, 0)};
    return std::nullopt;
}

std::optional<Fault> checkRecordedVersions(QSqlQuery &query, QList<int> &versions)
{
    versions.clear();
    if (!query.exec(QStringLiteral("SELECT DISTINCT version FROM zarek_schema ORDER BY version")))
        return engineFault(query.lastError());
    while (query.next())
        versions.append(query.value(0).toInt());
    query.finish();
    return std::nullopt;
}

std::optional<Fault> checkWrittenArchive(const QString &path, const RowCounts &expected)
{
    PrivateConnection archive(path, readOnlyOptions());
    QSqlDatabase db = archive.db();
    if (!db.isOpen())
        return engineFault(db.lastError());
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next())
        return engineFault(query.lastError());
    if (query.value(0).toString() != QLatin1String("ok"))
        return Fault{QStringLiteral("записаният файл не премина проверката")};
    query.finish();
    QList<int> versions;
    if (auto fault = checkRecordedVersions(query, versions))
        return fault;
    if (versions.isEmpty())
        return Fault{QStringLiteral("в записания файл няма версия на схемата")};
    for (const SchemaTable &table : schemaTables()) {
        if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + quoted(table.name)) || !query.next())
            return engineFault(query.lastError());
        const qint64 rows = query.value(0).toLongLong();
        if (rows != expected.value(table.name))
            return Fault{QStringLiteral("в записаната таблица %1 има %2 реда вместо %3")
                             .arg(table.name)
                             .arg(rows)
                             .arg(expected.value(table.name))};
    }
    return std::nullopt;
}

std::optional<Fault> dropIndexes(QSqlDatabase db, const QString &schema, const QString &table, QStringList *recreate)
{
    QSqlQuery query(db);
    QString sql = QStringLiteral("SELECT name, sql FROM %1.sqlite_master WHERE type = 'index' AND sql IS NOT NULL").arg(schema);
    if (!table.isEmpty())
        sql += QStringLiteral(" AND tbl_name = ?");
    query.prepare(sql);
    if (!table.isEmpty())
        query.addBindValue(table);
    if (!query.exec())
        return engineFault(query.lastError());
    QStringList drops;
    while (query.next()) {
        drops.append(QStringLiteral("DROP INDEX %1.%2").arg(schema, quoted(query.value(0).toString())));
        recreate->append(query.value(1).toString());
    }
    query.finish();
    for (const QString &drop : std::as_const(drops)) {
        if (!query.exec(drop))
            return engineFault(query.lastError());
    }
    return std::nullopt;
}

pg_conn *libpqConnection(const QSqlDatabase &db)
{
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    // The driver names the type by its typedef or by the struct behind it, as Qt's build saw it.
    if (!handle.isValid() || (qstrcmp(handle.typeName(), "PGconn*") != 0 && qstrcmp(handle.typeName(), "pg_conn*") != 0))
        return nullptr;
    return *static_cast<pg_conn *const *>(handle.constData());
}

sqlite3 *sqliteHandle(const QSqlDatabase &db)
{
    const QVariant handle = db.driver() ? db.driver()->handle() : QVariant();
    if (!handle.isValid() || qstrcmp(handle.typeName(), "sqlite3*") != 0)
        return nullptr;
    return *static_cast<sqlite3 *const *>(handle.constData());
}

PageCopy::PageCopy(QSqlDatabase source, QSqlDatabase target) : m_source(std::move(source)), m_target(std::move(target)) {}

PageCopy::~PageCopy()
{
    if (m_backup)
        sqlite3_backup_finish(m_backup);  // an unfinished copy: the target's transaction is rolled back
}

std::optional<Fault> PageCopy::step(int pages, bool last)
{
    sqlite3 *source = sqliteHandle(m_source);
    sqlite3 *target = sqliteHandle(m_target);
    if (!source || !target)
        return Fault{QStringLiteral("няма връзка с базата данни")};
    if (!m_backup) {
        m_backup = sqlite3_backup_init(target, "main", source, "main");
        if (!m_backup)
            return Fault{QString::fromUtf8(sqlite3_errmsg(target))};
    }
    const int code = sqlite3_backup_step(m_backup, pages);
    if (code == SQLITE_DONE || (code == SQLITE_OK && !last))
        return std::nullopt;
    sqlite3_backup_finish(m_backup);
    m_backup = nullptr;
    const int primary = code & 0xff;
    QString text = QString::fromUtf8(sqlite3_errstr(code));
    if (code == SQLITE_OK)
        text = QStringLiteral("копието на страниците не е завършено");
    return Fault{text, primary == SQLITE_BUSY || primary == SQLITE_LOCKED};
}

std::optional<Fault> PageCopy::lock()
{
    return step(0, false);
}

std::optional<Fault> PageCopy::copyAll()
{
    if (auto fault = step(-1, true))
        return fault;
    const int code = sqlite3_backup_finish(m_backup);
    m_backup = nullptr;
    if (code != SQLITE_OK)
        return Fault{QString::fromUtf8(sqlite3_errstr(code)), (code & 0xff) == SQLITE_BUSY};
    return std::nullopt;
}

std::optional<Fault> useRollbackJournal(QSqlDatabase db)
{
    QSqlQuery query(db);
    // The header is read first: a file marked for WAL opens in it, and only then can be taken out.
    if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM sqlite_master")) || !query.next())
        return engineFault(query.lastError());
    if (!query.exec(QStringLiteral("PRAGMA journal_mode = DELETE")) || !query.next())
        return engineFault(query.lastError());
    if (query.value(0).toString().compare(QLatin1String("delete"), Qt::CaseInsensitive) != 0)
        return Fault{QStringLiteral("файлът остана в режим %1").arg(query.value(0).toString())};
    return std::nullopt;
}

std::optional<Fault> execAll(QSqlDatabase db, const QStringList &statements)
{
    QSqlQuery query(db);
    for (const QString &statement : statements) {
        if (!query.exec(statement))
            return engineFault(query.lastError());
    }
    return std::nullopt;
}

UserMessage busyMessage(const QString &title, const QString &request)
{
    return UserMessage::twoLines(title, QStringLiteral("Базата данни е заета от друго копие на програмата!"), request,
                                 UserMessage::Icon::Critical);
}

}
