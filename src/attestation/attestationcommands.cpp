#include "attestation/attestationcommands.h"

#include "forms/commands.h"

namespace zarek {

void registerAttestationCommands(CommandRegistry &commands)
{
    Q_UNUSED(commands);
}

}
