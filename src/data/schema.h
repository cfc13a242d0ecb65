#pragma once

#include "core/usermessage.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <array>
#include <optional>

namespace zarek {

// The six tariff band columns of Tarifi, quoted: their names carry a minus sign.
inline const std::array<QString, 6> &tariffColumns()
{
    static const std::array<QString, 6> columns = {
        QStringLiteral("\"Trf_20\""),     QStringLiteral("\"Trf_20-30\""),   QStringLiteral("\"Trf_30-50\""),
        QStringLiteral("\"Trf_50-100\""), QStringLiteral("\"Trf_100-200\""), QStringLiteral("\"Trf_200\""),
    };
    return columns;
}

// The main database's tables, in creation order.
QStringList mainTables();

// Brings the schema up to the newest version under the write lock (Transaction::Lock::Writer),
// all steps in one transaction: the version is read, the missing steps applied and recorded. A
// database with tables of its own but no zarek_schema (another program's), or one that records a
// version this program does not know (a newer Zarek's), is refused and left as it was.
std::optional<UserMessage> upgradeSchema(QSqlDatabase &db);
// The same, with the message's text in error.
bool migrateSchema(QSqlDatabase &db, QString *error = nullptr);

// The version the database is at; 0 for an empty database.
int schemaVersion(QSqlDatabase &db);
int latestSchemaVersion();
// True for a version among this program's migrations.
bool isKnownSchemaVersion(int version);
// An SQL condition true when zarek_schema records exactly this program's versions: the database
// needs no migration. The statement that holds it fails where there is no zarek_schema.
QString schemaIsCurrentSql();

// The title of every refusal on opening a database.
inline QString databaseOpenTitle() { return QStringLiteral("ГРЕШКА при отваряне на базата данни!"); }
// Another copy of the program held the write lock for the whole wait.
UserMessage databaseBusyMessage();
// Tables of another program and no zarek_schema.
UserMessage foreignDatabaseMessage();
// A schema version recorded by a newer program.
UserMessage newerSchemaMessage(int databaseVersion, int programVersion);

}
