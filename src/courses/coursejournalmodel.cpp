#include "courses/coursejournalmodel.h"

#include "core/formats.h"
#include "core/valueformat.h"

namespace zarek {

namespace {

struct ColumnLook {
    const char *caption;
    const char *format;
    Qt::Alignment alignment;
};

const ColumnLook looks[journalColumnCount] = {
    {"Дата", "Short Date", Qt::AlignLeft},  {"Шофьор", "", Qt::AlignLeft},
    {"Кола", "", Qt::AlignLeft},             {"Клиент", "", Qt::AlignLeft},
    {"Маршрут", "", Qt::AlignLeft},          {"Товар", "", Qt::AlignLeft},
    {"Тон.", "###0.000", Qt::AlignRight},    {"Км", "###0", Qt::AlignRight},
    {"Тарифа", "###0.000#####", Qt::AlignRight},  {"Бруто", "###0.00", Qt::AlignRight},
    {"Фактура №", "", Qt::AlignLeft},        {"Факт.", "Yes/No", Qt::AlignCenter},
    {"Платен", "Yes/No", Qt::AlignCenter},
};

}

CourseJournalModel::CourseJournalModel(CourseJournalStore &store, const BooksDay &books, QObject *parent)
    : QAbstractTableModel(parent), m_store(store), m_books(books)
{
}

int CourseJournalModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_count;
}

int CourseJournalModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : journalColumnCount;
}

QString CourseJournalModel::caption(int column)
{
    return QString::fromUtf8(looks[column].caption);
}

QString CourseJournalModel::format(int column)
{
    return QString::fromUtf8(looks[column].format);
}

const JournalRow *CourseJournalModel::rowAt(int row) const
{
    if (row < 0 || row >= m_count)
        return nullptr;
    const int page = row / pageSize;
    auto found = m_pages.find(page);
    if (found == m_pages.end()) {
        const Checked<QList<JournalRow>> rows =
            m_store.page(m_filter, m_sortColumn, m_ascending, page * pageSize, pageSize);
        // A view asks for few pages at a time; the cache stays small however far it scrolls.
        if (m_pages.size() > 50)
            m_pages.clear();
        found = m_pages.insert(page, rows ? rows.value() : QList<JournalRow>{});
    }
    const int at = row - page * pageSize;
    return at < found->size() ? &found->at(at) : nullptr;
}

qint64 CourseJournalModel::idAt(int row) const
{
    const JournalRow *found = rowAt(row);
    return found ? found->id : 0;
}

int CourseJournalModel::rowOf(qint64 id) const
{
    for (auto page = m_pages.cbegin(); page != m_pages.cend(); ++page) {
        for (int i = 0; i < page->size(); ++i) {
            if (page->at(i).id == id)
                return page.key() * pageSize + i;
        }
    }
    const Checked<QList<qint64>> ids = m_store.orderedIds(m_filter, m_sortColumn, m_ascending);
    return ids ? static_cast<int>(ids.value().indexOf(id)) : -1;
}

QVariant CourseJournalModel::valueAt(int row, int column) const
{
    const JournalRow *r = rowAt(row);
    return r ? r->value(static_cast<JournalColumn>(column)) : QVariant();
}

QVariant CourseJournalModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(looks[index.column()].alignment | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return {};
    const JournalRow *row = rowAt(index.row());
    if (!row)
        return {};
    const auto column = static_cast<JournalColumn>(index.column());
    if (column == JournalColumn::Driver)
        return row->driverName.isEmpty() ? row->driverCode : row->driverCode + QStringLiteral(" ") + row->driverName;
    // Once the books hold both currencies, each course's gross says which.
    if (column == JournalColumn::Gross && m_books.changedOver())
        return formatReportValue(row->value(column), format(index.column())) + QLatin1Char(' ')
               + amountUnit(m_books.currencyOn(row->date));
    return formatReportValue(row->value(column), format(index.column()));
}

QVariant CourseJournalModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section >= 0 && section < journalColumnCount)
        return caption(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

std::optional<UserMessage> CourseJournalModel::readCount()
{
    const Checked<int> count = m_store.count(m_filter);
    beginResetModel();
    m_pages.clear();
    m_count = count ? count.value() : 0;
    endResetModel();
    if (!count)
        return count.message();
    return std::nullopt;
}

void CourseJournalModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column >= journalColumnCount)
        return;
    m_sortColumn = static_cast<JournalColumn>(column);
    m_ascending = order == Qt::AscendingOrder;
    // The view's first sort comes as it is set up, before any conditions: they count once.
    if (!m_filtered)
        return;
    beginResetModel();
    m_pages.clear();
    endResetModel();
}

std::optional<UserMessage> CourseJournalModel::setFilter(const JournalFilter &filter)
{
    m_filter = filter;
    m_filtered = true;
    return readCount();
}

std::optional<UserMessage> CourseJournalModel::reload()
{
    return readCount();
}

}
