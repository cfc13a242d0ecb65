#include "resultgridtextdelegate.h"

#include <QApplication>
#include <QPainter>
#include <QtMath>

namespace zarek {

namespace {

constexpr qsizetype widthsKept = 8192;  // enough for the distinct texts of many screens of rows

QPalette::ColorGroup colorGroupOf(const QStyleOptionViewItem &cell)
{
    if (!(cell.state & QStyle::State_Enabled))
        return QPalette::Disabled;
    return cell.state & QStyle::State_Active ? QPalette::Normal : QPalette::Inactive;
}

}

qreal ResultGridTextDelegate::widthOf(const QString &text, const QFont &font) const
{
    if (font != m_widthsFont || m_widths.size() >= widthsKept) {
        m_widths.clear();
        m_widthsFont = font;
    }
    auto known = m_widths.constFind(text);
    if (known == m_widths.constEnd())
        known = m_widths.insert(text, QFontMetricsF(font).horizontalAdvance(text));
    return known.value();
}

void ResultGridTextDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QWidget *widget = option.widget;
    const QStyle *style = widget ? widget->style() : QApplication::style();
    // Check boxes, pictures and lines of their own, and any item under a style sheet, are drawn
    // the style's way.
    if (cell.features & (QStyleOptionViewItem::HasCheckIndicator | QStyleOptionViewItem::HasDecoration)
        || cell.features & QStyleOptionViewItem::WrapText || cell.text.contains(QLatin1Char('\n'))
        || style->inherits("QStyleSheetStyle")) {
        QStyledItemDelegate::paint(painter, option, index);
        return;
    }
    painter->save();
    painter->setClipRect(cell.rect);
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, widget);

    const QPalette::ColorGroup group = colorGroupOf(cell);
    if (!cell.text.isEmpty()) {
        painter->setPen(cell.palette.color(group, cell.state & QStyle::State_Selected ? QPalette::HighlightedText
                                                                                      : QPalette::Text));
        painter->setFont(cell.font);
        const int margin = style->pixelMetric(QStyle::PM_FocusFrameHMargin, nullptr, widget) + 1;
        const QRect textRect = cell.rect.adjusted(margin, 0, -margin, 0);
        QString shown = cell.text;
        qreal width = widthOf(shown, cell.font);
        if (width > textRect.width()) {
            shown = cell.fontMetrics.elidedText(cell.text, cell.textElideMode, textRect.width());
            width = widthOf(shown, cell.font);
        }
        // Placed as the style places a one-line item: the line's whole-pixel height centred (or
        // aligned) in the cell, the text aligned in the line by its exact width.
        const QFontMetricsF metrics(cell.font);
        const QSize line(qCeil(width), qRound(metrics.ascent() + metrics.descent()));
        const Qt::Alignment alignment = QStyle::visualAlignment(cell.direction, cell.displayAlignment);
        const int top = QStyle::alignedRect(cell.direction, alignment & Qt::AlignVertical_Mask, line, textRect).top();
        qreal left = textRect.left();
        if (alignment & Qt::AlignRight)
            left += textRect.width() - width;
        else if (alignment & Qt::AlignHCenter)
            left += (textRect.width() - width) / 2;
        painter->drawText(QPointF(left, top + metrics.ascent()), shown);
    }
    if (cell.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(cell);
        focus.rect = style->subElementRect(QStyle::SE_ItemViewItemFocusRect, &cell, widget);
        focus.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
        const QPalette::ColorGroup focusGroup = cell.state & QStyle::State_Enabled ? QPalette::Normal : QPalette::Disabled;
        focus.backgroundColor =
            cell.palette.color(focusGroup, cell.state & QStyle::State_Selected ? QPalette::Highlight : QPalette::Window);
        style->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, widget);
    }
    painter->restore();
}

}
