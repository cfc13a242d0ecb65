#include "data/scratchdatabase.h"
#include "data/scratchtables.h"
#include "queryrows.h"
#include "testdatabase.h"

#include <QLockFile>
#include <QProcess>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QtTest>

using namespace zarek;

namespace {

QStringList tablesOf(QSqlDatabase db)
{
    return test::rows(db, QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"));
}

QStringList columnsOf(QSqlDatabase db, const QString &table)
{
    return test::rows(db, QStringLiteral("SELECT name FROM pragma_table_info('%1') ORDER BY cid").arg(table));
}

// A process id that certainly ran and has ended.
qint64 deadProcessId()
{
    QProcess process;
    process.start(QStringLiteral("true"), {});
    process.waitForFinished();
    return process.processId() ? process.processId() : 999999;
}

}

// A scratch database in a folder of its own, the table named made anew.
#define SCRATCH_WITH(table)                                             \
    QTemporaryDir folder;                                               \
    ScratchDatabase scratch(folder.path());                             \
    QVERIFY(!scratch.RebuildScratchTable(QStringLiteral(table)))

class ScratchDatabaseTest : public QObject {
    Q_OBJECT
private slots:
    void everyTableIsCreatedByName_data()
    {
        QTest::addColumn<QString>("table");
        QTest::addColumn<QStringList>("columns");
        QTest::newRow("TempKlients") << "TempKlients"
                                     << QStringList{"Data", "Marsh", "VidTovar", "Kola", "KM", "Ton", "Tarifa", "Suma"};
        QTest::newRow("TempNal") << "TempNal" << QStringList{"Red", "Name", "Cena", "Kol", "Suma"};
        QTest::newRow("TempRowdList") << "TempRowdList"
                                      << QStringList{"Red", "NomData", "KolaID", "Marsh", "KM", "Ton", "RazhN", "Proc"};
        QTest::newRow("TempSKladPR") << "TempSKladPR"
                                     << QStringList{"Red", "DocVid", "NomData", "Name", "Broi", "Edin", "Suma"};
        QTest::newRow("TempSKlad") << "TempSKlad"
                                   << QStringList{"Red", "Name", "Cena", "Prihod", "SumaP", "Razhod", "SumaR",
                                                  "Ostatak", "SumaO"};
        QTest::newRow("TempBalans") << "TempBalans" << QStringList{"Red", "Kola", "Prihod", "Razhod", "Ostatak"};
        QTest::newRow("TempZaplati") << "TempZaplati"
                                     << QStringList{"Data", "Kola", "Name", "Ton", "KM", "Suma", "Marsh", "Klient",
                                                    "VidTovar", "Zaplata"};
        QTest::newRow("TempZaplata") << "TempZaplata"
                                     << QStringList{"Red", "Data", "KolaID", "Ton", "KM", "Suma", "Marsh", "VidTovar",
                                                    "Zaplata", "Nadnik"};
        QTest::newRow("TempPlaten") << "TempPlaten"
                                    << QStringList{"Red", "Data", "Marsh", "VidTovar", "KolaID", "KM", "Ton", "Tarifa",
                                                   "Suma"};
    }
    void everyTableIsCreatedByName()
    {
        QFETCH(QString, table);
        QFETCH(QStringList, columns);
        QTemporaryDir folder;
        ScratchDatabase scratch(folder.path());
        const auto refusal = scratch.RebuildScratchTable(table);
        QVERIFY2(!refusal, qPrintable(refusal ? refusal->text : QString()));
        // The client statement's two tables come together, alike.
        QStringList tables{table};
        if (table == QLatin1String("TempKlients"))
            tables << table + QStringLiteral("New");
        QCOMPARE(tablesOf(scratch.db()), tables);
        for (const QString &made : tables)
            QCOMPARE(columnsOf(scratch.db(), made), columns);
    }

