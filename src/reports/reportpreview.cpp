#include "reportpreview.h"

#include "core/windowtitle.h"
#include "forms/exportservice.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportlayout.h"
#include "reports/reportrenderer.h"

#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStandardPaths>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace zarek {

// The paper: one page drawn at the preview's scale, with a thin frame.
class ReportPageView : public QWidget {
public:
    explicit ReportPageView(const LaidOutReport &report, QWidget *parent) : QWidget(parent), m_report(report)
    {
        setObjectName(QStringLiteral("picPage"));
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    void show(int page, double pixelsPerPoint)
    {
        m_page = page;
        m_scale = pixelsPerPoint;
        const QSize paper(static_cast<int>(std::ceil(m_report.pageSize.width() * m_scale)),
                          static_cast<int>(std::ceil(m_report.pageSize.height() * m_scale)));
        setFixedSize(paper + QSize(2 * margin, 2 * margin));
        update();
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Dark));
        const QRectF paper(margin, margin, m_report.pageSize.width() * m_scale, m_report.pageSize.height() * m_scale);
        painter.fillRect(paper.translated(3, 3), QColor(0, 0, 0, 60));
        painter.fillRect(paper, Qt::white);
        renderReportPage(painter, m_report, m_page, paper);
    }

private:
    static constexpr int margin = 12;
    const LaidOutReport &m_report;
    int m_page = 0;
    double m_scale = 1;
};

namespace {

QToolButton *toolButton(const QString &name, const QString &text, const QString &tip, QWidget *parent)
{
    auto *button = new QToolButton(parent);
    button->setObjectName(name);
    button->setText(text);
    button->setToolTip(tip);
    button->setToolButtonStyle(Qt::ToolButtonTextOnly);
    button->setAutoRaise(true);
    return button;
}

}

