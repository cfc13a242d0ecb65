#pragma once

#include "reports/laidoutreport.h"
#include "reports/report.h"

#include <QDialog>

class QComboBox;
class QLabel;
class QScrollArea;
class QSpinBox;
class QToolButton;

namespace zarek {

class ReportPageView;

// The print preview of a laid-out report: one page at a time, zoom, page navigation, printing
// through the print dialog and export to PDF.
class ReportPreview : public QDialog {
    Q_OBJECT
public:
    explicit ReportPreview(LaidOutReport report, QWidget *parent = nullptr);

    const LaidOutReport &report() const { return m_report; }
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
    void exportPdf();
    void exportTable();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updateView();
    double effectiveScale() const;  // device pixels per point

    LaidOutReport m_report;
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

}
