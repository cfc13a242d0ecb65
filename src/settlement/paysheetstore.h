#pragma once

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
    ExactPay total;  // the lines' pay added up unrounded: printed, it may differ from the printed lines' sum

    Money printedTotal() const { return total.rounded(); }
};

// The driver's pay sheet: his papers from the shof row of his code, the percent and rated load of
// each truck from Config, and his unpaid courses of the period (both ends counted) by date. Reads
// only. Refused with "Няма данни за шофьора!", "Няма курсове за плащане!" or, at the first course
// of a truck without a percent, "Няма зададен процент за кола № … !" (then no sheet at all).
Checked<PaySheet> BuildDriverPaySheet(const SearchConditions &conditions, QSqlDatabase db,
                                      const WorkProgress &progress = {});

// "Няма зададен процент за кола № " + number + " !" under "ВНИМАНИЕ!"
UserMessage noPercentMessage(const QString &kola);

}
