#pragma once

#include "data/archivesupport.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// What a restore lets in from an archive: the schema objects this program makes, and rows whose
// every value the screens would have taken. Nothing of an archive is ever run: its schema is only
// compared, and its rows are read as values into a schema the program makes itself.
namespace zarek::archiving {

// One entry of a SQLite file's schema.
struct SchemaObject {
    QString type;   // table, index, view, trigger
    QString name;
    QString table;
    QString sql;    // as the engine keeps it, blanks simplified; empty for an automatic index
    bool operator==(const SchemaObject &) const = default;
};

std::optional<Fault> readSchemaObjects(QSqlDatabase db, QList<SchemaObject> &out);

// Makes, in an empty database, this program's own schema as it stood with exactly the given
// schema versions recorded, and records them.
std::optional<Fault> makeSchemaAt(QSqlDatabase db, const QList<int> &versions);

// What an archive's schema holds beyond the program's own at its versions: a trigger, a view, a
// table or index of another making, or a table of ours defined otherwise. Empty when nothing.
// The words name only the kind of object, never its name or text.
QString foreignObjects(const QList<SchemaObject> &archive, const QList<SchemaObject> &own);

// True when a table of the program's own schema is not in the archive's.
bool lacksTables(const QList<SchemaObject> &archive, const QList<SchemaObject> &own);

// A value a screen would refuse: where it stands and why, in the system's words.
struct ValueFault {
    QString table;   // the table's name in the schema
    qint64 id = 0;   // the row's id
    QString column;  // empty for a fault of the whole row
    QString fault;
};
// The words a message shows: "Курсове, ред № 15, поле km: извън разрешените граници".
QString describe(const ValueFault &fault);
// The name a table has on screen.
QString tableCaption(const QString &table);

// Every row of a database of this program's newest schema, value by value, against the rules
// of the screens that write them: kinds, ranges, dates, document numbers, texts, the invoicing
// flag against its number, the stock on hand against its receipts, the conversion rate. The
// first fault met, or none.
std::optional<ValueFault> checkStoredValues(QSqlDatabase db);

}
