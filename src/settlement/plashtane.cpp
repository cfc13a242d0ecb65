#include "plashtane.h"

#include "core/dates.h"
#include "core/valueformat.h"
#include "core/version.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "settlement/paymentstore.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"

#include <QKeyEvent>

namespace zarek {

namespace {

const QString idField = QStringLiteral("id");
const QString versionField = QStringLiteral("row_version");
const QString paidField = QStringLiteral("plat");

}

ResultGridConfig Plashtane::config(const QString &driverName, QDate today)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("Plashtane");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Плащане курсове");
    // "na" in Latin letters: the screen's title line has always read so.
    config.text1 = QStringLiteral("Курсове na ") + driverName + QStringLiteral(" към ") + formatDate(today);
    // Truck numbers and the "Плат." caption need a little more room than the twips of old gave them.
    config.columns = {
        {QStringLiteral("Data"), QStringLiteral("Дата"), 1200, {}, Qt::AlignLeft},
        {QStringLiteral("Marsh"), QStringLiteral("Маршрут"), 2600, {}, Qt::AlignLeft},
        {QStringLiteral("Tovar"), QStringLiteral("Товар"), 2200, {}, Qt::AlignLeft},
        {QStringLiteral("kola"), QStringLiteral("Кола"), 1500, {}, Qt::AlignHCenter},
        {QStringLiteral("KM"), QStringLiteral("Км"), 750, {}, Qt::AlignRight},
        {QStringLiteral("Ton"), QStringLiteral("Тонаж"), 900, QStringLiteral("###0.000"), Qt::AlignRight},
        {QStringLiteral("Tarifa"), QStringLiteral("Тар."), 750, QStringLiteral("###0.000#####"), Qt::AlignRight},
        {QStringLiteral("neto"), QStringLiteral("Сума"), 900, QStringLiteral("###0.00"), Qt::AlignRight, false, false,
         false, false, true},
        {paidField, QStringLiteral("Плат."), 650, {}, Qt::AlignHCenter, false, false, true},
    };
    config.flagField = paidField;
    config.amountField = QStringLiteral("neto");
    config.dateField = QStringLiteral("Data");
    config.sumCaption = QStringLiteral("Сума за плащане:");
    config.legend = {{QStringLiteral("Label7"), QStringLiteral("Space")},
                     {QStringLiteral("Label8"), QStringLiteral("- Маркира плащане")},
                     {QStringLiteral("Label5"), QStringLiteral("F4")},
                     {QStringLiteral("Label6"), QStringLiteral("- Корекция")}};
    config.emptyMessage = noCoursesToPayMessage().text;
    return config;
}

Plashtane::Plashtane(const SearchConditions &conditions, QSqlDatabase db, ScratchDatabase &scratch, FirmProfile firm,
                     QWidget *parent, QDate today)
    : ResultGridScreen(config(conditions.SeekDriverIme, today), parent), m_conditions(conditions),
      m_db(std::move(db)), m_store(m_db), m_scratch(scratch), m_firm(std::move(firm)), m_today(today)
{
    WaitCursor wait;
    const Checked<QList<PayTruck>> trucks = m_store.payTrucks();
    if (!trucks) {
        MessageService::instance().inform(trucks.message());
        return;
    }
    m_trucks = trucks.value();
    const Checked<RowSet> courses = m_store.courses(m_conditions.SeekDriverKod, m_conditions.period, false, false);
    if (!courses) {
        MessageService::instance().inform(courses.message());
        return;
    }
    setRows(courses.value());
}

Currency Plashtane::totalsCurrencyOf(bool anyEuro) const
{
    return zarek::totalsCurrency(anyEuro, books().currencyOn(m_today));  // paid today, in today's currency
}

// Space marks by the pay rule; any key shows the sum due again.
bool Plashtane::onKey(QKeyEvent *key)
{
    if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier)
        return spacePressed();
    showPay();
    return false;
}

std::optional<UserMessage> Plashtane::onMark(int row, bool paid)
{
    RowSet &rows = model()->rows();
    const Checked<int> written =
        m_store.setPaid(rows.value(row, idField).toLongLong(), rows.value(row, versionField).toInt(), paid);
    if (written) {
        rows.setValue(row, rows.column(versionField), written.value());
        return std::nullopt;
    }
    showStoredState(row);
    return written.message();
}

