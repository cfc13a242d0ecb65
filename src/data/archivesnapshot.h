#pragma once

#include "data/archivesupport.h"
#include "data/transaction.h"

#include <functional>
#include <memory>

namespace zarek::archiving {

// One consistent state of the whole database, held from its row counts to its archive and, for a
// year close, to the deletion of the courses. Its connections are its own.
// SQLite: one connection holds the write lock (other copies' writes wait) and reads the counts;
// another copies its pages (the engine's backup), seeing the same state, since nobody can write meanwhile.
// PostgreSQL: one repeatable-read transaction reads counts and rows; a year close first locks the
// courses against writes, so a course saved meanwhile waits instead of being deleted unarchived.
class Snapshot {
public:
    Snapshot(QSqlDatabase db, bool forYearClose);
    ~Snapshot();
    Snapshot(const Snapshot &) = delete;
    Snapshot &operator=(const Snapshot &) = delete;

    std::optional<Fault> begin();
    // PostgreSQL's rows go into the file without the indexes that are neither a key nor unique:
    // a restore of it builds them (as for any archive that lacks one), and a safety copy is read
    // by nothing else.
    void leaveOutSecondaryIndexes() { m_secondaryIndexes = false; }
    const RowCounts &counts() const { return m_counts; }
    // The state into an empty file; tableDone after each table where the work goes table by table.
    std::optional<Fault> writeTo(const QString &emptyFile, const std::function<void()> &tableDone);
    // Every course, inside the snapshot's transaction; exactly the courses counted.
    std::optional<Fault> deleteCourses(qint64 *deleted);
    std::optional<Fault> commit();

private:
    const TableNames &courses() const;
    std::optional<Fault> copyRowsInto(const QString &emptyFile, const std::function<void()> &tableDone);

    QSqlDatabase m_db;
    std::unique_ptr<PrivateConnection> m_work;  // the transaction: counts, PostgreSQL's rows, the delete
    std::unique_ptr<PrivateConnection> m_copy;  // SQLite's page copy
    std::unique_ptr<Transaction> m_transaction;
    QList<TableNames> m_names;
    RowCounts m_counts;
    bool m_yearClose = false;
    bool m_sqlite = true;
    bool m_secondaryIndexes = true;
};

// The snapshot written into the work file and checked; the caller moves it into place.
std::optional<Fault> writeChecked(Snapshot &snapshot, const WorkFile &file, Steps &steps);
// A checked archive of the whole database at path, replacing what stood there only once checked;
// a safety copy without the secondary indexes where it is written row by row (PostgreSQL).
enum class ArchiveUse { Archive, SafetyCopy };
std::optional<Fault> writeArchiveFile(QSqlDatabase db, const QString &path, Steps &steps, RowCounts *counts,
                                      ArchiveUse use = ArchiveUse::Archive);

}
