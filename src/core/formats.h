#pragma once

#include "core/currency.h"
#include "core/money.h"

#include <QLocale>
#include <QString>
#include <optional>

// Number formats and number reading, in one place. The screens and reports show numbers the
// Bulgarian way: decimal comma, no thousands separator ("###0.00", "###0.000", "###0").
namespace zarek {

QLocale bulgarianLocale();

// A number with a fixed count of decimals, rounded half to even, with a decimal comma.
QString formatFixed(double value, int decimals);
inline QString formatAmount(double value) { return formatFixed(value, 2); }  // "###0.00"
inline QString formatAmount(Money value) { return formatFixed(value.toDouble(), 2); }
// A tariff rate: three decimals, and up to eight where the rate has them (a rate converted to
// euro, 0,06391148, shows and reads back whole): "###0.000#####".
QString formatRate(double value);
inline QString formatTonnes(double value) { return formatFixed(value, 3); }  // "###0.000"
inline QString formatKm(double value) { return formatFixed(value, 0); }      // "###0"

// The unit printed after amounts, one written form for each currency: "лв." and "евро". Kept
// here alone: the books change currency in one place.
QString amountUnit(Currency currency);
// The currency's sign, where a unit must be a glyph (a toolbar badge): "лв" and "€".
QString currencySign(Currency currency);
// An amount with its unit where a screen or list puts it right after the number: "275,00лв.",
// and with a blank before the word in euro: "275,00 евро".
QString amountText(Money amount, Currency currency);
QString amountText(double amount, Currency currency);

// A typed number: blanks around it are ignored, a comma or a point is the decimal separator,
// a leading sign is allowed; anything else (letters, two separators, an empty text) is no number.
std::optional<double> parseNumber(const QString &text);

// The leading-number reading: blanks are skipped, digits with one decimal point are read up to
// the first character that is not part of a number. "1a" gives 1, "ab" gives 0, "12,50" gives 12.
double leadingNumber(const QString &text);

}
