#include "courses/coursejournal.h"

#include "core/dates.h"
#include "core/formats.h"
#include "forms/commandday.h"
#include "forms/dateentry.h"
#include "forms/exportservice.h"
#include "forms/messageservice.h"

#include <cmath>

#include <QBarCategoryAxis>
#include <QHorizontalBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QComboBox>
#include <QCompleter>
#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QStringListModel>
#include <QTableView>
#include <QTimer>
#include <QValueAxis>
#include <QVBoxLayout>

namespace zarek {

namespace {

const int columnWidths[journalColumnCount] = {80, 170, 90, 160, 180, 120, 70, 55, 95, 85, 90, 45, 50};
// The chart shows at most this many months, the latest of the rows shown.
constexpr int chartMonths = 12;

QComboBox *markCombo(const QString &name, const QString &yes, const QString &no, QWidget *parent)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(name);
    combo->addItems({QStringLiteral("Всички"), yes, no});
    return combo;
}

JournalFilter::Mark markOf(const QComboBox *combo)
{
    return static_cast<JournalFilter::Mark>(combo->currentIndex());
}

}

CourseJournal::CourseJournal(QSqlDatabase db, QWidget *parent) : QWidget(parent, Qt::Window), m_books(commandDay()), m_store(db)
{
    setObjectName(QStringLiteral("CourseJournal"));
    setWindowTitle(QStringLiteral("Журнал на курсовете"));
    m_model = new CourseJournalModel(m_store, m_books, this);
    if (const auto error = m_store.refreshLists())
        MessageService::instance().inform(*error);
    buildScreen();
    applyFilter();
    resize(1180, 640);
}

