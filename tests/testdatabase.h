#pragma once

#include "data/databaseconfig.h"

#include <QSqlDatabase>
#include <QString>
#include <QtTest>

#include <memory>

namespace zarek::test {

// Adds the global "engine" column with one row per database engine. Call it from
// initTestCase_data(); every test function then runs once on each engine.
void addEngineRows();

// The first value of the first row of a query with bound values, or "<the error>" (which no
// expected value equals) when it fails or gives no row.
QVariant scalar(QSqlDatabase db, const QString &sql, const QVariantList &values = {});

// The first value of the first row as a whole number (a count), or -1, which no count equals, when
// the query fails or gives no row.
int countBy(QSqlDatabase db, const QString &sql, const QVariantList &values = {});

// Every row of a query, its values joined by '|' and the rows by ' ', the same on both engines:
// numbers as numbers (31.25, 0.125, 10), truth as 1 or 0, dates as 2026-03-05. "<the error>" when
// it fails: one comparison checks several columns and rows at once.
QString rowsText(QSqlDatabase db, const QString &sql, const QVariantList &values = {});

// The engine of the current global data row: "sqlite" or "postgresql".
inline QString currentEngine()
{
    return *static_cast<QString *>(QTest::qGlobalData("engine", qMetaTypeId<QString>()));
}

// Runs one statement with bound values; false, with the statement and its error in the log, when
// it fails.
bool execBound(QSqlDatabase db, const QString &sql, const QVariantList &values = {});

// Inserts one row into table: the columns named in one text ("data, kod, kola"), the values
// bound in that order. False, with the error in the log, when it fails.
bool insertRow(QSqlDatabase db, const QString &table, const QString &columns, const QVariantList &values);

// The columns of a course in tabl, in the order the tests' course fixtures give their values.
inline const QString courseColumns = QStringLiteral("data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, "
                                                    "Fakt, NomFakt, plat, Doc");

// Runs each statement in turn; false, with the failing statement and its error in the log, at
// the first that fails.
bool execAll(QSqlDatabase db, const QStringList &statements);

// The lines of a spreadsheet (CSV) file the program wrote: the UTF-8 byte-order mark it begins with
// left off, split at CRLF. One line "<…>" that no expected line equals when it cannot be read or
// lacks the mark.
QStringList csvLines(const QString &path);

// A plain SQLite file at path made with statements (no schema of ours), closed again.
bool makePlainSqliteFile(const QString &path, const QStringList &statements);

// A fresh, migrated database of its own for one test, removed afterwards. Never the user's.
class ScratchDatabase {
public:
    // Migrated and connected; or, with migrate false, a database that is new: an empty PostgreSQL
    // database, or a SQLite path in an empty folder, with no connection yet (see config()).
    explicit ScratchDatabase(const QString &engine, bool migrate = true);
    ~ScratchDatabase();
    ScratchDatabase(const ScratchDatabase &) = delete;
    ScratchDatabase &operator=(const ScratchDatabase &) = delete;

    bool isReady() const { return m_ready; }
    QString skipReason() const { return m_skipReason; }
    QSqlDatabase db() const;
    const DatabaseConfig &config() const { return m_config; }

    // Another connection to the same database, as a second workstation would hold.
    QSqlDatabase openSecondConnection();

    // Runs SQL that must succeed (test fixtures); fails the test otherwise.
    bool exec(const QString &sql);

private:
    DatabaseConfig m_config;
    QString m_connection;
    QString m_secondConnection;
    QString m_pgDatabase;
    QString m_tempDir;
    bool m_ready = false;
    QString m_skipReason;
};

}

// Opens a fresh database of the engine of the current global data row, or skips with the reason.
#define ZAREK_SCRATCH_DB(var)                                 \
    QFETCH_GLOBAL(QString, engine);                           \
    zarek::test::ScratchDatabase var(engine);                 \
    if (!var.isReady())                                       \
        QSKIP(qPrintable(var.skipReason()));

// The same, with its connection under the name given.
#define ZAREK_SCRATCH_DB_AS(var, connection)                  \
    ZAREK_SCRATCH_DB(var);                                    \
    QSqlDatabase connection = var.db()

// A further fresh database of the same engine, for tests that compare two.
#define ZAREK_SCRATCH_DB_NAMED(var, engineName)               \
    zarek::test::ScratchDatabase var(engineName);             \
    if (!var.isReady())                                       \
        QSKIP(qPrintable(var.skipReason()));

// In init(): a fresh database of the engine of the current global data row into holder (a
// std::unique_ptr<ScratchDatabase>), or the test skips with the reason.
#define ZAREK_SCRATCH_DB_INTO(holder)                                      \
    QFETCH_GLOBAL(QString, engine);                                        \
    holder = std::make_unique<zarek::test::ScratchDatabase>(engine);       \
    if (!holder->isReady())                                                \
        QSKIP(qPrintable(holder->skipReason()));

// The rest of the test on one engine only (a SQLite file, or work done once for both); the other
// engine's row skips with the reason.
#define ZAREK_ONLY_ON(engineName, reason)                                  \
    if (zarek::test::currentEngine() != QLatin1String(engineName))         \
        QSKIP(reason);

// The folder ZAREK_SCREENSHOT_DIR names, for pictures of the screens and papers a person looks at;
// without it the test skips.
#define ZAREK_SCREENSHOT_DIR(dir)                                          \
    const QString dir = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR");      \
    if (dir.isEmpty())                                                     \
        QSKIP("set ZAREK_SCREENSHOT_DIR to save pictures");
