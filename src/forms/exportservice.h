#pragma once

#include "core/usermessage.h"
#include "data/tableexport.h"

#include <QString>
#include <functional>

class QWidget;

namespace zarek {

// Lists leave the program one way, whichever screen shows them (a result grid, the course
// journal, a report's preview): the file dialog opens in the folder of the last list written
// (remembered in the user's settings; the documents folder at first), offers an Excel workbook
// or a .csv text, and what goes wrong is told through the message service.
namespace exportservice {

// The folder the file dialog opens in.
QString folder();

// Writes the table by the file name's extension (.xlsx, otherwise .csv). False, after the
// message, when it could not be written.
bool write(const ExportTable &table, const QString &fileName);
// The same for a table that may fail to be made (its rows read from the database, say).
bool write(const std::function<Checked<ExportTable>()> &table, const QString &fileName);

// Asks for the file under the dialog's title, offering the subject as its name, writes it and
// remembers its folder. False when cancelled or not written.
bool chooseAndWrite(QWidget *parent, const QString &title, const QString &subject,
                    const std::function<Checked<ExportTable>()> &table);

}

}
