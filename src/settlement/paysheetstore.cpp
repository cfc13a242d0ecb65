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

    const Checked<RowSet> read = readRows(db, readErrorTitle,
                                          QStringLiteral("SELECT data, kola, ton, KM, Marsh, Tovar, bruto FROM tabl "
                                                         "WHERE kod = ? AND plat = ? AND data BETWEEN ? AND ? "
                                                         "ORDER BY data, id"),
                                          {sheet.kod, false, sheet.period.from, sheet.period.to});
    if (!read)
        return read.message();
    const RowSet &courses = read.value();
    const int count = courses.rowCount();
    if (count == 0)
        return noCoursesToPayMessage();

    sheet.lines.reserve(count);
    for (int row = 0; row < count; ++row) {
        if (progress && (row % 256 == 0 || row + 1 == count))
            progress(row + 1, count);
        PaySheetLine line;
        line.red = row + 1;
        line.data = dateOfValue(courses.value(row, 0));
        line.kola = courses.value(row, 1).toString();
        line.ton = courses.value(row, 2).toDouble();
        line.km = courses.value(row, 3).toDouble();
        line.marsh = courses.value(row, 4).toString();
        line.tovar = courses.value(row, 5).toString();
        line.bruto = courses.value(row, 6).toDouble();
        sheet.lines.append(line);
    }
    if (auto refusal = pricePaySheet(sheet, trucks.value(), books))
        return *refusal;
    return sheet;
}

}
