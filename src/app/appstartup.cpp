#include "appstartup.h"

#include "app/about.h"
#include "core/firmprofile.h"
#include "data/firmstore.h"
#include "app/firststartdialog.h"
#include "app/firststart.h"
#include "app/frmmain.h"
#include "app/userlogin.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "data/database.h"
#include "app/demodata.h"
#include "data/schema.h"

#include <QApplication>
#include <QCommandLineParser>

#include <QSqlDatabase>

namespace zarek {

namespace {

const QString mainConnection = QStringLiteral("main");

void showStartError(const QString &description)
{
    MessageService::instance().inform(UserMessage::error(QStringLiteral("ГРЕШКА при отваряне на базата данни!"),
                                                         QStringLiteral("0"), description));
}

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

StartOptions parseStartOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Зарек — регистър на курсовете на транспортна фирма"));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption database(QStringLiteral("database"),
                                      QStringLiteral("Базата данни: файл на SQLite или postgresql://потребител:парола@сървър:порт/база"),
                                      QStringLiteral("база"));
    const QCommandLineOption empty(QStringLiteral("empty"),
                                   QStringLiteral("Нова база данни се създава празна, без демонстрационни данни."));
    const QCommandLineOption demoCourses(QStringLiteral("demo-courses"),
                                         QStringLiteral("Брой курсове в нова демонстрационна база."),
                                         QStringLiteral("брой"), QStringLiteral("6000"));
    parser.addOptions({database, empty, demoCourses});
    parser.process(arguments);

    StartOptions options;
    options.database = parser.value(database);
    options.empty = parser.isSet(empty);
    options.demoCourses = qMax(0, parser.value(demoCourses).toInt());
    return options;
}

int runZarek(QApplication &app)
{
    const StartOptions options = parseStartOptions(app.arguments());
    const auto config = resolveDatabaseConfig(options.database, qEnvironmentVariable(databaseEnvironmentVariable));
    if (!config) {
        showStartError(QStringLiteral("Неверно зададена база данни: \"%1\"")
                           .arg(options.database.isEmpty() ? qEnvironmentVariable(databaseEnvironmentVariable)
                                                           : options.database));
        return 1;
    }

    QString error;
    QSqlDatabase db = openDatabase(*config, mainConnection, &error);
    if (!db.isOpen()) {
        showStartError(error);
        return 1;
    }
    const bool isNew = schemaVersion(db) == 0;
    if (!migrateSchema(db, &error)) {
        showStartError(error);
        return 1;
    }
    if (isNew && !options.empty && !fillDemo(db, options.demoCourses))
        return 1;
    if (needsFirstStart(db)) {
        FirstStartDialog firstStart(db);
        if (firstStart.exec() != QDialog::Accepted)
            return 0;
        if (firstStart.demoWanted() && !fillDemo(db, options.demoCourses))
            return 1;
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
    return app.exec();
}

}
