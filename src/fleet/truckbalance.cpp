#include "truckbalance.h"

#include "core/formats.h"
#include "core/rounding.h"

#include <cmath>

namespace zarek {

namespace {

int decimalsOf(BalansMode mode)
{
    return mode == BalansMode::Profit ? 2 : 1;
}

}

qint64 balansUnits(BalansMode mode, double value)
{
    const int decimals = decimalsOf(mode);
    return std::llround(roundHalfEven(value, decimals) * std::pow(10.0, decimals));
}

QString balansFigure(BalansMode mode, qint64 units, Currency currency)
{
    const int decimals = decimalsOf(mode);
    const double value = static_cast<double>(units) / std::pow(10.0, decimals);
    return mode == BalansMode::Profit ? amountText(value, currency) : formatFixed(value, decimals) + QStringLiteral(" л");
}

Currency balansCurrency(const Period &period, const Changeover &changeover)
{
    return changeover.isSet() && period.to >= changeover.date ? Currency::Euro : Currency::Leva;
}

bool balansConverted(const Period &period, const Changeover &changeover)
{
    return changeover.isSet() && period.from < changeover.date && period.to >= changeover.date;
}

qint64 balansTotal(const QList<TruckBalance> &balances)
{
    qint64 total = 0;
    for (const TruckBalance &balance : balances)
        total += balance.ostatak();
    return total;
}

QString balansDate(const QDate &date)
{
    return QStringLiteral("%1.%2.%3").arg(date.day()).arg(date.month()).arg(date.year());
}

}
