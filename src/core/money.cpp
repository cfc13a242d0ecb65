#include "money.h"

#include "core/rounding.h"

#include <cmath>

namespace zarek {

Money Money::fromAmount(double amount)
{
    return Money(std::llround(roundHalfEven(amount, 2) * 100.0));
}

Money Money::share(qint64 numerator, qint64 denominator) const
{
    const qint64 product = m_cents * numerator;
    qint64 quotient = product / denominator;
    const qint64 remainder = product % denominator;
    // Twice the remainder against the divisor tells below, at or above the half.
    const qint64 twice = 2 * (remainder < 0 ? -remainder : remainder);
    const qint64 divisor = denominator < 0 ? -denominator : denominator;
    const int sign = (product < 0) != (denominator < 0) ? -1 : 1;
    if (twice > divisor || (twice == divisor && quotient % 2 != 0))
        quotient += sign;
    return Money(quotient);
}

}
