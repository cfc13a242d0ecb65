#include "coursereports.h"

#include "core/dates.h"
#include "data/currencyrows.h"
#include "data/sqlerror.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

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

// A course report of its design over the courses of the query: the firm, the subject and the
// period handed over, each course's money in the currency of its day. Rows of both currencies
// show each sum with its unit, and the total, in euro, says how it was made.
Checked<Report> courseReport(const QString &design, const SearchConditions &conditions, QSqlDatabase db,
                             const FirmProfile &firm, const QString &where, QList<QVariant> values,
                             const QString &subject)
{
    if (auto refusal = checkPeriod(conditions.period))
        return *refusal;
    Checked<Report> loaded = Report::fromDesign(design);
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    values << conditions.period.from << conditions.period.to;
    Checked<RowSet> rows = runQuery(db, courseColumns + QStringLiteral("WHERE ") + where + periodAndOrder, values);
    if (!rows)
        return rows.message();
    RowSet courses = rows.value();
    const DatedAmounts amounts = datedAmounts(courses, QStringLiteral("data"));
    prepareDatedAmounts(courses, QStringLiteral("data"), {QStringLiteral("bruto")}, amounts);
    report.setDataSource(std::move(courses));
    report.setFirm(firm);
    report.setPeriod(conditions.period);
    report.setValue(QStringLiteral("subject"), subject);
    report.setValue(QStringLiteral("totalFormat"), totalFormat(amounts.totals));
    report.setAmountsWithUnits(amounts.mixed);
    if (amounts.mixed)
        report.addFooterNote(conversionNote(booksChangeover(), amounts.totals));
    return report;
}

// The report, when made, with the name a saved copy is offered under: what it is about and its period.
Checked<Report> named(const Checked<Report> &made, const QString &subject, const Period &period)
{
    if (!made)
        return made;
    Report report = made.value();
    report.setSuggestedFileName(subject + QStringLiteral(", ") + formatDate(period.from) + QStringLiteral(" - ")
                                + formatDate(period.to));
    return report;
}

}

// The page set-up of each course report is its design's: landscape for rptKola, rptAll and rptDriver.
Checked<Report> ReportKola(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm)
{
    Checked<Report> report = courseReport(QStringLiteral("rptKola"), conditions, db, firm, QStringLiteral("kola = ? AND "),
                                          {conditions.SeekKola},
                                          QStringLiteral("за курсовете на кола №") + conditions.SeekKola);
    return named(report, QStringLiteral("Справка за курсовете на кола №") + conditions.SeekKola, conditions.period);
}

Checked<Report> ReportAll(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm)
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
    Checked<Report> report =
        courseReport(QStringLiteral("rptAll"), conditions, db, firm, where, values, subject + firm.UserName);
    return named(report, QStringLiteral("Обща справка ") + subject + firm.UserName, conditions.period);
}

Checked<Report> ReportKlient(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm)
{
    Checked<Report> report =
        courseReport(QStringLiteral("rptKlient"), conditions, db, firm, QStringLiteral("Klient = ? AND "),
                     {conditions.SeekKlient}, QStringLiteral("по заявка на ") + conditions.SeekKlient);
    return named(report, QStringLiteral("Справка за курсовете по заявка на ") + conditions.SeekKlient,
                 conditions.period);
}

// Each date cell tells that course's own payment, white when paid and grey while unpaid: the design says so.
Checked<Report> ReportDriver(const SearchConditions &conditions, QSqlDatabase db, const FirmProfile &firm)
{
    Checked<Report> report =
        courseReport(QStringLiteral("rptDriver"), conditions, db, firm, QStringLiteral("kod = ? AND "),
                     {conditions.SeekDriverKod}, QStringLiteral("за курсовете извършени от ") + conditions.SeekDriverIme);
    return named(report, QStringLiteral("Справка за курсовете извършени от ") + conditions.SeekDriverIme,
                 conditions.period);
}

}
