#include "balans.h"

#include "core/version.h"
#include "data/scratchdatabase.h"
#include "fleet/balanschart.h"
#include "fleet/balansreport.h"
#include "fleet/balansstore.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"

#include <QChartView>
#include <QKeyEvent>
#include <QLabel>
#include <QTableView>

namespace zarek {

ResultGridConfig Balans::config(BalansMode mode, const Period &period)
{
    const bool profit = mode == BalansMode::Profit;
    const QString dates = balansDate(period.from) + QStringLiteral(" - ") + balansDate(period.to);
    ResultGridConfig config;
    config.formName = QStringLiteral("Balans");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor()
                     + (profit ? QStringLiteral(" - Баланс") : QStringLiteral(" - Разход нафта"));
    config.text1 = (profit ? QStringLiteral("Печалба за периода ") : QStringLiteral("Разход нафта за периода ")) + dates;
    config.columns = {
        {QStringLiteral("Red"), QStringLiteral("№"), 450, {}, Qt::AlignLeft},
        {QStringLiteral("Kola"), QStringLiteral("Кола"), 1000, {}, Qt::AlignHCenter, false, false, false, true},
        {QStringLiteral("Prihod"), profit ? QStringLiteral("Приход") : QStringLiteral("Изч.разх."), 1800, {}, Qt::AlignRight},
        {QStringLiteral("Razhod"), profit ? QStringLiteral("Разход") : QStringLiteral("Заредено"), 1800, {}, Qt::AlignRight},
        {QStringLiteral("Ostatak"), profit ? QStringLiteral("Остатък") : QStringLiteral("Разлика"), 1800, {}, Qt::AlignRight},
    };
    config.recordFormKeys = true;
    if (!profit)
        config.legend = {{QStringLiteral("Label5"), QStringLiteral("Enter")},
                         {QStringLiteral("Label6"), QStringLiteral("- Пътни листи на колата")}};
    return config;
}

Balans::Balans(BalansMode mode, const Period &period, QSqlDatabase db, ScratchDatabase *scratch,
               std::function<const FirmProfile &()> firm, QWidget *parent)
    : ResultGridScreen(config(mode, period), parent), m_mode(mode), m_period(period), m_db(std::move(db)),
      m_scratch(scratch), m_firm(std::move(firm))
{
    m_total = addTotalLabel(QStringLiteral("Label1"), QStringLiteral("Всичко:"));
    // Litres are not added up: no total on the screen, none on paper.
    m_total->setVisible(mode == BalansMode::Profit);
    if (mode == BalansMode::Fuel)
        connect(grid(), &QTableView::doubleClicked, this, [this](const QModelIndex &index) { showWaybills(index.row()); });
    load();
}

bool Balans::onKey(QKeyEvent *key)
{
    if (m_mode != BalansMode::Fuel || (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter))
        return false;
    showWaybills(currentRow());
    return true;
}

QList<QPair<QString, QByteArray>> Balans::exportPictures() const
{
    return {{balanceChartTitle(m_mode), balanceChartPng(m_mode, m_balances, m_currency)}};
}

void Balans::load()
{
    WaitCursor wait;
    if (auto refusal = m_scratch->RebuildScratchTable(QStringLiteral("TempBalans"))) {
        MessageService::instance().inform(*refusal);
        return;
    }
    BalansStore store(m_db);
    Checked<QList<TruckBalance>> balances = UserMessage{};
    {
        const Checked<QStringList> trucks = store.trucks();
        const int steps = trucks ? 2 * static_cast<int>(trucks.value().size()) + 1 : 1;
        ProgDialog progress(m_mode == BalansMode::Profit
                                ? QStringLiteral("Обработка на приходите и разходите от колите...")
                                : QStringLiteral("Обработка разхода на нафта на колите..."),
                            steps, this);
        balances = store.balances(m_mode, m_period, books().changeover);
        progress.setValue(steps);
    }
    if (!balances) {
        MessageService::instance().inform(balances.message());
        return;
    }
    m_balances = balances.value();
    // The total adds the remainders as shown, so it always equals the sum of the column.
    m_sumTotal = balansTotal(m_balances);
    const Currency currency = balansCurrency(m_period, books().changeover);
    m_currency = currency;
    m_total->setText(QStringLiteral("Всичко: ") + balansFigure(BalansMode::Profit, m_sumTotal, currency));
    if (m_mode == BalansMode::Profit && balansConverted(m_period, books().changeover))
        setAmountNote(conversionNote(books().changeover, currency));
    showChart();
    if (auto refusal = BalansStore::writeScratch(m_scratch->db(), m_mode, m_balances, currency)) {
        MessageService::instance().inform(*refusal);
        return;
    }
    // The grid and the print keep the rows as read back, whatever later rebuilds the scratch tables.
    const Checked<RowSet> rows = BalansStore::readScratch(m_scratch->db());
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return;
    }
    setRows(rows.value());
}

void Balans::showChart()
{
    auto *view = new QChartView(balanceChart(m_mode, m_balances, m_currency));
    view->setObjectName(QStringLiteral("chartBalans"));
    view->setRenderHint(QPainter::Antialiasing);
    view->setMinimumWidth(380);
    setBesideGrid(view);
}

Checked<Report> Balans::report() const
{
    Checked<Report> filled = ReportBalans(m_mode, model()->rows(), m_period, m_sumTotal, m_firm(), books().changeover);
    if (!filled)
        return filled;
    // The chart prints on a page of its own after the list, and goes with it to a workbook.
    Report withChart = filled.value();
    withChart.appendPicture(balanceChartTitle(m_mode), balanceChartPng(m_mode, m_balances, m_currency));
    return withChart;
}

void Balans::print()
{
    const Checked<Report> filled = report();
    if (!filled) {
        MessageService::instance().inform(filled.message());
        return;
    }
    ReportPreview preview(layoutReport(filled.value()), this);
    preview.exec();
}

Checked<Report> Balans::waybillReport(int row) const
{
    if (row < 0 || row >= m_balances.size())
        return UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма избрана кола!")};
    const QString kola = m_balances.at(row).kola;
    const Checked<RowSet> waybills = BalansStore(m_db).waybills(kola, m_period);
    if (!waybills)
        return waybills.message();
    return ReportKolaN(kola, waybills.value(), m_period, m_firm());
}

ReportPreview *Balans::showWaybills(int row)
{
    if (row < 0)
        return nullptr;
    WaitCursor wait;
    return showReport(waybillReport(row), parentWidget());
}

}
