#include "reportpreview.h"

#include "core/windowtitle.h"
#include "forms/exportservice.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportlayout.h"
#include "reports/reportrenderer.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QDir>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPaintEvent>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QScrollArea>
#include <QScrollBar>
#include <QSpinBox>
#include <QStandardPaths>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>

#include <cmath>

namespace zarek {

// The paper: one page drawn at the preview's scale, with a thin frame.
class ReportPageView : public QWidget {
public:
    explicit ReportPageView(QWidget *parent) : QWidget(parent)
    {
        setObjectName(QStringLiteral("picPage"));
        setAttribute(Qt::WA_OpaquePaintEvent);
    }

    void show(ReportPage page, const LaidOutReport &frame, double pixelsPerPoint)
    {
        m_page = std::move(page);
        m_frame = &frame;
        m_scale = pixelsPerPoint;
        const QSize paper(static_cast<int>(std::ceil(frame.pageSize.width() * m_scale)),
                          static_cast<int>(std::ceil(frame.pageSize.height() * m_scale)));
        setFixedSize(paper + QSize(2 * margin, 2 * margin));
        update();
    }
    const ReportPage &page() const { return m_page; }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        // Only the part the window shows is drawn (in a scroll area most of the page lies outside).
        const QRect exposed = event->rect();
        QPainter painter(this);
        painter.fillRect(exposed, palette().color(QPalette::Dark));
        if (!m_frame)
            return;
        const QRectF paper(margin, margin, m_frame->pageSize.width() * m_scale, m_frame->pageSize.height() * m_scale);
        painter.fillRect(paper.translated(3, 3), QColor(0, 0, 0, 60));
        painter.fillRect(paper, Qt::white);
        renderReportPage(painter, m_page, *m_frame, paper, exposed);
    }

private:
    static constexpr int margin = 12;
    ReportPage m_page;
    const LaidOutReport *m_frame = nullptr;
    double m_scale = 1;
};

namespace {

// The widget progress box: a bar that moves while the total is not known, and "Отказ".
class ProgressWork : public ReportWork {
public:
    ProgressWork(const QString &text, QWidget *parent) : m_box(text, QStringLiteral("Отказ"), 0, 0, parent)
    {
        m_box.setWindowTitle(screenTitle(QStringLiteral("Обработка")));
        m_box.setWindowModality(Qt::WindowModal);
        m_box.setMinimumDuration(400);
        m_box.setAutoReset(false);
        m_box.setAutoClose(false);
    }
    bool step(int done, int total) override
    {
        if (m_box.maximum() != total)
            m_box.setMaximum(total);
        m_box.setValue(total > 0 ? done : 0);
        QCoreApplication::processEvents();
        return !m_box.wasCanceled();
    }

private:
    QProgressDialog m_box;
};

PreviewServices *installedServices = nullptr;

}

std::unique_ptr<ReportWork> PreviewServices::startWork(const QString &text, QWidget *parent)
{
    return std::make_unique<ProgressWork>(text, parent);
}

bool PreviewServices::choosePrinter(QPrinter &printer, int pageCount, QWidget *parent)
{
    QPrintDialog dialog(&printer, parent);
    dialog.setWindowTitle(QStringLiteral("Печат"));
    dialog.setMinMax(1, std::max(1, pageCount));
    return dialog.exec() == QDialog::Accepted;
}

PreviewServices &PreviewServices::instance()
{
    static PreviewServices widgets;
    return installedServices ? *installedServices : widgets;
}

void PreviewServices::setInstance(PreviewServices *services)
{
    installedServices = services;
}

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
    build();
}

ReportPreview::ReportPreview(std::shared_ptr<ReportLayouter> layouter, QWidget *parent)
    : QDialog(parent), m_layouter(std::move(layouter))
{
    if (m_layouter->needsAllRowsFirst())
        m_layouter->layoutAll();
    else
        m_layouter->layoutThrough(0);
    build();
    if (!m_layouter->isComplete()) {
        m_background = new QTimer(this);
        m_background->setInterval(0);
        connect(m_background, &QTimer::timeout, this, &ReportPreview::layoutMore);
        m_background->start();
    } else {
        tellReadError();
    }
}

ReportPreview::~ReportPreview() = default;