void Plashtane::showStoredState(int row)
{
    const qint64 id = model()->value(row, idField).toLongLong();
    const bool markedHere = model()->isMarked(row);
    const Checked<RowSet> stored = m_store.storedCourse(id);
    if (!stored)
        return;  // the error of the write stands for both
    const RowSet &course = stored.value();
    const bool listed = course.rowCount() == 1
                        && course.value(0, QStringLiteral("kod")).toString() == m_conditions.SeekDriverKod
                        && m_conditions.period.contains(dateOfValue(course.value(0, QStringLiteral("Data"))))
                        // Paid at another workstation: it is his course no longer to pay here.
                        && (markedHere || !course.value(0, paidField).toBool());
    if (listed)
        model()->replaceRow(row, course, 0);
    else
        model()->takeRow(row);
    recountTotal();
    showPay();
}

PaySheet Plashtane::sheetOf(const QList<int> &rows) const
{
    const RowSet &courses = model()->rows();
    const int data = courses.column(QStringLiteral("Data"));
    const int kola = courses.column(QStringLiteral("kola"));
    const int ton = courses.column(QStringLiteral("Ton"));
    const int km = courses.column(QStringLiteral("KM"));
    const int bruto = courses.column(QStringLiteral("bruto"));
    const int marsh = courses.column(QStringLiteral("Marsh"));
    const int tovar = courses.column(QStringLiteral("Tovar"));
    const auto cell = [&courses](int row, int column) { return column < 0 ? QVariant() : courses.value(row, column); };
    PaySheet sheet;
    sheet.lines.reserve(rows.size());
    for (const int row : rows) {
        PaySheetLine line;
        line.red = static_cast<int>(sheet.lines.size()) + 1;
        line.data = dateOfValue(cell(row, data));
        line.kola = cell(row, kola).toString();
        line.ton = cell(row, ton).toDouble();
        line.km = cell(row, km).toDouble();
        line.bruto = cell(row, bruto).toDouble();
        line.marsh = cell(row, marsh).toString();
        line.tovar = cell(row, tovar).toString();
        sheet.lines.append(line);
    }
    return sheet;
}

QList<int> Plashtane::markedRows() const
{
    QList<int> marked;
    for (int row = 0; row < model()->rowCount(); ++row) {
        if (model()->isMarked(row))
            marked.append(row);
    }
    return marked;
}

Checked<Money> Plashtane::markedPay() const
{
    PaySheet sheet = sheetOf(markedRows());
    if (auto refusal = pricePaySheet(sheet, m_trucks, {books().changeover, m_today}, totalsCurrency()))
        return *refusal;
    return sheet.printedTotal();
}

bool Plashtane::spacePressed()
{
    const int row = currentRow();
    if (row >= 0 && !model()->isMarked(row)) {
        // A course of a truck without a percent has no pay to be paid by.
        PaySheet course = sheetOf({row});
        if (auto refusal = pricePaySheet(course, m_trucks, {books().changeover, m_today}, totalsCurrency())) {
            MessageService::instance().inform(*refusal);
            return true;
        }
    }
    markCurrentRow();
    showPay();
    return true;
}

// Marks all passed the rule; a course changed elsewhere to a truck without a percent adds nothing.
Money Plashtane::marksTotal() const
{
    const Checked<Money> pay = markedPay();
    return pay ? pay.value() : Money();
}

void Plashtane::showPay()
{
    setRunningTotal(marksTotal(), true);
}

std::optional<LaidOutReport> Plashtane::statement()
{
    WaitCursor wait;
    const Checked<DriverPapers> papers = m_store.driverPapers(m_conditions.SeekDriverKod);
    if (!papers) {
        MessageService::instance().inform(papers.message());
        return std::nullopt;
    }
    const QList<int> marked = markedRows();
    if (marked.isEmpty()) {
        MessageService::instance().inform(noPaidCoursesMessage());
        return std::nullopt;
    }
    // TempPlaten is made anew for each print: a statement lists each marked course once.
    const Checked<ScratchStatement> written =
        writeTempPlaten(m_scratch, model()->rows(), marked, 3, {{books().changeover, m_today}, totalsCurrency(), true});
    if (!written) {
        MessageService::instance().inform(written.message());
        return std::nullopt;
    }
    // The statement lists the courses with their sums; its total and the receipt state the pay.
    const Checked<Money> pay = markedPay();
    if (!pay) {
        MessageService::instance().inform(pay.message());
        return std::nullopt;
    }
    ScratchStatement statement = written.value();
    statement.total = pay.value();
    setRunningTotal(statement.total, true);
    const Checked<Report> report = ReportPlaten(m_conditions.SeekDriverIme, papers.value(), m_conditions.period,
                                                statement, m_firm, m_today);
    if (!report) {
        MessageService::instance().inform(report.message());
        return std::nullopt;
    }
    return layoutReport(report.value());
}

void Plashtane::print()
{
    std::optional<LaidOutReport> laid = statement();
    if (!laid)
        return;
    ReportPreview preview(std::move(*laid), this);
    preview.setProperty("helpTopic", property("helpTopic"));
    preview.exec();
}

}