void CourseJournal::buildScreen()
{
    auto *conditions = new QGridLayout;
    const auto addBox = [&](int row, int column, const QString &label, QWidget *box) {
        auto *caption = new QLabel(label, this);
        caption->setBuddy(box);
        conditions->addWidget(caption, row, column * 2, Qt::AlignRight);
        conditions->addWidget(box, row, column * 2 + 1);
    };
    m_from = new DateEntry(this);
    m_from->setObjectName(QStringLiteral("txtFrom"));
    m_to = new DateEntry(this);
    m_to->setObjectName(QStringLiteral("txtTo"));
    const auto lineBox = [this](const QString &name, bool completes) {
        auto *box = new QLineEdit(this);
        box->setObjectName(name);
        box->setClearButtonEnabled(true);
        if (completes) {
            // The stored values are offered from the first time the box is entered.
            auto *completer = new QCompleter(new QStringListModel(box), box);
            completer->setCaseSensitivity(Qt::CaseInsensitive);
            completer->setFilterMode(Qt::MatchContains);
            box->setCompleter(completer);
            box->installEventFilter(this);
        }
        return box;
    };
    m_truck = lineBox(QStringLiteral("txtTruck"), true);
    m_driver = lineBox(QStringLiteral("txtDriver"), false);
    m_client = lineBox(QStringLiteral("txtClient"), true);
    m_text = lineBox(QStringLiteral("txtText"), false);
    m_invoiced = markCombo(QStringLiteral("cboInvoiced"), QStringLiteral("Фактурирани"), QStringLiteral("Нефактурирани"), this);
    m_paid = markCombo(QStringLiteral("cboPaid"), QStringLiteral("Платени"), QStringLiteral("Неплатени"), this);
    addBox(0, 0, QStringLiteral("&От:"), m_from);
    addBox(0, 1, QStringLiteral("&До:"), m_to);
    addBox(0, 2, QStringLiteral("&Кола:"), m_truck);
    addBox(0, 3, QStringLiteral("&Шофьор:"), m_driver);
    addBox(1, 0, QStringLiteral("К&лиент:"), m_client);
    addBox(1, 1, QStringLiteral("&Маршрут/товар:"), m_text);
    addBox(1, 2, QStringLiteral("&Фактурирани:"), m_invoiced);
    addBox(1, 3, QStringLiteral("&Платени:"), m_paid);
    auto *clear = new QPushButton(QStringLiteral("&Изчисти"), this);
    clear->setObjectName(QStringLiteral("cmdClear"));
    clear->setToolTip(QStringLiteral("Маха всички условия"));
    conditions->addWidget(clear, 0, 8);

    m_grid = new QTableView(this);
    m_grid->setObjectName(QStringLiteral("grdJournal"));
    m_grid->setModel(m_model);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_grid->setAlternatingRowColors(true);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);
    m_grid->verticalHeader()->hide();
    // The newest courses first: what a dispatcher looks for most.
    m_grid->horizontalHeader()->setSortIndicator(0, Qt::DescendingOrder);
    m_grid->setSortingEnabled(true);
    for (int c = 0; c < journalColumnCount; ++c)
        m_grid->setColumnWidth(c, columnWidths[c]);
    m_grid->installEventFilter(this);
    connect(m_grid, &QTableView::doubleClicked, this, [this] { openCurrent(); });

    m_chart = new QChartView(this);
    m_chart->setObjectName(QStringLiteral("chartMonths"));
    m_chart->setRenderHint(QPainter::Antialiasing);
    m_chart->setMinimumWidth(260);
    auto *split = new QSplitter(Qt::Horizontal, this);
    split->addWidget(m_grid);
    split->addWidget(m_chart);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 1);

    m_totalsLabel = new QLabel(this);
    m_totalsLabel->setObjectName(QStringLiteral("lblTotals"));
    auto *exportButton = new QPushButton(QStringLiteral("&Експорт..."), this);
    exportButton->setObjectName(QStringLiteral("cmdExport"));
    exportButton->setToolTip(QStringLiteral("Записва списъка във файл за Excel (.xlsx) или .csv"));
    auto *close = new QPushButton(QStringLiteral("&Затвори"), this);
    close->setObjectName(QStringLiteral("cmdClose"));
    auto *bottom = new QHBoxLayout;
    bottom->addWidget(m_totalsLabel, 1);
    bottom->addWidget(exportButton);
    bottom->addWidget(close);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(conditions);
    layout->addWidget(split, 1);
    layout->addLayout(bottom);

    m_summaryTimer = new QTimer(this);
    m_summaryTimer->setSingleShot(true);
    m_summaryTimer->setInterval(0);
    connect(m_summaryTimer, &QTimer::timeout, this, &CourseJournal::refreshSummary);
    m_typing = new QTimer(this);
    m_typing->setSingleShot(true);
    m_typing->setInterval(200);
    connect(m_typing, &QTimer::timeout, this, &CourseJournal::applyFilter);
    for (QLineEdit *box : {static_cast<QLineEdit *>(m_from), static_cast<QLineEdit *>(m_to), m_truck, m_driver, m_client, m_text})
        connect(box, &QLineEdit::textChanged, m_typing, qOverload<>(&QTimer::start));
    for (QComboBox *combo : {m_invoiced, m_paid})
        connect(combo, &QComboBox::currentIndexChanged, this, &CourseJournal::applyFilter);
    connect(clear, &QPushButton::clicked, this, [this] {
        for (QLineEdit *box : {static_cast<QLineEdit *>(m_from), static_cast<QLineEdit *>(m_to), m_truck, m_driver, m_client, m_text})
            box->clear();
        m_invoiced->setCurrentIndex(0);
        m_paid->setCurrentIndex(0);
        applyFilter();
    });
    connect(exportButton, &QPushButton::clicked, this, &CourseJournal::chooseExportFile);
    connect(close, &QPushButton::clicked, this, &QWidget::close);
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        if (m_model->rowCount() > 0 && !m_grid->currentIndex().isValid())
            m_grid->setCurrentIndex(m_model->index(0, 0));
    });
}

