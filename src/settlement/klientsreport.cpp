#include "klientsreport.h"

#include "core/formats.h"
#include "settlement/clientstatement.h"

namespace zarek {

using namespace settlement;  // the client statement's lines and tax

Checked<Report> ReportKlientS(const RowSet &printCopy, const StatementTotals &totals, const QString &klient,
                              const Period &period, const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKlientS"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(printCopy);
    report.setFirm(firm);
    report.setPeriod(period);
    report.setValue(QStringLiteral("klient"), klient);
    const StatementTax tax = statementTax(totals.gross);
    report.setValue(QStringLiteral("net"), amountText(tax.net, totals.currency));
    report.setValue(QStringLiteral("vat"), amountText(tax.vat, totals.currency));
    report.setValue(QStringLiteral("gross"), amountText(tax.gross, totals.currency));
    report.setValue(QStringLiteral("ton"), formatFixed(totals.ton, 0));
    report.setValue(QStringLiteral("km"), formatFixed(totals.km, 0));
    report.setAmountsWithUnits(totals.mixed);
    if (totals.mixed)
        report.addFooterNote(conversionNote(totals.changeover, totals.currency));
    return report;
}

}
