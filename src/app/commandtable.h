#pragma once

namespace zarek {
class CommandRegistry;
// Every subsystem's commands, each added by its own register function.
void registerSubsystemCommands(CommandRegistry &commands);
}
