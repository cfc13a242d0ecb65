#pragma once

#include "reports/laidoutreport.h"
#include "reports/report.h"

namespace zarek {

// Lays a filled report out into A4 pages: the report header once, the page header and footer on
// every page, one band per row (a row is never split over two pages), the report footer with its
// totals after the last row, and "page of pages" once the count is known. Text is measured on a
// fixed-resolution device, so the pages come out the same on every screen and printer.
// Needs a QGuiApplication (fonts).
LaidOutReport layoutReport(const Report &report);

// A4 in points, turned for landscape.
QSizeF reportPageSize(ReportOrientation orientation);

}
