#pragma once

#include "core/firmprofile.h"
#include "core/usermessage.h"
#include "courses/searchconditions.h"
#include "reports/report.h"

#include <QSqlDatabase>

namespace zarek {

class ScratchDatabase;

// rptRowdList: the waybills of a period for conditions.SeekKola ("0" is every truck), each with
// a head line (number and date, truck, fuel loaded and odometer, the waybill's sums) and a line
// per route. Laid out in the scratch table TempRowdList, which is emptied first. The totals are
// the waybills' stored sums. No waybill at all: the message instead of a report.
Checked<Report> RowdReport(const SearchConditions &conditions, QSqlDatabase db, ScratchDatabase &scratch,
                           const FirmProfile &firm);

// The truck text that stands for every truck.
inline QString allTrucks() { return QStringLiteral("0"); }

}
