#include "archivefixture.h"
#include "data/archive.h"
#include "data/restore.h"
#include "data/yearclose.h"
#include "data/database.h"
#include "data/schema.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <thread>

using namespace zarek;
using zarek::test::countOf;
using zarek::test::execAll;
using zarek::test::makePlainSqliteFile;
using zarek::test::dumpDatabase;
using zarek::test::fillEveryTable;
using zarek::test::insertCourse;

namespace {

const QDateTime moment(QDate(2026, 1, 5), QTime(9, 15, 30));

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll();
}

bool writeBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size();
}

// A restore from start to end: the refusal's first line, or empty when it was done.
QString restoreFrom(QSqlDatabase db, const QString &archive, const QString &folder, QString *safetyCopy = nullptr)
{
    PreparedArchive prepared;
    if (auto refusal = prepared.prepare(archive, folder))
        return refusal->text.section(QLatin1Char('\n'), 0, 0);
    const auto outcome = restoreArchive(db, prepared, folder, moment);
    if (!outcome)
        return outcome.message().text.section(QLatin1Char('\n'), 0, 0);
    if (safetyCopy)
        *safetyCopy = outcome.value().safetyCopy;
    return QString();
}

// Statements on a closed archive file.
bool alterArchive(const QString &path, const QStringList &statements)
{
    return makePlainSqliteFile(path, statements);
}

bool isPostgres(QSqlDatabase db)
{
    return db.driverName() == QLatin1String("QPSQL");
}

// A trigger that fails the statement on the courses, as a failing disk or a killed server would.
bool forceFailureOn(QSqlDatabase db, const QString &event, const QString &when)
{
    if (!isPostgres(db))
        return execAll(db, {QStringLiteral("CREATE TRIGGER forced_failure BEFORE %1 ON tabl WHEN %2 "
                                          "BEGIN SELECT RAISE(ABORT, 'forced failure'); END")
                               .arg(event, when)});
    return execAll(db, {QStringLiteral("CREATE FUNCTION forced_failure() RETURNS trigger AS $$ BEGIN "
                                      "RAISE EXCEPTION 'forced failure'; END $$ LANGUAGE plpgsql"),
                       QStringLiteral("CREATE TRIGGER forced_failure BEFORE %1 ON tabl FOR EACH ROW WHEN (%2) "
                                      "EXECUTE FUNCTION forced_failure()")
                           .arg(event, when)});
}

}

class ArchiveTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void theSchemaTablesAreTheMigratedOnes()
    {
        QStringList names;
        for (const SchemaTable &table : schemaTables())
            names << table.name;
        for (const QString &table : mainTables())
            QVERIFY2(names.contains(table), qPrintable(table));
        QVERIFY(names.contains(QStringLiteral("SkladLots")));
        QVERIFY(!names.contains(QStringLiteral("zarek_schema")));
        QCOMPARE(schemaTables().first().columns.mid(0, 2), (QStringList{QStringLiteral("id"), QStringLiteral("row_version")}));
    }

    // Every table's rows come back as they were archived, on either engine.
    void archiveThenRestoreGivesBackEveryRow()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        const QStringList archived = dumpDatabase(db);
        const QString archive = dir.filePath(QStringLiteral("копие.abd"));

        const auto counts = writeArchive(db, archive);
        QVERIFY2(counts, qPrintable(counts ? QString() : counts.message().text));
        QCOMPARE(counts.value().value(QStringLiteral("tabl")), 3);
        QCOMPARE(counts.value().value(QStringLiteral("SkladLots")), 1);
        QCOMPARE(QFile::permissions(archive) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());

        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM shof")));
        QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("След архива")));
        const QStringList changed = dumpDatabase(db);

        QString safetyCopy;
        QCOMPARE(restoreFrom(db, archive, dir.path(), &safetyCopy), QString());
        COMPARE_DUMPS(dumpDatabase(db), archived);

        // The safety copy holds the data the restore replaced, and restores in turn.
        QCOMPARE(QFileInfo(safetyCopy).fileName(), QStringLiteral("Преди зареждане 2026-01-05 09-15-30.abd"));
        QCOMPARE(restoreFrom(db, safetyCopy, dir.path()), QString());
        COMPARE_DUMPS(dumpDatabase(db), changed);
        QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("zarek-restore.db"))));
    }

    // New rows after a restore take ids past every restored one, and a row read before the restore
    // cannot be written over the restored one.
    void restoredRowsKeepTheirIdsAndOutrankEarlierReads()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        QVERIFY(writeArchive(db, dir.filePath(QStringLiteral("a.abd"))));
        QVERIFY(scratch.exec(QStringLiteral("UPDATE tabl SET Klient = 'Нов', row_version = row_version + 1")));
        QSqlQuery query(db);
        QVERIFY(query.exec(QStringLiteral("SELECT id, row_version FROM tabl ORDER BY id")));
        QList<std::pair<qint64, int>> read;
        while (query.next())
            read.append({query.value(0).toLongLong(), query.value(1).toInt()});
        query.finish();

        QCOMPARE(restoreFrom(db, dir.filePath(QStringLiteral("a.abd")), dir.path()), QString());
        for (const auto &[id, version] : read) {
            QVERIFY(query.prepare(QStringLiteral("UPDATE tabl SET Klient = 'Стар' WHERE id = ? AND row_version = ?")));
            query.addBindValue(id);
            query.addBindValue(version);
            QVERIFY(query.exec());
            QCOMPARE(query.numRowsAffected(), 0);
        }
        QVERIFY(insertCourse(db, QDate(2026, 2, 1), QStringLiteral("Нов курс")));
        QVERIFY(query.exec(QStringLiteral("SELECT COUNT(DISTINCT id), COUNT(*) FROM tabl")) && query.next());
        QCOMPARE(query.value(0).toInt(), 4);
        QCOMPARE(query.value(1).toInt(), 4);
    }

    // An archive taken from PostgreSQL restores into SQLite, and SQLite's archive back into a new
    // PostgreSQL database, every row equal.
    void anArchiveCrossesEnginesBothWays()
    {
        QFETCH_GLOBAL(QString, engine);
        if (engine != QLatin1String("postgresql"))
            QSKIP("once, from the PostgreSQL row");
        ZAREK_SCRATCH_DB_NAMED(pg, QStringLiteral("postgresql"));
        ZAREK_SCRATCH_DB_NAMED(lite, QStringLiteral("sqlite"));
        ZAREK_SCRATCH_DB_NAMED(pg2, QStringLiteral("postgresql"));
        QTemporaryDir dir;
        QVERIFY(fillEveryTable(pg.db()));
        const QStringList original = dumpDatabase(pg.db());

        QVERIFY(writeArchive(pg.db(), dir.filePath(QStringLiteral("from-pg.abd"))));
        QCOMPARE(restoreFrom(lite.db(), dir.filePath(QStringLiteral("from-pg.abd")), dir.path()), QString());
        COMPARE_DUMPS(dumpDatabase(lite.db()), original);

        QVERIFY(writeArchive(lite.db(), dir.filePath(QStringLiteral("from-sqlite.abd"))));
        QCOMPARE(restoreFrom(pg2.db(), dir.filePath(QStringLiteral("from-sqlite.abd")), dir.path()), QString());
        COMPARE_DUMPS(dumpDatabase(pg2.db()), original);
        // The identity goes on past the restored ids.
        QVERIFY(insertCourse(pg2.db(), QDate(2026, 1, 3), QStringLiteral("След зареждането")));
        QCOMPARE(countOf(pg2.db(), QStringLiteral("tabl")), 4);
    }

    // The data of an archive taken by SQLite (times and dates as text, flags as numbers) reads on
    // PostgreSQL as dates, times and flags; the same rows as the PostgreSQL-made archive.
    void anArchiveIsTheSameFileWhicheverEngineMadeIt()
    {
        QFETCH_GLOBAL(QString, engine);
        if (engine != QLatin1String("postgresql"))
            QSKIP("once, from the PostgreSQL row");
        ZAREK_SCRATCH_DB_NAMED(pg, QStringLiteral("postgresql"));
        ZAREK_SCRATCH_DB_NAMED(lite, QStringLiteral("sqlite"));
        QTemporaryDir dir;
        QVERIFY(fillEveryTable(pg.db()));
        QVERIFY(fillEveryTable(lite.db()));
        QVERIFY(writeArchive(pg.db(), dir.filePath(QStringLiteral("pg.abd"))));
        QVERIFY(writeArchive(lite.db(), dir.filePath(QStringLiteral("lite.abd"))));
        QStringList rows[2];
        int i = 0;
        for (const char *name : {"pg.abd", "lite.abd"}) {
            {
                QSqlDatabase file = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("read"));
                file.setDatabaseName(dir.filePath(QString::fromLatin1(name)));
                QVERIFY(file.open());
                QSqlQuery query(file);
                QVERIFY(query.exec(QStringLiteral("SELECT data, typeof(data), Fakt, typeof(Fakt), TimeMod, km FROM tabl ORDER BY id")));
                while (query.next())
                    rows[i] << QStringLiteral("%1 %2 %3 %4 %5 %6")
                                   .arg(query.value(0).toString(), query.value(1).toString(), query.value(2).toString(),
                                        query.value(3).toString(), query.value(4).toString(),
                                        QString::number(query.value(5).toDouble(), 'g', 17));
            }
            QSqlDatabase::removeDatabase(QStringLiteral("read"));
            ++i;
        }
        QCOMPARE(rows[0], rows[1]);
        QCOMPARE(rows[0].first(), QStringLiteral("2025-03-05 text 1 integer 14:30:05.000 0.30000000000000004"));
    }

    // Files that are not a usable archive are refused before anything is written, and the data
    // stays as it was.
    void restoreRefusesWhatIsNotAnArchive_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("fault");
        QTest::newRow("missing") << "missing" << "Файлът %1 не съществува!";
        QTest::newRow("folder") << "folder" << "%1 не е файл!";
        QTest::newRow("empty file") << "empty" << "Файлът %1 не е архив на Зарек!";
        QTest::newRow("text file") << "text" << "Файлът %1 не е архив на Зарек!";
        QTest::newRow("truncated archive") << "truncated" << "Архивът %1 е повреден!";
        QTest::newRow("damaged pages") << "damaged" << "Архивът %1 е повреден!";
        QTest::newRow("foreign SQLite file") << "foreign" << "Файлът %1 е база данни на друга програма, не архив на Зарек!";
        QTest::newRow("empty SQLite file") << "bare" << "Файлът %1 не е архив на Зарек!";
        QTest::newRow("newer schema") << "newer" << "Архивът %1 е от по-нова версия на Зарек (схема 999, програмата познава до %2)!";
        QTest::newRow("a table missing") << "incomplete" << "В архива %1 липсват таблици или полета на Зарек!";
        QTest::newRow("no firm") << "nofirm" << "В архива %1 няма данни за фирмата!";
    }
    void restoreRefusesWhatIsNotAnArchive()
    {
        QFETCH(QString, kind);
        QFETCH(QString, fault);
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        const QString good = dir.filePath(QStringLiteral("good.abd"));
        QVERIFY(writeArchive(db, good));
        QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("Само в базата")));
        const QStringList before = dumpDatabase(db);

        QString path = dir.filePath(QStringLiteral("chosen.abd"));
        const QByteArray archive = bytesOf(good);
        if (kind == QLatin1String("folder")) {
            QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("chosen.abd")));
        } else if (kind == QLatin1String("empty")) {
            QVERIFY(writeBytes(path, QByteArray()));
        } else if (kind == QLatin1String("text")) {
            QVERIFY(writeBytes(path, QByteArray("Курсове за март\nСА 1234 ВК;Перник\n").repeated(300)));
        } else if (kind == QLatin1String("truncated")) {
            QVERIFY(writeBytes(path, archive.left(archive.size() / 2)));
        } else if (kind == QLatin1String("damaged")) {
            QByteArray bytes = archive;
            for (qsizetype i = 4096 * 2; i < 4096 * 4; ++i)
                bytes[i] = char(0x5a);
            QVERIFY(writeBytes(path, bytes));
        } else if (kind == QLatin1String("foreign")) {
            QVERIFY(makePlainSqliteFile(path, {QStringLiteral("CREATE TABLE photos (id INTEGER, name TEXT)"),
                                          QStringLiteral("INSERT INTO photos VALUES (1, 'море.jpg')")}));
        } else if (kind == QLatin1String("bare")) {
            QVERIFY(makePlainSqliteFile(path, {QStringLiteral("PRAGMA user_version = 1")}));
        } else if (kind == QLatin1String("newer")) {
            QVERIFY(QFile::copy(good, path));
            QVERIFY(alterArchive(path, {QStringLiteral("INSERT INTO zarek_schema (version) VALUES (999)")}));
        } else if (kind == QLatin1String("incomplete")) {
            QVERIFY(QFile::copy(good, path));
            QVERIFY(alterArchive(path, {QStringLiteral("DROP TABLE Firms")}));
        } else if (kind == QLatin1String("nofirm")) {
            QVERIFY(QFile::copy(good, path));
            QVERIFY(alterArchive(path, {QStringLiteral("DELETE FROM ZarekCfg")}));
        }
        const QByteArray chosen = QFileInfo(path).isFile() ? bytesOf(path) : QByteArray();

        const QString expected = fault.contains(QLatin1String("%2"))
                                     ? fault.arg(QDir::toNativeSeparators(path)).arg(latestSchemaVersion())
                                     : fault.arg(QDir::toNativeSeparators(path));
        QCOMPARE(restoreFrom(db, path, dir.path()), expected);
        COMPARE_DUMPS(dumpDatabase(db), before);
        if (QFileInfo(path).isFile())
            QCOMPARE(bytesOf(path), chosen);  // the chosen file only read
        // No safety copy and no working copy: nothing was begun.
        QStringList left = QDir(dir.path()).entryList(QDir::Files | QDir::Hidden);
        left.removeAll(QStringLiteral("good.abd"));
        left.removeAll(QStringLiteral("chosen.abd"));
        QCOMPARE(left, QStringList());
    }

    // An archive of an older program takes the steps it lacks (here the warehouse lots, which also
    // trim article names), in its working copy only.
    void anOlderArchiveIsBroughtUpToDate()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        const QString path = dir.filePath(QStringLiteral("old.abd"));
        QVERIFY(writeArchive(db, path));
        QVERIFY(alterArchive(path, {QStringLiteral("DROP TABLE SkladLots"), QStringLiteral("DROP INDEX sklad_open"),
                                    QStringLiteral("DROP INDEX sklad_vidkol_data"), QStringLiteral("DROP INDEX nalich_name"),
                                    QStringLiteral("CREATE INDEX nalich_name ON Nalich (Name)"),
                                    QStringLiteral("UPDATE Nalich SET Name = 'Масло 15W40  '"),
                                    QStringLiteral("DELETE FROM zarek_schema WHERE version = 3")}));
        const QByteArray old = bytesOf(path);
        QCOMPARE(restoreFrom(db, path, dir.path()), QString());
        QCOMPARE(countOf(db, QStringLiteral("SkladLots")), 0);
        QSqlQuery query(db);
        QVERIFY(query.exec(QStringLiteral("SELECT Name FROM Nalich")) && query.next());
        QCOMPARE(query.value(0).toString(), QStringLiteral("Масло 15W40"));
        QCOMPARE(bytesOf(path), old);
    }

    // A restore that fails halfway through its writes leaves every table as it was.
    void aFailureWhileReplacingLeavesTheData()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        QVERIFY(insertCourse(db, QDate(2025, 6, 1), QStringLiteral("ПРОВАЛ")));
        QVERIFY(writeArchive(db, dir.filePath(QStringLiteral("a.abd"))));
        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM tabl")));
        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM Firms")));
        QVERIFY(forceFailureOn(db, QStringLiteral("INSERT"),
                               isPostgres(db) ? QStringLiteral("NEW.Klient = 'ПРОВАЛ'") : QStringLiteral("NEW.Klient = 'ПРОВАЛ'")));
        const QStringList before = dumpDatabase(db);
        const QString fault = restoreFrom(db, dir.filePath(QStringLiteral("a.abd")), dir.path());
        QVERIFY2(fault.startsWith(QStringLiteral("Данните от архива ")), qPrintable(fault));
        QVERIFY2(fault.contains(QStringLiteral("forced failure")), qPrintable(fault));
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

    void anArchiveNeverReplacesTheLiveDatabase()
    {
        ZAREK_SCRATCH_DB(scratch);
        if (engine != QLatin1String("sqlite"))
            QSKIP("a SQLite file only");
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        const QStringList before = dumpDatabase(db);
        for (const QString &path : {scratch.config().sqlitePath, scratch.config().sqlitePath + QStringLiteral("-wal")}) {
            const auto refused = writeArchive(db, path);
            QVERIFY(!refused);
            QCOMPARE(refused.message().text.section(QLatin1Char('\n'), 0, 0),
                     QStringLiteral("Файлът %1 е текущата база данни!").arg(QDir::toNativeSeparators(path)));
        }
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

    // A place that cannot be written keeps an earlier file of that name and leaves nothing behind.
    void anArchiveThatCannotBeWrittenLeavesNothing()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        QVERIFY(writeBytes(dir.filePath(QStringLiteral("not-a-folder")), QByteArray("x")));
        const auto refused = writeArchive(db, dir.filePath(QStringLiteral("not-a-folder/a.abd")));
        QVERIFY(!refused);
        QCOMPARE(refused.message().title, QStringLiteral("ГРЕШКА при запис на данни!"));

        // The archive is checked before it takes the place of the earlier file: a file of that
        // name that cannot be replaced (a folder) stays, with no work file beside it.
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("taken.abd/inside")));
        QVERIFY(!writeArchive(db, dir.filePath(QStringLiteral("taken.abd"))));
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("taken.abd/inside"))).isDir());
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("not-a-folder")});
    }

    void closingYearIsTheYearOfMostCourses_data()
    {
        QTest::addColumn<QList<QDate>>("courses");
        QTest::addColumn<int>("year");
        const QDate today(2026, 1, 10);
        QTest::newRow("none: this year") << QList<QDate>{} << 2026;
        QTest::newRow("the old year, a few new courses typed") << QList<QDate>{{2025, 3, 1}, {2025, 12, 30}, {2026, 1, 5}} << 2025;
        QTest::newRow("closing in December") << QList<QDate>{{2026, 2, 1}, {2026, 12, 1}} << 2026;
        QTest::newRow("a tie: the later year") << QList<QDate>{{2024, 5, 1}, {2025, 5, 1}} << 2025;
        Q_UNUSED(today);
    }
    void closingYearIsTheYearOfMostCourses()
    {
        QFETCH(QList<QDate>, courses);
        QFETCH(int, year);
        ZAREK_SCRATCH_DB(scratch);
        for (const QDate &date : courses)
            QVERIFY(insertCourse(scratch.db(), date, QStringLiteral("Клиент")));
        QCOMPARE(closingYear(scratch.db(), QDate(2026, 1, 10)), year);
    }

    // The year close archives the whole database, then empties the courses alone.
    void yearCloseArchivesThenDeletesOnlyTheCourses()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        const QStringList before = dumpDatabase(db);
        const auto closed = closeYear(db, dir.path(), 2025, false, moment);
        QVERIFY2(closed, qPrintable(closed ? QString() : closed.message().text));
        QCOMPARE(closed.value().archive, dir.filePath(QStringLiteral("2025.arh")));
        QCOMPARE(closed.value().previous, QString());
        QCOMPARE(closed.value().deletedCourses, 3);
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 0);
        QStringList rest = before;
        rest.erase(std::remove_if(rest.begin(), rest.end(), [](const QString &row) { return row.startsWith(QStringLiteral("tabl:")); }),
                   rest.end());
        COMPARE_DUMPS(dumpDatabase(db), rest);

        // Everything closed is in the year's archive.
        QCOMPARE(restoreFrom(db, closed.value().archive, dir.path()), QString());
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

    // A second close of the same year keeps the first archive unless the user confirmed, and even
    // then keeps it under another name.
    void yearCloseTwiceKeepsTheFirstArchive()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        QVERIFY(closeYear(db, dir.path(), 2025, false, moment));
        const QByteArray first = bytesOf(dir.filePath(QStringLiteral("2025.arh")));
        QVERIFY(insertCourse(db, QDate(2025, 12, 31), QStringLiteral("Късен курс")));

        const auto refused = closeYear(db, dir.path(), 2025, false, moment);
        QVERIFY(!refused);
        QCOMPARE(refused.message().text,
                 QStringLiteral("Архивът на 2025 година вече е записан: %1\nТой не е заменен. Курсовете не са изтрити.")
                     .arg(QDir::toNativeSeparators(dir.filePath(QStringLiteral("2025.arh")))));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 1);
        QCOMPARE(bytesOf(dir.filePath(QStringLiteral("2025.arh"))), first);

        const auto replaced = closeYear(db, dir.path(), 2025, true, moment);
        QVERIFY(replaced);
        QCOMPARE(QFileInfo(replaced.value().previous).fileName(), QStringLiteral("2025 предишен 2026-01-05 09-15-30.arh"));
        QCOMPARE(bytesOf(replaced.value().previous), first);
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 0);
        QCOMPARE(restoreFrom(db, replaced.value().archive, dir.path()), QString());
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 1);
    }

    // A failure while the courses are deleted deletes none of them.
    void aForcedFailureDuringTheDeletionLeavesEveryCourse()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        QSqlQuery last(db);
        QVERIFY(last.exec(QStringLiteral("SELECT MAX(id) FROM tabl")) && last.next());
        QVERIFY(forceFailureOn(db, QStringLiteral("DELETE"), QStringLiteral("OLD.id = %1").arg(last.value(0).toLongLong())));
        const QStringList before = dumpDatabase(db);
        const auto failed = closeYear(db, dir.path(), 2025, false, moment);
        QVERIFY(!failed);
        QVERIFY2(failed.message().text.startsWith(QStringLiteral("Курсовете не могат да бъдат изтрити: ")),
                 qPrintable(failed.message().text));
        QVERIFY(failed.message().text.contains(QStringLiteral("forced failure")));
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

    // A year close whose archive cannot be written deletes nothing.
    void aYearCloseWithoutItsArchiveDeletesNothing()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        QVERIFY(writeBytes(dir.filePath(QStringLiteral("file")), QByteArray("x")));
        const auto failed = closeYear(db, dir.filePath(QStringLiteral("file/folder")), 2025, false, moment);
        QVERIFY(!failed);
        QVERIFY2(failed.message().text.endsWith(QStringLiteral("Курсовете не са изтрити.")), qPrintable(failed.message().text));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 3);
    }

    // A course another workstation saves while the year closes is either in the year's archive or
    // left standing: the close waits for that save, then archives and deletes it with the rest.
    void aCourseSavedDuringTheCloseIsArchivedNotLost()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        std::atomic<int> stage = 0;
        const DatabaseConfig config = scratch.config();
        std::thread other([&stage, config] {
            {
                QSqlDatabase writer = openDatabase(config, QStringLiteral("other_workstation"));
                writer.transaction();
                insertCourse(writer, QDate(2025, 12, 31), QStringLiteral("Записан по време на приключването"));
                stage = 1;
                std::this_thread::sleep_for(std::chrono::milliseconds(400));
                writer.commit();
            }
            closeDatabase(QStringLiteral("other_workstation"));
            stage = 2;
        });
        while (stage == 0)
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        const auto closed = closeYear(db, dir.path(), 2025, false, moment);
        other.join();
        QVERIFY2(closed, qPrintable(closed ? QString() : closed.message().text));
        QCOMPARE(closed.value().deletedCourses, 4);
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 0);
        QCOMPARE(restoreFrom(db, closed.value().archive, dir.path()), QString());
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 4);
    }

    // Damaged archives (bytes flipped, files cut short, pages overwritten) never crash the restore:
    // each is refused with the data untouched, or, where SQLite finds nothing wrong, loaded whole.
    void damagedArchivesNeverCrashAndNeverHalfLoad()
    {
        ZAREK_SCRATCH_DB(scratch);
        if (engine != QLatin1String("sqlite"))
            QSKIP("the archive file is SQLite whatever the engine; fuzzed once");
        // In memory where the system has it: the safety copies are synced to disk, and a busy disk
        // would set the pace.
        const QString memory = QStringLiteral("/dev/shm");
        QTemporaryDir dir(QFileInfo(memory).isDir() && QFileInfo(memory).isWritable()
                              ? memory + QStringLiteral("/zarek-fuzz-XXXXXX")
                              : QDir::tempPath() + QStringLiteral("/zarek-fuzz-XXXXXX"));
        QSqlDatabase db = scratch.db();
        QVERIFY(fillEveryTable(db));
        const QString good = dir.filePath(QStringLiteral("good.abd"));
        QVERIFY(writeArchive(db, good));
        QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("Само в базата")));
        const QStringList current = dumpDatabase(db);
        const QByteArray archive = bytesOf(good);
        const QString work = dir.filePath(QStringLiteral("work"));
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("work")));

        QRandomGenerator random(20260105);
        const int rounds = qEnvironmentVariableIntValue("ZAREK_FUZZ_ARCHIVES") > 0
                               ? qEnvironmentVariableIntValue("ZAREK_FUZZ_ARCHIVES")
                               : 2000;
        int refused = 0;
        int loaded = 0;
        const QString damaged = dir.filePath(QStringLiteral("damaged.abd"));
        for (int round = 0; round < rounds; ++round) {
            QByteArray bytes = archive;
            switch (round % 4) {
            case 0:  // a few bytes flipped anywhere
                for (int i = 0, n = 1 + random.bounded(8); i < n; ++i)
                    bytes[random.bounded(int(bytes.size()))] ^= char(1 + random.bounded(255));
                break;
            case 1:  // cut short
                bytes.truncate(random.bounded(int(bytes.size())));
                break;
            case 2:  // the header and the first page's b-tree, where SQLite looks first
                for (int i = 0, n = 1 + random.bounded(4); i < n; ++i)
                    bytes[random.bounded(120)] ^= char(1 + random.bounded(255));
                break;
            default: {  // a page header elsewhere, and a byte of its cells
                const int page = 1 + random.bounded(int(bytes.size() / 4096) - 1);
                bytes[page * 4096 + random.bounded(12)] ^= char(1 + random.bounded(255));
                bytes[page * 4096 + random.bounded(4096)] ^= char(1 + random.bounded(255));
            }
            }
            QVERIFY(writeBytes(damaged, bytes));
            PreparedArchive prepared;
            if (prepared.prepare(damaged, work)) {
                ++refused;
                QVERIFY(QDir(work).entryList(QDir::Files | QDir::Hidden).isEmpty());
                continue;
            }
            // The damaged bytes are only ever read by the check and SQLite's copy of them; what is
            // loaded is that copy. Loaded whole the first times; after that, checked and dropped.
            if (loaded >= 25) {
                ++loaded;
                continue;
            }
            // What SQLite reads from the damaged file is what must stand after a restore, or nothing.
            const QString copy = prepared.workingCopy();
            QStringList expected;
            {
                QSqlDatabase file = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("expected"));
                file.setDatabaseName(copy);
                file.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
                QVERIFY(file.open());
                expected = dumpDatabase(file);
                file.close();
            }
            QSqlDatabase::removeDatabase(QStringLiteral("expected"));
            const auto outcome = restoreArchive(db, prepared, work, moment);
            const QStringList now = dumpDatabase(db);
            if (outcome) {
                ++loaded;
                QCOMPARE(now, expected);
                QVERIFY(QFile::remove(outcome.value().safetyCopy));
                QCOMPARE(restoreFrom(db, good, work), QString());
                for (const QString &left : QDir(work).entryList({QStringLiteral("Преди*")}, QDir::Files))
                    QFile::remove(QDir(work).filePath(left));
                QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("Само в базата")));
            } else {
                ++refused;
                QCOMPARE(now, current);
            }
            QCOMPARE(dumpDatabase(db).size(), current.size());
        }
        qInfo("%d damaged archives: %d refused, %d passed the checks (up to 25 of them loaded)", rounds, refused, loaded);
        QVERIFY(refused > rounds / 2);
    }
};

QTEST_GUILESS_MAIN(ArchiveTest)
#include "tst_archive.moc"
