#include "courses/searchcommand.h"

#include "courses/diaseek.h"
#include "courses/diaseekall.h"
#include "courses/diaseekalt.h"
#include "forms/waitcursor.h"

#include <memory>
#include <optional>

namespace zarek {

void addSearchCommand(CommandRegistry &commands, const SearchCommand &command,
                      std::function<void(const SearchConditions &)> target)
{
    commands.add(command.menuItem, [&commands, command, target] {
        CommandContext &context = commands.context();
        const QString panelBefore = context.panel ? context.panel() : QString();
        std::optional<WaitCursor> wait;
        if (command.busy == SearchBusy::HourglassAndText)
            wait.emplace();
        if (command.busy != SearchBusy::None)
            context.setPanel(QStringLiteral("Обработвам данните..."));
        context.searchMode = command.mode;
        std::unique_ptr<SearchDialog> dialog;
        switch (command.dialog) {
        case SearchDialogKind::Seek: dialog = std::make_unique<DiaSeek>(command.mode, context.db, context.window); break;
        case SearchDialogKind::SeekAlt: dialog = std::make_unique<DiaSeekAlt>(command.mode, context.db, context.window); break;
        case SearchDialogKind::SeekAll: dialog = std::make_unique<DiaSeekAll>(command.mode, context.db, context.window); break;
        }
        if (command.everyTruck) {
            if (auto *seek = dynamic_cast<DiaSeek *>(dialog.get()))
                seek->offerEveryTruck();
        }
        wait.reset();  // the lists are loaded: the dialog waits for the user
        dialog->setWindowTitle(command.caption);
        dialog->setProperty("helpTopic", context.helpTopic(command.menuItem));
        dialog->exec();
        if (!dialog->SeekOk()) {
            context.setPanel(panelBefore);  // nothing is being worked on
            return;
        }
        if (!command.panel.isEmpty())
            context.setPanel(command.panel);
        target(dialog->conditions());
    });
    commands.addTarget(command.menuItem, [&commands, command, target](const std::any &given) {
        const auto *conditions = std::any_cast<SearchConditions>(&given);
        if (!conditions)
            return;
        commands.context().searchMode = command.mode;
        if (!command.panel.isEmpty())
            commands.context().setPanel(command.panel);
        target(*conditions);
    });
}

}
