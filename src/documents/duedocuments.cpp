#include "duedocuments.h"

#include "core/dates.h"
#include "core/version.h"
#include "documents/documentstore.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportpreview.h"

#include <QKeyEvent>
#include <QTableView>

namespace zarek::documents {

namespace {

QString countText(int count)
{
    return count == 1 ? QStringLiteral("1 документ") : QStringLiteral("%1 документа").arg(count);
}

}

Checked<Report> dueDocumentsReport(const RowSet &rows, const FirmProfile &firm, const QDate &today)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptDokumenti"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setSuggestedFileName(QStringLiteral("Изтичащи документи ") + formatDate(today));
    report.setDataSource(rows);
    // Each row's state paints it, a pale red for expired and a pale amber for due: the design says so.
    report.setFirm(firm);
    report.setValue(QStringLiteral("today"), formatDate(today));
    report.setValue(QStringLiteral("count"), countText(rows.rowCount()));
    return report;
}

ResultGridConfig DueDocuments::config(const QDate &today)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("DueDocuments");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Изтичащи документи");
    config.text1 = QStringLiteral("Изтекли и изтичащи документи към ") + formatDate(today);
    config.columns = {
        {QStringLiteral("Sastoianie"), QStringLiteral("Състояние"), 1100, {}},
        {QStringLiteral("Vid"), QStringLiteral("Вид"), 3400, {}},
        {QStringLiteral("Pritejatel"), QStringLiteral("Притежател"), 3300, {}},
        {QStringLiteral("Nomer"), QStringLiteral("Номер"), 1500, {}},
        {QStringLiteral("Valid"), QStringLiteral("Валиден до"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("DoKoga"), QStringLiteral("Срок"), 1300, {}, Qt::AlignRight},
        {QStringLiteral("Ostavat"), QStringLiteral("Дни"), 600, {}, Qt::AlignRight},
    };
    config.legend = {{QStringLiteral("Label2"), QStringLiteral("Enter")},
                     {QStringLiteral("Label3"), QStringLiteral("- отваря документа")}};
    config.emptyMessage = QStringLiteral("Няма изтекли и изтичащи документи.");
    config.rowColors = [](const RowSet &rows, int row) {
        const bool expired = rows.value(row, QStringLiteral("Iztekal")).toBool();
        return expired ? std::pair{QColor(0xFF, 0xC8, 0xC8), QColor(0x90, 0x00, 0x00)}
                       : std::pair{QColor(0xFF, 0xDC, 0x96), QColor(0x60, 0x38, 0x00)};
    };
    return config;
}

DueDocuments::DueDocuments(QSqlDatabase db, FirmProfile firm, QWidget *parent, QDate today)
    : ResultGridScreen(config(today), parent), m_db(std::move(db)), m_firm(std::move(firm)), m_today(today)
{
    setProperty("helpTopic", 301);
    resize(900, 480);
    connect(grid(), &QTableView::doubleClicked, this, [this] { openCurrent(); });
    refresh();
}

bool DueDocuments::onKey(QKeyEvent *key)
{
    if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
        return false;
    openCurrent();
    return true;
}

void DueDocuments::onPrint()
{
    showReport(dueDocumentsReport(model()->rows(), m_firm, m_today), this);
}

void DueDocuments::refresh()
{
    Checked<RowSet> rows = RowSet();
    {
        WaitCursor wait;
        rows = DocumentStore(m_db).dueList(m_today);
    }
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return;
    }
    int expired = 0;
    for (int row = 0; row < rows.value().rowCount(); ++row)
        expired += rows.value().value(row, QStringLiteral("Iztekal")).toBool() ? 1 : 0;
    setText1(QStringLiteral("Изтекли и изтичащи документи към %1: %2, от тях изтекли %3")
                 .arg(formatDate(m_today))
                 .arg(rows.value().rowCount())
                 .arg(expired));
    setRows(rows.value());
}

void DueDocuments::openCurrent()
{
    const int row = currentRow();
    if (row < 0 || row >= model()->rows().rowCount())
        return;
    emit openDocument(model()->value(row, QStringLiteral("id")).toLongLong());
}

}
