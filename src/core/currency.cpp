#include "currency.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/rounding.h"

#include <cmath>

namespace zarek {

namespace {

enum class Rounding { HalfUp, Up };

// numerator / denominator (a positive denominator) to a whole number: half away from zero, or up
// (towards plus infinity) whenever anything is left.
qint64 divide(__int128 numerator, __int128 denominator, Rounding rounding)
{
    const bool negative = numerator < 0;
    const __int128 magnitude = negative ? -numerator : numerator;
    __int128 quotient = magnitude / denominator;
    const __int128 remainder = magnitude % denominator;
    const bool awayFromZero = rounding == Rounding::HalfUp ? 2 * remainder >= denominator : remainder > 0 && !negative;
    if (awayFromZero)
        ++quotient;
    return static_cast<qint64>(negative ? -quotient : quotient);
}

}

Currency Changeover::currencyOn(const QDate &day, const QDate &today) const
{
    if (!isSet())
        return Currency::Leva;
    const QDate when = day.isValid() ? day : today;
    return when >= date ? Currency::Euro : Currency::Leva;
}

QDate euroAdoptionDate()
{
    return QDate(2026, 1, 1);
}

Money levaToEuro(Money leva)
{
    if (!leva.isValid())
        return leva;
    return Money::fromCents(divide(static_cast<__int128>(leva.cents()) * euroRateScale, euroRateScaled, Rounding::HalfUp));
}

Money euroToLeva(Money euro)
{
    if (!euro.isValid())
        return euro;
    return Money::fromCents(divide(static_cast<__int128>(euro.cents()) * euroRateScaled, euroRateScale, Rounding::HalfUp));
}

Money convertAmount(Money amount, Currency from, Currency to)
{
    if (from == to)
        return amount;
    return to == Currency::Euro ? levaToEuro(amount) : euroToLeva(amount);
}

Money wagesToEuro(Money leva)
{
    if (!leva.isValid())
        return leva;
    return Money::fromCents(divide(static_cast<__int128>(leva.cents()) * euroRateScale, euroRateScaled, Rounding::Up));
}

double convertRate(double rate, Currency from, Currency to)
{
    if (from == to)
        return rate;
    const double factor = static_cast<double>(euroRateScaled) / euroRateScale;
    return to == Currency::Euro ? roundHalfUp(rate / factor, euroRateDecimals)
                                : roundHalfUp(rate * factor, levaRateDecimals);
}

double convertPrice(double price, Currency from, Currency to)
{
    if (from == to)
        return price;
    const double factor = static_cast<double>(euroRateScaled) / euroRateScale;
    return roundHalfUp(to == Currency::Euro ? price / factor : price * factor, 2);
}

void CurrencyTotal::add(Money amount, Currency of)
{
    if (of != m_currency)
        m_converted = true;
    m_total += convertAmount(amount, of, m_currency);
    (of == m_currency ? m_own : m_other) += amount;
}

void CurrencyTotal::remove(Money amount, Currency of)
{
    m_total = m_total - convertAmount(amount, of, m_currency);
    (of == m_currency ? m_own : m_other) = (of == m_currency ? m_own : m_other) - amount;
}

Money CurrencyTotal::total() const
{
    if (m_rule == Rule::Wages && m_currency == Currency::Euro)
        return m_own + wagesToEuro(m_other);
    return m_total;
}

Currency totalsCurrency(bool anyEuro, std::optional<Currency> handedOut)
{
    return anyEuro || handedOut == Currency::Euro ? Currency::Euro : Currency::Leva;
}

QString conversionNote(const Changeover &changeover, Currency totals)
{
    const QString rate = formatFixed(changeover.rate(), 5) + QLatin1Char(' ') + amountUnit(Currency::Leva)
                         + QStringLiteral(" за 1 ") + amountUnit(Currency::Euro);
    // A leva paper (an invoice issued before the changeover) takes euro amounts back into leva.
    const QString which = totals == Currency::Leva ? QStringLiteral("от") : QStringLiteral("преди");
    return QStringLiteral("Сумите %1 %2 са преизчислени по курс %3.").arg(which, formatDate(changeover.date), rate);
}

}
