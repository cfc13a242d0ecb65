#pragma once

#include "core/currency.h"
#include "core/firmprofile.h"
#include "core/usermessage.h"
#include "dashboard/dashboardfigures.h"
#include "reports/report.h"

#include <QList>
#include <QString>
#include <QStringList>

// What each tile of "Табло" says, as rows of texts: the tile shows them and its page prints them
// (the design rptTablo), so the screen and the paper cannot tell two stories.
namespace zarek::dashboard {

struct TileSheet {
    QString title;
    QString period;         // the period the tile covers, as it heads the tile
    QStringList headers;    // up to four column captions
    QList<QStringList> rows;  // up to four cells each
    QString note;           // a line under the rows; empty for none
};

TileSheet monthSheet(const MonthComparison &months);
TileSheet uninvoicedSheet(const QList<UninvoicedClient> &clients, const BooksDay &books);
TileSheet unpaidSheet(const QList<UnpaidDriver> &drivers, const BooksDay &books);
TileSheet receivablesSheet(const Receivables &receivables, const BooksDay &books);
TileSheet documentsSheet(const DueDocuments &documents, const BooksDay &books);
TileSheet profitSheet(const TruckProfits &profits);

// A month as the tiles name it: "11.2026".
QString monthText(const Period &month);
// "01.11.2026 - 30.11.2026".
QString periodText(const Period &period);

// The tile's page: the firm, "Табло", the tile's title and period, its rows.
Checked<Report> tileReport(const TileSheet &sheet, const FirmProfile &firm);

}
