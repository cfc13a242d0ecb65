#include "money.h"

#include "core/rounding.h"

#include <cmath>

namespace zarek {

Money Money::fromAmount(double amount)
{
    // Checked before any conversion: llround of a value beyond 64 bits is undefined.
    if (!std::isfinite(amount) || std::fabs(amount) > static_cast<double>(maxCents) / 100.0)
        return invalid();
    return fromCents(std::llround(roundHalfEven(amount, 2) * 100.0));
}

Money Money::share(qint64 numerator, qint64 denominator) const
{
    if (!isValid() || denominator == 0)
        return invalid();
    // In 128 bits the product cannot overflow: |cents| <= 10^15 and any 64-bit numerator.
    const __int128 product = static_cast<__int128>(m_cents) * numerator;
    __int128 quotient = product / denominator;
    const __int128 remainder = product % denominator;
    // Twice the remainder against the divisor tells below, at or above the half.
    const __int128 twice = 2 * (remainder < 0 ? -remainder : remainder);
    const __int128 divisor = denominator < 0 ? -static_cast<__int128>(denominator) : denominator;
    const int sign = (product < 0) != (denominator < 0) ? -1 : 1;
    if (twice > divisor || (twice == divisor && quotient % 2 != 0))
        quotient += sign;
    if (quotient < -maxCents || quotient > maxCents)
        return invalid();
    return fromCents(static_cast<qint64>(quotient));
}

}
