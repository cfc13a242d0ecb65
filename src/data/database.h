#pragma once

#include "data/databaseconfig.h"

#include <QSqlDatabase>
#include <QString>

namespace zarek {

// Opens a connection of the given name on the configured database. SQLite files are created
// private to the user (0600 in a 0700 folder) and run with WAL and a busy timeout.
// On failure returns an invalid/closed database and fills error.
QSqlDatabase openDatabase(const DatabaseConfig &config, const QString &connectionName, QString *error = nullptr);

// True when the SQLite file does not exist yet (a PostgreSQL database counts as existing).
bool databaseIsNew(const DatabaseConfig &config);

// Closes and forgets a named connection.
void closeDatabase(const QString &connectionName);

}
