#include "documentstore.h"

#include "core/dates.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/textlist.h"
#include "data/transaction.h"

#include <QDateTime>
#include <QVariant>
#include <algorithm>

namespace zarek::documents {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");
const QString scanTitle = QStringLiteral("ГРЕШКА при запис на сканираното копие!");

// A date as either engine gives it back: a date on PostgreSQL, ISO text on SQLite.
QDate toDate(const QVariant &value)
{
    if (value.isNull())
        return {};
    if (value.metaType().id() == QMetaType::QDate)
        return value.toDate();
    return QDate::fromString(value.toString().left(10), Qt::ISODate);
}

QVariant dateValue(const QDate &date)
{
    return date.isValid() ? QVariant(date) : QVariant(QMetaType(QMetaType::QDate));
}

QStringList documentStoreColumns()
{
    return documentColumns() + QStringList{QStringLiteral("Za"), QStringLiteral("Smenen"), QStringLiteral("PredID"),
                                           QStringLiteral("DateMod"), QStringLiteral("TimeMod")};
}

const DocumentKind *findKind(const QList<DocumentKind> &kinds, const QString &name)
{
    const auto found = std::find_if(kinds.begin(), kinds.end(), [&name](const DocumentKind &k) { return k.name == name; });
    return found == kinds.end() ? nullptr : &*found;
}

// How far ahead of today a deadline can lie and still be warned of today: the longest warning,
// and for a renewal requested ahead its working days (two calendar days each is more than enough).
int longestLead(const QList<DocumentKind> &kinds)
{
    int lead = 0;
    for (const DocumentKind &kind : kinds)
        lead = std::max(lead, kind.warnDays + 2 * kind.requestWorkDays + 14);
    return lead;
}

}

DocumentStore::DocumentStore(QSqlDatabase db) : m_db(std::move(db)) {}

Checked<QList<DocumentKind>> DocumentStore::kinds() const
{
    Query query(m_db);
    if (auto failure
        = query.exec(readTitle,
                     QStringLiteral(
                         "SELECT id, Ime, Za, Meseci, Dni, Predi, RabDni, Napomnia FROM DokVid ORDER BY Za, Ime, id")))
        return *failure;
    QList<DocumentKind> list;
    while (query.next()) {
        DocumentKind kind;
        kind.id = query.value(0).toLongLong();
        kind.name = query.value(1).toString();
        kind.holder = holderOfCode(query.value(2).toString()).value_or(Holder::Truck);
        kind.months = query.value(3).toInt();
        kind.days = query.value(4).toInt();
        kind.warnDays = query.value(5).toInt();
        kind.requestWorkDays = query.value(6).toInt();
        kind.remind = query.value(7).toBool();
        list.append(kind);
    }
    return list;
}

std::unique_ptr<RecordStore> DocumentStore::kindRows() const
{
    return std::make_unique<RecordStore>(m_db, QStringLiteral("DokVid"),
                                         QStringList{QStringLiteral("Ime"), QStringLiteral("Za"), QStringLiteral("Meseci"),
                                                     QStringLiteral("Dni"), QStringLiteral("Predi"), QStringLiteral("RabDni"),
                                                     QStringLiteral("Napomnia")},
                                         QStringLiteral("Za, Ime"));
}

std::optional<UserMessage> DocumentStore::removeKind(const RecordRow &row, const QString &errorTitle) const
{
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    Query query(m_db);
    // The row goes first (the write lock), then the documents of it are counted; any keeps it.
    if (auto failure
        = executeOnVersion(m_db, errorTitle, QStringLiteral("DELETE FROM DokVid WHERE id = ? AND row_version = ?"),
                           {row.id, row.rowVersion}))
        return failure;
    if (auto failure = query.exec(errorTitle, QStringLiteral("SELECT COUNT(*) FROM Dokumenti WHERE Vid = ?"),
                                  {row.values.value(QStringLiteral("Ime"))}))
        return failure;
    if (query.next() && query.value(0).toInt() > 0)
        return UserMessage::twoLines(errorTitle,
                                     QStringLiteral("Има %1 документа от този вид!").arg(query.value(0).toInt()),
                                     QStringLiteral("Вид, по който има документи, не може да бъде изтрит."),
                                     UserMessage::Icon::Exclamation);
    query.finish();
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    return std::nullopt;
}

