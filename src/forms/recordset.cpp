#include "recordset.h"

#include <QHash>
#include <algorithm>
#include <utility>

namespace zarek {

RecordSet::RecordSet(QStringList columns, QObject *parent) : QAbstractTableModel(parent), m_columns(std::move(columns))
{
}

const RecordRow RecordSet::s_noRow;

void RecordSet::setRows(QList<RecordRow> rows)
{
    m_fetcher = {};
    m_pager.reset();
    resetRows(std::move(rows));
}

int RecordSet::count() const
{
    return m_pager ? pagedCount() : static_cast<int>(m_rows.size());
}

bool RecordSet::isEmpty() const
{
    return m_pager ? !exists(0) : m_rows.isEmpty();
}

const RecordRow &RecordSet::at(int index) const
{
    ensureLoaded(index);
    if (!m_pager)
        return m_rows.at(index);
    const auto found = m_paged.find(index);
    return found == m_paged.end() ? s_noRow : found->second;
}

void RecordSet::setPagedRows(Pager pager)
{
    m_fetcher = {};
    m_pager = std::move(pager);
    resetPaged();
    setPosition(exists(0) ? 0 : -1);
}

void RecordSet::resetPaged()
{
    beginResetModel();
    m_rows.clear();
    m_paged.clear();
    m_pagedCount.reset();
    endResetModel();
}

int RecordSet::pagedCount() const
{
    if (!m_pagedCount) {
        const Checked<int> counted = m_pager->count();
        if (!counted) {
            m_fetchFailure = counted.message();
            return m_paged.empty() ? 0 : m_paged.rbegin()->first + 1;  // what was read, till the next try
        }
        m_pagedCount = counted.value();
    }
    return *m_pagedCount;
}

bool RecordSet::exists(int index) const
{
    if (index < 0)
        return false;
    if (!m_pager)
        return index < count();
    if (m_pagedCount)
        return index < *m_pagedCount;
    ensurePaged(index);
    return m_paged.count(index) > 0;
}

bool RecordSet::pageFromHeld(int place, bool backwards) const
{
    const auto held = m_paged.find(place);
    if (!m_pager->pageAt || held == m_paged.end())
        return false;
    const auto fetched = m_pager->pageAt(held->second.id, pageSize + 1, backwards);
    if (!fetched)
        return false;
    if (!*fetched) {
        m_fetchFailure = fetched->message();
        return true;
    }
    const QList<RecordRow> &rows = fetched->value();
    // The first row read is the held one; another user's change may have moved it meanwhile.
    if (rows.isEmpty() || rows.first().id != held->second.id)
        return false;
    for (int i = 1; i < rows.size(); ++i)
        m_paged.emplace(backwards ? place - i : place + i, rows.at(i));
    if (!backwards && rows.size() < pageSize + 1)
        m_pagedCount = place + static_cast<int>(rows.size());  // the end of the rows was reached
    return true;
}

void RecordSet::ensurePaged(int index) const
{
    if (index < 0 || m_paged.count(index) > 0 || (m_pagedCount && index >= *m_pagedCount))
        return;
    // Next to a row held (the rows after a saved course, a step past the page read): from its key.
    if (pageFromHeld(index - 1, false) || pageFromHeld(index + 1, true))
        return;
    // From the nearer end, once the count is known: the last rows are as quick as the first.
    const bool fromEnd = m_pagedCount && index > *m_pagedCount / 2;
    const int from = fromEnd ? std::max(0, *m_pagedCount - 1 - index - pageSize / 2) : std::max(0, index - pageSize / 2);
    const auto fetched = m_pager->page(from, pageSize, fromEnd);
    if (!fetched) {
        m_fetchFailure = fetched.message();
        return;
    }
    const QList<RecordRow> &rows = fetched.value();
    for (int i = 0; i < rows.size(); ++i) {
        const int place = fromEnd ? *m_pagedCount - 1 - (from + i) : from + i;
        if (place >= 0)
            m_paged.emplace(place, rows.at(i));  // a row held (written here, say) stays as it is
    }
    if (!fromEnd && rows.size() < pageSize)
        m_pagedCount = from + static_cast<int>(rows.size());  // the end of the rows was reached
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
    m_pager.reset();
    m_fetcher = std::move(fetcher);
    resetRows(std::move(keys));
}

std::optional<UserMessage> RecordSet::takeFetchFailure()
{
    return std::exchange(m_fetchFailure, std::nullopt);
}

void RecordSet::ensureLoaded(int index) const
{
    if (m_pager) {
        ensurePaged(index);
        return;
    }
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
    if (isEmpty())
        return;
    if (m_pager) {
        // Past the end: the count tells where the last row is.
        const int wanted = std::max(0, index);
        setPosition(exists(wanted) ? wanted : count() - 1);
        return;
    }
    setPosition(std::clamp(index, 0, count() - 1));
}

bool RecordSet::moveToBookmark(qint64 bookmark)
{
    if (m_pager) {
        if (bookmark == 0)
            return false;
        for (const auto &[place, row] : m_paged) {
            if (row.id == bookmark) {
                setPosition(place);
                return true;
            }
        }
        const Checked<int> place = m_pager->positionOf(bookmark);
        if (!place) {
            m_fetchFailure = place.message();
            return false;
        }
        if (place.value() < 0)
            return false;
        // The row and those after it read from its key: a place far down costs no more than the first.
        if (m_pager->pageAt) {
            const auto fetched = m_pager->pageAt(bookmark, pageSize, false);
            if (fetched && *fetched && !fetched->value().isEmpty() && fetched->value().first().id == bookmark) {
                const QList<RecordRow> &rows = fetched->value();
                for (int i = 0; i < rows.size(); ++i)
                    m_paged.emplace(place.value() + i, rows.at(i));
            }
        }
        setPosition(place.value());
        return true;
    }
    const auto found = std::find_if(m_rows.cbegin(), m_rows.cend(),
                                    [bookmark](const RecordRow &row) { return row.id == bookmark; });
    if (bookmark == 0 || found == m_rows.cend())
        return false;
    setPosition(static_cast<int>(found - m_rows.cbegin()));
    return true;
}

void RecordSet::append(const RecordRow &row)
{
    if (m_pager) {
        // The rows after its place in the order move on by one: read again around it.
        const Checked<int> place = m_pager->positionOf(row.id);
        resetPaged();
        if (!place || place.value() < 0) {
            if (!place)
                m_fetchFailure = place.message();
            setPosition(exists(0) ? 0 : -1);
            return;
        }
        m_paged.emplace(place.value(), row);
        setPosition(place.value());
        return;
    }
    beginInsertRows({}, count(), count());
    m_rows.append(row);
    endInsertRows();
    setPosition(count() - 1);
}

void RecordSet::replaceCurrent(const RecordRow &row)
{
    if (!hasCurrent())
        return;
    if (m_pager)
        m_paged[m_position] = row;
    else
        m_rows[m_position] = row;
    emit dataChanged(index(m_position, 0), index(m_position, columnCount() - 1));
}

void RecordSet::removeCurrent()
{
    if (!hasCurrent())
        return;
    const int removed = m_position;
    if (m_pager) {
        beginRemoveRows({}, removed, removed);
        std::map<int, RecordRow> shifted;
        for (auto &[place, held] : m_paged) {
            if (place != removed)
                shifted.emplace(place < removed ? place : place - 1, std::move(held));
        }
        m_paged = std::move(shifted);
        if (m_pagedCount)
            --*m_pagedCount;
        endRemoveRows();
        setPosition(exists(removed) ? removed : (exists(removed - 1) ? removed - 1 : -1));
        return;
    }
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
