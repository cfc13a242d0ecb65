#pragma once

#include "reports/laidoutreport.h"

#include <QImage>
#include <QRectF>
#include <QString>

class QPainter;
class QPrinter;

namespace zarek {

// Draws one laid-out page into target (painter coordinates), scaled to the target's width.
// The preview, the printer and PDF all draw through here.
void renderReportPage(QPainter &painter, const LaidOutReport &report, int page, const QRectF &target);

// A page as a picture at the given resolution, white paper.
QImage renderReportPageImage(const LaidOutReport &report, int page, double dpi);

// Every page to a PDF file; false and a reason when the file cannot be written.
bool exportReportPdf(const LaidOutReport &report, const QString &fileName, QString *error = nullptr);

// Every page (or from..to, 1-based, as the print dialog chose) to a set-up printer.
bool printReport(const LaidOutReport &report, QPrinter &printer);

}
