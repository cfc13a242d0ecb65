#pragma once

// A screen or paper raced against the bare statements it runs: each timed on the same connection,
// the best of three runs, and the ratio printed with its goal.

#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QString>
#include <QVariant>
#include <algorithm>
#include <cstdio>
#include <functional>
#include <limits>

namespace zarek::bench {

struct Statement {
    QString sql;
    QVariantList values;
};

// Runs the statements once, reading every value of every row; the milliseconds it took.
inline double runBare(QSqlDatabase db, const QList<Statement> &statements)
{
    QElapsedTimer timer;
    timer.start();
    for (const Statement &statement : statements) {
        QSqlQuery query(db);
        query.setForwardOnly(true);
        query.prepare(statement.sql);
        for (const QVariant &value : statement.values)
            query.addBindValue(value);
        if (!query.exec()) {
            std::fprintf(stderr, "bare statement: %s\n", qPrintable(query.lastError().text()));
            return 0;
        }
        const int columns = query.record().count();
        while (query.next()) {
            for (int c = 0; c < columns; ++c)
                query.value(c);
        }
    }
    return timer.nsecsElapsed() / 1e6;
}

// The least of three runs of a step that returns its own milliseconds.
inline double bestOf3(const std::function<double()> &step)
{
    double best = std::numeric_limits<double>::max();
    for (int run = 0; run < 3; ++run)
        best = std::min(best, step());
    return best;
}

inline double bareOf3(QSqlDatabase db, const QList<Statement> &statements)
{
    return bestOf3([&] { return runBare(db, statements); });
}

// Saves what a screen or paper drew as name.png in the folder ZAREK_BENCH_PICTURES names, if any,
// so the figures can be checked against what was shown.
inline void keepPicture(const QPixmap &picture, const char *name)
{
    const QString folder = qEnvironmentVariable("ZAREK_BENCH_PICTURES");
    if (!folder.isEmpty())
        picture.save(QDir(folder).filePath(QString::fromLatin1(name) + QStringLiteral(".png")));
}

// "what: 12.3 ms, bare query 6.1 ms, 2.02x, goal 2x: NOT met"
inline void printRace(const char *what, double taken, double bare, double goal = 2.0, const char *bareName = "bare query")
{
    const double ratio = bare > 0 ? taken / bare : 0;
    std::printf("  %-44s %8.1f ms, %s %7.1f ms, %5.2fx, goal %gx: %s\n", what, taken, bareName, bare, ratio, goal,
                ratio <= goal ? "met" : "NOT met");
    std::fflush(stdout);
}

}
