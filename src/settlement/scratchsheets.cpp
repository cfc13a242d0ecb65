#include "scratchsheets.h"

#include "core/formats.h"
#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/scratchdatabase.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

const QString errorTitle = QStringLiteral("ГРЕШКА при работа с временната база!");

// "INSERT INTO table (columns) VALUES (?, …), (?, …)" for rows rows.
QString insertText(const QString &table, const QStringList &columns, int rows)
{
    const QString one = QLatin1Char('(') + QStringList(columns.size(), QStringLiteral("?")).join(QStringLiteral(", "))
                        + QLatin1Char(')');
    return QStringLiteral("INSERT INTO %1 (%2) VALUES ").arg(table, columns.join(QStringLiteral(", ")))
           + QStringList(rows, one).join(QStringLiteral(", "));
}

// Makes the table anew and fills it in one transaction, many rows to a statement, then reads it
// back by Red.
Checked<RowSet> fill(ScratchDatabase &scratch, const QString &table, const QStringList &columns,
                     const QList<QList<QVariant>> &rows)
{
    constexpr int rowsPerStatement = 64;
    if (auto refusal = scratch.RebuildScratchTable(table))
        return *refusal;
    QSqlDatabase db = scratch.db();
    {
        Transaction transaction(db);
        if (!transaction.isActive())
            return sqlErrorMessage(errorTitle, db.lastError());
        QSqlQuery query(db);
        int prepared = 0;
        for (qsizetype first = 0; first < rows.size(); first += rowsPerStatement) {
            const int count = static_cast<int>(std::min<qsizetype>(rowsPerStatement, rows.size() - first));
            if (count != prepared) {
                if (!query.prepare(insertText(table, columns, count)))
                    return sqlErrorMessage(errorTitle, query.lastError());
                prepared = count;
            }
            int position = 0;
            for (qsizetype row = first; row < first + count; ++row) {
                for (const QVariant &value : rows.at(row))
                    query.bindValue(position++, value);
            }
            if (!query.exec())
                return sqlErrorMessage(errorTitle, query.lastError());
        }
        if (!transaction.commit())
            return sqlErrorMessage(errorTitle, db.lastError());
    }
    QSqlQuery read(db);
    read.setForwardOnly(true);
    if (!read.exec(QStringLiteral("SELECT * FROM %1 ORDER BY Red").arg(table)))
        return sqlErrorMessage(errorTitle, read.lastError());
    return RowSet::fromQuery(read, errorTitle);
}

}

Checked<RowSet> writeTempZaplata(ScratchDatabase &scratch, const PaySheet &sheet)
{
    QList<QList<QVariant>> rows;
    rows.reserve(sheet.lines.size());
    for (const PaySheetLine &line : sheet.lines) {
        // Zaplata and Nadnik carry one and the same rounded pay.
        const double zaplata = line.zaplata().toDouble();
        rows.append({line.red, line.data, line.kola, line.ton, line.km, line.bruto, line.marsh, line.tovar, zaplata,
                     zaplata});
    }
    return fill(scratch, QStringLiteral("TempZaplata"),
                {QStringLiteral("Red"), QStringLiteral("Data"), QStringLiteral("KolaID"), QStringLiteral("Ton"),
                 QStringLiteral("KM"), QStringLiteral("Suma"), QStringLiteral("Marsh"), QStringLiteral("VidTovar"),
                 QStringLiteral("Zaplata"), QStringLiteral("Nadnik")},
                rows);
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
