#include "archivefixture.h"
#include "data/archive.h"
#include "data/restore.h"
#include "data/yearclose.h"
#include "data/database.h"
#include "data/schema.h"
#include "data/archivecheck.h"
#include "data/archivesupport.h"
#include "core/docnumber.h"
#include "core/money.h"
#include "core/storedvalues.h"
#include "core/textcheck.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QLockFile>
#include <QSqlRecord>
#include <QRandomGenerator>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <atomic>
#include <chrono>
#include <cmath>
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

// The working copy's tables, indexes and their texts are the program's own, whatever the archive held.
bool holdsTheProgramsOwnSchema(const QString &workingCopy)
{
    QList<archiving::SchemaObject> copied;
    QList<archiving::SchemaObject> own;
    {
        PrivateConnection copy(workingCopy);
        PrivateConnection fresh(QStringLiteral(":memory:"));
        QSqlDatabase freshDb = fresh.db();
        if (archiving::readSchemaObjects(copy.db(), copied) || upgradeSchema(freshDb)
            || archiving::readSchemaObjects(freshDb, own))
            return false;
    }
    const auto byName = [](const auto &a, const auto &b) { return a.name < b.name; };
    std::sort(copied.begin(), copied.end(), byName);
    std::sort(own.begin(), own.end(), byName);
    const auto sameText = [](const auto &a, const auto &b) { return a.name == b.name && a.sql == b.sql; };
    return std::equal(copied.begin(), copied.end(), own.begin(), own.end(), sameText);
}

// What read makes of the SQLite file at path, opened read-only on a connection of its own.
template <typename Read>
auto readFile(const QString &path, Read read)
{
    decltype(read(QSqlDatabase())) result{};
    {
        QSqlDatabase file = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("file"));
        file.setDatabaseName(path);
        file.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (file.open())
            result = read(file);
    }
    QSqlDatabase::removeDatabase(QStringLiteral("file"));
    return result;
}

// The rows of a query on the SQLite file at path, each row's values (see normalized()) joined by blanks.
QStringList fileRows(const QString &path, const QString &sql)
{
    return readFile(path, [&sql](QSqlDatabase file) {
        QStringList rows;
        QSqlQuery query(file);
        query.exec(sql);
        while (query.next()) {
            QStringList values;
            for (int i = 0; i < query.record().count(); ++i)
                values << test::normalized(query.value(i));
            rows << values.join(QLatin1Char(' '));
        }
        return rows;
    });
}

// The steps back to the archive of a program before the warehouse lots.
const QStringList olderVersion = {QStringLiteral("DROP TABLE SkladLots"), QStringLiteral("DROP INDEX sklad_open"),
                                  QStringLiteral("DROP INDEX sklad_vidkol_data"), QStringLiteral("DROP INDEX nalich_name"),
                                  QStringLiteral("CREATE INDEX nalich_name ON Nalich (Name)"),
                                  QStringLiteral("DELETE FROM zarek_schema WHERE version = 3")};

bool isPostgres(QSqlDatabase db)
{
    return db.driverName() == QLatin1String("QPSQL");
}

// A trigger that fails the statement on a table (the courses unless told), as a failing disk or a
// killed server would.
bool forceFailureOn(QSqlDatabase db, const QString &event, const QString &when, const QString &table = QStringLiteral("tabl"))
{
    if (!isPostgres(db))
        return execAll(db, {QStringLiteral("CREATE TRIGGER forced_failure BEFORE %1 ON %3 WHEN %2 "
                                          "BEGIN SELECT RAISE(ABORT, 'forced failure'); END")
                               .arg(event, when, table)});
    return execAll(db, {QStringLiteral("CREATE FUNCTION forced_failure() RETURNS trigger AS $$ BEGIN "
                                      "RAISE EXCEPTION 'forced failure'; END $$ LANGUAGE plpgsql"),
                       QStringLiteral("CREATE TRIGGER forced_failure BEFORE %1 ON %3 FOR EACH ROW WHEN (%2) "
                                      "EXECUTE FUNCTION forced_failure()")
                           .arg(event, when, table)});
}

