#include "appstartup.h"

#include "app/about.h"
#include "app/databasepassword.h"
#include "app/demodata.h"
#include "app/firststart.h"
#include "app/firststartdialog.h"
#include "app/frmmain.h"
#include "app/userlogin.h"
#include "core/firmprofile.h"
#include "data/archive.h"
#include "data/archivesupport.h"
#include "data/database.h"
#include "data/firmstore.h"
#include "data/schema.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"

#include <QApplication>
#include <QCommandLineParser>

#include <QSqlDatabase>
#include <QTimer>

namespace zarek {

namespace {

const QString mainConnection = QStringLiteral("main");

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

}

UserMessage badDatabaseTextMessage(const QString &text)
{
    return UserMessage::twoLines(databaseOpenTitle(),
                                 QStringLiteral("Неверно зададена база данни: \"%1\"").arg(DatabaseConfig::redacted(text)),
                                 QStringLiteral("Моля, посочете файл на SQLite или postgresql://потребител@сървър:порт/база!"),
                                 UserMessage::Icon::Critical);
}

StartOptions parseStartOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Зарек — регистър на курсовете на транспортна фирма"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption database(QStringLiteral("database"),
                                      QStringLiteral("Базата данни: файл на SQLite или postgresql://потребител@сървър:порт/база "
                                                     "(паролата - от ~/.pgpass, PGPASSWORD или при поискване)"),
                                      QStringLiteral("база"));
    // Kept so that older scripts still start: a new database always opens the first-start dialog now.
    QCommandLineOption empty(QStringLiteral("empty"), QStringLiteral("Без действие: новата база данни винаги пита."));
    empty.setFlags(QCommandLineOption::HiddenFromHelp);
    const QCommandLineOption demoCourses(QStringLiteral("demo-courses"),
                                         QStringLiteral("Брой курсове в нова демонстрационна база."),
                                         QStringLiteral("брой"), QStringLiteral("6000"));
    parser.addOptions({database, empty, demoCourses});
    parser.process(arguments);

    StartOptions options;
    options.database = parser.value(database);
    options.demoCourses = qMax(0, parser.value(demoCourses).toInt());
    return options;
}

int runZarek(QApplication &app)
{
    const StartOptions options = parseStartOptions(app.arguments());
    const QString environment = qEnvironmentVariable(databaseEnvironmentVariable);
    const auto config = resolveDatabaseConfig(options.database, environment);
    if (!config) {
        const std::optional<UserMessage> password = commandLinePasswordMessage(options.database);
        MessageService::instance().inform(
            password ? *password : badDatabaseTextMessage(options.database.isEmpty() ? environment : options.database));
        return 1;
    }

    const Checked<QSqlDatabase> connection =
        connectAsking(*config, mainConnection, &DatabasePasswordDialog::ask, &connectDatabase);
    if (!connection) {
        MessageService::instance().inform(connection.message());
        return 1;
    }
    QSqlDatabase db = connection.value();
    // Work files of restores, archives and year closes that a killed copy left behind.
    archiving::removeDeadWorkFiles(archiveFolder(db));
    Checked<StartState> state = prepareDatabase(db);
    if (!state) {
        MessageService::instance().inform(state.message());
        return 1;
    }
    // A new database asks for its firm and administrator, or makes the demo firm on request.
    StartState current = state.value();
    while (current.needsFirstStart()) {
        FirstStartDialog firstStart(db, current);
        if (firstStart.exec() != QDialog::Accepted)
            return 0;
        if (firstStart.demoWanted())
            fillDemo(db, options.demoCourses);
        current = readStartState(db);
    }

    {
        // Shown only for the moment before sign-in.
        Splash splash;
        splash.show();
        QApplication::processEvents();
    }
    UserLogin login(db);
    login.exec();
    if (!login.LoginSucceeded())
        return 0;

    const FirmProfileLoad firm = LoadFirmProfile(db);
    if (!firm.profile) {
        MessageService::instance().inform(*firm.stopMessage);
        return 1;
    }

    FrmMain window(*firm.profile, *config, db, login.UserVid());
    window.show();
    // Once the window stands: the documents due, in a notice that does not stop the user.
    QTimer::singleShot(0, &window, [&window, user = login.UserName()] { window.showDueNotice(user); });
    return app.exec();
}

}
