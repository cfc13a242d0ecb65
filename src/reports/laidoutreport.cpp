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
