#pragma once

#include "core/usermessage.h"
#include "data/rowset.h"
#include "reports/report.h"

#include <QList>
#include <QSqlDatabase>
#include <QStringList>
#include <QVariant>
#include <functional>
#include <memory>

namespace zarek {

// Rows read one at a time, as a report lays them out: a large report never holds its rows twice.
class RowStream {
public:
    virtual ~RowStream() = default;
    virtual const QStringList &columns() const = 0;
    // The next row's cells in column order; false after the last row, or on a failure (error()).
    virtual bool next(QList<QVariant> &cells) = 0;
    virtual std::optional<UserMessage> error() const { return std::nullopt; }
};

// The rows of a set, in order.
std::shared_ptr<RowStream> rowStreamOf(RowSet rows);

// The rows of a query, read as they are asked for, on a connection of the stream's own (so the
// program's other queries may run meanwhile); the values are bound in order. A query that fails
// is a message with the error title.
Checked<std::shared_ptr<RowStream>> queryRowStream(QSqlDatabase db, const QString &sql, const QList<QVariant> &values,
                                                   const QString &errorTitle);

// The rows of "SELECT selectList FROM fromAndWhere ORDER BY keyColumns" (fromAndWhere: the table
// and its WHERE clause, if any; the key columns together unique), read as they are asked for. On
// PostgreSQL, whose driver would hand over the whole result before its first row, they are read in
// chunks that grow from a first few, each the rows after the last key read ("(data, id) > (?, ?)
// ORDER BY data, id LIMIT n"), all in one read-only snapshot on the stream's own connection: the
// first page comes after the first chunk, and the rows are those of one moment. Elsewhere as
// queryRowStream.
Checked<std::shared_ptr<RowStream>> keyedRowStream(QSqlDatabase db, const QString &selectList,
                                                   const QString &fromAndWhere, const QStringList &keyColumns,
                                                   const QList<QVariant> &values, const QString &errorTitle);

// Each row changed as it is read: the added columns come after the source's, null until the
// change fills them.
std::shared_ptr<RowStream> changedRows(std::shared_ptr<RowStream> source, const QStringList &addedColumns,
                                       std::function<void(QList<QVariant> &cells)> change);

// Rows made one at a time as they are asked for: count of them, row i's cells (in column order)
// from make. A paper built from values in memory makes only the rows of the pages laid out.
std::shared_ptr<RowStream> madeRows(QStringList columns, int count, std::function<QList<QVariant>(int row)> make);

// What is left of a stream, in a set.
Checked<RowSet> readAllRows(RowStream &rows);

// A filled report whose rows are read while its pages are laid out (the report's own rows stay
// empty).
struct StreamedReport {
    Report report;
    std::shared_ptr<RowStream> rows;
};

// The report with every row read into it, for a layout in one go.
Checked<Report> withAllRows(Checked<StreamedReport> streamed);

}
