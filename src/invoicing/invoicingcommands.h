#pragma once

namespace zarek {
class CommandRegistry;
// Marking courses for an invoice, its number, the statement, correcting an invoice.
void registerInvoicingCommands(CommandRegistry &commands);
}
