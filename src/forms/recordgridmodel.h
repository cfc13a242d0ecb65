#pragma once

#include "forms/recordbinder.h"
#include "forms/recordfield.h"

#include <QAbstractTableModel>
#include <QStringList>

namespace zarek {

class RecordSet;

// A column of a grid bound to a record form.
struct RecordGridColumn {
    QString column;   // the store column
    QString caption;  // the grid's heading
    int width = 0;    // pixels; 0 takes the room that is left
};

// The rows of a record form as a grid: a line per row, the chosen columns under their captions,
// numbers and dates as the form's boxes show them. The row being added (a line after the last)
// or corrected (the current row) takes typing in its cells; every other line is read-only.
class RecordGridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    RecordGridModel(RecordSet *rows, QList<RecordGridColumn> columns, QList<RecordFieldKind> kinds,
                    QObject *parent = nullptr);

    const QList<RecordGridColumn> &gridColumns() const { return m_columns; }
    RecordFieldKind kind(int column) const { return m_kinds.value(column, RecordFieldKind::Text); }

    // Browsing: no line takes typing. Adding: a line after the last. Editing: the current row.
    void setState(RecordFormState state);
    // The line that takes typing; -1 while browsing.
    int pendingRow() const;
    // The values the pending line starts from (the current row, or a new row's presets).
    void setPendingValues(const QVariantMap &values);
    // What stands in the pending line's cells, by column.
    QVariantMap pendingTexts() const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    RecordSet *m_rows;
    QList<RecordGridColumn> m_columns;
    QList<RecordFieldKind> m_kinds;
    RecordFormState m_state = RecordFormState::Browsing;
    QStringList m_pending;  // the pending line's texts, by column
};

}
