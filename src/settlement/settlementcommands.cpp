#include "settlement/settlementcommands.h"

#include "courses/coursereports.h"
#include "courses/searchcommand.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
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
                             showReport(ReportDriver(c, context.db, context.firm()), context.window);
                             return;
                         }
                         context.setPanel(c.SeekChoice == QLatin1String("Yes")
                                              ? QStringLiteral("Справка за платените курсове на шофьор")
                                              : QStringLiteral("Справка за неплатените курсове на шофьор"));
                         showDriverCourseList(context, c.SeekChoice == QLatin1String("Yes"), c);
                     });
}

}
