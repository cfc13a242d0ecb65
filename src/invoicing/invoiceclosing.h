#pragma once

#include "core/usermessage.h"

#include <QDate>
#include <QList>
#include <QString>

// What closing the invoicing screen writes. The screen holds its marks in memory while it is
// open; at closing the whole outcome is worked out here and written in one transaction, so no
// course is ever left marked without its number.
namespace zarek {

// The two tasks of the invoicing screen: marking courses for a new invoice, and correcting an
// issued invoice by taking courses off it.
enum class FakturaMode { FaktNew, EditFakt };

// A course as the screen holds it: the row and version it was read at, and its mark now.
struct HeldCourse {
    qint64 id = 0;
    qint64 rowVersion = 0;
    bool marked = false;
};

// The screen's state at closing.
struct ClosingState {
    FakturaMode mode = FakturaMode::FaktNew;
    bool changed = false;  // Space was pressed at least once
    bool printed = false;  // the statement was asked for at least once
    QString number;        // the invoice's number; "0000000000" while none is chosen
    // FaktNew: the courses on the last statement printed under this number (none when nothing
    // was printed, or when the statement had no course). Only they can get the number.
    QList<qint64> statement;
};

// One course to write: its new Fakt and NomFakt, on the version it was read at. Every course
// written is stamped with the date and time of the write.
struct CourseWrite {
    qint64 id = 0;
    qint64 rowVersion = 0;
    bool fakt = false;
    QString nomFakt;
    bool operator==(const CourseWrite &) const = default;
};

// The writes of closing, by mode and state:
//  FaktNew, unchanged: none.
//  FaktNew, changed: each marked course on the last statement printed under the number gets the
//    number; each other marked course stays uninvoiced (Fakt false, no number), stamped: marks
//    that never reached paper make no invoice, so an invoice never holds a course its client
//    was not shown.
//  EditFakt, unchanged: none.
//  EditFakt, changed: each marked course keeps the number, each unmarked one leaves the invoice.
// A course would never be written as invoiced without a number: that is refused instead.
Checked<QList<CourseWrite>> closingWrites(const ClosingState &state, const QList<HeldCourse> &courses);

// A course another workstation changed since the screen read it, as the user knows it.
struct ChangedCourse {
    QDate date;
    QString marsh;
    QString klient;
};

// The save error box naming the changed courses (the first ones, and how many more); nothing
// was written and the courses were read again.
UserMessage changedCoursesMessage(const QList<ChangedCourse> &courses, bool printAgain);

}
