#include "clientstore.h"

#include "clients/clientrules.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QDateTime>
#include <QVariant>

namespace zarek::clients {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

QStringList storeColumns()
{
    return clientColumns() + QStringList{QStringLiteral("DateMod"), QStringLiteral("TimeMod")};
}

}

ClientStore::ClientStore(QSqlDatabase db) : m_db(std::move(db)) {}

std::unique_ptr<RecordStore> ClientStore::rows() const
{
    return std::make_unique<RecordStore>(m_db, QStringLiteral("Klienti"), storeColumns(), QStringLiteral("Ime"));
}

Checked<RecordRow> ClientStore::save(const RecordRow &typed, bool adding, const QString &errorTitle) const
{
    RecordRow row = typed;
    QVariantMap entry;
    for (const QString &column : clientColumns())
        entry.insert(column, row.values.value(column));
    if (auto refused = checkClient(entry))
        return *refused;
    for (const QString &column : clientColumns())
        row.values.insert(column, column == QLatin1String("SrokDni") ? QVariant(entry.value(column).toInt())
                                                                      : entry.value(column));
    const QDateTime now = QDateTime::currentDateTime();
    row.values.insert(QStringLiteral("DateMod"), now.date());
    row.values.insert(QStringLiteral("TimeMod"), now.time().toString(QStringLiteral("HH:mm:ss")));

    // The row goes first (on SQLite the write lock), then another of the same name is looked for:
    // one found undoes the write and tells it, instead of the unique index's error.
    const QString name = row.values.value(QStringLiteral("Ime")).toString();
    const QString sameName = QStringLiteral("SELECT COUNT(*) FROM Klienti WHERE Ime = ? AND id <> ?");
    std::optional<UserMessage> failure;
    bool duplicate = false;
    {
        Transaction transaction(m_db);
        if (!transaction.isActive())
            return sqlErrorMessage(errorTitle, transaction.lastError());
        const auto store = rows();
        failure = adding ? store->insert(row, errorTitle) : store->update(row, errorTitle);
        if (!failure) {
            Query query(m_db);
            if (auto unread = query.exec(errorTitle, sameName, {name, row.id}))
                failure = unread;
            else if (query.next() && query.value(0).toInt() > 0)
                duplicate = true;
            else if (query.finish(); !transaction.commit())
                failure = sqlErrorMessage(errorTitle, transaction.lastError());
        }
    }  // rolled back unless committed
    if (failure && !duplicate) {
        // A write the unique index stopped (another workstation's client of that name).
        Query query(m_db);
        if (query.exec(errorTitle, sameName, {name, typed.id}) || !query.next() || query.value(0).toInt() == 0)
            return *failure;
        duplicate = true;
    }
    if (duplicate)
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"),
                                     QStringLiteral("Клиент с име „%1“ вече има в регистъра!").arg(name),
                                     QStringLiteral("Моля, въведете друго име."), UserMessage::Icon::Exclamation);
    return row;
}

Checked<qint64> ClientStore::addName(const QString &name, const QString &errorTitle) const
{
    RecordRow row;
    row.values.insert(QStringLiteral("Ime"), name);
    const Checked<RecordRow> written = save(row, true, errorTitle);
    if (!written)
        return written.message();
    return written.value().id;
}

Checked<qint64> ClientStore::idOf(const QString &name) const
{
    Query query(m_db);
    if (auto failure = query.exec(readTitle, QStringLiteral("SELECT id FROM Klienti WHERE Ime = ?"), {name.trimmed()}))
        return *failure;
    return query.next() ? query.value(0).toLongLong() : qint64(0);
}

Checked<QStringList> ClientStore::names() const
{
    Query query(m_db);
    if (auto failure = query.exec(readTitle, QStringLiteral("SELECT Ime FROM Klienti ORDER BY Ime")))
        return *failure;
    QStringList list;
    while (query.next())
        list.append(query.value(0).toString());
    return list;
}

}
