#include "archive.h"

#include "data/databaseconfig.h"
#include "data/dialect.h"
#include "data/schema.h"
#include "data/sqlitefile.h"
#include "data/transaction.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSet>
#include <QSqlError>
#include <QSqlField>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QUuid>
#include <QVariant>
#include <algorithm>
#include <filesystem>
#include <list>
#include <memory>
#include <system_error>

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace zarek {

namespace {

const QFile::Permissions privateFile = QFile::ReadOwner | QFile::WriteOwner;
const QString coursesTable = QStringLiteral("tabl");
const QString firmTable = QStringLiteral("ZarekCfg");
const QString archiveSchema = QStringLiteral("zarek_archive");

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

// The engine's words for a failure, on one line; never the statement.
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

// Why a step failed, in words for the second half of a message; busy when another copy of the
// program held the lock for the whole wait.
struct Fault {
    QString text;
    bool busy = false;
};

Fault engineFault(const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    // SQLite: SQLITE_BUSY (5); PostgreSQL: lock_not_available.
    return {engineText(error), code == QLatin1String("5") || code == QLatin1String("55P03")};
}

// A SQLite connection of its own to one file, removed with it.
class FileConnection {
public:
    explicit FileConnection(const QString &path, const QString &options = QString())
        : m_name(QStringLiteral("zarek_archive_") + uniqueSuffix())
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
        db.setDatabaseName(path);
        db.setConnectOptions(options);
        db.open();
    }
    ~FileConnection()
    {
        {
            QSqlDatabase db = QSqlDatabase::database(m_name, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(m_name);
    }
    FileConnection(const FileConnection &) = delete;
    FileConnection &operator=(const FileConnection &) = delete;

    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

private:
    QString m_name;
};

// A connection of its own to the database of db, removed with it: the work of these commands never
// meets a statement or a transaction a screen left open on the program's connection.
class ClonedConnection {
public:
    explicit ClonedConnection(const QSqlDatabase &db) : m_name(QStringLiteral("zarek_archive_") + uniqueSuffix())
    {
        QSqlDatabase clone = QSqlDatabase::cloneDatabase(db, m_name);
        clone.open();
    }
    ~ClonedConnection()
    {
        {
            QSqlDatabase db = QSqlDatabase::database(m_name, false);
            db.close();
        }
        QSqlDatabase::removeDatabase(m_name);
    }
    ClonedConnection(const ClonedConnection &) = delete;
    ClonedConnection &operator=(const ClonedConnection &) = delete;

    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

private:
    QString m_name;
};

const QString readOnly = QStringLiteral("QSQLITE_OPEN_READONLY;QSQLITE_BUSY_TIMEOUT=2000");

// A file written for this moment only (a working copy): no waiting on the disk for it. Files that
// are kept are synced once, whole, before they take their place.
void skipSyncs(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("PRAGMA synchronous = OFF"));
}

// The names a database gives this system's tables and columns: SQLite's as created; PostgreSQL's
// in its own case (folded to lower case, the quoted tariff columns as written), with their types.
struct TableNames {
    QString key;  // the name in schemaTables()
    QString table;
    QStringList columns;
    QList<int> types;  // PostgreSQL's column types, for the values a restore writes
};

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

// A new, empty file only its owner may read: VACUUM INTO writes into an empty file, and an archive
// holds the firm's whole data.
std::optional<Fault> createEmptyFile(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly, privateFile))
        return Fault{file.errorString()};
    file.close();
    QFile::setPermissions(path, privateFile);
    return std::nullopt;
}

void removeWorkFile(const QString &path)
{
    if (path.isEmpty())
        return;
    QFile::remove(path);
    QFile::remove(path + QStringLiteral("-journal"));
}

// A file of ours beside its place, removed unless it was kept.
class WorkFile {
public:
    explicit WorkFile(const QString &finalPath)
    {
        const QFileInfo target(finalPath);
        m_path = target.absolutePath() + QStringLiteral("/.") + target.fileName() + QStringLiteral(".part-")
                 + uniqueSuffix();
    }
    ~WorkFile()
    {
        if (!m_kept)
            removeWorkFile(m_path);
    }
    WorkFile(const WorkFile &) = delete;
    WorkFile &operator=(const WorkFile &) = delete;

    QString path() const { return m_path; }
    void keep() { m_kept = true; }

private:
    QString m_path;
    bool m_kept = false;
};

// A file or folder's content on disk before it is relied on: SQLite writes the archive unsynced,
// and a rename lasts only once its folder is synced. Only files of ours that no connection holds.
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

// Moves a file into place, replacing what stood there in one step.
std::optional<Fault> moveInto(const QString &from, const QString &to)
{
    std::error_code error;
    std::filesystem::rename(fsPath(from), fsPath(to), error);
    if (error)
        return Fault{QString::fromLocal8Bit(error.message().c_str())};
    return std::nullopt;
}

