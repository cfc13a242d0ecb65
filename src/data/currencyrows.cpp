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

namespace {

// The change of one row: each amount's copy in the totals' currency, and in a mixed set the amount
// as its text with its unit.
struct DatedRowChange {
    BooksDay books;
    int date = -1;
    QList<QPair<int, int>> sourceAndTotal;
    DatedAmounts amounts;

    void apply(QVariant *cells) const
    {
        bool known = false;
        Currency currency = Currency::Leva;
        for (const auto &[source, total] : sourceAndTotal) {
            const QVariant &value = cells[source];
            if (value.isNull())
                continue;
            if (!known) {
                currency = books.currencyOn(date >= 0 ? dateOfValue(cells[date]) : QDate());
                known = true;
            }
            const Money amount = Money::fromAmount(value.toDouble());
            cells[total] = convertAmount(amount, currency, amounts.totals).toDouble();
            if (amounts.mixed)
                cells[source] = rowAmountText(amount, currency, true);
        }
    }
};

DatedRowChange datedRowChange(const BooksDay &books, const QStringList &columns, const QString &dateColumn,
                              const QStringList &amountColumns, const DatedAmounts &amounts)
{
    const RowSet shape(columns);
    DatedRowChange change{books, shape.column(dateColumn), {}, amounts};
    int total = static_cast<int>(columns.size());
    for (const QString &name : amountColumns) {
        const int source = shape.column(name);
        if (source >= 0)
            change.sourceAndTotal.append({source, total++});
    }
    return change;
}

}

std::function<void(QList<QVariant> &cells)> datedAmountsChange(const BooksDay &books, const QStringList &columns,
                                                               const QString &dateColumn,
                                                               const QStringList &amountColumns,
                                                               const DatedAmounts &amounts)
{
    return [change = datedRowChange(books, columns, dateColumn, amountColumns, amounts)](QList<QVariant> &cells) {
        change.apply(cells.data());
    };
}

void prepareDatedAmounts(const BooksDay &books, RowSet &rows, const QString &dateColumn, const QStringList &amountColumns,
                         const DatedAmounts &amounts)
{
    const DatedRowChange change = datedRowChange(books, rows.columns(), dateColumn, amountColumns, amounts);
    // The columns added in place, each row changed where it lies: no copy of the set.
    rows.addColumns(datedAmountColumns(rows.columns(), amountColumns));
    for (int row = 0; row < rows.rowCount(); ++row)
        change.apply(rows.rowCells(row));
}

QString totalFormat(Currency totals)
{
    return totals == Currency::Euro ? QStringLiteral("0,00\" ") + amountUnit(Currency::Euro) + QLatin1Char('"')
                                    : QStringLiteral("0,00");
}

}
