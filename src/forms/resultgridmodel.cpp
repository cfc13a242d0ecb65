#include "resultgridmodel.h"

#include "core/dates.h"
#include "core/formats.h"
#include "forms/messageservice.h"
#include "core/valueformat.h"


namespace zarek {

namespace {

// "yyyy-MM-dd" of any decimal digits, as the pattern ^\d{4}-\d{2}-\d{2}$ reads it (its $ also
// before a closing line break), without running a pattern for every cell.
bool looksIsoDate(const QString &text)
{
    if (text.size() != 10 && !(text.size() == 11 && text.at(10) == QLatin1Char('\n')))
        return false;
    for (int i = 0; i < 10; ++i) {
        if (i == 4 || i == 7 ? text.at(i) != QLatin1Char('-') : !text.at(i).isDigit())
            return false;
    }
    return true;
}

}

ResultGridModel::ResultGridModel(QObject *parent) : QAbstractTableModel(parent) {}

void ResultGridModel::setColumns(const QList<ResultGridColumn> &columns)
{
    beginResetModel();
    m_columns = columns;
    m_sourceColumns.clear();
    for (const ResultGridColumn &column : m_columns)
        m_sourceColumns.append(m_rows.column(column.field));
    endResetModel();
}

void ResultGridModel::mapColumns()
{
    m_sourceColumns.clear();
    for (const ResultGridColumn &column : m_columns)
        m_sourceColumns.append(m_rows.column(column.field));
    m_flagColumn = m_flagField.isEmpty() ? -1 : m_rows.column(m_flagField);
}

void ResultGridModel::setRows(RowSet rows)
{
    beginResetModel();
    m_read = {};
    m_total = 0;
    m_rows = std::move(rows);
    mapColumns();
    endResetModel();
}

std::optional<UserMessage> ResultGridModel::setRows(int total, BlockReader read, int blockSize)
{
    beginResetModel();
    m_read = std::move(read);
    m_total = std::max(0, total);
    m_blockSize = std::max(1, blockSize);
    m_rows = RowSet();
    const Checked<RowSet> first = m_read(0, std::min(m_blockSize, std::max(m_total, 1)));
    if (first)
        m_rows = first.value();
    // Rows the count did not see (saved meanwhile) are not shown; rows gone shorten the grid.
    if (m_rows.rowCount() < std::min(m_blockSize, m_total) || !first)
        m_total = m_rows.rowCount();
    mapColumns();
    endResetModel();
    if (!first)
        return first.message();
    return std::nullopt;
}

std::optional<UserMessage> ResultGridModel::readMore(int limit)
{
    const int from = m_rows.rowCount();
    limit = std::min(limit, m_total - from);
    if (!m_read || limit <= 0)
        return std::nullopt;
    const Checked<RowSet> block = m_read(from, limit);
    if (!block) {
        m_total = from;  // nothing more is offered after a failure
        return block.message();
    }
    const RowSet &more = block.value();
    if (more.rowCount() < limit)
        m_total = from + more.rowCount();
    if (more.rowCount() == 0)
        return std::nullopt;
    beginInsertRows({}, from, from + more.rowCount() - 1);
    m_rows.reserveRows(from + more.rowCount());
    QList<QVariant> cells(more.columnCount());
    for (int row = 0; row < more.rowCount(); ++row) {
        for (int column = 0; column < more.columnCount(); ++column)
            cells[column] = more.value(row, column);
        m_rows.appendRow(cells);
    }
    endInsertRows();
    return std::nullopt;
}

bool ResultGridModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && m_read && m_rows.rowCount() < m_total;
}

void ResultGridModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    if (const auto failure = readMore(m_blockSize))
        MessageService::instance().inform(*failure);
}

std::optional<UserMessage> ResultGridModel::fetchAll()
{
    if (!m_read || allRead())
        return std::nullopt;
    return readMore(m_total - m_rows.rowCount());
}

RowSet &ResultGridModel::rows()
{
    if (const auto failure = fetchAll())
        MessageService::instance().inform(*failure);
    return m_rows;
}

const RowSet &ResultGridModel::rows() const
{
    // Reading the rest changes what the grid holds, not what it is.
    return const_cast<ResultGridModel *>(this)->rows();
}

void ResultGridModel::setFlagField(const QString &field)
{
    m_flagField = field;
    m_flagColumn = field.isEmpty() ? -1 : m_rows.column(field);
}

bool ResultGridModel::isMarked(int row) const
{
    return m_flagColumn >= 0 && row >= 0 && row < m_rows.rowCount() && m_rows.value(row, m_flagColumn).toBool();
}

void ResultGridModel::setMarked(int row, bool marked)
{
    if (m_flagColumn < 0 || row < 0 || row >= m_rows.rowCount())
        return;
    m_rows.setValue(row, m_flagColumn, marked);
    refreshRow(row);
}

bool ResultGridModel::isHighlighted(int row) const
{
    return m_highlight && row >= 0 && row < m_rows.rowCount() && m_highlight(m_rows, row);
}

void ResultGridModel::setRowUnit(std::function<QString(int row)> unit)
{
    m_rowUnit = std::move(unit);
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {Qt::DisplayRole});
}

void ResultGridModel::setEditingAllowed(bool allowed)
{
    if (m_editingAllowed == allowed)
        return;
    m_editingAllowed = allowed;
    if (rowCount() > 0)
        emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1), {});
}