JournalFilter CourseJournal::filterOnScreen() const
{
    JournalFilter filter;
    filter.from = m_from->date();
    filter.to = m_to->date();
    filter.truck = m_truck->text();
    filter.driver = m_driver->text();
    filter.client = m_client->text();
    filter.text = m_text->text();
    filter.invoiced = markOf(m_invoiced);
    filter.paid = markOf(m_paid);
    return filter;
}

void CourseJournal::applyFilter()
{
    m_typing->stop();
    if (const auto error = m_model->setFilter(filterOnScreen()))
        MessageService::instance().inform(*error);
    // The rows show first; totals and chart follow at once after.
    m_summaryTimer->start();
}

void CourseJournal::refreshSummary()
{
    m_summaryTimer->stop();
    const Checked<JournalSummary> summary = m_store.summary(m_model->filter(), m_books.changeover);
    m_totals = summary ? summary.value().totals : JournalTotals{};
    m_months = summary ? summary.value().months : QList<QPair<QString, double>>{};
    showTotals();
    showChart();
}

void CourseJournal::showTotals()
{
    QString text = QStringLiteral("Курсове: %1    Тонаж: %2    Км: %3    Бруто: %4 %5")
                       .arg(m_totals.count)
                       .arg(formatTonnes(m_totals.tonnes), formatKm(m_totals.km), formatAmount(m_totals.gross),
                            amountUnit(m_totals.currency));
    // A line under the totals tells how courses of both currencies were added up.
    if (m_totals.converted)
        text += QLatin1Char('\n') + conversionNote(m_books.changeover, m_totals.currency);
    m_totalsLabel->setText(text);
}

void CourseJournal::showChart()
{
    auto *chart = new QChart;
    chart->setTitle(QStringLiteral("Бруто по месеци"));
    chart->legend()->hide();
    // Months down the side, bars across: a month's name reads level in a narrow panel.
    auto *set = new QBarSet(QStringLiteral("Бруто"));
    QStringList categories;
    double highest = 0;
    for (const auto &[month, gross] : m_months.mid(std::max<qsizetype>(0, m_months.size() - chartMonths))) {
        *set << gross;
        categories.append(month.mid(5, 2) + QLatin1Char('.') + month.left(4));
        highest = std::max(highest, gross);
    }
    auto *series = new QHorizontalBarSeries;
    series->append(set);
    chart->addSeries(series);
    auto *months = new QBarCategoryAxis;
    months->append(categories);
    if (m_months.size() > chartMonths)
        months->setTitleText(QStringLiteral("последните %1").arg(chartMonths));
    chart->addAxis(months, Qt::AlignLeft);
    series->attachAxis(months);
    auto *amounts = new QValueAxis;
    amounts->setLabelFormat(QStringLiteral("%.0f"));
    if (highest > 0) {
        amounts->setRange(0, highest * 1.1);
        amounts->applyNiceNumbers();
        amounts->setTickCount(std::min(amounts->tickCount(), 4));  // room for each figure across
        amounts->applyNiceNumbers();
    } else {  // nothing to show: whole numbers, not 0, 0, 1, 1
        amounts->setRange(0, 3);
        amounts->setTickCount(4);
    }
    amounts->setTitleText(amountUnit(m_totals.currency));
    chart->addAxis(amounts, Qt::AlignBottom);
    series->attachAxis(amounts);
    QChart *old = m_chart->chart();
    m_chart->setChart(chart);
    delete old;
}

