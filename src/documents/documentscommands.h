#pragma once

#include "forms/commandday.h"

#include <QDate>
#include <QString>

class QSettings;

namespace zarek {
class CommandRegistry;
}

namespace zarek::documents {

// "Документи" (mnuDataDok) and "Изтичащи документи" (mnuSprDok).
void registerDocumentCommands(CommandRegistry &commands);

// After sign-in: the short notice of the documents due, unless there are none or the user
// switched it off. Returns whether it was shown.
bool showDueNotice(CommandRegistry &commands, QSettings &settings, const QString &user,
                   const QDate &today = commandToday());

}
