#include "recordgriddelegate.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace zarek {

namespace {
const char *const columnProperty = "recordGridColumn";
const char *const lastColumnProperty = "recordGridLastColumn";
}

QWidget *RecordGridDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                                          const QModelIndex &index) const
{
    QWidget *editor = QStyledItemDelegate::createEditor(parent, option, index);
    if (!editor)
        return editor;
    editor->setProperty(columnProperty, index.column());
    editor->setProperty(lastColumnProperty, index.model()->columnCount() - 1);
    if (auto *line = qobject_cast<QLineEdit *>(editor)) {
        auto *self = const_cast<RecordGridDelegate *>(this);
        // The line holds what stands in the cell even before the cell is left.
        connect(line, &QLineEdit::textEdited, self, [self, line] { emit self->commitData(line); });
    }
    return editor;
}

bool RecordGridDelegate::eventFilter(QObject *object, QEvent *event)
{
    auto *editor = qobject_cast<QWidget *>(object);
    if (!editor || event->type() != QEvent::KeyPress)
        return QStyledItemDelegate::eventFilter(object, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    const int column = editor->property(columnProperty).toInt();
    const int lastColumn = editor->property(lastColumnProperty).toInt();
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
        emit commitData(editor);
        emit closeEditor(editor, NoHint);
        emit submitRequested();
        return true;
    }
    const bool forward = key->key() == Qt::Key_Tab && !(key->modifiers() & Qt::ShiftModifier);
    const bool backward = key->key() == Qt::Key_Backtab || (key->key() == Qt::Key_Tab && !forward);
    if ((forward && column == lastColumn) || (backward && column == 0)) {
        emit commitData(editor);
        emit closeEditor(editor, NoHint);
        emit leaveRequested(forward);
        return true;
    }
    return QStyledItemDelegate::eventFilter(object, event);
}

}
