#pragma once

#include "reports/laidoutreport.h"
#include "reports/report.h"
#include "reports/reportrows.h"

#include <memory>
#include <optional>

namespace zarek {

// Lays a filled report out into A4 pages: the report header once, the page header and footer on
// every page, one band per row (a row is never split over two pages), the report footer with its
// totals after the last row, and "page of pages" once the count is known. Text is measured on a
// fixed-resolution device, so the pages come out the same on every screen and printer.
//
// The layout goes page by page as it is asked for, reading rows only as far as the page needs:
// the first page of a long report stands at once while the rest is laid out later. A page is kept
// as a compact record (its rows, packed) and drawn again from it when shown, so a report of a
// million rows holds no more than its packed rows. Until the last page is laid out, "page of
// pages" reads the pages so far followed by "…". Needs a QGuiApplication (fonts).
class ReportLayouter {
public:
    // Lays out the report's own rows.
    explicit ReportLayouter(const Report &report);
    // Lays out the rows of the stream as they are read; the report's own rows are not used.
    explicit ReportLayouter(const StreamedReport &report);
    ~ReportLayouter();
    ReportLayouter(const ReportLayouter &) = delete;
    ReportLayouter &operator=(const ReportLayouter &) = delete;

    // The report without its pages: names, paper and the fonts used so far.
    const LaidOutReport &frame() const;
    // Pages laid out so far.
    int pageCount() const;
    bool isComplete() const;
    // Rows read so far.
    int rowCount() const;
    // The design shows totals above the last page (in a header): its rows must all be read before
    // the first page is drawn.
    bool needsAllRowsFirst() const;

    // Lays out one more page; false once every page is laid out.
    bool layoutNextPage();
    // Lays out pages until the page of that index (0-based) is laid out or the report ends.
    void layoutThrough(int page);
    void layoutAll();

    // A laid-out page, drawn from its record.
    ReportPage page(int index);
    // The report's rows as a table for a spreadsheet, with its totals; lays out what is left first.
    // None when the report has no detail band.
    std::shared_ptr<const ExportTable> table();
    // A read that failed and ended the rows early.
    std::optional<UserMessage> error() const;
    // Every page laid out and drawn: the whole report as one piece.
    LaidOutReport whole();

    class Engine;

private:
    std::unique_ptr<Engine> d;
};

// The whole report laid out at once.
LaidOutReport layoutReport(const Report &report);

// A4 in points, turned for landscape.
QSizeF reportPageSize(ReportOrientation orientation);

}
