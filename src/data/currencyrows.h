#pragma once

#include "core/currency.h"
#include "data/rowset.h"

#include <QStringList>
#include <QVariantList>
#include <functional>
#include <optional>

// The amounts of rows dated by one of their columns, made ready to show together: each row's
// amounts are in the currency of its day, the totals in one currency.
namespace zarek {

struct DatedAmounts {
    Currency totals = Currency::Leva;
    // Some row is in the other currency: each amount shows its unit and a note tells how the
    // totals were made.
    bool mixed = false;
};

// A piece of SQL and the values of its placeholders, in their order.
struct SqlPart {
    QString sql;
    QVariantList values;
};

// A row's currency in SQL, the one test every query uses: "CASE WHEN <date> >= ? THEN <inEuro>
// ELSE <inLeva> END", the changeover's date bound (a day no row reaches while the firm is in leva).
// A row without a date counts as leva here.
SqlPart byRowCurrency(const QString &dateColumn, const Changeover &changeover, const QString &inEuro,
                      const QString &inLeva);

// The currency a row's date puts it in, in the books of that day.
Currency rowCurrency(const BooksDay &books, const RowSet &rows, int row, int dateColumn);

// Euro totals when any row is in euro or the rows are handed out (paid, invoiced) on a day in
// euro; a fixed currency (an invoice keeps the one it was issued in) overrides both.
DatedAmounts datedAmounts(const BooksDay &books, const RowSet &rows, const QString &dateColumn,
                          std::optional<Currency> handedOut = std::nullopt,
                          std::optional<Currency> fixed = std::nullopt);

// The same for rows of a query over a period, read later: the database is asked (rowsExist with
// ">=" or "<" and the changeover day) only where the period runs over the changeover.
DatedAmounts datedAmountsOverPeriod(const QDate &from, const QDate &to,
                                    const std::function<bool(const QString &comparison, const QDate &day)> &rowsExist,
                                    std::optional<Currency> handedOut = std::nullopt);

// The same for rows of a query over a period, read later: the database is asked (rowsExist with
// ">=" or "<" and the changeover day) only where the period runs over the changeover.
DatedAmounts datedAmountsOverPeriod(const BooksDay &books, const QDate &from, const QDate &to,
                                    const std::function<bool(const QString &comparison, const QDate &day)> &rowsExist,
                                    std::optional<Currency> handedOut = std::nullopt);

// An amount as a row of such a set shows it: the number, and its unit where the set is mixed.
QString rowAmountText(Money amount, Currency currency, bool withUnit);

// For a report over the rows: adds for each amount column a column "<name>Total" with the amount
// in the totals' currency (what the report's sums add up), and in a mixed set writes each amount
// as its text with its unit ("100,00 лв.").
void prepareDatedAmounts(const BooksDay &books, RowSet &rows, const QString &dateColumn, const QStringList &amountColumns,
                         const DatedAmounts &amounts);

// What prepareDatedAmounts does, for one row at a time as it is read: the rows have the columns
// given, and the added ones (datedAmountColumns) after them.
QStringList datedAmountColumns(const QStringList &columns, const QStringList &amountColumns);
std::function<void(QList<QVariant> &cells)> datedAmountsChange(const QStringList &columns, const QString &dateColumn,
                                                               const QStringList &amountColumns,
                                                               const DatedAmounts &amounts);

// What prepareDatedAmounts does, for one row at a time as it is read: the rows have the columns
// given, and the added ones (datedAmountColumns) after them.
QStringList datedAmountColumns(const QStringList &columns, const QStringList &amountColumns);
std::function<void(QList<QVariant> &cells)> datedAmountsChange(const BooksDay &books, const QStringList &columns,
                                                               const QString &dateColumn,
                                                               const QStringList &amountColumns,
                                                               const DatedAmounts &amounts);

// The number format of a total: "0,00", with " евро" behind it when the totals are in euro.
QString totalFormat(Currency totals);

}
