#include "diainf.h"

#include <QPushButton>

namespace zarek {

DiaInf::DiaInf(const UserMessage &message, QWidget *parent)
    : CommonBox(message, QStringLiteral("Информация"), UserMessage::Icon::Information, QStringLiteral("Image1"), parent)
{
    setObjectName(QStringLiteral("DiaInf"));
    m_ok = addButton(QStringLiteral("OKButton"), QStringLiteral("Затвори"));
    m_ok->setDefault(true);
    connect(m_ok, &QPushButton::clicked, this, &QDialog::accept);
}

}