void ReportPreview::build()
{
    setObjectName(QStringLiteral("ReportPreview"));
    setWindowTitle(screenTitle(frame().windowCaption));
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
    exportButton->setEnabled(m_layouter || m_report.table != nullptr);
    m_first = toolButton(QStringLiteral("cmdFirst"), QStringLiteral("|<"), QStringLiteral("Първа страница"), bar);
    m_previous = toolButton(QStringLiteral("cmdPrevious"), QStringLiteral("<"), QStringLiteral("Предишна страница"), bar);
    m_next = toolButton(QStringLiteral("cmdNext"), QStringLiteral(">"), QStringLiteral("Следваща страница"), bar);
    m_last = toolButton(QStringLiteral("cmdLast"), QStringLiteral(">|"), QStringLiteral("Последна страница"), bar);
    auto *closeButton = toolButton(QStringLiteral("cmdClose"), QStringLiteral("Затвори"),
                                   QStringLiteral("Затваря прозореца"), bar);

    m_pageBox = new QSpinBox(bar);
    m_pageBox->setObjectName(QStringLiteral("txtPage"));
    m_pageBox->setRange(1, std::max(1, pageCount()));
    m_pageBox->setToolTip(QStringLiteral("Страница"));
    m_pagesLabel = new QLabel(pageCountText(), bar);
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
    m_view = new ReportPageView(m_scroll);
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
    connect(m_last, &QToolButton::clicked, this, [this] {
        if (finishLayout(QStringLiteral("Подреждане на страниците...")))
            setPage(pageCount() - 1);
    });
    connect(m_pageBox, &QSpinBox::valueChanged, this, [this](int value) { setPage(value - 1); });
    connect(m_zoomBox, &QComboBox::activated, this,
            [this](int index) { setZoomPercent(m_zoomBox->itemData(index).toInt()); });

    if (!frame().windowSize.isEmpty())
        resize(frame().windowSize);
    else
        resize(980, 680);
    updateView();
}

double ReportPreview::effectiveScale() const
{
    if (m_zoomPercent > 0)
        return m_zoomPercent / 100.0 * logicalDpiX() / 72.0;
    const int available = m_scroll->viewport()->width() - 2 * 12 - 4;
    return std::max(0.2, available / std::max(1.0, frame().pageSize.width()));
}

const LaidOutReport &ReportPreview::frame() const
{
    return m_layouter ? m_layouter->frame() : m_report;
}

int ReportPreview::pageCount() const
{
    return m_layouter ? m_layouter->pageCount() : m_report.pageCount();
}

bool ReportPreview::isLaidOut() const
{
    return !m_layouter || m_layouter->isComplete();
}

QString ReportPreview::pageCountText() const
{
    return QStringLiteral("от %1").arg(pageCount()) + (isLaidOut() ? QString() : QString(QChar(0x2026)));
}

ReportPage ReportPreview::pageAt(int page) const
{
    if (page < 0 || page >= pageCount())
        return {};
    return m_layouter ? m_layouter->page(page) : m_report.pages.at(page);
}

ReportPage ReportPreview::shownPage() const
{
    return m_view->page();
}

const LaidOutReport &ReportPreview::report()
{
    if (m_layouter && m_report.pages.size() != m_layouter->pageCount()) {
        finishLayout(QStringLiteral("Подреждане на страниците..."));
        m_report = m_layouter->whole();
    }
    return m_report;
}

void ReportPreview::layoutMore()
{
    if (m_busy || !m_layouter)
        return;
    if (m_layouter->isComplete()) {
        m_background->stop();
        return;
    }
    // A slice short enough that the window stays alive to the user.
    QElapsedTimer slice;
    slice.start();
    while (slice.elapsed() < 20 && m_layouter->layoutNextPage()) {
    }
    if (m_layouter->isComplete()) {
        m_background->stop();
        tellReadError();
        updateView();  // "page of pages" now reads the count
    } else {
        updateBar();
    }
}

bool ReportPreview::finishLayout(const QString &text)
{
    if (isLaidOut())
        return true;
    m_busy = true;
    const std::unique_ptr<ReportWork> work = PreviewServices::instance().startWork(text, this);
    bool cancelled = false;
    while (!cancelled && m_layouter->layoutNextPage()) {
        if (m_layouter->pageCount() % 20 == 0)
            cancelled = !work->step(m_layouter->pageCount(), 0);
    }
    m_busy = false;
    if (m_layouter->isComplete()) {
        if (m_background)
            m_background->stop();
        tellReadError();
    }
    updateView();
    return !cancelled;
}

