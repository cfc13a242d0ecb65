#pragma once

#include "core/currency.h"

#include "core/money.h"
#include "core/usermessage.h"
#include "courses/searchconditions.h"
#include "data/dialect.h"
#include "data/rowset.h"

#include <QSqlDatabase>
#include <functional>
#include <optional>

namespace zarek {

// What the printed statement adds up under its lines.
struct StatementTotals {
    double km = 0;
    double ton = 0;
    Money gross;
    int lines = 0;
    // The currency of the sums (euro when any course is) and whether courses of the other one
    // were converted into them, each sum then printed with its unit.
    Currency currency = Currency::Leva;
    bool mixed = false;
    Changeover changeover;  // the books the sums were made by
};

// The rows of a statement file (.kl): the working list and its printed copy.
struct StatementFileRows {
    RowSet klients;     // TempKlients
    RowSet klientsNew;  // TempKlientsNew
};

// The client statement's data. The client's courses are read from the register; everything the
// dispatcher then does lives in the statement's scratch database: the working list TempKlients
// and the printed copy TempKlientsNew. Nothing here writes the register.
class KlientsStore {
public:
    explicit KlientsStore(QSqlDatabase scratch);

    // The client's courses of the period whose cargo, route and truck begin with the prefixes of
    // the search, by date and then route: data, Marsh, Tovar, kola, km, ton, Tarifa, bruto.
    static Checked<RowSet> clientCourses(QSqlDatabase db, const SearchConditions &conditions);
    // The statement it reads them with, on the engine.
    static QString clientCoursesSql(Dialect dialect);

    // The working list as it will hold the courses, before it is written: each row's key (RowKey,
    // from 1 in the order the rows are written) and the eight columns, of the types the list gives
    // back when read.
    static RowSet workingRows(const RowSet &courses);

    // Copies the courses into the working list in one transaction, each row under the key
    // workingRows gives it; progress is told every few hundred rows with the count done.
    std::optional<UserMessage> fillWorkingList(const RowSet &courses,
                                               const std::function<void(int done)> &progress = {});

    enum class Order { AsEntered, ByRouteAndDate };
    // The working list with each row's key (RowKey) and the eight columns.
    Checked<RowSet> workingList(Order order) const;

    // A corrected kilometre (KM) or rate (Tarifa) of a row of the working list.
    std::optional<UserMessage> setValue(qint64 rowKey, const QString &field, const QVariant &value);
    std::optional<UserMessage> removeRow(qint64 rowKey);

    // Empties the printed copy and fills it again from the working list, by route and then date,
    // each sum recomputed from km, tonnes and rate, in one transaction. The totals of its lines.
    Checked<StatementTotals> fillPrintCopy(const BooksDay &books, const std::function<void(int done)> &progress = {});
    // The printed copy of the working list as read by route and date (workingList(ByRouteAndDate)),
    // not yet written: its lines as the copy gives them back (printCopy()), and their totals.
    struct PrintedCopy {
        RowSet lines;
        StatementTotals totals;
    };
    static PrintedCopy printedCopy(const BooksDay &books, const RowSet &byRoute);
    // Empties the printed copy and fills it with the lines, in one transaction.
    std::optional<UserMessage> writePrintCopy(const RowSet &lines, const std::function<void(int done)> &progress = {});
    Checked<RowSet> printCopy() const;
    std::optional<UserMessage> clearPrintCopy();

    // Replaces the rows of both tables with those of a statement file, in one transaction.
    std::optional<UserMessage> replaceRows(const StatementFileRows &rows);

    // The eight columns both tables share, in their order.
    static const QStringList &columns();

private:
    QSqlDatabase m_scratch;
};

}
