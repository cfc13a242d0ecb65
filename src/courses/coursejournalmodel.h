#pragma once

#include "courses/coursejournalstore.h"

#include <QAbstractTableModel>
#include <QHash>

namespace zarek {

// The journal's rows for a view: how many courses pass the conditions, and their values read a
// page at a time, in the order asked, as the view asks for them. The database counts, orders and
// pages; the screen holds the few pages shown.
class CourseJournalModel : public QAbstractTableModel {
    Q_OBJECT
public:
    CourseJournalModel(CourseJournalStore &store, const BooksDay &books, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    // Applies new conditions; false (after telling why) when the courses could not be read.
    std::optional<UserMessage> setFilter(const JournalFilter &filter);
    // Counts again and forgets the pages read (after a correction), keeping conditions and order.
    std::optional<UserMessage> reload();

    const JournalFilter &filter() const { return m_filter; }
    qint64 idAt(int row) const;
    // Where the course stands in the order; -1 when it does not pass the conditions.
    int rowOf(qint64 id) const;
    JournalColumn sortColumn() const { return m_sortColumn; }
    bool ascending() const { return m_ascending; }
    // The row's values, reading its page when needed; nullptr when it is gone.
    const JournalRow *rowAt(int row) const;
    // The raw value of a cell for export: numbers as numbers, dates as dates.
    QVariant valueAt(int row, int column) const;

    static QString caption(int column);
    static QString format(int column);  // the number or date format of a column

    static constexpr int pageSize = 200;

private:
    std::optional<UserMessage> readCount();

    CourseJournalStore &m_store;
    BooksDay m_books;
    JournalFilter m_filter;
    JournalColumn m_sortColumn = JournalColumn::Date;
    bool m_ascending = false;  // the newest courses first
    bool m_filtered = false;   // conditions were given: the rows are counted
    int m_count = 0;
    mutable QHash<int, QList<JournalRow>> m_pages;  // page number -> its rows
};

}
