#pragma once

#include "core/usermessage.h"

#include <QDate>
#include <QDateTime>
#include <QList>
#include <QMap>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <functional>
#include <optional>

// Archives of the whole database as self-contained SQLite files, their restore, and the year close.
//
// An archive is taken from one consistent state of the database: on SQLite by VACUUM INTO while a
// second connection holds the write lock, on PostgreSQL by reading every table in one
// repeatable-read transaction. It is written beside its place, checked (quick_check, every table's
// rows counted against that state) and only then moved into place, so a file of that name is never
// replaced by a half-written one. The live database file is only ever read through SQLite: a byte
// copy could take a half-written page, and closing any descriptor of it drops SQLite's locks.
namespace zarek {

// A table of this system with its columns, as the migrations make them.
struct SchemaTable {
    QString name;
    QStringList columns;
};
// Every table of the schema but zarek_schema, in creation order.
const QList<SchemaTable> &schemaTables();

// Rows of each table, by the table's name in schemaTables().
using RowCounts = QMap<QString, qint64>;
// Work done of the work to do; called between steps, so a screen can show progress.
using ArchiveProgress = std::function<void(int done, int total)>;

// Where a database keeps its safety copies and year-end archives: beside a SQLite file, and in the
// per-user data folder for PostgreSQL.
QString archiveFolder(const QSqlDatabase &db);

// The whole database into a checked archive at path; a file already there is replaced only by an
// archive that passed its checks, and stays as it was on any failure. The rows counted.
Checked<RowCounts> writeArchive(QSqlDatabase db, const QString &path, const ArchiveProgress &progress = {});

// An archive chosen for a restore, checked and ready: a working copy made by SQLite from the file
// (the file itself is only read), brought up to this program's schema when it is older, and
// checked for every table and column of this system and the firm's row. The copy goes with it.
class PreparedArchive {
public:
    PreparedArchive() = default;
    ~PreparedArchive();
    PreparedArchive(const PreparedArchive &) = delete;
    PreparedArchive &operator=(const PreparedArchive &) = delete;

    // Checks archivePath and makes the working copy in workFolder; the refusal otherwise, with
    // nothing left behind.
    std::optional<UserMessage> prepare(const QString &archivePath, const QString &workFolder);

    bool isReady() const { return !m_copy.isEmpty(); }
    QString archivePath() const { return m_archive; }
    QString workingCopy() const { return m_copy; }
    const RowCounts &counts() const { return m_counts; }

private:
    void discard();

    QString m_archive;
    QString m_copy;
    RowCounts m_counts;
};

struct RestoreOutcome {
    QString safetyCopy;  // the archive of the data as it stood before
    RowCounts counts;
};

// Replaces the data of db with a prepared archive: first a checked safety copy of the data as it
// stands, named by now, in safetyFolder; then every table emptied and filled from the archive in
// one transaction under the write lock. Restored rows get a row_version above any the table had,
// so a screen still holding a row read before the restore cannot overwrite it. On any failure the
// data stays as it was.
Checked<RestoreOutcome> restoreArchive(QSqlDatabase db, const PreparedArchive &archive, const QString &safetyFolder,
                                       const QDateTime &now, const ArchiveProgress &progress = {});

// The year a close archives: the year that holds most courses (the later one on a tie), or today's
// when there are none. Courses typed early in the new year do not rename the old year's archive.
int closingYear(QSqlDatabase db, const QDate &today);
// "2026.arh" in folder.
QString yearArchivePath(const QString &folder, int year);

struct YearCloseOutcome {
    QString archive;        // the year-end archive
    QString previous;       // the earlier archive of that year, kept under this name; empty if none
    qint64 deletedCourses = 0;
};

// The year close: a checked archive of the whole database at yearArchivePath(folder, year), then
// every course deleted, in one transaction that holds the courses locked from the archive to the
// delete, so no course saved meanwhile is deleted unarchived. An archive of that year already
// there is refused unless replaceExisting; when replaced it is kept under another name, never
// lost. On any failure no course is deleted.
Checked<YearCloseOutcome> closeYear(QSqlDatabase db, const QString &folder, int year, bool replaceExisting,
                                    const QDateTime &now, const ArchiveProgress &progress = {});

// The titles of the three commands' error boxes.
QString archiveErrorTitle();
QString restoreErrorTitle();
QString yearCloseErrorTitle();

}
