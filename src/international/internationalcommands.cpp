#include "international/internationalcommands.h"

#include "forms/commands.h"

namespace zarek {

void registerInternationalCommands(CommandRegistry &commands)
{
    Q_UNUSED(commands);
}

}
