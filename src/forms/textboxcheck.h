#pragma once

#include "core/usermessage.h"

#include <optional>

class QWidget;

namespace zarek {

// The rule of core/textcheck.h over every text box of a window (line edits, the edit lines of
// editable combo boxes, date boxes): the message when any of them holds a control character.
std::optional<UserMessage> checkTextBoxes(const QWidget *window, const QString &title);

}
