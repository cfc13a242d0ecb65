#include "paycommands.h"

#include "courses/searchcommand.h"
#include "data/scratchdatabase.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "settlement/courselists.h"
#include "settlement/paysheetstore.h"
#include "settlement/plashtane.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"

namespace zarek {

namespace {

// Runs work under the progress box; the box is gone when the work returns, whatever it returns.
template <typename Work>
auto withProgress(QWidget *window, const QString &label, Work work)
{
    WaitCursor wait;
    ProgDialog progress(label, 1, window);
    return work([&progress](int done, int total) {
        progress.setMaximum(total);
        progress.setValue(done);
    });
}

// A paper the driver signs or the dispatcher files: shown until closed, over the main window. Its
// first page shows at once, the others are laid out behind it.
void showModal(std::shared_ptr<ReportLayouter> layouter, QWidget *window, int helpTopic)
{
    ReportPreview preview(std::move(layouter), window);
    if (helpTopic > 0)
        preview.setProperty("helpTopic", helpTopic);
    preview.exec();
}

void showPaySheet(CommandContext &context, const SearchConditions &conditions)
{
    const Checked<PaySheet> sheet = withProgress(
        context.window, QStringLiteral("Обработка курсове на шофьор..."),
        [&](const WorkProgress &progress) { return BuildDriverPaySheet(conditions, context.db, commandDay(), progress); });
    if (!sheet) {
        MessageService::instance().inform(sheet.message());
        return;
    }
    const Checked<StreamedReport> report =
        ReportZaplata(sheet.value(), paySheetRowStream(sheet.value()), context.firm(), commandDay().today);
    if (!report) {
        MessageService::instance().inform(report.message());
        return;
    }
    showModal(std::make_shared<ReportLayouter>(report.value()), context.window,
              context.helpTopic(QStringLiteral("mnuSlgZapl")));
}

}

void showDriverCourseList(CommandContext &context, bool paid, const SearchConditions &conditions)
{
    context.setPanel(QStringLiteral("Справка за курсове..."));
    const Checked<Report> report = withProgress(
        context.window, QStringLiteral("Обработка на курсовете на шофьора..."), [&](const WorkProgress &progress) {
            return BuildDriverCourseList(paid, conditions, context.db, *context.scratch, context.firm(), commandDay(), progress);
        });
    if (!report) {
        MessageService::instance().inform(report.message());
        return;
    }
    showModal(std::make_shared<ReportLayouter>(report.value()), context.window,
              context.helpTopic(QStringLiteral("mnuSprShof")));
}

void registerDriverPayCommands(CommandRegistry &commands)
{
    CommandContext &context = commands.context();
    addSearchCommand(commands,
                     {QStringLiteral("mnuSlgZapl"), SearchMode::Driver, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Заплата на шофьор..."), QStringLiteral("Заплати за период")},
                     [&context](const SearchConditions &c) { showPaySheet(context, c); });
    addSearchCommand(commands,
                     {QStringLiteral("mnuDataKorPl"), SearchMode::Driver, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Корекция плащане на шофьор"),
                      QStringLiteral("Корекция на неплатени курсове на шофьор...")},
                     [&commands, &context](const SearchConditions &c) {
                         context.setPanel(QStringLiteral("Справка за курсове..."));
                         Plashtane screen(c, context.db, *context.scratch, context.firm(), context.window, commandDay().today);
                         commands.runModal(screen, context.helpTopic(QStringLiteral("mnuDataKorPl")));
                     });
}

}
