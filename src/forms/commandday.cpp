#include "forms/commandday.h"

namespace zarek {

namespace {

BooksDay &current()
{
    static BooksDay day;
    return day;
}

}

const BooksDay &commandDay()
{
    return current();
}

QDate commandToday()
{
    return current().today.isValid() ? current().today : QDate::currentDate();
}

void setCommandDay(const BooksDay &day)
{
    current() = day;
}

}
