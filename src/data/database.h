#pragma once

#include "core/usermessage.h"
#include "data/databaseconfig.h"

#include <QSqlDatabase>
#include <QString>

namespace zarek {

// Opens a connection of the given name on the configured database, or says why not.
//
// SQLite: a file that does not exist yet is made whole beside its place (with the schema, private
// to the user: 0600, and any folder made for it 0700; the program's own data folder is kept 0700
// even when it exists) and then moved into place, so another copy never sees it half made. An
// existing file is checked read-only before anything is written to it, and refused, untouched in
// its bytes and its mode, when it is empty, read-only, not a database, damaged in its header or
// schema, of another program, or of a newer Zarek. It then runs with WAL and a busy timeout. The
// whole file is checked after sign-in, in the background (checkDatabaseIntegrity, sqlitefile.h).
// PostgreSQL: the password comes from the address, or libpq finds it itself (PGPASSWORD,
// ~/.pgpass, PGPASSFILE). No message shows a password.
//
// The schema is brought up to date afterwards by upgradeSchema (schema.h), under the write lock.
Checked<QSqlDatabase> connectDatabase(const DatabaseConfig &config, const QString &connectionName);

// connectDatabase with the message's text in error; an invalid or closed database on failure.
QSqlDatabase openDatabase(const DatabaseConfig &config, const QString &connectionName, QString *error = nullptr);

// True when the SQLite file does not exist yet (a PostgreSQL database counts as existing).
bool databaseIsNew(const DatabaseConfig &config);

// Closes and forgets a named connection.
void closeDatabase(const QString &connectionName);

// True when a failed PostgreSQL connection asked for a password that was not given.
bool needsPassword(const QString &connectionError);

}
