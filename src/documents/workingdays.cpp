#include "workingdays.h"

#include <QHash>
#include <algorithm>

namespace zarek::documents {

QDate orthodoxEaster(int year)
{
    // Meeus' Julian algorithm, then the 13 days between the calendars in 1900-2099.
    const int a = year % 4;
    const int b = year % 7;
    const int c = year % 19;
    const int d = (19 * c + 15) % 30;
    const int e = (2 * a + 4 * b - d + 34) % 7;
    const int month = (d + e + 114) / 31;
    const int day = (d + e + 114) % 31 + 1;
    return QDate(year, month, day).addDays(13);
}

namespace {

bool isWeekend(const QDate &date)
{
    return date.dayOfWeek() >= Qt::Saturday;
}

QList<QDate> holidaysOf(int year)
{
    static const int fixed[][2] = {{1, 1}, {3, 3}, {5, 1}, {5, 6}, {5, 24}, {9, 6}, {9, 22}, {12, 24}, {12, 25}, {12, 26}};
    const QDate easter = orthodoxEaster(year);
    QList<QDate> days;
    for (int offset = -2; offset <= 1; ++offset)
        days.append(easter.addDays(offset));
    QList<QDate> fixedDays;
    for (const auto &monthDay : fixed)
        fixedDays.append(QDate(year, monthDay[0], monthDay[1]));
    days += fixedDays;
    // A fixed holiday on a Saturday or Sunday gives the first working day after it off, each its own.
    for (const QDate &holiday : std::as_const(fixedDays)) {
        if (!isWeekend(holiday))
            continue;
        QDate next = holiday.addDays(1);
        while (isWeekend(next) || days.contains(next))
            next = next.addDays(1);
        days.append(next);
    }
    std::sort(days.begin(), days.end());
    days.erase(std::unique(days.begin(), days.end()), days.end());
    return days;
}

}

QList<QDate> publicHolidays(int year)
{
    static QHash<int, QList<QDate>> cache;
    auto found = cache.constFind(year);
    if (found == cache.constEnd())
        found = cache.insert(year, holidaysOf(year));
    return *found;
}

bool isPublicHoliday(const QDate &date)
{
    return date.isValid() && publicHolidays(date.year()).contains(date);
}

bool isWorkingDay(const QDate &date)
{
    return date.isValid() && !isWeekend(date) && !isPublicHoliday(date);
}

QDate workingDaysBefore(const QDate &date, int count)
{
    if (!date.isValid())
        return {};
    QDate day = date;
    for (int counted = 0; counted < count;) {
        day = day.addDays(-1);
        if (isWorkingDay(day))
            ++counted;
    }
    return day;
}

}
