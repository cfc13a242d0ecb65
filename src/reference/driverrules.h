#pragma once

#include "core/usermessage.h"

#include <QVariantMap>
#include <optional>

namespace zarek {

// The eight checks of a driver, all run in order; the last failing one is the one shown.
std::optional<UserMessage> checkDriver(const QVariantMap &values);

}
