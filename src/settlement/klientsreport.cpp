#include "klientsreport.h"

#include "core/formats.h"
#include "core/version.h"
#include "courses/coursereports.h"
#include "settlement/clientstatement.h"

namespace zarek {

using namespace settlement;  // the client statement's lines and tax

namespace {

const QString header = QStringLiteral("ReportHeader");
const QString detail = QStringLiteral("Detail");
const QString pageFooter = QStringLiteral("PageFooter");
const QString reportFooter = QStringLiteral("ReportFooter");

}

Checked<Report> ReportKlientS(const RowSet &printCopy, const StatementTotals &totals, const QString &klient,
                              const Period &period, const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKlientS"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(printCopy);
    report.setWindowCaption(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Справка за курсове"));
    fillFirmBlock(report, firm);
    report.setCaption(header, QStringLiteral("Label3"),
                      QStringLiteral("Извършени от ") + firm.UserName + QStringLiteral(" курсове"));
    report.setCaption(header, QStringLiteral("Label4"), QStringLiteral("по заявка на ") + klient);
    report.setCaption(header, QStringLiteral("Label5"), periodLine(period));
    const QList<QPair<QString, QString>> fields = {
        {QStringLiteral("Text100"), QStringLiteral("Data")},     {QStringLiteral("Text101"), QStringLiteral("Marsh")},
        {QStringLiteral("Text102"), QStringLiteral("VidTovar")}, {QStringLiteral("Text103"), QStringLiteral("kola")},
        {QStringLiteral("Text104"), QStringLiteral("ton")},      {QStringLiteral("Text105"), QStringLiteral("Tarifa")},
        {QStringLiteral("Text106"), QStringLiteral("KM")},       {QStringLiteral("Text107"), QStringLiteral("Suma")}};
    for (const auto &[box, field] : fields)
        report.setDataField(detail, box, field);
    report.setCaption(pageFooter, QStringLiteral("Label6"), QStringLiteral("Зарек ") + version::majorMinor());

    const StatementTax tax = statementTax(totals.gross);
    report.setCaption(reportFooter, QStringLiteral("Label1000"), amountText(tax.net, totals.currency));
    report.setCaption(reportFooter, QStringLiteral("Label1001"), amountText(tax.vat, totals.currency));
    report.setCaption(reportFooter, QStringLiteral("Label1002"), amountText(tax.gross, totals.currency));
    report.setCaption(reportFooter, QStringLiteral("Label1003"), formatFixed(totals.ton, 0) + QStringLiteral(" t"));
    report.setCaption(reportFooter, QStringLiteral("Label1004"), formatFixed(totals.km, 0) + QStringLiteral(" км"));
    if (totals.mixed) {
        report.setFontSize(detail, QStringLiteral("Text107"), amountWithUnitFontSize);
        report.addFooterNote(conversionNote(totals.changeover, totals.currency));
    }
    return report;
}

}
