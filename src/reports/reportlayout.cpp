#include "reportlayout.h"

#include "core/formats.h"

#include "core/rounding.h"
#include "core/valueformat.h"
#include "reports/reportexport.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QRegularExpression>

#include <cmath>
#include <memory>

namespace zarek {

namespace {

constexpr double pointsPerTwip = 1.0 / 20.0;
constexpr double measureDpi = 1200.0;
constexpr double textInset = 1.5;    // points between a box's edge and its text
constexpr double minimumFontSize = 5.0;

quint32 argbOf(qint64 vbColor)
{
    const auto c = static_cast<quint32>(vbColor);
    return 0xFF000000u | ((c & 0xFFu) << 16) | (c & 0xFF00u) | ((c >> 16) & 0xFFu);
}

// A figure, with or without the unit of its amount behind it.
bool looksNumeric(const QString &text)
{
    static const QRegularExpression number(QStringLiteral("^-?[0-9 ]+([,.][0-9]+)? ?(%1|%2)?$")
                                               .arg(QRegularExpression::escape(amountUnit(Currency::Leva)),
                                                    QRegularExpression::escape(amountUnit(Currency::Euro))));
    return number.match(text).hasMatch();
}

// Fonts and their metrics on a 1200 dpi image, so measures never depend on the screen.
class Measurer {
public:
    explicit Measurer(QList<ReportFont> &fonts) : m_fonts(fonts), m_device(1, 1, QImage::Format_ARGB32)
    {
        const int dotsPerMeter = static_cast<int>(std::lround(measureDpi / 0.0254));
        m_device.setDotsPerMeterX(dotsPerMeter);
        m_device.setDotsPerMeterY(dotsPerMeter);
    }

    int fontIndex(const ReportFont &font)
    {
        for (qsizetype i = 0; i < m_fonts.size(); ++i) {
            if (m_fonts.at(i) == font)
                return static_cast<int>(i);
        }
        m_fonts.append(font);
        QFont qfont(font.family);
        qfont.setPointSizeF(font.size);
        qfont.setBold(font.bold);
        qfont.setItalic(font.italic);
        qfont.setHintingPreference(QFont::PreferNoHinting);
        m_metrics.push_back(std::make_unique<QFontMetricsF>(qfont, &m_device));
        m_widths.emplace_back();
        return static_cast<int>(m_fonts.size() - 1);
    }

    // Reports repeat the same dates, names and figures on every page: each is shaped once.
    double width(int font, const QString &text)
    {
        QHash<QString, double> &cache = m_widths[static_cast<size_t>(font)];
        const auto found = cache.constFind(text);
        if (found != cache.constEnd())
            return *found;
        const double width = metrics(font).horizontalAdvance(text) * scale();
        if (cache.size() < 200000)
            cache.insert(text, width);
        return width;
    }
    double ascent(int font) const { return metrics(font).ascent() * scale(); }
    double lineSpacing(int font) const { return metrics(font).lineSpacing() * scale(); }
    QString elided(int font, const QString &text, double width) const
    {
        return metrics(font).elidedText(text, Qt::ElideRight, width / scale());
    }

private:
    const QFontMetricsF &metrics(int font) const { return *m_metrics.at(static_cast<size_t>(font)); }
    static double scale() { return 72.0 / measureDpi; }

    QList<ReportFont> &m_fonts;
    QImage m_device;
    std::vector<std::unique_ptr<QFontMetricsF>> m_metrics;
    std::vector<QHash<QString, double>> m_widths;
};

// A band laid out at y = 0, to be moved to its place on a page.
struct Band {
    double height = 0;
    double designHeight = 0;
    QList<ReportPrimitive> primitives;
    QList<QPair<int, ReportAlign>> pageNumberTexts;  // texts that carry "%1 of %2"
};

// A totals box: the column and the running figure, exact to the decimals of its format.
struct Aggregate {
    int column = -1;
    std::optional<int> decimals;
    qint64 units = 0;
    double sum = 0;
    double minimum = 0;
    double maximum = 0;
    int count = 0;
};

class LayoutEngine {
public:
    explicit LayoutEngine(const Report &report) : m_report(report), m_measure(m_out.fonts) {}

