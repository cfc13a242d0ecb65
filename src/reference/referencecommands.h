#pragma once

namespace zarek {
class CommandRegistry;
// Drivers, and the settings of trucks and tariffs.
void registerReferenceCommands(CommandRegistry &commands);
}
