#include "receivables/receivablesstore.h"

#include "data/dialect.h"
#include "data/query.h"
#include "data/transaction.h"
#include "invoicing/taxdocument.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <map>

namespace zarek::receivables {

namespace {

const QString paymentTitle = QStringLiteral("Плащания от клиенти");
const QString receivablesTitle = QStringLiteral("Вземания");
const QString accountTitle = QStringLiteral("Извлечение по сметка");

QChar firstChar(const QVariant &value)
{
    const QString text = value.toString();
    return text.isEmpty() ? QChar() : text.at(0);
}

QDate dateOf(const QVariant &value)
{
    if (value.metaType().id() == QMetaType::QDate)
        return value.toDate();
    return QDate::fromString(value.toString().left(10), Qt::ISODate);
}

Money centsOf(const QVariant &value)
{
    return value.isNull() ? Money() : Money::fromCents(value.toLongLong());
}

Currency otherOf(Currency currency)
{
    return currency == Currency::Leva ? Currency::Euro : Currency::Leva;
}

UserMessage refusal(const QString &title, const QString &fault, const QString &request)
{
    return UserMessage::twoLines(title, fault, request, UserMessage::Icon::Exclamation);
}

UserMessage failure(const QString &title, const QSqlError &error)
{
    return UserMessage::error(title, error.nativeErrorCode().isEmpty() ? QStringLiteral("0") : error.nativeErrorCode(),
                              error.text());
}

// On PostgreSQL the rows read here stay locked until the transaction ends; SQLite's transaction
// already holds the database's write lock.
QString forUpdate(const QSqlDatabase &db)
{
    return dialectOf(db) == Dialect::PostgreSQL ? QStringLiteral(" FOR UPDATE") : QString();
}

// The documents a condition on FaktDok d selects, with what settles them, oldest due first; openOnly:
// those that still owe something.
Checked<QList<OpenDocument>> documentsWhere(QSqlDatabase db, const QString &condition, const QVariantList &values,
                                            bool openOnly)
{
    Query read(db, QStringLiteral("SELECT d.id, d.row_version, d.Nomer, d.Vid, d.Data, d.DataPadej, d.Valuta, d.Obshto, "
                                  "(SELECT COALESCE(SUM(s.Suma), 0) FROM Pogasiavania s WHERE s.DokID = d.id) "
                                  "FROM FaktDok d WHERE ") + condition);
    if (auto message = read.run(paymentTitle, values))
        return *message;
    QList<OpenDocument> documents;
    while (read.next()) {
        OpenDocument document;
        document.id = read.value(0).toLongLong();
        document.version = read.value(1).toLongLong();
        document.number = read.value(2).toString();
        document.kind = firstChar(read.value(3));
        document.issued = dateOf(read.value(4));
        document.due = dateOf(read.value(5));
        document.currency = currencyFromCode(read.value(6).toString());
        document.total = centsOf(read.value(7));
        document.settled = centsOf(read.value(8));
        if (!openOnly || document.open() > Money())
            documents.append(document);
    }
    if (auto message = read.readFailure(paymentTitle))
        return *message;
    sortOldestFirst(documents);
    return documents;
}

// The documents, locked, with what settles them now (read after the lock, so another
// workstation's settlements committed meanwhile are counted).
Checked<QList<OpenDocument>> lockedDocuments(QSqlDatabase db, const QString &where, const QVariantList &values)
{
    QList<qint64> ids;
    {
        Query lock(db, QStringLiteral("SELECT id FROM FaktDok WHERE ") + where + forUpdate(db));
        if (auto message = lock.run(paymentTitle, values))
            return *message;
        while (lock.next())
            ids.append(lock.value(0).toLongLong());
    }
    QList<OpenDocument> documents;
    if (ids.isEmpty())
        return documents;
    QVariantList idValues;
    for (qint64 id : ids)
        idValues.append(id);
    return documentsWhere(db, QStringLiteral("d.id IN (%1)").arg(placeholders(idValues.size())), idValues, false);
}

// Writes the settlements of one payment or credit note: each document's version raised (the
// conflict box when it is not the one read), each checked never to be settled beyond its total.
std::optional<UserMessage> writeSettlements(QSqlDatabase db, const QString &title, const QString &owner, qint64 ownerId,
                                            const QDate &date, const QList<Settlement> &settlements,
                                            const QHash<qint64, qint64> &versions)
{
    for (const Settlement &settlement : settlements) {
        if (!settlement.amount.isValid() || settlement.amount <= Money())
            return refusal(title, QStringLiteral("Погасената сума трябва да е по-голяма от нула!"),
                           QStringLiteral("Поправете я."));
        if (auto message = executeOnVersion(db, title,
                                            QStringLiteral("UPDATE FaktDok SET row_version = row_version + 1 "
                                                           "WHERE id = ? AND row_version = ? AND Vid <> 'K'"),
                                            {settlement.documentId, versions.value(settlement.documentId)}))
            return message;
        if (auto message = execute(db, title,
                                   QStringLiteral("INSERT INTO Pogasiavania (DokID, %1, Data, Suma) VALUES (?, ?, ?, ?)")
                                       .arg(owner),
                                   {settlement.documentId, ownerId, date, settlement.amount.cents()}))
            return message;
        auto over = scalar(db, title,
                           QStringLiteral("SELECT COUNT(*) FROM FaktDok d WHERE d.id = ? AND d.Obshto < "
                                          "(SELECT SUM(s.Suma) FROM Pogasiavania s WHERE s.DokID = d.id)"),
                           {settlement.documentId});
        if (!over)
            return over.message();
        if (over.value().toLongLong() != 0)
            return refusal(title, QStringLiteral("Сумата надхвърля неплатената част на документа!"),
                           QStringLiteral("Намалете я или изберете друг документ."));
    }
    return std::nullopt;
}

std::optional<UserMessage> checkEntry(const PaymentEntry &entry)
{
    if (!entry.date.isValid())
        return refusal(paymentTitle, QStringLiteral("Невалидна дата!"), QStringLiteral("Въведете датата на плащането."));
    if (entry.client.trimmed().isEmpty())
        return refusal(paymentTitle, QStringLiteral("Не е посочен клиент!"), QStringLiteral("Изберете клиента."));
    if (!entry.amount.isValid() || entry.amount <= Money())
        return refusal(paymentTitle, QStringLiteral("Невалидна сума!"), QStringLiteral("Въведете сума, по-голяма от нула."));
    if (entry.way != QLatin1Char('B') && entry.way != QLatin1Char('C'))
        return refusal(paymentTitle, QStringLiteral("Невалиден начин на плащане!"),
                       QStringLiteral("Изберете банка или в брой."));
    if (entry.reference.size() > 200)
        return refusal(paymentTitle, QStringLiteral("Основанието е твърде дълго!"), QStringLiteral("Съкратете го."));
    QSet<qint64> seen;
    for (const PickedDocument &picked : entry.picked) {
        if (!picked.amount.isValid() || picked.amount <= Money())
            return refusal(paymentTitle, QStringLiteral("Погасената сума трябва да е по-голяма от нула!"),
                           QStringLiteral("Поправете я."));
        if (seen.contains(picked.documentId))
            return refusal(paymentTitle, QStringLiteral("Документът е избран два пъти!"),
                           QStringLiteral("Оставете го веднъж."));
        seen.insert(picked.documentId);
    }
    return std::nullopt;
}

// A payment's rest on the settlements read: the sums in its own and in the other currency.
struct PaymentRest {
    qint64 id = 0;
    QDate date;
    QString client;
    Currency currency = Currency::Leva;
    Money amount;
    Money same;
    Money other;
    Money unused() const { return unusedAmount(amount, currency, same, other); }
};

// The settlements (alias s) up to a date and the settling documents (alias given) of one client
// (all when client is null) up to that date, added to a query whose %1 takes the settlements' date.
QString restsOf(const QString &sql, const QString &alias, const QString &client, const QDate &on, QVariantList &values)
{
    QString filtered = sql.arg(on.isValid() ? QStringLiteral(" AND s.Data <= ?") : QString());
    if (on.isValid())
        values.append(on);
    if (!client.isNull()) {
        filtered += QStringLiteral(" AND %1.Klient = ?").arg(alias);
        values.append(client);
    }
    if (on.isValid()) {
        filtered += QStringLiteral(" AND %1.Data <= ?").arg(alias);
        values.append(on);
    }
    return filtered;
}

// The client's payments (all clients when client is empty) up to a date (none: all), each with
// what settles from it up to that date.
Checked<QList<PaymentRest>> paymentRests(QSqlDatabase db, const QString &title, const QString &client,
                                         const QDate &on)
{
    // Same- and other-currency settlements summed apart; a payment whose same-currency
    // settlements already cover it has nothing left and is not read.
    QString sql = QStringLiteral("SELECT p.id, p.Data, p.Klient, p.Valuta, p.Suma, "
                                 "SUM(CASE WHEN d.Valuta = p.Valuta THEN s.Suma ELSE 0 END), "
                                 "SUM(CASE WHEN d.Valuta <> p.Valuta THEN s.Suma ELSE 0 END) "
                                 "FROM Plashtania p LEFT JOIN Pogasiavania s ON s.PlashtaneID = p.id%1 "
                                 "LEFT JOIN FaktDok d ON d.id = s.DokID WHERE 1 = 1");
    QVariantList values;
    sql = restsOf(sql, QStringLiteral("p"), client, on, values);
    sql += QStringLiteral(" GROUP BY p.id, p.Data, p.Klient, p.Valuta, p.Suma "
                          "HAVING p.Suma > COALESCE(SUM(CASE WHEN d.Valuta = p.Valuta THEN s.Suma ELSE 0 END), 0) "
                          "ORDER BY p.Data, p.id");
    Query query(db, sql);
    if (auto message = query.run(title, values))
        return *message;
    QList<PaymentRest> rests;
    while (query.next()) {
        PaymentRest rest;
        rest.id = query.value(0).toLongLong();
        rest.date = dateOf(query.value(1));
        rest.client = query.value(2).toString();
        rest.currency = currencyFromCode(query.value(3).toString());
        rest.amount = centsOf(query.value(4));
        rest.same = centsOf(query.value(5));
        rest.other = centsOf(query.value(6));
        rests.append(rest);
    }
    if (auto message = query.readFailure(title))
        return *message;
    return rests;
}

// Credit notes (of one client, or all when client is null) up to a date (none: all) with what
// they settled up to then, as payment rests are.
Checked<QList<PaymentRest>> creditNoteRests(QSqlDatabase db, const QString &title, const QString &client,
                                            const QDate &on)
{
    QString sql = QStringLiteral("SELECT k.id, k.Data, k.Klient, k.Valuta, k.Obshto, d.Valuta, SUM(s.Suma) "
                                 "FROM FaktDok k LEFT JOIN Pogasiavania s ON s.KreditID = k.id%1 "
                                 "LEFT JOIN FaktDok d ON d.id = s.DokID WHERE k.Vid = 'K'");
    QVariantList values;
    sql = restsOf(sql, QStringLiteral("k"), client, on, values);
    sql += QStringLiteral(" GROUP BY k.id, k.Data, k.Klient, k.Valuta, k.Obshto, d.Valuta ORDER BY k.Data, k.id");
    Query query(db, sql);
    if (auto message = query.run(title, values))
        return *message;
    QList<PaymentRest> rests;
    while (query.next()) {
        const qint64 id = query.value(0).toLongLong();
        if (rests.isEmpty() || rests.last().id != id) {
            PaymentRest rest;
            rest.id = id;
            rest.date = dateOf(query.value(1));
            rest.client = query.value(2).toString();
            rest.currency = currencyFromCode(query.value(3).toString());
            rest.amount = centsOf(query.value(4));
            rests.append(rest);
        }
        if (query.value(5).isNull())
            continue;
        PaymentRest &rest = rests.last();
        (currencyFromCode(query.value(5).toString()) == rest.currency ? rest.same : rest.other) +=
            centsOf(query.value(6));
    }
    if (auto message = query.readFailure(title))
        return *message;
    return rests;
}

}

Checked<RecordedPayment> recordPayment(QSqlDatabase db, const PaymentEntry &entry)
{
    if (auto message = checkEntry(entry))
        return *message;
    Transaction transaction(db);
    if (!transaction.isActive())
        return failure(paymentTitle, transaction.lastError());

    RecordedPayment recorded;
    {
        Query insert(db, QStringLiteral("INSERT INTO Plashtania (Data, KlientID, Klient, Suma, Valuta, Nachin, Referencia, "
                                        "DateMod, TimeMod) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?) RETURNING id"));
        if (auto message = insert.run(paymentTitle,
                                      QVariantList{entry.date, entry.clientId > 0 ? QVariant(entry.clientId) : QVariant(QMetaType(QMetaType::LongLong)),
                                       entry.client.trimmed(), entry.amount.cents(), currencyCode(entry.currency),
                                       QString(entry.way), entry.reference.trimmed(), QDate::currentDate(),
                                       QTime::currentTime().toString(QStringLiteral("HH:mm:ss"))}))
            return *message;
        if (!insert.next())
            return refusal(paymentTitle, QStringLiteral("Плащането не е записано!"), QStringLiteral("Опитайте отново."));
        recorded.id = insert.value(0).toLongLong();
        insert.finish();
    }

    QHash<qint64, qint64> versions;
    if (entry.picked.isEmpty()) {
        auto documents = lockedDocuments(
            db,
            QStringLiteral("Klient = ? AND Vid <> 'K' AND Obshto > "
                           "(SELECT COALESCE(SUM(s.Suma), 0) FROM Pogasiavania s WHERE s.DokID = FaktDok.id)"),
            {entry.client.trimmed()});
        if (!documents)
            return documents.message();
        for (const OpenDocument &document : documents.value())
            versions.insert(document.id, document.version);
        recorded.settlements = spread(entry.amount, entry.currency, documents.value());
    } else {
        QVariantList ids;
        for (const PickedDocument &picked : entry.picked)
            ids.append(picked.documentId);
        QVariantList values = ids;
        values.append(entry.client.trimmed());
        auto documents = lockedDocuments(
            db, QStringLiteral("id IN (%1) AND Klient = ? AND Vid <> 'K'").arg(placeholders(ids.size())), values);
        if (!documents)
            return documents.message();
        if (documents.value().size() != entry.picked.size())
            return refusal(paymentTitle, QStringLiteral("Избран е документ, който не е на този клиент!"),
                           QStringLiteral("Изберете документите отново."));
        QHash<qint64, Currency> currencies;
        for (const OpenDocument &document : documents.value())
            currencies.insert(document.id, document.currency);
        Money same;
        Money other;
        for (const PickedDocument &picked : entry.picked) {
            versions.insert(picked.documentId, picked.version);
            recorded.settlements.append({picked.documentId, picked.amount});
            (currencies.value(picked.documentId) == entry.currency ? same : other) += picked.amount;
        }
        const Money left = entry.amount - same - convertAmount(other, otherOf(entry.currency), entry.currency);
        if (!left.isValid() || left < Money())
            return refusal(paymentTitle, QStringLiteral("Разпределено е повече от сумата на плащането!"),
                           QStringLiteral("Намалете погасените суми."));
    }
    if (auto message = writeSettlements(db, paymentTitle, QStringLiteral("PlashtaneID"), recorded.id, entry.date,
                                        recorded.settlements, versions))
        return *message;
    auto rests = paymentRests(db, paymentTitle, entry.client.trimmed(), QDate());
    if (!rests)
        return rests.message();
    for (const PaymentRest &rest : rests.value()) {
        if (rest.id == recorded.id)
            recorded.unused = rest.unused();
    }
    if (!transaction.commit())
        return failure(paymentTitle, transaction.lastError());
    return recorded;
}

std::optional<UserMessage> deletePayment(QSqlDatabase db, qint64 paymentId, qint64 version)
{
    Transaction transaction(db);
    if (!transaction.isActive())
        return failure(paymentTitle, transaction.lastError());
    // The documents it settled are locked and their versions raised: a workstation that read
    // them before sees that they changed.
    if (auto message = execute(db, paymentTitle,
                               QStringLiteral("UPDATE FaktDok SET row_version = row_version + 1 WHERE id IN "
                                              "(SELECT DokID FROM Pogasiavania WHERE PlashtaneID = ?)"),
                               {paymentId}))
        return message;
    if (auto message = execute(db, paymentTitle, QStringLiteral("DELETE FROM Pogasiavania WHERE PlashtaneID = ?"),
                               {paymentId}))
        return message;
    if (auto message = executeOnVersion(db, paymentTitle,
                                        QStringLiteral("DELETE FROM Plashtania WHERE id = ? AND row_version = ?"),
                                        {paymentId, version}))
        return message;
    if (!transaction.commit())
        return failure(paymentTitle, transaction.lastError());
    return std::nullopt;
}

Checked<Money> settleCreditNote(QSqlDatabase db, qint64 creditNoteId)
{
    const QString title = QStringLiteral("Кредитно известие");
    Transaction transaction(db);
    if (!transaction.isActive())
        return failure(title, transaction.lastError());
    auto note = readRows(db, title,
                         QStringLiteral("SELECT KamID, Valuta, Obshto, Data, "
                                        "(SELECT COALESCE(SUM(s.Suma), 0) FROM Pogasiavania s WHERE s.KreditID = k.id) "
                                        "FROM FaktDok k WHERE k.id = ? AND k.Vid = 'K'"),
                         {creditNoteId});
    if (!note)
        return note.message();
    if (note.value().isEmpty())
        return refusal(title, QStringLiteral("Няма такова кредитно известие!"), QStringLiteral("Изберете друго."));
    const RowSet &row = note.value();
    const qint64 invoiceId = row.value(0, 0).toLongLong();
    const Currency noteCurrency = currencyFromCode(row.value(0, 1).toString());
    const Money noteTotal = centsOf(row.value(0, 2));
    const QDate noteDate = dateOf(row.value(0, 3));
    if (centsOf(row.value(0, 4)) > Money())
        return Money();  // settled already
    auto invoice = lockedDocuments(db, QStringLiteral("id = ? AND Vid <> 'K'"), {invoiceId});
    if (!invoice)
        return invoice.message();
    if (invoice.value().isEmpty())
        return Money();
    const OpenDocument &document = invoice.value().first();
    const QList<Settlement> settlements = spread(noteTotal, noteCurrency, {document});
    if (auto message = writeSettlements(db, title, QStringLiteral("KreditID"), creditNoteId,
                                        std::max(noteDate, document.issued), settlements,
                                        {{document.id, document.version}}))
        return *message;
    if (!transaction.commit())
        return failure(title, transaction.lastError());
    return settlements.isEmpty() ? Money() : settlements.first().amount;
}

Checked<QList<Settlement>> spreadCredit(QSqlDatabase db, const QString &client, const QDate &on)
{
    if (!on.isValid())
        return refusal(paymentTitle, QStringLiteral("Невалидна дата!"), QStringLiteral("Въведете датата."));
    Transaction transaction(db);
    if (!transaction.isActive())
        return failure(paymentTitle, transaction.lastError());
    auto documents = lockedDocuments(
        db,
        QStringLiteral("Klient = ? AND Vid <> 'K' AND Obshto > "
                       "(SELECT COALESCE(SUM(s.Suma), 0) FROM Pogasiavania s WHERE s.DokID = FaktDok.id)"),
        {client.trimmed()});
    if (!documents)
        return documents.message();
    auto rests = paymentRests(db, paymentTitle, client.trimmed(), QDate());
    if (!rests)
        return rests.message();
    QList<OpenDocument> open = documents.value();
    QList<Settlement> all;
    for (const PaymentRest &rest : rests.value()) {
        const Money unused = rest.unused();
        if (unused <= Money())
            continue;
        // What this payment can settle, spread over what is still open.
        QList<Settlement> settlements = spread(unused, rest.currency, open);
        if (settlements.isEmpty())
            break;
        for (const Settlement &settlement : settlements) {
            auto document = std::find_if(open.begin(), open.end(),
                                         [&](const OpenDocument &d) { return d.id == settlement.documentId; });
            const QDate date = std::max({on, rest.date, document->issued});
            QHash<qint64, qint64> versions{{document->id, document->version}};
            if (auto message = writeSettlements(db, paymentTitle, QStringLiteral("PlashtaneID"), rest.id, date,
                                                {settlement}, versions))
                return *message;
            document->version += 1;
            document->settled += settlement.amount;
            all.append(settlement);
        }
    }
    if (!transaction.commit())
        return failure(paymentTitle, transaction.lastError());
    return all;
}

Checked<QList<OpenDocument>> openDocuments(QSqlDatabase db, const QString &client)
{
    return documentsWhere(db, QStringLiteral("d.Klient = ? AND d.Vid <> 'K'"), {client.trimmed()}, true);
}

Checked<Money> clientCredit(QSqlDatabase db, const QString &client, Currency currency)
{
    auto rests = paymentRests(db, paymentTitle, client.trimmed(), QDate());
    if (!rests)
        return rests.message();
    Money credit;
    for (const PaymentRest &rest : rests.value())
        credit += convertAmount(rest.unused(), rest.currency, currency);
    return credit;
}

Checked<QList<PaymentRow>> latestPayments(QSqlDatabase db, int count)
{
    Query read(db, QStringLiteral("SELECT id, row_version, Data, Klient, Suma, Valuta, Nachin, Referencia FROM Plashtania "
                                  "ORDER BY Data DESC, id DESC LIMIT ?"));
    if (auto message = read.run(paymentTitle, {count}))
        return *message;
    QList<PaymentRow> payments;
    while (read.next()) {
        payments.append({read.value(0).toLongLong(), read.value(1).toLongLong(), dateOf(read.value(2)),
                         read.value(3).toString(), centsOf(read.value(4)), currencyFromCode(read.value(5).toString()),
                         firstChar(read.value(6)), read.value(7).toString()});
    }
    if (auto message = read.readFailure(paymentTitle))
        return *message;
    return payments;
}

Checked<QStringList> clientNames(QSqlDatabase db)
{
    auto rows = readRows(db, paymentTitle,
                         QStringLiteral("SELECT Ime FROM Klienti UNION SELECT Klient FROM FaktDok ORDER BY 1"));
    if (!rows)
        return rows.message();
    QStringList names;
    for (int row = 0; row < rows.value().rowCount(); ++row) {
        const QString name = rows.value().value(row, 0).toString().trimmed();
        if (!name.isEmpty() && !names.contains(name))
            names.append(name);
    }
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) { return a.localeAwareCompare(b) < 0; });
    return names;
}

