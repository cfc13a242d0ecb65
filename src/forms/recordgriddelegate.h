#pragma once

#include <QStyledItemDelegate>

namespace zarek {

// The cells of a record form's grid, typed like boxes: what is typed reaches the pending line at
// every key, Enter asks for the line to be saved, and Tab off the last cell (Shift+Tab off the
// first) leaves the grid for the next box or button.
class RecordGridDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;

signals:
    void submitRequested();
    void leaveRequested(bool forward);

protected:
    bool eventFilter(QObject *editor, QEvent *event) override;
};

}
