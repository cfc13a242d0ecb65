#include "tripstore.h"

#include "data/query.h"
#include "data/sqlerror.h"
#include "data/textlist.h"
#include "data/transaction.h"

#include <QVariant>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

}

TripStore::TripStore(QSqlDatabase db) : m_db(std::move(db)) {}

std::unique_ptr<RecordStore> TripStore::trips() const
{
    return std::make_unique<RecordStore>(m_db, QStringLiteral("ExternalKurs"), tripColumns(), QStringLiteral("KursID"));
}

Checked<bool> TripStore::numberTaken(const QString &number, qint64 exceptId) const
{
    const Checked<QVariant> count
        = scalar(m_db, readTitle, QStringLiteral("SELECT COUNT(*) FROM ExternalKurs WHERE KursID = ? AND id <> ?"),
                 {number, exceptId});
    if (!count)
        return count.message();
    return count.value().toLongLong() > 0;
}

std::optional<UserMessage> TripStore::addFirm(const FirmAddress &typed, const QString &errorTitle) const
{
    const FirmAddress firm = typed.trimmed();
    // An empty part is stored as an empty text, never as no value, so that it is found again.
    const auto text = [](const QString &part) { return part.isNull() ? QStringLiteral("") : part; };
    const QVariantList parts{text(firm.name), text(firm.adres), text(firm.city), text(firm.country)};
    // A part never stored counts as an empty one, so an old row without it is still the same firm.
    const Checked<QVariant> found = scalar(
        m_db, errorTitle,
        QStringLiteral("SELECT COUNT(*) FROM Firms WHERE COALESCE(SrName, '') = ? AND COALESCE(SrAdres, '') = ? "
                       "AND COALESCE(SrCity, '') = ? AND COALESCE(SrCountry, '') = ?"),
        parts);
    if (!found)
        return found.message();
    if (found.value().toLongLong() > 0)
        return std::nullopt;
    return execute(m_db, errorTitle,
                   QStringLiteral("INSERT INTO Firms (SrName, SrAdres, SrCity, SrCountry) VALUES (?, ?, ?, ?)"), parts);
}

Checked<RecordRow> TripStore::save(const RecordRow &typed, bool adding, const QString &errorTitle) const
{
    RecordRow row = typed;
    // Refused here as on the screen, whatever path writes the trip.
    if (auto failure = checkTripFigures(row.values))
        return *failure;
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, m_db.lastError());
    // Checked again here: another workstation may have taken the number since it was typed.
    const Checked<bool> taken = numberTaken(row.values.value(QStringLiteral("KursID")).toString(), adding ? 0 : row.id);
    if (!taken)
        return taken.message();
    if (taken.value())
        return tripNumberTakenMessage();
    for (const FirmAddress &firm : {tripSender(row.values), tripReceiver(row.values)}) {
        if (const auto failure = addFirm(firm, errorTitle))
            return *failure;
    }
    const auto store = trips();
    if (const auto failure = adding ? store->insert(row, errorTitle) : store->update(row, errorTitle))
        return *failure;
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, m_db.lastError());
    return row;
}

Checked<QList<FirmAddress>> TripStore::firms() const
{
    Query query(m_db, QStringLiteral("SELECT SrName, SrAdres, SrCity, SrCountry FROM Firms ORDER BY SrName, id"));
    if (auto failure = query.run(readTitle))
        return *failure;
    QList<FirmAddress> firms;
    while (query.next())
        firms.append({query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
                      query.value(3).toString()});
    return firms;
}

QStringList TripStore::column(const QString &sql) const
{
    return nonBlankTexts(m_db, sql);
}

QStringList TripStore::driverNames() const
{
    return column(QStringLiteral("SELECT DISTINCT ime FROM shof ORDER BY ime"));
}

QStringList TripStore::tractors() const
{
    return column(QStringLiteral("SELECT DISTINCT kola FROM Config ORDER BY kola"));
}

QStringList TripStore::trailers() const
{
    return column(QStringLiteral("SELECT DISTINCT TruckR FROM ExternalKurs ORDER BY TruckR"));
}

}
