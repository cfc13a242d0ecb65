#pragma once

#include "core/money.h"

#include <QDate>
#include <QString>
#include <optional>

// The two currencies of the books and the firm's move from the lev to the euro at a date:
// which currency an amount of a given day is in, and the conversion rules, in one place.
namespace zarek {

enum class Currency { Leva, Euro };

// Leva for one euro, fixed by law, in hundred-thousandths: 1 EUR = 1,95583 лв.
inline constexpr qint64 euroRateScaled = 195'583;
inline constexpr qint64 euroRateScale = 100'000;
// Decimals a tariff rate keeps in euro: a course priced with the converted rate then differs from
// the converted leva price by at most a cent up to 100 t over 2000 km. Back in leva a rate needs
// one decimal less to come back exactly.
inline constexpr int euroRateDecimals = 8;
inline constexpr int levaRateDecimals = 7;

// The firm's changeover: from its date on the books are in euro, before it in leva. An invalid
// date means the firm has not changed over (everything is in leva).
struct Changeover {
    QDate date;
    qint64 rateScaled = euroRateScaled;

    bool isSet() const { return date.isValid(); }
    // The currency of an amount of that day; a day that is no date counts as today.
    Currency currencyOn(const QDate &day, const QDate &today) const;
    // The currency of the prices that stand undated (tariffs, stock on hand): euro once the firm
    // has changed over, whatever the date.
    Currency priceCurrency() const { return isSet() ? Currency::Euro : Currency::Leva; }
    double rate() const { return static_cast<double>(rateScaled) / euroRateScale; }
    bool operator==(const Changeover &) const = default;
};

// The date a changeover is offered with: the day Bulgaria adopted the euro.
QDate euroAdoptionDate();

// Leva to euro: divided by 1,95583, half up to the cent (0,005 лв. is 0,00 €).
Money levaToEuro(Money leva);
// Euro to leva, for a leva document corrected after the changeover: times 1,95583, half up.
Money euroToLeva(Money euro);
Money convertAmount(Money amount, Currency from, Currency to);
// Pay earned in leva and paid in euro: converted once per driver and rounded up to the cent
// (towards plus infinity: a driver's deduction rounds in his favour too).
Money wagesToEuro(Money leva);
// A tariff rate or a unit price held with more decimals than an amount: to euro with
// euroRateDecimals, back to leva with levaRateDecimals, half up.
double convertRate(double rate, Currency from, Currency to);
// A stock unit price is an amount: converted to the cent, as a price on a shelf.
double convertPrice(double price, Currency from, Currency to);

// The amounts of a paper or a screen added up in one currency: what comes in the other is
// converted, each amount on its own, and the total remembers that it was. Pay is converted the
// other way: what a driver earned in leva is added up and converted once, rounded up.
class CurrencyTotal {
public:
    enum class Rule { EachAmount, Wages };
    explicit CurrencyTotal(Currency currency = Currency::Leva, Rule rule = Rule::EachAmount)
        : m_currency(currency), m_rule(rule)
    {
    }

    void add(Money amount, Currency of);
    // Takes off an amount added before (a mark taken back), exactly as it was added.
    void remove(Money amount, Currency of);
    Currency currency() const { return m_currency; }
    Money total() const;
    // Some amount came in the other currency and was converted.
    bool converted() const { return m_converted; }

private:
    Currency m_currency;
    Rule m_rule;
    Money m_total;  // each amount converted on its own
    Money m_own;    // Wages: the amounts in the total's currency
    Money m_other;  // Wages: the amounts in the other currency, not yet converted
    bool m_converted = false;
};

// The currency a paper or a screen totals in: euro when any of its amounts is in euro or when
// it is handed out (an invoice issued, pay paid) on a day in euro; leva otherwise.
Currency totalsCurrency(bool anyEuro, std::optional<Currency> handedOut = std::nullopt);

// The line under totals that took in amounts of the other currency:
// "Сумите преди 01.01.2026 са преизчислени по курс 1,95583 лв. за 1 евро."
QString conversionNote(const Changeover &changeover, Currency totals = Currency::Euro);

// The books as one command sees them: the firm's changeover and today's date, worked out once
// when the command starts and handed to the screens, rules and stores it runs. Nothing below the
// command reads the clock or a changeover of its own.
struct BooksDay {
    Changeover changeover;
    QDate today;

    // The currency of an amount of that day; a day that is no date counts as today.
    Currency currencyOn(const QDate &day) const { return changeover.currencyOn(day, today); }
    Currency priceCurrency() const { return changeover.priceCurrency(); }
    bool changedOver() const { return changeover.isSet(); }
    bool operator==(const BooksDay &) const = default;
};

}
