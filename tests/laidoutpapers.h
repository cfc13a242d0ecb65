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

}
