#include "balansstore.h"

#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");
const QString writeTitle = QStringLiteral("ГРЕШКА при запис!");

UserMessage failure(const QString &title, const QSqlQuery &query)
{
    return sqlErrorMessage(title, query.lastError());
}

struct Sums {
    double first = 0;
    double second = 0;
};

// Sums per truck number of one grouped query: the number first, then one or two sums.
std::optional<UserMessage> sumsByTruck(QSqlDatabase db, const QString &sql, const Period &period, int sumColumns,
                                       QHash<QString, Sums> &out, bool intoSecond)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(sql);
    query.addBindValue(period.from);
    query.addBindValue(period.to);
    if (!query.exec())
        return failure(readTitle, query);
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
    if (query.lastError().isValid())
        return failure(readTitle, query);
    return std::nullopt;
}

}

BalansStore::BalansStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<QStringList> BalansStore::trucks() const
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT DISTINCT kola FROM Config WHERE kola IS NOT NULL")))
        return failure(readTitle, query);
    QStringList trucks;
    while (query.next())
        trucks.append(query.value(0).toString());
    // One order on both engines: by the number's characters.
    std::sort(trucks.begin(), trucks.end(), [](const QString &a, const QString &b) { return a.compare(b) < 0; });
    return trucks;
}

Checked<QList<TruckBalance>> BalansStore::balances(BalansMode mode, const Period &period) const
{
    const Checked<QStringList> fleet = trucks();
    if (!fleet)
        return fleet.message();
    QHash<QString, Sums> sums;
    std::optional<UserMessage> refusal;
    if (mode == BalansMode::Profit) {
        refusal = sumsByTruck(m_db, QStringLiteral("SELECT kola, SUM(bruto) FROM tabl WHERE data BETWEEN ? AND ? "
                                                   "GROUP BY kola"),
                              period, 1, sums, false);
        if (!refusal)
            refusal = sumsByTruck(m_db, QStringLiteral("SELECT DocVid, SUM(Suma) FROM Sklad WHERE VidKol = 'R' "
                                                       "AND Data BETWEEN ? AND ? GROUP BY DocVid"),
                                  period, 1, sums, true);
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
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT ListID, Data, NameDriver, SumRazhN, ZarN FROM RowdList "
                                 "WHERE Kola = ? AND Data BETWEEN ? AND ? ORDER BY Data, ListID"));
    query.addBindValue(kola);
    query.addBindValue(period.from);
    query.addBindValue(period.to);
    if (!query.exec())
        return failure(readTitle, query);
    return RowSet::fromQuery(query, readTitle);
}

std::optional<UserMessage> BalansStore::writeScratch(QSqlDatabase scratch, BalansMode mode,
                                                     const QList<TruckBalance> &balances)
{
    Transaction transaction(scratch);
    QSqlQuery insert(scratch);
    if (!insert.prepare(QStringLiteral("INSERT INTO TempBalans (Red, Kola, Prihod, Razhod, Ostatak) "
                                       "VALUES (?, ?, ?, ?, ?)")))
        return failure(writeTitle, insert);
    int red = 0;
    for (const TruckBalance &balance : balances) {
        insert.bindValue(0, ++red);
        insert.bindValue(1, balance.kola);
        insert.bindValue(2, balansFigure(mode, balance.prihod));
        insert.bindValue(3, balansFigure(mode, balance.razhod));
        insert.bindValue(4, balansFigure(mode, balance.ostatak()));
        if (!insert.exec())
            return failure(writeTitle, insert);
    }
    if (!transaction.commit())
        return sqlErrorMessage(writeTitle, scratch.lastError());
    return std::nullopt;
}

Checked<RowSet> BalansStore::readScratch(QSqlDatabase scratch)
{
    QSqlQuery query(scratch);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT Red, Kola, Prihod, Razhod, Ostatak FROM TempBalans ORDER BY Red")))
        return failure(readTitle, query);
    return RowSet::fromQuery(query, readTitle);
}

}
