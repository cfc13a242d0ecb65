#pragma once

#include "core/dates.h"
#include "core/usermessage.h"
#include "courses/coursepricing.h"
#include "data/rowset.h"

#include <QSqlDatabase>

namespace zarek {

// What a kilometre correction wrote: the row's new version and its money priced again.
struct KmCorrection {
    int rowVersion = 0;
    CourseMoney money;
};

// Courses entered with 1 km as a placeholder, and the writing of their real kilometres and rate.
class KmCorrectionStore {
public:
    explicit KmCorrectionStore(QSqlDatabase db);

    // A truck's courses of exactly 1 km in the period, by date and route: id, row_version, Data,
    // Marsh, Tovar, Kola, KM, Ton, Tarifa, Bruto.
    Checked<RowSet> placeholders(const QString &kola, const Period &period);

    // Writes the kilometres and the rate of a course read at rowVersion, with bruto, procent and
    // neto priced again from them in the same write. A course changed meanwhile is left alone.
    Checked<KmCorrection> correct(qint64 id, int rowVersion, double km, double ton, double rate);

private:
    QSqlDatabase m_db;
};

}
