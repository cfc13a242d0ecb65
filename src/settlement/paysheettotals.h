#pragma once

#include "core/currency.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "settlement/paysheet.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// What the pay sheet of each driver with unpaid courses comes to, without reading his courses:
// the printed total, the count of lines and the currency BuildDriverPaySheet would give for the
// period from his oldest unpaid course to a day, added up by the database.
namespace zarek {

struct PaySheetTotal {
    QString kod;
    QString name;  // the greatest of his names in shof
    QDate from;    // his oldest unpaid course: the sheet runs from here to the day
    int lines = 0;
    Currency currency = Currency::Leva;
    ExactPay total;       // as PaySheet::total
    ExactPay otherTotal;  // as PaySheet::otherTotal
    // What the pay sheet is refused with ("Няма данни за шофьора!", "Няма зададен процент за кола
    // № … !" with the truck of the first such course); then there are no sums.
    std::optional<UserMessage> refusal;

    // As PaySheet::printedTotal.
    Money printedTotal() const;
};

// Each driver's sheet of his unpaid courses up to the day upTo, paid on books.today, by code. A
// course's pay is linear in its cents for one truck and one load, so the database adds up the cents
// of each driver, truck as typed and load, in each currency; the truck's percent and rated load, the
// whole tonnes over and the split into cents and parts follow here by the sheet's own rules.
Checked<QList<PaySheetTotal>> unpaidPaySheetTotals(QSqlDatabase db, const BooksDay &books, const QDate &upTo);

}
