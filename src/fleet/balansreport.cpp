#include "balansreport.h"

#include "core/formats.h"

namespace zarek {

Checked<Report> ReportBalans(BalansMode mode, const RowSet &rows, const Period &period, qint64 sumTotal,
                             const FirmProfile &firm, const Changeover &changeover)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptBalans"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(rows);
    const bool profit = mode == BalansMode::Profit;
    // The town and address were written here once and overwritten by the subject: the subject prints.
    report.setFirm(firm);
    report.setValue(QStringLiteral("title"), profit ? QStringLiteral("Справка баланс на колите")
                                                    : QStringLiteral("Справка разход на нафта"));
    report.setValue(QStringLiteral("subject"), profit ? QStringLiteral("за печалбата от колите")
                                                      : QStringLiteral("за разхода на нафта на колите"));
    report.setValue(QStringLiteral("balansFrom"), balansDate(period.from));
    report.setValue(QStringLiteral("balansTo"), balansDate(period.to));
    if (!profit) {
        report.setValue(QStringLiteral("firstHeading"), QStringLiteral("Изч.разх."));
        report.setValue(QStringLiteral("secondHeading"), QStringLiteral("Заредено"));
        report.setValue(QStringLiteral("thirdHeading"), QStringLiteral("Разлика"));
    }
    const Currency currency = balansCurrency(period, changeover);
    report.setValue(QStringLiteral("unit"), profit ? QStringLiteral("[") + amountUnit(currency) + QStringLiteral("]")
                                                   : QStringLiteral("[ л. ]"));
    // Litres have no total: the footer keeps its bare design text.
    if (profit) {
        report.setValue(QStringLiteral("total"),
                        QStringLiteral("Всичко: ") + balansFigure(BalansMode::Profit, sumTotal, currency));
        if (balansConverted(period, changeover))
            report.addFooterNote(conversionNote(changeover, currency));
    }
    return report;
}

Checked<Report> ReportKolaN(const QString &kola, const RowSet &waybills, const Period &period, const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptKolaN"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(waybills);
    report.setFirm(firm);
    report.setPeriod(period);
    report.setValue(QStringLiteral("kola"), kola);
    return report;
}

}
