#pragma once

#include "reports/laidoutreport.h"
#include "reports/report.h"
#include "reports/reportrows.h"

#include <QDialog>
#include <memory>

class QComboBox;
class QPrinter;
class QTimer;
class QLabel;
class QScrollArea;
class QSpinBox;
class QToolButton;

namespace zarek {

class ReportPageView;
class ReportLayouter;

// The box of long work in the preview (laying out the rest of a report, printing its pages).
class ReportWork {
public:
    virtual ~ReportWork() = default;
    // Tells how far the work is (a total of 0: not known); false once the user cancelled it.
    virtual bool step(int done, int total) = 0;
};

// What the preview asks of the user outside its own window: the progress box of long work and the
// print dialog. Tests install their own, so a print runs and is cancelled without a window.
class PreviewServices {
public:
    virtual ~PreviewServices() = default;
    // A progress box with "Отказ", shown once the work lasts.
    virtual std::unique_ptr<ReportWork> startWork(const QString &text, QWidget *parent);
    // The print dialog over the pages; false when the user closed it.
    virtual bool choosePrinter(QPrinter &printer, int pageCount, QWidget *parent);

    // The services in force; the widget ones until a test installs its own.
    static PreviewServices &instance();
    // Installs services (not owned); nullptr puts the default back.
    static void setInstance(PreviewServices *services);
};

// The print preview of a laid-out report: one page at a time, zoom, page navigation, printing
// through the print dialog and export to PDF.
class ReportPreview : public QDialog {
    Q_OBJECT
public:
    explicit ReportPreview(LaidOutReport report, QWidget *parent = nullptr);
    // A report laid out as it is read: the first page shows at once, the others are laid out in
    // the background, or when turned to.
    explicit ReportPreview(std::shared_ptr<ReportLayouter> layouter, QWidget *parent = nullptr);
    ~ReportPreview() override;

    // The whole report (a report still being laid out is finished first).
    const LaidOutReport &report();
    // Pages laid out so far, and whether that is all of them.
    int pageCount() const;
    bool isLaidOut() const;
    // The page shown, as drawn.
    ReportPage shownPage() const;
    // The page count as the bar reads it: "от 37" once known, "от 37…" while laid out.
    QString pageCountText() const;
    // Lays out what is left with the progress box; false when the user cancelled.
    bool finishLayout(const QString &text);
    int currentPage() const { return m_page; }  // 0-based
    // Percent of the paper's real size; 0 while the page follows the window's width.
    int zoomPercent() const { return m_zoomPercent; }

    void setPage(int page);
    void setZoomPercent(int percent);  // 0: fit the page's width into the window
    // Writes the PDF; failures are told through the message service.
    bool exportPdfTo(const QString &fileName);
    // Writes the report's rows to an .xlsx or .csv file; failures are told through the message service.
    bool exportTableTo(const QString &fileName);
    // The file name the export offers: the report's subject and period.
    QString suggestedPdfName() const;

public slots:
    void print();
    // Lays out a further slice of pages in the background.
    void layoutMore();
    void exportPdf();
    void exportTable();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void build();
    void updateBar();
    void updateView();
    double effectiveScale() const;  // device pixels per point
    ReportPage pageAt(int page) const;
    const LaidOutReport &frame() const;
    std::shared_ptr<const ExportTable> table();
    void tellReadError();

    LaidOutReport m_report;
    std::shared_ptr<ReportLayouter> m_layouter;
    QTimer *m_background = nullptr;
    bool m_busy = false;  // long work runs: the background waits
    bool m_readErrorTold = false;
    int m_page = 0;
    int m_zoomPercent = 0;
    QScrollArea *m_scroll = nullptr;
    ReportPageView *m_view = nullptr;
    QSpinBox *m_pageBox = nullptr;
    QLabel *m_pagesLabel = nullptr;
    QComboBox *m_zoomBox = nullptr;
    QToolButton *m_first = nullptr;
    QToolButton *m_previous = nullptr;
    QToolButton *m_next = nullptr;
    QToolButton *m_last = nullptr;
};

// Opens the preview without waiting, as the course reports are shown; it deletes itself on close.
ReportPreview *showReport(const LaidOutReport &report, QWidget *parent = nullptr);
// Lays out and shows a filled report, or tells why there is none; nullptr then.
ReportPreview *showReport(const Checked<Report> &report, QWidget *parent = nullptr);
// Shows a report whose rows are read as it is laid out: the first page at once.
ReportPreview *showReport(const Checked<StreamedReport> &report, QWidget *parent = nullptr);

}
