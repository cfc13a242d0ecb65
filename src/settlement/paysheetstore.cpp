#include "paysheetstore.h"

#include "core/valueformat.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "settlement/paymentstore.h"

#include <QVariant>

namespace zarek {

namespace {

const QString readErrorTitle = QStringLiteral("ГРЕШКА при четене!");

}

Checked<PaySheet> BuildDriverPaySheet(const SearchConditions &conditions, QSqlDatabase db,
                                      const BooksDay &books, const WorkProgress &progress)
{
    PaySheet sheet;
    sheet.kod = conditions.SeekDriverKod;
    sheet.name = conditions.SeekDriverIme;
    sheet.period = conditions.period;

    PaymentStore store(db);
    const Checked<DriverPapers> papers = store.driverPapers(sheet.kod);
    if (!papers)
        return papers.message();
    sheet.egn = papers.value().egn;
    sheet.lKarta = papers.value().lKarta;

    const Checked<QList<PayTruck>> trucks = store.payTrucks();
    if (!trucks)
        return trucks.message();

    // The courses are read straight into the sheet's lines: a paper of thousands of lines keeps
    // no second copy of its rows.
    Query courses(db, QStringLiteral("SELECT data, kola, ton, KM, Marsh, Tovar, bruto FROM tabl "
                                     "WHERE kod = ? AND plat = ? AND data BETWEEN ? AND ? ORDER BY data, id"));
    if (auto failed = courses.run(readErrorTitle, {sheet.kod, false, sheet.period.from, sheet.period.to}))
        return *failed;
    while (courses.next()) {
        PaySheetLine line;
        line.red = static_cast<int>(sheet.lines.size()) + 1;
        line.data = dateOfValue(courses.value(0));
        line.kola = courses.value(1).toString();
        line.ton = courses.value(2).toDouble();
        line.km = courses.value(3).toDouble();
        line.marsh = courses.value(4).toString();
        line.tovar = courses.value(5).toString();
        line.bruto = courses.value(6).toDouble();
        sheet.lines.append(line);
    }
    if (auto failed = courses.readFailure(readErrorTitle))
        return *failed;
    if (sheet.lines.isEmpty())
        return noCoursesToPayMessage();

    if (auto refusal = pricePaySheet(sheet, trucks.value(), books, std::nullopt, progress))
        return *refusal;
    return sheet;
}

}
