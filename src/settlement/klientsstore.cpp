#include "klientsstore.h"

#include "core/dates.h"
#include "core/rounding.h"
#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/query.h"
#include "data/scratchdatabase.h"
#include "data/sqlerror.h"
#include "data/transaction.h"
#include "settlement/clientstatement.h"

#include <QSqlError>
#include <algorithm>
#include <numeric>
#include <vector>

namespace zarek {

using namespace settlement;  // the client statement's lines and tax

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");
const QString writeTitle = QStringLiteral("ГРЕШКА при запис!");

std::optional<UserMessage> commitOrMessage(Transaction &transaction, QSqlDatabase db)
{
    if (transaction.commit())
        return std::nullopt;
    return sqlErrorMessage(writeTitle, db.lastError());
}

// Inserts rows of the eight columns into a table, values taken by column name from the row set.
std::optional<UserMessage> insertRows(QSqlDatabase db, const QString &table, const RowSet &rows,
                                      const std::function<void(int)> &progress = {})
{
    const QStringList &names = KlientsStore::columns();
    QList<int> source;
    for (const QString &name : names)
        source.append(rows.column(name));
    QList<QVariantList> values;
    values.reserve(rows.rowCount());
    for (int row = 0; row < rows.rowCount(); ++row) {
        QVariantList cells;
        for (int i = 0; i < names.size(); ++i)
            cells.append(source.at(i) < 0 ? QVariant() : rows.value(row, source.at(i)));
        values.append(cells);
    }
    return fillScratchTable(db, writeTitle, table, names, values, progress);
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

QString KlientsStore::clientCoursesSql(Dialect dialect)
{
    // PostgreSQL orders texts by the server's language unless told to compare codes; SQLite
    // compares codes. A route left empty sorts as empty text, as the screen reads it.
    return QStringLiteral("SELECT data, Marsh, Tovar, kola, km, ton, Tarifa, bruto FROM tabl "
                          "WHERE Klient = ? AND data BETWEEN ? AND ? ORDER BY data, COALESCE(Marsh, '')%1, id")
        .arg(dialect == Dialect::PostgreSQL ? QStringLiteral(" COLLATE \"C\"") : QString());
}

Checked<RowSet> KlientsStore::clientCourses(QSqlDatabase db, const SearchConditions &conditions)
{
    RowSet all;
    {
        const Checked<RowSet> read = readRows(db, readTitle, clientCoursesSql(dialectOf(db)),
                                              {conditions.SeekKlient, conditions.period.from, conditions.period.to});
        if (!read)
            return read;
        all = read.value();  // the rows' only holder once the reading goes
    }

    // The prefixes compare without regard to case on both engines, Cyrillic included.
    const bool narrowed = !conditions.SeekTovar.trimmed().isEmpty() || !conditions.SeekMarsh.trimmed().isEmpty()
                          || !conditions.SeekKola.trimmed().isEmpty();
    std::vector<int> kept;
    kept.reserve(static_cast<size_t>(all.rowCount()));
    for (int row = 0; row < all.rowCount(); ++row) {
        if (!narrowed
            || (matchesPrefix(all.value(row, 2).toString(), conditions.SeekTovar)
                && matchesPrefix(all.value(row, 1).toString(), conditions.SeekMarsh)
                && matchesPrefix(all.value(row, 3).toString(), conditions.SeekKola)))
            kept.push_back(row);
    }
    // By date, then route; the engines' own orders of texts differ, this one does not. The rows
    // come in it already (routes by their characters' codes, as QString compares them); should a
    // day's courses not be, they are sorted here.
    struct Key {
        qint64 day;
        QString route;
    };
    std::vector<Key> keys(static_cast<size_t>(all.rowCount()));
    for (const int row : kept)
        keys[static_cast<size_t>(row)] = {dateOfValue(all.value(row, 0)).toJulianDay(), all.value(row, 1).toString()};
    const auto before = [&keys](int a, int b) {
        const Key &ka = keys[static_cast<size_t>(a)];
        const Key &kb = keys[static_cast<size_t>(b)];
        if (ka.day != kb.day)
            return ka.day < kb.day;
        return ka.route.compare(kb.route) < 0;
    };
    const bool inOrder = std::is_sorted(kept.begin(), kept.end(), before);
    if (!inOrder)
        std::stable_sort(kept.begin(), kept.end(), before);
    if (!inOrder || kept.size() < static_cast<size_t>(all.rowCount()))
        all.keepRows(QList<int>(kept.begin(), kept.end()));
    return all;
}

RowSet KlientsStore::workingRows(const RowSet &courses)
{
    const int data = courses.column(QStringLiteral("data"));
    const int marsh = courses.column(QStringLiteral("Marsh"));
    const int tovar = courses.column(QStringLiteral("Tovar"));
    const int kola = courses.column(QStringLiteral("kola"));
    const int km = courses.column(QStringLiteral("km"));
    const int ton = courses.column(QStringLiteral("ton"));
    const int tarifa = courses.column(QStringLiteral("Tarifa"));
    const int bruto = courses.column(QStringLiteral("bruto"));
    // As the list's columns give them back: dates and texts as text, kilometres whole, the rest
    // as floating numbers; an empty cell stays empty.
    // Values already of their kind are kept as they are.
    const auto text = [](const QVariant &value) {
        if (value.isNull() || (value.typeId() == QMetaType::QString && value.toString().isNull()))
            return QVariant(QMetaType::fromType<QString>());
        return value.typeId() == QMetaType::QString ? value : QVariant(value.toString());
    };
    const auto real = [](const QVariant &value) {
        if (value.isNull())
            return QVariant(QMetaType::fromType<double>());
        return value.typeId() == QMetaType::Double ? value : QVariant(value.toDouble());
    };
    const auto day = [](const QVariant &value) {
        const QDate date = dateOfValue(value);
        if (!date.isValid())
            return QVariant(QMetaType::fromType<QString>());
        if (value.typeId() == QMetaType::QString && value.toString().size() == 10)
            return value;  // stored in the list's own form
        return QVariant(isoDateText(date));
    };
    RowSet rows(QStringList{QStringLiteral("RowKey")} + columns());
    rows.reserveRows(courses.rowCount());
    QList<QVariant> cells(columns().size() + 1);
    for (int row = 0; row < courses.rowCount(); ++row) {
        const QVariant kmValue = courses.value(row, km);
        cells[0] = QVariant(static_cast<qlonglong>(row) + 1);
        cells[1] = day(courses.value(row, data));
        cells[2] = text(courses.value(row, marsh));
        cells[3] = text(courses.value(row, tovar));
        cells[4] = text(courses.value(row, kola));
        cells[5] = kmValue.isNull() ? QVariant(QMetaType::fromType<qlonglong>())
                                    : QVariant(static_cast<qlonglong>(wholeKm(kmValue.toDouble())));
        cells[6] = real(courses.value(row, ton));
        cells[7] = real(courses.value(row, tarifa));
        cells[8] = real(courses.value(row, bruto));
        rows.takeRow(cells);
    }
    return rows;
}

std::optional<UserMessage> KlientsStore::fillWorkingList(const RowSet &courses, const std::function<void(int)> &progress)
{
    return insertRows(m_scratch, QStringLiteral("TempKlients"), workingRows(courses), progress);
}

Checked<RowSet> KlientsStore::workingList(Order order) const
{
    const QString orderBy = order == Order::AsEntered ? QStringLiteral("rowid") : QStringLiteral("Marsh, Data, rowid");
    return readRows(m_scratch, readTitle,
                    QStringLiteral("SELECT rowid AS RowKey, Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma "
                                   "FROM TempKlients ORDER BY ")
                        + orderBy);
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
    return execute(m_scratch, writeTitle, QStringLiteral("UPDATE TempKlients SET %1 = ? WHERE rowid = ?").arg(column),
                   {value, rowKey});
}

std::optional<UserMessage> KlientsStore::removeRow(qint64 rowKey)
{
    return execute(m_scratch, writeTitle, QStringLiteral("DELETE FROM TempKlients WHERE rowid = ?"), {rowKey});
}

Checked<StatementTotals> KlientsStore::fillPrintCopy(const BooksDay &books, const std::function<void(int)> &progress)
{
    const Checked<RowSet> working = workingList(Order::ByRouteAndDate);
    if (!working)
        return working.message();
    const PrintedCopy copy = printedCopy(books, working.value());
    if (auto refusal = writePrintCopy(copy.lines, progress))
        return *refusal;
    return copy.totals;
}

KlientsStore::PrintedCopy KlientsStore::printedCopy(const BooksDay &books, const RowSet &rows)
{
    PrintedCopy copy;
    StatementTotals &totals = copy.totals;
    // Each course's money is in the currency of its day; the sums in euro once any course is.
    const DatedAmounts amounts = datedAmounts(books, rows, QStringLiteral("Data"));
    const int date = rows.column(QStringLiteral("Data"));
    const int marsh = rows.column(QStringLiteral("Marsh"));
    const int vidTovar = rows.column(QStringLiteral("VidTovar"));
    const int kola = rows.column(QStringLiteral("Kola"));
    const int kmColumn = rows.column(QStringLiteral("KM"));
    const int tonColumn = rows.column(QStringLiteral("Ton"));
    const int tarifa = rows.column(QStringLiteral("Tarifa"));
    // The copy's columns are texts: each value as the copy gives it back, an empty cell empty.
    const auto text = [&rows](int row, int column) {
        const QVariant value = column < 0 ? QVariant() : rows.value(row, column);
        if (value.isNull() || (value.typeId() == QMetaType::QString && value.toString().isNull()))
            return QVariant(QMetaType::fromType<QString>());
        return value.typeId() == QMetaType::QString ? value : QVariant(value.toString());
    };
    const auto number = [&rows](int row, int column) { return column < 0 ? 0.0 : rows.value(row, column).toDouble(); };
    totals.currency = amounts.totals;
    totals.changeover = books.changeover;
    totals.mixed = amounts.mixed;
    copy.lines = RowSet(columns());
    copy.lines.reserveRows(rows.rowCount());
    QList<QVariant> cells(columns().size());
    for (int row = 0; row < rows.rowCount(); ++row) {
        const double km = number(row, kmColumn);
        const double ton = number(row, tonColumn);
        const StatementLine line = statementLine(km, ton, number(row, tarifa));
        const Currency currency = rowCurrency(books, rows, row, date);
        cells[0] = text(row, date);
        cells[1] = text(row, marsh);
        cells[2] = text(row, vidTovar);
        cells[3] = text(row, kola);
        cells[4] = line.km;
        cells[5] = line.ton;
        cells[6] = line.tarifa;
        cells[7] = rowAmountText(line.suma, currency, amounts.mixed);
        copy.lines.appendRow(cells);
        totals.km += km;
        totals.ton += ton;
        // The sum as printed, so the total equals its lines (converted where the course is in leva).
        totals.gross += convertAmount(line.suma, currency, amounts.totals);
        ++totals.lines;
    }
    return copy;
}

std::optional<UserMessage> KlientsStore::writePrintCopy(const RowSet &lines, const std::function<void(int)> &progress)
{
    // A statement lists each row once, however often it is printed.
    return insertRows(m_scratch, QStringLiteral("TempKlientsNew"), lines, progress);
}

Checked<RowSet> KlientsStore::printCopy() const
{
    return readRows(m_scratch, readTitle,
                    QStringLiteral("SELECT Data, Marsh, VidTovar, Kola, KM, Ton, Tarifa, Suma FROM TempKlientsNew "
                                   "ORDER BY rowid"));
}

std::optional<UserMessage> KlientsStore::clearPrintCopy()
{
    return execute(m_scratch, writeTitle, QStringLiteral("DELETE FROM TempKlientsNew"));
}

std::optional<UserMessage> KlientsStore::replaceRows(const StatementFileRows &rows)
{
    Transaction transaction(m_scratch);
    if (auto refusal = insertRows(m_scratch, QStringLiteral("TempKlients"), rows.klients))
        return refusal;
    if (auto refusal = insertRows(m_scratch, QStringLiteral("TempKlientsNew"), rows.klientsNew))
        return refusal;
    return commitOrMessage(transaction, m_scratch);
}

}
