#pragma once

#include "core/searchmode.h"
#include "courses/searchconditions.h"
#include "forms/commands.h"

#include <functional>

namespace zarek {

// Which of the three search dialogs a command asks its conditions in.
enum class SearchDialogKind { Seek, SeekAlt, SeekAll };

struct SearchCommand {
    QString menuItem;
    SearchMode mode;
    SearchDialogKind dialog;
    QString caption;  // the dialog's title
    QString panel;    // the status text once the conditions are given; empty leaves it to the target
};

// Adds a command that sets the search mode, asks its conditions in the dialog and, when they are
// given, hands them to the target.
void addSearchCommand(CommandRegistry &commands, const SearchCommand &command,
                      std::function<void(const SearchConditions &)> target);

}
