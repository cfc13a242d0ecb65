#include "formats.h"

#include "core/rounding.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace zarek {

QLocale bulgarianLocale()
{
    QLocale locale(QLocale::Bulgarian, QLocale::Bulgaria);
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale;
}

namespace {

// A value rounded to its decimals written out from its whole number of the last decimal's units:
// the same text QString::number gives, without its general conversion. None beyond the range
// where that whole number is exact.
std::optional<QString> writtenFixed(double rounded, int decimals)
{
    static constexpr std::array<double, 9> powers = {1, 10, 100, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8};
    if (decimals < 0 || decimals >= static_cast<int>(powers.size()))
        return std::nullopt;
    const double scaled = rounded * powers[static_cast<size_t>(decimals)];
    if (!(std::fabs(scaled) < 1e15))
        return std::nullopt;
    const long long whole = std::llround(scaled);
    if (std::fabs(scaled - static_cast<double>(whole)) > 1e-6 * std::max(1.0, std::fabs(scaled)))
        return std::nullopt;
    unsigned long long magnitude = whole < 0 ? 0ULL - static_cast<unsigned long long>(whole)
                                             : static_cast<unsigned long long>(whole);
    std::array<char, 24> digits{};
    int count = 0;
    do {
        digits[static_cast<size_t>(count++)] = static_cast<char>('0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude > 0);
    while (count <= decimals)
        digits[static_cast<size_t>(count++)] = '0';
    // Written into a buffer and made a string once: a grid formats thousands of figures.
    std::array<QChar, 28> written{};
    size_t length = 0;
    if (whole < 0)
        written[length++] = QLatin1Char('-');
    for (int i = count - 1; i >= 0; --i) {
        written[length++] = QLatin1Char(digits[static_cast<size_t>(i)]);
        if (i == decimals && decimals > 0)
            written[length++] = QLatin1Char(',');
    }
    return QString(written.data(), static_cast<qsizetype>(length));
}

}

QString formatFixed(double value, int decimals)
{
    double rounded = roundHalfEven(value, decimals);
    if (rounded == 0.0)
        rounded = 0.0;  // no "-0,00"
    if (std::optional<QString> written = writtenFixed(rounded, decimals))
        return *written;
    QString text = QString::number(rounded, 'f', decimals);
    text.replace(QLatin1Char('.'), QLatin1Char(','));
    return text;
}

QString formatRate(double value)
{
    QString text = formatFixed(value, euroRateDecimals);
    const qsizetype point = text.indexOf(QLatin1Char(','));
    qsizetype end = text.size();
    while (end > point + 4 && text.at(end - 1) == QLatin1Char('0'))
        --end;
    text.truncate(end);
    return text;
}

QString amountUnit(Currency currency)
{
    return currency == Currency::Euro ? QStringLiteral("евро") : QStringLiteral("лв.");
}

QString currencySign(Currency currency)
{
    return currency == Currency::Euro ? QStringLiteral("€") : QStringLiteral("лв");
}

QString amountText(double amount, Currency currency)
{
    return formatAmount(amount) + (currency == Currency::Euro ? QStringLiteral(" ") : QString()) + amountUnit(currency);
}

QString amountText(Money amount, Currency currency)
{
    return amountText(amount.toDouble(), currency);
}

std::optional<double> parseNumber(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^[+-]?(\\d+([.,]\\d*)?|[.,]\\d+)$"));
    QString trimmed = text.trimmed();
    if (!pattern.match(trimmed).hasMatch())
        return std::nullopt;
    trimmed.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double value = trimmed.toDouble(&ok);
    if (!ok)
        return std::nullopt;
    return value;
}

double leadingNumber(const QString &text)
{
    QString compact;
    for (const QChar c : text) {
        if (c != QLatin1Char(' ') && c != QLatin1Char('\t') && c != QLatin1Char('\n') && c != QLatin1Char('\r'))
            compact.append(c);
    }
    qsizetype end = 0;
    if (end < compact.size() && (compact[end] == QLatin1Char('+') || compact[end] == QLatin1Char('-')))
        ++end;
    bool seenPoint = false;
    bool seenDigit = false;
    for (; end < compact.size(); ++end) {
        const QChar c = compact[end];
        if (c.isDigit() && c.unicode() < 128) {
            seenDigit = true;
        } else if (c == QLatin1Char('.') && !seenPoint) {
            seenPoint = true;
        } else {
            break;
        }
    }
    if (!seenDigit)
        return 0.0;
    return compact.left(end).toDouble();
}

}
