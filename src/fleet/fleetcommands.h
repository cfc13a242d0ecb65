#pragma once

namespace zarek {
class CommandRegistry;
// The truck balance: income against cost, and norm fuel against fuel loaded.
void registerFleetCommands(CommandRegistry &commands);
}
