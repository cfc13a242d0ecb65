#include "recordgridmodel.h"

#include "forms/recordset.h"

namespace zarek {

RecordGridModel::RecordGridModel(RecordSet *rows, QList<RecordGridColumn> columns, QList<RecordFieldKind> kinds,
                                 QObject *parent)
    : QAbstractTableModel(parent), m_rows(rows), m_columns(std::move(columns)), m_kinds(std::move(kinds))
{
    for (qsizetype i = 0; i < m_columns.size(); ++i)
        m_pending.append(QString());
    // The lines are few (a document's lines): any change in the rows shows them afresh.
    connect(m_rows, &QAbstractItemModel::modelAboutToBeReset, this, &RecordGridModel::beginResetModel);
    connect(m_rows, &QAbstractItemModel::modelReset, this, &RecordGridModel::endResetModel);
    connect(m_rows, &QAbstractItemModel::rowsAboutToBeInserted, this, &RecordGridModel::beginResetModel);
    connect(m_rows, &QAbstractItemModel::rowsInserted, this, &RecordGridModel::endResetModel);
    connect(m_rows, &QAbstractItemModel::rowsAboutToBeRemoved, this, &RecordGridModel::beginResetModel);
    connect(m_rows, &QAbstractItemModel::rowsRemoved, this, &RecordGridModel::endResetModel);
    connect(m_rows, &QAbstractItemModel::dataChanged, this, [this](const QModelIndex &from, const QModelIndex &to) {
        emit dataChanged(index(from.row(), 0), index(to.row(), columnCount() - 1));
    });
}

void RecordGridModel::setState(RecordFormState state)
{
    beginResetModel();
    m_state = state;
    endResetModel();
}

int RecordGridModel::pendingRow() const
{
    switch (m_state) {
    case RecordFormState::Adding: return m_rows->count();
    case RecordFormState::Editing: return m_rows->position();
    case RecordFormState::Browsing: break;
    }
    return -1;
}

void RecordGridModel::setPendingValues(const QVariantMap &values)
{
    for (qsizetype i = 0; i < m_columns.size(); ++i)
        m_pending[i] = recordFieldText(values.value(m_columns[i].column), kind(int(i)));
    if (const int row = pendingRow(); row >= 0 && row < rowCount())
        emit dataChanged(index(row, 0), index(row, columnCount() - 1));
}

QVariantMap RecordGridModel::pendingTexts() const
{
    QVariantMap texts;
    for (qsizetype i = 0; i < m_columns.size(); ++i)
        texts.insert(m_columns[i].column, m_pending[i]);
    return texts;
}

int RecordGridModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid())
        return 0;
    return m_rows->count() + (m_state == RecordFormState::Adding ? 1 : 0);
}

int RecordGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant RecordGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::TextAlignmentRole) {
        const bool number = kind(index.column()) == RecordFieldKind::Number;
        return QVariant::fromValue(Qt::AlignVCenter | (number ? Qt::AlignRight : Qt::AlignLeft));
    }
    if (role != Qt::DisplayRole && role != Qt::EditRole)
        return {};
    if (index.row() == pendingRow())
        return m_pending.value(index.column());
    const QVariant value = m_rows->at(index.row()).values.value(m_columns.at(index.column()).column);
    return recordFieldText(value, kind(index.column()));
}

bool RecordGridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || role != Qt::EditRole || index.row() != pendingRow())
        return false;
    m_pending[index.column()] = value.toString();
    emit dataChanged(index, index);
    return true;
}

Qt::ItemFlags RecordGridModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.row() == pendingRow())
        flags |= Qt::ItemIsEditable;
    return flags;
}

QVariant RecordGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Vertical)
        return section == pendingRow() && m_state == RecordFormState::Adding ? QVariant(QStringLiteral("*"))
                                                                             : QVariant(section + 1);
    return section >= 0 && section < m_columns.size() ? QVariant(m_columns[section].caption) : QVariant();
}

}
