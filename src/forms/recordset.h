#pragma once

#include "forms/recordstore.h"

#include <QAbstractTableModel>
#include <functional>
#include <map>

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
    // How rows are read a page at a time by their place in the order, for a table too large to
    // read even its ids at opening: nothing is read before a row is shown, and the count only when
    // it is needed (the last row, a grid).
    struct Pager {
        // Rows [offset, offset + limit) of the order; fromEnd: counted from the last row back,
        // the last row first.
        std::function<Checked<QList<RecordRow>>(int offset, int limit, bool fromEnd)> page;
        std::function<Checked<int>()> count;
        // The place of the row of that id in the order, -1 when it is not among the rows.
        std::function<Checked<int>(qint64 id)> positionOf;
        // Rows from the row of that id on (backwards: back from it), that row first: pages next to
        // a row held are read from its key, not counted from the first row. None: by offset.
        std::function<std::optional<Checked<QList<RecordRow>>>(qint64 id, int limit, bool backwards)> pageAt;
    };
    // Rows read through the pager as they are shown; a row written is placed where the order puts it.
    void setPagedRows(Pager pager);
    // Why the last page could not be read, once; none when it could.
    std::optional<UserMessage> takeFetchFailure();
    static constexpr int pageSize = 200;

    const QStringList &columns() const { return m_columns; }
    int count() const;
    bool isEmpty() const;
    const RecordRow &at(int index) const;

    // The current row's index, -1 when there is none.
    int position() const { return m_position; }
    bool hasCurrent() const { return m_position >= 0; }
    const RecordRow &current() const { return at(m_position); }
    bool atFirst() const { return m_position == 0; }
    bool atLast() const { return hasCurrent() && !exists(m_position + 1); }

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
    // Paged rows: reads the page holding the row unless it is held.
    void ensurePaged(int index) const;
    // Paged rows: the page from the held row at that place on (or back), read by its key; false
    // when the pager reads by offset only.
    bool pageFromHeld(int place, bool backwards) const;
    // Whether a row stands at that place (paged rows: read to know).
    bool exists(int index) const;
    // Paged rows: the count, read once.
    int pagedCount() const;
    void resetPaged();

    QStringList m_columns;
    mutable QList<RecordRow> m_rows;  // lazily read rows get their values on first use
    Fetcher m_fetcher;
    mutable std::optional<UserMessage> m_fetchFailure;
    int m_position = -1;
    // Paged rows: the rows read so far by their place, and the count once known.
    std::optional<Pager> m_pager;
    mutable std::map<int, RecordRow> m_paged;
    mutable std::optional<int> m_pagedCount;
    static const RecordRow s_noRow;
};

}
