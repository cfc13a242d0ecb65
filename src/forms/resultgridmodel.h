#pragma once

#include "core/usermessage.h"
#include "data/rowset.h"
#include "forms/resultgridcolumn.h"

#include <QAbstractTableModel>
#include <QColor>
#include <functional>
#include <optional>

namespace zarek {

// The rows of a result grid screen, shown through its column table: all in memory, or read from
// the database a block at a time as the view scrolls to them (canFetchMore, fetchMore), the
// blocks read staying in memory with what was done to them. A marked row (its
// flag column true) is drawn in the marking colour. Edits are allowed only while the screen
// allows them, and only in editable columns; each accepted edit goes to the edit hook first.
class ResultGridModel : public QAbstractTableModel {
    Q_OBJECT
public:
    // Writes an edited cell (row, field, new value) wherever it belongs; a message refuses it.
    // The hook may change other cells of the row through rows().
    using EditHook = std::function<std::optional<UserMessage>(int row, const QString &field, const QVariant &value)>;

    explicit ResultGridModel(QObject *parent = nullptr);

    void setColumns(const QList<ResultGridColumn> &columns);
    const QList<ResultGridColumn> &columns() const { return m_columns; }
    void setRows(RowSet rows);
    // Rows offset .. offset + limit - 1 of the grid's order, read from the database.
    using BlockReader = std::function<Checked<RowSet>(int offset, int limit)>;
    // The grid over total rows that read is asked for a block at a time; the first block at once
    // (it gives the columns). The message when it cannot be read.
    std::optional<UserMessage> setRows(int total, BlockReader read, int blockSize = 200);
    // Every row, the ones not read yet read first.
    RowSet &rows();
    const RowSet &rows() const;
    // Reads the rows not read yet; the message when they could not be.
    std::optional<UserMessage> fetchAll();
    // How many rows the grid is over, read or not.
    int totalRowCount() const { return m_read ? m_total : m_rows.rowCount(); }
    bool allRead() const { return m_rows.rowCount() >= totalRowCount(); }

    void setFlagField(const QString &field);
    bool isMarked(int row) const;
    void setMarked(int row, bool marked);
    void setMarkColor(const QColor &color) { m_markColor = color; }
    // Rows drawn in the marking colour by a rule of their values (a price under 1, say).
    using RowHighlight = std::function<bool(const RowSet &rows, int row)>;
    void setHighlight(RowHighlight highlight) { m_highlight = std::move(highlight); }
    bool isHighlighted(int row) const;
    // A row's own colours by its values (an expired document red, a due one amber): background and
    // text, or invalid colours for the grid's own.
    using RowColors = std::function<std::pair<QColor, QColor>(const RowSet &rows, int row)>;
    void setRowColors(RowColors colors) { m_rowColors = std::move(colors); }

    // The unit each row's amount columns show, or none (an empty function).
    void setRowUnit(std::function<QString(int row)> unit);

    void setEditingAllowed(bool allowed);
    bool editingAllowed() const { return m_editingAllowed; }
    void setEditHook(EditHook hook) { m_editHook = std::move(hook); }

    // The value of a row's field, as stored.
    QVariant value(int row, const QString &field) const { return m_rows.value(row, field); }
    // Tells the views that a row's cells changed.
    void refreshRow(int row);
    // Puts another reading of a row in its place: each column takes the value of the column of
    // that name in from (columns from lacks keep theirs).
    void replaceRow(int row, const RowSet &from, int fromRow);
    // Takes a row out of the grid.
    void takeRow(int row);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;

private:
    QString displayText(const QVariant &value, const ResultGridColumn &column) const;
    void mapColumns();
    std::optional<UserMessage> readMore(int limit);

    QList<ResultGridColumn> m_columns;
    QList<int> m_sourceColumns;  // column of the row set behind each grid column
    RowSet m_rows;
    BlockReader m_read;  // none: every row is in m_rows
    int m_total = 0;
    int m_blockSize = 200;
    QString m_flagField;
    int m_flagColumn = -1;
    QColor m_markColor = QColor(255, 0, 0);
    bool m_editingAllowed = false;
    EditHook m_editHook;
    RowHighlight m_highlight;
    RowColors m_rowColors;
    std::function<QString(int row)> m_rowUnit;
};

}
