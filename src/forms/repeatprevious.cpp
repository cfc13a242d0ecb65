#include "forms/repeatprevious.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QShortcut>

namespace zarek {

namespace {

// The box a key acts on: an editable list stands for the text box inside it.
QWidget *boxOf(QWidget *widget)
{
    if (!widget)
        return nullptr;
    if (auto *combo = qobject_cast<QComboBox *>(widget->parentWidget()); combo && combo->lineEdit() == widget)
        return combo;
    return widget;
}

bool remembers(const QWidget *box)
{
    if (box->objectName().isEmpty())
        return false;
    if (const auto *line = qobject_cast<const QLineEdit *>(box))
        return line->echoMode() == QLineEdit::Normal && !qobject_cast<const QComboBox *>(line->parentWidget());
    if (const auto *combo = qobject_cast<const QComboBox *>(box))
        return combo->isEditable();
    return false;
}

}

RepeatPrevious *RepeatPrevious::of(QWidget *window)
{
    Q_ASSERT(window);
    window = window->window();
    if (auto *found = window->findChild<RepeatPrevious *>(QStringLiteral("RepeatPrevious"), Qt::FindDirectChildrenOnly))
        return found;
    return new RepeatPrevious(window);
}

RepeatPrevious::RepeatPrevious(QWidget *window) : QObject(window), m_window(window)
{
    setObjectName(QStringLiteral("RepeatPrevious"));
    m_shortcut = new QShortcut(QKeySequence(Qt::CTRL | Qt::Key_Apostrophe), window);
    m_shortcut->setContext(Qt::WindowShortcut);
    connect(m_shortcut, &QShortcut::activated, this, [this] { repeatInto(QApplication::focusWidget()); });
    addHints();
}

QString RepeatPrevious::hint()
{
    return QStringLiteral("Ctrl+' – стойността от последния записан ред");
}

void RepeatPrevious::addHints()
{
    const auto hintOf = [](QWidget *box) {
        if (!remembers(box) || box->toolTip().contains(hint()))
            return;
        box->setToolTip(box->toolTip().isEmpty() ? hint() : box->toolTip() + QLatin1Char('\n') + hint());
    };
    for (QLineEdit *line : m_window->findChildren<QLineEdit *>())
        hintOf(line);
    for (QComboBox *combo : m_window->findChildren<QComboBox *>())
        hintOf(combo);
}

void RepeatPrevious::remember()
{
    m_texts.clear();
    for (QLineEdit *line : m_window->findChildren<QLineEdit *>()) {
        if (remembers(line))
            m_texts.insert(line->objectName(), line->text());
    }
    for (QComboBox *combo : m_window->findChildren<QComboBox *>()) {
        if (remembers(combo))
            m_texts.insert(combo->objectName(), combo->currentText());
    }
    addHints();  // boxes made since the window opened
}

bool RepeatPrevious::repeatInto(QWidget *widget)
{
    QWidget *box = boxOf(widget);
    if (!box || !remembers(box) || !m_texts.contains(box->objectName()))
        return false;
    const QString text = m_texts.value(box->objectName());
    if (auto *line = qobject_cast<QLineEdit *>(box)) {
        if (line->isReadOnly())
            return false;
        line->setText(text);
        line->selectAll();
    } else if (auto *combo = qobject_cast<QComboBox *>(box)) {
        if (!combo->isEnabled())
            return false;
        combo->setEditText(text);
        combo->lineEdit()->selectAll();
    }
    return true;
}

}
