#pragma once

#include "reports/laidoutreport.h"

#include <QImage>
#include <QRectF>
#include <QString>
#include <functional>

class QPainter;
class QPrinter;

namespace zarek {

// Draws one laid-out page into target (painter coordinates), scaled to the target's width.
// The preview, the printer and PDF all draw through here.
void renderReportPage(QPainter &painter, const LaidOutReport &report, int page, const QRectF &target);
// The same for a page held apart from its report (drawn from its record); the frame gives the
// paper and the fonts. With an exposed rectangle (painter coordinates), only what reaches into it
// is drawn: a window showing part of a page lays out the text of that part alone.
void renderReportPage(QPainter &painter, const ReportPage &page, const LaidOutReport &frame, const QRectF &target,
                      const QRectF &exposed = {});

// The pages of a long report, drawn one at a time as they are printed.
using ReportPageSource = std::function<ReportPage(int page)>;
// Told after each page printed (done of total); false stops the printing.
using ReportPrintStep = std::function<bool(int done, int total)>;

// A page as a picture at the given resolution, white paper.
QImage renderReportPageImage(const LaidOutReport &report, int page, double dpi);

// Every page to a PDF file; false and a reason when the file cannot be written.
bool exportReportPdf(const LaidOutReport &report, const QString &fileName, QString *error = nullptr);

// Every page (or from..to, 1-based, as the print dialog chose) to a set-up printer.
bool printReport(const LaidOutReport &report, QPrinter &printer);

// As above for pages drawn from their records; *stopped tells that a step stopped the work (a PDF
// stopped half way is removed, a print job aborted).
bool exportReportPdf(const LaidOutReport &frame, int pageCount, const ReportPageSource &pages,
                     const QString &fileName, QString *error, const ReportPrintStep &step, bool *stopped);
bool printReport(const LaidOutReport &frame, int pageCount, const ReportPageSource &pages, QPrinter &printer,
                 const ReportPrintStep &step, bool *stopped);

}