// base + suffix in folder, or base (2) + suffix and so on: never a name that is taken.
QString freeName(const QString &folder, const QString &base, const QString &suffix)
{
    const QDir dir(folder);
    QString path = dir.filePath(base + suffix);
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = dir.filePath(QStringLiteral("%1 (%2)%3").arg(base).arg(n).arg(suffix));
    return path;
}

// The schema version is a set of steps; an archive records those it has.
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

// A written archive as a restore would read it: undamaged, with this system's schema recorded and
// every table holding the rows counted in the state it was taken from.
std::optional<Fault> checkWrittenArchive(const QString &path, const RowCounts &expected)
{
    FileConnection archive(path, readOnly);
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

// Rows into a table many at a time: one statement a row costs more than the row itself, and on a
// remote server a round trip each. The prepared statements live in a list the caller owns, so
// that a transaction can be rolled back before they are freed (PostgreSQL refuses to free them
// inside an aborted one).
class BatchInsert {
public:
    BatchInsert(QSqlDatabase db, const QString &table, const QStringList &columns, std::list<QSqlQuery> &statements)
        : m_db(std::move(db)), m_columns(int(columns.size())), m_perStatement(std::max(1, 2000 / m_columns)),
          m_head(QStringLiteral("INSERT INTO %1 (%2) VALUES ").arg(quoted(table), quotedList(columns))),
          m_row(QLatin1Char('(') + QStringList(m_columns, QStringLiteral("?")).join(QLatin1Char(',')) + QLatin1Char(')')),
          m_statements(statements)
    {
    }

    // One row's values, in the order of the columns.
    std::optional<Fault> add(const QVariant &value)
    {
        m_pending.append(value);
        if (m_pending.size() == qsizetype(m_perStatement) * m_columns)
            return flush();
        return std::nullopt;
    }

    std::optional<Fault> flush()
    {
        const int rows = int(m_pending.size()) / m_columns;
        if (rows == 0)
            return std::nullopt;
        QSqlQuery *insert = rows == m_perStatement ? m_full : nullptr;
        if (!insert) {
            insert = &m_statements.emplace_back(m_db);
            if (!insert->prepare(m_head + QStringList(rows, m_row).join(QLatin1Char(','))))
                return engineFault(insert->lastError());
            if (rows == m_perStatement)
                m_full = insert;
        }
        for (const QVariant &value : std::as_const(m_pending))
            insert->addBindValue(value);
        m_pending.clear();
        if (!insert->exec())
            return engineFault(insert->lastError());
        return std::nullopt;
    }

private:
    QSqlDatabase m_db;
    int m_columns;
    int m_perStatement;
    QString m_head;
    QString m_row;
    std::list<QSqlQuery> &m_statements;
    QSqlQuery *m_full = nullptr;
    QList<QVariant> m_pending;
};

// The indexes of a SQLite table (or of all tables), dropped for a bulk load; their statements to
// make them again, one sorted build each, which is several times quicker than keeping them up
// row by row. Inside a transaction, a rollback brings them back.
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

std::optional<Fault> execAll(QSqlDatabase db, const QStringList &statements)
{
    QSqlQuery query(db);
    for (const QString &statement : statements) {
        if (!query.exec(statement))
            return engineFault(query.lastError());
    }
    return std::nullopt;
}

// Room for a bulk load's pages: SQLite's small default cache spills them to disk over and over.
void largeCache(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("PRAGMA cache_size = -131072"));
}

// One consistent state of the whole database, held from its row counts to its archive and, for a
// year close, to the deletion of the courses. Its connections are its own.
// SQLite: one connection holds the write lock (other copies' writes wait) and reads the counts;
// another runs VACUUM INTO, which sees the same state, since nobody can write meanwhile.
// PostgreSQL: one repeatable-read transaction reads counts and rows; a year close first locks the
// courses against writes, so a course saved meanwhile waits instead of being deleted unarchived.
class Snapshot {
public:
    Snapshot(QSqlDatabase db, bool forYearClose) : m_db(std::move(db)), m_yearClose(forYearClose) {}
    ~Snapshot()
    {
        m_transaction.reset();  // rolls back what was not committed, before its connection goes
        m_copy.reset();
        m_work.reset();
    }
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

