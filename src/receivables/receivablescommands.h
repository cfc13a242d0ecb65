#pragma once

namespace zarek {
class CommandRegistry;
}

namespace zarek::receivables {

// "Плащания от клиенти" under "Данни"; "Вземания" and "Извлечение по сметка" under "Справки".
void registerReceivablesCommands(CommandRegistry &commands);

}
