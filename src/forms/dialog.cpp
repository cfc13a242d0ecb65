#include "dialog.h"

#include <QPushButton>

namespace zarek {

Dialog::Dialog(const UserMessage &question, Buttons buttons, QWidget *parent)
    : Dialog(question, buttons, buttons == Buttons::YesNo ? Default::Cancel : Default::Ok, parent)
{
}

Dialog::Dialog(const UserMessage &question, Buttons buttons, Default byDefault, QWidget *parent)
    : CommonBox(question, QStringLiteral("Внимание!"), UserMessage::Icon::Question, QStringLiteral("Picture1"), parent)
{
    setObjectName(QStringLiteral("Dialog"));
    const bool yesNo = buttons == Buttons::YesNo;
    m_ok = addButton(QStringLiteral("OKButton"), yesNo ? QStringLiteral("Да") : QStringLiteral("OK"));
    m_cancel = addButton(QStringLiteral("CancelButton"), yesNo ? QStringLiteral("Не") : QStringLiteral("Отказ"));
    m_default = byDefault == Default::Cancel ? m_cancel : m_ok;
    m_default->setDefault(true);
    connect(m_ok, &QPushButton::clicked, this, [this] {
        m_okPressed = true;
        accept();
    });
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_okPressed = false;
        reject();
    });
}

// Left to itself the box would give the focus to its first button, "Да", and a focused button
// is the one Enter presses: the default takes the focus.
void Dialog::showEvent(QShowEvent *event)
{
    CommonBox::showEvent(event);
    m_default->setFocus(Qt::ActiveWindowFocusReason);
}

}
