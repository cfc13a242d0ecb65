#include "laidoutreport.h"

#include <algorithm>
#include <cmath>

namespace zarek {

QList<QStringList> LaidOutReport::pageTextLines(int page) const
{
    QList<const ReportPrimitive *> texts;
    for (const ReportPrimitive &p : pages.at(page).primitives) {
        if (p.kind == ReportPrimitive::Kind::Text && !p.text.isEmpty())
            texts.append(&p);
    }
    // Baselines within half a point of each other count as one line.
    const auto lineOf = [](const ReportPrimitive *p) { return std::lround(p->origin.y() * 2); };
    std::stable_sort(texts.begin(), texts.end(), [&](const ReportPrimitive *a, const ReportPrimitive *b) {
        if (lineOf(a) != lineOf(b))
            return lineOf(a) < lineOf(b);
        return a->origin.x() < b->origin.x();
    });
    QList<QStringList> lines;
    long baseline = 0;
    for (const ReportPrimitive *p : texts) {
        if (lines.isEmpty() || lineOf(p) != baseline) {
            lines.append(QStringList());
            baseline = lineOf(p);
        }
        lines.last().append(p->text);
    }
    return lines;
}

namespace {

// The width and height of a PNG from its header; zero when it is no PNG.
QSize pngSize(const QByteArray &png)
{
    if (png.size() < 24 || !png.startsWith("\x89PNG\r\n\x1a\n"))
        return {};
    const auto number = [&png](int at) {
        return (quint32(quint8(png[at])) << 24) | (quint32(quint8(png[at + 1])) << 16) | (quint32(quint8(png[at + 2])) << 8)
               | quint32(quint8(png[at + 3]));
    };
    return QSize(static_cast<int>(number(16)), static_cast<int>(number(20)));
}

}

void LaidOutReport::appendPicturePage(const QString &title, const QByteArray &png)
{
    const double margin = 50;  // points, about 18 mm
    ReportPage page;
    int titleFont = static_cast<int>(fonts.indexOf(ReportFont{QStringLiteral("DejaVu Sans"), 12, true, false}));
    if (titleFont < 0) {
        fonts.append(ReportFont{QStringLiteral("DejaVu Sans"), 12, true, false});
        titleFont = static_cast<int>(fonts.size() - 1);
    }
    ReportPrimitive heading;
    heading.kind = ReportPrimitive::Kind::Text;
    heading.text = title;
    heading.font = titleFont;
    heading.color = 0xFF000000u;
    heading.origin = QPointF(margin, margin + 12);
    heading.rect = QRectF(margin, margin, pageSize.width() - 2 * margin, 16);
    page.primitives.append(heading);
    const QSize size = pngSize(png);
    const QRectF room(margin, margin + 30, pageSize.width() - 2 * margin, pageSize.height() - 2 * margin - 30);
    if (!size.isEmpty()) {
        const double scale = std::min(room.width() / size.width(), room.height() / size.height());
        ReportPrimitive picture;
        picture.kind = ReportPrimitive::Kind::Image;
        picture.rect = QRectF(room.left(), room.top(), size.width() * scale, size.height() * scale);
        picture.image = png;
        page.primitives.append(picture);
    }
    pages.append(page);
}

QStringList LaidOutReport::textLines(int page) const
{
    QStringList out;
    for (const QStringList &line : pageTextLines(page))
        out.append(line.join(QStringLiteral(" | ")));
    return out;
}

QStringList LaidOutReport::textLines() const
{
    QStringList out;
    for (int i = 0; i < pageCount(); ++i)
        out += textLines(i);
    return out;
}

}
