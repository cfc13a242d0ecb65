#pragma once

#include "reports/report.h"
#include "data/tableexport.h"

namespace zarek {

// A filled report as a table for a spreadsheet: the report header's texts as title lines, the
// detail boxes from left to right as columns (captioned by the page header's label above each),
// the rows of the report, and the report footer's totals under their columns.
ExportTable exportTableOf(const Report &report);

}
