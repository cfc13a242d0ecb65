#include "invoicing/invoicingcommands.h"

#include "forms/commands.h"

namespace zarek {

void registerInvoicingCommands(CommandRegistry &commands)
{
    Q_UNUSED(commands);
}

}
