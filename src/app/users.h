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

// Exact name (case and blanks as they stand) and the password against its salted hash. An empty
// name or password never signs in. An unknown name is verified against a dummy hash, so the answer
// takes as long as for a known name with a wrong password and timing tells no names.
UserCheck CheckUser(QSqlDatabase db, const QString &password, const QString &name);

// The wait after the n-th failed sign-in of one run before the next try: 1 s, doubling, at most 30 s.
int signInDelayMs(int failures);

// The names offered in the sign-in list: users of kinds other than "A" and "B".
QStringList ordinaryUserNames(QSqlDatabase db);

// The checks of a user kept on "Пароли": a name, and a password unless one is stored already.
std::optional<UserMessage> checkUserFields(const QString &name, const QString &typedPassword, bool storedPassword);

// "Парола е невалидна! " / "Опитайте отново! ", titled "Парола", without an icon.
UserMessage invalidPasswordMessage();

}
