#include "fuelnorm.h"

#include "core/rounding.h"

#include <cmath>
#include <limits>

namespace zarek::fuelnorm {

Checked<int> normKilometres(std::optional<double> km, const QString &title)
{
    if (!km)
        return UserMessage::twoLines(title, QStringLiteral("Няма въведени километри на маршрута!"),
                                     QStringLiteral("Моля, въведете километрите в колона \"КМ\"."),
                                     UserMessage::Icon::Exclamation);
    const double whole = roundHalfEven(*km, 0);
    if (!std::isfinite(whole) || whole > std::numeric_limits<qint16>::max()
        || whole < std::numeric_limits<qint16>::min())
        return UserMessage::twoLines(title, QStringLiteral("Километрите на маршрута са твърде много!"),
                                     QStringLiteral("Моля, въведете до 32767 км в колона \"КМ\"."),
                                     UserMessage::Icon::Exclamation);
    return static_cast<int>(whole);
}

double surchargeFactor(double koef)
{
    return koef == 0 ? 1.0 : koef / 100.0 + 1.0;
}

namespace {

// A figure as whole thousandths (the decimals a norm, a tonnage or a surcharge are typed with).
__int128 thousandths(double value)
{
    return std::llround(roundHalfEven(value, 3) * 1000.0);
}

}

// Worked in whole numbers of 1e-11 litres, so halves are halves: 34 l/100 km over 250 km
// with 10 % is 93.5 exactly, and 4.85 goes down to 4.8 as the decimal rule says.
double normFuel(double norm, double ton, int km, double koef)
{
    const __int128 perHundredKm = thousandths(ton) * 4 + thousandths(norm) * 10;  // 1e-4 l
    const __int128 factor = 100000 + thousandths(koef);                           // 1e-5
    const __int128 litres = perHundredKm * km * factor;                            // 1e-4 / 100 * 1e-5 = 1e-11 l
    const __int128 tenth = 10000000000;                                            // 1e-11 l in 0.1 l
    const __int128 magnitude = litres < 0 ? -litres : litres;
    __int128 tenths = magnitude / tenth;
    const __int128 rest = magnitude % tenth;
    if (rest * 2 > tenth || (rest * 2 == tenth && tenths % 2 == 1))
        ++tenths;
    const double value = static_cast<double>(tenths) / 10.0;
    return litres < 0 ? -value : value;
}

double fuelSum(double sum)
{
    return roundHalfEven(sum, 1);
}

double kilometreSum(double sum)
{
    return roundHalfEven(sum, 0);
}

}
