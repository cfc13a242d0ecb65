#pragma once

#include <QString>
#include <QtGlobal>
#include <optional>

// What a stored value may be, free of any screen: the limits the screens hold typed values to,
// for every path that writes or loads data (the screens, the stores, a restored archive).
namespace zarek {

// The limits of a course's figures: a truck's load, a day's driving and a rate per tonne and
// kilometre, each from 0. Within them the gross sum stays far inside what Money holds.
inline constexpr double maxCourseTonnes = 100.0;
inline constexpr double maxCourseKm = 2000.0;
inline constexpr double maxCourseRate = 100.0;
// The largest gross sum of a course: the three limits multiplied.
inline constexpr double maxCourseAmount = maxCourseTonnes * maxCourseKm * maxCourseRate;

// A stock quantity in whole thousandths, the precision the lists print: issues and give-backs
// then add and subtract exactly, and stock on hand is exactly the sum of what the receipts hold.
using Quantity = qint64;
inline constexpr Quantity quantityScale = 1000;

// A typed or stored quantity as thousandths; none when it has more than three decimals or is
// not a finite number.
std::optional<Quantity> toQuantity(double value);
// A stored quantity read back (stored values are whole thousandths already).
Quantity storedQuantity(double value);
inline double quantityValue(Quantity quantity) { return static_cast<double>(quantity) / quantityScale; }

// The longest text any box of the program keeps.
inline constexpr int maxStoredTextLength = 255;
// A text as a box keeps it: no control character, at most maxLength characters.
bool isStorableText(const QString &text, int maxLength = maxStoredTextLength);
// An invoice, waybill or consignment note number as stored: exactly ten characters, none of them
// a control character or a blank.
bool isStoredDocumentNumber(const QString &text);
// An amount as money is stored: finite, within what Money holds, in whole cents.
bool isWholeCents(double amount);
// A number within [low, high]; never NaN or infinite.
bool isWithin(double value, double low, double high);

}
