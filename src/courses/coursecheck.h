#pragma once

#include "core/currency.h"
#include "core/money.h"
#include "core/storedvalues.h"
#include "core/usermessage.h"
#include "courses/course.h"

#include <QDate>
#include <QString>
#include <optional>

namespace zarek {

// What the course editor's boxes hold at the moment of saving.
struct CourseEntry {
    QString driver;      // the driver combo: "kod,ime" picked from the list
    QString driverCode;  // the bound code box: kept as it is while correcting
    QString kola;
    QString date;
    QString ton;
    QString km;
    QString tarifa;
    QString marsh;
    QString klient;
    QString tovar;
    QString nomFakt;
    QString razhod;      // the expense of the course; blank means 0
    bool fakt = false;
    bool plat = false;
};

// The editor's situation: the task it serves, whether a new row is being added, and the row
// being corrected otherwise: its id and version, and its values as stored (an invoiced course
// keeps its money).
struct CourseSaveContext {
    CourseMode mode = CourseMode::NewKurs;
    bool adding = true;
    Course original;
};

// The box a refusal is about, by the column it fills ("razhod" for the expense, "kod" for the
// driver); the editor puts the cursor there.
struct CourseCheckResult {
    std::optional<UserMessage> refusal;      // the save stops with this message
    std::optional<UserMessage> dateWarning;  // shown, and the save goes on
    bool focusDate = false;                  // the date box takes focus with its text selected
    QString faultField;                      // the column of the box at fault, with a refusal
    Course course;                           // ready to write when there is no refusal
    Money expense;
};

// A course that carries an invoice number (not "0000000000") stands on an invoice handed out.
bool carriesInvoice(const Course &course);
// Whether a correction would change what an invoice states of the course: its tonnes,
// kilometres, rate, money or client.
bool changesInvoicedFigures(const Course &stored, const Course &corrected);
// The refusal of such a correction, naming the invoice and the way to take the course off it.
UserMessage invoicedCourseRefusal(const QString &nomFakt);

inline const QString &saveErrorTitle()
{
    static const QString title = QStringLiteral("ГРЕШКА при запис!");
    return title;
}

// The limits of a course's figures (maxCourseTonnes, maxCourseKm, maxCourseRate): core/storedvalues.h.

// Tonnes, kilometres and rate against their limits: the two-line message of the first beyond one.
std::optional<UserMessage> checkCourseNumbers(double ton, double km, double rate);

// The checks of the save, in their order; the first failing one wins. Before them, a text with a
// control character; after them the date, the numbers and their limits, and the money.
// The date is read, and the money is in the currency of its day, by the books given.
CourseCheckResult checkCourse(const CourseEntry &entry, const CourseSaveContext &context, const BooksDay &books);

// The driver's code in a "kod,ime" text: the trimmed part before the first comma; none without one.
QString driverCodeOf(const QString &driverText);

}
