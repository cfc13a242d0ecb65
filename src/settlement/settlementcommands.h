#pragma once

namespace zarek {
class CommandRegistry;
// Client statements, driver pay sheets, payment marks and the paid and unpaid lists.
void registerSettlementCommands(CommandRegistry &commands);
}
