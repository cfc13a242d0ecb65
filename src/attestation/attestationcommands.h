#pragma once

namespace zarek {
class CommandRegistry;
// The driver attestation.
void registerAttestationCommands(CommandRegistry &commands);
}
