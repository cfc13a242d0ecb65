#include "recordset.h"

#include <algorithm>

namespace zarek {

RecordSet::RecordSet(QStringList columns, QObject *parent) : QAbstractTableModel(parent), m_columns(std::move(columns))
{
}

void RecordSet::setRows(QList<RecordRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    setPosition(m_rows.isEmpty() ? -1 : 0);
}

void RecordSet::setPosition(int position)
{
    m_position = position;
    emit currentChanged(position);
}

void RecordSet::moveTo(int index)
{
    if (m_rows.isEmpty())
        return;
    setPosition(std::clamp(index, 0, count() - 1));
}

bool RecordSet::moveToBookmark(qint64 bookmark)
{
    const auto found = std::find_if(m_rows.cbegin(), m_rows.cend(),
                                    [bookmark](const RecordRow &row) { return row.id == bookmark; });
    if (bookmark == 0 || found == m_rows.cend())
        return false;
    setPosition(static_cast<int>(found - m_rows.cbegin()));
    return true;
}

void RecordSet::append(const RecordRow &row)
{
    beginInsertRows({}, count(), count());
    m_rows.append(row);
    endInsertRows();
    setPosition(count() - 1);
}

void RecordSet::replaceCurrent(const RecordRow &row)
{
    if (!hasCurrent())
        return;
    m_rows[m_position] = row;
    emit dataChanged(index(m_position, 0), index(m_position, columnCount() - 1));
}

void RecordSet::removeCurrent()
{
    if (!hasCurrent())
        return;
    const int removed = m_position;
    beginRemoveRows({}, removed, removed);
    m_rows.removeAt(removed);
    endRemoveRows();
    setPosition(m_rows.isEmpty() ? -1 : std::min(removed, count() - 1));
}

int RecordSet::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : count();
}

int RecordSet::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant RecordSet::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || (role != Qt::DisplayRole && role != Qt::EditRole))
        return {};
    return m_rows.at(index.row()).values.value(m_columns.at(index.column()));
}

QVariant RecordSet::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section + 1;
    return m_columns.value(section);
}

}
