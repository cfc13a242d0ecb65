#pragma once

#include "core/dates.h"
#include "core/firmprofile.h"
#include "reports/report.h"
#include "settlement/klientsstore.h"

namespace zarek {

// rptKlientS: the client's statement over its printed copy (TempKlientsNew), with the totals of
// its lines and the tax summary: net, VAT (20 % of the gross) and gross.
Checked<Report> ReportKlientS(const RowSet &printCopy, const StatementTotals &totals, const QString &klient,
                              const Period &period, const FirmProfile &firm);

}
