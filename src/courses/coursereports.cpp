#include "coursereports.h"

#include "core/dates.h"
#include "core/version.h"
#include "data/currencyrows.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "reports/reportrows.h"

#include <QVariant>

namespace zarek {

namespace {

const QString header = QStringLiteral("ReportHeader");
const QString detail = QStringLiteral("Detail");
const QString pageFooter = QStringLiteral("PageFooter");
const QString reportFooter = QStringLiteral("ReportFooter");

const QString courseColumns =
    QStringLiteral("SELECT data, kola, ton, km, Tarifa, bruto, Marsh, Klient, Tovar, plat, Fakt FROM tabl ");
const QString period = QStringLiteral("data BETWEEN ? AND ? ");
const QString order = QStringLiteral("ORDER BY data, id");

// The search dialogs always give a period; one without both ends is refused, not guessed.
std::optional<UserMessage> checkPeriod(const Period &period)
{
    if (period.from.isValid() && period.to.isValid())
        return std::nullopt;
    return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма избран период за търсене!"),
                                 QStringLiteral("Проверете си датите!"));
}

// Landscape A4 with the margins and preview window of the course reports.
void landscapeSetUp(Report &report)
{
    report.setOrientation(ReportOrientation::Landscape);
    report.setMargins(1000, 1000, 567, 600);
    report.setWindowSize(14800, 10050);
}

// The courses of the condition (a WHERE clause ending in " AND ", then the period), read as the
// report is laid out, with their money in the currency of each course's day: rows of both
// currencies show each sum with its unit, and the total, in euro, says how it was made.
Checked<StreamedReport> courseRows(Report report, QSqlDatabase db, const BooksDay &books, const QString &condition, QList<QVariant> values,
                                   const Period &dates, const QString &amountBox = QStringLiteral("Text105"))
{
    values << dates.from << dates.to;
    const QString where = QStringLiteral("WHERE ") + condition + period;
    // Which currencies the courses are in, asked only where the period runs over the changeover.
    const auto rowsExist = [&](const QString &comparison, const QDate &day) {
        QVariantList bound = values;
        bound.append(day);
        Query query(db, QStringLiteral("SELECT 1 FROM tabl ") + where + QStringLiteral("AND data ") + comparison
                            + QStringLiteral(" ? LIMIT 1"));
        return !query.run(QStringLiteral("ГРЕШКА при четене!"), bound) && query.next();
    };
    const DatedAmounts amounts = datedAmountsOverPeriod(books, dates.from, dates.to, rowsExist);
    const Checked<std::shared_ptr<RowStream>> rows =
        queryRowStream(db, courseColumns + where + order, values, QStringLiteral("ГРЕШКА при четене!"));
    if (!rows)
        return rows.message();
    const QStringList columns = rows.value()->columns();
    const QStringList amountColumns = {QStringLiteral("bruto")};
    StreamedReport streamed{std::move(report),
                            changedRows(rows.value(), datedAmountColumns(columns, amountColumns),
                                        datedAmountsChange(books, columns, QStringLiteral("data"), amountColumns, amounts))};
    streamed.report.control(reportFooter, QStringLiteral("Function105")).format = totalFormat(amounts.totals);
    if (amounts.mixed) {
        streamed.report.setFontSize(detail, amountBox, amountWithUnitFontSize);
        streamed.report.addFooterNote(conversionNote(books.changeover, amounts.totals));
    }
    return streamed;
}

void fillCommon(Report &report, const FirmProfile &firm, const QString &subject, const Period &period,
                const QList<QPair<QString, QString>> &fields)
{
    fillFirmBlock(report, firm);
    report.setCaption(header, QStringLiteral("Label4"), subject);
    report.setCaption(header, QStringLiteral("Label5"), periodLine(period));
    for (const auto &[box, field] : fields)
        report.setDataField(detail, box, field);
    report.setCaption(pageFooter, QStringLiteral("Label6"), QStringLiteral("Зарек ") + version::text());
    const QList<QPair<QString, QString>> totals = {{QStringLiteral("Function102"), QStringLiteral("ton")},
                                                   {QStringLiteral("Function103"), QStringLiteral("km")},
                                                   {QStringLiteral("Function105"), QStringLiteral("brutoTotal")}};
    for (const auto &[function, field] : totals) {
        report.setDataField(reportFooter, function, field);
        report.setFunctionType(reportFooter, function, 0);
    }
}

// The name a saved copy is offered under: what the report is about and its period.
QString fileName(const QString &subject, const Period &period)
{
    return subject + QStringLiteral(", ") + formatDate(period.from) + QStringLiteral(" - ") + formatDate(period.to);
}

QString windowCaption(const QString &text)
{
    return QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - ") + text;
}

using Fields = QList<QPair<QString, QString>>;

const Fields &truckFields()
{
    static const Fields fields = {
        {QStringLiteral("Text100"), QStringLiteral("Data")},  {QStringLiteral("Text101"), QStringLiteral("plat")},
        {QStringLiteral("Text102"), QStringLiteral("ton")},   {QStringLiteral("Text103"), QStringLiteral("km")},
        {QStringLiteral("Text104"), QStringLiteral("tarifa")}, {QStringLiteral("Text105"), QStringLiteral("bruto")},
        {QStringLiteral("Text108"), QStringLiteral("Marsh")}, {QStringLiteral("Text109"), QStringLiteral("Klient")},
        {QStringLiteral("Text110"), QStringLiteral("Tovar")}};
    return fields;
}

Fields firmFields()
{
    Fields fields = truckFields();
    fields[1].second = QStringLiteral("kola");
    return fields;
}

}