    std::optional<Fault> begin()
    {
        if (!m_db.isOpen())
            return Fault{QStringLiteral("няма връзка с базата данни")};
        m_sqlite = dialectOf(m_db) == Dialect::SQLite;
        if (auto fault = resolveNames(m_db, m_names))
            return fault;
        m_work = std::make_unique<ClonedConnection>(m_db);
        QSqlDatabase work = m_work->db();
        if (!work.isOpen())
            return engineFault(work.lastError());
        if (m_sqlite) {
            m_copy = std::make_unique<ClonedConnection>(m_db);
            if (!m_copy->db().isOpen())
                return engineFault(m_copy->db().lastError());
            skipSyncs(m_copy->db());
            m_transaction = std::make_unique<Transaction>(work, Transaction::Lock::Writer);
            if (!m_transaction->isActive())
                return engineFault(m_transaction->lastError());
        } else {
            m_transaction = std::make_unique<Transaction>(work);
            if (!m_transaction->isActive())
                return engineFault(m_transaction->lastError());
            QSqlQuery query(work);
            // The isolation first, and the lock before any read, so the snapshot already holds it.
            QStringList statements = {m_yearClose ? QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ")
                                                  : QStringLiteral("SET TRANSACTION ISOLATION LEVEL REPEATABLE READ, READ ONLY")};
            if (m_yearClose)
                statements << QStringLiteral("SET LOCAL lock_timeout = '15s'")
                           << QStringLiteral("LOCK TABLE %1 IN EXCLUSIVE MODE").arg(quoted(courses().table));
            for (const QString &statement : statements) {
                if (!query.exec(statement))
                    return engineFault(query.lastError());
            }
        }
        return countRows(work, m_names, m_counts);
    }

    const RowCounts &counts() const { return m_counts; }

    // The state into an empty file.
    std::optional<Fault> writeTo(const QString &emptyFile, const std::function<void()> &tableDone)
    {
        if (m_sqlite) {
            QSqlQuery query(m_copy->db());
            query.prepare(QStringLiteral("VACUUM INTO ?"));
            query.addBindValue(emptyFile);
            if (!query.exec())
                return engineFault(query.lastError());
            return std::nullopt;
        }
        return copyRowsInto(emptyFile, tableDone);
    }

    std::optional<Fault> deleteCourses(qint64 *deleted)
    {
        QSqlQuery query(m_work->db());
        if (!query.exec(QStringLiteral("DELETE FROM ") + quoted(courses().table)))
            return engineFault(query.lastError());
        *deleted = query.numRowsAffected();
        if (*deleted != m_counts.value(coursesTable))
            return Fault{QStringLiteral("изтрити са %1 курса от %2").arg(*deleted).arg(m_counts.value(coursesTable))};
        return std::nullopt;
    }

    std::optional<Fault> commit()
    {
        if (!m_transaction->commit())
            return engineFault(m_transaction->lastError());
        return std::nullopt;
    }

private:
    const TableNames &courses() const
    {
        for (const TableNames &table : m_names) {
            if (table.key == coursesTable)
                return table;
        }
        Q_UNREACHABLE();
    }

    // PostgreSQL's rows into a new SQLite file with the schema of this program: the values as the
    // driver gives them, so dates, times and flags are stored as the program stores them on SQLite.
    std::optional<Fault> copyRowsInto(const QString &emptyFile, const std::function<void()> &tableDone)
    {
        FileConnection archive(emptyFile);
        QSqlDatabase out = archive.db();
        if (!out.isOpen())
            return engineFault(out.lastError());
        skipSyncs(out);
        largeCache(out);
        if (auto failure = upgradeSchema(out))
            return Fault{failure->text.section(QLatin1Char('\n'), 0, 0)};
        std::list<QSqlQuery> statements;
        Transaction writing(out);
        if (!writing.isActive())
            return engineFault(writing.lastError());
        QStringList indexes;
        if (auto fault = dropIndexes(out, QStringLiteral("main"), QString(), &indexes))
            return fault;
        for (const TableNames &table : m_names) {
            QSqlQuery read(m_work->db());
            read.setForwardOnly(true);
            if (!read.exec(QStringLiteral("SELECT %1 FROM %2 ORDER BY 1").arg(quotedList(table.columns), quoted(table.table))))
                return engineFault(read.lastError());
            BatchInsert insert(out, table.key, schemaColumns(table.key), statements);
            const int columns = int(table.columns.size());
            while (read.next()) {
                for (int i = 0; i < columns; ++i) {
                    if (auto fault = insert.add(read.value(i)))
                        return fault;
                }
            }
            if (read.lastError().isValid())
                return engineFault(read.lastError());
            if (auto fault = insert.flush())
                return fault;
            if (tableDone)
                tableDone();
        }
        if (auto fault = execAll(out, indexes))
            return fault;
        if (!writing.commit())
            return engineFault(writing.lastError());
        return std::nullopt;
    }

    static QStringList schemaColumns(const QString &key)
    {
        for (const SchemaTable &table : schemaTables()) {
            if (table.name == key)
                return table.columns;
        }
        return {};
    }

    QSqlDatabase m_db;
    std::unique_ptr<ClonedConnection> m_work;  // the transaction: counts, PostgreSQL's rows, the delete
    std::unique_ptr<ClonedConnection> m_copy;  // SQLite's VACUUM INTO
    std::unique_ptr<Transaction> m_transaction;
    QList<TableNames> m_names;
    RowCounts m_counts;
    bool m_yearClose = false;
    bool m_sqlite = true;
};