void ResultGridModel::refreshRow(int row)
{
    if (row >= 0 && row < rowCount() && columnCount() > 0)
        emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void ResultGridModel::replaceRow(int row, const RowSet &from, int fromRow)
{
    if (row < 0 || row >= m_rows.rowCount() || fromRow < 0 || fromRow >= from.rowCount())
        return;
    for (int column = 0; column < m_rows.columnCount(); ++column) {
        const int source = from.column(m_rows.columns().at(column));
        if (source >= 0)
            m_rows.setValue(row, column, from.value(fromRow, source));
    }
    refreshRow(row);
}

void ResultGridModel::takeRow(int row)
{
    // The rows after it are read first: the database's order has no gap where it was.
    fetchAll();
    if (row < 0 || row >= m_rows.rowCount())
        return;
    beginRemoveRows({}, row, row);
    m_rows.removeRow(row);
    endRemoveRows();
}

int ResultGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.rowCount();
}

int ResultGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QString ResultGridModel::displayText(const QVariant &value, const ResultGridColumn &column) const
{
    if (column.format.isEmpty()) {
        // Dates come from SQLite as ISO text and from PostgreSQL as dates: both read dd.MM.yyyy.
        if (value.metaType().id() == QMetaType::QDate
            || (value.metaType().id() == QMetaType::QString && looksIsoDate(value.toString())))
            return formatDate(dateOfValue(value));
    }
    return formatReportValue(value, column.format);
}

QVariant ResultGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.rowCount() || index.column() >= m_columns.size())
        return {};
    const ResultGridColumn &column = m_columns.at(index.column());
    const int source = m_sourceColumns.at(index.column());
    switch (role) {
    case Qt::DisplayRole:
        if (source < 0 || column.checkBox)
            return {};
        if (column.amount && m_rowUnit)
            return displayText(m_rows.value(index.row(), source), column) + QLatin1Char(' ') + m_rowUnit(index.row());
        return displayText(m_rows.value(index.row(), source), column);
    case Qt::EditRole:
        if (source < 0)
            return {};
        if (column.checkBox)
            return m_rows.value(index.row(), source).toBool();
        return displayText(m_rows.value(index.row(), source), column);
    case Qt::CheckStateRole:
        if (!column.checkBox || source < 0)
            return {};
        return m_rows.value(index.row(), source).toBool() ? Qt::Checked : Qt::Unchecked;
    case Qt::ToolTipRole:
        // The whole text of a cell too narrow for it (a long route or cargo in a fixed column).
        if (source < 0 || column.checkBox)
            return {};
        return displayText(m_rows.value(index.row(), source), column);
    case Qt::TextAlignmentRole:
        return QVariant::fromValue(column.alignment | Qt::AlignVCenter);
    case Qt::ForegroundRole:
        if (isMarked(index.row()) || isHighlighted(index.row()))
            return m_markColor;
        if (m_rowColors && m_rowColors(m_rows, index.row()).second.isValid())
            return m_rowColors(m_rows, index.row()).second;
        return {};
    case Qt::BackgroundRole:
        if (m_rowColors && m_rowColors(m_rows, index.row()).first.isValid())
            return m_rowColors(m_rows, index.row()).first;
        return {};
    default:
        return {};
    }
}

QVariant ResultGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && section < m_columns.size()) {
        if (role == Qt::DisplayRole)
            return m_columns.at(section).caption;
        if (role == Qt::TextAlignmentRole)
            return QVariant::fromValue(m_columns.at(section).alignment | Qt::AlignVCenter);
    }
    if (orientation == Qt::Vertical && role == Qt::DisplayRole)
        return {};
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags ResultGridModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    const ResultGridColumn &column = m_columns.at(index.column());
    if (m_editingAllowed && column.editable && !column.checkBox)
        flags |= Qt::ItemIsEditable;
    return flags;
}

bool ResultGridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || !(flags(index) & Qt::ItemIsEditable))
        return false;
    const ResultGridColumn &column = m_columns.at(index.column());
    const int source = m_sourceColumns.at(index.column());
    if (source < 0)
        return false;
    QVariant stored = value;
    const int type = m_rows.value(index.row(), source).metaType().id();
    const bool numeric = type == QMetaType::Double || type == QMetaType::Int || type == QMetaType::LongLong
                         || type == QMetaType::Float;
    if (formatDecimals(column.format) || numeric) {
        const std::optional<double> number = parseNumber(value.toString());
        if (!number) {
            MessageService::instance().inform(UserMessage::twoLines(
                QStringLiteral("ГРЕШКА при запис!"),
                QStringLiteral("\"%1\" не е число!").arg(value.toString().trimmed()),
                QStringLiteral("Моля, въведете число в колона \"%1\".").arg(column.caption)));
            return false;
        }
        stored = *number;
    }
    if (m_rows.value(index.row(), source) == stored)
        return true;
    if (m_editHook) {
        if (const std::optional<UserMessage> refusal = m_editHook(index.row(), column.field, stored)) {
            MessageService::instance().inform(*refusal);
            refreshRow(index.row());
            return false;
        }
    }
    m_rows.setValue(index.row(), source, stored);
    refreshRow(index.row());
    return true;
}

}
