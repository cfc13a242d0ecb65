#include "messageservice.h"

#include "forms/diainf.h"
#include "forms/dialog.h"

#include <QApplication>

namespace zarek {

namespace {

MessageService *installed = nullptr;

bool askWith(const UserMessage &message, Dialog::Buttons buttons, Dialog::Default byDefault)
{
    Dialog box(message, buttons, byDefault, QApplication::activeWindow());
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
    return askWith(message, Dialog::Buttons::OkCancel, Dialog::Default::Ok);
}

bool WidgetMessageService::askDestructive(const UserMessage &message)
{
    return askWith(message, Dialog::Buttons::OkCancel, Dialog::Default::Cancel);
}

bool WidgetMessageService::askYesNo(const UserMessage &message)
{
    return askWith(message, Dialog::Buttons::YesNo, Dialog::Default::Cancel);
}

void WidgetMessageService::beep()
{
    QApplication::beep();
}

}
