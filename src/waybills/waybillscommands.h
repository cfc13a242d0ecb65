#pragma once

namespace zarek {
class CommandRegistry;
// Waybills with their route lines, and the waybill report.
void registerWaybillCommands(CommandRegistry &commands);
}
