// The calls of SQLite that the archive and the restore make on the connections Qt's driver opened
// (the engine's page copy, which the driver does not offer), found in the library when first made:
// Qt's SQLite driver has loaded it by then, so opening it here finds the same library in the process.
// The definitions are hidden: the library does not offer them to the driver or to anyone else.
#pragma GCC visibility push(hidden)
#include <sqlite3.h>
#pragma GCC visibility pop

#include "data/ondemandlibrary.h"

#define ZAREK_SQLITE_CALL(...) ZAREK_ON_DEMAND("libsqlite3.so.0", __VA_ARGS__)

ZAREK_SQLITE_CALL(sqlite3_backup *, sqlite3_backup_init,
                  (sqlite3 * target, const char *targetName, sqlite3 *source, const char *sourceName),
                  (target, targetName, source, sourceName))
ZAREK_SQLITE_CALL(int, sqlite3_backup_step, (sqlite3_backup * backup, int pages), (backup, pages))
ZAREK_SQLITE_CALL(int, sqlite3_backup_finish, (sqlite3_backup * backup), (backup))
ZAREK_SQLITE_CALL(const char *, sqlite3_errmsg, (sqlite3 * db), (db))
ZAREK_SQLITE_CALL(const char *, sqlite3_errstr, (int code), (code))
ZAREK_SQLITE_CALL(int, sqlite3_prepare_v2,
                  (sqlite3 * db, const char *sql, int bytes, sqlite3_stmt **statement, const char **tail),
                  (db, sql, bytes, statement, tail))
ZAREK_SQLITE_CALL(int, sqlite3_step, (sqlite3_stmt * statement), (statement))
ZAREK_SQLITE_CALL(int, sqlite3_finalize, (sqlite3_stmt * statement), (statement))
ZAREK_SQLITE_CALL(int, sqlite3_column_type, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(sqlite3_int64, sqlite3_column_int64, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(double, sqlite3_column_double, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(const unsigned char *, sqlite3_column_text, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(const void *, sqlite3_column_text16, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(const void *, sqlite3_column_blob, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(int, sqlite3_column_bytes, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(int, sqlite3_column_bytes16, (sqlite3_stmt * statement, int column), (statement, column))
ZAREK_SQLITE_CALL(int, sqlite3_reset, (sqlite3_stmt * statement), (statement))
ZAREK_SQLITE_CALL(int, sqlite3_bind_null, (sqlite3_stmt * statement, int index), (statement, index))
ZAREK_SQLITE_CALL(int, sqlite3_bind_int64, (sqlite3_stmt * statement, int index, sqlite3_int64 value), (statement, index, value))
ZAREK_SQLITE_CALL(int, sqlite3_bind_double, (sqlite3_stmt * statement, int index, double value), (statement, index, value))
ZAREK_SQLITE_CALL(int, sqlite3_bind_text,
                  (sqlite3_stmt * statement, int index, const char *text, int bytes, void (*destructor)(void *)),
                  (statement, index, text, bytes, destructor))
ZAREK_SQLITE_CALL(int, sqlite3_bind_blob,
                  (sqlite3_stmt * statement, int index, const void *bytes, int size, void (*destructor)(void *)),
                  (statement, index, bytes, size, destructor))
