#include "reportlayout.h"

#include "core/formats.h"

#include "core/rounding.h"
#include "core/valueformat.h"
#include "reports/reportexport.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QDataStream>
#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <cstring>
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

// A font's metrics on a 1200 dpi image, so measures never depend on the screen, and the widths
// of the texts it has measured: reports repeat the same dates, names and figures on every page
// and in every run, and each is shaped once.
struct MeasuredFont {
    ReportFont font;
    std::unique_ptr<QFontMetricsF> metrics;
    QHash<QString, double> widths;
};

class FontMeasures {
public:
    FontMeasures() : m_device(1, 1, QImage::Format_ARGB32)
    {
        const int dotsPerMeter = static_cast<int>(std::lround(measureDpi / 0.0254));
        m_device.setDotsPerMeterX(dotsPerMeter);
        m_device.setDotsPerMeterY(dotsPerMeter);
    }

    MeasuredFont &of(const ReportFont &font)
    {
        for (const std::unique_ptr<MeasuredFont> &measured : m_fonts) {
            if (measured->font == font)
                return *measured;
        }
        QFont qfont(font.family);
        qfont.setPointSizeF(font.size);
        qfont.setBold(font.bold);
        qfont.setItalic(font.italic);
        qfont.setHintingPreference(QFont::PreferNoHinting);
        auto measured = std::make_unique<MeasuredFont>();
        measured->font = font;
        measured->metrics = std::make_unique<QFontMetricsF>(qfont, &m_device);
        m_fonts.push_back(std::move(measured));
        return *m_fonts.back();
    }

private:
    QImage m_device;
    std::vector<std::unique_ptr<MeasuredFont>> m_fonts;
};

// One set per thread, kept for the life of the process (never torn down after the fonts are).
FontMeasures &fontMeasures()
{
    thread_local FontMeasures *measures = new FontMeasures;
    return *measures;
}

// The fonts of one report, numbered as its primitives refer to them.
class Measurer {
public:
    explicit Measurer(QList<ReportFont> &fonts) : m_fonts(fonts) {}

    int fontIndex(const ReportFont &font)
    {
        // Picture pages may have added fonts of their own.
        for (auto i = static_cast<qsizetype>(m_measured.size()); i < m_fonts.size(); ++i)
            m_measured.push_back(&fontMeasures().of(m_fonts.at(i)));
        for (qsizetype i = 0; i < m_fonts.size(); ++i) {
            if (m_fonts.at(i) == font)
                return static_cast<int>(i);
        }
        m_fonts.append(font);
        m_measured.push_back(&fontMeasures().of(font));
        return static_cast<int>(m_fonts.size() - 1);
    }

