#include "invoicing/invoicingcommands.h"

#include "courses/searchcommand.h"
#include "data/scratchdatabase.h"
#include "forms/commandday.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "invoicing/debitnotedialog.h"
#include "invoicing/faktura.h"
#include "invoicing/taxdocumentpaper.h"
#include "invoicing/taxdocumentregisterscreen.h"

namespace zarek {

namespace {

// Lays out TempPlaten afresh and runs the invoicing screen over the conditions given.
void openFaktura(CommandRegistry &commands, FakturaMode mode, const QString &menuItem, const SearchConditions &c)
{
    CommandContext &context = commands.context();
    QSqlDatabase scratch;
    if (context.scratch) {
        if (const auto refusal = context.scratch->RebuildScratchTable(QStringLiteral("TempPlaten"))) {
            MessageService::instance().inform(*refusal);
            return;
        }
        scratch = context.scratch->db();
    }
    Faktura screen(mode, c, context.db, scratch, context.firm(), context.window);
    context.setPanel(Faktura::panelText(mode, c));
    commands.runModal(screen, context.helpTopic(menuItem));
    // The tax document recorded at closing, on paper: the invoice's original, or the credit note.
    if (screen.issuedDocument() > 0)
        previewTaxDocument(context.window, context.db, screen.issuedDocument(), PaperCopy::Original, screen.books());
}

}

void registerInvoicingCommands(CommandRegistry &commands)
{
    commands.add(QStringLiteral("mnuDataDebit"), [&commands] {
        CommandContext &context = commands.context();
        DebitNoteDialog dialog(context.db, context.window);
        commands.runModal(dialog, context.helpTopic(QStringLiteral("mnuDataDebit")));
        if (dialog.issuedDocument() > 0)
            previewTaxDocument(context.window, context.db, dialog.issuedDocument(), PaperCopy::Original, commandDay());
    });
    addSearchCommand(commands,
                     {QStringLiteral("mnuDataFakt"), SearchMode::FaktNew, SearchDialogKind::SeekAll,
                      QStringLiteral("Търсене - Нефактурирани курсове"), QStringLiteral("Фактуриране на курсове...")},
                     [&commands](const SearchConditions &c) {
                         openFaktura(commands, FakturaMode::FaktNew, QStringLiteral("mnuDataFakt"), c);
                     });
    addSearchCommand(commands,
                     {QStringLiteral("mnuDataEditFakt"), SearchMode::EditFakt, SearchDialogKind::Seek,
                      QStringLiteral("Търсене - Корекция фактури"),
                      QStringLiteral("Корекция на фактурирани курсове...")},
                     [&commands](const SearchConditions &c) {
                         openFaktura(commands, FakturaMode::EditFakt, QStringLiteral("mnuDataEditFakt"), c);
                     });
    // The register of issued invoices and notes: the period and the client's first letters.
    addSearchCommand(commands,
                     {QStringLiteral("mnuSprFakturi"), SearchMode::Klients, SearchDialogKind::SeekAll,
                      QStringLiteral("Търсене - Фактури"), QStringLiteral("Фактури")},
                     [&commands](const SearchConditions &c) {
                         CommandContext &context = commands.context();
                         commands.showReplacing(
                             QStringLiteral("Fakturi"),
                             [&context, c]() -> QWidget * {
                                 auto *screen = new TaxDocumentRegisterScreen(
                                     context.db, {c.period, c.SeekKlient, commandDay().today}, context.window);
                                 QObject::connect(screen, &TaxDocumentRegisterScreen::reprint, screen,
                                                  [screen, &context](qint64 id) {
                                                      previewTaxDocument(screen, context.db, id, PaperCopy::Copy,
                                                                         commandDay());
                                                  });
                                 return screen;
                             },
                             context.helpTopic(QStringLiteral("mnuSprFakturi")));
                     });
}

}