QString periodLine(const Period &period)
{
    return QStringLiteral("за периода от ") + formatDate(period.from) + QStringLiteral(" до ") + formatDate(period.to);
}

QString firmContactLine(const FirmProfile &firm)
{
    // The mobile number follows "факс:" and the address reads "http//": the firm's papers always had it so.
    return QStringLiteral("тел:") + firm.UserTel + QStringLiteral(", факс:") + firm.UserGSM
           + QStringLiteral(", E-mail:") + firm.UserEmail + QStringLiteral(", URL:http//") + firm.UserURL;
}

void fillFirmBlock(Report &report, const FirmProfile &firm, const QString &contactLabel)
{
    report.setCaption(header, QStringLiteral("Label1"), firm.UserName);
    report.setCaption(header, QStringLiteral("Label2"), firm.UserCity + QStringLiteral(", ") + firm.UserAdres);
    report.setCaption(header, contactLabel, firmContactLine(firm));
}

Checked<StreamedReport> streamReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKola"));
    if (!loaded)
        return loaded.message();
    Report report = loaded.value();
    landscapeSetUp(report);
    Checked<StreamedReport> rows =
        courseRows(report, db, books, QStringLiteral("kola = ? AND "), {conditions.SeekKola}, conditions.period);
    if (!rows)
        return rows;
    StreamedReport streamed = rows.value();
    fillCommon(streamed.report, firm, QStringLiteral("за курсовете на кола №") + conditions.SeekKola,
               conditions.period, truckFields());
    streamed.report.setSuggestedFileName(
        fileName(QStringLiteral("Справка за курсовете на кола №") + conditions.SeekKola, conditions.period));
    return streamed;
}