    double width(int font, const QString &text)
    {
        QHash<QString, double> &cache = m_measured.at(static_cast<size_t>(font))->widths;
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
    const QFontMetricsF &metrics(int font) const { return *m_measured.at(static_cast<size_t>(font))->metrics; }
    static double scale() { return 72.0 / measureDpi; }

    QList<ReportFont> &m_fonts;
    std::vector<MeasuredFont *> m_measured;
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

QString aggregateKey(const QString &section, const QString &control) { return section + QLatin1Char('.') + control; }

// Rows kept compactly, a chunk per page: each cell a tag byte and its value, texts that repeat
// (names, routes, dates) stored once and referred to by number.
class PackedRows {
public:
    explicit PackedRows(QStringList columns) : m_columns(std::move(columns)) {}

    const QStringList &columns() const { return m_columns; }
    int rowCount() const { return m_rowCount; }
    int chunkCount() const { return static_cast<int>(m_chunks.size()); }
    int chunkRowCount(int chunk) const { return m_chunks.at(chunk).rowCount; }

    // Starts the chunk the next rows go to; its index.
    int startChunk()
    {
        m_chunks.append(Chunk{m_rowCount, 0, {}});
        return chunkCount() - 1;
    }
    void append(const QList<QVariant> &cells)
    {
        Chunk &chunk = m_chunks.last();
        for (const QVariant &cell : cells)
            pack(chunk.bytes, cell);
        ++chunk.rowCount;
        ++m_rowCount;
    }
    void squeeze() { m_chunks.last().bytes.squeeze(); }

    RowSet rowsOf(int chunk) const
    {
        RowSet rows(m_columns);
        const Chunk &c = m_chunks.at(chunk);
        rows.reserveRows(c.rowCount);
        const char *at = c.bytes.constData();
        QList<QVariant> cells(m_columns.size());
        for (int r = 0; r < c.rowCount; ++r) {
            for (QVariant &cell : cells)
                cell = unpack(at);
            rows.appendRow(cells);
        }
        return rows;
    }
    // The chunk that holds the row (0-based over all chunks).
    int chunkOfRow(int row) const
    {
        const auto found = std::upper_bound(m_chunks.cbegin(), m_chunks.cend(), row,
                                            [](int r, const Chunk &c) { return r < c.firstRow; });
        return static_cast<int>(found - m_chunks.cbegin()) - 1;
    }
    int firstRowOf(int chunk) const { return m_chunks.at(chunk).firstRow; }

private:
    enum Tag : char { Null, False, True, Int, LongLong, Double, Date, Shared, Text, Other };
    struct Chunk {
        int firstRow = 0;
        int rowCount = 0;
        QByteArray bytes;
    };

    template <typename T>
    static void put(QByteArray &out, T value)
    {
        out.append(reinterpret_cast<const char *>(&value), sizeof value);
    }
    template <typename T>
    static T take(const char *&at)
    {
        T value;
        std::memcpy(&value, at, sizeof value);
        at += sizeof value;
        return value;
    }

    void pack(QByteArray &out, const QVariant &cell)
    {
        if (cell.isNull()) {
            // A null keeps its type, as a report formats an empty cell by it.
            out.append(Null);
            put<qint32>(out, cell.typeId());
            return;
        }
        switch (cell.typeId()) {
        case QMetaType::Bool:
            out.append(cell.toBool() ? True : False);
            return;
        case QMetaType::Int:
            out.append(Int);
            put<qint32>(out, cell.toInt());
            return;
        case QMetaType::LongLong:
            out.append(LongLong);
            put<qint64>(out, cell.toLongLong());
            return;
        case QMetaType::Double:
            out.append(Double);
            put<double>(out, cell.toDouble());
            return;
        case QMetaType::QDate:
            out.append(Date);
            put<qint64>(out, cell.toDate().toJulianDay());
            return;
        case QMetaType::QString: {
            const QString text = cell.toString();
            if (text.size() <= 80 && m_texts.size() < 1'000'000) {
                auto found = m_shared.constFind(text);
                if (found == m_shared.constEnd()) {
                    found = m_shared.insert(text, static_cast<quint32>(m_texts.size()));
                    m_texts.append(text);
                }
                out.append(Shared);
                put<quint32>(out, *found);
                return;
            }
            out.append(Text);
            put<quint32>(out, static_cast<quint32>(text.size()));
            out.append(reinterpret_cast<const char *>(text.constData()), text.size() * qsizetype(sizeof(QChar)));
            return;
        }
        default:
            packOther(out, cell);
            return;
        }
    }
    static void packOther(QByteArray &out, const QVariant &cell)
    {
        QByteArray bytes;
        QDataStream stream(&bytes, QIODevice::WriteOnly);
        stream << cell;
        out.append(Other);
        put<quint32>(out, static_cast<quint32>(bytes.size()));
        out.append(bytes);
    }
    QVariant unpack(const char *&at) const
    {
        const char tag = *at++;
        switch (tag) {
        case Null: {
            const auto type = take<qint32>(at);
            return type == QMetaType::UnknownType ? QVariant() : QVariant(QMetaType(type));
        }
        case False: return false;
        case True: return true;
        case Int: return take<qint32>(at);
        case LongLong: return take<qint64>(at);
        case Double: return take<double>(at);
        case Date: return QDate::fromJulianDay(take<qint64>(at));
        case Shared: return m_texts.at(take<quint32>(at));
        case Text: {
            const auto size = take<quint32>(at);
            QString text(reinterpret_cast<const QChar *>(at), size);
            at += size * sizeof(QChar);
            return text;
        }
        default: {
            const auto size = take<quint32>(at);
            QByteArray bytes = QByteArray::fromRawData(at, size);
            at += size;
            QDataStream stream(bytes);
            QVariant value;
            stream >> value;
            return value;
        }
        }
    }

    QStringList m_columns;
    QList<Chunk> m_chunks;
    int m_rowCount = 0;
    QHash<QString, quint32> m_shared;
    QList<QString> m_texts;
};

}

// One page as kept: its rows, and whether the report's header or footer stands on it.
struct PageRecord {
    int chunk = -1;           // its rows in the packed rows
    bool reportHeader = false;
    bool reportFooter = false;
    int picture = -1;         // a page of one of the report's pictures
};

class ReportLayouter::Engine {
public:
    Engine(const Report &report, std::shared_ptr<RowStream> rows);

