#pragma once

#include "core/usermessage.h"

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

// The save error box of a row that another user changed or deleted since it was read.
inline UserMessage rowConflictMessage(const QString &title)
{
    return UserMessage::error(title, QStringLiteral("-2147217864"),
                              QStringLiteral("Записът е променен или изтрит от друг потребител, след като е "
                                             "прочетен. Промените не са записани."));
}

}
