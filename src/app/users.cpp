#include "users.h"

#include "app/passwordhash.h"
#include "data/query.h"

#include <QVariant>

#include <algorithm>

namespace zarek {

UserCheck CheckUser(QSqlDatabase db, const QString &password, const QString &name)
{
    UserCheck check;
    Query query(db, QStringLiteral("SELECT Ime, Password, Vid FROM Users ORDER BY Ime, id"));
    if (query.run(QString()))
        return check;
    const bool acceptable = !name.trimmed().isEmpty() && !password.isEmpty();
    bool anyRow = false;
    bool verified = false;
    while (query.next()) {
        anyRow = true;
        // The name is compared first, so only a matching row pays for the slow hash check.
        if (!acceptable || query.value(0).toString() != name)
            continue;
        verified = true;
        if (verifyPassword(query.value(1).toString(), password)) {
            check.vid = query.value(2).toString();
            check.LoginOk = true;
        }
    }
    if (!verified)
        verifyPassword(dummyPasswordHash(), password);  // as slow as a known name's check
    if (!anyRow)
        check.message = UserMessage{QStringLiteral("Зарек"), QStringLiteral("Постави въвеждане на администратор"),
                                    UserMessage::Icon::None};
    return check;
}

int signInDelayMs(int failures)
{
    if (failures <= 0)
        return 0;
    constexpr int first = 1000;
    constexpr int most = 30000;
    return failures > 5 ? most : std::min(most, first << (failures - 1));
}

QStringList ordinaryUserNames(QSqlDatabase db)
{
    QStringList names;
    Query query(db, QStringLiteral("SELECT Ime, Vid FROM Users ORDER BY Vid, Ime"));
    if (query.runOnce(QString()))  // once, as the sign-in opens
        return names;
    while (query.next()) {
        const QString vid = query.value(1).toString();
        if (vid != QLatin1String("A") && vid != QLatin1String("B"))
            names.append(query.value(0).toString());
    }
    return names;
}

std::optional<UserMessage> checkUserFields(const QString &name, const QString &typedPassword, bool storedPassword)
{
    const QString title = QStringLiteral("   ВНИМАНИЕ!");
    if (name.trimmed().isEmpty())
        return UserMessage::twoLines(title, QStringLiteral("Няма въведено име на потребителя!"),
                                     QStringLiteral("Моля, въведете име на потребителя!"), UserMessage::Icon::Critical);
    if (typedPassword.isEmpty() && !storedPassword)
        return UserMessage::twoLines(title, QStringLiteral("Няма въведена парола!"),
                                     QStringLiteral("Моля, въведете парола на потребителя!"), UserMessage::Icon::Critical);
    return std::nullopt;
}

UserMessage invalidPasswordMessage()
{
    return {QStringLiteral("Парола"), QStringLiteral("Парола е невалидна! \nОпитайте отново! "), UserMessage::Icon::None};
}

}