std::unique_ptr<RecordStore> DocumentStore::documents() const
{
    return std::make_unique<RecordStore>(m_db, QStringLiteral("Dokumenti"), documentStoreColumns(),
                                         QStringLiteral("Za, Kod, Vid, Valid"));
}

Checked<RecordRow> DocumentStore::save(const RecordRow &typed, bool adding, const QList<DocumentKind> &kinds,
                                       const QDate &today, const std::optional<RecordRow> &renewed,
                                       const QString &errorTitle) const
{
    RecordRow row = typed;
    QVariantMap &values = row.values;
    const DocumentKind *kind = findKind(kinds, values.value(QStringLiteral("Vid")).toString());
    // The store's own checks, over the values as they are to be written.
    QVariantMap asTexts;
    for (const QString &column : documentColumns()) {
        const QVariant value = values.value(column);
        asTexts.insert(column, documentDateColumns().contains(column) && toDate(value).isValid()
                                   ? formatDate(toDate(value))
                                   : value.toString());
    }
    if (auto failure = checkDocument(asTexts, kind ? std::optional<DocumentKind>(*kind) : std::nullopt, today))
        return *failure;
    values.insert(QStringLiteral("Za"), holderCode(kind->holder));
    values.insert(QStringLiteral("Kod"), values.value(QStringLiteral("Kod")).toString().trimmed());
    for (const QString &column : documentDateColumns())
        values.insert(column, dateValue(toDate(values.value(column))));
    if (adding) {
        values.insert(QStringLiteral("Smenen"), false);
        values.insert(QStringLiteral("PredID"), renewed ? QVariant(renewed->id) : QVariant(QMetaType(QMetaType::LongLong)));
    } else {
        values.insert(QStringLiteral("Smenen"), values.value(QStringLiteral("Smenen")).toBool());
    }
    const QDateTime now = QDateTime::currentDateTime();
    values.insert(QStringLiteral("DateMod"), now.date());
    values.insert(QStringLiteral("TimeMod"), now.time().toString(QStringLiteral("HH:mm:ss")));

    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    if (renewed && adding) {
        if (auto failure
            = executeOnVersion(m_db, errorTitle,
                               QStringLiteral("UPDATE Dokumenti SET Smenen = ?, row_version = row_version + 1 "
                                              "WHERE id = ? AND row_version = ?"),
                               {true, renewed->id, renewed->rowVersion}))
            return *failure;
    }
    const auto store = documents();
    if (auto failure = adding ? store->insert(row, errorTitle) : store->update(row, errorTitle))
        return *failure;
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    return row;
}

std::optional<UserMessage> DocumentStore::remove(const RecordRow &row, const QString &errorTitle) const
{
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    Query query(m_db);
    if (auto failure
        = executeOnVersion(m_db, errorTitle, QStringLiteral("DELETE FROM Dokumenti WHERE id = ? AND row_version = ?"),
                           {row.id, row.rowVersion}))
        return failure;
    if (auto failure = query.exec(errorTitle, QStringLiteral("DELETE FROM DokScan WHERE DokID = ?"), {row.id}))
        return failure;
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    return std::nullopt;
}

Checked<QList<RecordRow>> DocumentStore::history(const QString &kind, Holder holder, const QString &key) const
{
    RecordStore store(m_db, QStringLiteral("Dokumenti"), documentStoreColumns(), QStringLiteral("Valid DESC"),
                      QStringLiteral("Vid = ? AND Za = ? AND Kod = ?"), {kind, holderCode(holder), key});
    return store.load(readTitle);
}

Checked<std::optional<ScanInfo>> DocumentStore::scanInfo(qint64 documentId) const
{
    Query query(m_db);
    if (auto failure
        = query.exec(readTitle, QStringLiteral("SELECT Ime, Razmer FROM DokScan WHERE DokID = ?"), {documentId}))
        return *failure;
    if (!query.next())
        return std::optional<ScanInfo>();
    return std::optional<ScanInfo>(ScanInfo{query.value(0).toString(), query.value(1).toLongLong()});
}

Checked<QByteArray> DocumentStore::scanData(qint64 documentId) const
{
    Query query(m_db);
    if (auto failure = query.exec(readTitle, QStringLiteral("SELECT Danni FROM DokScan WHERE DokID = ?"), {documentId}))
        return *failure;
    if (!query.next())
        return QByteArray();
    return query.value(0).toByteArray();
}

