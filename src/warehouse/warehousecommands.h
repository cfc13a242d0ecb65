#pragma once

namespace zarek {
class CommandRegistry;
// Receipts, issues, stock position, audit and movement reports.
void registerWarehouseCommands(CommandRegistry &commands);
}
