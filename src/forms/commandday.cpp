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

void setCommandDay(const BooksDay &day)
{
    current() = day;
}

}
