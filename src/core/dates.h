#pragma once

#include "core/usermessage.h"

#include <QDate>
#include <QString>
#include <optional>

// Dates as a Bulgarian user types and reads them.
namespace zarek {

// Reads dd.MM.yyyy and the shorter forms people type: d.M.yyyy, d.M.yy, d.M (this year),
// "/" or "-" in place of the dot, a trailing " г.", and the compact ddMMyy and ddMMyyyy.
// Two-digit years are 2000 + yy. An impossible date (31.02, month 13) is no date. A date typed
// without its year is of today's year; with no today given the clock is read for it, and only for it.
std::optional<QDate> parseDate(const QString &text, QDate today = {});

// dd.MM.yyyy
QString formatDate(const QDate &date);

// yyyy-MM-dd, as Qt::ISODate writes it.
QString isoDateText(const QDate &date);

// A search period: both ends count; valid only when the end is strictly after the start.
struct Period {
    QDate from;
    QDate to;

    bool isValid() const { return from.isValid() && to.isValid() && to > from; }
    bool contains(const QDate &date) const { return date >= from && date <= to; }
    bool operator==(const Period &) const = default;
};

// The period check of the search dialogs: empty ends, then an end not after the start.
std::optional<UserMessage> checkPeriodTexts(const QString &fromText, const QString &toText,
                                            QDate today = {});

}
