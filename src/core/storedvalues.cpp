#include "storedvalues.h"

#include "core/docnumber.h"
#include "core/money.h"
#include "core/textcheck.h"

#include <cmath>

namespace zarek {

namespace {

// Whole units of 1/scale, within rounding noise: 2.675 typed is 2674.9999… thousandths in binary.
bool isWholeIn(double value, double scale)
{
    const double scaled = value * scale;
    return std::fabs(scaled - std::round(scaled)) <= 1e-6 * std::max(1.0, std::fabs(scaled));
}

}

std::optional<Quantity> toQuantity(double value)
{
    if (!std::isfinite(value) || std::fabs(value) > 1e12 || !isWholeIn(value, quantityScale))
        return std::nullopt;
    return static_cast<Quantity>(std::round(value * quantityScale));
}

Quantity storedQuantity(double value)
{
    return std::isfinite(value) ? std::llround(value * quantityScale) : 0;
}

bool isStorableText(const QString &text, int maxLength)
{
    return text.size() <= maxLength && !hasControlCharacter(text);
}

bool isStoredDocumentNumber(const QString &text)
{
    if (text.size() != documentNumberLength || hasControlCharacter(text))
        return false;
    for (const QChar c : text) {
        if (c.isSpace())
            return false;
    }
    return true;
}

bool isWholeCents(double amount)
{
    return std::isfinite(amount) && std::fabs(amount) <= static_cast<double>(Money::maxCents) / 100.0
           && isWholeIn(amount, 100.0);
}

bool isWithin(double value, double low, double high)
{
    return value >= low && value <= high;  // false for NaN
}

}
