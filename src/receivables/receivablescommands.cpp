#include "receivables/receivablescommands.h"

#include "forms/commandday.h"
#include "forms/commands.h"
#include "receivables/payments.h"
#include "receivables/receivablesscreens.h"

namespace zarek::receivables {

namespace {

const QString paymentsMenu = QStringLiteral("mnuDataPlashtania");
const QString receivablesMenu = QStringLiteral("mnuSprVzemania");
const QString accountMenu = QStringLiteral("mnuSprIzvlechenie");

void openAccount(CommandRegistry &commands, const QString &client, const QDate &from, const QDate &to)
{
    CommandContext &context = commands.context();
    context.setPanel(QStringLiteral("Извлечение по сметка"));
    commands.showReplacing(
        accountMenu,
        [&context, client, from, to] { return new ClientAccountScreen(context.db, context.firm(), client, from, to, context.window); },
        context.helpTopic(accountMenu));
}

}

void registerReceivablesCommands(CommandRegistry &commands)
{
    commands.add(paymentsMenu, [&commands] {
        CommandContext &context = commands.context();
        context.setPanel(QStringLiteral("Плащания от клиенти"));
        commands.showOnce(
            paymentsMenu, [&context] { return new Payments(context.db, commandDay(), context.window); },
            context.helpTopic(paymentsMenu));
    });
    commands.add(receivablesMenu, [&commands] {
        CommandContext &context = commands.context();
        context.setPanel(QStringLiteral("Вземания"));
        commands.showReplacing(
            receivablesMenu,
            [&commands, &context] {
                auto *screen = new ReceivablesScreen(context.db, commandDay().today, context.window);
                QObject::connect(screen, &ReceivablesScreen::accountRequested, screen,
                                 [&commands](const QString &client, const QDate &from, const QDate &to) {
                                     openAccount(commands, client, from, to);
                                 });
                return screen;
            },
            context.helpTopic(receivablesMenu));
    });
    commands.add(accountMenu, [&commands] {
        QString client;
        QDate from;
        QDate to;
        if (askAccountConditions(commands.context().db, commandDay().today, commands.context().window, client, from, to))
            openAccount(commands, client, from, to);
    });
    // Another screen that names a client (the dashboard) opens the account of its last twelve months.
    commands.addTarget(accountMenu, [&commands](const std::any &given) {
        if (const auto *client = std::any_cast<QString>(&given)) {
            const QDate today = commandDay().today;
            openAccount(commands, *client, today.addYears(-1).addDays(1), today);
        }
    });
}

}
