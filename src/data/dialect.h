#pragma once

#include <QSqlDatabase>
#include <QString>

// The few places where SQLite and PostgreSQL need different words. Everything else is one SQL.
namespace zarek {

enum class Dialect { SQLite, PostgreSQL };

Dialect dialectOf(const QSqlDatabase &db);

// Replaces the type placeholders {ID} {VERSION} {TEXT} {REAL} {BOOL} {DATE} {TIME} {BLOB} of a DDL text.
QString dialectDdl(const QString &ddl, Dialect dialect);

}
