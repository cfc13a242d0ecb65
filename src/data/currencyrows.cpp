#include "currencyrows.h"

#include "core/formats.h"
#include "core/valueformat.h"

namespace zarek {

SqlPart byRowCurrency(const QString &dateColumn, const Changeover &changeover, const QString &inEuro,
                      const QString &inLeva)
{
    const QVariant euroFrom = changeover.isSet() ? changeover.date : QDate(9999, 12, 31);
    return {QStringLiteral("CASE WHEN %1 >= ? THEN %2 ELSE %3 END").arg(dateColumn, inEuro, inLeva), {euroFrom}};
}

Currency rowCurrency(const BooksDay &books, const RowSet &rows, int row, int dateColumn)
{
    return books.currencyOn(dateColumn >= 0 ? dateOfValue(rows.value(row, dateColumn)) : QDate());
}

DatedAmounts datedAmounts(const BooksDay &books, const RowSet &rows, const QString &dateColumn, std::optional<Currency> handedOut,
                          std::optional<Currency> fixed)
{
    const int date = rows.column(dateColumn);
    bool anyEuro = false;
    bool anyLeva = false;
    for (int row = 0; row < rows.rowCount(); ++row) {
        if (rowCurrency(books, rows, row, date) == Currency::Euro)
            anyEuro = true;
        else
            anyLeva = true;
    }
    DatedAmounts amounts;
    amounts.totals = fixed ? *fixed : totalsCurrency(anyEuro, handedOut);
    amounts.mixed = amounts.totals == Currency::Euro ? anyLeva : anyEuro;
    return amounts;
}

QString rowAmountText(Money amount, Currency currency, bool withUnit)
{
    return withUnit ? formatAmount(amount) + QLatin1Char(' ') + amountUnit(currency) : formatAmount(amount);
}

DatedAmounts datedAmountsOverPeriod(const BooksDay &books, const QDate &from, const QDate &to,
                                    const std::function<bool(const QString &comparison, const QDate &day)> &rowsExist,
                                    std::optional<Currency> handedOut)
{
    const Changeover &changeover = books.changeover;
    bool anyEuro = false;
    bool anyLeva = false;
    if (changeover.isSet() && to >= changeover.date) {
        anyEuro = rowsExist(QStringLiteral(">="), changeover.date);
        anyLeva = from < changeover.date && rowsExist(QStringLiteral("<"), changeover.date);
    }
    DatedAmounts amounts;
    amounts.totals = totalsCurrency(anyEuro, handedOut);
    amounts.mixed = amounts.totals == Currency::Euro ? anyLeva : anyEuro;
    return amounts;
}

QStringList datedAmountColumns(const QStringList &columns, const QStringList &amountColumns)
{
    const RowSet shape(columns);
    QStringList added;
    for (const QString &name : amountColumns) {
        if (shape.column(name) >= 0)
            added.append(name + QStringLiteral("Total"));
    }
    return added;
}

std::function<void(QList<QVariant> &cells)> datedAmountsChange(const BooksDay &books, const QStringList &columns,
                                                               const QString &dateColumn,
                                                               const QStringList &amountColumns,
                                                               const DatedAmounts &amounts)
{
    const RowSet shape(columns);
    const int date = shape.column(dateColumn);
    QList<QPair<int, int>> sourceAndTotal;
    int total = static_cast<int>(columns.size());
    for (const QString &name : amountColumns) {
        const int source = shape.column(name);
        if (source >= 0)
            sourceAndTotal.append({source, total++});
    }
    return [books, date, sourceAndTotal, amounts](QList<QVariant> &cells) {
        bool known = false;
        Currency currency = Currency::Leva;
        for (const auto &[source, total] : sourceAndTotal) {
            const QVariant value = cells.at(source);
            if (value.isNull())
                continue;
            if (!known) {
                currency = books.currencyOn(date >= 0 ? dateOfValue(cells.at(date)) : QDate());
                known = true;
            }
            const Money amount = Money::fromAmount(value.toDouble());
            cells[total] = convertAmount(amount, currency, amounts.totals).toDouble();
            if (amounts.mixed)
                cells[source] = rowAmountText(amount, currency, true);
        }
    };
}

void prepareDatedAmounts(const BooksDay &books, RowSet &rows, const QString &dateColumn, const QStringList &amountColumns,
                         const DatedAmounts &amounts)
{
    const QStringList added = datedAmountColumns(rows.columns(), amountColumns);
    const auto change = datedAmountsChange(books, rows.columns(), dateColumn, amountColumns, amounts);
    // Row by row into a set with the added columns, not a copy of the whole set per column.
    RowSet prepared(rows.columns() + added);
    prepared.reserveRows(rows.rowCount());
    QList<QVariant> cells;
    const int width = rows.columnCount();
    for (int row = 0; row < rows.rowCount(); ++row) {
        cells.resize(width + added.size());
        for (int c = 0; c < width; ++c)
            cells[c] = rows.value(row, c);
        for (qsizetype c = width; c < cells.size(); ++c)
            cells[c] = QVariant();
        change(cells);
        prepared.appendRow(cells);
    }
    rows = std::move(prepared);
}

QString totalFormat(Currency totals)
{
    return totals == Currency::Euro ? QStringLiteral("0,00\" ") + amountUnit(Currency::Euro) + QLatin1Char('"')
                                    : QStringLiteral("0,00");
}

}
