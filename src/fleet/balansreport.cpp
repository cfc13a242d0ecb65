#include "balansreport.h"

#include "core/formats.h"
#include "core/version.h"
#include "courses/coursereports.h"

namespace zarek {

namespace {

const QString header = QStringLiteral("ReportHeader");
const QString pageHeader = QStringLiteral("PageHeader");
const QString detail = QStringLiteral("Detail");
const QString pageFooter = QStringLiteral("PageFooter");
const QString reportFooter = QStringLiteral("ReportFooter");

QString caption(const QString &text)
{
    return QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - ") + text;
}

QString contactLine(const FirmProfile &firm)
{
    return QStringLiteral("тел:") + firm.UserTel + QStringLiteral(", факс:") + firm.UserGSM
           + QStringLiteral(", E-mail:") + firm.UserEmail + QStringLiteral(", URL:http//") + firm.UserURL;
}

}

Checked<Report> ReportBalans(BalansMode mode, const RowSet &rows, const Period &period, qint64 sumTotal,
                             const FirmProfile &firm, const Changeover &changeover)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptBalans"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(rows);
    const bool profit = mode == BalansMode::Profit;
    report.setWindowCaption(caption(profit ? QStringLiteral("Справка баланс на колите")
                                           : QStringLiteral("Справка разход на нафта")));
    report.setCaption(header, QStringLiteral("Label4"), firm.UserName);
    // The town and address were written here once and overwritten by the subject: the subject prints.
    report.setCaption(header, QStringLiteral("Label2"), profit ? QStringLiteral("за печалбата от колите")
                                                               : QStringLiteral("за разхода на нафта на колите"));
    report.setCaption(header, QStringLiteral("Label9"), contactLine(firm));
    report.setCaption(header, QStringLiteral("Label3"), QStringLiteral("за периода") + QStringLiteral(" от ")
                                                            + balansDate(period.from) + QStringLiteral(" до ")
                                                            + balansDate(period.to));
    if (!profit) {
        report.setCaption(pageHeader, QStringLiteral("Label102"), QStringLiteral("Изч.разх."));
        report.setCaption(pageHeader, QStringLiteral("Label103"), QStringLiteral("Заредено"));
        report.setCaption(pageHeader, QStringLiteral("Label104"), QStringLiteral("Разлика"));
    }
    const Currency currency = balansCurrency(period, changeover);
    const QString unit = profit ? QStringLiteral("[") + amountUnit(currency) + QStringLiteral("]") : QStringLiteral("[ л. ]");
    for (const QString &label : {QStringLiteral("Label202"), QStringLiteral("Label203"), QStringLiteral("Label204")})
        report.setCaption(pageHeader, label, unit);
    const QList<QPair<QString, QString>> fields = {
        {QStringLiteral("Text100"), QStringLiteral("Red")},    {QStringLiteral("Text101"), QStringLiteral("kola")},
        {QStringLiteral("Text102"), QStringLiteral("Prihod")}, {QStringLiteral("Text103"), QStringLiteral("Razhod")},
        {QStringLiteral("Text104"), QStringLiteral("Ostatak")}};
    for (const auto &[box, field] : fields)
        report.setDataField(detail, box, field);
    report.setCaption(pageFooter, QStringLiteral("Label6"), QStringLiteral("Зарек ") + version::majorMinor());
    // Litres have no total: the footer keeps its bare design text.
    if (profit) {
        report.setCaption(reportFooter, QStringLiteral("Label8"),
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
    report.setWindowCaption(caption(QStringLiteral("Справка за изразходваното гориво от кола ") + kola));
    report.setCaption(header, QStringLiteral("Label4"), firm.UserName);
    report.setCaption(header, QStringLiteral("Label5"), firm.UserCity + QStringLiteral(", ") + firm.UserAdres);
    report.setCaption(header, QStringLiteral("Label2"), QStringLiteral("за изразходваното гориво от кола ") + kola);
    report.setCaption(header, QStringLiteral("Label3"), periodLine(period));
    const QList<QPair<QString, QString>> fields = {
        {QStringLiteral("Text100"), QStringLiteral("ListID")},   {QStringLiteral("Text101"), QStringLiteral("Data")},
        {QStringLiteral("Text102"), QStringLiteral("NameDriver")}, {QStringLiteral("Text103"), QStringLiteral("SumRazhN")},
        {QStringLiteral("Text104"), QStringLiteral("ZarN")}};
    for (const auto &[box, field] : fields)
        report.setDataField(detail, box, field);
    report.setCaption(pageFooter, QStringLiteral("Label6"), QStringLiteral("Зарек ") + version::majorMinor());
    for (const auto &[function, field] : {QPair<QString, QString>{QStringLiteral("Function103"), QStringLiteral("SumRazhN")},
                                          QPair<QString, QString>{QStringLiteral("Function104"), QStringLiteral("ZarN")}}) {
        report.setDataField(reportFooter, function, field);
        report.setFunctionType(reportFooter, function, 0);
    }
    return report;
}

}