    bool layoutNextPage();
    ReportPage page(int index);
    std::shared_ptr<const ExportTable> table();

    Report m_report;
    std::shared_ptr<RowStream> m_stream;
    std::shared_ptr<PackedRows> m_packed;
    LaidOutReport m_out;
    QList<PageRecord> m_pages;
    int m_textPages = 0;  // pages of the report itself, before its pictures
    bool m_complete = false;
    bool m_needsAllRows = false;
    std::optional<UserMessage> m_error;
    std::shared_ptr<const ExportTable> m_table;

private:
    struct LastPage {
        int index = -1;
        bool complete = false;
        int textPages = 0;
        ReportPage page;
    };
    std::optional<LastPage> m_lastPage;  // the page built last, as it was built

    void computeColumns();
    // Every bound field must be a column of the rows, or the report would print blanks unseen.
    void checkDataFields() const;
    void addToAggregates(const QList<QVariant> &cells);
    QString aggregateText(const ReportControl &control) const;
    // A band laid out at y = 0; with heightOnly, only its height is worked out: the controls that
    // cannot grow keep their design's height and are not laid out.
    Band buildBand(const ReportSection &section, const RowSet &rows, int row, bool heightOnly = false);
    // Adds a control moved down by shift; returns the height it took.
    double addControl(Band &band, const ReportControl &control, const QString &text, qint64 backColor,
                      bool pageNumber, double shift);
    // A paragraph broken into lines that fit the width; blanks stay as written except where a
    // line breaks.
    QStringList wrapKeepingBlanks(const QString &paragraph, int font, double width);
    const QList<int> &topOrder(const ReportSection &section);
    // Reads the next row into m_row; false at the end.
    bool readRow();
    double headerHeight();
    void place(ReportPage &page, const Band &band, double y);

