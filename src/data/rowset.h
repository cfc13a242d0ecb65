#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

class QSqlQuery;

namespace zarek {

// The rows a query gave, held in memory for a report or a result grid: column names and one flat
// array of cells, row after row. Columns are found by name without regard to case, as the
// engines spell them differently.
class RowSet {
public:
    RowSet() = default;
    explicit RowSet(QStringList columns);

    // Reads every row of an executed query (best made forward-only) from its current position.
    static Checked<RowSet> fromQuery(QSqlQuery &query, const QString &errorTitle);

    const QStringList &columns() const { return m_columns; }
    int columnCount() const { return static_cast<int>(m_columns.size()); }
    int rowCount() const { return m_columnCount == 0 ? 0 : static_cast<int>(m_cells.size() / m_columnCount); }
    bool isEmpty() const { return rowCount() == 0; }

    // -1 when there is no such column.
    int column(const QString &name) const;

    const QVariant &value(int row, int column) const { return m_cells.at(index(row, column)); }
    QVariant value(int row, const QString &columnName) const;
    void setValue(int row, int column, const QVariant &value) { m_cells[index(row, column)] = value; }

    // Appends a row; missing cells are null, surplus ones dropped.
    void appendRow(const QList<QVariant> &cells);
    void appendRow(QList<QVariant> &&cells);
    // Appends a row whose cells are moved out of cells: the list keeps its size, every cell null,
    // ready for the next row.
    void takeRow(QList<QVariant> &cells);
    // Adds a column of nulls after the last one; its index.
    int addColumn(const QString &name);
    // Adds columns of nulls after the last one, the cells moved once, not copied.
    void addColumns(const QStringList &names);
    // The cells of a row, to change in place (columnCount() of them).
    QVariant *rowCells(int row) { return m_cells.data() + index(row, 0); }
    // Takes a row out; the rows after it move up.
    void removeRow(int row);
    // Keeps the rows named, in the order named (each at most once); the others go. The cells are
    // moved, not copied.
    void keepRows(const QList<int> &rows);
    void reserveRows(int rows) { m_cells.reserve(static_cast<qsizetype>(rows) * m_columnCount); }

private:
    qsizetype index(int row, int column) const { return static_cast<qsizetype>(row) * m_columnCount + column; }

    QStringList m_columns;
    qsizetype m_columnCount = 0;
    QList<QVariant> m_cells;
};

}
