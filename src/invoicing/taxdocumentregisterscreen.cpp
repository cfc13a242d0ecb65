#include "taxdocumentregisterscreen.h"

#include "core/dates.h"
#include "core/version.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"

#include <QKeyEvent>
#include <QTableView>

namespace zarek {

ResultGridConfig TaxDocumentRegisterScreen::config(const TaxRegisterConditions &conditions)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("Fakturi");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Фактури");
    config.text1 = QStringLiteral("Фактури и известия за периода от ") + formatDate(conditions.period.from)
                   + QStringLiteral(" до ") + formatDate(conditions.period.to);
    const QString amount = QStringLiteral("###0.00");
    config.columns = {
        {QStringLiteral("Nomer"), QStringLiteral("Номер"), 1500, {}},
        {QStringLiteral("Vid"), QStringLiteral("Вид"), 2000, {}},
        {QStringLiteral("Data"), QStringLiteral("Дата"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("DataDan"), QStringLiteral("Дан. събитие"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("Klient"), QStringLiteral("Клиент"), 3000, {}},
        {QStringLiteral("EIK"), QStringLiteral("ЕИК"), 1500, {}},
        {QStringLiteral("Osnova"), QStringLiteral("Основа"), 1400, amount, Qt::AlignRight},
        {QStringLiteral("DDS"), QStringLiteral("ДДС"), 1200, amount, Qt::AlignRight},
        {QStringLiteral("Obshto"), QStringLiteral("Общо"), 1400, amount, Qt::AlignRight},
        {QStringLiteral("Valuta"), QStringLiteral("Валута"), 800, {}, Qt::AlignCenter},
        {QStringLiteral("Plateno"), QStringLiteral("Платено"), 1400, amount, Qt::AlignRight},
        {QStringLiteral("Ostatak"), QStringLiteral("Остатък"), 1400, amount, Qt::AlignRight},
        {QStringLiteral("Sastoianie"), QStringLiteral("Състояние"), 1800, {}},
        {QStringLiteral("Padej"), QStringLiteral("Падеж"), 1300, {}, Qt::AlignRight},
    };
    config.legend = {{QStringLiteral("Label2"), QStringLiteral("Enter")},
                     {QStringLiteral("Label3"), QStringLiteral("- печата копие на документа")}};
    config.printable = false;
    config.emptyMessage = QStringLiteral("Няма издадени фактури за периода.");
    config.rowColors = [](const RowSet &rows, int row) {
        if (rows.value(row, QStringLiteral("Prosrochena")).toBool())
            return std::pair{QColor(0xFF, 0xC8, 0xC8), QColor(0x90, 0x00, 0x00)};
        return std::pair{QColor(), QColor()};
    };
    return config;
}

TaxDocumentRegisterScreen::TaxDocumentRegisterScreen(QSqlDatabase db, TaxRegisterConditions conditions,
                                                     QWidget *parent)
    : ResultGridScreen(config(conditions), parent), m_db(std::move(db)), m_conditions(std::move(conditions))
{
    resize(1100, 520);
    connect(grid(), &QTableView::doubleClicked, this, [this] { reprintCurrent(); });
    refresh();
}

void TaxDocumentRegisterScreen::refresh()
{
    Checked<RowSet> rows = RowSet();
    {
        WaitCursor wait;
        rows = taxDocumentRegister(m_db, m_conditions);
    }
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return;
    }
    int overdue = 0;
    for (int row = 0; row < rows.value().rowCount(); ++row)
        overdue += rows.value().value(row, QStringLiteral("Prosrochena")).toBool() ? 1 : 0;
    QString text = QStringLiteral("Фактури и известия за периода от %1 до %2").arg(formatDate(m_conditions.period.from),
                                                                                  formatDate(m_conditions.period.to));
    if (!m_conditions.clientPrefix.trimmed().isEmpty())
        text += QStringLiteral(", клиент ") + m_conditions.clientPrefix.trimmed() + QStringLiteral("…");
    text += QStringLiteral(": %1, от тях просрочени %2").arg(rows.value().rowCount()).arg(overdue);
    setText1(text);
    setRows(rows.value());
}

bool TaxDocumentRegisterScreen::onKey(QKeyEvent *key)
{
    if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
        return false;
    reprintCurrent();
    return true;
}

void TaxDocumentRegisterScreen::reprintCurrent()
{
    const int row = currentRow();
    if (row < 0 || row >= model()->rows().rowCount())
        return;
    emit reprint(model()->value(row, QStringLiteral("id")).toLongLong());
}

}
