#include "dashboard/tablo.h"

#include "core/formats.h"
#include "data/query.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QThread>
#include <QTreeWidget>
#include <QValueAxis>
#include <QVBoxLayout>

namespace zarek::dashboard {

namespace {

const QString unreadable = QStringLiteral("Данните не могат да се прочетат: ");

template <typename T>
void take(TileResult &result, const Checked<T> &read)
{
    if (read)
        result.figures = TileFigures(read.value());
    else
        result.failure = read.message().text.simplified();
}

QString tileTitle(Tile tile)
{
    switch (tile) {
    case Tile::Month: return QStringLiteral("Месецът");
    case Tile::Uninvoiced: return QStringLiteral("За фактуриране");
    case Tile::Unpaid: return QStringLiteral("Неплатени шофьори");
    case Tile::Receivables: return QStringLiteral("Вземания");
    case Tile::Documents: return QStringLiteral("Изтичащи документи");
    case Tile::Profit: return QStringLiteral("Печалба по коли");
    }
    return {};
}

}

TileResult readTile(Tile tile, QSqlDatabase db, const BooksDay &books)
{
    TileResult result;
    result.tile = tile;
    if (!db.isOpen()) {
        result.failure = db.lastError().text().simplified();
        return result;
    }
    switch (tile) {
    case Tile::Month: take(result, monthComparison(db, books)); break;
    case Tile::Uninvoiced: take(result, uninvoiced(db, books)); break;
    case Tile::Unpaid: take(result, unpaidDrivers(db, books)); break;
    case Tile::Receivables: take(result, receivables(db, books)); break;
    case Tile::Documents: take(result, dueDocuments(db, books)); break;
    case Tile::Profit: take(result, truckProfits(db, books, monthOf(books.today))); break;
    }
    return result;
}

// ---- one tile

TileBox::TileBox(Tile tile, QWidget *parent) : QFrame(parent), m_tile(tile)
{
    setObjectName(QStringLiteral("tile%1").arg(static_cast<int>(tile) + 1));
    setFrameShape(QFrame::StyledPanel);
    setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 6, 8, 6);
    layout->setSpacing(3);
    m_title = new QLabel(tileTitle(tile), this);
    m_title->setObjectName(QStringLiteral("lblTitle"));
    QFont bold = m_title->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.15);
    m_title->setFont(bold);
    m_period = new QLabel(QStringLiteral("Чета данните..."), this);
    m_period->setObjectName(QStringLiteral("lblPeriod"));
    layout->addWidget(m_title);
    layout->addWidget(m_period);
    if (tile == Tile::Profit) {
        m_chart = new QChartView(this);
        m_chart->setObjectName(QStringLiteral("chtProfit"));
        m_chart->setRenderHint(QPainter::Antialiasing);
        m_chart->setFocusPolicy(Qt::StrongFocus);
        m_chart->setMinimumSize(160, 140);
        m_chart->installEventFilter(this);
        layout->addWidget(m_chart, 1);
    } else {
        m_rows = new QTreeWidget(this);
        m_rows->setObjectName(QStringLiteral("grdRows"));
        m_rows->setRootIsDecorated(false);
        m_rows->setUniformRowHeights(true);
        m_rows->setAllColumnsShowFocus(true);
        m_rows->setSelectionMode(QAbstractItemView::SingleSelection);
        m_rows->setEditTriggers(QAbstractItemView::NoEditTriggers);
        m_rows->header()->setStretchLastSection(false);
        m_rows->header()->setMinimumSectionSize(24);
        m_rows->setTextElideMode(Qt::ElideRight);
        // The rows take the room the window gives: a small one shows fewer of them.
        m_rows->setMinimumSize(160, 80);
        m_rows->installEventFilter(this);
        connect(m_rows, &QTreeWidget::itemDoubleClicked, this,
                [this](QTreeWidgetItem *item) { emit activated(m_rows->indexOfTopLevelItem(item)); });
        layout->addWidget(m_rows, 1);
    }
    m_note = new QLabel(this);
    m_note->setObjectName(QStringLiteral("lblNote"));
    // One line, not wrapped: a wrapped label would make the tiles' height follow their width, and the
    // dashboard would scroll instead of fitting the window.
    m_note->setTextInteractionFlags(Qt::NoTextInteraction);
    layout->addWidget(m_note);
}

QWidget *TileBox::keyWidget() const
{
    return m_chart ? static_cast<QWidget *>(m_chart) : m_rows;
}

