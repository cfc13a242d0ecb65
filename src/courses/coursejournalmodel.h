#pragma once

#include "courses/coursejournalstore.h"

#include <QAbstractTableModel>
#include <QHash>

namespace zarek {

// The journal's rows for a view: the ids of the courses that pass the conditions, in order, and
// their values read a page at a time as the view asks for them. Sorting asks the store for the
// ids in the new order; nothing else is read again.
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
    // Reads the ids again (after a correction), keeping conditions and order.
    std::optional<UserMessage> reload();

    const JournalFilter &filter() const { return m_filter; }
    qint64 idAt(int row) const { return row >= 0 && row < m_ids.size() ? m_ids.at(row) : 0; }
    int rowOf(qint64 id) const { return static_cast<int>(m_ids.indexOf(id)); }
    // The row's values, reading its page when needed; nullptr when it is gone.
    const JournalRow *rowAt(int row) const;
    // The raw value of a cell for export: numbers as numbers, dates as dates.
    QVariant valueAt(int row, int column) const;

    static QString caption(int column);
    static QString format(int column);  // the number or date format of a column

    static constexpr int pageSize = 200;

private:
    std::optional<UserMessage> readIds();

    CourseJournalStore &m_store;
    BooksDay m_books;
    JournalFilter m_filter;
    JournalColumn m_sortColumn = JournalColumn::Date;
    bool m_ascending = false;  // the newest courses first
    bool m_filtered = false;   // conditions were given: the ids are read
    QList<qint64> m_ids;
    mutable QHash<int, QHash<qint64, JournalRow>> m_pages;  // page number -> rows of that page by id
};

}
