#include "archivesnapshot.h"

#include "data/dialect.h"
#include "data/schema.h"

#include <QFileInfo>

namespace zarek::archiving {

namespace {

const QString coursesTable = QStringLiteral("tabl");

QStringList schemaColumns(const QString &key)
{
    for (const SchemaTable &table : schemaTables()) {
        if (table.name == key)
            return table.columns;
    }
    return {};
}

}

Snapshot::Snapshot(QSqlDatabase db, bool forYearClose) : m_db(std::move(db)), m_yearClose(forYearClose) {}

Snapshot::~Snapshot()
{
    m_transaction.reset();  // rolls back what was not committed, before its connection goes
    m_copy.reset();
    m_work.reset();
}

std::optional<Fault> Snapshot::begin()
{
    if (!m_db.isOpen())
        return Fault{QStringLiteral("няма връзка с базата данни")};
    m_sqlite = dialectOf(m_db) == Dialect::SQLite;
    if (auto fault = resolveNames(m_db, m_names))
        return fault;
    m_work = std::make_unique<PrivateConnection>(m_db);
    QSqlDatabase work = m_work->db();
    if (!work.isOpen())
        return engineFault(work.lastError());
    if (m_sqlite) {
        m_copy = std::make_unique<PrivateConnection>(m_db);
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

std::optional<Fault> Snapshot::writeTo(const QString &emptyFile, const std::function<void()> &tableDone)
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

std::optional<Fault> Snapshot::deleteCourses(qint64 *deleted)
{
    QSqlQuery query(m_work->db());
    if (!query.exec(QStringLiteral("DELETE FROM ") + quoted(courses().table)))
        return engineFault(query.lastError());
    *deleted = query.numRowsAffected();
    if (*deleted != m_counts.value(coursesTable))
        return Fault{QStringLiteral("изтрити са %1 курса от %2").arg(*deleted).arg(m_counts.value(coursesTable))};
    return std::nullopt;
}

std::optional<Fault> Snapshot::commit()
{
    if (!m_transaction->commit())
        return engineFault(m_transaction->lastError());
    return std::nullopt;
}

const TableNames &Snapshot::courses() const
{
    for (const TableNames &table : m_names) {
        if (table.key == coursesTable)
            return table;
    }
    Q_UNREACHABLE();
}

// PostgreSQL's rows into a new SQLite file with the schema of this program: the values as the
// driver gives them, so dates, times and flags are stored as the program stores them on SQLite.
std::optional<Fault> Snapshot::copyRowsInto(const QString &emptyFile, const std::function<void()> &tableDone)
{
    PrivateConnection archive(emptyFile);
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
        // A migration may have put rows of its own in the new file (the standard document kinds):
        // the archive holds the database's rows and no others.
        QSqlQuery empty(out);
        if (!empty.exec(QStringLiteral("DELETE FROM ") + quoted(table.key)))
            return engineFault(empty.lastError());
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

}
