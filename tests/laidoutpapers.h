#pragma once

// A report as the pages it lays out, for the tests that read papers as text.

#include "reports/reportlayout.h"

#include <QDebug>

namespace zarek::test {

// The pages of the report; none, and its message in the log, when it was refused.
inline LaidOutReport laidOut(const Checked<Report> &report)
{
    if (!report.ok())
        qWarning() << report.message().text;
    return report.ok() ? layoutReport(report.value()) : LaidOutReport{};
}

// The colours of the filled boxes of a page, in the order they are drawn.
inline QList<quint32> fillsOn(const LaidOutReport &laid, int page)
{
    QList<quint32> fills;
    for (const ReportPrimitive &p : laid.pages.at(page).primitives) {
        if (p.kind == ReportPrimitive::Kind::Fill)
            fills.append(p.color);
    }
    return fills;
}

}
