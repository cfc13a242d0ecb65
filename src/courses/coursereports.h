#pragma once

#include "core/currency.h"
#include "core/firmprofile.h"
#include "core/usermessage.h"
#include "courses/searchconditions.h"
#include "reports/report.h"
#include "reports/reportrows.h"

#include <QSqlDatabase>

// The course reports: the courses of a period per truck, for the whole firm, per client and per
// driver, each filled into its design and ready to lay out and preview.
namespace zarek {

// rptKola: the courses of conditions.SeekKola.
Checked<Report> ReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books);
// rptAll: all courses, or by conditions.SeekChoice only the invoiced ("Yes") or not invoiced ("No").
Checked<Report> ReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books);
// rptKlient: the courses of conditions.SeekKlient.
Checked<Report> ReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books);
// rptDriver: the courses of conditions.SeekDriverKod, each date cell grey while that course is unpaid.
Checked<Report> ReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books);

// The same reports with their rows read as they are laid out, for the preview: the first page
// shows before the last course is read.
Checked<StreamedReport> streamReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books);
Checked<StreamedReport> streamReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books);
Checked<StreamedReport> streamReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books);
Checked<StreamedReport> streamReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books);

}