// What the screens would refuse in a database of this program, found by the screens' own rules
// (not the restore's): the first such value as "table id column", or empty.
QString firstValueTheScreensRefuse(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.exec(QStringLiteral("SELECT id, data, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, procent, neto, Fakt, "
                              "NomFakt FROM tabl"));
    while (query.next()) {
        const QString where = QStringLiteral("tabl %1 ").arg(query.value(0).toLongLong());
        if (!QDate::fromString(query.value(1).toString(), Qt::ISODate).isValid())
            return where + QStringLiteral("data");
        for (int i = 2; i <= 5; ++i) {
            if (hasControlCharacter(query.value(i).toString()) || query.value(i).toString().trimmed().size() > (i == 2 ? 12 : 25))
                return where + QString::number(i);
        }
        bool ok = true;
        const double km = query.value(6).toDouble(&ok);
        if (!ok || !(km >= 0 && km <= maxCourseKm))
            return where + QStringLiteral("km");
        const double ton = query.value(7).toDouble(&ok);
        if (!ok || !(ton >= 0 && ton <= maxCourseTonnes))
            return where + QStringLiteral("ton");
        const double rate = query.value(8).toDouble(&ok);
        if (!ok || !(rate >= 0 && rate <= maxCourseRate))
            return where + QStringLiteral("Tarifa");
        for (int i = 9; i <= 11; ++i) {
            const double amount = query.value(i).toDouble(&ok);
            if (!ok || !Money::fromAmount(amount).isValid() || Money::fromAmount(amount).toDouble() != amount)
                return where + QString::number(i);
        }
        const QString number = query.value(13).toString();
        if (number.size() != documentNumberLength || hasControlCharacter(number)
            || query.value(12).toBool() != (number != noDocumentNumber()))
            return where + QStringLiteral("NomFakt");
    }
    for (const SchemaTable &table : schemaTables()) {
        QSqlQuery rows(db);
        rows.setForwardOnly(true);
        rows.exec(QStringLiteral("SELECT * FROM \"%1\"").arg(table.name));
        while (rows.next()) {
            for (int i = 0; i < rows.record().count(); ++i) {
                const QVariant value = rows.value(i);
                if (value.typeId() == QMetaType::QString
                    && (hasControlCharacter(value.toString()) || value.toString().size() > 255))
                    return table.name + QStringLiteral(" text");
                if (value.typeId() == QMetaType::Double && !std::isfinite(value.toDouble()))
                    return table.name + QStringLiteral(" number");
            }
        }
    }
    query.exec(QStringLiteral("SELECT Kurs FROM Evro"));
    while (query.next()) {
        if (!(query.value(0).toDouble() > 0))
            return QStringLiteral("Evro Kurs");
    }
    query.exec(QStringLiteral("SELECT n.Broi, (SELECT TOTAL(s.Ostat) FROM Sklad s WHERE s.Name = n.Name AND s.VidKol = 'P' "
                              "AND s.Lipsa = 0) FROM Nalich n"));
    while (query.next()) {
        if (std::llround(query.value(0).toDouble() * 1000) != std::llround(query.value(1).toDouble() * 1000))
            return QStringLiteral("Nalich Broi");
    }
    return QString();
}

// A dead copy's lock: the lock file a copy of the program leaves, naming a process that is gone.
bool writeDeadLock(const QString &path)
{
    QByteArray content;
    {
        QLockFile probe(path + QStringLiteral(".probe"));
        if (!probe.tryLock(0))
            return false;
        QFile file(path + QStringLiteral(".probe"));
        if (!file.open(QIODevice::ReadOnly))
            return false;
        content = file.readAll();
    }
    const qsizetype end = content.indexOf('\n');
    content = QByteArray("999999999") + content.mid(end);
    return writeBytes(path, content);
}

}

// A folder in memory where the system has one (the safety copies are synced to disk, and a busy
// disk would set the pace), with the archive of a database filled in every table (good) and a
// working folder (work).
#define FUZZ_FOLDER_WITH_A_GOOD_ARCHIVE(database)                                                       \
    const QString memory = QStringLiteral("/dev/shm");                                                 \
    QTemporaryDir dir((QFileInfo(memory).isDir() && QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) \
                      + QStringLiteral("/zarek-fuzz-XXXXXX"));                                           \
    QSqlDatabase db = database;                                                                         \
    QVERIFY(fillEveryTable(db));                                                                        \
    const QString good = dir.filePath(QStringLiteral("good.abd"));                                      \
    QVERIFY(writeArchive(db, good));                                                                    \
    const QString work = dir.filePath(QStringLiteral("work"));                                          \
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("work")))