// Counts the steps of a long piece of work for a progress box.
class Steps {
public:
    Steps(const ArchiveProgress &progress, int total) : m_progress(progress), m_total(total) {}
    void done()
    {
        m_done = std::min(m_done + 1, m_total);
        if (m_progress)
            m_progress(m_done, m_total);
    }
    void finish()
    {
        m_done = m_total;
        if (m_progress)
            m_progress(m_done, m_total);
    }

private:
    ArchiveProgress m_progress;
    int m_total;
    int m_done = 0;
};

// The snapshot written beside path and checked; the work file is left for the caller to place.
std::optional<Fault> writeChecked(Snapshot &snapshot, const WorkFile &file, Steps &steps)
{
    if (auto fault = createEmptyFile(file.path()))
        return fault;
    if (auto fault = snapshot.writeTo(file.path(), [&steps] { steps.done(); }))
        return fault;
    if (auto fault = checkWrittenArchive(file.path(), snapshot.counts()))
        return fault;
    steps.done();
    syncToDisk(file.path());
    return std::nullopt;
}

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

UserMessage busyMessage(const QString &title, const QString &request)
{
    return UserMessage::twoLines(title, QStringLiteral("Базата данни е заета от друго копие на програмата!"), request,
                                 UserMessage::Icon::Critical);
}

std::optional<Fault> ensureFolder(const QString &folder)
{
    // Made private, as the program's data folder is: the archives hold the firm's whole data.
    if (auto failure = prepareDatabaseFolder(QDir(folder).filePath(QStringLiteral("archive")), false))
        return Fault{failure->text.section(QLatin1Char('\n'), 0, 0)};
    return std::nullopt;
}

std::optional<Fault> writeArchiveFile(QSqlDatabase db, const QString &path, Steps &steps, RowCounts *counts)
{
    Snapshot snapshot(db, false);
    if (auto fault = snapshot.begin())
        return fault;
    steps.done();
    WorkFile file(path);
    if (auto fault = writeChecked(snapshot, file, steps))
        return fault;
    if (auto fault = moveInto(file.path(), path))
        return fault;
    file.keep();
    syncToDisk(QFileInfo(path).absolutePath());
    *counts = snapshot.counts();
    return std::nullopt;
}

// --- restore -----------------------------------------------------------------------------------

const QString otherArchiveRequest = QStringLiteral("Моля, посочете друг архивен файл. Данните не са променени.");

UserMessage restoreRefusal(const QString &fault, const QString &request = otherArchiveRequest)
{
    return UserMessage::twoLines(restoreErrorTitle(), fault, request, UserMessage::Icon::Critical);
}

UserMessage notAnArchive(const QString &path)
{
    return restoreRefusal(QStringLiteral("Файлът %1 не е архив на Зарек!").arg(shown(path)));
}

UserMessage damagedArchive(const QString &path)
{
    return restoreRefusal(QStringLiteral("Архивът %1 е повреден!").arg(shown(path)));
}

// SQLite's result codes as Qt reports them.
constexpr int sqliteCorrupt = 11;
constexpr int sqliteNotADatabase = 26;

UserMessage readRefusal(const QString &path, const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    if (code == QString::number(sqliteNotADatabase))
        return notAnArchive(path);
    if (code == QString::number(sqliteCorrupt))
        return damagedArchive(path);
    return restoreRefusal(QStringLiteral("Архивът %1 не може да бъде прочетен: %2").arg(shown(path), engineText(error)));
}

// The columns each table of the working copy has, by lower-case name.
QHash<QString, QSet<QString>> columnsOf(QSqlDatabase db)
{
    QHash<QString, QSet<QString>> out;
    QSqlQuery tables(db);
    tables.setForwardOnly(true);
    QStringList names;
    if (tables.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"))) {
        while (tables.next())
            names.append(tables.value(0).toString());
    }
    tables.finish();
    QSqlQuery info(db);
    info.setForwardOnly(true);
    for (const QString &name : std::as_const(names)) {
        QSet<QString> columns;
        if (info.exec(QStringLiteral("PRAGMA table_info(%1)").arg(quoted(name)))) {
            while (info.next())
                columns.insert(info.value(1).toString().toLower());
        }
        info.finish();
        out.insert(name.toLower(), columns);
    }
    return out;
}

// A value of the SQLite archive in the type of PostgreSQL's column. A value that does not read
// as that type goes as it is, and PostgreSQL refuses it: the restore stops, nothing is guessed.
QVariant forPostgres(const QVariant &value, int type)
{
    if (value.isNull())
        return QVariant(QMetaType(type));
    bool ok = true;
    switch (type) {
    case QMetaType::Bool:
        if (value.typeId() == QMetaType::QString) {
            const QString text = value.toString().trimmed().toLower();
            if (text == QLatin1String("true") || text == QLatin1String("1"))
                return true;
            if (text == QLatin1String("false") || text == QLatin1String("0"))
                return false;
            return value;
        }
        return value.toLongLong() != 0;
    case QMetaType::QDate: {
        const QDate date = QDate::fromString(value.toString().left(10), Qt::ISODate);
        return date.isValid() ? QVariant(date) : value;
    }
    case QMetaType::QTime: {
        const QTime time = QTime::fromString(value.toString(), Qt::ISODateWithMs);
        return time.isValid() ? QVariant(time) : value;
    }
    case QMetaType::Double: {
        const double number = value.toDouble(&ok);
        return ok ? QVariant(number) : value;
    }
    case QMetaType::Int:
    case QMetaType::LongLong: {
        const qlonglong number = value.toLongLong(&ok);
        return ok ? QVariant(number) : value;
    }
    case QMetaType::QString:
        return value.toString();
    default:
        return value;
    }
}

