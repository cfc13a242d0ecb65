#include "fleet/fleetcommands.h"

#include "courses/searchcommand.h"
#include "fleet/balans.h"
#include "forms/commands.h"

namespace zarek {

namespace {

// The balance of each mode stands in a window of its own; asked again, it is made anew for the new period.
void showBalans(CommandRegistry &commands, BalansMode mode, const Period &period, const QString &menuItem)
{
    CommandContext &context = commands.context();
    const QString key = mode == BalansMode::Profit ? QStringLiteral("Balans") : QStringLiteral("Balans-PreRazh");
    commands.showReplacing(
        key,
        [&context, mode, period]() -> QWidget * {
            return new Balans(mode, period, context.db, context.scratch, context.firm, context.window);
        },
        context.helpTopic(menuItem));
}

}

void registerFleetCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprBalanc"), SearchMode::All, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Баланс"), QStringLiteral("Справка за печалбата от колите")},
                     [&commands, &context](const SearchConditions &c) {
                         context.setPanel(QStringLiteral("Справка за печалбата от колите.."));
                         showBalans(commands, BalansMode::Profit, c.period, QStringLiteral("mnuSprBalanc"));
                     });
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprPreRazh"), SearchMode::All, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Разход нафта от кола №"),
                      QStringLiteral("Справка за изгорената нафта от кола...")},
                     [&commands, &context](const SearchConditions &c) {
                         context.searchMode = SearchMode::PreRazh;
                         context.setPanel(QStringLiteral("Справка за разхода на нафта на колите.."));
                         showBalans(commands, BalansMode::Fuel, c.period, QStringLiteral("mnuSprPreRazh"));
                     });
}

}
