#pragma once

#include <QtGlobal>
#include <compare>
#include <limits>

// An amount in whole cents (stotinki), so sums and shares are exact.
namespace zarek {

// An amount is held only within +-maxCents (ten trillion leva): every such amount is also exact as
// a double, and a sum of thousands of them cannot overflow. A value beyond that, or not a number,
// gives an invalid Money (as QDate does for an impossible date) instead of a wrapped figure, and
// every sum, difference or share of an invalid Money is invalid too. Stores refuse to write one.
class Money {
public:
    static constexpr qint64 maxCents = 1'000'000'000'000'000;  // 10^15 cents

    constexpr Money() = default;
    static constexpr Money fromCents(qint64 cents) { return inRange(cents) ? Money(cents) : invalid(); }
    // Rounds half to even on the decimal value shown, to the cent; invalid beyond the range.
    static Money fromAmount(double amount);
    static constexpr Money invalid() { return Money(invalidCents); }

    constexpr bool isValid() const { return m_cents != invalidCents; }
    constexpr qint64 cents() const { return m_cents; }
    // NaN for an invalid Money, so it can never pass for a figure.
    double toDouble() const
    {
        return isValid() ? static_cast<double>(m_cents) / 100.0 : std::numeric_limits<double>::quiet_NaN();
    }

    // numerator / denominator of this amount, rounded half to even to the cent.
    Money share(qint64 numerator, qint64 denominator) const;

    constexpr Money operator+(Money other) const
    {
        return isValid() && other.isValid() ? fromCents(m_cents + other.m_cents) : invalid();
    }
    constexpr Money operator-(Money other) const
    {
        return isValid() && other.isValid() ? fromCents(m_cents - other.m_cents) : invalid();
    }
    constexpr Money &operator+=(Money other) { return *this = *this + other; }
    constexpr auto operator<=>(const Money &) const = default;

private:
    static constexpr qint64 invalidCents = std::numeric_limits<qint64>::min();
    static constexpr bool inRange(qint64 cents) { return cents >= -maxCents && cents <= maxCents; }
    constexpr explicit Money(qint64 cents) : m_cents(cents) {}
    qint64 m_cents = 0;
};

}
