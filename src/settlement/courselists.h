#pragma once

#include "core/currency.h"
#include "core/firmprofile.h"
#include "courses/searchconditions.h"
#include "reports/report.h"
#include "settlement/progress.h"

#include <QSqlDatabase>

namespace zarek {

class ScratchDatabase;

// The list of a driver's paid (or unpaid) courses of a period, by date and then route, laid out in
// TempPlaten (made anew) and filled into rptNePlaten. Both empty lists say "Няма платени курсове!".
Checked<Report> BuildDriverCourseList(bool paid, const SearchConditions &conditions, QSqlDatabase db,
                                      ScratchDatabase &scratch, const FirmProfile &firm, const BooksDay &books,
                                      const WorkProgress &progress = {});

}
