#pragma once

#include "firmprofile.h"
#include "usermessage.h"

#include <QSqlDatabase>
#include <optional>

namespace zarek {

// A database is new for Zarek while it has no firm row or no user.
bool needsFirstStart(QSqlDatabase db);

// The message for the required field of this position: name, address, town, telephone, GSM.
UserMessage requiredFirmFieldMessage(int position);

// The required fields of the firm, in their order, with the firm profile screen's messages.
std::optional<UserMessage> checkRequiredFirmFields(const FirmProfile &firm);

// Writes the firm's row and the first administrator (kind "A") in one transaction.
std::optional<UserMessage> createFirmAndAdministrator(QSqlDatabase db, const FirmProfile &firm,
                                                       const QString &adminName, const QString &password);

}