// The restore on SQLite: the working copy attached and each table refilled from it by the engine
// itself, all under the write lock in one transaction.
std::optional<Fault> replaceOnSqlite(QSqlDatabase program, const PreparedArchive &archive, Steps &steps)
{
    ClonedConnection connection(program);
    QSqlDatabase db = connection.db();
    if (!db.isOpen())
        return engineFault(db.lastError());
    largeCache(db);
    {
        QSqlQuery attach(db);
        attach.prepare(QStringLiteral("ATTACH DATABASE ? AS %1").arg(archiveSchema));
        attach.addBindValue(archive.workingCopy());
        if (!attach.exec())
            return engineFault(attach.lastError());
    }
    std::optional<Fault> fault;
    {
        Transaction transaction(db, Transaction::Lock::Writer);
        if (!transaction.isActive())
            fault = engineFault(transaction.lastError());
        QSqlQuery query(db);
        for (const SchemaTable &table : schemaTables()) {
            if (fault)
                break;
            const QString target = QStringLiteral("main.") + quoted(table.name);
            if (!query.exec(QStringLiteral("SELECT COALESCE(MAX(row_version), 0) FROM ") + target) || !query.next()) {
                fault = engineFault(query.lastError());
                break;
            }
            const qint64 version = query.value(0).toLongLong() + 1;
            query.finish();
            QStringList source;
            for (const QString &column : table.columns)
                source.append(column == QLatin1String("row_version") ? QStringLiteral("?") : quoted(column));
            QStringList indexes;
            if ((fault = dropIndexes(db, QStringLiteral("main"), table.name, &indexes)))
                break;
            if (!query.exec(QStringLiteral("DELETE FROM ") + target)) {
                fault = engineFault(query.lastError());
                break;
            }
            query.prepare(QStringLiteral("INSERT INTO %1 (%2) SELECT %3 FROM %4.%5")
                              .arg(target, quotedList(table.columns), source.join(QStringLiteral(", ")), archiveSchema,
                                   quoted(table.name)));
            if (table.columns.contains(QStringLiteral("row_version")))
                query.addBindValue(version);
            if (!query.exec()) {
                fault = engineFault(query.lastError());
                break;
            }
            if (query.numRowsAffected() != archive.counts().value(table.name)) {
                fault = Fault{QStringLiteral("в таблица %1 са заредени %2 реда от %3")
                                  .arg(table.name)
                                  .arg(query.numRowsAffected())
                                  .arg(archive.counts().value(table.name))};
                break;
            }
            if ((fault = execAll(db, indexes)))
                break;
            steps.done();
        }
        query.finish();
        if (!fault && !transaction.commit())
            fault = engineFault(transaction.lastError());
    }

    {
        QSqlQuery detach(db);
        detach.exec(QStringLiteral("DETACH DATABASE ") + archiveSchema);
    }
    return fault;
}

