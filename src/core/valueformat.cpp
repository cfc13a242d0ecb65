#include "valueformat.h"

#include "core/dates.h"
#include "core/formats.h"

#include <QDate>
#include <QDateTime>

namespace zarek {

std::optional<int> formatDecimals(const QString &format)
{
    if (format.isEmpty())
        return std::nullopt;
    for (const QChar c : format) {
        if (c != QLatin1Char('0') && c != QLatin1Char('#') && c != QLatin1Char(',') && c != QLatin1Char('.'))
            return std::nullopt;
    }
    const qsizetype separator = std::max(format.lastIndexOf(QLatin1Char(',')), format.lastIndexOf(QLatin1Char('.')));
    if (separator < 0)
        return 0;
    return static_cast<int>(format.size() - separator - 1);
}

QDate dateOfValue(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QDate)
        return value.toDate();
    if (value.metaType().id() == QMetaType::QDateTime)
        return value.toDateTime().date();
    const QString text = value.toString();
    QDate date = QDate::fromString(text.left(10), Qt::ISODate);
    return date;
}

QString formatReportValue(const QVariant &value, const QString &format)
{
    if (value.isNull())
        return {};
    if (const auto decimals = formatDecimals(format)) {
        bool ok = false;
        const double number = value.toDouble(&ok);
        return ok ? formatFixed(number, *decimals) : value.toString();
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
