#include "dialog.h"

#include <QPushButton>

namespace zarek {

Dialog::Dialog(const UserMessage &question, Buttons buttons, QWidget *parent)
    : CommonBox(question, QStringLiteral("Внимание!"), UserMessage::Icon::Question, QStringLiteral("Picture1"), parent)
{
    setObjectName(QStringLiteral("Dialog"));
    const bool yesNo = buttons == Buttons::YesNo;
    m_ok = addButton(QStringLiteral("OKButton"), yesNo ? QStringLiteral("Да") : QStringLiteral("OK"));
    m_cancel = addButton(QStringLiteral("CancelButton"), yesNo ? QStringLiteral("Не") : QStringLiteral("Отказ"));
    // A yes/no question drops typing, overwrites or deletes: Enter answers the harmless "Не".
    (yesNo ? m_cancel : m_ok)->setDefault(true);
    connect(m_ok, &QPushButton::clicked, this, [this] {
        m_okPressed = true;
        accept();
    });
    connect(m_cancel, &QPushButton::clicked, this, [this] {
        m_okPressed = false;
        reject();
    });
}

}
