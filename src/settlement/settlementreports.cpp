#include "settlementreports.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/version.h"
#include "courses/coursereports.h"
#include "data/currencyrows.h"

namespace zarek {

namespace {

const QString header = QStringLiteral("ReportHeader");
const QString detail = QStringLiteral("Detail");
const QString pageFooter = QStringLiteral("PageFooter");
const QString reportFooter = QStringLiteral("ReportFooter");

QString windowCaption(const QString &text)
{
    return QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - ") + text;
}

QString amountWithUnit(Money amount, Currency currency)
{
    return formatAmount(amount) + QLatin1Char(' ') + amountUnit(currency);
}

// The header, the detail fields and the page footer every settlement paper shares.
void fillFrame(Report &report, const FirmProfile &firm, const QString &name, const Period &period,
               const QStringList &fields)
{
    fillFirmBlock(report, firm);
    report.setCaption(header, QStringLiteral("Label4"), QStringLiteral("за курсовете на ") + name);
    report.setCaption(header, QStringLiteral("Label5"), periodLine(period));
    for (int i = 0; i < fields.size(); ++i)
        report.setDataField(detail, QStringLiteral("Text%1").arg(100 + i), fields.at(i));
    report.setCaption(pageFooter, QStringLiteral("Label6"), QStringLiteral("Зарек ") + version::majorMinor());
}

void fillReceipt(Report &report, const Receipt &receipt)
{
    const QStringList lines = receiptLines(receipt);
    for (int i = 0; i < lines.size(); ++i)
        report.setCaption(reportFooter, QStringLiteral("Label%1").arg(500 + i), lines.at(i));
}

const QStringList statementFields = {QStringLiteral("Red"),    QStringLiteral("Data"), QStringLiteral("KolaID"),
                                     QStringLiteral("Marsh"),  QStringLiteral("VidTovar"), QStringLiteral("Ton"),
                                     QStringLiteral("KM"),     QStringLiteral("Tarifa"), QStringLiteral("Suma")};

}

QStringList receiptLines(const Receipt &receipt)
{
    const QString today = formatDate(receipt.today);
    return {QStringLiteral("Разписка №_____ / ") + today,
            QStringLiteral("от ") + receipt.name + QStringLiteral(" с ЕГН ") + receipt.papers.egn
                + QStringLiteral(" и л.к.№ ") + receipt.papers.lKarta,
            QString(9, QLatin1Char(' ')) + QStringLiteral("Днес ") + today + QStringLiteral(" получих сумата от ")
                + amountWithUnit(receipt.total, receipt.currency) + QStringLiteral(" за извършените от мен курсове за фирма ")
                + receipt.firmName + QStringLiteral(" съгласно горното извлечение."),
            QString(76, QLatin1Char(' ')) + QStringLiteral("Подпис: ") + QString(32, QLatin1Char('.'))};
}

Checked<Report> ReportZaplata(const PaySheet &sheet, const RowSet &tempZaplata, const FirmProfile &firm, QDate today)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptZaplata"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setWindowCaption(windowCaption(QStringLiteral("Заплата")));
    RowSet rows = tempZaplata;
    const bool mixed = sheet.mixed();
    prepareDatedAmounts({sheet.changeover, today}, rows, QStringLiteral("Data"), {QStringLiteral("Suma"), QStringLiteral("Zaplata")},
                        {sheet.currency, mixed});
    report.setDataSource(rows);
    fillFrame(report, firm, sheet.name, sheet.period,
              {QStringLiteral("Red"), QStringLiteral("Data"), QStringLiteral("KolaID"), QStringLiteral("Marsh"),
               QStringLiteral("VidTovar"), QStringLiteral("Ton"), QStringLiteral("KM"), QStringLiteral("Suma"),
               QStringLiteral("Zaplata")});
    report.setCaption(reportFooter, QStringLiteral("Label8"),
                      QStringLiteral("Всичко заработка: ") + amountWithUnit(sheet.printedTotal(), sheet.currency));
    fillReceipt(report, {sheet.name, {sheet.egn, sheet.lKarta}, sheet.printedTotal(), firm.UserName, today,
                         sheet.currency});
    if (mixed) {
        report.setFontSize(detail, QStringLiteral("Text107"), amountWithUnitFontSize);
        report.setFontSize(detail, QStringLiteral("Text108"), amountWithUnitFontSize);
        report.addFooterNote(conversionNote(sheet.changeover, sheet.currency), QStringLiteral("Label8"));
    }
    return report;
}

Checked<Report> ReportPlaten(const QString &name, const DriverPapers &papers, const Period &period,
                             const ScratchStatement &statement, const FirmProfile &firm, QDate today)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptPlaten"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setWindowCaption(windowCaption(QStringLiteral("Справка платени курсове")));
    report.setDataSource(statement.rows);
    fillFrame(report, firm, name, period, statementFields);
    report.setCaption(header, QStringLiteral("Label2"), firm.UserAdres);
    report.setCaption(reportFooter, QStringLiteral("Label8"),
                      QStringLiteral("Всичко заработка: ") + amountWithUnit(statement.total, statement.currency));
    fillReceipt(report, {name, papers, statement.total, firm.UserName, today, statement.currency});
    if (statement.mixed) {
        report.setFontSize(detail, QStringLiteral("Text108"), amountWithUnitFontSize);
        report.addFooterNote(conversionNote(statement.changeover, statement.currency), QStringLiteral("Label8"));
    }
    return report;
}

Checked<Report> ReportNePlaten(bool paid, const QString &name, const Period &period, const ScratchStatement &statement,
                               const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptNePlaten"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setWindowCaption(windowCaption(paid ? QStringLiteral("Справка платени курсове")
                                               : QStringLiteral("Справка неплатени курсове")));
    report.setDataSource(statement.rows);
    fillFrame(report, firm, name, period, statementFields);
    report.setCaption(reportFooter, QStringLiteral("Label8"),
                      QStringLiteral("Всичко: ") + amountWithUnit(statement.total, statement.currency));
    if (statement.mixed) {
        report.setFontSize(detail, QStringLiteral("Text108"), amountWithUnitFontSize);
        report.addFooterNote(conversionNote(statement.changeover, statement.currency));
    }
    return report;
}

}
