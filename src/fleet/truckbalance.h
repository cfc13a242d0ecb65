#pragma once

#include "core/currency.h"
#include "core/dates.h"

#include <QDate>
#include <QList>
#include <QString>
#include <QtGlobal>

// The rules of the truck balance: per truck of the fleet, what came in against what went out in a
// period, as money (income from courses against warehouse issues) or as fuel (the waybills' norm
// fuel against the fuel loaded).
namespace zarek {

enum class BalansMode {
    Profit,  // income and cost in leva, to the cent
    Fuel,    // norm fuel and fuel loaded in litres, to a tenth ("PreRazh")
};

// One truck's figures in whole units of the mode: cents, or tenths of a litre.
struct TruckBalance {
    QString kola;
    qint64 prihod = 0;  // income, or norm fuel
    qint64 razhod = 0;  // cost, or fuel loaded
    qint64 ostatak() const { return prihod - razhod; }
    bool operator==(const TruckBalance &) const = default;
};

// A sum of the database in whole units of the mode, halves to even.
qint64 balansUnits(BalansMode mode, double value);
// A figure as the grid and the paper show it: "1234,56лв." (the amount unit) or "123,4 л".
QString balansFigure(BalansMode mode, qint64 units, Currency currency = Currency::Leva);
// The currency of a money balance: euro once the period reaches the changeover, leva before.
Currency balansCurrency(const Period &period, const Changeover &changeover);
// The period holds days of both currencies: its leva are converted into the euro figures.
bool balansConverted(const Period &period, const Changeover &changeover);
// The total of the remainders, in whole units.
qint64 balansTotal(const QList<TruckBalance> &balances);
// A date of the balance's title lines: day, month and year as plain numbers, "5.3.2006".
QString balansDate(const QDate &date);

}