// The restore on PostgreSQL: every table locked against writes, emptied and refilled from the
// working copy many rows a statement, its identity moved past the highest id, in one transaction.
std::optional<Fault> replaceOnPostgres(QSqlDatabase program, const PreparedArchive &archive, Steps &steps)
{
    ClonedConnection connection(program);
    QSqlDatabase db = connection.db();
    if (!db.isOpen())
        return engineFault(db.lastError());
    QList<TableNames> names;
    if (auto fault = resolveNames(db, names))
        return fault;
    FileConnection copy(archive.workingCopy(), readOnly);
    QSqlDatabase source = copy.db();
    if (!source.isOpen())
        return engineFault(source.lastError());

    // Prepared statements outlive the transaction: after a failure it is rolled back first, and
    // only then are they freed.
    std::list<QSqlQuery> statements;
    Transaction transaction(db, Transaction::Lock::Writer);
    if (!transaction.isActive())
        return engineFault(transaction.lastError());
    {
        QSqlQuery query(db);
        QStringList all;
        for (const TableNames &table : std::as_const(names))
            all.append(quoted(table.table));
        if (!query.exec(QStringLiteral("LOCK TABLE %1 IN EXCLUSIVE MODE").arg(all.join(QStringLiteral(", ")))))
            return engineFault(query.lastError());

        for (const TableNames &table : std::as_const(names)) {
            if (!query.exec(QStringLiteral("SELECT COALESCE(MAX(row_version), 0) FROM ") + quoted(table.table))
                || !query.next())
                return engineFault(query.lastError());
            const qint64 version = query.value(0).toLongLong() + 1;
            query.finish();
            if (!query.exec(QStringLiteral("DELETE FROM ") + quoted(table.table)))
                return engineFault(query.lastError());
            // As on SQLite, the indexes are built again once the rows are in (the key stays).
            QStringList indexes;
            QStringList drops;
            QSqlQuery &lookup = statements.emplace_back(db);
            lookup.prepare(QStringLiteral("SELECT c.relname, pg_get_indexdef(c.oid) FROM pg_index x "
                                          "JOIN pg_class c ON c.oid = x.indexrelid "
                                          "WHERE x.indrelid = to_regclass(?) AND NOT x.indisprimary"));
            lookup.addBindValue(quoted(table.table));
            if (!lookup.exec())
                return engineFault(lookup.lastError());
            while (lookup.next()) {
                drops.append(QStringLiteral("DROP INDEX ") + quoted(lookup.value(0).toString()));
                indexes.append(lookup.value(1).toString());
            }
            lookup.finish();
            if (auto fault = execAll(db, drops))
                return fault;

            const int columns = int(table.columns.size());
            const int versionColumn = int(table.columns.indexOf(QStringLiteral("row_version")));
            QSqlQuery read(source);
            read.setForwardOnly(true);
            if (!read.exec(QStringLiteral("SELECT %1 FROM %2 ORDER BY 1").arg(quotedList(table.columns), quoted(table.key))))
                return engineFault(read.lastError());
            BatchInsert insert(db, table.table, table.columns, statements);
            while (read.next()) {
                for (int i = 0; i < columns; ++i) {
                    if (auto fault = insert.add(i == versionColumn ? QVariant(version)
                                                                   : forPostgres(read.value(i), table.types.at(i))))
                        return fault;
                }
            }
            if (read.lastError().isValid())
                return engineFault(read.lastError());
            if (auto fault = insert.flush())
                return fault;
            if (auto fault = execAll(db, indexes))
                return fault;

            if (table.columns.contains(QStringLiteral("id"))) {
                QSqlQuery &identity = statements.emplace_back(db);
                identity.prepare(QStringLiteral("SELECT setval(pg_get_serial_sequence(?, 'id'), COALESCE(MAX(id), 0) + 1, false) "
                                                "FROM ")
                                 + quoted(table.table));
                identity.addBindValue(quoted(table.table));
                if (!identity.exec())
                    return engineFault(identity.lastError());
            }
            if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM ") + quoted(table.table)) || !query.next())
                return engineFault(query.lastError());
            if (query.value(0).toLongLong() != archive.counts().value(table.key))
                return Fault{QStringLiteral("в таблица %1 са заредени %2 реда от %3")
                                 .arg(table.key)
                                 .arg(query.value(0).toLongLong())
                                 .arg(archive.counts().value(table.key))};
            query.finish();
            steps.done();
        }
    }
    if (!transaction.commit())
        return engineFault(transaction.lastError());
    return std::nullopt;
}

}

// --- public ------------------------------------------------------------------------------------

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
        FileConnection memory(QStringLiteral(":memory:"));
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

PreparedArchive::~PreparedArchive()
{
    discard();
}

void PreparedArchive::discard()
{
    removeWorkFile(m_copy);
    m_copy.clear();
    m_archive.clear();
    m_counts.clear();
}

