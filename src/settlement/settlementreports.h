#pragma once

#include "core/firmprofile.h"
#include "core/money.h"
#include "reports/report.h"
#include "reports/reportrows.h"
#include "settlement/paymentstore.h"
#include "settlement/paysheetstore.h"
#include "settlement/scratchsheets.h"

#include <QDate>

// The papers of paying drivers: the pay sheet and the payment statement, each with the receipt
// the driver signs, and the lists of paid and unpaid courses.
namespace zarek {

// rptZaplata over the rows of TempZaplata: the firm, "Извлечение", the driver and period, the
// courses with their pay, "Всичко заработка:" with the sheet's total, and the receipt.
Checked<Report> ReportZaplata(const PaySheet &sheet, RowSet tempZaplata, const FirmProfile &firm, QDate today);
// The same over rows read as its pages are laid out (paySheetRowStream): the first page shows
// without the others' rows being made.
Checked<StreamedReport> ReportZaplata(const PaySheet &sheet, std::shared_ptr<RowStream> tempZaplata,
                                      const FirmProfile &firm, QDate today);

// rptPlaten over the rows of TempPlaten: the courses marked paid and their sum, with the receipt.
// The firm's address stands without its town.
Checked<Report> ReportPlaten(const QString &name, const DriverPapers &papers, const Period &period,
                             const ScratchStatement &statement, const FirmProfile &firm, QDate today);

// rptNePlaten over the rows of TempPlaten: the paid (or unpaid) courses and "Всичко:"; no receipt.
Checked<Report> ReportNePlaten(bool paid, const QString &name, const Period &period, const ScratchStatement &statement,
                               const FirmProfile &firm);

}
