#include "rowset.h"

#include "data/sqlerror.h"

#include <QSqlQuery>
#include <QSqlRecord>

#include <algorithm>
#include <utility>

namespace zarek {

RowSet::RowSet(QStringList columns) : m_columns(std::move(columns)), m_columnCount(m_columns.size()) {}

Checked<RowSet> RowSet::fromQuery(QSqlQuery &query, const QString &errorTitle)
{
    if (!query.isActive())
        return sqlErrorMessage(errorTitle, query.lastError());
    const QSqlRecord record = query.record();
    QStringList names;
    for (int i = 0; i < record.count(); ++i)
        names.append(record.fieldName(i));
    RowSet rows(names);
    const int count = record.count();
    if (query.isSelect() && query.size() > 0)
        rows.reserveRows(query.size());
    while (query.next()) {
        for (int i = 0; i < count; ++i)
            rows.m_cells.append(query.value(i));
    }
    if (query.lastError().isValid())
        return sqlErrorMessage(errorTitle, query.lastError());
    return rows;
}

int RowSet::column(const QString &name) const
{
    // Names of another length never match: most columns are passed over without comparing letters.
    for (qsizetype i = 0; i < m_columns.size(); ++i) {
        const QString &column = m_columns.at(i);
        if (column.size() == name.size() && (column == name || column.compare(name, Qt::CaseInsensitive) == 0))
            return static_cast<int>(i);
    }
    return -1;
}

QVariant RowSet::value(int row, const QString &columnName) const
{
    const int c = column(columnName);
    return c < 0 ? QVariant() : value(row, c);
}

void RowSet::appendRow(const QList<QVariant> &cells)
{
    for (qsizetype i = 0; i < m_columnCount; ++i)
        m_cells.append(i < cells.size() ? cells.at(i) : QVariant());
}

void RowSet::appendRow(QList<QVariant> &&cells)
{
    takeRow(cells);
}

void RowSet::takeRow(QList<QVariant> &cells)
{
    if (!cells.isDetached()) {
        appendRow(std::as_const(cells));
        std::fill(cells.begin(), cells.end(), QVariant());
        return;
    }
    for (qsizetype i = 0; i < m_columnCount; ++i)
        m_cells.append(i < cells.size() ? std::exchange(cells[i], QVariant()) : QVariant());
}

int RowSet::addColumn(const QString &name)
{
    addColumns({name});
    return static_cast<int>(m_columnCount - 1);
}

void RowSet::addColumns(const QStringList &names)
{
    if (names.isEmpty())
        return;
    const int rows = rowCount();
    const qsizetype width = m_columnCount + names.size();
    QList<QVariant> cells(static_cast<qsizetype>(rows) * width);
    const bool own = m_cells.isDetached();  // a set shared with a copy is copied from, not moved
    for (int row = 0; row < rows; ++row) {
        for (qsizetype c = 0; c < m_columnCount; ++c) {
            const qsizetype from = index(row, static_cast<int>(c));
            cells[row * width + c] = own ? std::move(m_cells[from]) : m_cells.at(from);
        }
    }
    m_columns.append(names);
    m_columnCount = width;
    m_cells = std::move(cells);
}

void RowSet::removeRow(int row)
{
    if (row < 0 || row >= rowCount())
        return;
    m_cells.remove(index(row, 0), m_columnCount);
}

void RowSet::keepRows(const QList<int> &rows)
{
    QList<QVariant> kept;
    kept.reserve(rows.size() * m_columnCount);
    const int count = rowCount();
    for (const int row : rows) {
        if (row < 0 || row >= count)
            continue;
        for (qsizetype c = 0; c < m_columnCount; ++c)
            kept.append(std::move(m_cells[index(row, static_cast<int>(c))]));
    }
    m_cells = std::move(kept);
}

}
