#include "klientsstore.h"

#include "core/rounding.h"
#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/sqlerror.h"
#include "data/transaction.h"
#include "settlement/clientstatement.h"

#include <QSqlError>
#include <QSqlQuery>
#include <algorithm>
#include <numeric>
#include <vector>

namespace zarek {

using namespace settlement;  // the client statement's lines and tax

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");
const QString writeTitle = QStringLiteral("ГРЕШКА при запис!");
constexpr int progressStep = 250;

UserMessage failure(const QString &title, const QSqlQuery &query)
{
    return sqlErrorMessage(title, query.lastError());
}

std::optional<UserMessage> commitOrMessage(Transaction &transaction, QSqlDatabase db)
{
    if (transaction.commit())
        return std::nullopt;
    return sqlErrorMessage(writeTitle, db.lastError());
}

// Inserts rows of the eight columns into a table, values taken by column name from the row set.
std::optional<UserMessage> insertRows(QSqlDatabase db, const QString &table, const RowSet &rows)
{
    const QStringList &names = KlientsStore::columns();
    QList<int> source;
    for (const QString &name : names)
        source.append(rows.column(name));
    QSqlQuery insert(db);
    if (!insert.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
                            .arg(table, names.join(QStringLiteral(", ")))))
        return failure(writeTitle, insert);
    for (int row = 0; row < rows.rowCount(); ++row) {
        for (int i = 0; i < names.size(); ++i)
            insert.bindValue(i, source.at(i) < 0 ? QVariant() : rows.value(row, source.at(i)));
        if (!insert.exec())
            return failure(writeTitle, insert);
    }
    return std::nullopt;
}

}

KlientsStore::KlientsStore(QSqlDatabase scratch) : m_scratch(std::move(scratch)) {}

const QStringList &KlientsStore::columns()
{
    static const QStringList names = {QStringLiteral("Data"), QStringLiteral("Marsh"), QStringLiteral("VidTovar"),
                                      QStringLiteral("Kola"), QStringLiteral("KM"),    QStringLiteral("Ton"),
                                      QStringLiteral("Tarifa"), QStringLiteral("Suma")};
    return names;
}

Checked<RowSet> KlientsStore::clientCourses(QSqlDatabase db, const SearchConditions &conditions)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT data, Marsh, Tovar, kola, km, ton, Tarifa, bruto FROM tabl "
                                 "WHERE Klient = ? AND data BETWEEN ? AND ? ORDER BY data, id"));
    query.addBindValue(conditions.SeekKlient);
    query.addBindValue(conditions.period.from);
    query.addBindValue(conditions.period.to);
    if (!query.exec())
        return failure(readTitle, query);
    const Checked<RowSet> read = RowSet::fromQuery(query, readTitle);
    if (!read)
        return read;
    const RowSet &all = read.value();

    // The prefixes compare without regard to case on both engines, Cyrillic included.
    std::vector<int> kept;
    for (int row = 0; row < all.rowCount(); ++row) {
        if (matchesPrefix(all.value(row, 2).toString(), conditions.SeekTovar)
            && matchesPrefix(all.value(row, 1).toString(), conditions.SeekMarsh)
            && matchesPrefix(all.value(row, 3).toString(), conditions.SeekKola))
            kept.push_back(row);
    }
    // By date, then route; the engines' own orders of texts differ, this one does not.
    std::stable_sort(kept.begin(), kept.end(), [&all](int a, int b) {
        const QDate da = dateOfValue(all.value(a, 0));
        const QDate db = dateOfValue(all.value(b, 0));
        if (da != db)
            return da < db;
        return all.value(a, 1).toString().compare(all.value(b, 1).toString()) < 0;
    });
    RowSet courses(all.columns());
    courses.reserveRows(static_cast<int>(kept.size()));
    for (const int row : kept) {
        QList<QVariant> cells;
        for (int c = 0; c < all.columnCount(); ++c)
            cells.append(all.value(row, c));
        courses.appendRow(cells);
    }
    return courses;
}

std::optional<UserMessage> KlientsStore::fillWorkingList(const RowSet &courses, const std::function<void(int)> &progress)
{
    Transaction transaction(m_scratch);
    QSqlQuery insert(m_scratch);
    if (!insert.prepare(QStringLiteral("INSERT INTO TempKlients (Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma) "
                                       "VALUES (?, ?, ?, ?, ?, ?, ?, ?)")))
        return failure(writeTitle, insert);
    const int data = courses.column(QStringLiteral("data"));
    const int marsh = courses.column(QStringLiteral("Marsh"));
    const int tovar = courses.column(QStringLiteral("Tovar"));
    const int kola = courses.column(QStringLiteral("kola"));
    const int km = courses.column(QStringLiteral("km"));
    const int ton = courses.column(QStringLiteral("ton"));
    const int tarifa = courses.column(QStringLiteral("Tarifa"));
    const int bruto = courses.column(QStringLiteral("bruto"));
    for (int row = 0; row < courses.rowCount(); ++row) {
        insert.bindValue(0, dateOfValue(courses.value(row, data)));
        insert.bindValue(1, courses.value(row, marsh));
        insert.bindValue(2, courses.value(row, tovar));
        insert.bindValue(3, courses.value(row, kola));
        // The working list holds whole kilometres.
        const QVariant kmValue = courses.value(row, km);
        insert.bindValue(4, kmValue.isNull() ? QVariant()
                                             : QVariant(static_cast<qlonglong>(wholeKm(kmValue.toDouble()))));
        insert.bindValue(5, courses.value(row, ton));
        insert.bindValue(6, courses.value(row, tarifa));
        insert.bindValue(7, courses.value(row, bruto));
        if (!insert.exec())
            return failure(writeTitle, insert);
        if (progress && (row + 1) % progressStep == 0)
            progress(row + 1);
    }
    if (progress)
        progress(courses.rowCount());
    return commitOrMessage(transaction, m_scratch);
}