ReportPreview::ReportPreview(LaidOutReport report, QWidget *parent) : QDialog(parent), m_report(std::move(report))
{
    setObjectName(QStringLiteral("ReportPreview"));
    setWindowTitle(screenTitle(m_report.windowCaption));
    setWindowFlag(Qt::WindowMaximizeButtonHint, true);
    setWindowFlag(Qt::WindowMinimizeButtonHint, true);

    auto *bar = new QWidget(this);
    auto *barLayout = new QHBoxLayout(bar);
    barLayout->setContentsMargins(4, 2, 4, 2);

    auto *printButton = toolButton(QStringLiteral("cmdPrint"), QStringLiteral("Печат..."),
                                   QStringLiteral("Отпечатва справката"), bar);
    auto *pdfButton = toolButton(QStringLiteral("cmdPdf"), QStringLiteral("Запис в PDF..."),
                                 QStringLiteral("Записва справката във файл PDF"), bar);
    auto *exportButton = toolButton(QStringLiteral("cmdExport"), QStringLiteral("Експорт..."),
                                    QStringLiteral("Записва редовете на справката за Excel (.xlsx) или като .csv"), bar);
    exportButton->setEnabled(m_report.table != nullptr);
    m_first = toolButton(QStringLiteral("cmdFirst"), QStringLiteral("|<"), QStringLiteral("Първа страница"), bar);
    m_previous = toolButton(QStringLiteral("cmdPrevious"), QStringLiteral("<"), QStringLiteral("Предишна страница"), bar);
    m_next = toolButton(QStringLiteral("cmdNext"), QStringLiteral(">"), QStringLiteral("Следваща страница"), bar);
    m_last = toolButton(QStringLiteral("cmdLast"), QStringLiteral(">|"), QStringLiteral("Последна страница"), bar);
    auto *closeButton = toolButton(QStringLiteral("cmdClose"), QStringLiteral("Затвори"),
                                   QStringLiteral("Затваря прозореца"), bar);

    m_pageBox = new QSpinBox(bar);
    m_pageBox->setObjectName(QStringLiteral("txtPage"));
    m_pageBox->setRange(1, std::max(1, m_report.pageCount()));
    m_pageBox->setToolTip(QStringLiteral("Страница"));
    m_pagesLabel = new QLabel(QStringLiteral("от %1").arg(m_report.pageCount()), bar);
    m_pagesLabel->setObjectName(QStringLiteral("lblPages"));

    m_zoomBox = new QComboBox(bar);
    m_zoomBox->setObjectName(QStringLiteral("cboZoom"));
    m_zoomBox->setToolTip(QStringLiteral("Мащаб"));
    m_zoomBox->addItem(QStringLiteral("По ширина"), 0);
    for (int percent : {50, 75, 100, 125, 150, 200})
        m_zoomBox->addItem(QStringLiteral("%1 %").arg(percent), percent);

    barLayout->addWidget(printButton);
    barLayout->addWidget(pdfButton);
    barLayout->addWidget(exportButton);
    barLayout->addSpacing(16);
    barLayout->addWidget(m_first);
    barLayout->addWidget(m_previous);
    barLayout->addWidget(m_pageBox);
    barLayout->addWidget(m_pagesLabel);
    barLayout->addWidget(m_next);
    barLayout->addWidget(m_last);
    barLayout->addSpacing(16);
    barLayout->addWidget(m_zoomBox);
    barLayout->addStretch(1);
    barLayout->addWidget(closeButton);

    m_scroll = new QScrollArea(this);
    m_scroll->setObjectName(QStringLiteral("scrPages"));
    m_scroll->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    m_scroll->setBackgroundRole(QPalette::Dark);
    m_view = new ReportPageView(m_report, m_scroll);
    m_scroll->setWidget(m_view);
    m_scroll->viewport()->installEventFilter(this);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(bar);
    layout->addWidget(m_scroll, 1);

    connect(printButton, &QToolButton::clicked, this, &ReportPreview::print);
    connect(pdfButton, &QToolButton::clicked, this, &ReportPreview::exportPdf);
    connect(exportButton, &QToolButton::clicked, this, &ReportPreview::exportTable);
    connect(closeButton, &QToolButton::clicked, this, &QDialog::close);
    connect(m_first, &QToolButton::clicked, this, [this] { setPage(0); });
    connect(m_previous, &QToolButton::clicked, this, [this] { setPage(m_page - 1); });
    connect(m_next, &QToolButton::clicked, this, [this] { setPage(m_page + 1); });
    connect(m_last, &QToolButton::clicked, this, [this] { setPage(m_report.pageCount() - 1); });
    connect(m_pageBox, &QSpinBox::valueChanged, this, [this](int value) { setPage(value - 1); });
    connect(m_zoomBox, &QComboBox::activated, this,
            [this](int index) { setZoomPercent(m_zoomBox->itemData(index).toInt()); });

    if (!m_report.windowSize.isEmpty())
        resize(m_report.windowSize);
    else
        resize(980, 680);
    updateView();
}

double ReportPreview::effectiveScale() const
{
    if (m_zoomPercent > 0)
        return m_zoomPercent / 100.0 * logicalDpiX() / 72.0;
    const int available = m_scroll->viewport()->width() - 2 * 12 - 4;
    return std::max(0.2, available / std::max(1.0, m_report.pageSize.width()));
}

void ReportPreview::setPage(int page)
{
    if (m_report.pageCount() == 0)
        return;
    page = std::clamp(page, 0, m_report.pageCount() - 1);
    if (page == m_page && m_pageBox->value() == page + 1)
        return;
    m_page = page;
    updateView();
    m_scroll->verticalScrollBar()->setValue(0);
}

void ReportPreview::setZoomPercent(int percent)
{
    m_zoomPercent = std::max(0, percent);
    const int index = m_zoomBox->findData(m_zoomPercent);
    if (index >= 0)
        m_zoomBox->setCurrentIndex(index);
    updateView();
}

void ReportPreview::updateView()
{
    {
        const QSignalBlocker blocker(m_pageBox);
        m_pageBox->setValue(m_page + 1);
    }
    m_first->setEnabled(m_page > 0);
    m_previous->setEnabled(m_page > 0);
    m_next->setEnabled(m_page + 1 < m_report.pageCount());
    m_last->setEnabled(m_page + 1 < m_report.pageCount());
    m_view->show(m_page, effectiveScale());
}

