#pragma once

#include "core/firmprofile.h"
#include "core/usermessage.h"

#include <QSqlDatabase>
#include <optional>

namespace zarek {

// A database is new for Zarek while it has no firm row or no user.
bool needsFirstStart(QSqlDatabase db);

// Writes the firm's row and the first administrator (kind "A") in one transaction.
std::optional<UserMessage> createFirmAndAdministrator(QSqlDatabase db, const FirmProfile &firm,
                                                       const QString &adminName, const QString &password);

}
