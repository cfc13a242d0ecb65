#include "invoicestore.h"

#include "core/docnumber.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QHash>
#include <QSqlError>
#include <QSqlQuery>
#include <QVariant>
#include <map>
#include <tuple>

namespace zarek {

namespace {

const QString readError = QStringLiteral("ГРЕШКА при четене!");
const QString saveError = QStringLiteral("ГРЕШКА при запис!");

const QString courseColumns = QStringLiteral(
    "SELECT id, row_version, Data, Marsh, Tovar, kola, KM, Ton, Tarifa, bruto, Fakt, NomFakt, Klient FROM tabl ");

QString placeholders(qsizetype count)
{
    QString text;
    text.reserve(count * 3);
    for (qsizetype i = 0; i < count; ++i)
        text += i == 0 ? QStringLiteral("?") : QStringLiteral(", ?");
    return text;
}

// The engine refused a row because its key is taken: SQLite's SQLITE_CONSTRAINT (19, or 2067 as
// its extended code), PostgreSQL's unique_violation.
bool isUniqueViolation(const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    return code == QLatin1String("23505") || code == QLatin1String("19") || code == QLatin1String("2067");
}

SettleOutcome numberTaken()
{
    SettleOutcome outcome;
    outcome.kind = SettleOutcome::Kind::NumberTaken;
    return outcome;
}

SettleOutcome failed(const QSqlError &error)
{
    SettleOutcome outcome;
    outcome.kind = SettleOutcome::Kind::Failed;
    outcome.message = sqlErrorMessage(saveError, error);
    return outcome;
}

}


InvoiceStore::InvoiceStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<RowSet> InvoiceStore::courses(const FakturaSelection &selection)
{
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    if (selection.mode == FakturaMode::EditFakt) {
        query.prepare(courseColumns + QStringLiteral("WHERE NomFakt = ? ORDER BY data, id"));
        query.addBindValue(selection.number);
    } else {
        query.prepare(courseColumns + QStringLiteral("WHERE Klient = ? AND Fakt = ? AND data BETWEEN ? AND ? "
                                                     "ORDER BY data, id"));
        query.addBindValue(selection.klient);
        query.addBindValue(false);
        query.addBindValue(selection.period.from);
        query.addBindValue(selection.period.to);
    }
    if (!query.exec())
        return sqlErrorMessage(readError, query.lastError());
    Checked<RowSet> read = RowSet::fromQuery(query, readError);
    if (!read || selection.mode == FakturaMode::EditFakt
        || (selection.kola.trimmed().isEmpty() && selection.marsh.trimmed().isEmpty()
            && selection.tovar.trimmed().isEmpty()))
        return read;
    // Truck, route and cargo narrow the client's courses here, alike on both engines and in any
    // case (LIKE differs between them on case and would need its wildcards escaped).
    const RowSet &all = read.value();
    RowSet kept(all.columns());
    const int kola = all.column(QStringLiteral("kola"));
    const int marsh = all.column(QStringLiteral("Marsh"));
    const int tovar = all.column(QStringLiteral("Tovar"));
    QList<QVariant> cells(all.columnCount());
    for (int row = 0; row < all.rowCount(); ++row) {
        if (!matchesPrefix(all.value(row, kola).toString(), selection.kola)
            || !matchesPrefix(all.value(row, marsh).toString(), selection.marsh)
            || !matchesPrefix(all.value(row, tovar).toString(), selection.tovar))
            continue;
        for (int c = 0; c < all.columnCount(); ++c)
            cells[c] = all.value(row, c);
        kept.appendRow(cells);
    }
    return kept;
}

QStringList InvoiceStore::usedNumbers()
{
    QStringList numbers;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT NomFakt FROM tabl WHERE NomFakt <> ? UNION SELECT NomFakt FROM Fakturi "
                                 "WHERE NomFakt <> ? ORDER BY 1 DESC"));
    query.addBindValue(noDocumentNumber());
    query.addBindValue(noDocumentNumber());
    if (!query.exec())
        return numbers;
    while (query.next()) {
        const QString number = query.value(0).toString().trimmed();
        if (!number.isEmpty())
            numbers.append(number);
    }
    return numbers;
}

SettleOutcome InvoiceStore::settle(const QList<CourseWrite> &writes, const QDateTime &stamp,
                                   const InvoiceRecord &invoice)
{
    if (writes.isEmpty())
        return {};
    SettleOutcome outcome = writeAll(writes, stamp, invoice);
    // Rolled back by now: what changed is read as it stands committed.
    if (outcome.kind == SettleOutcome::Kind::Conflict)
        outcome.changed = changedSince(writes);
    return outcome;
}