void TileBox::showSheet(const TileSheet &sheet)
{
    m_title->setText(sheet.title);
    m_period->setText(sheet.period);
    m_note->setText(sheet.note);
    m_note->setVisible(!sheet.note.isEmpty());
    if (!m_rows)
        return;
    const int current = std::max(0, currentRow());
    m_rows->clear();
    m_rows->setColumnCount(std::max(1, static_cast<int>(sheet.headers.size())));
    m_rows->setHeaderLabels(sheet.headers);
    m_rows->setHeaderHidden(false);
    // The figures keep their width; the names take what is left and are cut short when they must.
    m_rows->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_rows->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    for (int column = 1; column < sheet.headers.size(); ++column)
        m_rows->headerItem()->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    for (const QStringList &cells : sheet.rows) {
        auto *item = new QTreeWidgetItem(m_rows, cells);
        for (int column = 1; column < cells.size(); ++column)
            item->setTextAlignment(column, Qt::AlignRight | Qt::AlignVCenter);
    }
    setCurrentRow(std::min(current, m_rows->topLevelItemCount() - 1));
}

void TileBox::showFailure(const QString &title, const QString &line)
{
    m_title->setText(title);
    m_period->clear();
    m_note->setText(unreadable + line);
    m_note->setToolTip(m_note->text());
    m_note->setVisible(true);
    if (m_rows) {
        m_rows->clear();
        m_rows->setHeaderHidden(true);
    }
}

void TileBox::showProfits(const TruckProfits &profits)
{
    const TileSheet sheet = profitSheet(profits);
    showSheet(sheet);
    auto *set = new QBarSet(QStringLiteral("Печалба"));
    set->setColor(QColor(0x2e, 0x6d, 0xb4));
    set->setSelectedColor(QColor(0xc0, 0x6a, 0x14));
    QStringList trucks;
    double low = 0, high = 0;
    for (const TruckProfit &truck : profits.trucks) {
        const double value = truck.profit().toDouble();
        set->append(value);
        trucks.append(truck.kola);
        low = std::min(low, value);
        high = std::max(high, value);
    }
    auto *series = new QBarSeries;
    series->append(set);
    series->setBarWidth(0.7);
    auto *chart = new QChart;
    chart->addSeries(series);
    chart->legend()->hide();
    chart->setMargins(QMargins(0, 0, 0, 0));
    chart->setBackgroundRoundness(0);
    auto *axisX = new QBarCategoryAxis;
    axisX->append(trucks);
    // Truck numbers stand upright under their bars, in a small font, so that each is read whole.
    axisX->setLabelsAngle(-90);
    QFont small = axisX->labelsFont();
    small.setPointSizeF(small.pointSizeF() * 0.75);
    axisX->setLabelsFont(small);
    // The chart gives an axis at most 2/5 of its height: tall enough for the longest number read
    // upright, with the tick and the gaps round it, or the numbers would be cut short.
    const QFontMetrics metrics(small);
    int longest = 0;
    for (const QString &kola : std::as_const(trucks))
        longest = std::max(longest, metrics.horizontalAdvance(kola));
    m_chart->setMinimumHeight(std::max(140, (longest + metrics.height() + 16) * 5 / 2));
    chart->addAxis(axisX, Qt::AlignBottom);
    series->attachAxis(axisX);
    auto *axisY = new QValueAxis;
    axisY->setRange(low, high > low ? high : low + 1);
    axisY->setLabelFormat(QStringLiteral("%.0f"));
    axisY->setLabelsFont(small);
    axisY->setTickCount(4);
    chart->addAxis(axisY, Qt::AlignLeft);
    series->attachAxis(axisY);
    QChart *old = m_chart->chart();
    m_chart->setChart(chart);
    delete old;
    m_bars = static_cast<int>(trucks.size());
    m_barNotes.clear();
    for (const TruckProfit &truck : profits.trucks)
        m_barNotes.append(truck.kola + QStringLiteral(": ") + amountText(truck.profit(), profits.currency) + QStringLiteral("; ")
                          + sheet.note);
    m_bar = std::clamp(m_bar, 0, std::max(0, m_bars - 1));
    setCurrentRow(m_bar);
    connect(set, &QBarSet::clicked, this, [this](int index) { setCurrentRow(index); });
    connect(set, &QBarSet::doubleClicked, this, [this](int index) { emit activated(index); });
}

int TileBox::currentRow() const
{
    if (m_chart)
        return m_bars > 0 ? m_bar : -1;
    return m_rows->currentItem() ? m_rows->indexOfTopLevelItem(m_rows->currentItem()) : -1;
}

