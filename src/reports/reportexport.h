#pragma once

#include "reports/report.h"
#include "data/tableexport.h"

namespace zarek {

// A filled report as a table for a spreadsheet: the report header's texts as title lines, the
// detail boxes from left to right as columns (captioned by the page header's label above each),
// the rows of the report, and the report footer's totals under their columns.
ExportTable exportTableOf(const Report &report);
// The same for rows read through a cell function (rows kept packed, say): column is an index of
// rowColumns, the names of the rows' columns.
ExportTable exportTableOf(const Report &report, const QStringList &rowColumns, int rowCount,
                          std::function<QVariant(int row, int column)> cell);

}
