#include "paymentstore.h"

#include "data/sqlerror.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

const QString readErrorTitle = QStringLiteral("ГРЕШКА при четене!");
const QString saveErrorTitle = QStringLiteral("ГРЕШКА при запис!");
const QString courseColumns = QStringLiteral(
    "SELECT id, row_version, kod, Data, Marsh, Tovar, kola, KM, Ton, Tarifa, neto, plat, bruto FROM tabl ");

UserMessage attention(const QString &text)
{
    return UserMessage{QStringLiteral("ВНИМАНИЕ!"), text};
}

}

UserMessage driverMissingMessage() { return attention(QStringLiteral("Няма данни за шофьора!")); }
UserMessage noCoursesToPayMessage() { return attention(QStringLiteral("Няма курсове за плащане!")); }
UserMessage noPaidCoursesMessage() { return attention(QStringLiteral("Няма платени курсове!")); }

PaymentStore::PaymentStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<DriverPapers> PaymentStore::driverPapers(const QString &kod)
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT EGN, LKarta FROM shof WHERE kod = ? ORDER BY id"));
    query.addBindValue(kod);
    if (!query.exec())
        return sqlErrorMessage(readErrorTitle, query.lastError());
    if (!query.next())
        return driverMissingMessage();
    return DriverPapers{query.value(0).toString(), query.value(1).toString()};
}

Checked<RowSet> PaymentStore::courses(const QString &kod, const Period &period, bool paid, bool byRoute)
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(courseColumns + QStringLiteral("WHERE plat = ? AND kod = ? AND Data BETWEEN ? AND ? ORDER BY Data, ")
                  + (byRoute ? QStringLiteral("Marsh, id") : QStringLiteral("id")));
    query.addBindValue(paid);
    query.addBindValue(kod);
    query.addBindValue(period.from);
    query.addBindValue(period.to);
    if (!query.exec())
        return sqlErrorMessage(readErrorTitle, query.lastError());
    return RowSet::fromQuery(query, readErrorTitle);
}

Checked<QList<PayTruck>> PaymentStore::payTrucks()
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT kola, Procent, Ton FROM Config ORDER BY id")))
        return sqlErrorMessage(readErrorTitle, query.lastError());
    QList<PayTruck> trucks;
    while (query.next())
        trucks.append({query.value(0).toString().trimmed(), query.value(1).toDouble(), query.value(2).toDouble()});
    if (query.lastError().isValid())
        return sqlErrorMessage(readErrorTitle, query.lastError());
    return trucks;
}

Checked<RowSet> PaymentStore::storedCourse(qint64 id)
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(courseColumns + QStringLiteral("WHERE id = ?"));
    query.addBindValue(id);
    if (!query.exec())
        return sqlErrorMessage(readErrorTitle, query.lastError());
    return RowSet::fromQuery(query, readErrorTitle);
}

Checked<int> PaymentStore::setPaid(qint64 id, int rowVersion, bool paid)
{
    // One statement is one transaction of its own: the mark and the new version go together.
    if (!m_markQuery) {
        m_markQuery.emplace(m_db);
        if (!m_markQuery->prepare(QStringLiteral("UPDATE tabl SET plat = ?, row_version = row_version + 1 "
                                                 "WHERE id = ? AND row_version = ?"))) {
            const UserMessage message = sqlErrorMessage(saveErrorTitle, m_markQuery->lastError());
            m_markQuery.reset();
            return message;
        }
    }
    QSqlQuery &query = *m_markQuery;
    query.bindValue(0, paid);
    query.bindValue(1, id);
    query.bindValue(2, rowVersion);
    if (!query.exec())
        return sqlErrorMessage(saveErrorTitle, query.lastError());
    if (query.numRowsAffected() != 1)
        return rowConflictMessage(saveErrorTitle);
    return rowVersion + 1;
}

}