void TileBox::setCurrentRow(int row)
{
    if (m_chart) {
        if (row < 0 || row >= m_bars)
            return;
        m_bar = row;
        m_note->setText(m_barNotes.value(row, m_note->text()));
        if (auto *series = m_chart->chart() ? qobject_cast<QAbstractBarSeries *>(m_chart->chart()->series().value(0)) : nullptr) {
            QBarSet *set = series->barSets().value(0);
            set->deselectAllBars();
            set->selectBar(row);
        }
        return;
    }
    if (QTreeWidgetItem *item = m_rows->topLevelItem(row))
        m_rows->setCurrentItem(item);
}

QString TileBox::noteText() const
{
    return m_note->isHidden() ? QString() : m_note->text();
}

bool TileBox::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_P && key->modifiers() == Qt::ControlModifier) {
            emit printRequested();
            return true;
        }
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && key->modifiers() == Qt::NoModifier) {
            if (currentRow() >= 0)
                emit activated(currentRow());
            return true;
        }
        if (watched == m_chart && (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down || key->key() == Qt::Key_Left
                                   || key->key() == Qt::Key_Right)) {
            setCurrentRow(currentRow() + (key->key() == Qt::Key_Up || key->key() == Qt::Key_Left ? -1 : 1));
            return true;
        }
    }
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        setFrameShadow(event->type() == QEvent::FocusIn ? QFrame::Sunken : QFrame::Plain);
    return QFrame::eventFilter(watched, event);
}

// ---- the dashboard

Tablo::Tablo(QSqlDatabase db, std::function<BooksDay()> books, std::function<FirmProfile()> firm, QWidget *parent)
    : QFrame(parent), m_db(std::move(db)), m_books(std::move(books)), m_firm(std::move(firm))
{
    setObjectName(QStringLiteral("Tablo"));
    m_grid = new QGridLayout(this);
    m_grid->setContentsMargins(6, 6, 6, 6);
    m_grid->setSpacing(6);
    QWidget *previous = nullptr;
    for (Tile tile : allTiles) {
        auto *box = new TileBox(tile, this);
        m_boxes.insert(tile, box);
        connect(box, &TileBox::activated, this, [this, tile](int row) { activate(tile, row); });
        connect(box, &TileBox::printRequested, this, [this, tile] { print(tile); });
        if (previous)
            setTabOrder(previous, box->keyWidget());
        previous = box->keyWidget();
    }
    arrange(3);
}

// Three tiles a row on a wide screen, two on a narrow one, where three would cut every name short.
void Tablo::arrange(int columns)
{
    if (columns == m_columns)
        return;
    m_columns = columns;
    int index = 0;
    for (Tile tile : allTiles) {
        TileBox *box = m_boxes.value(tile);
        m_grid->removeWidget(box);
        if (!isTileAllowed(tile))
            continue;
        m_grid->addWidget(box, index / columns, index % columns);
        ++index;
    }
    for (int column = 0; column < 3; ++column)
        m_grid->setColumnStretch(column, column < columns ? 1 : 0);
    const int rows = (index + columns - 1) / columns;
    for (int row = 0; row < 3; ++row)
        m_grid->setRowStretch(row, row < rows ? 1 : 0);
}

void Tablo::resizeEvent(QResizeEvent *event)
{
    arrange(width() >= 1200 ? 3 : 2);
    QFrame::resizeEvent(event);
}

Tablo::~Tablo()
{
    for (QThread *thread : std::as_const(m_threads)) {
        thread->wait();
        delete thread;
    }
}

void Tablo::setTileAllowed(Tile tile, bool allowed)
{
    m_allowed.insert(tile, allowed);
    m_boxes.value(tile)->setVisible(allowed);
    const int columns = m_columns;
    m_columns = 0;
    arrange(columns);
}

