#include "kmcorrectionstore.h"

#include "courses/coursecheck.h"
#include "courses/coursestore.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QVariant>

namespace zarek {

KmCorrectionStore::KmCorrectionStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<RowSet> KmCorrectionStore::placeholders(const QString &kola, const Period &period)
{
    return readRows(m_db, QStringLiteral("ГРЕШКА при четене!"),
                    QStringLiteral("SELECT id, row_version, Data, Marsh, Tovar, Kola, KM, Ton, Tarifa, Bruto FROM tabl "
                                   "WHERE Kola = ? AND KM = 1 AND Data BETWEEN ? AND ? ORDER BY data, Marsh, id"),
                    {kola, period.from, period.to});
}

Checked<KmCorrection> KmCorrectionStore::correct(qint64 id, int rowVersion, double km, double ton, double rate)
{
    // The grid's edits reach here without the editor's checks: the same limits hold.
    if (const auto refusal = checkCourseNumbers(ton, km, rate))
        return *refusal;
    const CourseMoney money = priceCourse(ton, km, rate);
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(saveErrorTitle(), m_db.lastError());
    if (auto failure = executeOnVersion(
            m_db, saveErrorTitle(),
            QStringLiteral("UPDATE tabl SET km = ?, Tarifa = ?, bruto = ?, procent = ?, neto = ?, "
                           "row_version = row_version + 1 WHERE id = ? AND row_version = ?"),
            {km, rate, money.bruto.toDouble(), money.procent.toDouble(), money.neto.toDouble(), id, rowVersion}))
        return *failure;
    if (!transaction.commit())
        return sqlErrorMessage(saveErrorTitle(), m_db.lastError());
    return KmCorrection{rowVersion + 1, money};
}

}
