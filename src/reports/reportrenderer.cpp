#include "reportrenderer.h"

#include <QFile>
#include <QFont>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QPrinter>

#include <cmath>

namespace zarek {

namespace {

// Where a primitive may leave ink, in page points: a text's glyphs may reach beyond its box by
// their overhang, a line or box by its pen.
QRectF inkOf(const ReportPrimitive &p)
{
    switch (p.kind) {
    case ReportPrimitive::Kind::Text:
        return p.rect.adjusted(-p.rect.height(), -p.rect.height(), p.rect.height(), p.rect.height());
    case ReportPrimitive::Kind::Line:
    case ReportPrimitive::Kind::Box:
        return p.rect.normalized().adjusted(-p.lineWidth - 1, -p.lineWidth - 1, p.lineWidth + 1, p.lineWidth + 1);
    case ReportPrimitive::Kind::Fill:
    case ReportPrimitive::Kind::Image:
        break;
    }
    return p.rect.normalized().adjusted(-1, -1, 1, 1);
}

QPageLayout pageLayoutOf(const LaidOutReport &report)
{
    return QPageLayout(QPageSize(QPageSize::A4),
                       report.orientation == ReportOrientation::Landscape ? QPageLayout::Landscape
                                                                          : QPageLayout::Portrait,
                       QMarginsF(0, 0, 0, 0));
}

}

void renderReportPage(QPainter &painter, const LaidOutReport &report, int page, const QRectF &target)
{
    if (page < 0 || page >= report.pageCount())
        return;
    renderReportPage(painter, report.pages.at(page), report, target);
}

void renderReportPage(QPainter &painter, const ReportPage &page, const LaidOutReport &report, const QRectF &target,
                      const QRectF &exposed)
{
    if (report.pageSize.isEmpty())
        return;
    const double scale = target.width() / report.pageSize.width();
    // The exposed part in page points; none: the whole page.
    const QRectF shown = exposed.isNull() ? QRectF()
                                          : QRectF((exposed.topLeft() - target.topLeft()) / scale, exposed.size() / scale);
    // Fonts are given in points of the device; under the scale below a point of the layout must
    // come out as one unit, so the size is divided by the device's points per unit.
    const double deviceDpi = painter.device() ? painter.device()->logicalDpiY() : 72.0;
    QList<QFont> fonts;
    for (const ReportFont &f : report.fonts) {
        QFont font(f.family);
        font.setPointSizeF(f.size * 72.0 / deviceDpi);
        font.setBold(f.bold);
        font.setItalic(f.italic);
        font.setHintingPreference(QFont::PreferNoHinting);
        fonts.append(font);
    }

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    painter.translate(target.topLeft());
    painter.scale(scale, scale);
    int currentFont = -1;
    quint32 currentPen = 0;
    for (const ReportPrimitive &p : page.primitives) {
        if (!shown.isNull() && !shown.intersects(inkOf(p)))
            continue;
        switch (p.kind) {
        case ReportPrimitive::Kind::Fill:
            painter.fillRect(p.rect, QColor::fromRgba(p.color));
            break;
        case ReportPrimitive::Kind::Line:
            painter.setPen(QPen(QColor::fromRgba(p.color), p.lineWidth));
            painter.drawLine(p.rect.topLeft(), p.rect.bottomRight());
            currentPen = 0;
            currentFont = -1;
            break;
        case ReportPrimitive::Kind::Box:
            painter.setPen(QPen(QColor::fromRgba(p.color), p.lineWidth));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(p.rect);
            currentPen = 0;
            currentFont = -1;
            break;
        case ReportPrimitive::Kind::Image: {
            const QImage picture = QImage::fromData(p.image, "PNG");
            if (!picture.isNull())
                painter.drawImage(p.rect, picture);
            break;
        }
        case ReportPrimitive::Kind::Text:
            if (p.font != currentFont) {
                painter.setFont(fonts.at(p.font));
                currentFont = p.font;
            }
            if (p.color != currentPen || currentPen == 0) {
                painter.setPen(QColor::fromRgba(p.color));
                currentPen = p.color;
            }
            painter.drawText(p.origin, p.text);
            break;
        }
    }
    painter.restore();
}

QImage renderReportPageImage(const LaidOutReport &report, int page, double dpi)
{
    const QSize size(static_cast<int>(std::ceil(report.pageSize.width() * dpi / 72.0)),
                     static_cast<int>(std::ceil(report.pageSize.height() * dpi / 72.0)));
    QImage image(size, QImage::Format_RGB32);
    const int dotsPerMeter = static_cast<int>(std::lround(dpi / 0.0254));
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
    image.fill(Qt::white);
    QPainter painter(&image);
    renderReportPage(painter, report, page, QRectF(QPointF(0, 0), QSizeF(size)));
    return image;
}

namespace {

ReportPageSource pagesOf(const LaidOutReport &report)
{
    return [&report](int page) { return report.pages.at(page); };
}

}

bool exportReportPdf(const LaidOutReport &report, const QString &fileName, QString *error)
{
    return exportReportPdf(report, report.pageCount(), pagesOf(report), fileName, error, {}, nullptr);
}

bool printReport(const LaidOutReport &report, QPrinter &printer)
{
    return printReport(report, report.pageCount(), pagesOf(report), printer, {}, nullptr);
}

bool exportReportPdf(const LaidOutReport &frame, int pageCount, const ReportPageSource &pages,
                     const QString &fileName, QString *error, const ReportPrintStep &step, bool *stopped)
{
    if (stopped)
        *stopped = false;
    bool halted = false;
    {
        QPdfWriter writer(fileName);
        writer.setPageLayout(pageLayoutOf(frame));
        writer.setTitle(frame.windowCaption);
        writer.setCreator(QStringLiteral("Зарек"));
        QPainter painter;
        if (!painter.begin(&writer)) {
            if (error)
                *error = QStringLiteral("Файлът %1 не може да бъде записан.").arg(fileName);
            return false;
        }
        const QRectF target(0, 0, writer.width(), writer.height());
        for (int i = 0; i < pageCount; ++i) {
            if (i > 0)
                writer.newPage();
            renderReportPage(painter, pages(i), frame, target);
            if (step && !step(i + 1, pageCount)) {
                halted = true;
                break;
            }
        }
        if (!painter.end() && !halted)
            return false;
    }
    if (halted) {
        QFile::remove(fileName);  // half a report is no report
        if (stopped)
            *stopped = true;
    }
    return true;
}

bool printReport(const LaidOutReport &frame, int pageCount, const ReportPageSource &pages, QPrinter &printer,
                 const ReportPrintStep &step, bool *stopped)
{
    if (stopped)
        *stopped = false;
    printer.setFullPage(true);
    printer.setPageLayout(pageLayoutOf(frame));
    printer.setDocName(frame.windowCaption);
    int from = 1;
    int to = pageCount;
    if (printer.printRange() == QPrinter::PageRange && printer.fromPage() > 0) {
        from = std::max(1, printer.fromPage());
        to = std::min(pageCount, printer.toPage());
    }
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    const QRectF target = printer.pageLayout().fullRectPixels(printer.resolution());
    for (int i = from; i <= to; ++i) {
        if (i > from)
            printer.newPage();
        renderReportPage(painter, pages(i - 1), frame, QRectF(QPointF(0, 0), target.size()));
        if (step && !step(i - from + 1, to - from + 1)) {
            printer.abort();
            painter.end();
            if (stopped)
                *stopped = true;
            return true;
        }
    }
    return painter.end();
}

}