Checked<ExportTable> CourseJournal::exportTable() const
{
    const Checked<QList<JournalRow>> read =
        m_store.allRows(m_model->filter(), m_model->sortColumn(), m_model->ascending());
    if (!read)
        return read.message();
    ExportTable table;
    table.sheetName = QStringLiteral("Курсове");
    table.titleLines = {QStringLiteral("Журнал на курсовете")};
    const JournalFilter &filter = m_model->filter();
    if (filter.from.isValid() || filter.to.isValid())
        table.titleLines.append(QStringLiteral("за периода от %1 до %2")
                                    .arg(filter.from.isValid() ? formatDate(filter.from) : QStringLiteral("…"),
                                         filter.to.isValid() ? formatDate(filter.to) : QStringLiteral("…")));
    for (int c = 0; c < journalColumnCount; ++c)
        table.columns.append(exportColumnOf(CourseJournalModel::caption(c), CourseJournalModel::format(c)));
    // The rows in the grid's order, ordered by the database as the grid's pages are.
    auto rows = std::make_shared<QList<JournalRow>>(read.value());
    table.rowCount = static_cast<int>(rows->size());
    table.cell = [rows](int row, int column) { return rows->at(row).value(static_cast<JournalColumn>(column)); };
    // The totals are the ones under the grid, added up the same way (in euro once any course is,
    // the leva of each month converted once): the file and the screen never differ by a cent.
    const Checked<JournalSummary> summary = m_store.summary(m_model->filter(), m_books.changeover);
    if (!summary)
        return summary.message();
    const JournalTotals &totals = summary.value().totals;
    table.totals.resize(journalColumnCount);
    table.totals[int(JournalColumn::Tonnes)] = totals.tonnes;
    table.totals[int(JournalColumn::Km)] = totals.km;
    table.totals[int(JournalColumn::Gross)] = totals.gross;
    // Once the books hold both currencies, each course's currency stands in a column of its own.
    if (m_books.changedOver()) {
        table.columns.append(ExportColumn{QStringLiteral("Валута"), ExportColumn::Kind::Text, 0});
        table.cell = [rows, base = table.cell, books = m_books](int row, int column) -> QVariant {
            if (column < journalColumnCount)
                return base(row, column);
            return QVariant(amountUnit(books.currencyOn(rows->at(row).date)));
        };
        table.totals.append(amountUnit(totals.currency));
        if (totals.converted)
            table.noteLines.append(conversionNote(m_books.changeover, totals.currency));
    }
    return table;
}

bool CourseJournal::exportTo(const QString &fileName)
{
    return exportservice::write([this] { return exportTable(); }, fileName);
}

void CourseJournal::chooseExportFile()
{
    const JournalFilter &filter = m_model->filter();
    QString subject = QStringLiteral("Журнал на курсовете");
    if (filter.from.isValid() && filter.to.isValid())
        subject += QStringLiteral(" %1-%2").arg(formatDate(filter.from), formatDate(filter.to));
    exportservice::chooseAndWrite(this, QStringLiteral("Запис на списъка"), subject, [this] { return exportTable(); });
}

void CourseJournal::openCurrent()
{
    const qint64 id = m_model->idAt(m_grid->currentIndex().row());
    if (id == 0 || !openCourse)
        return;
    if (!openCourse(id))
        return;
    const int column = m_grid->currentIndex().column();
    m_store.refreshLists();
    for (QLineEdit *box : {m_truck, m_client})
        static_cast<QStringListModel *>(box->completer()->model())->setStringList({});
    if (const auto error = m_model->reload())
        MessageService::instance().inform(*error);
    refreshSummary();
    const int row = m_model->rowOf(id);
    if (row >= 0) {
        m_grid->setCurrentIndex(m_model->index(row, std::max(0, column)));
        m_grid->scrollTo(m_grid->currentIndex());
    }
}

bool CourseJournal::eventFilter(QObject *watched, QEvent *event)
{
    if ((watched == m_truck || watched == m_client) && event->type() == QEvent::FocusIn) {
        auto *offered = static_cast<QStringListModel *>(static_cast<QLineEdit *>(watched)->completer()->model());
        if (offered->rowCount() == 0)
            offered->setStringList(watched == m_truck ? m_store.trucks() : m_store.clients());
    }
    if (watched == m_grid && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            openCurrent();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}
