#include "waybillstore.h"

#include "courses/searchlists.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"
#include "waybills/fuelnorm.h"
#include "waybills/waybillrules.h"

#include <QVariant>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

QString idList(const QList<qint64> &ids, QVariantList &values)
{
    for (qint64 id : ids)
        values.append(id);
    return placeholders(ids.size());
}

Checked<QStringList> list(QSqlDatabase db, const QString &sql)
{
    Query query(db);
    if (auto failure = query.exec(readTitle, sql))
        return *failure;
    QStringList items;
    while (query.next()) {
        const QString item = query.value(0).toString().trimmed();
        if (!item.isEmpty() && !items.contains(item))
            items.append(item);
    }
    return items;
}

}

QStringList WaybillStore::headerColumns()
{
    return {QStringLiteral("ListID"), QStringLiteral("Data"),  QStringLiteral("Kola"),  QStringLiteral("NameDriver"),
            QStringLiteral("SumKM"),  QStringLiteral("SumRazhN"), QStringLiteral("EndKM"), QStringLiteral("ZarN"),
            QStringLiteral("ZarM"),   QStringLiteral("CenaN"), QStringLiteral("CenaM")};
}

QStringList WaybillStore::lineColumns()
{
    return {QStringLiteral("MarshID"), QStringLiteral("Marshrut"), QStringLiteral("KM"),
            QStringLiteral("Ton"),     QStringLiteral("Koef"),     QStringLiteral("RazhN")};
}

Checked<bool> WaybillStore::numberTaken(const QString &listId, qint64 exceptId) const
{
    Query query(m_db);
    if (auto failure
        = query.exec(readTitle, QStringLiteral("SELECT COUNT(*) FROM RowdList WHERE ListID = ? AND id <> ?"),
                     {listId, exceptId}))
        return *failure;
    return query.next() && query.value(0).toLongLong() > 0;
}

Checked<std::optional<double>> WaybillStore::truckNorm(const QString &kola) const
{
    Query query(m_db);
    if (auto failure
        = query.exec(readTitle, QStringLiteral("SELECT Razhod FROM Config WHERE kola = ? ORDER BY id"), {kola}))
        return *failure;
    if (!query.next() || query.value(0).isNull())
        return std::optional<double>();
    return std::optional<double>(query.value(0).toDouble());
}

Checked<WaybillStore::Sums> WaybillStore::lineSums(const QString &listId) const
{
    Query query(m_db);
    if (auto failure = query.exec(
            readTitle, QStringLiteral("SELECT SUM(KM) AS SumKM, SUM(RazhN) AS SumRazhN FROM Marsh WHERE MarshID = ?"),
            {listId}))
        return *failure;
    Sums sums;
    if (query.next()) {
        if (!query.value(0).isNull())
            sums.km = fuelnorm::kilometreSum(query.value(0).toDouble());
        if (!query.value(1).isNull())
            sums.fuel = fuelnorm::fuelSum(query.value(1).toDouble());
    }
    return sums;
}

Checked<QStringList> WaybillStore::driverNames() const
{
    return list(m_db, QStringLiteral("SELECT DISTINCT ime FROM shof ORDER BY ime"));
}

Checked<QStringList> WaybillStore::truckNumbers() const
{
    return searchlists::trucks(m_db);
}

Checked<RecordRow> WaybillStore::saveHeader(RecordRow row, bool adding, const QString &linesNumber,
                                            const QList<qint64> &newLines) const
{
    const QString title = waybills::headerSaveCaption();
    const QString number = row.values.value(QStringLiteral("ListID")).toString();
    Transaction transaction(m_db);
    const RecordStore headers(m_db, QStringLiteral("RowdList"), headerColumns(), QStringLiteral("ListID"));
    if (auto failure = adding ? headers.insert(row, title) : headers.update(row, title))
        return *failure;
    Query query(m_db);
    if (adding && !newLines.isEmpty() && linesNumber != number) {
        QVariantList values{number};
        const QString ids = idList(newLines, values);
        if (auto failure = query.exec(title,
                                      QStringLiteral("UPDATE Marsh SET MarshID = ?, row_version = row_version + 1 "
                                                     "WHERE id IN (%1)")
                                          .arg(ids),
                                      values))
            return *failure;
    }
    // Another waybill of the old number (old data may have two) keeps the lines it shows.
    if (!adding && linesNumber != number) {
        if (auto failure = query.exec(title,
                                      QStringLiteral("UPDATE Marsh SET MarshID = ?, row_version = row_version + 1 "
                                                     "WHERE MarshID = ? AND NOT EXISTS "
                                                     "(SELECT 1 FROM RowdList WHERE ListID = ? AND id <> ?)"),
                                      {number, linesNumber, linesNumber, row.id}))
            return *failure;
    }
    // The header holds the sums of the lines stored under its number; one without lines keeps
    // what it was given.
    const Checked<Sums> sums = lineSums(number);
    if (!sums)
        return sums.message();
    if (sums.value().km || sums.value().fuel) {
        const Checked<Sums> stored = refreshSums(number, title);
        if (!stored)
            return stored.message();
        row.values.insert(QStringLiteral("SumKM"), stored.value().km.value_or(0.0));
        row.values.insert(QStringLiteral("SumRazhN"), stored.value().fuel.value_or(0.0));
    }
    if (!transaction.commit())
        return sqlErrorMessage(title, m_db.lastError());
    return row;
}

