#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <optional>

namespace zarek {

// One column of an exported table: its caption and what its cells are, so a spreadsheet gets
// numbers as numbers and dates as dates.
struct ExportColumn {
    enum class Kind { Text, Number, Date, YesNo };
    QString caption;
    Kind kind = Kind::Text;
    int decimals = 0;  // Number: the decimals shown
    int extraDecimals = 0;  // Number: further decimals shown only where the value has them (a rate in euro)
};

// A list ready to leave the program: title lines, the columns, the rows (read through a cell
// function, so a large list is never copied) and an optional totals row.
struct ExportTable {
    QString sheetName = QStringLiteral("Справка");
    QStringList titleLines;
    QList<ExportColumn> columns;
    int rowCount = 0;
    std::function<QVariant(int row, int column)> cell;
    QString totalsCaption = QStringLiteral("Всичко:");
    QList<QVariant> totals;  // one per column, null where none; empty: no totals row
    QStringList noteLines;   // lines under the totals
    QList<QPair<QString, QByteArray>> pictures;  // title and PNG: a sheet of its own each in a workbook
};

// The table for the column kind a grid or report format asks for: "###0.00", "0,000" and the like
// are numbers, "Short Date" dates, "Yes/No" yes/no values.
ExportColumn exportColumnOf(const QString &caption, const QString &format);

// Text for other programs: UTF-8 with a byte order mark, ";" between cells, decimal comma,
// dates as dd.MM.yyyy, quotes where a cell needs them, CR LF line ends.
std::optional<UserMessage> writeCsv(const ExportTable &table, const QString &fileName);

// An .xlsx workbook of one sheet: bold title lines, a bold header row that stays in view, numbers
// with their columns' decimals, dates as dates, the totals row in bold.
std::optional<UserMessage> writeXlsx(const ExportTable &table, const QString &fileName);

// Writes by the file name's extension (.xlsx, otherwise .csv).
std::optional<UserMessage> writeTable(const ExportTable &table, const QString &fileName);

// A file name from a report's subject and period ("Справка за кола СА 1234 ВК 01.03.2026-31.03.2026"),
// without characters a file system refuses.
QString exportFileName(const QString &subject);

}