// A fresh database of the current engine with rows in every table (db), and its archive written
// at path in the folder dir.
#define FILLED_DB_ARCHIVED(scratch, dir, db, path, name) \
    ZAREK_FILLED_DB(scratch, dir, db);                   \
    const QString path = dir.filePath(QStringLiteral(name)); \
    QVERIFY(writeArchive(db, path))

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
        ZAREK_FILLED_DB(scratch, dir, db);
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
        FILLED_DB_ARCHIVED(scratch, dir, db, archive, "a.abd");
        QVERIFY(scratch.exec(QStringLiteral("UPDATE tabl SET Klient = 'Нов', row_version = row_version + 1")));
        QSqlQuery query(db);
        QVERIFY(query.exec(QStringLiteral("SELECT id, row_version FROM tabl ORDER BY id")));
        QList<std::pair<qint64, int>> read;
        while (query.next())
            read.append({query.value(0).toLongLong(), query.value(1).toInt()});
        query.finish();

        QCOMPARE(restoreFrom(db, archive, dir.path()), QString());
        // A write at a version read before finds no row to write over.
        for (const auto &[id, version] : read)
            QCOMPARE(test::countBy(db, QStringLiteral("SELECT COUNT(*) FROM tabl WHERE id = ? AND row_version = ?"), {id, version}),
                     0);
        QVERIFY(insertCourse(db, QDate(2026, 2, 1), QStringLiteral("Нов курс")));
        QCOMPARE(test::rowsText(db, QStringLiteral("SELECT COUNT(DISTINCT id), COUNT(*) FROM tabl")), QStringLiteral("4|4"));
    }

    // An archive taken from PostgreSQL restores into SQLite, and SQLite's archive back into a new
    // PostgreSQL database, every row equal. The data of an archive taken by SQLite (times and dates
    // as text, flags as numbers) reads as that of the PostgreSQL-made archive.
    void anArchiveCrossesEnginesBothWays()
    {
        ZAREK_ONLY_ON("postgresql", "once, from the PostgreSQL row");
        ZAREK_SCRATCH_DB_NAMED(pg, QStringLiteral("postgresql"));
        ZAREK_SCRATCH_DB_NAMED(lite, QStringLiteral("sqlite"));
        ZAREK_SCRATCH_DB_NAMED(pg2, QStringLiteral("postgresql"));
        QTemporaryDir dir;
        QVERIFY(fillEveryTable(pg.db()));
        QVERIFY(fillEveryTable(lite.db()));
        const QStringList original = dumpDatabase(pg.db());
        QVERIFY(writeArchive(pg.db(), dir.filePath(QStringLiteral("from-pg.abd"))));
        QVERIFY(writeArchive(lite.db(), dir.filePath(QStringLiteral("lite.abd"))));
        const QString sql = QStringLiteral("SELECT data, typeof(data), Fakt, typeof(Fakt), TimeMod, km FROM tabl ORDER BY id");
        const QStringList rows = fileRows(dir.filePath(QStringLiteral("from-pg.abd")), sql);
        QCOMPARE(fileRows(dir.filePath(QStringLiteral("lite.abd")), sql), rows);
        QCOMPARE(rows.value(0), QStringLiteral("2025-03-05 text 1 integer 14:30:05.000 0.30000000000000004"));

        QCOMPARE(restoreFrom(lite.db(), dir.filePath(QStringLiteral("from-pg.abd")), dir.path()), QString());
        COMPARE_DUMPS(dumpDatabase(lite.db()), original);
        QVERIFY(writeArchive(lite.db(), dir.filePath(QStringLiteral("from-sqlite.abd"))));
        QCOMPARE(restoreFrom(pg2.db(), dir.filePath(QStringLiteral("from-sqlite.abd")), dir.path()), QString());
        COMPARE_DUMPS(dumpDatabase(pg2.db()), original);
        // The identity goes on past the restored ids.
        QVERIFY(insertCourse(pg2.db(), QDate(2026, 1, 3), QStringLiteral("След зареждането")));
        QCOMPARE(countOf(pg2.db(), QStringLiteral("tabl")), 4);
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
        // The archive altered by a statement:
        QTest::newRow("newer schema") << "INSERT INTO zarek_schema (version) VALUES (999)"
                                      << "Архивът %1 е от по-нова версия на Зарек (схема 999, програмата познава до %2)!";
        QTest::newRow("a table missing") << "DROP TABLE Firms" << "В архива %1 липсват таблици или полета на Зарек!";
        QTest::newRow("no firm") << "DELETE FROM ZarekCfg" << "В архива %1 няма данни за фирмата!";
    }
    void restoreRefusesWhatIsNotAnArchive()
    {
        QFETCH(QString, kind);
        QFETCH(QString, fault);
        FILLED_DB_ARCHIVED(scratch, dir, db, good, "good.abd");
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
        } else if (kind != QLatin1String("missing")) {
            QVERIFY(QFile::copy(good, path));
            QVERIFY(makePlainSqliteFile(path, {kind}));
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

    // A restore that fails halfway through its writes leaves every table as it was.
    void aFailureWhileReplacingLeavesTheData()
    {
        ZAREK_FILLED_DB(scratch, dir, db);
        QVERIFY(insertCourse(db, QDate(2025, 6, 1), QStringLiteral("ПРОВАЛ")));
        QVERIFY(writeArchive(db, dir.filePath(QStringLiteral("a.abd"))));
        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM tabl")));
        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM Firms")));
        QVERIFY(forceFailureOn(db, QStringLiteral("INSERT"), QStringLiteral("NEW.Klient = 'ПРОВАЛ'")));
        const QStringList before = dumpDatabase(db);
        const QString fault = restoreFrom(db, dir.filePath(QStringLiteral("a.abd")), dir.path());
        QVERIFY2(fault.startsWith(QStringLiteral("Данните от архива ")), qPrintable(fault));
        QVERIFY2(fault.contains(QStringLiteral("forced failure")), qPrintable(fault));
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

    void anArchiveNeverReplacesTheLiveDatabase()
    {
        ZAREK_ONLY_ON("sqlite", "a SQLite file only");
        ZAREK_SCRATCH_DB_AS(scratch, db);
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

    // An archive is a file read alone: in the rollback journal, with no log or shared memory of
    // the live database's WAL beside it, so it opens read-only from any medium.
    void anArchiveIsAFileOfItsOwnWithoutALog()
    {
        FILLED_DB_ARCHIVED(scratch, dir, db, path, "a.abd");
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("a.abd")});
        QCOMPARE(bytesOf(path).mid(18, 2), QByteArray("\x01\x01"));  // read and write versions 1: rollback journal
        QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
        QCOMPARE(fileRows(path, QStringLiteral("SELECT COUNT(*) FROM tabl")), QStringList{QStringLiteral("3")});
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("a.abd")});
        QVERIFY(QFile::remove(path));

        // A place that cannot be written keeps an earlier file of that name and leaves nothing behind.
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
        QTest::newRow("none: this year") << QList<QDate>{} << 2026;
        QTest::newRow("the old year, a few new courses typed") << QList<QDate>{{2025, 3, 1}, {2025, 12, 30}, {2026, 1, 5}} << 2025;
        QTest::newRow("closing in December") << QList<QDate>{{2026, 2, 1}, {2026, 12, 1}} << 2026;
        QTest::newRow("a tie: the later year") << QList<QDate>{{2024, 5, 1}, {2025, 5, 1}} << 2025;
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
        ZAREK_FILLED_DB(scratch, dir, db);
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

        // A second close of the same year keeps the first archive unless the user confirmed, and
        // even then keeps it under another name.
        const QByteArray first = bytesOf(dir.filePath(QStringLiteral("2025.arh")));
        QVERIFY(insertCourse(db, QDate(2025, 12, 31), QStringLiteral("Късен курс")));

        const auto refused = closeYear(db, dir.path(), 2025, false, moment);
        QVERIFY(!refused);
        QCOMPARE(refused.message().text,
                 QStringLiteral("Архивът на 2025 година вече е записан: %1\nТой не е заменен. Курсовете не са изтрити.")
                     .arg(QDir::toNativeSeparators(dir.filePath(QStringLiteral("2025.arh")))));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 4);
        QCOMPARE(bytesOf(dir.filePath(QStringLiteral("2025.arh"))), first);

        const auto replaced = closeYear(db, dir.path(), 2025, true, moment);
        QVERIFY(replaced);
        QCOMPARE(QFileInfo(replaced.value().previous).fileName(), QStringLiteral("2025 предишен 2026-01-05 09-15-30.arh"));
        QCOMPARE(bytesOf(replaced.value().previous), first);
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 0);
        QCOMPARE(restoreFrom(db, replaced.value().archive, dir.path()), QString());
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 4);
    }

    // A year close whose archive cannot be written deletes nothing; a failure while the courses are
    // deleted deletes none of them.
    void aForcedFailureDuringTheDeletionLeavesEveryCourse()
    {
        ZAREK_FILLED_DB(scratch, dir, db);
        QVERIFY(writeBytes(dir.filePath(QStringLiteral("file")), QByteArray("x")));
        const auto unwritten = closeYear(db, dir.filePath(QStringLiteral("file/folder")), 2025, false, moment);
        QVERIFY(!unwritten);
        QVERIFY2(unwritten.message().text.endsWith(QStringLiteral("Курсовете не са изтрити.")), qPrintable(unwritten.message().text));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 3);

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

    // A course another workstation saves while the year closes is either in the year's archive or
    // left standing: the close waits for that save, then archives and deletes it with the rest.
    void aCourseSavedDuringTheCloseIsArchivedNotLost()
    {
        ZAREK_FILLED_DB(scratch, dir, db);
        std::atomic<int> stage = 0;
        const DatabaseConfig config = scratch.config();
        std::thread other([&stage, config] {
            {
                QSqlDatabase writer = openDatabase(config, QStringLiteral("other_workstation"));
                writer.transaction();
                insertCourse(writer, QDate(2025, 12, 31), QStringLiteral("Записан при приключването"));
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

    // An archive is data, never code: one whose schema holds a trigger, a view, or a table, column
    // or index the program does not make is refused before anything runs, whatever its version,
    // and the trigger's text never reaches the message.
    void anArchiveWithCodeIsRefusedAndRunsNothing_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QString>("kind");
        const QString evil = QStringLiteral("BEGIN UPDATE tabl SET bruto = bruto * 100; "
                                            "INSERT INTO Users (Ime, Password, Vid) VALUES ('натрапник', '', 'A'); "
                                            "SELECT RAISE(ABORT, 'ТЕКСТ НА ТРИГЕРА'); END");
        QTest::newRow("a trigger") << QStringList{QStringLiteral("CREATE TRIGGER t AFTER UPDATE ON Sklad ") + evil}
                                   << QStringLiteral("тригер");
        // The older version's upgrade trims the article names (an UPDATE of Sklad): the trigger
        // would fire then, in the archive's copy or anywhere its schema went.
        QTest::newRow("a trigger in an older version")
            << olderVersion + QStringList{QStringLiteral("UPDATE Sklad SET Name = 'Масло 15W40  '"),
                                          QStringLiteral("UPDATE Nalich SET Name = 'Масло 15W40  '"),
                                          QStringLiteral("CREATE TRIGGER t AFTER UPDATE ON Sklad ") + evil}
            << QStringLiteral("тригер");
        QTest::newRow("a trigger on insert") << QStringList{QStringLiteral("CREATE TRIGGER t AFTER INSERT ON tabl ") + evil}
                                             << QStringLiteral("тригер");
        QTest::newRow("a view") << QStringList{QStringLiteral("CREATE VIEW v AS SELECT * FROM tabl")} << QStringLiteral("изглед");
        QTest::newRow("a table for a view")
            << QStringList{QStringLiteral("ALTER TABLE Firms RENAME TO firms_old"),
                           QStringLiteral("CREATE VIEW Firms AS SELECT * FROM firms_old")}
            << QStringLiteral("изглед");
        QTest::newRow("an index of its own") << QStringList{QStringLiteral("CREATE INDEX tabl_extra ON tabl (km)")}
                                             << QStringLiteral("индекс");
        QTest::newRow("an index of ours, altered")
            << QStringList{QStringLiteral("DROP INDEX tabl_data"), QStringLiteral("CREATE INDEX tabl_data ON tabl (data, km)")}
            << QStringLiteral("индекс");
        QTest::newRow("a column of its own") << QStringList{QStringLiteral("ALTER TABLE tabl ADD COLUMN extra TEXT")}
                                             << QStringLiteral("таблица");
        QTest::newRow("a computed column")
            << QStringList{QStringLiteral("ALTER TABLE shof ADD COLUMN extra TEXT GENERATED ALWAYS AS (upper(ime)) VIRTUAL")}
            << QStringLiteral("таблица");
        QTest::newRow("a table of its own") << QStringList{QStringLiteral("CREATE TABLE extra (x TEXT)")}
                                            << QStringLiteral("таблица");
    }
    void anArchiveWithCodeIsRefusedAndRunsNothing()
    {
        QFETCH(QStringList, statements);
        QFETCH(QString, kind);
        FILLED_DB_ARCHIVED(scratch, dir, db, path, "code.abd");
        QVERIFY(makePlainSqliteFile(path, statements));
        QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("Само в базата")));
        const QStringList before = dumpDatabase(db);

        PreparedArchive prepared;
        const auto refusal = prepared.prepare(path, dir.path());
        QVERIFY(refusal);
        const QString first = refusal->text.section(QLatin1Char('\n'), 0, 0);
        QVERIFY2(first.startsWith(QStringLiteral("Архивът %1 не е такъв, какъвто Зарек го записва: в него има ")
                                      .arg(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()))),
                 qPrintable(first));
        QVERIFY2(first.contains(kind), qPrintable(first));
        QVERIFY(!refusal->text.contains(QStringLiteral("ТЕКСТ НА ТРИГЕРА")));
        QVERIFY(!refusal->text.contains(QStringLiteral("натрапник")));
        COMPARE_DUMPS(dumpDatabase(db), before);
        QCOMPARE(countOf(db, QStringLiteral("Users")), 1);
        QVERIFY(QDir(dir.path()).entryList({QStringLiteral(".*part*")}, QDir::Files | QDir::Hidden).isEmpty());
    }

    // An archive of an older program, or one that lacks an index of ours, is taken: its rows alone go
    // into the program's own schema of its version, whose steps (here the warehouse lots, which also
    // trim article names) then bring it up to date, in its working copy only.
    void anOlderArchiveIsBroughtUpToDate_data()
    {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<int>("lots");
        QTest::newRow("older version") << olderVersion + QStringList{QStringLiteral("UPDATE Nalich SET Name = 'Масло 15W40  '")} << 0;
        QTest::newRow("lacking an index") << QStringList{QStringLiteral("DROP INDEX tabl_tovar"), QStringLiteral("DROP INDEX klienti_ime")}
                                          << 1;
    }
    void anOlderArchiveIsBroughtUpToDate()
    {
        QFETCH(QStringList, statements);
        QFETCH(int, lots);
        FILLED_DB_ARCHIVED(scratch, dir, db, path, "old.abd");
        QVERIFY(makePlainSqliteFile(path, statements));
        const QByteArray old = bytesOf(path);
        PreparedArchive prepared;
        const auto refusal = prepared.prepare(path, dir.path());
        QVERIFY2(!refusal, qPrintable(refusal ? refusal->text : QString()));
        QVERIFY(holdsTheProgramsOwnSchema(prepared.workingCopy()));
        QVERIFY(restoreArchive(db, prepared, dir.path(), moment));
        QCOMPARE(test::rowsText(db, QStringLiteral("SELECT (SELECT COUNT(*) FROM tabl), (SELECT COUNT(*) FROM SkladLots), Name FROM Nalich")),
                 QStringLiteral("3|%1|Масло 15W40").arg(lots));
        QCOMPARE(bytesOf(path), old);
    }

    // Each value is held to the rules of the screen that writes it; a damaged one is refused by
    // its table, row and field, the data untouched, on both engines alike.
    void aDamagedValueIsRefusedByTableAndRow_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("where");
        const auto row = [](const char *name, const char *statement, const char *where) {
            QTest::newRow(name) << QString::fromUtf8(statement) << QString::fromUtf8(where);
        };
        // A course's field set to value: "UPDATE tabl SET field = value WHERE id = id", refused
        // as "Курсове, ред № id, поле field: what".
        const auto course = [](const char *name, int id, const char *field, const char *value, const char *what) {
            const QString column = QString::fromUtf8(field);
            QTest::newRow(name) << QStringLiteral("UPDATE tabl SET %1 = %2 WHERE id = %3")
                                       .arg(column, QString::fromUtf8(value)).arg(id)
                                << QStringLiteral("Курсове, ред № %1, поле %2: %3").arg(id).arg(column, QString::fromUtf8(what));
        };
        course("control character in an invoice number", 1, "NomFakt", "'00000' || char(7) || '0042'",
               "съдържа непозволен знак");
        course("short invoice number", 1, "NomFakt", "'000000042'", "не е номер от 10 знака");
        course("control character in a client", 2, "Klient", "'Д' || char(27) || 'Аргос'", "съдържа непозволен знак");
        course("text in bruto", 2, "bruto", "'много'", "не е число");
        course("a date abc", 3, "data", "'abc'", "не е дата");
        course("a day that is not", 3, "data", "'2025-02-30'", "не е дата");
        course("the 31st of April", 3, "data", "'2025-04-31'", "не е дата");
        course("the year 0", 3, "data", "'0000-03-05'", "не е дата");
        course("a NUL inside a client", 2, "Klient", "'Д' || char(0) || 'Аргос'", "съдържа непозволен знак");
        course("a control character after a NUL", 2, "Tovar", "'Пясък' || char(0) || char(7)",
               "съдържа непозволен знак");
        course("a time cut by a NUL", 1, "TimeMod", "'14:30:05' || char(0) || '1'", "не е час");
        course("a stray byte for a character", 2, "Marsh", "CAST(x'804141' AS TEXT)", "съдържа непозволен знак");
        row("a client of 13 characters of two units each", "UPDATE tabl SET Klient = printf('%.*c', 13, '😀') WHERE id = 2",
            "Курсове, ред № 2, поле Klient: текстът е по-дълъг от 25 знака");
        row("a 10 MB text", "UPDATE shof SET ime = printf('%.*c', 10000000, 'я') WHERE id = 1",
            "Шофьори, ред № 1, поле ime: текстът е по-дълъг от 255 знака");
        course("a client longer than the box", 2, "Klient", "'Бетон Перник Акционерно Дружество'",
               "текстът е по-дълъг от 25 знака");
        row("invoiced with no number", "UPDATE tabl SET Fakt = 1, NomFakt = '0000000000' WHERE id = 2",
            "Курсове, ред № 2, поле NomFakt: фактуриран курс без номер на фактура");
        row("a number not invoiced", "UPDATE tabl SET Fakt = 0 WHERE id = 1",
            "Курсове, ред № 1, поле NomFakt: номер на фактура на нефактуриран курс");
        course("a flag of 2", 2, "plat", "2", "не е \"да\" или \"не\"");
        row("stock out of step", "UPDATE Nalich SET Broi = 9",
            "Наличност, ред № 1, поле Broi: наличността не отговаря на остатъците на доставките");
        row("a receipt left over", "UPDATE Sklad SET Ostat = 12 WHERE id = 1",
            "Складови документи, ред № 1, поле Ostat: остатъкът е по-голям от доставеното");
        row("zero conversion rate", "INSERT INTO Evro (Nomer, Data, Kurs) VALUES (1, '2026-01-01', 0)",
            "Преминаване към евро, ред № 1, поле Kurs: извън разрешените граници");
        course("bruto 1e300", 2, "bruto", "1e300", "извън разрешените граници");
        course("infinite tonnes", 2, "ton", "1e999", "извън разрешените граници");
        course("no km", 2, "km", "NULL", "няма стойност");
        course("km -500", 3, "km", "-500", "извън разрешените граници");
        course("km 40000", 3, "km", "40000", "извън разрешените граници");
        course("neto beyond cents", 2, "neto", "85.361953125", "сумата не е в цели стотинки");
        row("a quantity in ten-thousandths", "UPDATE Sklad SET Ostat = 7.5001 WHERE id = 1",
            "Складови документи, ред № 1, поле Ostat: количеството е с повече от три знака след запетаята");
        course("a time of 25 hours", 1, "TimeMod", "'25:00:00'", "не е час");
        row("a blob for a name", "UPDATE Firms SET SrName = x'00ff' WHERE id = 1",
            "Изпращачи и получатели, ред № 1, поле SrName: не е текст");
        row("a waybill number too long", "UPDATE RowdList SET ListID = '00000000007' WHERE id = 1",
            "Пътни листове, ред № 1, поле ListID: не е номер от 10 знака");
        row("an unknown movement", "UPDATE Sklad SET VidKol = 'X' WHERE id = 1",
            "Складови документи, ред № 1, поле VidKol: не е доставка или изписване");
    }
    void aDamagedValueIsRefusedByTableAndRow()
    {
        QFETCH(QString, statement);
        QFETCH(QString, where);
        FILLED_DB_ARCHIVED(scratch, dir, db, path, "damaged.abd");
        // The undamaged archive is taken: the fault is the one value.
        {
            PreparedArchive prepared;
            const auto refusal = prepared.prepare(path, dir.path());
            QVERIFY2(!refusal, qPrintable(refusal ? refusal->text : QString()));
        }
        QVERIFY(makePlainSqliteFile(path, {statement}));
        QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("Само в базата")));
        const QStringList before = dumpDatabase(db);
        QCOMPARE(restoreFrom(db, path, dir.path()),
                 QStringLiteral("В архива %1 има недопустима стойност: %2!")
                     .arg(QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath()), where));
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

    // A restore that fails after the courses were loaded leaves the id counters past every id that
    // stays: the next course saved gets a new id, on PostgreSQL too, where a counter set inside the
    // transaction is not rolled back with it.
    void aFailedRestoreLeavesTheIdCountersRight()
    {
        FILLED_DB_ARCHIVED(scratch, dir, db, path, "few.abd");
        for (int day = 1; day <= 20; ++day)
            QVERIFY(insertCourse(db, QDate(2025, 7, day), QStringLiteral("Юли")));
        QVERIFY(forceFailureOn(db, QStringLiteral("INSERT"), QStringLiteral("1 = 1"), QStringLiteral("Firms")));
        const QString fault = restoreFrom(db, path, dir.path());
        QVERIFY2(fault.contains(QStringLiteral("forced failure")), qPrintable(fault));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 23);
        QVERIFY(insertCourse(db, QDate(2025, 8, 1), QStringLiteral("След неуспешното зареждане")));
        QVERIFY(insertCourse(db, QDate(2025, 8, 2), QStringLiteral("И още един")));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 25);
        QVERIFY(scratch.exec(isPostgres(db) ? QStringLiteral("DROP TRIGGER forced_failure ON Firms")
                                            : QStringLiteral("DROP TRIGGER forced_failure")));
        // A restore that succeeds takes the counters past its own ids too.
        QCOMPARE(restoreFrom(db, path, dir.path()), QString());
        QVERIFY(insertCourse(db, QDate(2025, 8, 3), QStringLiteral("След зареждането")));
        QCOMPARE(countOf(db, QStringLiteral("tabl")), 4);
    }

    // The work files of a copy killed while restoring, archiving or closing a year (hidden
    // ".name.part-…" files with journals and locks) are removed at the next start; those of a
    // copy still at work, and every other file, stay.
    void deadWorkFilesAreRemovedAndLiveOnesKept()
    {
        ZAREK_ONLY_ON("sqlite", "files only; once");
        QTemporaryDir dir;
        const QDir folder(dir.path());
        const auto make = [&](const QString &name) { return writeBytes(folder.filePath(name), "x"); };
        // Killed while making the restore's working copy: no lock left, a journal beside it.
        QVERIFY(make(QStringLiteral(".zarek-restore.db.part-0a1b2c3d4e5f")));
        QVERIFY(make(QStringLiteral(".zarek-restore.db.part-0a1b2c3d4e5f-journal")));
        // Killed while writing the year's archive: its lock names a process that is gone.
        QVERIFY(make(QStringLiteral(".2025.arh.part-111111111111")));
        QVERIFY(writeDeadLock(folder.filePath(QStringLiteral(".2025.arh.part-111111111111.lock"))));
        // A journal whose file is gone.
        QVERIFY(make(QStringLiteral(".a.abd.part-222222222222-journal")));
        // A copy at work right now, and files that are no work files.
        archiving::WorkFile live(folder.filePath(QStringLiteral("Преди зареждане.abd")));
        QVERIFY(writeBytes(live.path(), "live"));
        QVERIFY(make(QStringLiteral("2024.arh")));
        QVERIFY(make(QStringLiteral(".hidden")));
        QVERIFY(make(QStringLiteral("a.abd.part-333333333333")));

        QCOMPARE(archiving::removeDeadWorkFiles(dir.path()), 2);
        QStringList left = folder.entryList(QDir::Files | QDir::Hidden);
        left.sort();
        QStringList expected{QStringLiteral(".hidden"), QStringLiteral("2024.arh"), QStringLiteral("a.abd.part-333333333333"),
                             QFileInfo(live.path()).fileName(), QFileInfo(live.path()).fileName() + QStringLiteral(".lock")};
        expected.sort();
        QCOMPARE(left, expected);
    }

    // Mutated archives, made the same on every run from a fixed seed: values of every table set
    // to hostile ones, a row at a time. None ends the process; none that holds a value the screens
    // would refuse is taken; every one taken loads on this engine as it was checked (the verdict
    // is the archive's, so both engines give the same).
    void mutatedArchivesGetTheScreensVerdictOnBothEngines()
    {
        ZAREK_SCRATCH_DB(scratch);
        FUZZ_FOLDER_WITH_A_GOOD_ARCHIVE(scratch.db());
        const QByteArray archive = bytesOf(good);
        const QStringList values = {
            QStringLiteral("NULL"), QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("-500"),
            QStringLiteral("40000"), QStringLiteral("12.5"), QStringLiteral("1e300"), QStringLiteral("-1e999"),
            QStringLiteral("85.361953125"), QStringLiteral("0.001"), QStringLiteral("7.5"), QStringLiteral("'abc'"),
            QStringLiteral("'2025-02-30'"), QStringLiteral("'2025-03-05'"), QStringLiteral("'14:30:05.000'"),
            QStringLiteral("'0000000000'"), QStringLiteral("'0000000042'"), QStringLiteral("'00000' || char(7) || '0042'"),
            QStringLiteral("'Д7Аргос'"), QStringLiteral("printf('%.*c', 300, 'я')"), QStringLiteral("x'00ff'"),
            QStringLiteral("'P'"), QStringLiteral("'R'"), QStringLiteral("' '"), QStringLiteral("''")};
        QRandomGenerator random(20261125);
        const int rounds = qEnvironmentVariableIntValue("ZAREK_FUZZ_VALUES") > 0 ? qEnvironmentVariableIntValue("ZAREK_FUZZ_VALUES")
                           : engine == QLatin1String("sqlite")                   ? 800
                                                                                 : 200;
        const int loads = engine == QLatin1String("sqlite") ? 10 : 15;
        int refused = 0;
        int taken = 0;
        int loaded = 0;
        const QString mutated = dir.filePath(QStringLiteral("mutated.abd"));
        const QList<SchemaTable> &tables = schemaTables();
        for (int round = 0; round < rounds; ++round) {
            QVERIFY(writeBytes(mutated, archive));
            QStringList statements;
            for (int i = 0, n = 1 + random.bounded(2); i < n; ++i) {
                const SchemaTable &table = tables.at(random.bounded(int(tables.size())));
                const QString column = table.columns.at(1 + random.bounded(int(table.columns.size()) - 1));
                statements << QStringLiteral("UPDATE OR IGNORE \"%1\" SET \"%2\" = %3 WHERE id = (SELECT MIN(id) FROM \"%1\")")
                                  .arg(table.name, column, values.at(random.bounded(int(values.size()))));
            }
            if (!makePlainSqliteFile(mutated, statements)) {
                ++refused;  // a NOT NULL or unique column refused the mutation itself
                continue;
            }
            PreparedArchive prepared;
            if (prepared.prepare(mutated, work)) {
                ++refused;
                QVERIFY(QDir(work).entryList(QDir::Files | QDir::Hidden).isEmpty());
                continue;
            }
            ++taken;
            {
                PrivateConnection copy(prepared.workingCopy(), archiving::readOnlyOptions());
                const QString refusedByScreens = firstValueTheScreensRefuse(copy.db());
                QVERIFY2(refusedByScreens.isEmpty(), qPrintable(statements.join(QStringLiteral("; ")) + QStringLiteral(" -> ")
                                                                + refusedByScreens));
            }
            if (loaded >= loads)
                continue;
            ++loaded;
            const auto outcome = restoreArchive(db, prepared, work, moment);
            QVERIFY2(outcome, qPrintable(statements.join(QStringLiteral("; ")) + QStringLiteral(" -> ")
                                         + (outcome ? QString() : outcome.message().text)));
            QVERIFY(QFile::remove(outcome.value().safetyCopy));
            QVERIFY(firstValueTheScreensRefuse(db).isEmpty());
        }
        qInfo("%d mutated archives: %d refused, %d taken (%d of them loaded)", rounds, refused, taken, loaded);
        QVERIFY(refused > 0 && taken > 0);
    }

    // Damaged archives (bytes flipped, files cut short, pages overwritten) never crash the restore:
    // each is refused with the data untouched, or, where SQLite finds nothing wrong, loaded whole.
    void damagedArchivesNeverCrashAndNeverHalfLoad()
    {
        ZAREK_ONLY_ON("sqlite", "the archive file is SQLite whatever the engine; fuzzed once");
        ZAREK_SCRATCH_DB(scratch);
        FUZZ_FOLDER_WITH_A_GOOD_ARCHIVE(scratch.db());
        QVERIFY(insertCourse(db, QDate(2026, 1, 2), QStringLiteral("Само в базата")));
        const QStringList current = dumpDatabase(db);
        const QByteArray archive = bytesOf(good);

        QRandomGenerator random(20260105);
        const int rounds = qEnvironmentVariableIntValue("ZAREK_FUZZ_ARCHIVES") > 0
                               ? qEnvironmentVariableIntValue("ZAREK_FUZZ_ARCHIVES")
                               : 1200;
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
            {
                PrivateConnection copy(prepared.workingCopy(), archiving::readOnlyOptions());
                QCOMPARE(firstValueTheScreensRefuse(copy.db()), QString());
            }
            // The damaged bytes are only ever read by the check and SQLite's copy of them; what is
            // loaded is that copy. Loaded whole the first times; after that, checked and dropped.
            if (loaded >= 25) {
                ++loaded;
                continue;
            }
            // What SQLite reads from the damaged file is what must stand after a restore, or nothing.
            const QStringList expected = readFile(prepared.workingCopy(), [](QSqlDatabase file) { return dumpDatabase(file); });
            QVERIFY(!expected.isEmpty());
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
    // The restore and the archive reach the engine's own handle beneath Qt's driver, for COPY on a
    // server and the page copy on SQLite: without it a restore on a server quietly falls back to
    // rows sent one batch at a time.
    void theEnginesOwnHandleIsReached()
    {
        ZAREK_SCRATCH_DB(scratch);
        const bool onServer = engine == QLatin1String("postgresql");
        QCOMPARE(archiving::libpqConnection(scratch.db()) != nullptr, onServer);
        QCOMPARE(archiving::sqliteHandle(scratch.db()) != nullptr, !onServer);
    }
};

QTEST_GUILESS_MAIN(ArchiveTest)
#include "tst_archive.moc"
