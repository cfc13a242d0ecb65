#pragma once

#include "core/usermessage.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <optional>

namespace zarek {

// The outcome of a name and password check against Users.
struct UserCheck {
    bool LoginOk = false;
    QString vid;                         // the matching row's kind; with two matches, the one last by name
    std::optional<UserMessage> message;  // said when the table has no rows at all
};

// Exact name (case and blanks as they stand) and the password against its salted hash.
UserCheck CheckUser(QSqlDatabase db, const QString &password, const QString &name);

// The names offered in the sign-in list: users of kinds other than "A" and "B".
QStringList ordinaryUserNames(QSqlDatabase db);

// "Парола е невалидна! " / "Опитайте отново! ", titled "Парола", without an icon.
UserMessage invalidPasswordMessage();

}