void Tablo::refresh()
{
    if (!m_threads.isEmpty()) {
        m_again = true;
        return;
    }
    const BooksDay books = m_books();
    // Two readers, each on a connection of its own, so that the two longest sums (the unpaid pay
    // and the courses not invoiced) are read at once.
    const QList<QList<Tile>> readers = {{Tile::Unpaid, Tile::Month, Tile::Documents},
                                        {Tile::Uninvoiced, Tile::Profit, Tile::Receivables}};
    QPointer<Tablo> self(this);
    const QSqlDatabase source = m_db;
    for (const QList<Tile> &reader : readers) {
        QList<Tile> tiles;
        for (Tile tile : reader) {
            if (isTileAllowed(tile))
                tiles.append(tile);
        }
        if (tiles.isEmpty())
            continue;
        QThread *thread = QThread::create([self, source, books, tiles] {
            // A connection of its own, opened and closed in this thread.
            PrivateConnection connection(source);
            for (Tile tile : tiles) {
                TileResult result = readTile(tile, connection.db(), books);
                QMetaObject::invokeMethod(
                    self.data(),
                    [self, result, books] {
                        if (self) {
                            self->m_booksShown.insert(result.tile, books);
                            self->showResult(result);
                        }
                    },
                    Qt::QueuedConnection);
            }
        });
        thread->setObjectName(QStringLiteral("dashboard"));
        connect(thread, &QThread::finished, this, [this, thread] {
            m_threads.removeOne(thread);
            thread->deleteLater();
            if (!m_threads.isEmpty())
                return;
            if (m_again) {
                m_again = false;
                refresh();
                return;
            }
            emit loaded();
        });
        m_threads.append(thread);
    }
    if (m_threads.isEmpty()) {
        QMetaObject::invokeMethod(this, &Tablo::loaded, Qt::QueuedConnection);
        return;
    }
    for (QThread *thread : std::as_const(m_threads))
        thread->start(QThread::LowPriority);
}

void Tablo::showResult(const TileResult &result)
{
    m_results.insert(result.tile, result);
    TileBox *box = m_boxes.value(result.tile);
    if (!result.figures) {
        box->showFailure(tileTitle(result.tile), result.failure);
        return;
    }
    if (result.tile == Tile::Profit)
        box->showProfits(std::get<TruckProfits>(*result.figures));
    else
        box->showSheet(sheet(result.tile));
}

std::optional<TileFigures> Tablo::figures(Tile tile) const
{
    return m_results.value(tile).figures;
}

QString Tablo::failure(Tile tile) const
{
    return m_results.value(tile).failure;
}

TileSheet Tablo::sheet(Tile tile) const
{
    const std::optional<TileFigures> read = figures(tile);
    if (!read)
        return {tileTitle(tile), {}, {}, {}, failure(tile).isEmpty() ? QString() : unreadable + failure(tile)};
    const BooksDay books = m_booksShown.value(tile);
    switch (tile) {
    case Tile::Month: return monthSheet(std::get<MonthComparison>(*read));
    case Tile::Uninvoiced: return uninvoicedSheet(std::get<QList<UninvoicedClient>>(*read), books);
    case Tile::Unpaid: return unpaidSheet(std::get<QList<UnpaidDriver>>(*read), books);
    case Tile::Receivables: return receivablesSheet(std::get<Receivables>(*read), books);
    case Tile::Documents: return documentsSheet(std::get<DueDocuments>(*read), books);
    case Tile::Profit: return profitSheet(std::get<TruckProfits>(*read));
    }
    return {};
}

Checked<Report> Tablo::report(Tile tile) const
{
    return tileReport(sheet(tile), m_firm());
}

void Tablo::print(Tile tile)
{
    const Checked<Report> made = report(tile);
    if (!made)
        return;
    ReportPreview preview(layoutReport(made.value()), window());
    preview.exec();
}

void Tablo::activate(Tile tile, int row)
{
    const std::optional<TileFigures> read = figures(tile);
    if (!read || row < 0)
        return;
    switch (tile) {
    case Tile::Month: emit openMonthReport(std::get<MonthComparison>(*read).current.period); break;
    case Tile::Uninvoiced:
        if (const auto &clients = std::get<QList<UninvoicedClient>>(*read); row < clients.size())
            emit openInvoicing(clients[row].klient, clients[row].period);
        break;
    case Tile::Unpaid:
        if (const auto &drivers = std::get<QList<UnpaidDriver>>(*read); row < drivers.size())
            emit openPaySheet(drivers[row].kod, drivers[row].name, drivers[row].period);
        break;
    case Tile::Receivables:
        if (const auto &owing = std::get<Receivables>(*read).largest; row < owing.size())
            emit openClientAccount(owing[row].klient);
        break;
    case Tile::Documents:
        if (const auto &due = std::get<DueDocuments>(*read).nearest; row < due.size())
            emit openDocument(due[row].id);
        break;
    case Tile::Profit:
        if (const auto &profits = std::get<TruckProfits>(*read); row < profits.trucks.size())
            emit openBalans(profits.trucks[row].kola, profits.period);
        break;
    }
}

}
