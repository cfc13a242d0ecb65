#include "reference/referencecommands.h"

#include "forms/commands.h"
#include "reference/driver.h"
#include "reference/options.h"

namespace zarek {

void registerReferenceCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    commands.add(QStringLiteral("mnuDataShof"), [&commands, &context] {
        context.setPanel(QStringLiteral("Корекция / нови данни за шофьор"));
        Driver screen(context.db, context.window);
        commands.runModal(screen, context.helpTopic(QStringLiteral("mnuDataShof")));
    });
    commands.add(QStringLiteral("mnuSpOption"), [&commands, &context] {
        context.setPanel(QStringLiteral("Разход на гориво за 100 км"));
        Options screen(context.db, context.window);
        commands.runModal(screen, context.helpTopic(QStringLiteral("mnuSpOption")));
    });
}

}
