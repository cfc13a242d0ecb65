#include "paysheettotals.h"

#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/dialect.h"
#include "data/query.h"
#include "settlement/paymentstore.h"

#include <QHash>
#include <QVariant>
#include <cmath>
#include <map>

namespace zarek {

namespace {

const QString readErrorTitle = QStringLiteral("ГРЕШКА при четене!");

// std::llround(column × factor) in SQL, as the sheet rounds a course's figures (a null is 0). The
// product is the same double as in C++. SQLite's round() adds a half and cuts toward zero, which is
// std::llround for every number but the largest double below a half: a magnitude below a half is
// 0. PostgreSQL rounds a double half to even: there the whole part toward zero, and one more away
// from zero when at least a half is left (the difference of a number and its whole part is exact).
QString llroundSql(const QString &column, int factor, Dialect dialect)
{
    const QString x = QStringLiteral("(COALESCE(%1, 0) * CAST(%2 AS DOUBLE PRECISION))").arg(column).arg(factor);
    if (dialect == Dialect::SQLite)
        return QStringLiteral("CAST(CASE WHEN abs(%1) < 0.5 THEN 0 ELSE round(%1) END AS INTEGER)").arg(x);
    const QString whole = QStringLiteral("trunc(%1)").arg(x);
    return QStringLiteral("CAST(%1 + CASE WHEN %2 - %1 >= 0.5 THEN 1 WHEN %1 - %2 >= 0.5 THEN -1 ELSE 0 END AS BIGINT)")
        .arg(whole, x);
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

// A driver's courses of one truck as typed and one load.
struct Group {
    QVariant kola;
    double ton = 0;
    int count = 0;
    int euroCount = 0;
    qint64 levaCents = 0;
    qint64 euroCents = 0;
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

    // Each driver's unpaid courses by truck as typed and by load (the order of the partial index
    // tabl_unpaid, read whole, nothing sorted): the cents of each currency added up.
    const Dialect dialect = dialectOf(db);
    const QString cents = llroundSql(QStringLiteral("bruto"), 100, dialect);
    const SqlPart euroCount = byRowCurrency(QStringLiteral("data"), books.changeover, QStringLiteral("1"), QStringLiteral("0"));
    const SqlPart levaCents = byRowCurrency(QStringLiteral("data"), books.changeover, QStringLiteral("0"), cents);
    const SqlPart euroCents = byRowCurrency(QStringLiteral("data"), books.changeover, cents, QStringLiteral("0"));
    QVariantList values = euroCount.values + levaCents.values + euroCents.values;
    values << upTo;
    Query query(db, QStringLiteral("SELECT kod, kola, ton, COUNT(*), SUM(%1), CAST(SUM(%2) AS BIGINT), "
                                   "CAST(SUM(%3) AS BIGINT), MIN(data) FROM tabl "
                                   "WHERE plat = FALSE AND data <= ? GROUP BY kod, kola, ton")
                        .arg(euroCount.sql, levaCents.sql, euroCents.sql));
    if (auto failure = query.run(readErrorTitle, values))
        return *failure;
    std::map<QString, QList<Group>> drivers;
    while (query.next()) {
        Group group;
        group.kola = query.value(1);
        group.ton = query.value(2).toDouble();
        group.count = query.value(3).toInt();
        group.euroCount = query.value(4).toInt();
        group.levaCents = query.value(5).toLongLong();
        group.euroCents = query.value(6).toLongLong();
        group.oldest = dateOfValue(query.value(7));
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
        QVariantList unpriced;  // trucks without a percent, as typed
        for (const Group &group : groups) {
            sheet.lines += group.count;
            anyEuro = anyEuro || group.euroCount > 0;
            if (!sheet.from.isValid() || (group.oldest.isValid() && group.oldest < sheet.from))
                sheet.from = group.oldest;
            if (payTruckFor(trucks.value(), group.kola.toString()).percent == 0.0 && !unpriced.contains(group.kola))
                unpriced.append(group.kola);
        }
        sheet.currency = totalsCurrency(anyEuro, payday);
        if (!names.contains(kod)) {
            sheet.refusal = driverMissingMessage();
        } else if (!unpriced.isEmpty()) {
            // The sheet stops at its first course of such a truck, and names the truck as typed.
            QVariantList first = {kod, upTo};
            QStringList typed;
            bool blank = false;
            for (const QVariant &kola : std::as_const(unpriced)) {
                if (kola.isNull()) {
                    blank = true;
                } else {
                    typed << QStringLiteral("?");
                    first << kola;
                }
            }
            QString which = typed.isEmpty() ? QStringLiteral("kola IS NULL")
                                            : QStringLiteral("kola IN (%1)").arg(typed.join(QStringLiteral(", ")));
            if (blank && !typed.isEmpty())
                which = QStringLiteral("(%1 OR kola IS NULL)").arg(which);
            const Checked<QVariant> kola = scalar(db, readErrorTitle,
                                                  QStringLiteral("SELECT kola FROM tabl WHERE kod = ? AND plat = FALSE "
                                                                 "AND data <= ? AND %1 ORDER BY data, id LIMIT 1")
                                                      .arg(which),
                                                  first);
            if (!kola)
                return kola.message();
            sheet.refusal = noPercentMessage(kola.value().toString());
        } else {
            for (const Group &group : groups) {
                const PayTruck truck = payTruckFor(trucks.value(), group.kola.toString());
                // A line's pay is cents × percent parts × what the overload leaves: the same for
                // every line of the group but its cents.
                const qint64 factor = std::llround(truck.percent * 10000.0)
                                      * (100 - 20 * static_cast<qint64>(overloadTonnes(group.ton, truck.ratedTon)));
                for (const auto &[cents, currency] : {std::pair{group.levaCents, Currency::Leva},
                                                      std::pair{group.euroCents, Currency::Euro}}) {
                    (currency == sheet.currency ? sheet.total : sheet.otherTotal)
                        += exactPay(static_cast<__int128>(cents) * factor);
                }
            }
        }
        totals.append(sheet);
    }
    return totals;
}

}
