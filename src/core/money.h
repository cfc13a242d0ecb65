#pragma once

#include <QtGlobal>
#include <compare>

// An amount in whole cents (stotinki), so sums and shares are exact.
namespace zarek {

class Money {
public:
    constexpr Money() = default;
    static constexpr Money fromCents(qint64 cents) { return Money(cents); }
    // Rounds half to even on the decimal value shown, to the cent.
    static Money fromAmount(double amount);

    constexpr qint64 cents() const { return m_cents; }
    double toDouble() const { return static_cast<double>(m_cents) / 100.0; }

    // numerator / denominator of this amount, rounded half to even to the cent.
    Money share(qint64 numerator, qint64 denominator) const;

    constexpr Money operator+(Money other) const { return Money(m_cents + other.m_cents); }
    constexpr Money operator-(Money other) const { return Money(m_cents - other.m_cents); }
    constexpr Money &operator+=(Money other) { m_cents += other.m_cents; return *this; }
    constexpr auto operator<=>(const Money &) const = default;

private:
    constexpr explicit Money(qint64 cents) : m_cents(cents) {}
    qint64 m_cents = 0;
};

}
