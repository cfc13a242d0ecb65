#include "warehousestore.h"

#include "core/rounding.h"
#include "data/changeoverstore.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QSqlError>
#include <QVariant>
#include <algorithm>

namespace zarek {

namespace {

const QString saveTitle = QStringLiteral("ГРЕШКА при запис!");
const QString deleteTitle = QStringLiteral("ГРЕШКА при изтриване!");
const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

const QString movementColumns =
    QStringLiteral("id, row_version, Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa");

StockMovement movementOf(const Query &q)
{
    StockMovement m;
    m.id = q.value(0).toLongLong();
    m.rowVersion = q.value(1).toInt();
    m.data = q.value(2).toDate();
    m.docVid = q.value(3).toString();
    m.docNom = q.value(4).toString();
    m.name = q.value(5).toString();
    m.kol = q.value(6).toDouble();
    m.edin = q.value(7).toDouble();
    m.suma = Money::fromAmount(q.value(8).toDouble());
    m.vidKol = q.value(9).toString();
    if (!q.value(10).isNull())
        m.ostat = q.value(10).toDouble();
    m.lipsa = q.value(11).toBool();
    return m;
}

QVariant ostatValue(const StockMovement &m)
{
    return m.ostat ? QVariant(*m.ostat) : QVariant(QMetaType::fromType<double>());
}

// The work of one call: its reads and writes in one transaction, the first failure kept, every
// write counted (and offered to the test hook first).
class Work {
public:
    Work(QSqlDatabase db, QString title, std::function<std::optional<UserMessage>(int)> beforeWrite, QDateTime now)
        : m_db(db), m_title(std::move(title)), m_beforeWrite(std::move(beforeWrite)), m_now(std::move(now)), m_transaction(db)
    {
        if (!m_transaction.isActive())
            m_failure = sqlErrorMessage(m_title, m_db.lastError());
    }

    bool ok() const { return !m_failure; }
    const UserMessage &failure() const { return *m_failure; }
    bool fail(UserMessage message)
    {
        if (!m_failure)
            m_failure = std::move(message);
        return false;
    }
    QDate today() const { return m_now.date(); }
    QTime time() const { return m_now.time(); }

    QSqlDatabase db() const { return m_db; }

    bool read(Query &query, const QString &sql, const QVariantList &values)
    {
        if (!ok())
            return false;
        if (auto failure = query.exec(m_title, sql, values))
            return fail(*failure);
        return true;
    }

    // A write; a versioned one must change exactly one row, or the row changed since it was read.
    bool write(const QString &sql, const QVariantList &values, bool versioned)
    {
        Query query(m_db, sql);
        if (!start(query, values))
            return false;
        if (versioned && query.rowsAffected() != 1)
            return fail(rowConflictMessage(m_title));
        return true;
    }

    std::optional<qint64> insert(const QString &sql, const QVariantList &values, int *rowVersion)
    {
        Query query(m_db, sql + QStringLiteral(" RETURNING id, row_version"));
        if (!start(query, values))
            return std::nullopt;
        if (!query.next()) {
            fail(query.readFailure(m_title).value_or(rowConflictMessage(m_title)));
            return std::nullopt;
        }
        const qint64 id = query.value(0).toLongLong();
        if (rowVersion)
            *rowVersion = query.value(1).toInt();
        query.finish();  // SQLite keeps the statement open until the RETURNING rows are read out
        return id;
    }

    bool commit()
    {
        if (!ok())
            return false;
        if (!m_transaction.commit())
            return fail(sqlErrorMessage(m_title, m_db.lastError()));
        return true;
    }

private:
    bool start(Query &query, const QVariantList &values)
    {
        if (!ok())
            return false;
        ++m_writes;
        if (m_beforeWrite) {
            if (auto failure = m_beforeWrite(m_writes))
                return fail(*failure);
        }
        if (auto failure = query.run(m_title, values))
            return fail(*failure);
        return true;
    }

