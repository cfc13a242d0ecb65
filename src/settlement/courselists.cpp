#include "courselists.h"

#include "settlement/paymentstore.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"

namespace zarek {

Checked<Report> BuildDriverCourseList(bool paid, const SearchConditions &conditions, QSqlDatabase db,
                                      ScratchDatabase &scratch, const FirmProfile &firm, const BooksDay &books,
                                      const WorkProgress &progress)
{
    PaymentStore store(db);
    const Checked<RowSet> courses = store.courses(conditions.SeekDriverKod, conditions.period, paid, true);
    if (!courses)
        return courses.message();
    const int count = courses.value().rowCount();
    if (count == 0)
        return noPaidCoursesMessage();
    if (progress)
        progress(0, count);
    QList<int> rows(count);
    for (int row = 0; row < count; ++row)
        rows[row] = row;
    // The tariff shows two decimals on these lists.
    const Checked<ScratchStatement> statement = writeTempPlaten(scratch, courses.value(), rows, 2, {books, std::nullopt, false});
    if (!statement)
        return statement.message();
    if (progress)
        progress(count, count);
    return ReportNePlaten(paid, conditions.SeekDriverIme, conditions.period, statement.value(), firm);
}

}
