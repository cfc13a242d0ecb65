#pragma once

#include "core/currency.h"
#include "core/dates.h"
#include "core/usermessage.h"
#include "courses/searchconditions.h"
#include "settlement/paysheet.h"
#include "settlement/progress.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>

namespace zarek {

// One course on a driver's pay sheet.
struct PaySheetLine {
    int red = 0;  // running number from 1
    QDate data;
    QString kola;
    double ton = 0;
    double km = 0;
    double bruto = 0;
    QString marsh;
    QString tovar;
    ExactPay pay;  // as computed, before rounding
    Currency currency = Currency::Leva;  // of the course's day: its sum and pay

    Money zaplata() const { return pay.rounded(); }
};

// What a driver earned on his unpaid courses of a period, and what his receipt names him by.
struct PaySheet {
    QString kod;
    QString name;
    QString egn;
    QString lKarta;
    Period period;
    QList<PaySheetLine> lines;
    // The pay is paid today: in today's currency, and in euro also when any course is.
    Currency currency = Currency::Leva;
    ExactPay total;       // the pay of the lines in the sheet's currency added up unrounded: printed,
                          // it may differ from the printed lines' sum
    ExactPay otherTotal;  // the pay of the lines in the other currency, added up the same way

    // Lines of both currencies: each amount shows its unit, and a note stands under the total.
    bool mixed() const;
    // The total paid: pay earned in leva and paid in euro is converted once for the driver and
    // rounded up to the cent.
    Money printedTotal() const;
};

// The driver's pay sheet: his papers from the shof row of his code, the percent and rated load of
// each truck from Config, and his unpaid courses of the period (both ends counted) by date. Reads
// only. Refused with "Няма данни за шофьора!", "Няма курсове за плащане!" or, at the first course
// of a truck without a percent, "Няма зададен процент за кола № … !" (then no sheet at all).
Checked<PaySheet> BuildDriverPaySheet(const SearchConditions &conditions, QSqlDatabase db,
                                      const WorkProgress &progress = {}, QDate today = QDate::currentDate());

// "Няма зададен процент за кола № " + number + " !" under "ВНИМАНИЕ!"
UserMessage noPercentMessage(const QString &kola);

}
