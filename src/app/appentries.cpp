// The entries of the main window's library, handed to the start as the library loads
// (applibrary.h): the first start of a new database and the main window after sign-in.
#include "app/applibrary.h"
#include "app/demodata.h"
#include "app/firststart.h"
#include "app/firststartdialog.h"
#include "app/frmmain.h"
#include "app/integritycheck.h"
#include "core/firmprofile.h"
#include "data/firmstore.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"

#include <QApplication>
#include <QTimer>

namespace zarek {

namespace {

bool fillDemo(QSqlDatabase &db, int courses)
{
    ProgDialog progress(QStringLiteral("Създаване на демонстрационна база данни..."), courses);
    WaitCursor wait;
    DemoOptions options;
    options.courses = courses;
    options.progress = [&progress](int done, int) {
        progress.setValue(done);
        QApplication::processEvents();
    };
    const auto summary = fillDemoDatabase(db, options);
    if (!summary) {
        MessageService::instance().inform(summary.message());
        return false;
    }
    return true;
}

bool firstStart(QSqlDatabase db, const StartState &state, int demoCourses)
{
    StartState current = state;
    while (current.needsFirstStart()) {
        FirstStartDialog dialog(db, current);
        if (dialog.exec() != QDialog::Accepted)
            return false;
        if (dialog.demoWanted())
            fillDemo(db, demoCourses);
        current = readStartState(db);
    }
    return true;
}

int runMainWindow(QApplication &app, const DatabaseConfig &config, QSqlDatabase db, const SignedIn &user)
{
    const FirmProfileLoad firm = LoadFirmProfile(db);
    if (!firm.profile) {
        MessageService::instance().inform(*firm.stopMessage);
        return 1;
    }
    FrmMain window(*firm.profile, config, db, user.userVid);
    window.show();
    // Once the window stands: the documents due, in a notice that does not stop the user.
    QTimer::singleShot(0, &window, [&window, name = user.userName] { window.showDueNotice(name); });
    // The rows' pages, which the check before sign-in leaves alone: told only when damaged.
    BackgroundIntegrityCheck integrity(config.sqlitePath);
    if (config.engine == DatabaseConfig::Engine::SQLite)
        integrity.start();
    return app.exec();
}

const bool entriesHandedOver = [] {
    registerAppEntries({&firstStart, &runMainWindow});
    return true;
}();

}

}