std::optional<UserMessage> DocumentStore::attachScan(qint64 documentId, const QString &fileName, const QByteArray &data) const
{
    if (auto tooBig = checkScanSize(data.size()))
        return tooBig;
    if (data.isEmpty())
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Файлът е празен!"),
                                     QStringLiteral("Моля, изберете сканирания документ."), UserMessage::Icon::Exclamation);
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(scanTitle, transaction.lastError());
    Query query(m_db);
    if (auto failure = query.exec(scanTitle, QStringLiteral("DELETE FROM DokScan WHERE DokID = ?"), {documentId}))
        return failure;
    // The document must still be there: another user may have deleted it.
    if (auto failure
        = query.exec(scanTitle, QStringLiteral("SELECT COUNT(*) FROM Dokumenti WHERE id = ?"), {documentId}))
        return failure;
    if (!query.next() || query.value(0).toInt() != 1)
        return rowConflictMessage(scanTitle);
    query.finish();
    if (auto failure
        = query.exec(scanTitle, QStringLiteral("INSERT INTO DokScan (DokID, Ime, Razmer, Danni) VALUES (?, ?, ?, ?)"),
                     {documentId, fileName, qint64(data.size()), data}))
        return failure;
    if (!transaction.commit())
        return sqlErrorMessage(scanTitle, transaction.lastError());
    return std::nullopt;
}

std::optional<UserMessage> DocumentStore::removeScan(qint64 documentId) const
{
    Query query(m_db);
    return query.exec(scanTitle, QStringLiteral("DELETE FROM DokScan WHERE DokID = ?"), {documentId});
}

Checked<RowSet> DocumentStore::dueList(const QDate &today) const
{
    const Checked<QList<DocumentKind>> kindList = kinds();
    if (!kindList)
        return kindList.message();
    Query query(m_db);
    if (auto failure
        = query.exec(readTitle,
                     QStringLiteral("SELECT d.id, d.Vid, d.Za, d.Kod, d.Nomer, d.Valid, "
                                    "(SELECT MAX(s.ime) FROM shof s WHERE s.kod = d.Kod) "
                                    "FROM Dokumenti d JOIN DokVid k ON k.Ime = d.Vid "
                                    "WHERE d.Smenen = ? AND k.Napomnia = ? AND d.Valid IS NOT NULL AND d.Valid <= ? "
                                    "ORDER BY d.Valid, d.id"),
                     {false, true, today.addDays(longestLead(kindList.value()))}))
        return *failure;
    struct Due {
        QList<QVariant> cells;
        QDate actBy;
        qint64 id;
    };
    QList<Due> due;
    while (query.next()) {
        const DocumentKind *kind = findKind(kindList.value(), query.value(1).toString());
        const QDate valid = toDate(query.value(5));
        if (!kind)
            continue;
        const DueState state = dueState(*kind, valid, today);
        if (state == DueState::NotDue)
            continue;
        const bool truck = query.value(2).toString() == QLatin1String("K");
        const QString key = query.value(3).toString();
        const QString name = query.value(6).toString();
        const QString holder = truck ? QStringLiteral("Кола ") + key
                                     : QStringLiteral("Шофьор ") + key + (name.isEmpty() ? QString() : QStringLiteral(" ") + name);
        const QDate actBy = state == DueState::Expired ? valid : actByDate(*kind, valid);
        due.append({{query.value(0), dueStateText(state), state == DueState::Expired, kind->name, query.value(2), key,
                     holder, query.value(4), valid, actBy, today.daysTo(actBy)},
                    actBy,
                    query.value(0).toLongLong()});
    }
    std::stable_sort(due.begin(), due.end(), [](const Due &a, const Due &b) { return a.actBy < b.actBy; });
    RowSet rows({QStringLiteral("id"), QStringLiteral("Sastoianie"), QStringLiteral("Iztekal"), QStringLiteral("Vid"),
                 QStringLiteral("Za"), QStringLiteral("Kod"), QStringLiteral("Pritejatel"), QStringLiteral("Nomer"),
                 QStringLiteral("Valid"), QStringLiteral("DoKoga"), QStringLiteral("Ostavat")});
    rows.reserveRows(int(due.size()));
    for (const Due &row : std::as_const(due))
        rows.appendRow(row.cells);
    return rows;
}