Checked<RowSet> KlientsStore::workingList(Order order) const
{
    QSqlQuery query(m_scratch);
    query.setForwardOnly(true);
    const QString orderBy = order == Order::AsEntered ? QStringLiteral("rowid") : QStringLiteral("Marsh, Data, rowid");
    if (!query.exec(QStringLiteral("SELECT rowid AS RowKey, Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma "
                                   "FROM TempKlients ORDER BY ")
                    + orderBy))
        return failure(readTitle, query);
    return RowSet::fromQuery(query, readTitle);
}

std::optional<UserMessage> KlientsStore::setValue(qint64 rowKey, const QString &field, const QVariant &value)
{
    QString column;
    if (field.compare(QLatin1String("KM"), Qt::CaseInsensitive) == 0)
        column = QStringLiteral("KM");
    else if (field.compare(QLatin1String("Tarifa"), Qt::CaseInsensitive) == 0)
        column = QStringLiteral("Tarifa");
    else
        return UserMessage{writeTitle, QStringLiteral("Колоната %1 не се коригира.").arg(field), UserMessage::Icon::Critical};
    QSqlQuery update(m_scratch);
    update.prepare(QStringLiteral("UPDATE TempKlients SET %1 = ? WHERE rowid = ?").arg(column));
    update.addBindValue(value);
    update.addBindValue(rowKey);
    if (!update.exec())
        return failure(writeTitle, update);
    return std::nullopt;
}

std::optional<UserMessage> KlientsStore::removeRow(qint64 rowKey)
{
    QSqlQuery remove(m_scratch);
    remove.prepare(QStringLiteral("DELETE FROM TempKlients WHERE rowid = ?"));
    remove.addBindValue(rowKey);
    if (!remove.exec())
        return failure(writeTitle, remove);
    return std::nullopt;
}

Checked<StatementTotals> KlientsStore::fillPrintCopy(const BooksDay &books, const std::function<void(int)> &progress)
{
    const Checked<RowSet> working = workingList(Order::ByRouteAndDate);
    if (!working)
        return working.message();
    const RowSet &rows = working.value();
    Transaction transaction(m_scratch);
    QSqlQuery query(m_scratch);
    // A statement lists each row once, however often it is printed.
    if (!query.exec(QStringLiteral("DELETE FROM TempKlientsNew")))
        return failure(writeTitle, query);
    if (!query.prepare(QStringLiteral("INSERT INTO TempKlientsNew (Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma) "
                                      "VALUES (?, ?, ?, ?, ?, ?, ?, ?)")))
        return failure(writeTitle, query);
    StatementTotals totals;
    // Each course's money is in the currency of its day; the sums in euro once any course is.
    const DatedAmounts amounts = datedAmounts(books, rows, QStringLiteral("Data"));
    const int date = rows.column(QStringLiteral("Data"));
    totals.currency = amounts.totals;
    totals.changeover = books.changeover;
    totals.mixed = amounts.mixed;
    for (int row = 0; row < rows.rowCount(); ++row) {
        const double km = rows.value(row, QStringLiteral("KM")).toDouble();
        const double ton = rows.value(row, QStringLiteral("Ton")).toDouble();
        const StatementLine line = statementLine(km, ton, rows.value(row, QStringLiteral("Tarifa")).toDouble());
        const Currency currency = rowCurrency(books, rows, row, date);
        query.bindValue(0, rows.value(row, QStringLiteral("Data")));
        query.bindValue(1, rows.value(row, QStringLiteral("Marsh")));
        query.bindValue(2, rows.value(row, QStringLiteral("VidTovar")));
        query.bindValue(3, rows.value(row, QStringLiteral("Kola")));
        query.bindValue(4, line.km);
        query.bindValue(5, line.ton);
        query.bindValue(6, line.tarifa);
        query.bindValue(7, rowAmountText(line.suma, currency, amounts.mixed));
        if (!query.exec())
            return failure(writeTitle, query);
        totals.km += km;
        totals.ton += ton;
        // The sum as printed, so the total equals its lines (converted where the course is in leva).
        totals.gross += convertAmount(line.suma, currency, amounts.totals);
        ++totals.lines;
        if (progress && (row + 1) % progressStep == 0)
            progress(row + 1);
    }
    if (auto refusal = commitOrMessage(transaction, m_scratch))
        return *refusal;
    return totals;
}

Checked<RowSet> KlientsStore::printCopy() const
{
    QSqlQuery query(m_scratch);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma FROM TempKlientsNew "
                                   "ORDER BY rowid")))
        return failure(readTitle, query);
    return RowSet::fromQuery(query, readTitle);
}

std::optional<UserMessage> KlientsStore::clearPrintCopy()
{
    QSqlQuery query(m_scratch);
    if (!query.exec(QStringLiteral("DELETE FROM TempKlientsNew")))
        return failure(writeTitle, query);
    return std::nullopt;
}

std::optional<UserMessage> KlientsStore::replaceRows(const StatementFileRows &rows)
{
    Transaction transaction(m_scratch);
    QSqlQuery query(m_scratch);
    for (const QString &table : {QStringLiteral("TempKlients"), QStringLiteral("TempKlientsNew")}) {
        if (!query.exec(QStringLiteral("DELETE FROM ") + table))
            return failure(writeTitle, query);
    }
    query.finish();
    if (auto refusal = insertRows(m_scratch, QStringLiteral("TempKlients"), rows.klients))
        return refusal;
    if (auto refusal = insertRows(m_scratch, QStringLiteral("TempKlientsNew"), rows.klientsNew))
        return refusal;
    return commitOrMessage(transaction, m_scratch);
}

}
