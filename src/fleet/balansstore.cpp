#include "balansstore.h"

#include "data/currencyrows.h"
#include "data/query.h"
#include "data/scratchdatabase.h"
#include "data/transaction.h"

#include "core/currency.h"

#include <QHash>
#include <algorithm>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");
const QString writeTitle = QStringLiteral("ГРЕШКА при запис!");

struct Sums {
    double first = 0;
    double second = 0;
};

// Sums per truck number of one grouped query: the number first, then one or two sums. Values
// bound before the period's ends come first (the changeover day that splits a money sum).
std::optional<UserMessage> sumsByTruck(QSqlDatabase db, const QString &sql, const Period &period, int sumColumns,
                                       QHash<QString, Sums> &out, bool intoSecond, const QVariantList &first = {})
{
    Query query(db, sql);
    if (auto failure = query.run(readTitle, first + QVariantList{period.from, period.to}))
        return failure;
    while (query.next()) {
        Sums &sums = out[query.value(0).toString()];
        if (sumColumns == 2) {
            sums.first += query.value(1).toDouble();
            sums.second += query.value(2).toDouble();
        } else if (intoSecond) {
            sums.second += query.value(1).toDouble();
        } else {
            sums.first += query.value(1).toDouble();
        }
    }
    return query.readFailure(readTitle);
}

}

BalansStore::BalansStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<QStringList> BalansStore::trucks() const
{
    Query query(m_db, QStringLiteral("SELECT DISTINCT kola FROM Config WHERE kola IS NOT NULL"));
    if (auto failure = query.run(readTitle))
        return *failure;
    QStringList trucks;
    while (query.next())
        trucks.append(query.value(0).toString());
    // One order on both engines: by the number's characters.
    std::sort(trucks.begin(), trucks.end(), [](const QString &a, const QString &b) { return a.compare(b) < 0; });
    return trucks;
}

Checked<QList<TruckBalance>> BalansStore::balances(BalansMode mode, const Period &period,
                                                   const Changeover &changeover) const
{
    const Checked<QStringList> fleet = trucks();
    if (!fleet)
        return fleet.message();
    QHash<QString, Sums> sums;
    std::optional<UserMessage> refusal;
    if (mode == BalansMode::Profit) {
        // Money before the changeover is in leva: summed apart (first the euro, then the leva) and
        // converted a truck at a time.
        QHash<QString, Sums> income;
        QHash<QString, Sums> cost;
        const auto split = [&changeover](const QString &date, const QString &amount) {
            const SqlPart euro = byRowCurrency(date, changeover, amount, QStringLiteral("0"));
            const SqlPart leva = byRowCurrency(date, changeover, QStringLiteral("0"), amount);
            return SqlPart{QStringLiteral("SUM(%1), SUM(%2)").arg(euro.sql, leva.sql), euro.values + leva.values};
        };
        const SqlPart courses = split(QStringLiteral("data"), QStringLiteral("bruto"));
        refusal = sumsByTruck(m_db, QStringLiteral("SELECT kola, %1 FROM tabl WHERE data BETWEEN ? AND ? "
                                                   "GROUP BY kola").arg(courses.sql),
                              period, 2, income, false, courses.values);
        const SqlPart costs = split(QStringLiteral("Data"), QStringLiteral("Suma"));
        if (!refusal)
            refusal = sumsByTruck(m_db, QStringLiteral("SELECT DocVid, %1 FROM Sklad WHERE VidKol = 'R' "
                                                       "AND Data BETWEEN ? AND ? GROUP BY DocVid")
                                            .arg(costs.sql),
                                  period, 2, cost, false, costs.values);
        if (!refusal) {
            const Currency currency = balansCurrency(period, changeover);
            const auto figure = [currency](double euro, double levaPart) {
                const Money inLeva = Money::fromAmount(levaPart);
                return Money::fromAmount(euro) + convertAmount(inLeva, Currency::Leva, currency);
            };
            QList<TruckBalance> balances;
            for (const QString &kola : fleet.value()) {
                const Sums in = income.value(kola);
                const Sums out = cost.value(kola);
                balances.append({kola, figure(in.first, in.second).cents(), figure(out.first, out.second).cents()});
            }
            return balances;
        }
    } else {
        refusal = sumsByTruck(m_db, QStringLiteral("SELECT Kola, SUM(SumRazhN), SUM(ZarN) FROM RowdList "
                                                   "WHERE Data BETWEEN ? AND ? GROUP BY Kola"),
                              period, 2, sums, false);
    }
    if (refusal)
        return *refusal;
    QList<TruckBalance> balances;
    for (const QString &kola : fleet.value()) {
        const Sums found = sums.value(kola);
        balances.append({kola, balansUnits(mode, found.first), balansUnits(mode, found.second)});
    }
    return balances;
}

Checked<RowSet> BalansStore::waybills(const QString &kola, const Period &period) const
{
    return readRows(m_db, readTitle,
                    QStringLiteral("SELECT ListID, Data, NameDriver, SumRazhN, ZarN FROM RowdList "
                                   "WHERE Kola = ? AND Data BETWEEN ? AND ? ORDER BY Data, ListID"),
                    {kola, period.from, period.to});
}

std::optional<UserMessage> BalansStore::writeScratch(QSqlDatabase scratch, BalansMode mode,
                                                     const QList<TruckBalance> &balances, Currency currency)
{
    QList<QVariantList> rows;
    int red = 0;
    for (const TruckBalance &balance : balances)
        rows.append({++red, balance.kola, balansFigure(mode, balance.prihod, currency),
                     balansFigure(mode, balance.razhod, currency), balansFigure(mode, balance.ostatak(), currency)});
    return fillScratchTable(scratch, writeTitle, QStringLiteral("TempBalans"),
                            {QStringLiteral("Red"), QStringLiteral("Kola"), QStringLiteral("Prihod"),
                             QStringLiteral("Razhod"), QStringLiteral("Ostatak")},
                            rows);
}

Checked<RowSet> BalansStore::readScratch(QSqlDatabase scratch)
{
    return readRows(scratch, readTitle,
                    QStringLiteral("SELECT Red, Kola, Prihod, Razhod, Ostatak FROM TempBalans ORDER BY Red"));
}

}
