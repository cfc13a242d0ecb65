#pragma once

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <array>

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

// Brings the schema up to the newest version, each step in its own transaction.
// Returns false and fills error when a step fails (that step leaves nothing behind).
bool migrateSchema(QSqlDatabase &db, QString *error = nullptr);

// The version the database is at; 0 for an empty database.
int schemaVersion(QSqlDatabase &db);
int latestSchemaVersion();

}
