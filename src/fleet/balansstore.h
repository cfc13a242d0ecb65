#pragma once

#include "core/dates.h"
#include "core/usermessage.h"
#include "data/rowset.h"
#include "fleet/truckbalance.h"

#include <QSqlDatabase>

namespace zarek {

// The queries of the truck balance. Every truck of Config is listed once, in the order of its
// number; only what is booked to one of those numbers counts. Both ends of the period count.
class BalansStore {
public:
    explicit BalansStore(QSqlDatabase db);

    // The fleet: each truck number of Config once, sorted.
    Checked<QStringList> trucks() const;

    // Profit: income = Σ bruto of the truck's courses, cost = Σ Suma of the warehouse issues charged to
    // it (VidKol 'R', DocVid = the truck), in the currency of balansCurrency: a period that reaches
    // the changeover has its leva sums converted to euro, each truck's once. Fuel: norm = Σ SumRazhN and loaded = Σ ZarN of its waybills,
    // each waybill counted whole in the period of its date. A truck without movement gets zeros.
    Checked<QList<TruckBalance>> balances(BalansMode mode, const Period &period, const Changeover &changeover) const;

    // A truck's waybills of the period by date and number: ListID, Data, NameDriver, SumRazhN, ZarN.
    Checked<RowSet> waybills(const QString &kola, const Period &period) const;

    // The rows of TempBalans (rebuilt before): Red from 1, Kola, and the three figures as text with
    // their unit. Then read back by Red.
    static std::optional<UserMessage> writeScratch(QSqlDatabase scratch, BalansMode mode,
                                                   const QList<TruckBalance> &balances,
                                                   Currency currency = Currency::Leva);
    static Checked<RowSet> readScratch(QSqlDatabase scratch);

private:
    QSqlDatabase m_db;
};

}