Checked<QList<PaymentSettlement>> paymentSettlements(QSqlDatabase db, qint64 paymentId)
{
    auto rows = readRows(db, paymentTitle,
                         QStringLiteral("SELECT s.DokID, d.Nomer, d.Valuta, s.Suma FROM Pogasiavania s "
                                        "JOIN FaktDok d ON d.id = s.DokID WHERE s.PlashtaneID = ? ORDER BY s.id"),
                         {paymentId});
    if (!rows)
        return rows.message();
    QList<PaymentSettlement> settlements;
    for (int row = 0; row < rows.value().rowCount(); ++row)
        settlements.append({rows.value().value(row, 0).toLongLong(), rows.value().value(row, 1).toString(),
                            currencyFromCode(rows.value().value(row, 2).toString()),
                            centsOf(rows.value().value(row, 3))});
    return settlements;
}

Checked<Receivables> receivablesOn(QSqlDatabase db, const QDate &on, const BooksDay &booksDay)
{
    if (!on.isValid())
        return refusal(receivablesTitle, QStringLiteral("Невалидна дата!"), QStringLiteral("Въведете датата."));
    Receivables result;
    result.on = on;
    result.currency = booksDay.currencyOn(on);
    std::map<QString, ClientReceivable> byClient;
    auto add = [&](const QString &client, Money amount, Currency currency) -> Money {
        if (currency != result.currency)
            result.converted = true;
        ClientReceivable &row = byClient[client];
        row.client = client;
        return convertAmount(amount, currency, result.currency);
    };
    Query open(db, QStringLiteral("SELECT Klient, Valuta, DataPadej, Ostava FROM (SELECT d.Klient, d.Valuta, d.DataPadej, "
                                  "d.Obshto - COALESCE((SELECT SUM(s.Suma) FROM Pogasiavania s WHERE s.DokID = d.id "
                                  "AND s.Data <= ?), 0) AS Ostava FROM FaktDok d WHERE d.Vid <> 'K' AND d.Data <= ?) o "
                                  "WHERE Ostava > 0"));
    if (auto message = open.run(receivablesTitle, {on, on}))
        return *message;
    while (open.next()) {
        const QString client = open.value(0).toString();
        const Money amount = add(client, centsOf(open.value(3)), currencyFromCode(open.value(1).toString()));
        byClient[client].buckets[ageBucket(dateOf(open.value(2)), on)] += amount;
    }
    if (auto message = open.readFailure(receivablesTitle))
        return *message;
    for (auto rests : {paymentRests(db, receivablesTitle, QString(), on), creditNoteRests(db, receivablesTitle, QString(), on)}) {
        if (!rests)
            return rests.message();
        for (const PaymentRest &rest : rests.value()) {
            const Money unused = rest.unused();
            if (unused > Money())
                byClient[rest.client].credit += add(rest.client, unused, rest.currency);
        }
    }
    for (auto &[name, row] : byClient) {
        row.total = row.buckets[0] + row.buckets[1] + row.buckets[2] + row.buckets[3] + row.buckets[4] - row.credit;
        for (int bucket = 0; bucket < ageBucketCount; ++bucket)
            result.totals.buckets[bucket] += row.buckets[bucket];
        result.totals.credit += row.credit;
        result.totals.total += row.total;
        result.clients.append(row);
    }
    std::sort(result.clients.begin(), result.clients.end(),
              [](const ClientReceivable &a, const ClientReceivable &b) { return a.client.localeAwareCompare(b.client) < 0; });
    result.totals.client = QStringLiteral("Общо");
    return result;
}

