#pragma once

#include "core/dates.h"
#include "core/usermessage.h"
#include "data/rowset.h"
#include "settlement/paysheet.h"

#include <QSqlDatabase>
#include <optional>

namespace zarek {

// What a receipt names a driver by: his personal number and identity card.
struct DriverPapers {
    QString egn;
    QString lKarta;
};

// The reads and writes of paying drivers: the driver's papers, his courses by payment, and the
// paid mark of one course.
class PaymentStore {
public:
    explicit PaymentStore(QSqlDatabase db);

    // The shof row of the driver's code; "Няма данни за шофьора!" when there is none.
    Checked<DriverPapers> driverPapers(const QString &kod);

    // The driver's courses of the period that are paid (or not), by date, then route where asked:
    // id, row_version, kod, Data, Marsh, Tovar, kola, KM, Ton, Tarifa, neto, plat, bruto.
    Checked<RowSet> courses(const QString &kod, const Period &period, bool paid, bool byRoute);

    // The fleet as pay reads it: each Config row's truck (trimmed), percent and rated load, in the
    // order the rows were made, so that the later of two rows for one truck counts.
    Checked<QList<PayTruck>> payTrucks();

    // One course as it is stored now, with the columns of courses(); no row when it is gone.
    Checked<RowSet> storedCourse(qint64 id);

    // Writes a course's paid mark if the course is still as it was read at rowVersion; the new row
    // version, or the save error box (the conflict box when another user changed it meanwhile).
    // The statement is prepared once per connection: a mark is one round trip to the server.
    Checked<int> setPaid(qint64 id, int rowVersion, bool paid);

private:
    QSqlDatabase m_db;
};

// "Няма данни за шофьора!" under "ВНИМАНИЕ!"
UserMessage driverMissingMessage();
// "Няма курсове за плащане!" under "ВНИМАНИЕ!"
UserMessage noCoursesToPayMessage();
// "Няма платени курсове!" under "ВНИМАНИЕ!"
UserMessage noPaidCoursesMessage();

}
