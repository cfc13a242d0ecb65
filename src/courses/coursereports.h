#pragma once

#include "core/firmprofile.h"
#include "core/usermessage.h"
#include "courses/searchconditions.h"
#include "reports/report.h"

#include <QSqlDatabase>

// The course reports: the courses of a period per truck, for the whole firm, per client and per
// driver, each filled into its design and ready to lay out and preview.
namespace zarek {

// rptKola: the courses of conditions.SeekKola.
Checked<Report> ReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm);
// rptAll: all courses, or by conditions.SeekChoice only the invoiced ("Yes") or not invoiced ("No").
Checked<Report> ReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm);
// rptKlient: the courses of conditions.SeekKlient.
Checked<Report> ReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm);
// rptDriver: the courses of conditions.SeekDriverKod, each date cell grey while that course is unpaid.
Checked<Report> ReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm);

}
