#pragma once

#include <QDate>
#include <QList>

// Bulgarian public holidays and working days, for the deadlines that count working days.
namespace zarek::documents {

// Orthodox Easter Sunday of a year (Gregorian date), 1900 to 2099.
QDate orthodoxEaster(int year);

// The days off of a year: 1 Jan, 3 Mar, 1 May, 6 May, 24 May, 6 Sep, 22 Sep, 24-26 Dec, Good
// Friday to Easter Monday, and for each of these but the Easter days that falls on a Saturday or
// Sunday the first working day after it. Sorted.
QList<QDate> publicHolidays(int year);
bool isPublicHoliday(const QDate &date);
// Monday to Friday and not a public holiday.
bool isWorkingDay(const QDate &date);

// The day that lies count working days before date (date itself not counted): the last day on
// which something due "count working days before" date can still be done.
QDate workingDaysBefore(const QDate &date, int count);

}
