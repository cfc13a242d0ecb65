#include "warehouse/warehousecommands.h"

#include "forms/commands.h"

namespace zarek {

void registerWarehouseCommands(CommandRegistry &commands)
{
    Q_UNUSED(commands);
}

}
