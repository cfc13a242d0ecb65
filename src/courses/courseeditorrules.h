#pragma once

#include "courses/course.h"
#include "forms/recordstore.h"

#include <QStringList>
#include <optional>

// What the course editor needs besides the checks: its columns, a course as a record-form row
// and back, the driver's name for a code, and how its lists learn new values.
namespace zarek::courseeditor {

// The columns of tabl the editor reads and shows.
QStringList columns();

RecordRow rowOf(const Course &course);
// The id and version of a row, enough to correct or delete it.
Course keyOf(const RecordRow &row);
// The whole course a row shows: the id and version, and the values as stored.
Course courseOf(const RecordRow &row);

// The name of the first driver of a "kod,ime" list with this code; none when no driver has it.
std::optional<QString> driverName(const QStringList &kodIme, const QString &code);

// The "kod,ime" entry a typed driver text stands for: the entry itself, the entry of that code
// ("001") or of that name, or the one entry that contains the text; none when no entry or more
// than one fits.
std::optional<QString> resolveDriver(const QStringList &kodIme, const QString &typed);

// Whether a list learns the text at a save: no item from the second on equals it (both trimmed).
// The first item is not looked at, so a text equal to it is added once more.
bool listLearns(const QStringList &items, const QString &text);

}