bool ReportPreview::eventFilter(QObject *watched, QEvent *event)
{
    // Following the window's width means following the viewport's, which the layout sets late.
    if (watched == m_scroll->viewport() && event->type() == QEvent::Resize && m_zoomPercent == 0)
        updateView();
    return QDialog::eventFilter(watched, event);
}

void ReportPreview::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_PageDown:
        setPage(m_page + 1);
        return;
    case Qt::Key_PageUp:
        setPage(m_page - 1);
        return;
    case Qt::Key_Home:
        if (event->modifiers() & Qt::ControlModifier) {
            setPage(0);
            return;
        }
        break;
    case Qt::Key_End:
        if (event->modifiers() & Qt::ControlModifier) {
            setPage(m_report.pageCount() - 1);
            return;
        }
        break;
    case Qt::Key_P:
        if (event->modifiers() & Qt::ControlModifier) {
            print();
            return;
        }
        break;
    default:
        break;
    }
    QDialog::keyPressEvent(event);
}

void ReportPreview::print()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(m_report.orientation == ReportOrientation::Landscape ? QPageLayout::Landscape
                                                                                    : QPageLayout::Portrait);
    printer.setFromTo(1, m_report.pageCount());
    QPrintDialog dialog(&printer, this);
    dialog.setWindowTitle(QStringLiteral("Печат"));
    dialog.setMinMax(1, std::max(1, m_report.pageCount()));
    if (dialog.exec() != QDialog::Accepted)
        return;
    if (!printReport(m_report, printer))
        MessageService::instance().inform(UserMessage{QStringLiteral("ГРЕШКА при печат!"),
                                                      QStringLiteral("Справката не може да бъде отпечатана.\n"
                                                                     "Проверете принтера и опитайте отново."),
                                                      UserMessage::Icon::Critical});
}

QString ReportPreview::suggestedPdfName() const
{
    // A name the report gives, else what its window is called ("Справка за курсове"), never the
    // name of its design.
    QString name = fileNameOf(m_report.suggestedFileName);
    if (name.isEmpty())
        name = fileNameOf(screenOfCaption(m_report.windowCaption));
    if (name.isEmpty())
        name = QStringLiteral("Справка");
    return name + QStringLiteral(".pdf");
}

void ReportPreview::exportPdf()
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (!QDir(folder).exists())
        folder = QDir::homePath();  // no documents folder: the file dialog would open anywhere
    const QString suggested = folder + QLatin1Char('/') + suggestedPdfName();
    const QString fileName = QFileDialog::getSaveFileName(this, QStringLiteral("Запис в PDF"), suggested,
                                                          QStringLiteral("PDF (*.pdf)"));
    if (!fileName.isEmpty())
        exportPdfTo(fileName);
}

void ReportPreview::exportTable()
{
    QString name = suggestedPdfName();
    name.chop(4);  // ".pdf"
    if (m_report.table)
        exportservice::chooseAndWrite(this, QStringLiteral("Запис на редовете"), name,
                                      [this]() -> Checked<ExportTable> { return *m_report.table; });
}

bool ReportPreview::exportTableTo(const QString &fileName)
{
    return m_report.table && exportservice::write(*m_report.table, fileName);
}

bool ReportPreview::exportPdfTo(const QString &fileName)
{
    QString error;
    if (exportReportPdf(m_report, fileName, &error))
        return true;
    MessageService::instance().inform(UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"), error,
                                                            QStringLiteral("Изберете друго място и опитайте отново."),
                                                            UserMessage::Icon::Critical));
    return false;
}

ReportPreview *showReport(const LaidOutReport &report, QWidget *parent)
{
    auto *preview = new ReportPreview(report, parent);
    preview->setAttribute(Qt::WA_DeleteOnClose);
    preview->setModal(false);
    preview->show();
    return preview;
}

ReportPreview *showReport(const Checked<Report> &report, QWidget *parent)
{
    if (!report) {
        MessageService::instance().inform(report.message());
        return nullptr;
    }
    return showReport(layoutReport(report.value()), parent);
}

}
