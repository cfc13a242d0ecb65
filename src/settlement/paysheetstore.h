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

// The driver's pay sheet: his papers from the shof row of his code, the percent and rated load of
// each truck from Config, and his unpaid courses of the period (both ends counted) by date. Reads
// only. Refused with "Няма данни за шофьора!", "Няма курсове за плащане!" or, at the first course
// of a truck without a percent, "Няма зададен процент за кола № … !" (then no sheet at all).
Checked<PaySheet> BuildDriverPaySheet(const SearchConditions &conditions, QSqlDatabase db,
                                      const BooksDay &books, const WorkProgress &progress = {});

}
