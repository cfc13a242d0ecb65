#pragma once

#include "reports/reportdesign.h"
#include "data/tableexport.h"

#include <QByteArray>
#include <QList>
#include <QPointF>
#include <QRectF>
#include <QSizeF>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <memory>

namespace zarek {

// One thing drawn on a page. Coordinates are points (1/72 inch) from the paper's top left corner.
struct ReportPrimitive {
    enum class Kind { Text, Line, Box, Fill, Image };
    Kind kind = Kind::Text;
    QRectF rect;        // Box and Fill: the rectangle; Line: from topLeft to bottomRight; Text: the text's box
    QPointF origin;     // Text: the start of its baseline
    QString text;
    int font = 0;       // Text: index into LaidOutReport::fonts
    quint32 color = 0;  // 0xAARRGGBB
    double lineWidth = 0.5;
    QByteArray image;   // Image: a PNG picture drawn into rect
};

struct ReportPage {
    QList<ReportPrimitive> primitives;
};

// A report laid out into pages, independent of screen and printer: the preview, the printer and
// PDF draw the same pages.
struct LaidOutReport {
    QString name;
    QString windowCaption;
    // The report's rows as a table for a spreadsheet (shared: copying a laid-out report stays cheap);
    // none when the report was not laid out from a filled design.
    std::shared_ptr<const ExportTable> table;
    QString suggestedFileName;  // for a saved copy, without extension; empty: the design's name
    ReportOrientation orientation = ReportOrientation::Portrait;
    QSizeF pageSize;           // points
    QSize windowSize;          // the preview window's size in pixels
    QList<ReportFont> fonts;
    QList<ReportPage> pages;

    int pageCount() const { return static_cast<int>(pages.size()); }

    // Adds a page with a title and a picture (a PNG, a chart say) fitted below it, kept in proportion.
    void appendPicturePage(const QString &title, const QByteArray &png);

    // The texts of a page as lines: texts on one baseline, left to right.
    QList<QStringList> pageTextLines(int page) const;
    // Every page's lines, each line's texts joined by " | ".
    QStringList textLines() const;
    QStringList textLines(int page) const;
};

}