    QSqlDatabase m_db;
    QString m_title;
    std::function<std::optional<UserMessage>(int)> m_beforeWrite;
    QDateTime m_now;
    Transaction m_transaction;
    std::optional<UserMessage> m_failure;
    int m_writes = 0;
};

// Reads of the store, each inside the work's transaction.

std::optional<StockMovement> readMovement(Work &work, qint64 id)
{
    Query q(work.db());
    if (!work.read(q, QStringLiteral("SELECT %1 FROM Sklad WHERE id = ?").arg(movementColumns), {id}) || !q.next())
        return std::nullopt;
    return movementOf(q);
}

// The row as the caller read it, or the conflict box when it changed or went since.
std::optional<StockMovement> readAtVersion(Work &work, const StockMovement &read, const QString &title)
{
    std::optional<StockMovement> current = readMovement(work, read.id);
    if (!work.ok())
        return std::nullopt;
    if (!current || current->rowVersion != read.rowVersion) {
        work.fail(rowConflictMessage(title));
        return std::nullopt;
    }
    return current;
}

bool sameDocument(const StockMovement &a, const StockMovement &b)
{
    return a.data == b.data && a.docVid == b.docVid && a.docNom == b.docNom && a.name == b.name
           && storedQuantity(a.kol) == storedQuantity(b.kol) && samePrice(a.edin, b.edin);
}

// A receipt as its screen read it. Issues from it on other workstations change only what it
// still holds (and its version): as long as the document itself is as read, it is the same row.
std::optional<StockMovement> readReceiptAsSeen(Work &work, const StockMovement &read, const QString &title)
{
    std::optional<StockMovement> current = readMovement(work, read.id);
    if (!work.ok())
        return std::nullopt;
    if (!current || (current->rowVersion != read.rowVersion && !sameDocument(*current, read))) {
        work.fail(rowConflictMessage(title));
        return std::nullopt;
    }
    return current;
}

std::optional<StockOnHand> readOnHand(Work &work, const QString &name)
{
    Query q(work.db());
    if (!work.read(q, QStringLiteral("SELECT id, row_version, Name, Edin, Broi FROM Nalich WHERE Name = ? ORDER BY id"),
                   {name.trimmed()})
        || !q.next())
        return std::nullopt;
    return StockOnHand{q.value(0).toLongLong(), q.value(1).toInt(), q.value(2).toString(), q.value(3).toDouble(),
                       storedQuantity(q.value(4).toDouble())};
}

// The firm's changeover as the database holds it now (what currency each movement and price is
// in), read in the call's own transaction, and the call's day.
BooksDay readBooks(Work &work, QSqlDatabase db)
{
    if (!work.ok())
        return {};
    const Checked<Changeover> changeover = loadChangeover(db);
    if (!changeover) {
        work.fail(changeover.message());
        return {};
    }
    return {changeover.value(), work.today()};
}

// The name's open receipts, oldest first, each priced in the issue's currency: a leva receipt
// still open at the changeover costs its reviewed euro price, any other is converted as needed.
QList<OpenReceipt> readOpenReceipts(Work &work, const QString &name, Currency issue, const BooksDay &books)
{
    QList<OpenReceipt> receipts;
    Query q(work.db());
    if (!work.read(q,
                   QStringLiteral("SELECT s.id, s.row_version, s.Ostat, s.Edin, s.Data, e.Edin FROM Sklad s "
                                  "LEFT JOIN EvroSklad e ON e.ReceiptID = s.id WHERE s.Name = ? AND s.VidKol = 'P' "
                                  "AND s.Lipsa = ? ORDER BY s.Data, s.id"),
                   {name, false}))
        return receipts;
    while (q.next()) {
        const Currency receipt = books.currencyOn(q.value(4).toDate());
        double price = q.value(3).toDouble();
        if (issue == Currency::Euro && receipt == Currency::Leva && !q.value(5).isNull())
            price = q.value(5).toDouble();
        else
            price = convertPrice(price, receipt, issue);
        receipts.append({q.value(0).toLongLong(), q.value(1).toInt(), storedQuantity(q.value(2).toDouble()), price});
    }
    return receipts;
}

// The price of the name's newest receipt (the last one entered), leaving one receipt out, in the
// currency of the prices on hand.
std::optional<double> newestReceiptPrice(Work &work, const QString &name, const BooksDay &books,
                                         qint64 leaveOut = 0)
{
    Query q(work.db());
    if (!work.read(q,
                   QStringLiteral("SELECT Edin, Data FROM Sklad WHERE Name = ? AND VidKol = 'P' AND id <> ? "
                                  "ORDER BY id DESC LIMIT 1"),
                   {name, leaveOut})
        || !q.next())
        return std::nullopt;
    return convertPrice(q.value(0).toDouble(), books.currencyOn(q.value(1).toDate()), books.priceCurrency());
}

// A receipt's euro price of the changeover holds only for the receipt as it was reviewed.
bool forgetEuroPrice(Work &work, qint64 receiptId)
{
    return work.write(QStringLiteral("DELETE FROM EvroSklad WHERE ReceiptID = ?"), {receiptId}, false);
}

bool isNewestReceipt(Work &work, const StockMovement &receipt)
{
    Query q(work.db());
    return work.read(q, QStringLiteral("SELECT COUNT(*) FROM Sklad WHERE Name = ? AND VidKol = 'P' AND id > ?"),
                     {receipt.name, receipt.id})
           && q.next() && q.value(0).toInt() == 0;
}

QList<IssueLot> readLots(Work &work, qint64 issueId)
{
    QList<IssueLot> lots;
    Query q(work.db());
    if (!work.read(q, QStringLiteral("SELECT ReceiptID, Kol, Edin FROM SkladLots WHERE IssueID = ? ORDER BY id"),
                   {issueId}))
        return lots;
    while (q.next())
        lots.append({q.value(0).toLongLong(), storedQuantity(q.value(1).toDouble()), q.value(2).toDouble()});
    return lots;
}

bool drawnOn(Work &work, const StockMovement &receipt)
{
    if (receipt.lipsa || storedQuantity(receipt.ostat.value_or(0)) != storedQuantity(receipt.kol))
        return true;
    Query q(work.db());
    return !work.read(q, QStringLiteral("SELECT COUNT(*) FROM SkladLots WHERE ReceiptID = ?"), {receipt.id})
           || !q.next() || q.value(0).toInt() > 0;
}

// Writes.

bool insertMovement(Work &work, StockMovement &m)
{
    const std::optional<qint64> id = work.insert(
        QStringLiteral("INSERT INTO Sklad (Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, Ostat, Lipsa, DateMod, "
                       "TimeMod) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
        {m.data, m.docVid, m.docNom, m.name, m.kol, m.edin, m.suma.toDouble(), m.vidKol, ostatValue(m), m.lipsa, work.today(),
         work.time()},
        &m.rowVersion);
    if (!id)
        return false;
    m.id = *id;
    return true;
}

bool updateMovement(Work &work, StockMovement &m)
{
    if (!work.write(QStringLiteral("UPDATE Sklad SET Data = ?, DocVid = ?, DocNom = ?, Name = ?, Kol = ?, Edin = ?, "
                                   "Suma = ?, Ostat = ?, Lipsa = ?, DateMod = ?, TimeMod = ?, "
                                   "row_version = row_version + 1 WHERE id = ? AND row_version = ?"),
                    {m.data, m.docVid, m.docNom, m.name, m.kol, m.edin, m.suma.toDouble(), ostatValue(m), m.lipsa, work.today(),
                     work.time(), m.id, m.rowVersion},
                    true))
        return false;
    ++m.rowVersion;
    return true;
}

bool deleteMovement(Work &work, const StockMovement &m)
{
    return work.write(QStringLiteral("DELETE FROM Sklad WHERE id = ? AND row_version = ?"), {m.id, m.rowVersion},
                      true);
}

bool writeReceiptStock(Work &work, const ReceiptAfter &receipt)
{
    return work.write(QStringLiteral("UPDATE Sklad SET Ostat = ?, Lipsa = ?, row_version = row_version + 1 "
                                     "WHERE id = ? AND row_version = ?"),
                      {quantityValue(receipt.ostat), receipt.lipsa, receipt.id, receipt.rowVersion}, true);
}

bool writeOnHand(Work &work, const StockOnHand &stock)
{
    if (stock.id == 0)
        return work.insert(QStringLiteral("INSERT INTO Nalich (Name, Edin, Broi, DateMod, TimeMod) VALUES (?, ?, ?, ?, ?)"),
                           {stock.name, stock.edin, quantityValue(stock.broi), work.today(), work.time()}, nullptr)
            .has_value();
    return work.write(QStringLiteral("UPDATE Nalich SET Edin = ?, Broi = ?, DateMod = ?, TimeMod = ?, "
                                     "row_version = row_version + 1 WHERE id = ? AND row_version = ?"),
                      {stock.edin, quantityValue(stock.broi), work.today(), work.time(), stock.id, stock.rowVersion},
                      true);
}

bool insertLots(Work &work, qint64 issueId, const QList<IssueLot> &lots)
{
    for (const IssueLot &lot : lots) {
        if (!work.insert(QStringLiteral("INSERT INTO SkladLots (IssueID, ReceiptID, Kol, Edin) VALUES (?, ?, ?, ?)"),
                         {issueId, lot.receiptId, quantityValue(lot.quantity), lot.price}, nullptr))
            return false;
    }
    return true;
}

// Gives back to each receipt what the issue took from it (GiveBackToReceipts) and forgets the
// lots; the total given back.
std::optional<Quantity> giveBack(Work &work, qint64 issueId, const QList<IssueLot> &lots, const QString &title)
{
    QList<HeldReceipt> held;
    Quantity total = 0;
    for (const IssueLot &lot : lots) {
        total += lot.quantity;
        const std::optional<StockMovement> receipt = readMovement(work, lot.receiptId);
        if (!work.ok())
            return std::nullopt;
        if (receipt)
            held.append({receipt->id, receipt->rowVersion, storedQuantity(receipt->ostat.value_or(0))});
    }
    const GivenBack given = GiveBackToReceipts(held, lots, total);
    if (!given.complete()) {
        work.fail(rowConflictMessage(title));
        return std::nullopt;
    }
    for (const ReceiptAfter &after : given.receipts) {
        if (!writeReceiptStock(work, after))
            return std::nullopt;
    }
    if (!lots.isEmpty()
        && !work.write(QStringLiteral("DELETE FROM SkladLots WHERE IssueID = ?"), {issueId}, false))
        return std::nullopt;
    return given.given;
}

// Takes the quantity from the name's open receipts, first in, first out; the lots taken, priced
// in the issue's currency.
std::optional<Consumption> takeFromReceipts(Work &work, const QString &name, Quantity quantity, Currency issue,
                                            const BooksDay &books)
{
    const QList<OpenReceipt> receipts = readOpenReceipts(work, name, issue, books);
    if (!work.ok())
        return std::nullopt;
    const Consumption consumption = ConsumeReceipts(receipts, quantity);
    // No open receipt, or fewer than the stock says: nothing is taken and nothing divides by zero.
    if (!consumption.complete()) {
        work.fail(stockOutOfStepMessage(name));
        return std::nullopt;
    }
    for (const ReceiptAfter &receipt : consumption.receipts) {
        if (!writeReceiptStock(work, receipt))
            return std::nullopt;
    }
    return consumption;
}

void costIssue(StockMovement &issue, const Consumption &consumption)
{
    issue.edin = consumption.averagePrice().value_or(0);
    issue.suma = Money::fromAmount(consumption.cost);
}

template <typename T>
Checked<T> finish(Work &work, const T &value)
{
    if (!work.commit())
        return work.failure();
    return value;
}

std::optional<UserMessage> finish(Work &work)
{
    if (!work.commit())
        return work.failure();
    return std::nullopt;
}

}

WarehouseStore::WarehouseStore(QSqlDatabase db, Clock clock) : m_db(std::move(db)), m_clock(std::move(clock))
{
    if (!m_clock)
        m_clock = [] { return QDateTime::currentDateTime(); };
}

Checked<StockMovement> WarehouseStore::addReceipt(StockMovement m) const
{
    m.id = 0;
    m.name = m.name.trimmed();
    m.docVid = cutDocumentKind(m.docVid);
    m.vidKol = StockMovement::receiptKind();
    if (isRepair(m.name))
        return repairIsNoReceiptMessage();
    if (auto refusal = checkQuantity(m.kol))
        return *refusal;
    if (auto refusal = checkPrice(m.edin))
        return *refusal;
    const std::optional<Quantity> quantity = toQuantity(m.kol);
    m.kol = quantityValue(*quantity);
    m.ostat = m.kol;
    m.lipsa = false;
    m.suma = Money::fromAmount(m.kol * m.edin);

    Work work(m_db, saveTitle, beforeWrite, m_clock());
    const BooksDay books = readBooks(work, m_db);
    std::optional<StockOnHand> stock = readOnHand(work, m.name);
    if (!insertMovement(work, m))
        return work.failure();
    // The newest receipt's price stands for the whole name, in the currency of the prices on hand.
    const double price = convertPrice(m.edin, books.currencyOn(m.data), books.priceCurrency());
    if (!stock)
        stock = StockOnHand{0, 0, m.name, price, 0};
    stock->broi += *quantity;
    stock->edin = price;
    writeOnHand(work, *stock);
    return finish(work, m);
}

Checked<StockMovement> WarehouseStore::correctReceipt(const StockMovement &read, const StockMovement &typed) const
{
    Work work(m_db, saveTitle, beforeWrite, m_clock());
    const BooksDay books = readBooks(work, m_db);
    std::optional<StockMovement> m = readReceiptAsSeen(work, read, saveTitle);
    if (!m)
        return work.failure();
    const Quantity before = storedQuantity(m->kol);
    if (auto refusal = checkQuantity(typed.kol))
        return *refusal;
    if (auto refusal = checkPrice(typed.edin))
        return *refusal;
    const std::optional<Quantity> after = toQuantity(typed.kol);
    const bool drawn = drawnOn(work, *m);
    const bool priceChanged = !samePrice(typed.edin, m->edin);
    if (!work.ok())
        return work.failure();
    if (drawn && (*after != before || priceChanged))
        return receiptDrawnOnMessage();
    if (books.changedOver() && (priceChanged || typed.data != m->data) && !forgetEuroPrice(work, m->id))
        return work.failure();

    m->data = typed.data;
    m->docNom = typed.docNom;
    m->kol = quantityValue(*after);
    m->edin = typed.edin;
    m->suma = Money::fromAmount(m->kol * m->edin);
    if (!drawn)
        m->ostat = m->kol;
    if (!updateMovement(work, *m))
        return work.failure();
    if (!drawn && (*after != before || priceChanged)) {
        std::optional<StockOnHand> stock = readOnHand(work, m->name);
        if (!work.ok())
            return work.failure();
        if (!stock || stock->broi + *after - before < 0)
            return stockOutOfStepMessage(m->name);
        stock->broi += *after - before;
        if (isNewestReceipt(work, *m))
            stock->edin = convertPrice(m->edin, books.currencyOn(m->data), books.priceCurrency());
        writeOnHand(work, *stock);
    }
    return finish(work, *m);
}

std::optional<UserMessage> WarehouseStore::removeReceipt(const StockMovement &read) const
{
    Work work(m_db, deleteTitle, beforeWrite, m_clock());
    const BooksDay books = readBooks(work, m_db);
    const std::optional<StockMovement> m = readReceiptAsSeen(work, read, deleteTitle);
    if (!m)
        return work.failure();
    const bool drawn = drawnOn(work, *m);
    if (!work.ok())
        return work.failure();
    if (drawn)
        return receiptDrawnOnDeleteMessage();
    std::optional<StockOnHand> stock = readOnHand(work, m->name);
    const bool newest = isNewestReceipt(work, *m);
    const std::optional<double> previousPrice = newestReceiptPrice(work, m->name, books, m->id);
    if (!work.ok())
        return work.failure();
    const Quantity quantity = storedQuantity(m->kol);
    if (!stock || stock->broi < quantity)
        return stockOutOfStepMessage(m->name);
    if ((books.changedOver() && !forgetEuroPrice(work, m->id)) || !deleteMovement(work, *m))
        return work.failure();
    stock->broi -= quantity;
    if (newest && previousPrice)
        stock->edin = *previousPrice;
    writeOnHand(work, *stock);
    return finish(work);
}

Checked<StockMovement> WarehouseStore::addIssue(StockMovement m) const
{
    m.id = 0;
    m.name = m.name.trimmed();
    m.docVid = cutDocumentKind(m.docVid);
    m.vidKol = StockMovement::issueKind();
    m.lipsa = true;  // an issue never takes part in issuing
    if (auto refusal = checkPrice(m.edin))
        return *refusal;
    Work work(m_db, saveTitle, beforeWrite, m_clock());
    const BooksDay books = readBooks(work, m_db);
    if (!work.ok())
        return work.failure();
    if (isRepair(m.name)) {
        m.kol = 1;
        m.ostat = 0.0;
        m.suma = Money::fromAmount(m.kol * m.edin);
        insertMovement(work, m);
        return finish(work, m);
    }

    if (auto refusal = checkQuantity(m.kol))
        return *refusal;
    const std::optional<Quantity> quantity = toQuantity(m.kol);
    m.kol = quantityValue(*quantity);
    m.ostat.reset();
    std::optional<StockOnHand> stock = readOnHand(work, m.name);
    if (!work.ok())
        return work.failure();
    // The typed price is in the issue's currency; the price on hand may be in euro already.
    const Currency issue = books.currencyOn(m.data);
    if (auto refusal = checkStockIssue(stock, convertPrice(m.edin, issue, books.priceCurrency()), *quantity))
        return *refusal;
    const std::optional<Consumption> consumption = takeFromReceipts(work, m.name, *quantity, issue, books);
    if (!consumption)
        return work.failure();
    costIssue(m, *consumption);
    stock->broi -= *quantity;
    if (!writeOnHand(work, *stock) || !insertMovement(work, m) || !insertLots(work, m.id, consumption->lots))
        return work.failure();
    return finish(work, m);
}

Checked<StockMovement> WarehouseStore::correctIssue(const StockMovement &read, const StockMovement &typed) const
{
    Work work(m_db, saveTitle, beforeWrite, m_clock());
    const BooksDay books = readBooks(work, m_db);
    std::optional<StockMovement> m = readAtVersion(work, read, saveTitle);
    if (!m)
        return work.failure();
    const QList<IssueLot> lots = readLots(work, m->id);
    if (!work.ok())
        return work.failure();
    m->data = typed.data;
    m->docNom = typed.docNom;
    if (lots.isEmpty()) {
        // A cost entry (a repair, a course's expense, or an issue of an older database): no stock.
        // A quantity left as it stood is kept; a changed one is checked as any typed quantity.
        if (typed.kol != m->kol) {
            if (auto refusal = checkQuantity(typed.kol))
                return *refusal;
        }
        m->kol = typed.kol;
        m->suma = Money::fromAmount(m->kol * m->edin);
        updateMovement(work, *m);
        return finish(work, *m);
    }

    if (auto refusal = checkQuantity(typed.kol))
        return *refusal;
    const std::optional<Quantity> after = toQuantity(typed.kol);
    if (*after != storedQuantity(m->kol)) {
        std::optional<StockOnHand> stock = readOnHand(work, m->name);
        const std::optional<Quantity> given = giveBack(work, m->id, lots, saveTitle);
        if (!given)
            return work.failure();
        if (!stock)
            return stockOutOfStepMessage(m->name);
        if (stock->broi + *given < *after)
            return UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("В склада нямате такова количество!"),
                               UserMessage::Icon::Exclamation};
        const std::optional<Consumption> consumption =
            takeFromReceipts(work, m->name, *after, books.currencyOn(m->data), books);
        if (!consumption)
            return work.failure();
        stock->broi += *given - *after;
        m->kol = quantityValue(*after);
        costIssue(*m, *consumption);
        if (!writeOnHand(work, *stock) || !insertLots(work, m->id, consumption->lots))
            return work.failure();
    }
    updateMovement(work, *m);
    return finish(work, *m);
}

std::optional<UserMessage> WarehouseStore::removeIssue(const StockMovement &read) const
{
    Work work(m_db, deleteTitle, beforeWrite, m_clock());
    const BooksDay books = readBooks(work, m_db);
    const std::optional<StockMovement> m = readAtVersion(work, read, deleteTitle);
    if (!m)
        return work.failure();
    const QList<IssueLot> lots = readLots(work, m->id);
    std::optional<StockOnHand> stock = readOnHand(work, m->name);
    const std::optional<double> price = newestReceiptPrice(work, m->name, books);
    if (!work.ok())
        return work.failure();
    const std::optional<Quantity> given = giveBack(work, m->id, lots, deleteTitle);
    if (!given)
        return work.failure();
    if (*given > 0) {
        if (!stock)
            stock = StockOnHand{0, 0, m->name,
                                price.value_or(convertPrice(m->edin, books.currencyOn(m->data),
                                                            books.priceCurrency())),
                                0};
        stock->broi += *given;
        writeOnHand(work, *stock);
    }
    deleteMovement(work, *m);
    return finish(work);
}

Checked<bool> WarehouseStore::isDrawnOn(qint64 receiptId) const
{
    Work work(m_db, readTitle, {}, m_clock());
    const std::optional<StockMovement> m = readMovement(work, receiptId);
    const bool drawn = m && drawnOn(work, *m);
    if (!work.ok())
        return work.failure();
    return drawn;
}

Checked<QList<IssueLotRow>> WarehouseStore::lotsOf(qint64 issueId) const
{
    Query q(m_db,
            QStringLiteral("SELECT l.ReceiptID, s.Data, s.DocVid, s.DocNom, l.Kol, l.Edin FROM SkladLots l "
                           "LEFT JOIN Sklad s ON s.id = l.ReceiptID WHERE l.IssueID = ? ORDER BY l.id"));
    if (auto failure = q.run(readTitle, {issueId}))
        return *failure;
    QList<IssueLotRow> lots;
    while (q.next()) {
        IssueLotRow lot{q.value(0).toLongLong(), q.value(1).toDate(), q.value(2).toString(), q.value(3).toString(),
                        q.value(4).toDouble(), q.value(5).toDouble(), {}};
        lot.suma = Money::fromAmount(lot.kol * lot.edin);
        lots.append(lot);
    }
    return lots;
}

Checked<std::optional<StockOnHand>> WarehouseStore::onHand(const QString &name) const
{
    Work work(m_db, readTitle, {}, m_clock());
    const std::optional<StockOnHand> stock = readOnHand(work, name);
    if (!work.ok())
        return work.failure();
    return stock;
}

namespace {

QStringList distinctTexts(QSqlDatabase db, const QString &sql, const QVariantList &values)
{
    QStringList texts;
    Query q(db, sql);
    if (q.run(QString(), values))
        return texts;
    while (q.next()) {
        const QString text = q.value(0).toString();
        if (!text.trimmed().isEmpty())
            texts.append(text);
    }
    sortNames(texts);
    return texts;
}

}

QStringList WarehouseStore::documentKinds(const QString &vidKol) const
{
    return distinctTexts(m_db, QStringLiteral("SELECT DISTINCT DocVid FROM Sklad WHERE VidKol = ?"), {vidKol});
}

QStringList WarehouseStore::articleNames() const
{
    return distinctTexts(m_db, QStringLiteral("SELECT DISTINCT Name FROM Sklad"), {});
}

bool nameLess(const QString &a, const QString &b)
{
    const int folded = a.compare(b, Qt::CaseInsensitive);
    return folded != 0 ? folded < 0 : a < b;
}

void sortNames(QStringList &names)
{
    std::sort(names.begin(), names.end(), nameLess);
}

}
