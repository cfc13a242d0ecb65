#include "reports/reportexport.h"

#include "core/rounding.h"

#include <algorithm>
#include <cmath>

namespace zarek {

namespace {

double overlap(const ReportControl &a, const ReportControl &b)
{
    return std::min(a.left + a.width, b.left + b.width) - std::max(a.left, b.left);
}

QList<const ReportControl *> visibleControls(const ReportDesign &design, const QString &sectionName,
                                             ReportControlKind kind)
{
    QList<const ReportControl *> found;
    const ReportSection *section = design.section(sectionName);
    if (!section || !section->visible)
        return found;
    for (const ReportControl &control : section->controls) {
        if (control.visible && control.kind == kind)
            found.append(&control);
    }
    return found;
}

// The control of the list that shares the most width with the column, if any does.
const ReportControl *above(const QList<const ReportControl *> &candidates, const ReportControl &column)
{
    const ReportControl *best = nullptr;
    double bestOverlap = 0;
    for (const ReportControl *candidate : candidates) {
        const double shared = overlap(*candidate, column);
        if (shared > bestOverlap) {
            best = candidate;
            bestOverlap = shared;
        }
    }
    return best;
}

}

ExportTable exportTableOf(const Report &report)
{
    const RowSet rows = report.data();
    return exportTableOf(report, rows.columns(), rows.rowCount(),
                         [rows](int row, int column) { return rows.value(row, column); });
}

ExportTable exportTableOf(const Report &report, const QStringList &rowColumns, int rowCount,
                          std::function<QVariant(int row, int column)> cell)
{
    const ReportDesign &design = report.design();
    const RowSet rows(rowColumns);  // finds columns by name, as the rows themselves would
    ExportTable table;

    QList<const ReportControl *> titles = visibleControls(design, QStringLiteral("ReportHeader"), ReportControlKind::Label);
    std::stable_sort(titles.begin(), titles.end(), [](const ReportControl *a, const ReportControl *b) {
        return a->top != b->top ? a->top < b->top : a->left < b->left;
    });
    for (const ReportControl *title : std::as_const(titles)) {
        for (const QString &line : title->caption.split(QLatin1Char('\n'))) {
            if (!line.trimmed().isEmpty())
                table.titleLines.append(line.trimmed());
        }
    }

    QList<const ReportControl *> columns = visibleControls(design, QStringLiteral("Detail"), ReportControlKind::Text);
    std::stable_sort(columns.begin(), columns.end(),
                     [](const ReportControl *a, const ReportControl *b) { return a->left < b->left; });
    const QList<const ReportControl *> headers = visibleControls(design, QStringLiteral("PageHeader"), ReportControlKind::Label);
    QList<int> dataColumns;
    for (const ReportControl *column : std::as_const(columns)) {
        const ReportControl *header = above(headers, *column);
        table.columns.append(exportColumnOf(header ? header->caption.trimmed() : column->dataField, column->format));
        dataColumns.append(rows.column(column->dataField));
    }
    table.rowCount = rowCount;
    table.cell = [cell, dataColumns](int row, int column) {
        const int source = dataColumns.at(column);
        return source >= 0 ? cell(row, source) : QVariant();
    };

    // Totals as the report prints them: each row counted as shown, to its column's decimals.
    const QList<const ReportControl *> functions = visibleControls(design, QStringLiteral("ReportFooter"),
                                                                   ReportControlKind::Function);
    if (!functions.isEmpty()) {
        table.totals.resize(columns.size());
        for (const ReportControl *function : functions) {
            const int source = rows.column(function->dataField);
            if (source < 0 || function->functionType != 0)
                continue;
            int target = -1;
            double best = 0;
            for (int c = 0; c < columns.size(); ++c) {
                const double shared = overlap(*columns.at(c), *function);
                if (dataColumns.at(c) == source && shared > best) {
                    target = c;
                    best = shared;
                }
            }
            if (target < 0)
                target = static_cast<int>(dataColumns.indexOf(source));
            if (target < 0)
                continue;
            const int decimals = table.columns.at(target).kind == ExportColumn::Kind::Number
                                     ? table.columns.at(target).decimals
                                     : 2;
            const double factor = std::pow(10.0, decimals);
            qint64 units = 0;
            for (int r = 0; r < rowCount; ++r) {
                const QVariant value = cell(r, source);
                if (!value.isNull())
                    units += std::llround(roundHalfEven(value.toDouble(), decimals) * factor);
            }
            table.totals[target] = static_cast<double>(units) / factor;
        }
    }
    table.pictures = report.pictures();
    return table;
}

}
