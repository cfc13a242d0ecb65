#include "scratchsheets.h"

#include "core/formats.h"
#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/scratchdatabase.h"
#include "reports/reportrows.h"

#include <QVariant>

namespace zarek {

namespace {

// Makes the table anew, fills it and reads it back by Red.
Checked<RowSet> fill(ScratchDatabase &scratch, const QString &table, const QStringList &columns,
                     const QList<QList<QVariant>> &rows)
{
    return scratch.layOut(table, columns, rows, QStringLiteral("SELECT * FROM %1 ORDER BY Red").arg(table));
}

}

namespace {

const QStringList &tempZaplataColumns()
{
    static const QStringList columns = {QStringLiteral("Red"),   QStringLiteral("Data"),     QStringLiteral("KolaID"),
                                        QStringLiteral("Ton"),   QStringLiteral("KM"),       QStringLiteral("Suma"),
                                        QStringLiteral("Marsh"), QStringLiteral("VidTovar"), QStringLiteral("Zaplata"),
                                        QStringLiteral("Nadnik")};
    return columns;
}

QList<QVariant> tempZaplataRow(const PaySheetLine &line)
{
    // Zaplata and Nadnik carry one and the same rounded pay.
    const double zaplata = line.zaplata().toDouble();
    return {line.red, line.data, line.kola, line.ton, line.km, line.bruto, line.marsh, line.tovar, zaplata, zaplata};
}

}

Checked<RowSet> writeTempZaplata(ScratchDatabase &scratch, const PaySheet &sheet)
{
    QList<QList<QVariant>> rows;
    rows.reserve(sheet.lines.size());
    for (const PaySheetLine &line : sheet.lines)
        rows.append(tempZaplataRow(line));
    return fill(scratch, QStringLiteral("TempZaplata"), tempZaplataColumns(), rows);
}

RowSet paySheetRows(const PaySheet &sheet)
{
    RowSet rows(tempZaplataColumns());
    rows.reserveRows(static_cast<int>(sheet.lines.size()));
    for (const PaySheetLine &line : sheet.lines)
        rows.appendRow(tempZaplataRow(line));
    return rows;
}

std::shared_ptr<RowStream> paySheetRowStream(const PaySheet &sheet)
{
    return madeRows(tempZaplataColumns(), static_cast<int>(sheet.lines.size()),
                    [lines = sheet.lines](int row) { return tempZaplataRow(lines.at(row)); });
}

Checked<ScratchStatement> writeTempPlaten(ScratchDatabase &scratch, const RowSet &courses, const QList<int> &rows,
                                          int tarifaDecimals, const StatementCurrency &currency)
{
    const int data = courses.column(QStringLiteral("Data"));
    const int marsh = courses.column(QStringLiteral("Marsh"));
    const int tovar = courses.column(QStringLiteral("Tovar"));
    const int kola = courses.column(QStringLiteral("kola"));
    const int km = courses.column(QStringLiteral("KM"));
    const int ton = courses.column(QStringLiteral("Ton"));
    const int tarifa = courses.column(QStringLiteral("Tarifa"));
    const int neto = courses.column(QStringLiteral("neto"));
    bool anyEuro = false;
    for (const int row : rows)
        anyEuro = anyEuro || rowCurrency(currency.books, courses, row, data) == Currency::Euro;
    const Currency totals = totalsCurrency(anyEuro, currency.handedOut);
    bool mixed = false;
    for (const int row : rows)
        mixed = mixed || rowCurrency(currency.books, courses, row, data) != totals;
    QList<QList<QVariant>> values;
    values.reserve(rows.size());
    CurrencyTotal total(totals, currency.wages ? CurrencyTotal::Rule::Wages : CurrencyTotal::Rule::EachAmount);
    int red = 0;
    for (const int row : rows) {
        const Money amount = Money::fromAmount(courses.value(row, neto).toDouble());
        const Currency of = rowCurrency(currency.books, courses, row, data);
        total.add(amount, of);
        const double rate = courses.value(row, tarifa).toDouble();
        values.append({++red, dateOfValue(courses.value(row, data)), courses.value(row, marsh).toString(),
                       courses.value(row, tovar).toString(), courses.value(row, kola).toString(),
                       formatKm(courses.value(row, km).toDouble()), formatTonnes(courses.value(row, ton).toDouble()),
                       tarifaDecimals == 3 ? formatRate(rate) : formatFixed(rate, tarifaDecimals),
                       rowAmountText(amount, of, mixed)});
    }
    const Checked<RowSet> written =
        fill(scratch, QStringLiteral("TempPlaten"),
             {QStringLiteral("Red"), QStringLiteral("Data"), QStringLiteral("Marsh"), QStringLiteral("VidTovar"),
              QStringLiteral("KolaID"), QStringLiteral("KM"), QStringLiteral("Ton"), QStringLiteral("Tarifa"),
              QStringLiteral("Suma")},
             values);
    if (!written)
        return written.message();
    return ScratchStatement{written.value(), total.total(), totals, mixed, currency.books.changeover};
}

}
