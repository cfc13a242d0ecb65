#include "warehouse/warehousecommands.h"

#include "courses/searchcommand.h"
#include "forms/commandday.h"
#include "forms/commands.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "reports/reportpreview.h"
#include "warehouse/sklad.h"
#include "warehouse/stocklists.h"
#include "warehouse/stockscreens.h"

namespace zarek {

namespace {

const QString receiptsMenu = QStringLiteral("mnuSklPrih");
const QString issuesMenu = QStringLiteral("mnuSklRaz");
const QString auditMenu = QStringLiteral("mnuPrihPer");

// Receipts or issues, beside the main window; an issue saved or deleted refreshes an open
// receipts window, whose receipts it took from or gave back to.
void openMovements(CommandRegistry &commands, const QString &menu, const QString &vidKol)
{
    CommandContext &context = commands.context();
    context.setPanel(QStringLiteral("Обработвам данните..."));
    commands.showOnce(
        menu,
        [&commands, &context, vidKol] {
            WaitCursor wait;
            auto *screen = new Sklad(vidKol, context.db, context.window);
            if (screen->isIssues()) {
                QObject::connect(screen, &Sklad::stockChanged, screen, [&commands] {
                    if (auto *receipts = qobject_cast<Sklad *>(commands.openWindow(receiptsMenu)))
                        receipts->refresh();
                });
            }
            return screen;
        },
        context.helpTopic(menu));
}

void printMovements(CommandContext &context, bool receipts, const SearchConditions &conditions)
{
    WaitCursor wait;
    ProgDialog progress(receipts ? QStringLiteral("Обработка на приходите в склада...")
                                 : QStringLiteral("Обработка на разходите в склада..."),
                        1, context.window);
    progress.setWindowTitle(receipts ? QStringLiteral("Справка за приходите в склада...")
                                     : QStringLiteral("Справка за разходите в склада..."));
    const Checked<Report> report =
        SkladReport(receipts, conditions, context.db, context.firm(), commandDay(), [&progress](int done, int count) {
            progress.setMaximum(count + 1);
            progress.setValue(done);
        });
    progress.reset();
    showReport(report, context.window);
}

}

void registerWarehouseCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    commands.add(receiptsMenu, [&commands] { openMovements(commands, receiptsMenu, StockMovement::receiptKind()); });
    commands.add(issuesMenu, [&commands] { openMovements(commands, issuesMenu, StockMovement::issueKind()); });
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprPrihod"), SearchMode::SkladPR, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Справка приходи"), QStringLiteral("Справка за приходите в склада")},
                     [&context](const SearchConditions &c) { printMovements(context, true, c); });
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprRazhod"), SearchMode::SkladPRN, SearchDialogKind::SeekAll,
                      QStringLiteral("Търсене - Справка разходи"), QStringLiteral("Справка за разходите в склада")},
                     [&context](const SearchConditions &c) { printMovements(context, false, c); });
    addSearchCommand(commands,
                     {QStringLiteral("mnuNal"), SearchMode::NalichSK, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Наличност в склада"), QStringLiteral("Наличност в склада")},
                     [&commands, &context](const SearchConditions &c) {
                         NalichSK screen(c.SeekArtikul, context.db, context.firm(), context.window, commandDay().today);
                         commands.runModal(screen, context.helpTopic(QStringLiteral("mnuNal")));
                     });
    addSearchCommand(commands,
                     {auditMenu, SearchMode::All, SearchDialogKind::Seek, QStringLiteral("Търсене - Ревизия на склада"),
                      QStringLiteral("Справка за приходите и разходите в склада")},
                     [&commands, &context](const SearchConditions &c) {
                         // A new period replaces the audit that stands open.
                         if (QWidget *open = commands.openWindow(auditMenu))
                             open->close();
                         context.setPanel(QStringLiteral("Ревизия на склада"));
                         commands.showOnce(
                             auditMenu,
                             [&context, c] { return new SkladSK(c.period, context.db, context.firm(), context.window, commandDay().today); },
                             context.helpTopic(auditMenu));
                     });
}

}
