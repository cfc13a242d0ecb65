#pragma once

#include "core/dates.h"
#include "core/usermessage.h"
#include "settlement/klientsstore.h"

#include <QSqlDatabase>
#include <QString>
#include <functional>

// The .kl working files of client statements: SQLite databases holding the statement's two
// scratch tables, TempKlients and TempKlientsNew, and KlientsFile, the client and period the
// statement was made for.
namespace zarek {

// Whose statement a file holds: the client and the period of its search.
struct StatementHeading {
    QString klient;
    Period period;
    bool operator==(const StatementHeading &) const = default;
};

struct StatementFile {
    StatementHeading heading;
    StatementFileRows rows;
};

// The most a file may hold: far more courses than a client has in a year, and a size read in a
// moment. A larger file is refused before its rows are read.
inline constexpr int maxStatementFileRows = 100000;
inline constexpr qint64 maxStatementFileBytes = 64 * 1024 * 1024;

// Told while a file is read: rows done of the total; false cancels the reading.
using StatementFileProgress = std::function<bool(int done, int total)>;

// Writes the statement's scratch database and its heading to path, readable by the user alone
// (0600). SQLite makes the copy itself (VACUUM INTO) into a new file beside the target, the copy
// is read back and checked, and only then takes the place of the target; a failure leaves whatever
// stood at the path untouched.
std::optional<UserMessage> saveStatementFile(QSqlDatabase scratch, const StatementHeading &heading,
                                             const QString &path);

// Reads a .kl file, opened read-only: it must be a sound SQLite database no larger than the
// limits, with its heading (one client, a valid period) and the working list's eight columns, each
// value one the statement screen itself would hold: a date in the period, texts without control
// characters within their lengths, whole kilometres from 0 to 32767, tonnes, rate and sum finite
// and within a course's limits. The printed copy is not read: every print makes it afresh.
// Further tables and columns are ignored; anything else is refused with a message naming the row.
Checked<StatementFile> readStatementFile(const QString &path, const StatementFileProgress &progress = {});

// The outcome of a reading cancelled through the progress: nothing is to be shown or changed.
UserMessage statementFileCancelled();

// The title and filter of the file dialogs.
QString statementFileFilter();   // "Данни за клиенти (*.kl)"
QString statementFileSuffix();   // "kl"

}
