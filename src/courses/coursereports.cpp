#include "coursereports.h"

#include "core/dates.h"
#include "data/currencyrows.h"
#include "data/query.h"
#include "reports/reportrows.h"

#include <QVariant>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");
const QString courseColumns = QStringLiteral("data, kola, ton, km, Tarifa, bruto, Marsh, Klient, Tovar, plat, Fakt");
const QString inPeriod = QStringLiteral("data BETWEEN ? AND ? ");

// The search dialogs always give a period; one without both ends is refused, not guessed.
std::optional<UserMessage> checkPeriod(const Period &period)
{
    if (period.from.isValid() && period.to.isValid())
        return std::nullopt;
    return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма избран период за търсене!"),
                                 QStringLiteral("Проверете си датите!"));
}

// A course report of its design over the courses of the condition (a WHERE clause ending in
// " AND ", then the period), read as the report is laid out: the firm, the subject and the period
// handed over, each course's money in the currency of its day. Rows of both currencies show each
// sum with its unit, and the total, in euro, says how it was made. A saved copy is offered under
// the file subject and the period.
Checked<StreamedReport> courseReport(const QString &design, const SearchConditions &conditions, QSqlDatabase db,
                                     const FirmProfile &firm, const BooksDay &books, const QString &condition,
                                     QList<QVariant> values, const QString &subject, const QString &fileSubject)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(design);
    if (!loaded)
        return loaded.message();
    const Period &dates = conditions.period;
    values << dates.from << dates.to;
    const QString where = QStringLiteral("WHERE ") + condition + inPeriod;
    // Which currencies the courses are in, asked only where the period runs over the changeover.
    const auto rowsExist = [&](const QString &comparison, const QDate &day) {
        QVariantList bound = values;
        bound.append(day);
        Query query(db, QStringLiteral("SELECT 1 FROM tabl ") + where + QStringLiteral("AND data ") + comparison
                            + QStringLiteral(" ? LIMIT 1"));
        return !query.run(readTitle, bound) && query.next();
    };
    const DatedAmounts amounts = datedAmountsOverPeriod(books, dates.from, dates.to, rowsExist);
    const Checked<std::shared_ptr<RowStream>> rows =
        keyedRowStream(db, courseColumns, QStringLiteral("tabl ") + where, {QStringLiteral("data"), QStringLiteral("id")},
                       values, readTitle);
    if (!rows)
        return rows.message();
    const QStringList columns = rows.value()->columns();
    const QStringList amountColumns = {QStringLiteral("bruto")};
    StreamedReport streamed{loaded.value(),
                            changedRows(rows.value(), datedAmountColumns(columns, amountColumns),
                                        datedAmountsChange(books, columns, QStringLiteral("data"), amountColumns, amounts))};
    Report &report = streamed.report;
    report.setFirm(firm);
    report.setPeriod(dates);
    report.setValue(QStringLiteral("subject"), subject);
    report.setValue(QStringLiteral("totalFormat"), totalFormat(amounts.totals));
    report.setAmountsWithUnits(amounts.mixed);
    if (amounts.mixed)
        report.addFooterNote(conversionNote(books.changeover, amounts.totals));
    report.setSuggestedFileName(fileSubject + QStringLiteral(", ") + formatDate(dates.from) + QStringLiteral(" - ")
                                + formatDate(dates.to));
    return streamed;
}

}

// The page set-up of each course report is its design's: landscape for rptKola, rptAll and rptDriver.
Checked<StreamedReport> streamReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                         const BooksDay &books)
{
    return courseReport(QStringLiteral("rptKola"), conditions, db, firm, books, QStringLiteral("kola = ? AND "),
                        {conditions.SeekKola}, QStringLiteral("за курсовете на кола №") + conditions.SeekKola,
                        QStringLiteral("Справка за курсовете на кола №") + conditions.SeekKola);
}

Checked<StreamedReport> streamReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                        const BooksDay &books)
{
    QString where;
    QList<QVariant> values;
    QString subject = QStringLiteral("за курсовете на фирма ");
    if (conditions.SeekChoice == QLatin1String("Yes")) {
        where = QStringLiteral("Fakt = ? AND ");
        values.append(true);
        subject = QStringLiteral("за фактурираните курсове на фирма ");
    } else if (conditions.SeekChoice == QLatin1String("No")) {
        where = QStringLiteral("Fakt = ? AND ");
        values.append(false);
        subject = QStringLiteral("за нефактурираните курсове на фирма ");
    }
    return courseReport(QStringLiteral("rptAll"), conditions, db, firm, books, where, values, subject + firm.UserName,
                        QStringLiteral("Обща справка ") + subject + firm.UserName);
}

Checked<StreamedReport> streamReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                           const BooksDay &books)
{
    return courseReport(QStringLiteral("rptKlient"), conditions, db, firm, books, QStringLiteral("Klient = ? AND "),
                        {conditions.SeekKlient}, QStringLiteral("по заявка на ") + conditions.SeekKlient,
                        QStringLiteral("Справка за курсовете по заявка на ") + conditions.SeekKlient);
}

// Each date cell tells that course's own payment, white when paid and grey while unpaid: the design says so.
Checked<StreamedReport> streamReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm,
                                           const BooksDay &books)
{
    return courseReport(QStringLiteral("rptDriver"), conditions, db, firm, books, QStringLiteral("kod = ? AND "),
                        {conditions.SeekDriverKod},
                        QStringLiteral("за курсовете извършени от ") + conditions.SeekDriverIme,
                        QStringLiteral("Справка за курсовете извършени от ") + conditions.SeekDriverIme);
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
