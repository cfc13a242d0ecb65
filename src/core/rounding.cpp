#include "rounding.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace zarek {

namespace {

// Adds one to the last digit of a string of decimal digits, carrying to the left.
void incrementDigits(std::string &digits)
{
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (*it != '9') {
            ++*it;
            return;
        }
        *it = '0';
    }
    digits.insert(digits.begin(), '1');
}

enum class Tie { ToEven, AwayFromZero };

// Rounds on the shortest decimal text that reads back as this double: what the user sees, so
// 2,675 is a half although its binary value lies a hair below it.
double roundDecimal(double value, int decimals, Tie tie)
{
    if (!std::isfinite(value) || value == 0.0 || decimals < 0)
        return value;
    // Most values already read with no more decimals than kept (amounts as stored): the decimal
    // n / 10^decimals reads back as this very double, so its shortest text has no more decimals
    // and the value stays as it is. Known without writing it out.
    static constexpr std::array<double, 9> powers = {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
    if (decimals < static_cast<int>(powers.size()) && std::fabs(value) < 1e12) {
        const double power = powers[static_cast<size_t>(decimals)];
        if (std::round(value * power) / power == value)
            return value;
    }

    std::array<char, 400> buffer{};
    const auto written = std::to_chars(buffer.data(), buffer.data() + buffer.size(), std::fabs(value),
                                       std::chars_format::fixed);
    if (written.ec != std::errc())
        return value;
    const std::string text(buffer.data(), written.ptr);

    const auto point = text.find('.');
    const std::string whole = point == std::string::npos ? text : text.substr(0, point);
    const std::string fraction = point == std::string::npos ? std::string() : text.substr(point + 1);
    if (fraction.size() <= static_cast<size_t>(decimals))
        return value;

    std::string kept = whole + fraction.substr(0, decimals);
    const char next = fraction[decimals];
    const bool restNonZero = fraction.find_first_not_of('0', decimals + 1) != std::string::npos;
    const bool lastOdd = (kept.back() - '0') % 2 == 1;
    const bool up = tie == Tie::AwayFromZero ? next >= '5' : next > '5' || (next == '5' && (restNonZero || lastOdd));
    if (up)
        incrementDigits(kept);

    std::string rounded = kept.substr(0, kept.size() - decimals);
    if (decimals > 0)
        rounded += '.' + kept.substr(kept.size() - decimals);
    double result = 0.0;
    std::from_chars(rounded.data(), rounded.data() + rounded.size(), result);
    return value < 0 ? -result : result;
}

}

double roundHalfEven(double value, int decimals)
{
    return roundDecimal(value, decimals, Tie::ToEven);
}

double roundHalfUp(double value, int decimals)
{
    return roundDecimal(value, decimals, Tie::AwayFromZero);
}

}
