#pragma once

#include <QList>
#include <QString>
#include <optional>

namespace zarek {

// The tables a report or result screen lays its rows out in, in the scratch database.
struct ScratchColumn {
    enum class Type { Integer, Double, Date, Text };
    QString name;
    Type type = Type::Text;
    int width = 0;  // Text: the widest text the screens put there (not enforced: see decisions)
};

struct ScratchTable {
    QString name;
    QList<ScratchColumn> columns;
};

// Every scratch table, in the order of their definitions.
const QList<ScratchTable> &scratchTables();
std::optional<ScratchTable> scratchTable(const QString &name);

// CREATE TABLE for SQLite; dates are ISO text as in the main database.
QString scratchTableDdl(const ScratchTable &table);

}
