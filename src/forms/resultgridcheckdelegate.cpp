#include "resultgridcheckdelegate.h"

#include <QApplication>
#include <QPainter>

namespace zarek {

void ResultGridCheckDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const
{
    const QVariant state = index.data(Qt::CheckStateRole);
    if (!state.isValid()) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    cell.features &= ~QStyleOptionViewItem::HasCheckIndicator;
    cell.text.clear();
    QStyle *style = option.widget ? option.widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &cell, painter, option.widget);

    QStyleOptionViewItem check = option;
    const QSize box(style->pixelMetric(QStyle::PM_IndicatorWidth, &check, option.widget),
                    style->pixelMetric(QStyle::PM_IndicatorHeight, &check, option.widget));
    check.rect = QRect(option.rect.center() - QPoint(box.width() / 2, box.height() / 2), box);
    check.state = (check.state & ~QStyle::State_HasFocus)
                  | (state.value<Qt::CheckState>() == Qt::Checked ? QStyle::State_On : QStyle::State_Off);
    style->drawPrimitive(QStyle::PE_IndicatorItemViewItemCheck, &check, painter, option.widget);
}

}
