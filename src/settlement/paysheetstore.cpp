#include "paysheetstore.h"

#include "core/valueformat.h"
#include "data/sqlerror.h"
#include "settlement/paymentstore.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

const QString readErrorTitle = QStringLiteral("ГРЕШКА при четене!");

Checked<QList<PayTruck>> readPayTrucks(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    // In the order the rows were made, so that the later of two rows for one truck counts.
    if (!query.exec(QStringLiteral("SELECT kola, Procent, Ton FROM Config ORDER BY id")))
        return sqlErrorMessage(readErrorTitle, query.lastError());
    QList<PayTruck> trucks;
    while (query.next())
        trucks.append({query.value(0).toString().trimmed(), query.value(1).toDouble(), query.value(2).toDouble()});
    if (query.lastError().isValid())
        return sqlErrorMessage(readErrorTitle, query.lastError());
    return trucks;
}

}

bool PaySheet::mixed() const
{
    for (const PaySheetLine &line : lines) {
        if (line.currency != currency)
            return true;
    }
    return false;
}

Money PaySheet::printedTotal() const
{
    const Money other = otherTotal.rounded();
    const Money converted = currency == Currency::Euro ? wagesToEuro(other) : euroToLeva(other);
    return total.rounded() + converted;
}

UserMessage noPercentMessage(const QString &kola)
{
    return UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма зададен процент за кола № ") + kola
                                                       + QStringLiteral(" !")};
}

Checked<PaySheet> BuildDriverPaySheet(const SearchConditions &conditions, QSqlDatabase db,
                                      const WorkProgress &progress, QDate today)
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

    const Checked<QList<PayTruck>> trucks = readPayTrucks(db);
    if (!trucks)
        return trucks.message();

    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT data, kola, ton, KM, Marsh, Tovar, bruto FROM tabl "
                                 "WHERE kod = ? AND plat = ? AND data BETWEEN ? AND ? ORDER BY data, id"));
    query.addBindValue(sheet.kod);
    query.addBindValue(false);
    query.addBindValue(sheet.period.from);
    query.addBindValue(sheet.period.to);
    if (!query.exec())
        return sqlErrorMessage(readErrorTitle, query.lastError());
    const Checked<RowSet> read = RowSet::fromQuery(query, readErrorTitle);
    if (!read)
        return read.message();
    const RowSet &courses = read.value();
    const int count = courses.rowCount();
    if (count == 0)
        return noCoursesToPayMessage();

    sheet.lines.reserve(count);
    bool anyEuro = false;
    for (int row = 0; row < count && !anyEuro; ++row)
        anyEuro = currencyOn(dateOfValue(courses.value(row, 0))) == Currency::Euro;
    sheet.currency = totalsCurrency(anyEuro, currencyOn(today));
    for (int row = 0; row < count; ++row) {
        if (progress && (row % 256 == 0 || row + 1 == count))
            progress(row + 1, count);
        PaySheetLine line;
        line.red = row + 1;
        line.data = dateOfValue(courses.value(row, 0));
        line.kola = courses.value(row, 1).toString();
        const PayTruck truck = payTruckFor(trucks.value(), line.kola);
        if (truck.percent == 0.0)
            return noPercentMessage(line.kola);
        line.ton = courses.value(row, 2).toDouble();
        line.km = courses.value(row, 3).toDouble();
        line.marsh = courses.value(row, 4).toString();
        line.tovar = courses.value(row, 5).toString();
        line.bruto = courses.value(row, 6).toDouble();
        line.pay = coursePay(line.bruto, truck.percent, line.ton, truck.ratedTon);
        line.currency = currencyOn(line.data);
        (line.currency == sheet.currency ? sheet.total : sheet.otherTotal) += line.pay;
        sheet.lines.append(line);
    }
    return sheet;
}

}
