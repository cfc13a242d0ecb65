#pragma once

#include "core/usermessage.h"
#include "data/archive.h"
#include "data/query.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QStringList>
#include <algorithm>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>

struct pg_conn;
struct sqlite3;
struct sqlite3_backup;

// What the archive, the restore and the year close share: connections of their own, files written
// beside their place and moved into it, table and column names per engine, and rows in bulk.
namespace zarek::archiving {

// Why a step failed, in words for the second half of a message; busy when another copy of the
// program held the lock for the whole wait.
struct Fault {
    QString text;
    bool busy = false;
};
Fault engineFault(const QSqlError &error);
// The engine's words for a failure, on one line; never the statement.
QString engineText(const QSqlError &error);

QString shown(const QString &path);
QString quoted(const QString &identifier);
QString quotedList(const QStringList &identifiers);
QString uniqueSuffix();
std::filesystem::path fsPath(const QString &path);

// The options of a connection that only reads a file.
QString readOnlyOptions();
// A file written for this moment only (a working copy): no waiting on the disk for it. Files that
// are kept are synced once, whole, before they take their place.
void skipSyncs(QSqlDatabase db);
// Room for a bulk load's pages: SQLite's small default cache spills them to disk over and over.
void largeCache(QSqlDatabase db);

// The names a database gives this system's tables and columns: SQLite's as created; PostgreSQL's
// in its own case (folded to lower case, the quoted tariff columns as written), with their types.
struct TableNames {
    QString key;  // the name in schemaTables()
    QString table;
    QStringList columns;
    QList<int> types;  // PostgreSQL's column types, for the values a restore writes
};

std::optional<Fault> resolveNames(QSqlDatabase db, QList<TableNames> &out);
std::optional<Fault> countRows(QSqlDatabase db, const QList<TableNames> &tables, RowCounts &counts);

// A new, empty file only its owner may read: VACUUM INTO writes into an empty file, and an archive
// holds the firm's whole data.
std::optional<Fault> createEmptyFile(const QString &path);
void removeWorkFile(const QString &path);
// The bytes of a file into another that exists (made by createEmptyFile), keeping its rights.
std::optional<Fault> copyFileInto(const QString &from, const QString &to);

// The live PostgreSQL connection under Qt's driver, for COPY (which the driver cannot send); null
// for a connection of another engine.
::pg_conn *libpqConnection(const QSqlDatabase &db);
// The engine's handle under Qt's SQLite driver; null for a connection of another engine.
::sqlite3 *sqliteHandle(const QSqlDatabase &db);

// The engine's own page copy of one SQLite database into another (its backup): the target's pages
// replaced by the source's in one transaction of the target, which commits whole or leaves the
// target as it was. lock() takes the target's write lock ahead of the copy (waiting as the target's
// connection waits), so that what is read meanwhile on other connections stays so until the copy;
// copyAll() takes it itself when not taken. Neither connection is used for anything else meanwhile.
class PageCopy {
public:
    PageCopy(QSqlDatabase source, QSqlDatabase target);
    ~PageCopy();
    PageCopy(const PageCopy &) = delete;
    PageCopy &operator=(const PageCopy &) = delete;

    std::optional<Fault> lock();
    std::optional<Fault> copyAll();

private:
    std::optional<Fault> step(int pages, bool last);

    QSqlDatabase m_source;
    QSqlDatabase m_target;
    ::sqlite3_backup *m_backup = nullptr;
};

// A SQLite file written by a page copy from a database in WAL mode, put back to the rollback
// journal of a file that is read alone (and read-only) by the checks and the restore.
std::optional<Fault> useRollbackJournal(QSqlDatabase db);

// A file of ours beside its place (".name.part-…"), removed unless it was kept. A lock file beside
// it says, for as long as it lives, that a running copy of the program owns it; the lock is taken
// before the file is made, so a work file without a live lock was left by a copy that died.
class WorkFile {
public:
    explicit WorkFile(const QString &finalPath)
    {
        const QFileInfo target(finalPath);
        m_path = target.absolutePath() + QStringLiteral("/.") + target.fileName() + workFileMark() + uniqueSuffix();
        m_lock = std::make_unique<QLockFile>(m_path + workLockSuffix());
        m_lock->setStaleLockTime(0);  // only a dead owner makes a lock stale, never its age
        m_lock->tryLock(0);
    }
    ~WorkFile()
    {
        if (!m_kept)
            removeWorkFile(m_path);
        m_lock.reset();  // unlocks and removes the lock file, after the work file is gone
    }
    WorkFile(const WorkFile &) = delete;
    WorkFile &operator=(const WorkFile &) = delete;

    QString path() const { return m_path; }
    void keep() { m_kept = true; }

    static QString workFileMark() { return QStringLiteral(".part-"); }
    static QString workLockSuffix() { return QStringLiteral(".lock"); }

private:
    QString m_path;
    std::unique_ptr<QLockFile> m_lock;
    bool m_kept = false;
};

// Removes from folder the work files (with their journals and locks) of copies of the program
// that died while writing an archive, restoring or closing a year; those of running copies stay.
// The files removed.
int removeDeadWorkFiles(const QString &folder);

// A file or folder's content on disk before it is relied on: SQLite writes the archive unsynced,
// and a rename lasts only once its folder is synced. Only files of ours that no connection holds.
void syncToDisk(const QString &path);
// Moves a file into place, replacing what stood there in one step.
std::optional<Fault> moveInto(const QString &from, const QString &to);
// base + suffix in folder, or base (2) + suffix and so on: never a name that is taken.
QString freeName(const QString &folder, const QString &base, const QString &suffix);
// Makes the folder, private, as the program's data folder is: archives hold the firm's whole data.
std::optional<Fault> ensureFolder(const QString &folder);

// The schema versions an archive records (its zarek_schema).
std::optional<Fault> checkRecordedVersions(QSqlQuery &query, QList<int> &versions);
// A written archive as a restore would read it: undamaged, with this system's schema recorded and
// every table holding the rows counted in the state it was taken from.
std::optional<Fault> checkWrittenArchive(const QString &path, const RowCounts &expected);

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
std::optional<Fault> dropIndexes(QSqlDatabase db, const QString &schema, const QString &table, QStringList *recreate);
std::optional<Fault> execAll(QSqlDatabase db, const QStringList &statements);

// "Базата данни е заета от друго копие на програмата!" under the command's title.
UserMessage busyMessage(const QString &title, const QString &request);

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

}
