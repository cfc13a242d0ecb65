#include "paymentstore.h"

#include "data/query.h"
#include "data/sqlerror.h"

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
    Query query(m_db, QStringLiteral("SELECT EGN, LKarta FROM shof WHERE kod = ? ORDER BY id"));
    if (auto failure = query.run(readErrorTitle, {kod}))
        return *failure;
    if (!query.next())
        return driverMissingMessage();
    return DriverPapers{query.value(0).toString(), query.value(1).toString()};
}

Checked<RowSet> PaymentStore::courses(const QString &kod, const Period &period, bool paid, bool byRoute)
{
    return readRows(m_db, readErrorTitle,
                    courseColumns
                        + QStringLiteral("WHERE plat = ? AND kod = ? AND Data BETWEEN ? AND ? ORDER BY Data, ")
                        + (byRoute ? QStringLiteral("Marsh, id") : QStringLiteral("id")),
                    {paid, kod, period.from, period.to});
}

Checked<QList<PayTruck>> PaymentStore::payTrucks()
{
    Query query(m_db, QStringLiteral("SELECT kola, Procent, Ton FROM Config ORDER BY id"));
    if (auto failure = query.run(readErrorTitle))
        return *failure;
    QList<PayTruck> trucks;
    while (query.next())
        trucks.append({query.value(0).toString().trimmed(), query.value(1).toDouble(), query.value(2).toDouble()});
    if (auto failure = query.readFailure(readErrorTitle))
        return *failure;
    return trucks;
}

Checked<RowSet> PaymentStore::storedCourse(qint64 id)
{
    return readRows(m_db, readErrorTitle, courseColumns + QStringLiteral("WHERE id = ?"), {id});
}

Checked<int> PaymentStore::setPaid(qint64 id, int rowVersion, bool paid)
{
    // One statement is one transaction of its own: the mark and the new version go together.
    if (auto failure = executeOnVersion(m_db, saveErrorTitle,
                                        QStringLiteral("UPDATE tabl SET plat = ?, row_version = row_version + 1 "
                                                       "WHERE id = ? AND row_version = ?"),
                                        {paid, id, rowVersion}))
        return *failure;
    return rowVersion + 1;
}

}
