#pragma once

#include <QFont>
#include <QHash>
#include <QStyledItemDelegate>

namespace zarek {

// Draws a result grid's text cells as the style draws a one-line item, to the pixel (background,
// selection, text, eliding and focus frame), laying the text out once where the style lays it out
// several times a cell; the width of a text is kept, as a grid shows the same values again and
// again. Cells with a check box or a picture go the style's own way.
class ResultGridTextDelegate : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    qreal widthOf(const QString &text, const QFont &font) const;

    mutable QHash<QString, qreal> m_widths;
    mutable QFont m_widthsFont;  // the font the widths were measured in
};

}
