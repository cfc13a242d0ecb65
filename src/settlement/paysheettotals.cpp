#include "paysheettotals.h"

#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/dialect.h"
#include "data/query.h"
#include "settlement/paymentstore.h"

#include <QHash>
#include <QSet>
#include <QVariant>
#include <cmath>
#include <map>

namespace zarek {

namespace {

const QString readErrorTitle = QStringLiteral("ГРЕШКА при четене!");

// Every character QString::trimmed takes off, for SQL's TRIM(text, characters).
const QString &blankCharacters()
{
    static const QString blanks = [] {
        QString all;
        for (char16_t code = 1; code < 0xd800; ++code) {
            if (QChar(code).isSpace())
                all.append(QChar(code));
        }
        for (char32_t code = 0xe000; code <= 0xffff; ++code) {
            if (QChar(static_cast<char16_t>(code)).isSpace())
                all.append(QChar(static_cast<char16_t>(code)));
        }
        return all;
    }();
    return blanks;
}

// std::llround of a double in SQL, half away from zero: its whole part (toward zero) and one more
// when at least a half is left. The difference of a number and its whole part is exact.
QString llroundSql(const QString &x, Dialect dialect)
{
    const QString whole = dialect == Dialect::SQLite ? QStringLiteral("CAST(%1 AS INTEGER)").arg(x)
                                                      : QStringLiteral("trunc(%1)").arg(x);
    return QStringLiteral("CAST(%1 + CASE WHEN %2 - %1 >= 0.5 THEN 1 WHEN %1 - %2 >= 0.5 THEN -1 ELSE 0 END AS BIGINT)")
        .arg(whole, x);
}

// a × b as C++ computes it on doubles, a read as the sheet reads it (a null is 0).
QString productSql(const QString &column, int factor)
{
    return QStringLiteral("(COALESCE(%1, 0) * CAST(%2 AS DOUBLE PRECISION))").arg(column).arg(factor);
}

// cents + parts / ExactPay::partsPerCent, for parts beyond 64 bits.
ExactPay exactPay(__int128 parts)
{
    const __int128 per = ExactPay::partsPerCent;
    __int128 cents = parts / per;
    __int128 rest = parts % per;
    if (rest < 0) {
        rest += per;
        --cents;
    }
    return ExactPay::fromParts(static_cast<qint64>(cents), static_cast<qint64>(rest));
}

struct Group {
    QString truck;  // trimmed
    bool euro = false;
    int overload = 0;
    int count = 0;
    qint64 cents = 0;
    QDate oldest;
};

}

Money PaySheetTotal::printedTotal() const
{
    PaySheet sheet;
    sheet.currency = currency;
    sheet.total = total;
    sheet.otherTotal = otherTotal;
    return sheet.printedTotal();
}

Checked<QList<PaySheetTotal>> unpaidPaySheetTotals(QSqlDatabase db, const BooksDay &books, const QDate &upTo)
{
    PaymentStore store(db);
    const Checked<QList<PayTruck>> trucks = store.payTrucks();
    if (!trucks)
        return trucks.message();

    // The rated load of each truck in kilograms, by its number (of two rows the later one).
    QVariantList values;
    QString rated;
    QSet<QString> numbers;
    for (const PayTruck &row : trucks.value()) {
        if (numbers.contains(row.kola))
            continue;
        numbers.insert(row.kola);
        const PayTruck truck = payTruckFor(trucks.value(), row.kola);
        rated += QStringLiteral(" WHEN ? THEN CAST(? AS BIGINT)");
        values << truck.kola << static_cast<qlonglong>(std::llround(truck.ratedTon * 1000.0));
    }
    rated = rated.isEmpty() ? QStringLiteral("0") : QStringLiteral("CASE k") + rated + QStringLiteral(" ELSE 0 END");

    const Dialect dialect = dialectOf(db);
    const SqlPart euro = byRowCurrency(QStringLiteral("data"), books.changeover, QStringLiteral("1"), QStringLiteral("0"));
    values << blankCharacters();
    values.append(euro.values);
    values << false << upTo;
    // Innermost each course's trimmed truck, currency, kilograms and cents; then the truck's rated
    // kilograms; grouped by driver, truck, currency and whole tonnes over.
    const QString sql =
        QStringLiteral("SELECT kod, k, cur, CASE WHEN kg - rated > 0 THEN (kg - rated) / 1000 ELSE 0 END, COUNT(*), "
                       "CAST(SUM(cents) AS BIGINT), MIN(data) "
                       "FROM (SELECT kod, data, k, cur, kg, cents, %1 AS rated "
                       "FROM (SELECT kod, data, TRIM(COALESCE(kola, ''), ?) AS k, %2 AS cur, %3 AS kg, %4 AS cents "
                       "FROM tabl WHERE plat = ? AND data <= ?) c) r "
                       "GROUP BY 1, 2, 3, 4")
            .arg(rated, euro.sql, llroundSql(productSql(QStringLiteral("ton"), 1000), dialect),
                 llroundSql(productSql(QStringLiteral("bruto"), 100), dialect));
    Query query(db, sql);
    if (auto failure = query.run(readErrorTitle, values))
        return *failure;
    std::map<QString, QList<Group>> drivers;
    while (query.next()) {
        Group group;
        group.truck = query.value(1).toString();
        group.euro = query.value(2).toInt() == 1;
        group.overload = query.value(3).toInt();
        group.count = query.value(4).toInt();
        group.cents = query.value(5).toLongLong();
        group.oldest = dateOfValue(query.value(6));
        drivers[query.value(0).toString()].append(group);
    }
    if (auto failure = query.readFailure(readErrorTitle))
        return *failure;
    query.finish();

    // The drivers' names; a code without a row in shof has no sheet.
    QHash<QString, QString> names;
    Query shof(db, QStringLiteral("SELECT kod, MAX(ime) FROM shof WHERE kod IS NOT NULL GROUP BY kod"));
    if (auto failure = shof.run(readErrorTitle))
        return *failure;
    while (shof.next())
        names.insert(shof.value(0).toString(), shof.value(1).toString());
    if (auto failure = shof.readFailure(readErrorTitle))
        return *failure;
    shof.finish();

    const Currency payday = books.currencyOn(books.today);
    QList<PaySheetTotal> totals;
    for (const auto &[kod, groups] : drivers) {
        PaySheetTotal sheet;
        sheet.kod = kod;
        sheet.name = names.value(kod);
        bool anyEuro = false;
        QStringList unpriced;  // trucks without a percent
        for (const Group &group : groups) {
            sheet.lines += group.count;
            anyEuro = anyEuro || group.euro;
            if (!sheet.from.isValid() || (group.oldest.isValid() && group.oldest < sheet.from))
                sheet.from = group.oldest;
            if (payTruckFor(trucks.value(), group.truck).percent == 0.0 && !unpriced.contains(group.truck))
                unpriced.append(group.truck);
        }
        sheet.currency = totalsCurrency(anyEuro, payday);
        if (!names.contains(kod)) {
            sheet.refusal = driverMissingMessage();
        } else if (!unpriced.isEmpty()) {
            // The sheet stops at its first course of such a truck, and names the truck as typed.
            QVariantList first = {kod, false, upTo, blankCharacters()};
            for (const QString &truck : std::as_const(unpriced))
                first << truck;
            const Checked<QVariant> kola = scalar(
                db, readErrorTitle,
                QStringLiteral("SELECT kola FROM tabl WHERE kod = ? AND plat = ? AND data <= ? "
                               "AND TRIM(COALESCE(kola, ''), ?) IN (%1) ORDER BY data, id LIMIT 1")
                    .arg(placeholders(unpriced.size())),
                first);
            if (!kola)
                return kola.message();
            sheet.refusal = noPercentMessage(kola.value().toString());
        } else {
            for (const Group &group : groups) {
                const PayTruck truck = payTruckFor(trucks.value(), group.truck);
                const __int128 parts = static_cast<__int128>(group.cents) * std::llround(truck.percent * 10000.0)
                                       * (100 - 20 * static_cast<qint64>(group.overload));
                const Currency currency = group.euro ? Currency::Euro : Currency::Leva;
                (currency == sheet.currency ? sheet.total : sheet.otherTotal) += exactPay(parts);
            }
        }
        totals.append(sheet);
    }
    return totals;
}

}
