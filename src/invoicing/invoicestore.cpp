#include "invoicestore.h"

#include "core/docnumber.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QHash>
#include <QSqlError>
#include <QVariant>
#include <map>
#include <tuple>

namespace zarek {

namespace {

const QString readError = QStringLiteral("ГРЕШКА при четене!");
const QString saveError = QStringLiteral("ГРЕШКА при запис!");

const QString courseColumns = QStringLiteral(
    "SELECT id, row_version, Data, Marsh, Tovar, kola, KM, Ton, Tarifa, bruto, Fakt, NomFakt, Klient FROM tabl ");


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

SettleOutcome failedRecord(const RecordOutcome &recorded)
{
    SettleOutcome outcome;
    outcome.kind = recorded.kind == RecordOutcome::Kind::Refused ? SettleOutcome::Kind::Refused
                                                                  : SettleOutcome::Kind::Failed;
    outcome.message = recorded.message;
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
    Checked<RowSet> read = selection.mode == FakturaMode::EditFakt
        ? readRows(m_db, readError, courseColumns + QStringLiteral("WHERE NomFakt = ? ORDER BY data, id"),
                   {selection.number})
        : readRows(m_db, readError,
                   courseColumns
                       + QStringLiteral("WHERE Klient = ? AND Fakt = ? AND data BETWEEN ? AND ? "
                                        "ORDER BY data, id"),
                   {selection.klient, false, selection.period.from, selection.period.to});
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
    Query query(m_db,
                QStringLiteral("SELECT NomFakt FROM tabl WHERE NomFakt <> ? UNION SELECT NomFakt FROM Fakturi "
                               "WHERE NomFakt <> ? ORDER BY 1 DESC"));
    if (query.run(readError, {noDocumentNumber(), noDocumentNumber()}))
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
    Query issued(m_db);
    Query taken(m_db);
    Query update(m_db);
    Query currency(m_db);
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return failed(transaction.lastError());

    if (invoice.kind == InvoiceRecord::Kind::Issue) {
        // Courses may carry the number from before numbers were recorded: they are another invoice's.
        if (taken.exec(QString(), QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = ?"), {invoice.number})
            || !taken.next())
            return failed(taken.lastError());
        if (taken.value(0).toLongLong() > 0)
            return numberTaken();
        taken.finish();
        if (invoice.taxInvoice) {
            // The tax invoice takes its number from the sequence before any course is written,
            // and is recorded with them or not at all.
            TaxDocument document = *invoice.taxInvoice;
            document.number = invoice.number;
            const RecordOutcome recorded = TaxInvoiceStore(m_db).record(document);
            if (recorded.kind == RecordOutcome::Kind::NumberTaken)
                return numberTaken();
            if (!recorded)
                return failedRecord(recorded);
            outcome.documentId = recorded.id;
            outcome.documentNumber = recorded.number;
        }
        // The number is taken before any course is written: a second workstation issuing it
        // meanwhile waits here for the first one's commit and is then refused by the unique index.
        else if (issued.exec(QString(), QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient, Data) VALUES (?, ?, ?)"),
                        {invoice.number, invoice.klient, stamp.date()}))
            return isUniqueViolation(issued.lastError()) ? numberTaken() : failed(issued.lastError());
    }

    if (invoice.kind == InvoiceRecord::Kind::Correct && invoice.taxInvoiceId > 0 && !invoice.takenOff.isEmpty()) {
        // An issued tax invoice never changes: the courses taken off it get a credit note, its
        // number taken before any course is written, as an invoice's is.
        const RecordOutcome credited =
            TaxInvoiceStore(m_db).recordCredit(invoice.taxInvoiceId, invoice.takenOff, invoice.noteDate, invoice.reason);
        if (!credited)
            return failedRecord(credited);
        outcome.documentId = credited.id;
        outcome.documentNumber = credited.number;
        // The note settles what is still open of its invoice; what the invoice no longer owes (it
        // was paid) stays with the client as credit. The invoice's version is raised first, so a
        // payment being recorded for it at the same moment waits, then finds it changed.
        const QString open = QStringLiteral("(d.Obshto - COALESCE((SELECT SUM(s.Suma) FROM Pogasiavania s WHERE s.DokID = d.id), 0))");
        Query settle(m_db);
        if (settle.exec(QString(), QStringLiteral("UPDATE FaktDok SET row_version = row_version + 1 WHERE id = ?"),
                        {invoice.taxInvoiceId})
            || settle.exec(QString(),
                           QStringLiteral("INSERT INTO Pogasiavania (DokID, KreditID, Data, Suma) SELECT d.id, k.id, k.Data, "
                                          "CASE WHEN k.Obshto < %1 THEN k.Obshto ELSE %1 END FROM FaktDok d, FaktDok k "
                                          "WHERE d.id = ? AND k.id = ? AND %1 > 0 AND k.Obshto > 0").arg(open),
                           {invoice.taxInvoiceId, credited.id}))
            return failed(settle.lastError());
    }

    // Courses that get the same values from the same version go in one statement; the count of
    // rows it changed tells whether each of them was still as read.
    std::map<std::tuple<bool, QString, qint64>, QList<qint64>> groups;
    for (const CourseWrite &write : writes)
        groups[{write.fakt, write.nomFakt, write.rowVersion}].append(write.id);
    const QDate date = stamp.date();
    const QTime time(stamp.time().hour(), stamp.time().minute(), stamp.time().second());
    for (const auto &[key, ids] : groups) {
        const auto &[fakt, nomFakt, rowVersion] = key;
        for (qsizetype start = 0; start < ids.size(); start += batchSize) {
            const QList<qint64> batch = ids.mid(start, batchSize);
            const QString sql = QStringLiteral("UPDATE tabl SET Fakt = ?, NomFakt = ?, DateMod = ?, TimeMod = ?, "
                                               "row_version = row_version + 1 WHERE row_version = ? AND id IN (%1)")
                                    .arg(placeholders(batch.size()));
            QVariantList values{fakt, nomFakt, date, time, rowVersion};
            for (const qint64 id : batch)
                values.append(id);
            if (update.exec(QString(), sql, values))
                return failed(update.lastError());
            if (update.rowsAffected() != batch.size()) {
                update.finish();
                outcome.kind = SettleOutcome::Kind::Conflict;
                outcome.written = 0;
                outcome.documentId = 0;  // rolled back with the rest
                outcome.documentNumber.clear();
                return outcome;
            }
            outcome.written += static_cast<int>(batch.size());
        }
    }
    update.finish();
    if (invoice.kind == InvoiceRecord::Kind::Issue) {
        // The currency goes with the number: a number once emptied may be listed still.
        if (currency.exec(QString(), QStringLiteral("DELETE FROM EvroFakt WHERE NomFakt = ?"), {invoice.number}))
            return failed(currency.lastError());
        if (invoice.euro) {
            if (currency.exec(QString(), QStringLiteral("INSERT INTO EvroFakt (NomFakt) VALUES (?)"), {invoice.number}))
                return isUniqueViolation(currency.lastError()) ? numberTaken() : failed(currency.lastError());
        }
    } else if (invoice.kind == InvoiceRecord::Kind::Correct) {
        // An invoice with every course taken off has vanished: its number is free again.
        if (taken.exec(QString(), QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = ?"), {invoice.number})
            || !taken.next())
            return failed(taken.lastError());
        // A tax invoice keeps its number for ever: a credit note took its courses off.
        const bool emptied = taken.value(0).toLongLong() == 0 && invoice.taxInvoiceId == 0;
        taken.finish();
        if (emptied) {
            for (const char *table : {"Fakturi", "EvroFakt"}) {
                if (currency.exec(QString(),
                                  QStringLiteral("DELETE FROM %1 WHERE NomFakt = ?").arg(QLatin1String(table)),
                                  {invoice.number}))
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
    Query query(m_db);
    for (qsizetype start = 0; start < writes.size(); start += batchSize) {
        const QList<CourseWrite> batch = writes.mid(start, batchSize);
        QVariantList ids;
        for (const CourseWrite &write : batch)
            ids.append(write.id);
        if (query.exec(
                readError,
                QStringLiteral("SELECT id, row_version FROM tabl WHERE id IN (%1)").arg(placeholders(batch.size())),
                ids))
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
