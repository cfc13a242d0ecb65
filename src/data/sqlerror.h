#pragma once

#include "app/usermessage.h"

#include <QSqlError>
#include <QString>

namespace zarek {

// An error box of the system ("number:description") for a database error.
inline UserMessage sqlErrorMessage(const QString &title, const QSqlError &error)
{
    QString code = error.nativeErrorCode();
    if (code.isEmpty())
        code = QString::number(static_cast<int>(error.type()));
    QString description = error.databaseText().trimmed();
    if (description.isEmpty())
        description = error.text().trimmed();
    return UserMessage::error(title, code, description);
}

}
