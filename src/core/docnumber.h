#pragma once

#include "core/usermessage.h"

#include <QString>

// Invoice, waybill and consignment note numbers: texts of exactly ten characters, left-padded
// with zeros ("125" -> "0000000125").
namespace zarek {

inline constexpr int documentNumberLength = 10;
QString noDocumentNumber();  // "0000000000"

// The trimmed text padded to ten characters; a longer text is refused with a message.
Checked<QString> padDocumentNumber(const QString &text);

}
