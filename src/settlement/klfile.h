#pragma once

#include "core/usermessage.h"
#include "settlement/klientsstore.h"

#include <QSqlDatabase>
#include <QString>

// The .kl working files of client statements: SQLite databases holding the statement's two
// scratch tables, TempKlients and TempKlientsNew.
namespace zarek {

// Writes the statement's scratch database to path. SQLite makes the copy itself (VACUUM INTO) into
// a new file beside the target, the copy is read back and checked, and only then takes the place
// of the target; a failure leaves whatever stood at the path untouched.
std::optional<UserMessage> saveStatementFile(QSqlDatabase scratch, const QString &path);

// Reads a .kl file, opened read-only: it must be a sound SQLite database with both tables and their
// eight columns, numbers in the number columns and dates in Data. Further tables and columns (files
// of earlier versions) are accepted and ignored; anything else is refused with a message.
Checked<StatementFileRows> readStatementFile(const QString &path);

// The title and filter of the file dialogs.
QString statementFileFilter();   // "Данни за клиенти (*.kl)"
QString statementFileSuffix();   // "kl"

}
