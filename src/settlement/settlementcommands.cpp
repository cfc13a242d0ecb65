#include "settlement/settlementcommands.h"

#include "courses/coursereports.h"
#include "courses/searchcommand.h"
#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "forms/commandday.h"
#include "reports/reportpreview.h"
#include "settlement/klients.h"
#include "settlement/paycommands.h"

namespace zarek {

void registerSettlementCommands(CommandRegistry &commands)
{
    registerDriverPayCommands(commands);
    CommandContext &context = commands.context();
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprShof"), SearchMode::Driver, SearchDialogKind::SeekAlt,
                      QStringLiteral("Търсене - Курсове на шофьор"), QString()},
                     [&context](const SearchConditions &c) {
                         if (c.SeekChoice == QLatin1String("All")) {
                             context.setPanel(QStringLiteral("Справка за всички курсове на шофьор"));
                             showReport(streamReportDriver(c, context.db, context.firm(), commandDay()), context.window);
                             return;
                         }
                         context.setPanel(c.SeekChoice == QLatin1String("Yes")
                                              ? QStringLiteral("Справка за платените курсове на шофьор")
                                              : QStringLiteral("Справка за неплатените курсове на шофьор"));
                         showDriverCourseList(context, c.SeekChoice == QLatin1String("Yes"), c);
                     });
    // The client statement asks its search as a client search, whatever the command before it left.
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprKlientSakr"), SearchMode::Klients, SearchDialogKind::SeekAll,
                      QStringLiteral("Търсене - Клиент за фактуриране"), QStringLiteral("Справка за клиент")},
                     [&commands, &context](const SearchConditions &c) {
                         commands.showReplacing(
                             QStringLiteral("Klients"),
                             [&context, c]() -> QWidget * {
                                 context.setPanel(QStringLiteral("Справка за курсове..."));
                                 // Each statement keeps its working list in a scratch file of its own.
                                 return new Klients(c, context.db,
                                                    std::make_unique<ScratchDatabase>(context.scratch->folder()),
                                                    context.firm, context.window);
                             },
                             context.helpTopic(QStringLiteral("mnuSprKlientSakr")));
                     });
}

}
