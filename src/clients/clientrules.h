#pragma once

#include "core/usermessage.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <optional>

// The rules of the client register: what a client must have to be written.
namespace zarek::clients {

// The columns of Klienti the register's form binds, in the order of its boxes.
const QStringList &clientColumns();

// The longest payment term, in days.
inline constexpr int maxTermDays = 365;

// The checks of a client, over its values as typed (texts) or as stored: the name required, the
// ЕИК/БУЛСТАТ and the VAT number right when given, the payment term a whole number of days from
// 0 to 365 (blank is 0). Puts the entry right as it goes: the name trimmed, the identifiers without
// spaces and in capitals, the term as a whole number. The message of the first fault, and in
// faultColumn the column it is about.
std::optional<UserMessage> checkClient(QVariantMap &entry, QString *faultColumn = nullptr);

}
