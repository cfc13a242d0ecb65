#include "fleet/fleetcommands.h"

#include "forms/commands.h"

namespace zarek {

void registerFleetCommands(CommandRegistry &commands)
{
    Q_UNUSED(commands);
}

}
