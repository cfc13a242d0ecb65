// The program started up to its sign-in dialog shown, raced against a bare Qt dialog shown and
// against the least any sign-in does (a bare Qt program that opens the database, reads its users
// and shows a dialog with words) and a bare dialog with one word against the bare one, each a
// process of its own (the best of twenty-one, in turn), on
// SQLite and PostgreSQL; on SQLite, the checks every start makes before the sign-in: the
// read-only look at the file's header and schema, the
// connection, and the migration and "is it new?" under the write lock; the whole-file check that
// follows the sign-in in the background, for comparison; and the demo firm as one transaction.
// Run: bench_startup [courses...] (default 10000 100000).
#include "benchdata.h"
#include "benchratio.h"

#include "app/demodata.h"
#include "app/firststart.h"
#include "data/sqlitefile.h"

#include <QProcess>

using namespace zarek;

namespace {

// Milliseconds from starting the program until it writes the line of its first window shown.
double untilShown(const QString &program, const QStringList &arguments, const QString &expected)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    QElapsedTimer timer;
    timer.start();
    process.start(program, arguments);
    QByteArray out;
    while (!out.contains('\n') && process.waitForReadyRead(10000))
        out += process.readAllStandardOutput();
    const double taken = bench::ms(timer);
    process.waitForFinished(10000);
    if (!out.startsWith(expected.toUtf8()))
        std::fprintf(stderr, "%s showed \"%s\" first\n", qPrintable(program), out.trimmed().constData());
    return taken;
}

// The start-up of the program on this database, to its sign-in shown, against a bare dialog and
// the bare sign-in: the three started in turn, twenty-one times, the least of each kept, so that a
// machine busy for a moment weighs on all three alike.
void raceStart(const QString &databasePath)
{
    const QString zarek = QStringLiteral(ZAREK_PROGRAM);
    const QString bareDialog = QStringLiteral(BARE_DIALOG_PROGRAM);
    double program = std::numeric_limits<double>::max();
    double bare = program;
    double word = program;
    double least = program;
    for (int run = 0; run < 21; ++run) {
        program = std::min(program, untilShown(zarek, {QStringLiteral("--probe-start"), QStringLiteral("--database"), databasePath},
                                               QStringLiteral("UserLogin")));
        bare = std::min(bare, untilShown(bareDialog, {}, QStringLiteral("QDialog")));
        word = std::min(word, untilShown(bareDialog, {QStringLiteral("--word")}, QStringLiteral("QDialog")));
        // The floor of any sign-in: the file opened, its users read, a dialog with words shown.
        least = std::min(least, untilShown(bareDialog, {databasePath}, QStringLiteral("QDialog")));
    }
    const QByteArray platform = qEnvironmentVariableIsSet("QT_QPA_PLATFORM") ? qgetenv("QT_QPA_PLATFORM")
                                : qEnvironmentVariableIsSet("DISPLAY")      ? QByteArray("xcb")
                                                                             : QByteArray("default");
    std::printf("  windows on the %s platform\n", platform.constData());
    bench::printRace("start-up to the sign-in shown", program, bare, 1.1, "bare QDialog shown");
    bench::printRace("start-up to the sign-in shown", program, least, 1.1, "bare sign-in shown");
    // The floor under the first race: the fonts any window with words reads, and one word drawn.
    bench::printRace("a bare dialog with one word shown", word, bare, 1.1, "bare QDialog shown");
}

}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int result = bench::runOnEnginesAndCourseCounts(argc, argv, [](const QString &, QSqlDatabase db, int count) {
        const bool onServer = dialectOf(db) == Dialect::PostgreSQL;
        const QString path = onServer ? QStringLiteral("postgresql://%1@%2:%3/%4")
                                            .arg(db.userName(), db.hostName())
                                            .arg(db.port())
                                            .arg(db.databaseName())
                                      : db.databaseName();
        // A firm and its administrator, so the start goes to the sign-in.
        QSqlQuery(db).exec(QStringLiteral("INSERT INTO ZarekCfg (UserName) VALUES ('Транспорт Петров ЕООД')"));
        QSqlQuery(db).exec(QStringLiteral("INSERT INTO Users (Ime, Password, Vid) VALUES ('admin', 'x', 'Администратор')"));
        raceStart(path);
        if (onServer)
            return;
        DatabaseConfig config;
        config.sqlitePath = path;
        for (int run = 0; run < 3; ++run) {
            QElapsedTimer timer;
            timer.start();
            const auto refused = checkDatabaseFile(path);
            const double check = bench::ms(timer);
            timer.restart();
            double prepare = 0;
            {
                const auto second = connectDatabase(config, QStringLiteral("start"));
                const double connect = bench::ms(timer);
                timer.restart();
                const auto state = second ? prepareDatabase(second.value()) : Checked<StartState>(second.message());
                prepare = bench::ms(timer);
                timer.restart();
                const auto damage = checkDatabaseIntegrity(path);
                const double whole = bench::ms(timer);
                std::printf("%d courses: file check (header and schema) %.1f ms, whole connect %.1f ms, migrate and "
                            "decide %.1f ms%s; before sign-in %.1f ms; whole-file check after sign-in (background) "
                            "%.1f ms%s\n",
                            count, check, connect, prepare, refused || !state ? " (refused!)" : "", connect + prepare,
                            whole, damage ? " (damaged!)" : "");
            }
            closeDatabase(QStringLiteral("start"));
        }
    });
    // The demo firm, one transaction.
    for (const int courses : {6000, 20000}) {
        QTemporaryDir dir;
        DatabaseConfig config;
        config.sqlitePath = dir.filePath(QStringLiteral("demo.db"));
        {
            auto db = connectDatabase(config, QStringLiteral("demo"));
            QElapsedTimer timer;
            timer.start();
            DemoOptions options;
            options.courses = courses;
            QSqlDatabase connection = db.value();
            const auto summary = fillDemoDatabase(connection, options);
            std::printf("demo firm of %d courses: %.0f ms%s\n", courses, bench::ms(timer), summary ? "" : " (failed!)");
        }
        closeDatabase(QStringLiteral("demo"));
    }
    return result;
}
