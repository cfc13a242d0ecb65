#pragma once

#include <QString>
#include <QVariant>
#include <optional>

namespace zarek {

// The decimals a number format asks for: "0,00" and "###0.00" give 2, "0" and "###0" give 0;
// a format that is no number format (empty, "Short Date", "Yes/No") gives none.
std::optional<int> formatDecimals(const QString &format);

// A value as a report or grid shows it under a design format, the Bulgarian way: numbers with a
// decimal comma, dates as dd.MM.yyyy, yes/no values as "Да"/"Не".
QString formatReportValue(const QVariant &value, const QString &format);

// The value as a date, whether the engine gave a date or its ISO text; invalid otherwise.
QDate dateOfValue(const QVariant &value);

}
