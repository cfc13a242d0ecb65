#include "formats.h"

#include "core/rounding.h"

#include <QRegularExpression>

namespace zarek {

QLocale bulgarianLocale()
{
    QLocale locale(QLocale::Bulgarian, QLocale::Bulgaria);
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale;
}

QString formatFixed(double value, int decimals)
{
    double rounded = roundHalfEven(value, decimals);
    if (rounded == 0.0)
        rounded = 0.0;  // no "-0,00"
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
