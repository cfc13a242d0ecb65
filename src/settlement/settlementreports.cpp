#include "settlementreports.h"

#include "core/dates.h"
#include "core/formats.h"
#include "data/currencyrows.h"

namespace zarek {

namespace {

QString amountWithUnit(Money amount, Currency currency)
{
    return formatAmount(amount) + QLatin1Char(' ') + amountUnit(currency);
}

// The values every settlement paper shares: the firm, the driver, the period and the total.
void fillFrame(Report &report, const FirmProfile &firm, const QString &name, const Period &period, Money total,
               Currency currency)
{
    report.setFirm(firm);
    report.setPeriod(period);
    report.setValue(QStringLiteral("name"), name);
    report.setValue(QStringLiteral("total"), amountWithUnit(total, currency));
}

// What the receipt under a pay paper says besides the firm, the driver and the total.
void fillReceipt(Report &report, const DriverPapers &papers, QDate today)
{
    report.setValue(QStringLiteral("today"), formatDate(today));
    report.setValue(QStringLiteral("egn"), papers.egn);
    report.setValue(QStringLiteral("lKarta"), papers.lKarta);
}

}

Checked<StreamedReport> ReportZaplata(const PaySheet &sheet, std::shared_ptr<RowStream> tempZaplata,
                                      const FirmProfile &firm, QDate today)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptZaplata"));
    if (!loaded)
        return loaded.message();
    StreamedReport streamed{loaded.value(), nullptr};
    Report &report = streamed.report;
    const bool mixed = sheet.mixed();
    const QStringList amounts = {QStringLiteral("Suma"), QStringLiteral("Zaplata")};
    const QStringList columns = tempZaplata->columns();
    streamed.rows = changedRows(std::move(tempZaplata), datedAmountColumns(columns, amounts),
                                datedAmountsChange({sheet.changeover, today}, columns, QStringLiteral("Data"), amounts,
                                                   {sheet.currency, mixed}));
    fillFrame(report, firm, sheet.name, sheet.period, sheet.printedTotal(), sheet.currency);
    fillReceipt(report, {sheet.egn, sheet.lKarta}, today);
    report.setAmountsWithUnits(mixed);
    if (mixed)
        report.addFooterNote(conversionNote(sheet.changeover, sheet.currency));
    return streamed;
}

Checked<Report> ReportZaplata(const PaySheet &sheet, RowSet tempZaplata, const FirmProfile &firm, QDate today)
{
    return withAllRows(ReportZaplata(sheet, rowStreamOf(std::move(tempZaplata)), firm, today));
}

Checked<Report> ReportPlaten(const QString &name, const DriverPapers &papers, const Period &period,
                             const ScratchStatement &statement, const FirmProfile &firm, QDate today)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptPlaten"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(statement.rows);
    fillFrame(report, firm, name, period, statement.total, statement.currency);
    fillReceipt(report, papers, today);
    report.setAmountsWithUnits(statement.mixed);
    if (statement.mixed)
        report.addFooterNote(conversionNote(statement.changeover, statement.currency));
    return report;
}

Checked<Report> ReportNePlaten(bool paid, const QString &name, const Period &period, const ScratchStatement &statement,
                               const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptNePlaten"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(statement.rows);
    fillFrame(report, firm, name, period, statement.total, statement.currency);
    report.setValue(QStringLiteral("paidOrNot"), paid ? QStringLiteral("платени") : QStringLiteral("неплатени"));
    report.setAmountsWithUnits(statement.mixed);
    if (statement.mixed)
        report.addFooterNote(conversionNote(statement.changeover, statement.currency));
    return report;
}

}
