#pragma once

#include "forms/recordstore.h"

#include <QAbstractTableModel>
#include <functional>

namespace zarek {

// The rows a record form holds while it is open, with its cursor: moving touches no disk. As a
// table model it also serves a grid over the same rows (one column per store column).
class RecordSet : public QAbstractTableModel {
    Q_OBJECT
public:
    explicit RecordSet(QStringList columns, QObject *parent = nullptr);

    // Reads the values of rows held by id alone (a page at a time).
    using Fetcher = std::function<Checked<QList<RecordRow>>(const QList<qint64> &ids)>;

    // Replaces the rows; the first becomes current (none on an empty set).
    void setRows(QList<RecordRow> rows);
    // Rows given by id and version alone: their values are read through the fetcher when a row
    // becomes current or is shown, together with the rows around it.
    void setLazyRows(QList<RecordRow> keys, Fetcher fetcher);
    // Why the last page could not be read, once; none when it could.
    std::optional<UserMessage> takeFetchFailure();
    static constexpr int pageSize = 200;

    const QStringList &columns() const { return m_columns; }
    int count() const { return static_cast<int>(m_rows.size()); }
    bool isEmpty() const { return m_rows.isEmpty(); }
    const RecordRow &at(int index) const
    {
        ensureLoaded(index);
        return m_rows.at(index);
    }

    // The current row's index, -1 when there is none.
    int position() const { return m_position; }
    bool hasCurrent() const { return m_position >= 0; }
    const RecordRow &current() const { return at(m_position); }
    bool atFirst() const { return m_position == 0; }
    bool atLast() const { return hasCurrent() && m_position == count() - 1; }

    // Makes the row current, kept within the rows; nothing happens on an empty set.
    void moveTo(int index);
    void moveFirst() { moveTo(0); }
    void moveLast() { moveTo(count() - 1); }

    // A bookmark is the id of a row, so it survives rows added and deleted before it.
    qint64 bookmark() const { return hasCurrent() ? current().id : 0; }
    // False (and no move) when no row carries the bookmark any more.
    bool moveToBookmark(qint64 bookmark);

    // A row just written: appended last and made current.
    void append(const RecordRow &row);
    void replaceCurrent(const RecordRow &row);
    // The row after the deleted one becomes current; after the last, the new last row.
    void removeCurrent();

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

signals:
    void currentChanged(int position);

private:
    void resetRows(QList<RecordRow> rows);
    void setPosition(int position);
    // Reads the values of the page around the row if it has none yet.
    void ensureLoaded(int index) const;

    QStringList m_columns;
    mutable QList<RecordRow> m_rows;  // lazily read rows get their values on first use
    Fetcher m_fetcher;
    mutable std::optional<UserMessage> m_fetchFailure;
    int m_position = -1;
};

}
