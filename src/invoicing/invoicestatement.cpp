#include "invoicestatement.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/query.h"
#include "data/scratchdatabase.h"

#include <QVariant>

namespace zarek::invoicing {

namespace {

const QString scratchError = QStringLiteral("ГРЕШКА при работа с временната база!");

}

QList<StatementLine> statementLines(const RowSet &rows, const BooksDay &books)
{
    QList<StatementLine> lines;
    const int fakt = rows.column(QStringLiteral("Fakt"));
    if (fakt < 0)
        return lines;
    const int data = rows.column(QStringLiteral("Data"));
    const int marsh = rows.column(QStringLiteral("Marsh"));
    const int tovar = rows.column(QStringLiteral("Tovar"));
    const int kola = rows.column(QStringLiteral("kola"));
    const int km = rows.column(QStringLiteral("KM"));
    const int ton = rows.column(QStringLiteral("Ton"));
    const int tarifa = rows.column(QStringLiteral("Tarifa"));
    const int bruto = rows.column(QStringLiteral("bruto"));
    for (int row = 0; row < rows.rowCount(); ++row) {
        if (!rows.value(row, fakt).toBool())
            continue;
        StatementLine line;
        line.red = static_cast<int>(lines.size()) + 1;
        line.data = dateOfValue(rows.value(row, data));
        line.marsh = rows.value(row, marsh).toString();
        line.vidTovar = rows.value(row, tovar).toString();
        line.kolaId = rows.value(row, kola).toString();
        line.km = rows.value(row, km).toDouble();
        line.ton = rows.value(row, ton).toDouble();
        line.tarifa = rows.value(row, tarifa).toDouble();
        line.suma = Money::fromAmount(rows.value(row, bruto).toDouble());
        line.currency = books.currencyOn(line.data);
        lines.append(line);
    }
    return lines;
}

Money statementSum(const QList<StatementLine> &lines)
{
    Money sum;
    for (const StatementLine &line : lines)
        sum += line.suma;
    return sum;
}

StatementMoney statementMoney(const QList<StatementLine> &lines, std::optional<Currency> handedOut,
                              std::optional<Currency> fixed)
{
    bool anyEuro = false;
    for (const StatementLine &line : lines)
        anyEuro = anyEuro || line.currency == Currency::Euro;
    CurrencyTotal total(fixed ? *fixed : totalsCurrency(anyEuro, handedOut));
    for (const StatementLine &line : lines)
        total.add(line.suma, line.currency);
    return {total.currency(), total.total(), total.converted(), {}};
}

double vatOf(Money sum)
{
    return sum.toDouble() * vatRate;
}

QStringList statementTotals(Money sum, Currency currency)
{
    const double vat = vatOf(sum);
    const QString unit = QLatin1Char(' ') + amountUnit(currency);
    return {QStringLiteral("Сума без ДДС: ") + formatAmount(sum.toDouble()) + unit,
            QStringLiteral("         ДДС: ") + formatAmount(vat) + unit,
            QStringLiteral("      Всичко: ") + formatAmount(sum.toDouble() + vat) + unit};
}

std::optional<UserMessage> fillTempPlaten(QSqlDatabase scratch, const QList<StatementLine> &lines, bool unitsPerRow)
{
    // An earlier print's rows go first: the statement lists each course once.
    QList<QVariantList> rows;
    rows.reserve(lines.size());
    for (const StatementLine &line : lines)
        rows.append({line.red, isoDateText(line.data), line.marsh, line.vidTovar, line.kolaId,
                     formatKm(line.km), formatTonnes(line.ton), formatRate(line.tarifa),
                     rowAmountText(line.suma, line.currency, unitsPerRow)});
    return fillScratchTable(scratch, scratchError, QStringLiteral("TempPlaten"),
                            {QStringLiteral("Red"), QStringLiteral("Data"), QStringLiteral("Marsh"),
                             QStringLiteral("VidTovar"), QStringLiteral("KolaID"), QStringLiteral("KM"),
                             QStringLiteral("Ton"), QStringLiteral("Tarifa"), QStringLiteral("Suma")},
                            rows);
}

Checked<Report> ReportFaktura(const StatementHeading &heading, const StatementMoney &money, QSqlDatabase scratch,
                              const FirmProfile &firm)
{
    Checked<RowSet> rows = readRows(scratch, scratchError, QStringLiteral("SELECT * FROM TempPlaten ORDER BY Red"));
    if (!rows)
        return rows.message();
    return ReportFaktura(heading, money, rows.value(), firm);
}

RowSet statementRows(const QList<StatementLine> &lines, bool unitsPerRow)
{
    RowSet rows({QStringLiteral("Red"), QStringLiteral("Data"), QStringLiteral("Marsh"), QStringLiteral("VidTovar"),
                 QStringLiteral("KolaID"), QStringLiteral("KM"), QStringLiteral("Ton"), QStringLiteral("Tarifa"),
                 QStringLiteral("Suma")});
    rows.reserveRows(static_cast<int>(lines.size()));
    for (const StatementLine &line : lines)
        rows.appendRow({line.red, line.data, line.marsh, line.vidTovar, line.kolaId, formatKm(line.km),
                        formatTonnes(line.ton), formatRate(line.tarifa),
                        rowAmountText(line.suma, line.currency, unitsPerRow)});
    return rows;
}

Checked<Report> ReportFaktura(const StatementHeading &heading, const StatementMoney &money, const RowSet &rows,
                              const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptFaktura"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(rows);

    // Saved as "Фактура 0000000125 Клиент.pdf".
    report.setSuggestedFileName(QStringList{QStringLiteral("Фактура"), heading.number, heading.klient.trimmed()}.join(QLatin1Char(' ')).trimmed());
    report.setFirm(firm);
    if (heading.mode == FakturaMode::FaktNew) {
        report.setValue(QStringLiteral("subject"), QStringLiteral("за курсовете на ") + heading.klient
                                                       + QStringLiteral(" по издадена фактура №") + heading.number);
        report.setPeriod(heading.period);
    } else {
        // An invoice of any dates: no period line.
        report.setValue(QStringLiteral("subject"), QStringLiteral("за курсовете по издадена фактура №") + heading.number);
    }
    const QStringList totals = statementTotals(money.sum, money.currency);
    report.setValue(QStringLiteral("totalNet"), totals.at(0));
    report.setValue(QStringLiteral("totalVat"), totals.at(1));
    report.setValue(QStringLiteral("totalGross"), totals.at(2));
    report.setAmountsWithUnits(money.mixed);
    if (money.mixed)
        report.addFooterNote(conversionNote(money.changeover, money.currency));
    return report;
}

}
