#include "waybills/waybillscommands.h"

#include "forms/commands.h"

namespace zarek {

void registerWaybillCommands(CommandRegistry &commands)
{
    Q_UNUSED(commands);
}

}