std::optional<UserMessage> PreparedArchive::prepare(const QString &archivePath, const QString &workFolder)
{
    discard();
    const QFileInfo file(archivePath);
    if (!file.exists())
        return restoreRefusal(QStringLiteral("Файлът %1 не съществува!").arg(shown(archivePath)));
    if (!file.isFile())
        return restoreRefusal(QStringLiteral("%1 не е файл!").arg(shown(archivePath)));
    if (file.size() == 0)
        return notAnArchive(archivePath);
    if (auto fault = ensureFolder(workFolder))
        return restoreRefusal(QStringLiteral("Папката %1 не може да бъде подготвена: %2").arg(shown(workFolder), fault->text),
                              QStringLiteral("Моля, проверете правата за запис! Данните не са променени."));

    // The archive is only read, through SQLite; what is loaded is SQLite's own copy of it, so the
    // file cannot change between its check and its loading.
    WorkFile copy(QDir(workFolder).filePath(QStringLiteral("zarek-restore.db")));
    {
        FileConnection source(file.absoluteFilePath(), readOnly);
        QSqlDatabase db = source.db();
        if (!db.isOpen())
            return readRefusal(archivePath, db.lastError());
        QSqlQuery query(db);
        query.setForwardOnly(true);
        if (!query.exec(QStringLiteral("PRAGMA quick_check")) || !query.next())
            return readRefusal(archivePath, query.lastError());
        if (query.value(0).toString() != QLatin1String("ok"))
            return damagedArchive(archivePath);
        query.finish();
        if (!query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'")))
            return readRefusal(archivePath, query.lastError());
        QStringList tables;
        while (query.next())
            tables.append(query.value(0).toString());
        query.finish();
        if (tables.isEmpty())
            return notAnArchive(archivePath);
        if (!tables.contains(QStringLiteral("zarek_schema")))
            return restoreRefusal(QStringLiteral("Файлът %1 е база данни на друга програма, не архив на Зарек!").arg(shown(archivePath)));
        QList<int> versions;
        if (checkRecordedVersions(query, versions))
            return readRefusal(archivePath, query.lastError());
        if (versions.isEmpty())
            return notAnArchive(archivePath);
        for (int version : std::as_const(versions)) {
            if (!isKnownSchemaVersion(version))
                return restoreRefusal(QStringLiteral("Архивът %1 е от по-нова версия на Зарек (схема %2, програмата познава до %3)!")
                                          .arg(shown(archivePath))
                                          .arg(versions.last())
                                          .arg(latestSchemaVersion()),
                                      QStringLiteral("Моля, заредете го с по-новата версия на програмата. Данните не са променени."));
        }
        if (auto fault = createEmptyFile(copy.path()))
            return restoreRefusal(QStringLiteral("Работното копие на архива не може да бъде записано в %1: %2")
                                      .arg(shown(workFolder), fault->text),
                                  QStringLiteral("Моля, проверете правата за запис и свободното място! Данните не са променени."));
        skipSyncs(db);  // VACUUM INTO writes its file as its source connection would
        query.prepare(QStringLiteral("VACUUM INTO ?"));
        query.addBindValue(copy.path());
        if (!query.exec()) {
            const QSqlError error = query.lastError();
            if (error.nativeErrorCode() == QString::number(sqliteCorrupt)
                || error.nativeErrorCode() == QString::number(sqliteNotADatabase))
                return damagedArchive(archivePath);
            return restoreRefusal(QStringLiteral("Работното копие на архива не може да бъде записано в %1: %2")
                                      .arg(shown(workFolder), engineText(error)),
                                  QStringLiteral("Моля, проверете правата за запис и свободното място! Данните не са променени."));
        }
    }

    RowCounts counts;
    {
        FileConnection working(copy.path());
        QSqlDatabase db = working.db();
        if (!db.isOpen())
            return readRefusal(archivePath, db.lastError());
        skipSyncs(db);
        // An archive of an older program takes the steps it lacks, in the copy only.
        if (auto failure = upgradeSchema(db))
            return restoreRefusal(QStringLiteral("Архивът %1 не може да бъде приведен към тази версия: %2")
                                      .arg(shown(archivePath), failure->text.section(QLatin1Char('\n'), 0, 0)));
        const QHash<QString, QSet<QString>> present = columnsOf(db);
        for (const SchemaTable &table : schemaTables()) {
            const auto found = present.constFind(table.name.toLower());
            bool complete = found != present.cend();
            for (int i = 0; complete && i < table.columns.size(); ++i)
                complete = found->contains(table.columns.at(i).toLower());
            if (!complete)
                return restoreRefusal(QStringLiteral("В архива %1 липсват таблици или полета на Зарек!").arg(shown(archivePath)));
        }
        QList<TableNames> names;
        resolveNames(db, names);
        if (auto fault = countRows(db, names, counts))
            return readRefusal(archivePath, QSqlError(QString(), fault->text));
        if (counts.value(firmTable) == 0)
            return restoreRefusal(QStringLiteral("В архива %1 няма данни за фирмата!").arg(shown(archivePath)));
    }
    copy.keep();
    m_archive = file.absoluteFilePath();
    m_copy = copy.path();
    m_counts = counts;
    return std::nullopt;
}

Checked<RestoreOutcome> restoreArchive(QSqlDatabase db, const PreparedArchive &archive, const QString &safetyFolder,
                                       const QDateTime &now, const ArchiveProgress &progress)
{
    const QString unchanged = QStringLiteral("Моля, опитайте отново след малко! Данните не са променени.");
    if (!archive.isReady())
        return restoreRefusal(QStringLiteral("Архивът не е проверен!"));
    if (auto fault = ensureFolder(safetyFolder))
        return restoreRefusal(QStringLiteral("Папката %1 не може да бъде подготвена: %2").arg(shown(safetyFolder), fault->text),
                              QStringLiteral("Моля, проверете правата за запис! Данните не са променени."));

    Steps steps(progress, 2 * int(schemaTables().size()) + 2);
    const QString safetyCopy = freeName(safetyFolder,
                                        QStringLiteral("Преди зареждане ") + now.toString(QStringLiteral("yyyy-MM-dd hh-mm-ss")),
                                        QStringLiteral(".abd"));
    RowCounts before;
    if (auto fault = writeArchiveFile(db, safetyCopy, steps, &before)) {
        if (fault->busy)
            return busyMessage(restoreErrorTitle(), unchanged);
        return restoreRefusal(QStringLiteral("Предпазното копие на текущите данни не може да бъде записано в %1: %2")
                                  .arg(shown(safetyCopy), fault->text),
                              QStringLiteral("Зареждането е отменено. Данните не са променени."));
    }
    const auto fault = dialectOf(db) == Dialect::SQLite ? replaceOnSqlite(db, archive, steps)
                                                        : replaceOnPostgres(db, archive, steps);
    if (fault) {
        if (fault->busy)
            return busyMessage(restoreErrorTitle(), unchanged);
        return restoreRefusal(QStringLiteral("Данните от архива %1 не могат да бъдат заредени: %2")
                                  .arg(shown(archive.archivePath()), fault->text),
                              QStringLiteral("Моля, опитайте отново. Данните не са променени."));
    }
    steps.finish();
    return RestoreOutcome{safetyCopy, archive.counts()};
}

int closingYear(QSqlDatabase db, const QDate &today)
{
    QMap<int, qint64> perYear;
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (query.exec(QStringLiteral("SELECT data, COUNT(*) FROM tabl GROUP BY data"))) {
        while (query.next()) {
            const QVariant value = query.value(0);
            const QDate date = value.typeId() == QMetaType::QDate ? value.toDate()
                                                                  : QDate::fromString(value.toString().left(10), Qt::ISODate);
            if (date.isValid())
                perYear[date.year()] += query.value(1).toLongLong();
        }
    }
    int year = today.year();
    qint64 most = 0;
    for (auto it = perYear.cbegin(); it != perYear.cend(); ++it) {
        if (it.value() >= most) {
            most = it.value();
            year = it.key();
        }
    }
    return year;
}

QString yearArchivePath(const QString &folder, int year)
{
    return QDir(folder).filePath(QStringLiteral("%1.arh").arg(year));
}

Checked<YearCloseOutcome> closeYear(QSqlDatabase db, const QString &folder, int year, bool replaceExisting,
                                    const QDateTime &now, const ArchiveProgress &progress)
{
    const QString kept = QStringLiteral("Курсовете не са изтрити.");
    const auto refusal = [&](const QString &fault, const QString &request) {
        return UserMessage::twoLines(yearCloseErrorTitle(), fault, request, UserMessage::Icon::Critical);
    };
    if (auto fault = ensureFolder(folder))
        return refusal(QStringLiteral("Папката %1 не може да бъде подготвена: %2").arg(shown(folder), fault->text),
                       QStringLiteral("Моля, проверете правата за запис! ") + kept);
    const QString path = yearArchivePath(folder, year);
    const bool exists = QFileInfo::exists(path);
    if (exists && !replaceExisting)
        return refusal(QStringLiteral("Архивът на %1 година вече е записан: %2").arg(year).arg(shown(path)),
                       QStringLiteral("Той не е заменен. ") + kept);

    Steps steps(progress, int(schemaTables().size()) + 3);
    Snapshot snapshot(db, true);
    std::optional<Fault> fault = snapshot.begin();
    steps.done();
    WorkFile file(path);
    if (!fault)
        fault = writeChecked(snapshot, file, steps);
    if (fault) {
        if (fault->busy)
            return busyMessage(yearCloseErrorTitle(), QStringLiteral("Моля, опитайте отново след малко! ") + kept);
        return refusal(QStringLiteral("Архивът на годината %1 не може да бъде записан: %2").arg(shown(path), fault->text),
                       QStringLiteral("Моля, проверете мястото на диска и правата за запис! ") + kept);
    }

    // An earlier archive of the year steps aside under a name of its own, and comes back if the
    // new one cannot take its place.
    YearCloseOutcome outcome;
    outcome.archive = path;
    if (exists) {
        outcome.previous = freeName(folder,
                                    QStringLiteral("%1 предишен %2").arg(year).arg(now.toString(QStringLiteral("yyyy-MM-dd hh-mm-ss"))),
                                    QStringLiteral(".arh"));
        if (auto moved = moveInto(path, outcome.previous))
            return refusal(QStringLiteral("Досегашният архив %1 не може да бъде преименуван: %2").arg(shown(path), moved->text),
                           kept);
    }
    if (auto moved = moveInto(file.path(), path)) {
        if (exists)
            moveInto(outcome.previous, path);
        return refusal(QStringLiteral("Архивът на годината %1 не може да бъде записан: %2").arg(shown(path), moved->text),
                       QStringLiteral("Моля, проверете правата за запис! ") + kept);
    }
    file.keep();
    syncToDisk(folder);

    fault = snapshot.deleteCourses(&outcome.deletedCourses);
    if (!fault)
        fault = snapshot.commit();
    if (fault)
        return refusal(QStringLiteral("Курсовете не могат да бъдат изтрити: %1").arg(fault->text),
                       QStringLiteral("Всички курсове са запазени, архивът на годината е записан. Моля, опитайте отново!"));
    steps.finish();
    return outcome;
}

}
