#pragma once

namespace zarek {
class CommandRegistry;
// International trips with their CMR data.
void registerInternationalCommands(CommandRegistry &commands);
}
