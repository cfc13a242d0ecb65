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

// Archives of the whole database as self-contained SQLite files (their restore: restore.h; the year
// close: yearclose.h).
//
// An archive is taken from one consistent state of the database: on SQLite by the engine's page copy while a
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

// The titles of the three commands' error boxes.
QString archiveErrorTitle();
QString restoreErrorTitle();
QString yearCloseErrorTitle();

}
