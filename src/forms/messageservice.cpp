#include "messageservice.h"

#include "forms/diainf.h"
#include "forms/dialog.h"

#include <QApplication>

namespace zarek {

namespace {

MessageService *installed = nullptr;

bool askWith(const UserMessage &message, Dialog::Buttons buttons)
{
    Dialog box(message, buttons, QApplication::activeWindow());
    box.exec();
    return box.OkPressed();
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
    DiaInf box(message, QApplication::activeWindow());
    box.exec();
}

bool WidgetMessageService::ask(const UserMessage &message)
{
    return askWith(message, Dialog::Buttons::OkCancel);
}

bool WidgetMessageService::askYesNo(const UserMessage &message)
{
    return askWith(message, Dialog::Buttons::YesNo);
}

void WidgetMessageService::beep()
{
    QApplication::beep();
}

}
