// The checks every start makes before the sign-in: the read-only look at the file's header and
// schema, the connection, and the migration and "is it new?" under the write lock; the whole-file
// check that follows the sign-in in the background, for comparison; and the demo firm as one
// transaction.
#include "benchdata.h"

#include "app/demodata.h"
#include "app/firststart.h"
#include "data/sqlitefile.h"

#include <QCoreApplication>

using namespace zarek;

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int result = bench::runOnCourseCounts(argc, argv, [](QSqlDatabase db, int count) {
        const QString path = db.databaseName();
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
