#include "appstartup.h"

#include "app/about.h"
#include "app/applibrary.h"
#include "app/desktopconventions.h"
#include "app/databasepassword.h"
#include "app/firststart.h"
#include "app/userlogin.h"
#include "data/archive.h"
#include "data/archivesupport.h"
#include "data/database.h"
#include "data/schema.h"
#include "forms/messageservice.h"
#include "core/version.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFontDatabase>

#include <QSqlDatabase>

#include <future>

namespace zarek {

namespace {

const QString mainConnection = QStringLiteral("main");

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

std::future<void> startReadingFonts()
{
    return std::async(std::launch::async, [] { QFontDatabase::families(); });
}

int runZarek(QApplication &app, const StartOptions &options, std::future<void> fonts)
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
    Checked<StartState> state = prepareDatabase(db);
    if (!state) {
        MessageService::instance().inform(state.message());
        return 1;
    }
    // A new database asks for its firm and administrator, or makes the demo firm on request.
    if (state.value().needsFirstStart()) {
        const Checked<AppEntries> entries = loadAppEntries();
        if (!entries) {
            MessageService::instance().inform(entries.message());
            return 1;
        }
        if (!entries.value().firstStart(db, state.value(), options.demoCourses))
            return 0;
    }

    UserLogin login(db);
    fonts.wait();
    {
        // Shown only for the moment before sign-in.
        Splash splash;
        splash.show();
        QApplication::processEvents();
    }
    login.exec();
    if (!login.LoginSucceeded())
        return 0;
    // Work files of restores, archives and year closes that a killed copy left behind.
    archiving::removeDeadWorkFiles(archiveFolder(db));

    const Checked<AppEntries> main = loadAppEntries();
    if (!main) {
        MessageService::instance().inform(main.message());
        return 1;
    }
    return main.value().runMainWindow(app, *config, db, SignedIn{login.UserName(), login.UserVid()});
}

}
