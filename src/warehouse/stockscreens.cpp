#include "stockscreens.h"

#include "core/formats.h"
#include "core/version.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "reports/reportpreview.h"

#include <QLabel>

namespace zarek {

namespace {

QString caption(const QString &text)
{
    return QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - ") + text;
}

}

namespace {

// A list's rows and total in the list's currency, with the note where it converted.
void showStockList(ResultGridScreen &screen, const StockList &list)
{
    screen.setRows(list.rows);
    screen.setRunningTotal(list.total, true);
    if (list.mixed)
        screen.setAmountNote(conversionNote(list.changeover, list.currency));
}

}

ResultGridConfig NalichSK::config(QDate today)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("NalichSK");
    config.caption = caption(QStringLiteral("Склад - Наличност"));
    config.text1 = QStringLiteral("Складова наличност към ") + formatDate(today);
    config.columns = {
        {QStringLiteral("Red"), QStringLiteral("№"), 500, {}, Qt::AlignRight},
        {QStringLiteral("Name"), QStringLiteral("Име"), 4000, {}, Qt::AlignLeft},
        {QStringLiteral("Kol"), QStringLiteral("Брой"), 750, {}, Qt::AlignRight},
        {QStringLiteral("Cena"), QStringLiteral("Ед.цена"), 900, QStringLiteral("###0.00"), Qt::AlignRight},
        {QStringLiteral("Suma"), QStringLiteral("Сума"), 1000, QStringLiteral("###0.00"), Qt::AlignRight},
    };
    config.sumCaption = QStringLiteral("Всичко:");
    config.sumCaptionName = QStringLiteral("lblTotal");
    config.sumLabelName = QStringLiteral("Label1");
    config.emptyMessage = noStockArticleMessage().text;
    config.highlightRow = [](const RowSet &rows, int row) {
        return priceDrawnRed(rows.value(row, QStringLiteral("Cena")).toDouble());
    };
    return config;
}

NalichSK::NalichSK(const QString &articlePrefix, QSqlDatabase db, FirmProfile firm, QWidget *parent, QDate today)
    : ResultGridScreen(config(today), parent), m_firm(std::move(firm)), m_today(today)
{
    {
        WaitCursor wait;
        const Checked<StockList> list = stockPosition(db, articlePrefix, books());
        if (!list) {
            MessageService::instance().inform(list.message());
            return;
        }
        m_list = list.value();
    }
    showStockList(*this, m_list);
}

void NalichSK::onPrint()
{
    showReport(ReportNalich(m_list, m_firm, m_today), this);
}

ResultGridConfig SkladSK::config(QDate today)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("SkladSK");
    config.caption = caption(QStringLiteral("Склад - Ревизия"));
    config.text1 = QStringLiteral("Ревизия на склада към ") + formatDate(today);
    config.columns = {
        {QStringLiteral("Red"), QStringLiteral("№"), 500, {}, Qt::AlignRight},
        {QStringLiteral("Name"), QStringLiteral("Име"), 3300, {}, Qt::AlignLeft},
        {QStringLiteral("Cena"), QStringLiteral("Ед.цена"), 1150, {}, Qt::AlignRight},
        {QStringLiteral("Prihod"), QStringLiteral("Приход"), 850, {}, Qt::AlignRight},
        {QStringLiteral("SumaP"), QStringLiteral("Сума"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("Razhod"), QStringLiteral("Разход"), 850, {}, Qt::AlignRight},
        {QStringLiteral("SumaR"), QStringLiteral("Сума"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("Ostatak"), QStringLiteral("Остатък"), 850, {}, Qt::AlignRight},
        {QStringLiteral("SumaO"), QStringLiteral("Сума"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("OstatakKol"), {}, 0, {}, Qt::AlignRight, false, true},
    };
    config.sumCaption = QStringLiteral("Всичко:");
    config.sumCaptionName = QStringLiteral("lblTotal");
    config.sumLabelName = QStringLiteral("Label1");
    config.highlightRow = [](const RowSet &rows, int row) {
        return remainderDrawnRed(rows.value(row, QStringLiteral("OstatakKol")).toDouble());
    };
    return config;
}

SkladSK::SkladSK(const Period &period, QSqlDatabase db, FirmProfile firm, QWidget *parent, QDate today)
    : ResultGridScreen(config(today), parent), m_firm(std::move(firm)), m_today(today)
{
    {
        WaitCursor wait;
        ProgDialog progress(QStringLiteral("Обработка на приходите и разходите в склада..."), 1, parent);
        const Checked<StockList> list = stockAudit(db, period, books(), [&progress](int done, int count) {
            progress.setMaximum(count);
            progress.setValue(done);
        });
        progress.reset();
        if (!list) {
            MessageService::instance().inform(list.message());
            return;
        }
        m_list = list.value();
    }
    showStockList(*this, m_list);
}

void SkladSK::onPrint()
{
    showReport(ReportSklad(m_list, m_firm, m_today), this);
}

}