    // An unknown name is a message and leaves the table there; two rebuilds leave only the second.
    void twoRebuildsLeaveOnlyTheSecondAndAnUnknownNameIsAMessage()
    {
        SCRATCH_WITH("TempPlaten");
        const auto refusal = scratch.RebuildScratchTable(QStringLiteral("TempNone"));
        QVERIFY(refusal);
        QVERIFY(refusal->title.startsWith(QStringLiteral("ГРЕШКА при")));
        QCOMPARE(tablesOf(scratch.db()), QStringList{QStringLiteral("TempPlaten")});
        QSqlQuery insert(scratch.db());
        QVERIFY(insert.exec(QStringLiteral("INSERT INTO TempPlaten (Red, Marsh) VALUES (1, 'София')")));
        QVERIFY(!scratch.RebuildScratchTable(QStringLiteral("TempZaplata")));
        QCOMPARE(tablesOf(scratch.db()), QStringList{QStringLiteral("TempZaplata")});
        // The same table again starts empty.
        QVERIFY(!scratch.RebuildScratchTable(QStringLiteral("TempZaplata")));
        QCOMPARE(test::countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM TempZaplata")), 0);
    }

    void aBalanceRowTakesAFullTruckNumber()
    {
        SCRATCH_WITH("TempBalans");
        QVERIFY(test::execBound(scratch.db(), QStringLiteral("INSERT INTO TempBalans (Red, Kola, Prihod) VALUES (?, ?, ?)"),
                                {1, QStringLiteral("СА 1234 ВК12"), QStringLiteral("1250,00")}));
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT Kola FROM TempBalans")), QStringLiteral("СА 1234 ВК12"));
        QCOMPARE(scratchTable(QStringLiteral("TempBalans"))->columns.at(1).width, 12);
    }

    void twoCopiesGetFilesOfTheirOwn()
    {
        QTemporaryDir folder;
        ScratchDatabase first(folder.path());
        ScratchDatabase second(folder.path());
        QVERIFY(!first.RebuildScratchTable(QStringLiteral("TempPlaten")));
        QVERIFY(!second.RebuildScratchTable(QStringLiteral("TempNal")));
        QVERIFY(first.filePath() != second.filePath());
        QVERIFY(first.filePath().contains(QString::number(QCoreApplication::applicationPid())));
        QCOMPARE(tablesOf(first.db()), QStringList{QStringLiteral("TempPlaten")});
        QCOMPARE(tablesOf(second.db()), QStringList{QStringLiteral("TempNal")});
        // A copy opening later leaves the files of running copies alone.
        ScratchDatabase third(folder.path());
        QVERIFY(!third.open());
        QVERIFY(QFile::exists(first.filePath()) && QFile::exists(second.filePath()));
    }

    void theFileIsRemovedWhenAskedAtClose()
    {
        SCRATCH_WITH("TempPlaten");
        const QString path = scratch.filePath();
        QVERIFY(QFile::exists(path));
        QVERIFY((QFile::permissions(path) & (QFileDevice::ReadOther | QFileDevice::ReadGroup)) == 0);
        scratch.close(true);
        QVERIFY(!QFile::exists(path));
        QVERIFY(!QFile::exists(path + QStringLiteral(".lock")));
        QVERIFY(!scratch.isOpen());
    }

    void theFilesOfACopyThatDiedAreRemovedAtTheNextStart()
    {
        QTemporaryDir folder;
        // A lock written the way a running copy writes it, then owned by a process that has ended.
        QString lockText;
        {
            QLockFile sample(folder.filePath(QStringLiteral("sample.lock")));
            QVERIFY(sample.tryLock(0));
            QFile file(folder.filePath(QStringLiteral("sample.lock")));
            QVERIFY(file.open(QIODevice::ReadOnly));
            lockText = QString::fromUtf8(file.readAll());
        }
        const qint64 dead = deadProcessId();
        lockText = QString::number(dead) + lockText.mid(lockText.indexOf('\n'));
        const QString stale = folder.filePath(QStringLiteral("Temp-%1-1.db").arg(dead));
        // The dead copy's file and lock, a file of it without a lock, and a file that is no scratch file.
        const QString orphan = folder.filePath(QStringLiteral("Temp-%1-2.db").arg(dead));
        const QString foreign = folder.filePath(QStringLiteral("notes.txt"));
        const QStringList paths = {stale, stale + QStringLiteral(".lock"), orphan, foreign};
        for (const QString &path : paths) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(path == paths[1] ? lockText.toUtf8() : path == stale ? QByteArray("SQLite format 3") : QByteArray());
        }
        ScratchDatabase running(folder.path());
        QVERIFY(!running.open());
        QList<bool> left;
        for (const QString &path : paths + QStringList{running.filePath()})
            left << QFile::exists(path);
        QCOMPARE(left, (QList<bool>{false, false, false, true, true}));
    }
};

QTEST_MAIN(ScratchDatabaseTest)
#include "tst_scratchdatabase.moc"
