#include "international/internationalcommands.h"

#include "forms/commands.h"
#include "international/insidekurs.h"

namespace zarek {

void registerInternationalCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    commands.add(QStringLiteral("mnuDataNewInside"), [&commands, &context] {
        commands.showOnce(
            QStringLiteral("InsideKurs"), [&context] { return new InsideKurs(context.db, context.window); }, 260);
    });
}

}
