#pragma once

#include "core/dates.h"
#include "core/firmprofile.h"
#include "fleet/truckbalance.h"
#include "reports/report.h"

namespace zarek {

// rptBalans over the rows of TempBalans: the profit of every truck with its total, or the fuel
// of every truck, which has no total.
Checked<Report> ReportBalans(BalansMode mode, const RowSet &rows, const Period &period, qint64 sumTotal,
                             const FirmProfile &firm, const Changeover &changeover);

// rptKolaN: one truck's waybills of the period (ListID, Data, NameDriver, SumRazhN, ZarN), the
// norm fuel against the fuel loaded, with their totals.
Checked<Report> ReportKolaN(const QString &kola, const RowSet &waybills, const Period &period, const FirmProfile &firm);

}
