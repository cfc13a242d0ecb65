#pragma once

#include "core/usermessage.h"
#include "data/databaseconfig.h"

#include <QSqlDatabase>
#include <QString>

#include <functional>

class QApplication;

namespace zarek {

struct StartState;

// Who signed in, as the main window needs it.
struct SignedIn {
    QString userName;
    QString userVid;
};

// What follows the sign-in lives in a library of its own (the main window, its screens, reports,
// printing and charts), which the start loads only when it is needed: the sign-in shows without
// the twenty libraries behind the main window. That library hands over its entries as it loads.
struct AppEntries {
    // A new database's first start: its firm and administrator, or the demo firm. False when the
    // user closed the dialog without either.
    std::function<bool(QSqlDatabase db, const StartState &state, int demoCourses)> firstStart;
    // The main window for the user signed in, until it closes; the process exit code.
    std::function<int(QApplication &app, const DatabaseConfig &config, QSqlDatabase db, const SignedIn &user)> runMainWindow;
};

// Called once by the main window's library while it loads.
void registerAppEntries(AppEntries entries);

// The entries, the library loaded first if it is not yet; the message when it cannot be.
Checked<AppEntries> loadAppEntries();

}
