#pragma once

#include "core/searchmode.h"
#include "courses/searchconditions.h"
#include "forms/commands.h"

#include <functional>

namespace zarek {

// Which of the three search dialogs a command asks its conditions in.
enum class SearchDialogKind { Seek, SeekAlt, SeekAll };

// What a command shows while its dialog loads its lists: the hourglass and "Обработвам данните...",
// the text alone, or nothing (the target shows its own hourglass once the conditions are given).
enum class SearchBusy { HourglassAndText, TextOnly, None };

struct SearchCommand {
    QString menuItem;
    SearchMode mode;
    SearchDialogKind dialog;
    QString caption;  // the dialog's title
    QString panel;    // the status text once the conditions are given; empty leaves it to the target
    SearchBusy busy = SearchBusy::HourglassAndText;
    bool everyTruck = false;  // the truck list of DiaSeek offers "0", every truck
};

// Adds a command that sets the search mode, asks its conditions in the dialog and, when they are
// given, hands them to the target. A cancelled dialog puts the status text back as it was.
void addSearchCommand(CommandRegistry &commands, const SearchCommand &command,
                      std::function<void(const SearchConditions &)> target);

}
