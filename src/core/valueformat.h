#pragma once

#include <QString>
#include <QVariant>
#include <optional>

namespace zarek {

// A number format: "0" and "#" before the separator, "0" (always shown) and then "#" (shown
// when the value has it) after it, and a quoted text printed behind the number ("0,00\" евро\"").
struct NumberFormat {
    int minDecimals = 0;
    int maxDecimals = 0;
    QString suffix;
};
// None for a format that is no number format (empty, "Short Date", "Yes/No").
std::optional<NumberFormat> numberFormat(const QString &format);

// The most decimals a number format shows: "0,00" and "###0.00" give 2, "0" and "###0" give 0,
// "###0.000#####" gives 8; a format that is no number format gives none.
std::optional<int> formatDecimals(const QString &format);

// A value as a report or grid shows it under a design format, the Bulgarian way: numbers with a
// decimal comma, dates as dd.MM.yyyy, yes/no values as "Да"/"Не".
QString formatReportValue(const QVariant &value, const QString &format);

// A number with at least minDecimals and at most maxDecimals decimals, a decimal comma.
QString formatNumber(double figure, int minDecimals, int maxDecimals);

// The value as a date, whether the engine gave a date or its ISO text; invalid otherwise.
QDate dateOfValue(const QVariant &value);

}
