#include "recordset.h"

#include <QHash>
#include <algorithm>
#include <utility>

namespace zarek {

RecordSet::RecordSet(QStringList columns, QObject *parent) : QAbstractTableModel(parent), m_columns(std::move(columns))
{
}

void RecordSet::setRows(QList<RecordRow> rows)
{
    m_fetcher = {};
    resetRows(std::move(rows));
}

void RecordSet::resetRows(QList<RecordRow> rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
    setPosition(m_rows.isEmpty() ? -1 : 0);
}

void RecordSet::setLazyRows(QList<RecordRow> keys, Fetcher fetcher)
{
    m_fetcher = std::move(fetcher);
    resetRows(std::move(keys));
}

std::optional<UserMessage> RecordSet::takeFetchFailure()
{
    return std::exchange(m_fetchFailure, std::nullopt);
}

void RecordSet::ensureLoaded(int index) const
{
    // A row read has its columns; a row held by id alone has none.
    if (!m_fetcher || index < 0 || index >= count() || !m_rows.at(index).values.isEmpty())
        return;
    const int from = std::max(0, index - pageSize / 2);
    const int to = std::min(count(), from + pageSize);
    QHash<qint64, int> wanted;
    QList<qint64> ids;
    for (int i = from; i < to; ++i) {
        if (m_rows.at(i).values.isEmpty()) {
            wanted.insert(m_rows.at(i).id, i);
            ids.append(m_rows.at(i).id);
        }
    }
    const auto fetched = m_fetcher(ids);
    if (!fetched) {
        m_fetchFailure = fetched.message();
        return;
    }
    for (const RecordRow &row : fetched.value()) {
        const int i = wanted.value(row.id, -1);
        if (i >= 0)
            m_rows[i] = row;
    }
}

void RecordSet::setPosition(int position)
{
    m_position = position;
    ensureLoaded(position);
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
    return at(index.row()).values.value(m_columns.at(index.column()));
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
