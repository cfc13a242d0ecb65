#include "users.h"

#include "app/passwordhash.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

UserCheck CheckUser(QSqlDatabase db, const QString &password, const QString &name)
{
    UserCheck check;
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT Ime, Password, Vid FROM Users ORDER BY Ime, id")))
        return check;
    bool anyRow = false;
    while (query.next()) {
        anyRow = true;
        // The name is compared first, so only a matching row pays for the slow hash check.
        if (query.value(0).toString() == name && verifyPassword(query.value(1).toString(), password)) {
            check.vid = query.value(2).toString();
            check.LoginOk = true;
        }
    }
    if (!anyRow)
        check.message = UserMessage{QStringLiteral("Зарек"), QStringLiteral("Постави въвеждане на администратор"),
                                    UserMessage::Icon::None};
    return check;
}

QStringList ordinaryUserNames(QSqlDatabase db)
{
    QStringList names;
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT Ime, Vid FROM Users ORDER BY Vid, Ime")))
        return names;
    while (query.next()) {
        const QString vid = query.value(1).toString();
        if (vid != QLatin1String("A") && vid != QLatin1String("B"))
            names.append(query.value(0).toString());
    }
    return names;
}

UserMessage invalidPasswordMessage()
{
    return {QStringLiteral("Парола"), QStringLiteral("Парола е невалидна! \nОпитайте отново! "), UserMessage::Icon::None};
}

}
