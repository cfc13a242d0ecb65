#pragma once

#include <QStyledItemDelegate>

namespace zarek {

// Draws a yes/no column of a result grid as a check box in the middle of its cell.
class ResultGridCheckDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

}