Checked<StreamedReport> streamReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptAll"));
    if (!loaded)
        return loaded.message();
    Report report = loaded.value();
    QString condition;
    QList<QVariant> values;
    QString subject = QStringLiteral("за курсовете на фирма ");
    if (conditions.SeekChoice == QLatin1String("Yes")) {
        condition = QStringLiteral("Fakt = ? AND ");
        values.append(true);
        subject = QStringLiteral("за фактурираните курсове на фирма ");
    } else if (conditions.SeekChoice == QLatin1String("No")) {
        condition = QStringLiteral("Fakt = ? AND ");
        values.append(false);
        subject = QStringLiteral("за нефактурираните курсове на фирма ");
    }
    report.setWindowCaption(windowCaption(QStringLiteral("Справка за курсове")));
    landscapeSetUp(report);
    Checked<StreamedReport> rows = courseRows(report, db, books, condition, values, conditions.period);
    if (!rows)
        return rows;
    StreamedReport streamed = rows.value();
    fillCommon(streamed.report, firm, subject + firm.UserName, conditions.period, firmFields());
    streamed.report.setSuggestedFileName(
        fileName(QStringLiteral("Обща справка ") + subject + firm.UserName, conditions.period));
    return streamed;
}

Checked<StreamedReport> streamReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKlient"));
    if (!loaded)
        return loaded.message();
    Report report = loaded.value();
    report.setWindowCaption(windowCaption(QStringLiteral("Справка за курсовете")));
    Checked<StreamedReport> rows = courseRows(report, db, books, QStringLiteral("Klient = ? AND "), {conditions.SeekKlient},
                                              conditions.period, QStringLiteral("Text104"));
    if (!rows)
        return rows;
    StreamedReport streamed = rows.value();
    streamed.report.setCaption(header, QStringLiteral("Label3"),
                               QStringLiteral("Извършени от ") + firm.UserName + QStringLiteral(" курсове"));
    fillCommon(streamed.report, firm, QStringLiteral("по заявка на ") + conditions.SeekKlient, conditions.period,
               {{QStringLiteral("Text100"), QStringLiteral("Data")},
                {QStringLiteral("Text101"), QStringLiteral("kola")},
                {QStringLiteral("Text102"), QStringLiteral("ton")},
                {QStringLiteral("Text103"), QStringLiteral("km")},
                {QStringLiteral("Text104"), QStringLiteral("bruto")},
                {QStringLiteral("Text107"), QStringLiteral("Marsh")},
                {QStringLiteral("Text108"), QStringLiteral("Tovar")}});
    streamed.report.setSuggestedFileName(
        fileName(QStringLiteral("Справка за курсовете по заявка на ") + conditions.SeekKlient, conditions.period));
    return streamed;
}

Checked<StreamedReport> streamReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                          const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptDriver"));
    if (!loaded)
        return loaded.message();
    Report report = loaded.value();
    report.setWindowCaption(windowCaption(QStringLiteral("Справка за курсовете")));
    landscapeSetUp(report);
    Checked<StreamedReport> rows =
        courseRows(report, db, books, QStringLiteral("kod = ? AND "), {conditions.SeekDriverKod}, conditions.period);
    if (!rows)
        return rows;
    StreamedReport streamed = rows.value();
    // Each date cell tells that course's own payment: white when paid, grey while unpaid.
    streamed.report.setBackColorByField(detail, QStringLiteral("Text100"), QStringLiteral("plat"), colorWhite,
                                        colorGrey);
    Fields fields = firmFields();
    fields.append({QStringLiteral("Text111"), QStringLiteral("plat")});
    fillCommon(streamed.report, firm, QStringLiteral("за курсовете извършени от ") + conditions.SeekDriverIme,
               conditions.period, fields);
    streamed.report.setSuggestedFileName(
        fileName(QStringLiteral("Справка за курсовете извършени от ") + conditions.SeekDriverIme, conditions.period));
    return streamed;
}

Checked<Report> ReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    return withAllRows(streamReportKola(conditions, db, firm, books));
}

Checked<Report> ReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    return withAllRows(streamReportAll(conditions, db, firm, books));
}

Checked<Report> ReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    return withAllRows(streamReportKlient(conditions, db, firm, books));
}

Checked<Report> ReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    return withAllRows(streamReportDriver(conditions, db, firm, books));
}

}
