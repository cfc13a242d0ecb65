#include "messageservice.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace zarek {

namespace {

MessageService *installed = nullptr;

QMessageBox::Icon boxIcon(UserMessage::Icon icon)
{
    switch (icon) {
    case UserMessage::Icon::Information: return QMessageBox::Information;
    case UserMessage::Icon::Exclamation: return QMessageBox::Warning;
    case UserMessage::Icon::Critical: return QMessageBox::Critical;
    case UserMessage::Icon::Question: return QMessageBox::Question;
    case UserMessage::Icon::None: break;
    }
    return QMessageBox::NoIcon;
}

}

MessageService &MessageService::instance()
{
    static WidgetMessageService widgets;
    return installed ? *installed : widgets;
}

void MessageService::setInstance(MessageService *service)
{
    installed = service;
}

// DiaInf: the message with one button, "Затвори"; its caption is "Информация" unless one is given.
void WidgetMessageService::inform(const UserMessage &message)
{
    QMessageBox box(boxIcon(message.icon), message.title.isEmpty() ? QStringLiteral("Информация") : message.title,
                    message.text, QMessageBox::NoButton, QApplication::activeWindow());
    box.setObjectName(QStringLiteral("DiaInf"));
    box.addButton(QStringLiteral("Затвори"), QMessageBox::AcceptRole)->setObjectName(QStringLiteral("OKButton"));
    QApplication::beep();
    box.exec();
}

// Dialog: the question with "OK" and "Отказ"; its caption is "Внимание!" unless one is given.
bool WidgetMessageService::ask(const UserMessage &message)
{
    QMessageBox box(boxIcon(message.icon == UserMessage::Icon::None ? UserMessage::Icon::Question : message.icon),
                    message.title.isEmpty() ? QStringLiteral("Внимание!") : message.title, message.text,
                    QMessageBox::NoButton, QApplication::activeWindow());
    box.setObjectName(QStringLiteral("Dialog"));
    QPushButton *ok = box.addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    ok->setObjectName(QStringLiteral("OKButton"));
    box.addButton(QStringLiteral("Отказ"), QMessageBox::RejectRole)->setObjectName(QStringLiteral("CancelButton"));
    box.setDefaultButton(ok);
    QApplication::beep();
    box.exec();
    return box.clickedButton() == ok;
}

void WidgetMessageService::beep()
{
    QApplication::beep();
}

}
