#include "coursereports.h"

#include "core/dates.h"
#include "core/version.h"
#include "data/currencyrows.h"
#include "data/sqlerror.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

const QString header = QStringLiteral("ReportHeader");
const QString detail = QStringLiteral("Detail");
const QString pageFooter = QStringLiteral("PageFooter");
const QString reportFooter = QStringLiteral("ReportFooter");

const QString courseColumns =
    QStringLiteral("SELECT data, kola, ton, km, Tarifa, bruto, Marsh, Klient, Tovar, plat, Fakt FROM tabl ");
const QString periodAndOrder = QStringLiteral("data BETWEEN ? AND ? ORDER BY data, id");

UserMessage readErrorTitleMessage(const QSqlQuery &query)
{
    return sqlErrorMessage(QStringLiteral("ГРЕШКА при четене!"), query.lastError());
}

// The search dialogs always give a period; one without both ends is refused, not guessed.
std::optional<UserMessage> checkPeriod(const Period &period)
{
    if (period.from.isValid() && period.to.isValid())
        return std::nullopt;
    return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма избран период за търсене!"),
                                 QStringLiteral("Проверете си датите!"));
}

Checked<RowSet> runQuery(QSqlDatabase db, const QString &sql, const QList<QVariant> &values)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.prepare(sql))
        return readErrorTitleMessage(query);
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        return readErrorTitleMessage(query);
    return RowSet::fromQuery(query, QStringLiteral("ГРЕШКА при четене!"));
}

// Landscape A4 with the margins and preview window of the course reports.
void landscapeSetUp(Report &report)
{
    report.setOrientation(ReportOrientation::Landscape);
    report.setMargins(1000, 1000, 567, 600);
    report.setWindowSize(14800, 10050);
}

// The courses' rows with their money in the currency of each course's day: rows of both
// currencies show each sum with its unit, and the total, in euro, says how it was made.
void setCourseRows(Report &report, RowSet rows, const BooksDay &books,
                   const QString &amountBox = QStringLiteral("Text105"))
{
    const DatedAmounts amounts = datedAmounts(books, rows, QStringLiteral("data"));
    prepareDatedAmounts(books, rows, QStringLiteral("data"), {QStringLiteral("bruto")}, amounts);
    report.setDataSource(std::move(rows));
    report.control(reportFooter, QStringLiteral("Function105")).format = totalFormat(amounts.totals);
    if (amounts.mixed) {
        report.setFontSize(detail, amountBox, amountWithUnitFontSize);
        report.addFooterNote(conversionNote(books.changeover, amounts.totals));
    }
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

Checked<Report> ReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKola"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    const Checked<RowSet> rows = runQuery(db, courseColumns + QStringLiteral("WHERE kola = ? AND ") + periodAndOrder,
                                          {conditions.SeekKola, conditions.period.from, conditions.period.to});
    if (!rows)
        return rows.message();
    landscapeSetUp(report);
    setCourseRows(report, rows.value(), books);
    fillCommon(report, firm, QStringLiteral("за курсовете на кола №") + conditions.SeekKola, conditions.period,
               truckFields());
    report.setSuggestedFileName(
        fileName(QStringLiteral("Справка за курсовете на кола №") + conditions.SeekKola, conditions.period));
    return report;
}

Checked<Report> ReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptAll"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    QString sql = courseColumns + QStringLiteral("WHERE ");
    QList<QVariant> values;
    QString subject = QStringLiteral("за курсовете на фирма ");
    if (conditions.SeekChoice == QLatin1String("Yes")) {
        sql += QStringLiteral("Fakt = ? AND ");
        values.append(true);
        subject = QStringLiteral("за фактурираните курсове на фирма ");
    } else if (conditions.SeekChoice == QLatin1String("No")) {
        sql += QStringLiteral("Fakt = ? AND ");
        values.append(false);
        subject = QStringLiteral("за нефактурираните курсове на фирма ");
    }
    values << conditions.period.from << conditions.period.to;
    const Checked<RowSet> rows = runQuery(db, sql + periodAndOrder, values);
    if (!rows)
        return rows.message();
    report.setWindowCaption(windowCaption(QStringLiteral("Справка за курсове")));
    landscapeSetUp(report);
    setCourseRows(report, rows.value(), books);
    fillCommon(report, firm, subject + firm.UserName, conditions.period, firmFields());
    report.setSuggestedFileName(fileName(QStringLiteral("Обща справка ") + subject + firm.UserName, conditions.period));
    return report;
}

Checked<Report> ReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKlient"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    const Checked<RowSet> rows =
        runQuery(db, courseColumns + QStringLiteral("WHERE Klient = ? AND ") + periodAndOrder,
                 {conditions.SeekKlient, conditions.period.from, conditions.period.to});
    if (!rows)
        return rows.message();
    report.setWindowCaption(windowCaption(QStringLiteral("Справка за курсовете")));
    setCourseRows(report, rows.value(), books, QStringLiteral("Text104"));
    report.setCaption(header, QStringLiteral("Label3"),
                      QStringLiteral("Извършени от ") + firm.UserName + QStringLiteral(" курсове"));
    fillCommon(report, firm, QStringLiteral("по заявка на ") + conditions.SeekKlient, conditions.period,
               {{QStringLiteral("Text100"), QStringLiteral("Data")},
                {QStringLiteral("Text101"), QStringLiteral("kola")},
                {QStringLiteral("Text102"), QStringLiteral("ton")},
                {QStringLiteral("Text103"), QStringLiteral("km")},
                {QStringLiteral("Text104"), QStringLiteral("bruto")},
                {QStringLiteral("Text107"), QStringLiteral("Marsh")},
                {QStringLiteral("Text108"), QStringLiteral("Tovar")}});
    report.setSuggestedFileName(
        fileName(QStringLiteral("Справка за курсовете по заявка на ") + conditions.SeekKlient, conditions.period));
    return report;
}

Checked<Report> ReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                           const BooksDay &books)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptDriver"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    const Checked<RowSet> rows = runQuery(db, courseColumns + QStringLiteral("WHERE kod = ? AND ") + periodAndOrder,
                                          {conditions.SeekDriverKod, conditions.period.from, conditions.period.to});
    if (!rows)
        return rows.message();
    report.setWindowCaption(windowCaption(QStringLiteral("Справка за курсовете")));
    landscapeSetUp(report);
    setCourseRows(report, rows.value(), books);
    // Each date cell tells that course's own payment: white when paid, grey while unpaid.
    report.setBackColorByField(detail, QStringLiteral("Text100"), QStringLiteral("plat"), colorWhite, colorGrey);
    Fields fields = firmFields();
    fields.append({QStringLiteral("Text111"), QStringLiteral("plat")});
    fillCommon(report, firm, QStringLiteral("за курсовете извършени от ") + conditions.SeekDriverIme,
               conditions.period, fields);
    report.setSuggestedFileName(
        fileName(QStringLiteral("Справка за курсовете извършени от ") + conditions.SeekDriverIme, conditions.period));
    return report;
}

}