Checked<ReceivablesSummary> receivablesSummary(QSqlDatabase db, const QDate &on, const BooksDay &booksDay)
{
    auto receivables = receivablesOn(db, on, booksDay);
    if (!receivables)
        return receivables.message();
    ReceivablesSummary summary;
    summary.currency = receivables.value().currency;
    summary.open = receivables.value().totals.total;
    summary.overdue = receivables.value().totals.overdue();
    QList<ClientReceivable> late;
    for (const ClientReceivable &row : receivables.value().clients) {
        if (row.overdue() > Money())
            late.append(row);
    }
    std::stable_sort(late.begin(), late.end(),
                     [](const ClientReceivable &a, const ClientReceivable &b) { return a.overdue() > b.overdue(); });
    summary.largestOverdue = late.mid(0, 5);
    return summary;
}

Checked<ClientAccount> clientAccount(QSqlDatabase db, const QString &client, const QDate &from, const QDate &to,
                                     const BooksDay &booksDay)
{
    if (!from.isValid() || !to.isValid() || from > to)
        return refusal(accountTitle, QStringLiteral("Невалиден период!"), QStringLiteral("Въведете началната и крайната дата."));
    ClientAccount account;
    account.client = client.trimmed();
    account.from = from;
    account.to = to;
    Query read(db, QStringLiteral("SELECT Data, 0 AS Red, Vid, Nomer, DataPadej, Valuta, Obshto, id FROM FaktDok "
                                  "WHERE Klient = ? AND Data <= ? "
                                  "UNION ALL SELECT Data, 1, 'P', Referencia, NULL, Valuta, Suma, id FROM Plashtania "
                                  "WHERE Klient = ? AND Data <= ? ORDER BY 1, 2, 4, 8"));
    if (auto message = read.run(accountTitle, {account.client, to, account.client, to}))
        return *message;
    struct Entry {
        AccountLine line;
        bool before = false;
    };
    QList<Entry> entries;
    bool anyEuro = booksDay.currencyOn(to) == Currency::Euro;
    while (read.next()) {
        Entry entry;
        AccountLine &line = entry.line;
        line.date = dateOf(read.value(0));
        line.kind = firstChar(read.value(2));
        line.number = read.value(3).toString();
        line.due = dateOf(read.value(4));
        line.currency = currencyFromCode(read.value(5).toString());
        const Money amount = centsOf(read.value(6));
        (line.kind == QLatin1Char('F') || line.kind == QLatin1Char('D') ? line.debit : line.credit) = amount;
        entry.before = line.date < from;
        if (line.currency == Currency::Euro)
            anyEuro = true;
        entries.append(entry);
    }
    if (auto message = read.readFailure(accountTitle))
        return *message;
    account.currency = totalsCurrency(anyEuro);
    Money balance;
    for (Entry &entry : entries) {
        AccountLine &line = entry.line;
        if (line.currency != account.currency)
            account.converted = true;
        balance += convertAmount(line.debit, line.currency, account.currency);
        balance = balance - convertAmount(line.credit, line.currency, account.currency);
        line.balance = balance;
        if (entry.before)
            account.opening = balance;
        else
            account.lines.append(line);
    }
    account.closing = balance;
    return account;
}

}