    Measurer m_measure;
    const ReportSection *m_header = nullptr;
    const ReportSection *m_detail = nullptr;
    const ReportSection *m_footer = nullptr;
    QHash<QString, Aggregate> m_aggregates;  // by section + control name
    QList<int> m_dataColumns;                // Detail controls: column of the row set
    QHash<QString, QList<int>> m_topOrder;   // each section's controls from the top down
    double m_left = 0;
    double m_top = 0;
    double m_contentBottom = 0;
    Band m_pageHeader;
    Band m_pageFooter;
    RowSet m_firstRow;             // the report header's row
    RowSet m_row;                  // the row being laid out
    QList<QVariant> m_cells;
    bool m_started = false;
    bool m_carried = false;        // m_row did not fit its page and opens the next
    bool m_rowsEnded = false;
    struct PageNumberSlot {
        qsizetype primitive;
        ReportAlign align;
    };
    QList<PageNumberSlot> m_pageNumbers;  // of the page being drawn
};

ReportLayouter::Engine::Engine(const Report &report, std::shared_ptr<RowStream> rows)
    : m_report(report), m_stream(std::move(rows)), m_measure(m_out.fonts)
{
    if (!m_stream)
        m_stream = rowStreamOf(m_report.data());
    m_report.setDataSource(RowSet(m_stream->columns()));  // the rows go through the stream alone
    m_packed = std::make_shared<PackedRows>(m_stream->columns());
    m_firstRow = RowSet(m_stream->columns());
    m_row = RowSet(m_stream->columns());
    m_row.appendRow({});

    const ReportDesign &design = m_report.design();
    const ReportPageSetup &setup = design.page;
    m_out.name = design.name;
    m_out.windowCaption = design.caption;
    m_out.suggestedFileName = m_report.suggestedFileName();
    m_out.orientation = setup.orientation;
    m_out.pageSize = reportPageSize(setup.orientation);
    m_out.windowSize = QSize(setup.windowWidth / 15, setup.windowHeight / 15);
    m_left = setup.leftMargin * pointsPerTwip;
    m_top = setup.topMargin * pointsPerTwip;

    const auto visibleSection = [&design](const QString &name) {
        const ReportSection *section = design.section(name);
        return section && section->visible ? section : nullptr;
    };
    m_header = visibleSection(QStringLiteral("ReportHeader"));
    m_detail = design.section(QStringLiteral("Detail"));
    m_footer = visibleSection(QStringLiteral("ReportFooter"));
    computeColumns();
    checkDataFields();

    const RowSet none(m_stream->columns());
    if (const ReportSection *pageHeader = visibleSection(QStringLiteral("PageHeader")))
        m_pageHeader = buildBand(*pageHeader, none, -1);
    if (const ReportSection *pageFooter = visibleSection(QStringLiteral("PageFooter")))
        m_pageFooter = buildBand(*pageFooter, none, -1);
    m_contentBottom = m_out.pageSize.height() - setup.bottomMargin * pointsPerTwip - m_pageFooter.height;
}

void ReportLayouter::Engine::computeColumns()
{
    const RowSet &rows = m_row;
    for (const ReportSection &section : m_report.design().sections) {
        for (const ReportControl &control : section.controls) {
            if (control.kind != ReportControlKind::Function)
                continue;
            if (section.name != QLatin1String("ReportFooter"))
                m_needsAllRows = true;
            Aggregate aggregate;
            aggregate.column = rows.column(control.dataField);
            aggregate.decimals = formatDecimals(control.format);
            m_aggregates.insert(aggregateKey(section.name, control.name), aggregate);
        }
    }
    if (m_detail) {
        for (const ReportControl &control : m_detail->controls)
            m_dataColumns.append(control.kind == ReportControlKind::Text ? rows.column(control.dataField) : -1);
    }
}

void ReportLayouter::Engine::addToAggregates(const QList<QVariant> &cells)
{
    for (Aggregate &aggregate : m_aggregates) {
        if (aggregate.column < 0)
            continue;
        const QVariant &cell = cells.at(aggregate.column);
        if (cell.isNull())
            continue;
        const double value = cell.toDouble();
        // Each row counts as printed, so the total always equals the sum of the column.
        if (aggregate.decimals)
            aggregate.units += std::llround(roundHalfEven(value, *aggregate.decimals) * std::pow(10.0, *aggregate.decimals));
        aggregate.sum += value;
        aggregate.minimum = aggregate.count == 0 ? value : std::min(aggregate.minimum, value);
        aggregate.maximum = aggregate.count == 0 ? value : std::max(aggregate.maximum, value);
        ++aggregate.count;
    }
}

void ReportLayouter::Engine::checkDataFields() const
{
    const RowSet &rows = m_row;
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

QString ReportLayouter::Engine::aggregateText(const ReportControl &control) const
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
double ReportLayouter::Engine::addControl(Band &band, const ReportControl &control, const QString &text, qint64 backColor,
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

QStringList ReportLayouter::Engine::wrapKeepingBlanks(const QString &paragraph, int font, double width)
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

const QList<int> &ReportLayouter::Engine::topOrder(const ReportSection &section)
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

Band ReportLayouter::Engine::buildBand(const ReportSection &section, const RowSet &rows, int row, bool heightOnly)
{
    Band band;
    band.height = section.height * pointsPerTwip;
    band.designHeight = band.height;
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
        if (heightOnly && !control.canGrow) {
            // it keeps its design's height: nothing to lay out
        } else switch (control.kind) {
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

bool ReportLayouter::Engine::readRow()
{
    if (m_rowsEnded)
        return false;
    if (!m_stream->next(m_cells)) {
        m_rowsEnded = true;
        m_error = m_stream->error();
        m_stream.reset();  // the query and its connection are let go
        return false;
    }
    for (int c = 0; c < m_row.columnCount(); ++c)
        m_row.setValue(0, c, c < m_cells.size() ? m_cells.at(c) : QVariant());
    addToAggregates(m_cells);
    return true;
}

double ReportLayouter::Engine::headerHeight()
{
    if (!m_header)
        return 0;
    return buildBand(*m_header, m_firstRow, m_firstRow.isEmpty() ? -1 : 0).height;
}

bool ReportLayouter::Engine::layoutNextPage()
{
    if (m_complete)
        return false;
    PageRecord record;
    double y = m_top;
    if (!m_started) {
        m_started = true;
        // The report header shows the first row's fields.
        if (readRow()) {
            m_firstRow.appendRow(m_cells);
            m_carried = true;
        }
        record.reportHeader = true;
        y += headerHeight();
    }
    y += m_pageHeader.height;
    record.chunk = m_packed->startChunk();
    bool pageHasRows = false;
    const bool detailShown = m_detail && m_detail->visible;
    while (m_carried || readRow()) {
        m_carried = false;
        if (!detailShown)
            continue;
        // Only the band's height is needed here (the page draws the band); the first band is laid
        // out whole, so the fonts of the detail are known in their order before any page is drawn.
        const double height = buildBand(*m_detail, m_row, 0, m_packed->rowCount() > 0).height;
        if (y + height > m_contentBottom + 0.01 && pageHasRows) {
            m_carried = true;  // opens the next page
            break;
        }
        m_packed->append(m_cells);
        y += height;
        pageHasRows = true;
    }
    m_packed->squeeze();
    m_pages.append(record);
    ++m_textPages;
    if (m_carried)
        return true;

    if (m_footer) {
        const RowSet none(m_row.columns());
        const double height = buildBand(*m_footer, none, -1).height;
        if (y + height > m_contentBottom + 0.01) {
            PageRecord last;
            last.chunk = m_packed->startChunk();
            last.reportFooter = true;
            m_pages.append(last);
            ++m_textPages;
        } else {
            m_pages.last().reportFooter = true;
        }
    }
    for (int i = 0; i < m_report.pictures().size(); ++i) {
        PageRecord picture;
        picture.picture = i;
        m_pages.append(picture);
    }
    m_complete = true;
    return true;
}

void ReportLayouter::Engine::place(ReportPage &page, const Band &band, double y)
{
    const QPointF offset(m_left, y);
    const qsizetype first = page.primitives.size();
    for (ReportPrimitive p : band.primitives) {
        p.rect.translate(offset);
        p.origin += offset;
        page.primitives.append(p);
    }
    for (const auto &[index, align] : band.pageNumberTexts)
        m_pageNumbers.append({first + index, align});
}

ReportPage ReportLayouter::Engine::page(int index)
{
    if (index < 0 || index >= m_pages.size())
        return {};
    const PageRecord &record = m_pages.at(index);
    if (record.picture >= 0) {
        LaidOutReport picture;
        picture.pageSize = m_out.pageSize;
        picture.fonts = m_out.fonts;
        const auto &[title, png] = m_report.pictures().at(record.picture);
        picture.appendPicturePage(title, png);
        m_out.fonts = picture.fonts;
        return picture.pages.constLast();
    }
    // A window asks again for the page it shows as it settles its size: the page is kept until
    // the count of pages it reads changes.
    if (m_lastPage && m_lastPage->index == index && m_lastPage->complete == m_complete
        && m_lastPage->textPages == m_textPages)
        return m_lastPage->page;
    ReportPage page;
    m_pageNumbers.clear();
    double y = m_top;
    if (record.reportHeader && m_header) {
        const Band band = buildBand(*m_header, m_firstRow, m_firstRow.isEmpty() ? -1 : 0);
        place(page, band, y);
        y += band.height;
    }
    place(page, m_pageHeader, y);
    y += m_pageHeader.height;
    if (m_detail && m_detail->visible && record.chunk >= 0) {
        const RowSet rows = m_packed->rowsOf(record.chunk);
        for (int row = 0; row < rows.rowCount(); ++row) {
            const Band band = buildBand(*m_detail, rows, row);
            place(page, band, y);
            y += band.height;
        }
    }
    if (record.reportFooter && m_footer) {
        const Band band = buildBand(*m_footer, RowSet(m_row.columns()), -1);
        place(page, band, y);
    }
    place(page, m_pageFooter, m_contentBottom);

    // "Page of pages": the count so far and "…" while more are to come.
    const QString pages = m_complete ? QString::number(m_textPages) : QString::number(m_textPages) + QChar(0x2026);
    for (const PageNumberSlot &slot : std::as_const(m_pageNumbers)) {
        ReportPrimitive &p = page.primitives[slot.primitive];
        const double oldWidth = p.rect.width();
        p.text = p.text.arg(index + 1).arg(pages);
        const double width = m_measure.width(p.font, p.text);
        // Keep the alignment the text had with its placeholders.
        if (slot.align == ReportAlign::Right)
            p.origin.rx() -= width - oldWidth;
        else if (slot.align == ReportAlign::Center)
            p.origin.rx() -= (width - oldWidth) / 2;
        p.rect = QRectF(p.origin.x(), p.rect.top(), width, p.rect.height());
    }
    m_pageNumbers.clear();
    m_lastPage = LastPage{index, m_complete, m_textPages, page};
    return page;
}

std::shared_ptr<const ExportTable> ReportLayouter::Engine::table()
{
    if (m_table)
        return m_table;
    while (layoutNextPage()) {
    }
    // The rows are read back page by page; the last page read stays at hand.
    struct Reader {
        std::shared_ptr<PackedRows> packed;
        int chunk = -1;
        RowSet rows;
    };
    auto reader = std::make_shared<Reader>();
    reader->packed = m_packed;
    const auto cell = [reader](int row, int column) -> QVariant {
        const int chunk = reader->packed->chunkOfRow(row);
        if (chunk < 0)
            return {};
        if (chunk != reader->chunk) {
            reader->rows = reader->packed->rowsOf(chunk);
            reader->chunk = chunk;
        }
        return reader->rows.value(row - reader->packed->firstRowOf(chunk), column);
    };
    m_table = std::make_shared<const ExportTable>(exportTableOf(m_report, m_packed->columns(), m_packed->rowCount(), cell));
    return m_table;
}

ReportLayouter::ReportLayouter(const Report &report) : d(std::make_unique<Engine>(report, nullptr)) {}

ReportLayouter::ReportLayouter(const StreamedReport &report) : d(std::make_unique<Engine>(report.report, report.rows))
{
}

ReportLayouter::~ReportLayouter() = default;

const LaidOutReport &ReportLayouter::frame() const { return d->m_out; }
int ReportLayouter::pageCount() const { return static_cast<int>(d->m_pages.size()); }
bool ReportLayouter::isComplete() const { return d->m_complete; }
int ReportLayouter::rowCount() const { return d->m_packed->rowCount(); }
bool ReportLayouter::needsAllRowsFirst() const { return d->m_needsAllRows; }
bool ReportLayouter::layoutNextPage() { return d->layoutNextPage(); }

void ReportLayouter::layoutThrough(int page)
{
    while (pageCount() <= page && d->layoutNextPage()) {
    }
}

void ReportLayouter::layoutAll()
{
    while (d->layoutNextPage()) {
    }
}

ReportPage ReportLayouter::page(int index) { return d->page(index); }
std::shared_ptr<const ExportTable> ReportLayouter::table() { return d->table(); }
std::optional<UserMessage> ReportLayouter::error() const { return d->m_error; }

LaidOutReport ReportLayouter::whole()
{
    layoutAll();
    LaidOutReport out = d->m_out;
    out.table = table();
    for (int i = 0; i < pageCount(); ++i)
        out.pages.append(page(i));
    out.fonts = d->m_out.fonts;  // drawing the pages may have added some
    return out;
}

QSizeF reportPageSize(ReportOrientation orientation)
{
    const QSizeF a4(595.2756, 841.8898);  // 210 x 297 mm
    return orientation == ReportOrientation::Landscape ? a4.transposed() : a4;
}

LaidOutReport layoutReport(const Report &report)
{
    ReportLayouter layouter(report);
    return layouter.whole();
}

}
