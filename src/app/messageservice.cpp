#include "messageservice.h"

#include <QApplication>
#include <QMessageBox>

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

void WidgetMessageService::inform(const UserMessage &message)
{
    QMessageBox box(boxIcon(message.icon), message.title, message.text, QMessageBox::Ok,
                    QApplication::activeWindow());
    box.exec();
}

bool WidgetMessageService::ask(const UserMessage &message)
{
    QMessageBox box(boxIcon(message.icon == UserMessage::Icon::None ? UserMessage::Icon::Question : message.icon),
                    message.title, message.text, QMessageBox::Ok | QMessageBox::Cancel,
                    QApplication::activeWindow());
    return box.exec() == QMessageBox::Ok;
}

void WidgetMessageService::beep()
{
    QApplication::beep();
}

}
