#pragma once

#include "core/currency.h"

// The books of the command that runs now: the main window works them out when a command starts
// (the firm's changeover as stored, today's date from the clock, once) and screens take them when
// they open, handing them to the rules and stores they call. Rules and stores never read this:
// they are given a BooksDay.
namespace zarek {

const BooksDay &commandDay();
// Today as the command that runs now read it; the clock's before any command has (at start-up).
QDate commandToday();
void setCommandDay(const BooksDay &day);

// Tests set the books of a command with this guard.
class ScopedCommandDay {
public:
    explicit ScopedCommandDay(const BooksDay &day) : m_previous(commandDay()) { setCommandDay(day); }
    ~ScopedCommandDay() { setCommandDay(m_previous); }
    ScopedCommandDay(const ScopedCommandDay &) = delete;
    ScopedCommandDay &operator=(const ScopedCommandDay &) = delete;

private:
    BooksDay m_previous;
};

}
