#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QString>

class QWidget;

namespace zarek {

// Every message box of the system goes through this one service, so that tests can read what
// the user would have seen and answer questions without a modal loop.
class MessageService {
public:
    virtual ~MessageService() = default;

    // A message with one button.
    virtual void inform(const UserMessage &message) = 0;
    // A question; true when the user answered OK. Enter answers OK.
    virtual bool ask(const UserMessage &message) = 0;
    // A question whose OK drops, deletes or overwrites something: Enter answers "Отказ". Told as
    // an ask() unless a service shows it differently.
    virtual bool askDestructive(const UserMessage &message) { return ask(message); }
    // A question answered "Да" or "Не"; true for "Да". Enter answers "Не". Told as an ask() unless
    // a service shows it differently.
    virtual bool askYesNo(const UserMessage &message) { return ask(message); }
    virtual void beep() = 0;

    // The service in force; a widget service until a test installs its own.
    static MessageService &instance();
    // Installs a service (not owned); nullptr puts the default back.
    static void setInstance(MessageService *service);
};

// Shows the system's own modal boxes: DiaInf for a message, Dialog for a question.
class WidgetMessageService : public MessageService {
public:
    void inform(const UserMessage &message) override;
    bool ask(const UserMessage &message) override;
    bool askDestructive(const UserMessage &message) override;
    bool askYesNo(const UserMessage &message) override;
    void beep() override;
};

// Records every message; questions take queued answers (OK when none is queued).
class RecordingMessageService : public MessageService {
public:
    RecordingMessageService() { MessageService::setInstance(this); }
    ~RecordingMessageService() override { MessageService::setInstance(nullptr); }

    void inform(const UserMessage &message) override { shown.append(message); }
    bool ask(const UserMessage &message) override
    {
        asked.append(message);
        return answers.isEmpty() ? true : answers.takeFirst();
    }
    void beep() override { ++beeps; }

    QList<UserMessage> shown;
    QList<UserMessage> asked;
    QList<bool> answers;
    int beeps = 0;
};

}