Checked<QPair<int, int>> DocumentStore::dueCount(const QDate &today) const
{
    const Checked<RowSet> rows = dueList(today);
    if (!rows)
        return rows.message();
    int expired = 0;
    for (int row = 0; row < rows.value().rowCount(); ++row)
        expired += rows.value().value(row, 2).toBool() ? 1 : 0;
    return qMakePair(rows.value().rowCount(), expired);
}

QStringList DocumentStore::trucks() const
{
    return nonBlankTexts(m_db, QStringLiteral("SELECT DISTINCT kola FROM Config ORDER BY kola"));
}

QList<QPair<QString, QString>> DocumentStore::drivers() const
{
    QList<QPair<QString, QString>> list;
    Query query(m_db);
    if (query.exec(readTitle, QStringLiteral("SELECT kod, ime FROM shof ORDER BY kod, id")))
        return list;
    while (query.next()) {
        const QString code = query.value(0).toString().trimmed();
        if (!code.isEmpty())
            list.append({code, query.value(1).toString().trimmed()});
    }
    return list;
}

Checked<int> DocumentStore::holderDocumentCount(Holder holder, const QString &key) const
{
    const Checked<QVariant> count
        = scalar(m_db, readTitle, QStringLiteral("SELECT COUNT(*) FROM Dokumenti WHERE Za = ? AND Kod = ?"),
                 {holderCode(holder), key.trimmed()});
    if (!count)
        return count.message();
    return count.value().toInt();
}

std::optional<UserMessage> DocumentStore::removeHolder(Holder holder, const RecordRow &row, const QString &errorTitle) const
{
    const bool truck = holder == Holder::Truck;
    const QString key = row.values.value(truck ? QStringLiteral("kola") : QStringLiteral("kod")).toString().trimmed();
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    Query query(m_db);
    if (auto failure = executeOnVersion(m_db, errorTitle,
                                        truck ? QStringLiteral("DELETE FROM Config WHERE id = ? AND row_version = ?")
                                              : QStringLiteral("DELETE FROM shof WHERE id = ? AND row_version = ?"),
                                        {row.id, row.rowVersion}))
        return failure;
    // Another row of the same number or code keeps the documents: they are its too.
    if (auto failure = query.exec(errorTitle,
                                  truck ? QStringLiteral("SELECT COUNT(*) FROM Config WHERE TRIM(kola) = ?")
                                        : QStringLiteral("SELECT COUNT(*) FROM shof WHERE TRIM(kod) = ?"),
                                  {key}))
        return failure;
    const bool keep = query.next() && query.value(0).toInt() > 0;
    query.finish();
    if (!keep && !key.isEmpty()) {
        if (auto failure
            = query.exec(errorTitle,
                         QStringLiteral(
                             "DELETE FROM DokScan WHERE DokID IN (SELECT id FROM Dokumenti WHERE Za = ? AND Kod = ?)"),
                         {holderCode(holder), key}))
            return failure;
        if (auto failure = query.exec(errorTitle, QStringLiteral("DELETE FROM Dokumenti WHERE Za = ? AND Kod = ?"),
                                      {holderCode(holder), key}))
            return failure;
    }
    if (!transaction.commit())
        return sqlErrorMessage(errorTitle, transaction.lastError());
    return std::nullopt;
}

std::optional<UserMessage> holderDeleteQuestionFor(QSqlDatabase db, Holder holder, const RecordRow &row)
{
    const QString key = row.values.value(holder == Holder::Truck ? QStringLiteral("kola") : QStringLiteral("kod")).toString().trimmed();
    if (key.isEmpty())
        return std::nullopt;
    const Checked<int> count = DocumentStore(std::move(db)).holderDocumentCount(holder, key);
    if (count && count.value() == 0)
        return std::nullopt;
    if (!count)
        return UserMessage::twoLines(QStringLiteral("Изтриване на запис"),
                                     QStringLiteral("Документите на %1 не могат да бъдат преброени; ще бъдат изтрити с записа.").arg(key),
                                     QStringLiteral("Наистина ли искате да изтриете записа?"), UserMessage::Icon::Question);
    return holderDeleteQuestion(holder, key, count.value());
}

}