Checked<WaybillStore::Sums> WaybillStore::refreshSums(const QString &listId, const QString &errorTitle) const
{
    Checked<Sums> sums = lineSums(listId);
    if (!sums)
        return sums;
    const double km = sums.value().km.value_or(0.0);
    const double fuel = sums.value().fuel.value_or(0.0);
    Query query(m_db);
    if (auto failure
        = query.exec(errorTitle, QStringLiteral("UPDATE RowdList SET SumKM = ?, SumRazhN = ? WHERE ListID = ?"),
                     {km, fuel, listId}))
        return *failure;
    return Sums{km, fuel};
}

Checked<WaybillStore::SavedLine> WaybillStore::saveLine(const RecordStore &lines, RecordRow line, bool adding,
                                                        const QString &errorTitle) const
{
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    // A line moved to another number leaves the sums of its old one behind.
    QString oldNumber;
    if (!adding) {
        Query query(m_db);
        if (auto failure = query.exec(errorTitle, QStringLiteral("SELECT MarshID FROM Marsh WHERE id = ?"), {line.id}))
            return *failure;
        if (query.next())
            oldNumber = query.value(0).toString();
    }
    if (auto failure = adding ? lines.insert(line, errorTitle) : lines.update(line, errorTitle))
        return *failure;
    const QString number = line.values.value(QStringLiteral("MarshID")).toString();
    const Checked<Sums> sums = refreshSums(number, errorTitle);
    if (!sums)
        return sums.message();
    if (!oldNumber.isEmpty() && oldNumber != number) {
        if (const Checked<Sums> old = refreshSums(oldNumber, errorTitle); !old)
            return old.message();
    }
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, m_db.lastError());
    return SavedLine{line, sums.value()};
}

Checked<WaybillStore::Sums> WaybillStore::removeLine(const RecordStore &lines, const RecordRow &line,
                                                     const QString &errorTitle) const
{
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    QString number;
    {
        Query query(m_db);
        if (auto failure = query.exec(errorTitle, QStringLiteral("SELECT MarshID FROM Marsh WHERE id = ?"), {line.id}))
            return *failure;
        if (query.next())
            number = query.value(0).toString();
    }
    if (auto failure = lines.remove(line, errorTitle))
        return *failure;
    const Checked<Sums> sums = refreshSums(number, errorTitle);
    if (!sums)
        return sums;
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, m_db.lastError());
    return sums;
}

std::optional<UserMessage> WaybillStore::deleteWaybill(const RecordRow &row, const QString &errorTitle) const
{
    Transaction transaction(m_db);
    const RecordStore headers(m_db, QStringLiteral("RowdList"), headerColumns(), QStringLiteral("ListID"));
    if (auto failure = headers.remove(row, errorTitle))
        return failure;
    const QString number = row.values.value(QStringLiteral("ListID")).toString();
    Query query(m_db);
    if (auto failure = query.exec(errorTitle,
                                  QStringLiteral("DELETE FROM Marsh WHERE MarshID = ? AND NOT EXISTS "
                                                 "(SELECT 1 FROM RowdList WHERE ListID = ?)"),
                                  {number, number}))
        return failure;
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, m_db.lastError());
    return std::nullopt;
}

Checked<RecordRow> WaybillStore::storeSums(RecordRow row, const Sums &sums, const QString &errorTitle) const
{
    const QVariant km = sums.km ? QVariant(*sums.km) : QVariant(0.0);
    const QVariant fuel = sums.fuel ? QVariant(*sums.fuel) : QVariant(0.0);
    if (auto failure
        = executeOnVersion(m_db, errorTitle,
                           QStringLiteral("UPDATE RowdList SET SumKM = ?, SumRazhN = ?, "
                                          "row_version = row_version + 1 WHERE id = ? AND row_version = ?"),
                           {km, fuel, row.id, row.rowVersion}))
        return *failure;
    ++row.rowVersion;
    row.values.insert(QStringLiteral("SumKM"), km);
    row.values.insert(QStringLiteral("SumRazhN"), fuel);
    return row;
}

std::optional<UserMessage> WaybillStore::deleteLines(const QList<qint64> &ids, const QString &errorTitle) const
{
    if (ids.isEmpty())
        return std::nullopt;
    QVariantList values;
    const QString marks = idList(ids, values);
    Query query(m_db);
    return query.exec(errorTitle, QStringLiteral("DELETE FROM Marsh WHERE id IN (%1)").arg(marks), values);
}

std::optional<UserMessage> WaybillStore::moveLines(const QList<qint64> &ids, const QString &listId,
                                                   const QString &errorTitle) const
{
    if (ids.isEmpty())
        return std::nullopt;
    QVariantList values{listId};
    const QString marks = idList(ids, values);
    Query query(m_db);
    return query.exec(
        errorTitle,
        QStringLiteral("UPDATE Marsh SET MarshID = ?, row_version = row_version + 1 WHERE id IN (%1)").arg(marks),
        values);
}

}
