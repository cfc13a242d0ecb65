#pragma once

#include <QtGlobal>

class QWidget;

namespace zarek {
class CommandRegistry;
}

namespace zarek::clients {

// "Клиенти" under "Данни".
void registerClientCommands(CommandRegistry &commands);

// The register opened over another window (the course editor) on the client of that id, corrected
// at once; returns when it is closed.
void editClientOver(CommandRegistry &commands, QWidget *over, qint64 id);

}
