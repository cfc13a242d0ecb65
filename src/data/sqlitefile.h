#pragma once

#include "core/usermessage.h"

#include <QString>
#include <optional>

// The SQLite file of a firm, before anything is written to it.
namespace zarek {

// Makes the missing folders of a database file, each 0700 whatever the umask; a folder that
// exists is left as it is, unless it is the program's own data folder, which is kept 0700.
std::optional<UserMessage> prepareDatabaseFolder(const QString &filePath, bool programsOwnFolder);

// Makes a new database file whole: created 0600 beside its place, given the schema, then linked
// into place. When another copy of the program put a file there first, that one stays and this
// one is dropped; either way a file with the schema then stands at filePath.
std::optional<UserMessage> createDatabaseFile(const QString &filePath);

// Checks an existing file through a read-only connection, so that a file refused is left as it
// was, in its bytes and its mode: not a file, empty, read-only (or its folder), not a database,
// damaged in its header or schema (shorter than its header says, a schema or a table's first page
// unreadable), of another program (tables but no zarek_schema) or of a newer Zarek. It reads a few
// pages whatever the file's size; the rows' pages are checkDatabaseIntegrity's.
std::optional<UserMessage> checkDatabaseFile(const QString &filePath);

// Reads the whole file through a read-only connection of its own (PRAGMA quick_check): the damage
// the check at opening cannot see. Safe on another thread while the program works on the file.
std::optional<UserMessage> checkDatabaseIntegrity(const QString &filePath);

}
