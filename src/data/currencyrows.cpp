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

void prepareDatedAmounts(const BooksDay &books, RowSet &rows, const QString &dateColumn, const QStringList &amountColumns,
                         const DatedAmounts &amounts)
{
    const int date = rows.column(dateColumn);
    for (const QString &name : amountColumns) {
        const int source = rows.column(name);
        if (source < 0)
            continue;
        const int total = rows.addColumn(name + QStringLiteral("Total"));
        for (int row = 0; row < rows.rowCount(); ++row) {
            const QVariant value = rows.value(row, source);
            if (value.isNull())
                continue;
            const Currency currency = rowCurrency(books, rows, row, date);
            const Money amount = Money::fromAmount(value.toDouble());
            rows.setValue(row, total, convertAmount(amount, currency, amounts.totals).toDouble());
            if (amounts.mixed)
                rows.setValue(row, source, rowAmountText(amount, currency, true));
        }
    }
}

QString totalFormat(Currency totals)
{
    return totals == Currency::Euro ? QStringLiteral("0,00\" ") + amountUnit(Currency::Euro) + QLatin1Char('"')
                                    : QStringLiteral("0,00");
}

}
