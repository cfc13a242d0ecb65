#include "kmcorrectionstore.h"

#include "courses/coursecheck.h"
#include "courses/coursestore.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>

namespace zarek {

KmCorrectionStore::KmCorrectionStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<RowSet> KmCorrectionStore::placeholders(const QString &kola, const Period &period)
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT id, row_version, Data, Marsh, Tovar, Kola, KM, Ton, Tarifa, Bruto FROM tabl "
                                 "WHERE Kola = ? AND KM = 1 AND Data BETWEEN ? AND ? ORDER BY data, Marsh, id"));
    query.addBindValue(kola);
    query.addBindValue(period.from);
    query.addBindValue(period.to);
    if (!query.exec())
        return sqlErrorMessage(QStringLiteral("ГРЕШКА при четене!"), query.lastError());
    return RowSet::fromQuery(query, QStringLiteral("ГРЕШКА при четене!"));
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
    QSqlQuery query(m_db);
    query.prepare(QStringLiteral("UPDATE tabl SET km = ?, Tarifa = ?, bruto = ?, procent = ?, neto = ?, "
                                 "row_version = row_version + 1 WHERE id = ? AND row_version = ?"));
    query.addBindValue(km);
    query.addBindValue(rate);
    query.addBindValue(money.bruto.toDouble());
    query.addBindValue(money.procent.toDouble());
    query.addBindValue(money.neto.toDouble());
    query.addBindValue(id);
    query.addBindValue(rowVersion);
    if (!query.exec())
        return sqlErrorMessage(saveErrorTitle(), query.lastError());
    if (query.numRowsAffected() != 1)
        return CourseStore::conflictMessage(saveErrorTitle());
    if (!transaction.commit())
        return sqlErrorMessage(saveErrorTitle(), m_db.lastError());
    return KmCorrection{rowVersion + 1, money};
}

}
