#include "valueformat.h"

#include "core/dates.h"
#include "core/formats.h"

#include <QDate>
#include <QDateTime>
#include <QHash>

namespace zarek {

namespace {

std::optional<NumberFormat> parseNumberFormat(const QString &format)
{
    qsizetype end = 0;
    while (end < format.size()
           && (format[end] == QLatin1Char('0') || format[end] == QLatin1Char('#') || format[end] == QLatin1Char(',')
               || format[end] == QLatin1Char('.')))
        ++end;
    if (end == 0)
        return std::nullopt;
    NumberFormat parsed;
    const QString tail = format.mid(end);
    if (!tail.isEmpty()) {
        if (tail.size() < 2 || !tail.startsWith(QLatin1Char('"')) || !tail.endsWith(QLatin1Char('"')))
            return std::nullopt;
        parsed.suffix = tail.mid(1, tail.size() - 2);
    }
    const QString number = format.left(end);
    const qsizetype separator = std::max(number.lastIndexOf(QLatin1Char(',')), number.lastIndexOf(QLatin1Char('.')));
    if (separator >= 0) {
        const QString decimals = number.mid(separator + 1);
        parsed.maxDecimals = static_cast<int>(decimals.size());
        parsed.minDecimals = static_cast<int>(decimals.indexOf(QLatin1Char('#')) < 0 ? decimals.size()
                                                                                     : decimals.indexOf(QLatin1Char('#')));
    }
    return parsed;
}

}

std::optional<NumberFormat> numberFormat(const QString &format)
{
    // A grid or a paper formats every cell of a column by the same few formats: each is read once
    // per thread.
    thread_local QHash<QString, std::optional<NumberFormat>> parsed;
    const auto found = parsed.constFind(format);
    if (found != parsed.constEnd())
        return *found;
    const std::optional<NumberFormat> number = parseNumberFormat(format);
    if (parsed.size() < 256)
        parsed.insert(format, number);
    return number;
}

std::optional<int> formatDecimals(const QString &format)
{
    const auto parsed = numberFormat(format);
    if (!parsed)
        return std::nullopt;
    return parsed->maxDecimals;
}

QString formatNumber(double figure, int minDecimals, int maxDecimals)
{
    QString text = formatFixed(figure, maxDecimals);
    if (minDecimals < maxDecimals) {
        const qsizetype keep = text.size() - (maxDecimals - minDecimals);
        qsizetype end = text.size();
        while (end > keep && text.at(end - 1) == QLatin1Char('0'))
            --end;
        if (end > 0 && text.at(end - 1) == QLatin1Char(','))
            --end;  // "0.##" shows 5, not "5,"
        text.truncate(end);
    }
    return text;
}

QDate dateOfValue(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QDate)
        return value.toDate();
    if (value.metaType().id() == QMetaType::QDateTime)
        return value.toDateTime().date();
    const QString text = value.toString();
    // The usual form, yyyy-MM-dd, read digit by digit; anything else as Qt reads it.
    const auto digit = [&text](int at) { return text.at(at).unicode() - u'0'; };
    const auto isDigit = [&text](int at) { return text.at(at) >= QLatin1Char('0') && text.at(at) <= QLatin1Char('9'); };
    if (text.size() >= 10 && text.at(4) == QLatin1Char('-') && text.at(7) == QLatin1Char('-') && isDigit(0)
        && isDigit(1) && isDigit(2) && isDigit(3) && isDigit(5) && isDigit(6) && isDigit(8) && isDigit(9))
        return QDate(digit(0) * 1000 + digit(1) * 100 + digit(2) * 10 + digit(3), digit(5) * 10 + digit(6),
                     digit(8) * 10 + digit(9));
    return QDate::fromString(text.left(10), Qt::ISODate);
}

QString formatReportValue(const QVariant &value, const QString &format)
{
    if (value.isNull())
        return {};
    if (const auto number = numberFormat(format)) {
        bool ok = false;
        const double figure = value.toDouble(&ok);
        if (!ok)
            return value.toString();
        return formatNumber(figure, number->minDecimals, number->maxDecimals) + number->suffix;
    }
    if (format == QLatin1String("Short Date")) {
        const QDate date = dateOfValue(value);
        return date.isValid() ? formatDate(date) : value.toString();
    }
    if (format == QLatin1String("Yes/No"))
        return value.toBool() ? QStringLiteral("Да") : QStringLiteral("Не");
    switch (value.metaType().id()) {
    case QMetaType::QDate:
    case QMetaType::QDateTime:
        return formatDate(dateOfValue(value));
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("Да") : QStringLiteral("Не");
    case QMetaType::Double:
    case QMetaType::Float:
        return bulgarianLocale().toString(value.toDouble(), 'g', 15);
    default:
        return value.toString();
    }
}

}