    LaidOutReport run();

private:
    void computeAggregates();
    // Every bound field must be a column of the rows, or the report would print blanks unseen.
    void checkDataFields() const;
    QString aggregateText(const ReportControl &control) const;
    Band buildBand(const ReportSection &section, int row);
    // Adds a control moved down by shift; returns the height it took.
    double addControl(Band &band, const ReportControl &control, const QString &text, qint64 backColor,
                      bool pageNumber, double shift);
    // A paragraph broken into lines that fit the width; blanks stay as written except where a
    // line breaks.
    QStringList wrapKeepingBlanks(const QString &paragraph, int font, double width);
    const QList<int> &topOrder(const ReportSection &section);
    void place(const Band &band, double y);
    void startPage(bool first);
    void endPage();
    void fillPageNumbers();

    const Report &m_report;
    LaidOutReport m_out;
    Measurer m_measure;
    QHash<QString, Aggregate> m_aggregates;  // by section + control name
    QList<int> m_dataColumns;                // Detail controls: column of the row set
    QHash<QString, QList<int>> m_topOrder;   // each section's controls from the top down
    double m_left = 0;
    double m_top = 0;
    double m_contentBottom = 0;
    double m_y = 0;
    bool m_pageHasRows = false;
    Band m_pageHeader;
    Band m_pageFooter;
    struct PageNumberSlot {
        int page;
        qsizetype primitive;
        ReportAlign align;
    };
    QList<PageNumberSlot> m_pageNumbers;
};

QString aggregateKey(const QString &section, const QString &control) { return section + QLatin1Char('.') + control; }

void LayoutEngine::computeAggregates()
{
    const RowSet &rows = m_report.data();
    for (const ReportSection &section : m_report.design().sections) {
        for (const ReportControl &control : section.controls) {
            if (control.kind != ReportControlKind::Function)
                continue;
            Aggregate aggregate;
            aggregate.column = rows.column(control.dataField);
            aggregate.decimals = formatDecimals(control.format);
            if (aggregate.column >= 0) {
                const double factor = aggregate.decimals ? std::pow(10.0, *aggregate.decimals) : 1.0;
                for (int r = 0; r < rows.rowCount(); ++r) {
                    const QVariant &cell = rows.value(r, aggregate.column);
                    if (cell.isNull())
                        continue;
                    const double value = cell.toDouble();
                    // Each row counts as printed, so the total always equals the sum of the column.
                    if (aggregate.decimals)
                        aggregate.units += std::llround(roundHalfEven(value, *aggregate.decimals) * factor);
                    aggregate.sum += value;
                    aggregate.minimum = aggregate.count == 0 ? value : std::min(aggregate.minimum, value);
                    aggregate.maximum = aggregate.count == 0 ? value : std::max(aggregate.maximum, value);
                    ++aggregate.count;
                }
            }
            m_aggregates.insert(aggregateKey(section.name, control.name), aggregate);
        }
    }
}

void LayoutEngine::checkDataFields() const
{
    const RowSet &rows = m_report.data();
    if (rows.columnCount() == 0)
        return;
    for (const ReportSection &section : m_report.design().sections) {
        for (const ReportControl &control : section.controls) {
            const bool bound = control.kind == ReportControlKind::Text || control.kind == ReportControlKind::Function;
            if (bound && !control.dataField.isEmpty() && rows.column(control.dataField) < 0)
                reportFault(QStringLiteral("Report %1: %2.%3 is bound to %4, which the rows do not have")
                                .arg(m_report.design().name, section.name, control.name, control.dataField));
            if (!control.backColorField.isEmpty() && rows.column(control.backColorField) < 0)
                reportFault(QStringLiteral("Report %1: %2.%3 is coloured by %4, which the rows do not have")
                                .arg(m_report.design().name, section.name, control.name, control.backColorField));
        }
    }
}

QString LayoutEngine::aggregateText(const ReportControl &control) const
{
    // Reached only for Function controls; the section is looked up by name.
    for (const ReportSection &section : m_report.design().sections) {
        if (section.control(control.name) != &control)
            continue;
        const Aggregate a = m_aggregates.value(aggregateKey(section.name, control.name));
        double value = 0;
        switch (control.functionType) {
        case 1: value = a.count ? a.sum / a.count : 0; break;
        case 2: value = a.minimum; break;
        case 3: value = a.maximum; break;
        case 4:
        case 5: value = a.count; break;
        default:
            value = a.decimals ? static_cast<double>(a.units) / std::pow(10.0, *a.decimals) : a.sum;
            break;
        }
        return formatReportValue(value, control.format.isEmpty() ? QStringLiteral("0") : control.format);
    }
    return {};
}

double LayoutEngine::addControl(Band &band, const ReportControl &control, const QString &text, qint64 backColor,
                                bool pageNumber, double shift)
{
    const QRectF box(control.left * pointsPerTwip, control.top * pointsPerTwip + shift, control.width * pointsPerTwip,
                     control.height * pointsPerTwip);
    const qsizetype fillIndex = band.primitives.size();
    if (backColor != noColor) {
        ReportPrimitive fill;
        fill.kind = ReportPrimitive::Kind::Fill;
        fill.rect = box;
        fill.color = argbOf(backColor);
        band.primitives.append(fill);
    }
    double grownHeight = box.height();
    if (!text.isEmpty()) {
        ReportFont font = control.font;
        int fontIndex = m_measure.fontIndex(font);
        const double available = std::max(0.0, box.width() - 2 * textInset);
        QStringList lines;
        if (control.canGrow) {
            for (const QString &paragraph : text.split(QLatin1Char('\n')))
                lines += wrapKeepingBlanks(paragraph, fontIndex, available);
        } else {
            // Line breaks stay breaks; each line keeps its blanks, as receipts align on them.
            const QStringList written = text.split(QLatin1Char('\n'));
            for (QString single : written) {
                const double width = m_measure.width(fontIndex, single);
                if (width > available && !pageNumber) {
                    if (looksNumeric(single) && written.size() == 1) {
                        // A figure is never cut: it is set smaller until it fits its box.
                        font.size = std::max(minimumFontSize, std::floor(font.size * available / width * 4) / 4);
                        fontIndex = m_measure.fontIndex(font);
                    } else if (!looksNumeric(single)) {
                        single = m_measure.elided(fontIndex, single, available);
                    }
                }
                lines.append(single);
            }
        }
        // A figure set smaller keeps the baseline of its row's font, so it reads level with its row.
        ReportFont designed = control.font;
        if (control.baselineFontSize > 0)
            designed.size = control.baselineFontSize;
        const int lineFont = m_measure.fontIndex(designed);
        const double spacing = m_measure.lineSpacing(lineFont == fontIndex ? fontIndex : lineFont);
        const double ascent = m_measure.ascent(lineFont == fontIndex ? fontIndex : lineFont);
        // A box tall enough for all its lines holds them centred, as it holds one line. Otherwise the
        // first line sits where a single line would, so a wrapped cell reads level with its row.
        const double block = spacing * lines.size();
        const double firstOffset = block <= box.height() + 0.01 ? (box.height() - block) / 2
                                                                : std::max(0.0, (box.height() - spacing) / 2);
        const double textHeight = firstOffset + spacing * lines.size();
        double baseline = box.top() + ascent + firstOffset;
        for (const QString &line : lines) {
            ReportPrimitive p;
            p.kind = ReportPrimitive::Kind::Text;
            p.text = line;
            p.font = fontIndex;
            p.color = argbOf(control.foreColor);
            const double width = m_measure.width(fontIndex, line);
            double x = box.left() + textInset;
            if (control.align == ReportAlign::Right)
                x = box.right() - textInset - width;
            else if (control.align == ReportAlign::Center)
                x = box.left() + (box.width() - width) / 2;
            p.origin = QPointF(x, baseline);
            p.rect = QRectF(x, baseline - ascent, width, spacing);
            if (pageNumber)
                band.pageNumberTexts.append({static_cast<int>(band.primitives.size()), control.align});
            band.primitives.append(p);
            baseline += spacing;
        }
        if (control.canGrow)
            grownHeight = std::max(grownHeight, textHeight + 1.0);
        if (grownHeight > box.height() && backColor != noColor)
            band.primitives[fillIndex].rect.setHeight(grownHeight);
    }
    if (control.border) {
        ReportPrimitive frame;
        frame.kind = ReportPrimitive::Kind::Box;
        frame.rect = QRectF(box.left(), box.top(), box.width(), grownHeight);
        frame.color = argbOf(control.foreColor);
        frame.lineWidth = control.lineWidth;
        band.primitives.append(frame);
    }
    return grownHeight;
}

QStringList LayoutEngine::wrapKeepingBlanks(const QString &paragraph, int font, double width)
{
    // Most cells fit on their one line: measured once, they need no breaking.
    if (m_measure.width(font, paragraph) <= width)
        return {paragraph};
    static const QRegularExpression word(QStringLiteral(" *[^ ]+| +$"));
    QStringList lines;
    QString line;
    auto it = word.globalMatch(paragraph);
    while (it.hasNext()) {
        const QString piece = it.next().captured();
        const QString candidate = line + piece;
        if (line.isEmpty() || m_measure.width(font, candidate) <= width) {
            line = candidate;
            continue;
        }
        lines.append(line);
        line = piece.trimmed();
    }
    // A single word wider than the box is cut to the box rather than run over its neighbour.
    if (m_measure.width(font, line) > width)
        line = m_measure.elided(font, line, width);
    lines.append(line);
    return lines;
}

const QList<int> &LayoutEngine::topOrder(const ReportSection &section)
{
    auto found = m_topOrder.find(section.name);
    if (found != m_topOrder.end())
        return *found;
    QList<int> order;
    for (int i = 0; i < section.controls.size(); ++i)
        order.append(i);
    std::stable_sort(order.begin(), order.end(),
                     [&](int a, int b) { return section.controls.at(a).top < section.controls.at(b).top; });
    return *m_topOrder.insert(section.name, order);
}

Band LayoutEngine::buildBand(const ReportSection &section, int row)
{
    Band band;
    band.height = section.height * pointsPerTwip;
    band.designHeight = band.height;
    const RowSet &rows = m_report.data();
    // A control that grew pushes down what stands below it, as far as it grew.
    struct Growth {
        double designBottom;
        double push;
    };
    QList<Growth> growths;
    double deepest = 0;
    for (const int i : topOrder(section)) {
        const ReportControl &control = section.controls.at(i);
        if (!control.visible)
            continue;
        const double top = control.top * pointsPerTwip;
        double shift = 0;
        for (const Growth &g : growths) {
            if (top >= g.designBottom - 0.01)
                shift = std::max(shift, g.push);
        }
        double height = control.height * pointsPerTwip;
        switch (control.kind) {
        case ReportControlKind::Line:
        case ReportControlKind::Box: {
            ReportPrimitive p;
            p.kind = control.kind == ReportControlKind::Line ? ReportPrimitive::Kind::Line : ReportPrimitive::Kind::Box;
            p.rect = QRectF(control.left * pointsPerTwip, top + shift, control.width * pointsPerTwip, height);
            // A line runs from the rect's top left to its bottom right; a rising one from bottom left up.
            if (control.kind == ReportControlKind::Line && control.rising)
                p.rect = QRectF(p.rect.bottomLeft(), p.rect.topRight());
            p.color = argbOf(control.foreColor);
            p.lineWidth = control.lineWidth;
            band.primitives.append(p);
            break;
        }
        case ReportControlKind::Label:
            height = addControl(band, control, control.caption, control.backColor, false, shift);
            break;
        case ReportControlKind::PageNumber:
            height = addControl(band, control, control.caption, control.backColor, true, shift);
            break;
        case ReportControlKind::Function:
            height = addControl(band, control, aggregateText(control), control.backColor, false, shift);
            break;
        case ReportControlKind::Text: {
            QString text;
            qint64 back = control.backColor;
            if (row >= 0) {
                const int column = section.name == QLatin1String("Detail") ? m_dataColumns.at(i)
                                                                           : rows.column(control.dataField);
                if (column >= 0)
                    text = formatReportValue(rows.value(row, column), control.format);
                if (!control.backColorField.isEmpty()) {
                    const QVariant flag = rows.value(row, control.backColorField);
                    back = flag.toBool() ? control.backColorWhenTrue : control.backColorWhenFalse;
                }
            }
            height = addControl(band, control, text, back, false, shift);
            break;
        }
        }
        const double push = shift + height - control.height * pointsPerTwip;
        if (push > 0.01) {
            growths.append({top + control.height * pointsPerTwip, push});
            deepest = std::max(deepest, push);
        }
    }
    band.height += deepest;
    return band;
}

void LayoutEngine::place(const Band &band, double y)
{
    ReportPage &page = m_out.pages.last();
    const QPointF offset(m_left, y);
    const qsizetype first = page.primitives.size();
    for (ReportPrimitive p : band.primitives) {
        p.rect.translate(offset);
        p.origin += offset;
        page.primitives.append(p);
    }
    for (const auto &[index, align] : band.pageNumberTexts)
        m_pageNumbers.append({static_cast<int>(m_out.pages.size() - 1), first + index, align});
}

void LayoutEngine::startPage(bool first)
{
    m_out.pages.append(ReportPage{});
    m_y = m_top;
    m_pageHasRows = false;
    if (first) {
        const ReportSection *header = m_report.design().section(QStringLiteral("ReportHeader"));
        if (header && header->visible) {
            const Band band = buildBand(*header, m_report.data().isEmpty() ? -1 : 0);
            place(band, m_y);
            m_y += band.height;
        }
    }
    place(m_pageHeader, m_y);
    m_y += m_pageHeader.height;
}

void LayoutEngine::endPage()
{
    place(m_pageFooter, m_contentBottom);
}

void LayoutEngine::fillPageNumbers()
{
    const QString pages = QString::number(m_out.pageCount());
    for (const PageNumberSlot &slot : m_pageNumbers) {
        ReportPrimitive &p = m_out.pages[slot.page].primitives[slot.primitive];
        const double oldWidth = p.rect.width();
        p.text = p.text.arg(slot.page + 1).arg(pages);
        const double width = m_measure.width(p.font, p.text);
        // Keep the alignment the text had with its placeholders.
        if (slot.align == ReportAlign::Right)
            p.origin.rx() -= width - oldWidth;
        else if (slot.align == ReportAlign::Center)
            p.origin.rx() -= (width - oldWidth) / 2;
        p.rect = QRectF(p.origin.x(), p.rect.top(), width, p.rect.height());
    }
}

LaidOutReport LayoutEngine::run()
{
    const ReportDesign &design = m_report.design();
    const ReportPageSetup &setup = design.page;
    m_out.name = design.name;
    m_out.windowCaption = design.caption;
    m_out.suggestedFileName = m_report.suggestedFileName();
    m_out.table = std::make_shared<const ExportTable>(exportTableOf(m_report));
    m_out.orientation = setup.orientation;
    m_out.pageSize = reportPageSize(setup.orientation);
    m_out.windowSize = QSize(setup.windowWidth / 15, setup.windowHeight / 15);
    m_left = setup.leftMargin * pointsPerTwip;
    m_top = setup.topMargin * pointsPerTwip;

    computeAggregates();

    const ReportSection *pageHeader = design.section(QStringLiteral("PageHeader"));
    const ReportSection *detail = design.section(QStringLiteral("Detail"));
    const ReportSection *pageFooter = design.section(QStringLiteral("PageFooter"));
    const ReportSection *reportFooter = design.section(QStringLiteral("ReportFooter"));
    if (pageHeader && pageHeader->visible)
        m_pageHeader = buildBand(*pageHeader, -1);
    if (pageFooter && pageFooter->visible)
        m_pageFooter = buildBand(*pageFooter, -1);
    m_contentBottom = m_out.pageSize.height() - setup.bottomMargin * pointsPerTwip - m_pageFooter.height;

    const RowSet &rows = m_report.data();
    if (detail) {
        for (const ReportControl &control : detail->controls)
            m_dataColumns.append(control.kind == ReportControlKind::Text ? rows.column(control.dataField) : -1);
    }
    checkDataFields();

    startPage(true);
    if (detail && detail->visible) {
        for (int row = 0; row < rows.rowCount(); ++row) {
            const Band band = buildBand(*detail, row);
            if (m_y + band.height > m_contentBottom + 0.01 && m_pageHasRows) {
                endPage();
                startPage(false);
            }
            place(band, m_y);
            m_y += band.height;
            m_pageHasRows = true;
        }
    }
    if (reportFooter && reportFooter->visible) {
        const Band band = buildBand(*reportFooter, -1);
        if (m_y + band.height > m_contentBottom + 0.01) {
            endPage();
            startPage(false);
        }
        place(band, m_y);
        m_y += band.height;
    }
    endPage();
    fillPageNumbers();
    for (const auto &[title, png] : m_report.pictures())
        m_out.appendPicturePage(title, png);
    return std::move(m_out);
}

}

QSizeF reportPageSize(ReportOrientation orientation)
{
    const QSizeF a4(595.2756, 841.8898);  // 210 x 297 mm
    return orientation == ReportOrientation::Landscape ? a4.transposed() : a4;
}

LaidOutReport layoutReport(const Report &report)
{
    LayoutEngine engine(report);
    return engine.run();
}

}
