#include "clientscommands.h"

#include "clients/klienti.h"
#include "forms/commands.h"

namespace zarek::clients {

namespace {

const QString clientsMenu = QStringLiteral("mnuDataKlienti");

}

void registerClientCommands(CommandRegistry &commands)
{
    commands.add(clientsMenu, [&commands] {
        CommandContext &context = commands.context();
        context.setPanel(QStringLiteral("Клиенти"));
        commands.showOnce(
            clientsMenu, [&context] { return new Klienti(context.db, context.window); }, context.helpTopic(clientsMenu));
    });
}

void editClientOver(CommandRegistry &commands, QWidget *over, qint64 id)
{
    Klienti screen(commands.context().db, over);
    screen.editClient(id);
    commands.runModal(screen, commands.context().helpTopic(clientsMenu));
}

}