void ReportPreview::tellReadError()
{
    if (m_readErrorTold || !m_layouter || !m_layouter->error())
        return;
    m_readErrorTold = true;
    MessageService::instance().inform(*m_layouter->error());
}

std::shared_ptr<const ExportTable> ReportPreview::table()
{
    if (!m_layouter)
        return m_report.table;
    if (!finishLayout(QStringLiteral("Подреждане на редовете...")))
        return nullptr;
    return m_layouter->table();
}

void ReportPreview::setPage(int page)
{
    // A page not yet laid out is laid out when turned to.
    if (m_layouter && page >= pageCount() && !m_busy)
        m_layouter->layoutThrough(page);
    if (pageCount() == 0)
        return;
    page = std::clamp(page, 0, pageCount() - 1);
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

void ReportPreview::updateBar()
{
    {
        const QSignalBlocker blocker(m_pageBox);
        m_pageBox->setMaximum(std::max(1, pageCount()));
        m_pageBox->setValue(m_page + 1);
    }
    m_first->setEnabled(m_page > 0);
    m_previous->setEnabled(m_page > 0);
    const bool more = m_page + 1 < pageCount() || !isLaidOut();
    m_next->setEnabled(more);
    m_last->setEnabled(more);
    m_pagesLabel->setText(pageCountText());
}

void ReportPreview::updateView()
{
    updateBar();
    m_view->show(pageAt(m_page), frame(), effectiveScale());
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
            if (finishLayout(QStringLiteral("Подреждане на страниците...")))
                setPage(pageCount() - 1);
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
    if (!finishLayout(QStringLiteral("Подреждане на страниците за печат...")))
        return;
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageOrientation(frame().orientation == ReportOrientation::Landscape ? QPageLayout::Landscape
                                                                                   : QPageLayout::Portrait);
    printer.setFromTo(1, pageCount());
    if (!PreviewServices::instance().choosePrinter(printer, pageCount(), this))
        return;
    m_busy = true;
    const std::unique_ptr<ReportWork> work = PreviewServices::instance().startWork(QStringLiteral("Печат..."), this);
    bool stopped = false;
    const bool printed = printReport(
        frame(), pageCount(), [this](int page) { return pageAt(page); }, printer,
        [&work](int done, int total) { return work->step(done, total); }, &stopped);
    m_busy = false;
    if (!printed)
        MessageService::instance().inform(UserMessage{QStringLiteral("ГРЕШКА при печат!"),
                                                      QStringLiteral("Справката не може да бъде отпечатана.\n"
                                                                     "Проверете принтера и опитайте отново."),
                                                      UserMessage::Icon::Critical});
}

QString ReportPreview::suggestedPdfName() const
{
    // A name the report gives, else what its window is called ("Справка за курсове"), never the
    // name of its design.
    QString name = fileNameOf(frame().suggestedFileName);
    if (name.isEmpty())
        name = fileNameOf(screenOfCaption(frame().windowCaption));
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
    const std::shared_ptr<const ExportTable> rows = table();  // the whole layout, cancellable
    if (rows)
        exportservice::chooseAndWrite(this, QStringLiteral("Запис на редовете"), name,
                                      [rows]() -> Checked<ExportTable> { return *rows; });
}

bool ReportPreview::exportTableTo(const QString &fileName)
{
    const std::shared_ptr<const ExportTable> rows = table();
    return rows && exportservice::write(*rows, fileName);
}

bool ReportPreview::exportPdfTo(const QString &fileName)
{
    if (!finishLayout(QStringLiteral("Подреждане на страниците...")))
        return false;
    QString error;
    m_busy = true;
    const std::unique_ptr<ReportWork> work = PreviewServices::instance().startWork(QStringLiteral("Запис в PDF..."), this);
    bool stopped = false;
    const bool written = exportReportPdf(
        frame(), pageCount(), [this](int page) { return pageAt(page); }, fileName, &error,
        [&work](int done, int total) { return work->step(done, total); }, &stopped);
    m_busy = false;
    if (written)
        return !stopped;
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

ReportPreview *showReport(const Checked<StreamedReport> &report, QWidget *parent)
{
    if (!report) {
        MessageService::instance().inform(report.message());
        return nullptr;
    }
    auto *preview = new ReportPreview(std::make_shared<ReportLayouter>(report.value()), parent);
    preview->setAttribute(Qt::WA_DeleteOnClose);
    preview->setModal(false);
    preview->show();
    return preview;
}

}
