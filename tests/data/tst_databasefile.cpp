#include "data/archive.h"
#include "data/database.h"
#include "data/sqlitefile.h"
#include "data/schema.h"
#include "data/transaction.h"
#include "testdatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <sys/stat.h>

using namespace zarek;
using zarek::test::execAll;
using zarek::test::makePlainSqliteFile;

namespace {

struct FileState {
    QByteArray bytes;
    QFile::Permissions mode;
    bool operator==(const FileState &) const = default;
};

FileState stateOf(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return {file.readAll(), QFile::permissions(path)};
}

DatabaseConfig sqliteAt(const QString &path)
{
    DatabaseConfig config;
    config.sqlitePath = path;
    return config;
}

// A Zarek database at path, closed again (its WAL folded into the file).
bool makeZarekFile(const QString &path, const QStringList &statements = {})
{
    bool ok = false;
    {
        const auto db = connectDatabase(sqliteAt(path), QStringLiteral("make"));
        ok = db && execAll(db.value(), statements);
    }
    closeDatabase(QStringLiteral("make"));
    return ok;
}

// Overwrites length bytes of a closed database file from offset on with a pattern, as a failing
// disk would.
bool damageBytes(const QString &path, qint64 offset, int length)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) || file.size() < offset + length)
        return false;
    file.seek(offset);
    return file.write(QByteArray(length, char(0xA5))) == length;
}

QStringList courseRows(int count)
{
    QStringList rows{"BEGIN"};
    for (int i = 0; i < count; ++i)
        rows << QStringLiteral("INSERT INTO tabl (data, kola, Klient, Marsh, km, ton) VALUES "
                               "('2006-03-05', 'СА 1234 ВК', 'Клиент %1', 'София - Перник', 25, 10)").arg(i);
    rows << "COMMIT";
    return rows;
}

}

class DatabaseFileTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }
    void initTestCase_data() { test::addEngineRows(); }

    void oddFilesAreRefusedAndLeftUntouched_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("fault");
        QTest::newRow("another program's database") << "foreign" << "чужди таблици";
        QTest::newRow("zero bytes") << "empty" << "е празен";
        QTest::newRow("read-only file") << "read-only" << "е само за четене";
        QTest::newRow("newer schema") << "newer" << "по-нова версия на Зарек (схема 999";
        QTest::newRow("damaged schema") << "damaged" << "е повредена";
        QTest::newRow("file cut short") << "short" << "е повредена";
        QTest::newRow("a program, not a database") << "program" << "не е база данни на Зарек";
        QTest::newRow("a database with no tables") << "bare" << "не е база данни на Зарек";
    }
    void oddFilesAreRefusedAndLeftUntouched()
    {
        ZAREK_ONLY_ON("sqlite", "files are SQLite's");
        QFETCH(QString, kind);
        QFETCH(QString, fault);
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("firm.db"));
        if (kind == "foreign") {
            QVERIFY(makePlainSqliteFile(path, {"CREATE TABLE invoices (id INTEGER, total REAL)",
                                           "INSERT INTO invoices VALUES (1, 20.5)"}));
        } else if (kind == "empty") {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
        } else if (kind == "read-only") {
            QVERIFY(makeZarekFile(path));
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::ReadGroup | QFile::ReadOther));
        } else if (kind == "newer") {
            QVERIFY(makeZarekFile(path, {"INSERT INTO zarek_schema (version) VALUES (999)"}));
        } else if (kind == "damaged") {
            QVERIFY(makeZarekFile(path, courseRows(3000)));
            QVERIFY(damageBytes(path, 100, 4096 - 100));  // the schema page past the file's header
        } else if (kind == "short") {
            QVERIFY(makeZarekFile(path, courseRows(3000)));
            QFile file(path);
            QVERIFY(file.resize(file.size() / 2));
        } else if (kind == "program") {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray("\x7f" "ELF\x02\x01\x01", 7) + QByteArray(8000, '\x11'));
            file.close();
            QVERIFY(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup
                                                    | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther));
        } else if (kind == "bare") {
            QVERIFY(makePlainSqliteFile(path, {"PRAGMA user_version = 7"}));
        }
        const FileState before = stateOf(path);

        {
            const auto db = connectDatabase(sqliteAt(path), QStringLiteral("odd"));
            QVERIFY(!db);
            QVERIFY2(db.message().text.section(QLatin1Char('\n'), 0, 0).contains(fault), qPrintable(db.message().text));
            QCOMPARE(db.message().title, QStringLiteral("ГРЕШКА при отваряне на базата данни!"));
            QCOMPARE(db.message().text.count(QLatin1Char('\n')), 1);
            if (kind == "damaged" || kind == "short")
                QVERIFY(db.message().text.contains(QStringLiteral("Зареждане")));
        }
        closeDatabase(QStringLiteral("odd"));
        QVERIFY(stateOf(path) == before);
    }

    // The start reads the header and the schema, not every page: a page of rows damaged is let
    // through there and found by the whole-file check that runs after sign-in and before an archive.
    void damageAmongTheRowsIsFoundByTheWholeCheck()
    {
        ZAREK_ONLY_ON("sqlite", "files are SQLite's");
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("firm.db"));
        QVERIFY(makeZarekFile(path, courseRows(3000)));
        QVERIFY(!checkDatabaseIntegrity(path));
        const int pages = int(QFileInfo(path).size() / 4096);
        // Rows written last, far from any table's first page.
        QVERIFY(damageBytes(path, qint64(pages - 8) * 4096, 6 * 4096));
        QVERIFY(!checkDatabaseFile(path));
        const auto damage = checkDatabaseIntegrity(path);
        QVERIFY(damage);
        QVERIFY2(damage->text.contains(QStringLiteral("е повредена")), qPrintable(damage->text));
        {
            const auto db = connectDatabase(sqliteAt(path), QStringLiteral("rows"));
            QVERIFY2(db, qPrintable(db ? QString() : db.message().text));
            const auto refused = writeArchive(db.value(), dir.filePath(QStringLiteral("copy.abd")));
            QVERIFY(!refused);
            QCOMPARE(refused.message().title, archiveErrorTitle());
            QVERIFY(refused.message().text.contains(QStringLiteral("е повредена")));
            QVERIFY(!QFileInfo::exists(dir.filePath(QStringLiteral("copy.abd"))));
        }
        closeDatabase(QStringLiteral("rows"));
    }

    // A new file is private in folders made private; a folder that was there keeps its mode.
    void aNewFileIsPrivateInFoldersMadePrivate()
    {
        ZAREK_ONLY_ON("sqlite", "files are SQLite's");
        QTemporaryDir dir;
        const auto open = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadUser | QFile::WriteUser
                          | QFile::ExeUser | QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther;
        QVERIFY(QFile::setPermissions(dir.path(), open));
        const QString path = dir.filePath(QStringLiteral("a/b/firm.db"));
        const mode_t old = umask(0);  // the widest umask: nothing may depend on it
        const bool made = connectDatabase(sqliteAt(path), QStringLiteral("new")).ok();
        umask(old);
        QVERIFY(made);
        closeDatabase(QStringLiteral("new"));
        const auto privateFolder = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadUser
                                   | QFile::WriteUser | QFile::ExeUser;
        QCOMPARE(QFile::permissions(dir.filePath(QStringLiteral("a"))), privateFolder);
        QCOMPARE(QFile::permissions(dir.filePath(QStringLiteral("a/b"))), privateFolder);
        QCOMPARE(QFile::permissions(path), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
        QCOMPARE(QDir(dir.filePath(QStringLiteral("a/b"))).entryList(QDir::Files | QDir::Hidden).filter(".new-"),
                 QStringList());
        QCOMPARE(QFile::permissions(dir.path()), open);
    }

    void theProgramsOwnFolderIsKeptPrivate()
    {
        ZAREK_ONLY_ON("sqlite", "files are SQLite's");
        const DatabaseConfig config = DatabaseConfig::defaultSqlite();
        const QString folder = QFileInfo(config.sqlitePath).absolutePath();
        QVERIFY2(folder.contains(QStringLiteral("qttest")), qPrintable(folder));  // never the user's own
        QDir(folder).removeRecursively();
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther
                                                  | QFile::ExeOther));
        {
            const auto db = connectDatabase(config, QStringLiteral("own"));
            QVERIFY(db);
        }
        closeDatabase(QStringLiteral("own"));
        QCOMPARE(QFile::permissions(folder) & (QFile::ReadOther | QFile::ExeOther | QFile::ReadGroup),
                 QFile::Permissions());
        QDir(folder).removeRecursively();
    }

    void twoCopiesMakingOneNewFileShareIt()
    {
        ZAREK_ONLY_ON("sqlite", "files are SQLite's");
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("firm.db"));
        QVERIFY(makeZarekFile(path, {"INSERT INTO Firms (SrName) VALUES ('first')"}));
        // A second creation finds the file there and leaves it be.
        QVERIFY(makeZarekFile(path));
        {
            const auto db = connectDatabase(sqliteAt(path), QStringLiteral("again"));
            QVERIFY(db);
            QCOMPARE(test::countBy(db.value(), QStringLiteral("SELECT COUNT(*) FROM Firms")), 1);
        }
        closeDatabase(QStringLiteral("again"));
    }

    // Another program's database, or one of a newer schema (named with both versions), is refused.
    void anotherProgramsDatabaseOrANewerSchemaIsRefused_data()
    {
        QTest::addColumn<QString>("statement");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QStringList>("naming");
        const auto text = [](const UserMessage &m) { return m.title + QLatin1Char('|') + m.text; };
        QTest::newRow("another program's") << "DROP TABLE zarek_schema" << text(foreignDatabaseMessage()) << QStringList();
        QTest::newRow("newer schema") << "INSERT INTO zarek_schema (version) VALUES (999)"
                                      << text(newerSchemaMessage(999, latestSchemaVersion()))
                                      << QStringList{"999", QString::number(latestSchemaVersion())};
    }
    void anotherProgramsDatabaseOrANewerSchemaIsRefused()
    {
        QFETCH(QString, statement);
        QFETCH(QStringList, naming);
        ZAREK_SCRATCH_DB_AS(scratch, db);
        QVERIFY(scratch.exec(statement));
        const auto refused = upgradeSchema(db);
        QVERIFY(refused);
        QTEST(refused->title + QLatin1Char('|') + refused->text, "message");
        for (const QString &number : naming)
            QVERIFY2(refused->text.contains(number), qPrintable(number));
    }

    void aCopyWaitingForTheLockIsToldNotShownSql()
    {
        ZAREK_ONLY_ON("sqlite", "the PostgreSQL wait is 15 s");
        test::ScratchDatabase scratch(QStringLiteral("sqlite"));
        QVERIFY(scratch.isReady());
        QSqlDatabase other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("impatient"));
        other.setDatabaseName(scratch.config().sqlitePath);
        other.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=200"));
        QVERIFY(other.open());
        {
            Transaction holder(scratch.db(), Transaction::Lock::Writer);
            QVERIFY(holder.isActive());
            const auto refused = upgradeSchema(other);
            QVERIFY(refused);
            QCOMPARE(*refused, databaseBusyMessage());
        }
        QVERIFY(!upgradeSchema(other));  // free again once the holder is done
        other.close();
        other = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("impatient"));
    }
};

QTEST_GUILESS_MAIN(DatabaseFileTest)
#include "tst_databasefile.moc"