SettleOutcome InvoiceStore::writeAll(const QList<CourseWrite> &writes, const QDateTime &stamp,
                                     const InvoiceRecord &invoice)
{
    SettleOutcome outcome;
    // The statements are made before the transaction so that they are freed after its rollback.
    QSqlQuery issued(m_db);
    QSqlQuery taken(m_db);
    QSqlQuery update(m_db);
    QSqlQuery currency(m_db);
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return failed(transaction.lastError());

    if (invoice.kind == InvoiceRecord::Kind::Issue) {
        // Courses may carry the number from before numbers were recorded: they are another invoice's.
        taken.prepare(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = ?"));
        taken.addBindValue(invoice.number);
        if (!taken.exec() || !taken.next())
            return failed(taken.lastError());
        if (taken.value(0).toLongLong() > 0)
            return numberTaken();
        taken.finish();
        // The number is taken before any course is written: a second workstation issuing it
        // meanwhile waits here for the first one's commit and is then refused by the unique index.
        issued.prepare(QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient, Data) VALUES (?, ?, ?)"));
        issued.addBindValue(invoice.number);
        issued.addBindValue(invoice.klient);
        issued.addBindValue(stamp.date());
        if (!issued.exec())
            return isUniqueViolation(issued.lastError()) ? numberTaken() : failed(issued.lastError());
    }

    // Courses that get the same values from the same version go in one statement; the count of
    // rows it changed tells whether each of them was still as read.
    std::map<std::tuple<bool, QString, qint64>, QList<qint64>> groups;
    for (const CourseWrite &write : writes)
        groups[{write.fakt, write.nomFakt, write.rowVersion}].append(write.id);
    const QDate date = stamp.date();
    const QTime time(stamp.time().hour(), stamp.time().minute(), stamp.time().second());
    QString preparedFor;
    for (const auto &[key, ids] : groups) {
        const auto &[fakt, nomFakt, rowVersion] = key;
        for (qsizetype start = 0; start < ids.size(); start += batchSize) {
            const QList<qint64> batch = ids.mid(start, batchSize);
            const QString sql = QStringLiteral("UPDATE tabl SET Fakt = ?, NomFakt = ?, DateMod = ?, TimeMod = ?, "
                                               "row_version = row_version + 1 WHERE row_version = ? AND id IN (%1)")
                                    .arg(placeholders(batch.size()));
            if (sql != preparedFor) {
                if (!update.prepare(sql))
                    return failed(update.lastError());
                preparedFor = sql;
            }
            update.addBindValue(fakt);
            update.addBindValue(nomFakt);
            update.addBindValue(date);
            update.addBindValue(time);
            update.addBindValue(rowVersion);
            for (const qint64 id : batch)
                update.addBindValue(id);
            if (!update.exec())
                return failed(update.lastError());
            if (update.numRowsAffected() != batch.size()) {
                update.finish();
                outcome.kind = SettleOutcome::Kind::Conflict;
                outcome.written = 0;
                return outcome;
            }
            outcome.written += static_cast<int>(batch.size());
        }
    }
    update.finish();
    if (invoice.kind == InvoiceRecord::Kind::Issue) {
        // The currency goes with the number: a number once emptied may be listed still.
        currency.prepare(QStringLiteral("DELETE FROM EvroFakt WHERE NomFakt = ?"));
        currency.addBindValue(invoice.number);
        if (!currency.exec())
            return failed(currency.lastError());
        if (invoice.euro) {
            currency.prepare(QStringLiteral("INSERT INTO EvroFakt (NomFakt) VALUES (?)"));
            currency.addBindValue(invoice.number);
            if (!currency.exec())
                return isUniqueViolation(currency.lastError()) ? numberTaken() : failed(currency.lastError());
        }
    } else if (invoice.kind == InvoiceRecord::Kind::Correct) {
        // An invoice with every course taken off has vanished: its number is free again.
        taken.prepare(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = ?"));
        taken.addBindValue(invoice.number);
        if (!taken.exec() || !taken.next())
            return failed(taken.lastError());
        const bool emptied = taken.value(0).toLongLong() == 0;
        taken.finish();
        if (emptied) {
            for (const char *table : {"Fakturi", "EvroFakt"}) {
                currency.prepare(QStringLiteral("DELETE FROM %1 WHERE NomFakt = ?").arg(QLatin1String(table)));
                currency.addBindValue(invoice.number);
                if (!currency.exec())
                    return failed(currency.lastError());
            }
        }
    }
    if (!transaction.commit())
        return failed(transaction.lastError());
    return outcome;
}

QList<qint64> InvoiceStore::changedSince(const QList<CourseWrite> &writes)
{
    QHash<qint64, qint64> now;
    QSqlQuery query(m_db);
    query.setForwardOnly(true);
    for (qsizetype start = 0; start < writes.size(); start += batchSize) {
        const QList<CourseWrite> batch = writes.mid(start, batchSize);
        query.prepare(QStringLiteral("SELECT id, row_version FROM tabl WHERE id IN (%1)").arg(placeholders(batch.size())));
        for (const CourseWrite &write : batch)
            query.addBindValue(write.id);
        if (!query.exec())
            continue;
        while (query.next())
            now.insert(query.value(0).toLongLong(), query.value(1).toLongLong());
    }
    QList<qint64> changed;
    for (const CourseWrite &write : writes) {
        const auto found = now.constFind(write.id);
        if (found == now.constEnd() || *found != write.rowVersion)
            changed.append(write.id);
    }
    return changed;
}

}
