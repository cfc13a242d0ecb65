#include "waybills/waybillscommands.h"

#include "courses/searchcommand.h"
#include "data/scratchdatabase.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportpreview.h"
#include "waybills/rowdlist.h"
#include "waybills/waybillreport.h"

namespace zarek {

void registerWaybillCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    commands.add(QStringLiteral("mnuDataPList"), [&commands, &context] {
        context.setPanel(QStringLiteral("Въвеждане на данните от пътните листи"));
        RowdList screen(context.db, context.window);
        commands.runModal(screen, context.helpTopic(QStringLiteral("mnuDataPList")));
    });
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprRowdList"), SearchMode::Kola, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Справка пътни листи"), QStringLiteral("Справка пътни листи"),
                      SearchBusy::HourglassAndText, true},
                     [&context](const SearchConditions &conditions) {
                         Checked<Report> report = UserMessage{};
                         {
                             WaitCursor wait;
                             if (auto failure = context.scratch->RebuildScratchTable(QStringLiteral("TempRowdList")))
                                 report = *failure;
                             else
                                 report = RowdReport(conditions, context.db, *context.scratch, context.firm());
                         }
                         if (!report) {
                             MessageService::instance().inform(report.message());
                             return;
                         }
                         WaitCursor wait;  // the pages are laid out before the first is shown
                         showReport(report, context.window);
                     });
}

}
