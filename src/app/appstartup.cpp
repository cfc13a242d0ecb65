#include "appstartup.h"

#include "app/about.h"
#include "app/desktopconventions.h"
#include "app/databasepassword.h"
#include "app/demodata.h"
#include "app/firststart.h"
#include "app/firststartdialog.h"
#include "app/frmmain.h"
#include "app/integritycheck.h"
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
#include "core/version.h"

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

namespace {

struct OptionText {
    QStringList names;
    QString valueName;
    QString description;
};

const QList<OptionText> &optionTexts()
{
    static const QList<OptionText> options = {
        {{QStringLiteral("database")}, QStringLiteral("база"),
         QStringLiteral("Базата данни: файл на SQLite или postgresql://потребител@сървър:порт/база "
                        "(паролата - от ~/.pgpass, PGPASSWORD или при поискване).")},
        {{QStringLiteral("demo-courses")}, QStringLiteral("брой"),
         QStringLiteral("Брой курсове в нова демонстрационна база (6000, ако не е зададен).")},
        {{QStringLiteral("h"), QStringLiteral("help")}, {}, QStringLiteral("Показва тази помощ и приключва.")},
        {{QStringLiteral("v"), QStringLiteral("version")}, {}, QStringLiteral("Показва версията и приключва.")},
    };
    return options;
}

QString optionSyntax(const OptionText &option)
{
    QStringList names;
    for (const QString &name : option.names)
        names.append((name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name);
    QString syntax = names.join(QStringLiteral(", "));
    if (!option.valueName.isEmpty())
        syntax += QStringLiteral(" <%1>").arg(option.valueName);
    return syntax;
}

}

QString commandLineHelp()
{
    QString text = QStringLiteral("Употреба: zarek [настройки]\n"
                                  "Зарек %1 — регистър на курсовете на транспортна фирма.\n\n"
                                  "Настройки:\n").arg(version::text());
    int width = 0;
    for (const OptionText &option : optionTexts())
        width = qMax(width, int(optionSyntax(option).size()));
    for (const OptionText &option : optionTexts())
        text += QStringLiteral("  %1  %2\n").arg(optionSyntax(option).leftJustified(width), option.description);
    text += QStringLiteral("\nПроменливата на средата ZAREK_DATABASE приема същото като --database; --database е с предимство.\n"
                           "Без --database: Zarek.db в папката с данни на потребителя.\n"
                           "Ръководството е в менюто \"Помощ\" на програмата.\n");
    return text;
}

StartOptions parseStartOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption database(QStringLiteral("database"), optionTexts()[0].description, QStringLiteral("база"));
    // Kept so that older scripts still start: a new database always opens the first-start dialog now.
    const QCommandLineOption empty(QStringLiteral("empty"));
    const QCommandLineOption demoCourses(QStringLiteral("demo-courses"), optionTexts()[1].description,
                                         QStringLiteral("брой"), QStringLiteral("6000"));
    const QCommandLineOption help(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption versionOption(QStringList{QStringLiteral("v"), QStringLiteral("version")});
    const QCommandLineOption probe(QStringLiteral("probe-start"));
    parser.addOptions({database, empty, demoCourses, help, versionOption, probe});

    StartOptions options;
    if (!parser.parse(arguments)) {
        const QString wrong = parser.unknownOptionNames().isEmpty() ? QString() : parser.unknownOptionNames().first();
        options.answer = (wrong.isEmpty() ? QStringLiteral("Непълен команден ред: на настройката липсва стойност.")
                                          : QStringLiteral("Непозната настройка: %1").arg(wrong))
                         + QStringLiteral("\n\"zarek --help\" показва настройките.\n");
        options.answerExitCode = 2;
        return options;
    }
    if (parser.isSet(help)) {
        options.answer = commandLineHelp();
        return options;
    }
    if (parser.isSet(versionOption)) {
        options.answer = QStringLiteral("Зарек, версия %1\n").arg(version::text());
        return options;
    }
    options.database = parser.value(database);
    options.demoCourses = qMax(0, parser.value(demoCourses).toInt());
    options.probeStart = parser.isSet(probe);
    return options;
}

int runZarek(QApplication &app, const StartOptions &options)
{
    if (options.probeStart)
        closeFirstWindowShown(app);
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
    // The rows' pages, which the check before sign-in leaves alone: told only when damaged.
    BackgroundIntegrityCheck integrity(config->sqlitePath);
    if (config->engine == DatabaseConfig::Engine::SQLite)
        integrity.start();
    return app.exec();
}

}
