#include "queryrows.h"
#include "testdatabase.h"
#include "waybills/waybillstore.h"

#include <QSqlError>
#include <QSqlQuery>

using namespace zarek;
using zarek::test::countBy;

namespace {

qint64 insertLine(QSqlDatabase db, const QString &marshId, double km, double razhN)
{
    const QVariant id = test::scalar(db, QStringLiteral("INSERT INTO Marsh (MarshID, Marshrut, KM, Ton, Koef, RazhN) "
                                                        "VALUES (?, 'Д''Аргос - Перник', ?, 0, 0, ?) RETURNING id"),
                                     {marshId, km, razhN});
    return id.typeId() == QMetaType::QString ? 0 : id.toLongLong();
}

RecordRow header(const QString &listId)
{
    RecordRow row;
    row.values = {{QStringLiteral("ListID"), listId},        {QStringLiteral("Data"), QDate(2026, 3, 5)},
                  {QStringLiteral("Kola"), QStringLiteral("СА 1234 ВК")},
                  {QStringLiteral("NameDriver"), QStringLiteral("Георги Д'Амато")},
                  {QStringLiteral("SumKM"), 250.0},          {QStringLiteral("SumRazhN"), 93.5},
                  {QStringLiteral("EndKM"), 245300.0},      {QStringLiteral("ZarN"), 120.0},
                  {QStringLiteral("ZarM"), 0.0},            {QStringLiteral("CenaN"), 2.45},
                  {QStringLiteral("CenaM"), 0.0}};
    return row;
}

}

// A fresh database of the current engine (db) and the waybill store on it.
#define WAYBILL_STORE()               \
    ZAREK_SCRATCH_DB_AS(scratch, db); \
    const WaybillStore store(db)

class WaybillStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // A new waybill whose number was changed after its lines were saved takes those lines, not others.
    void aNewWaybillTakesTheLinesSavedForIt()
    {
        WAYBILL_STORE();
        const qint64 first = insertLine(db, QStringLiteral("0000000037"), 250, 93.5);
        insertLine(db, QStringLiteral("0000000037"), 10, 3);  // left by an older program: not this waybill's
        const Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000038")), true,
                                                          QStringLiteral("0000000037"), {first});
        QVERIFY(saved.ok());
        QVERIFY(saved.value().id > 0);
        QCOMPARE(test::rows(db, "SELECT MarshID, COUNT(*) FROM Marsh GROUP BY MarshID ORDER BY MarshID"),
                 (QStringList{"0000000037|1", "0000000038|1"}));
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM RowdList WHERE NameDriver = 'Георги Д''Амато'"), 1);
    }

    void aCorrectedNumberTakesItsLinesUnlessAnotherWaybillShowsThem_data()
    {
        QTest::addColumn<bool>("twin");
        QTest::newRow("alone") << false;
        QTest::newRow("a twin of the old number") << true;
    }
    void aCorrectedNumberTakesItsLinesUnlessAnotherWaybillShowsThem()
    {
        QFETCH(bool, twin);
        WAYBILL_STORE();
        insertLine(db, QStringLiteral("0000000040"), 100, 30);
        insertLine(db, QStringLiteral("0000000040"), 50, 15);
        Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {});
        QVERIFY(saved.ok());
        if (twin)
            QVERIFY(store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {}).ok());
        RecordRow row = saved.value();
        row.values.insert(QStringLiteral("ListID"), QStringLiteral("0000000048"));
        saved = store.saveHeader(row, false, QStringLiteral("0000000040"), {});
        QVERIFY(saved.ok());
        QCOMPARE(saved.value().rowVersion, row.rowVersion + 1);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000048'"), twin ? 0 : 2);
    }

    void aStaleCorrectionWritesNothing()
    {
        WAYBILL_STORE();
        insertLine(db, QStringLiteral("0000000040"), 100, 30);
        Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {});
        QVERIFY(saved.ok());
        QVERIFY(scratch.exec(QStringLiteral("UPDATE RowdList SET row_version = row_version + 1")));
        RecordRow row = saved.value();
        row.values.insert(QStringLiteral("ListID"), QStringLiteral("0000000048"));
        saved = store.saveHeader(row, false, QStringLiteral("0000000040"), {});
        QVERIFY(!saved.ok());
        QCOMPARE(saved.message().title, QStringLiteral("ГРЕШКА при записа на пътния лист!"));
        QCOMPARE(test::row(db, "SELECT (SELECT MarshID FROM Marsh), ListID FROM RowdList"),
                 QStringLiteral("0000000040|0000000040"));
    }

    void aWaybillGoesWithItsLines_data()
    {
        QTest::addColumn<bool>("twin");
        QTest::addColumn<bool>("stale");
        QTest::addColumn<int>("headersLeft");
        QTest::addColumn<int>("linesLeft");
        QTest::newRow("alone") << false << false << 0 << 0;
        QTest::newRow("a twin keeps the lines it shows") << true << false << 1 << 2;
        QTest::newRow("changed elsewhere: nothing goes") << false << true << 1 << 2;
    }
    void aWaybillGoesWithItsLines()
    {
        QFETCH(bool, twin);
        QFETCH(bool, stale);
        QFETCH(int, headersLeft);
        QFETCH(int, linesLeft);
        WAYBILL_STORE();
        insertLine(db, QStringLiteral("0000000040"), 100, 30);
        insertLine(db, QStringLiteral("0000000040"), 50, 15);
        insertLine(db, QStringLiteral("0000000041"), 10, 3);
        const Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {});
        QVERIFY(saved.ok());
        if (twin)
            QVERIFY(store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {}).ok());
        if (stale)
            QVERIFY(scratch.exec(QStringLiteral("UPDATE RowdList SET row_version = row_version + 1")));
        const auto failure = store.deleteWaybill(saved.value(), QStringLiteral("ГРЕШКА при изтриване!"));
        QCOMPARE(failure.has_value(), stale);
        QCOMPARE(test::row(db, "SELECT (SELECT COUNT(*) FROM RowdList), (SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000040'), "
                               "(SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000041')"),
                 QStringLiteral("%1|%2|1").arg(headersLeft).arg(linesLeft));
    }

    void theLinesOfANewWaybillAreDroppedOrFollowItsNumber()
    {
        WAYBILL_STORE();
        const qint64 a = insertLine(db, QStringLiteral("0000000037"), 100, 30);
        const qint64 b = insertLine(db, QStringLiteral("0000000037"), 50, 15);
        insertLine(db, QStringLiteral("0000000037"), 10, 3);
        QVERIFY(!store.moveLines({a, b}, QStringLiteral("0000000039"), QStringLiteral("Т")));
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Marsh WHERE MarshID = '0000000039'"), 2);
        QVERIFY(!store.deleteLines({a, b}, QStringLiteral("Т")));
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Marsh"), 1);
        QVERIFY(!store.deleteLines({}, QStringLiteral("Т")));
    }

    // What the store reads: a truck's norm, the sums of a waybill's lines, whether a number is taken.
    void theNormOfATruckTheSumsOfTheStoredLinesAndATakenNumber()
    {
        WAYBILL_STORE();
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola, Razhod) VALUES ('СА 1234 ВК', 32.5)")));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Config (kola) VALUES ('РВ 7777 АА')")));
        QCOMPARE(store.truckNorm(QStringLiteral("СА 1234 ВК")).value(), std::optional<double>(32.5));
        QCOMPARE(store.truckNorm(QStringLiteral("РВ 7777 АА")).value(), std::optional<double>());  // no norm in it
        QCOMPARE(store.truckNorm(QStringLiteral("ВТ 0001 ХХ")).value(), std::optional<double>());  // no row

        insertLine(db, QStringLiteral("0000000037"), 250, 93.5);
        insertLine(db, QStringLiteral("0000000037"), 99.5, 30.1);
        insertLine(db, QStringLiteral("0000000037"), 0.4, 0.2);
        const auto sums = store.lineSums(QStringLiteral("0000000037"));
        QVERIFY(sums.ok());
        QCOMPARE(sums.value().km, std::optional<double>(350));  // 349.9 counts whole
        QCOMPARE(sums.value().fuel, std::optional<double>(123.8));
        const auto none = store.lineSums(QStringLiteral("0000000099"));
        QVERIFY(none.ok());
        QVERIFY(!none.value().km && !none.value().fuel);

        const Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {});
        QVERIFY(saved.ok());
        QCOMPARE(store.numberTaken(QStringLiteral("0000000040")).value(), true);
        QCOMPARE(store.numberTaken(QStringLiteral("0000000040"), saved.value().id).value(), false);
        QCOMPARE(store.numberTaken(QStringLiteral("40")).value(), false);
    }

    void sumsStoredOnABrowsedWaybillAreVersionChecked()
    {
        WAYBILL_STORE();
        const Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000040")), true, QString(), {});
        QVERIFY(saved.ok());
        const Checked<RecordRow> stored = store.storeSums(saved.value(), {300.0, 101.5}, QStringLiteral("Т"));
        QVERIFY(stored.ok());
        QCOMPARE(stored.value().values.value(QStringLiteral("SumRazhN")).toDouble(), 101.5);
        QVERIFY(!store.storeSums(saved.value(), {1.0, 1.0}, QStringLiteral("Т")).ok());  // its version has moved on
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM RowdList WHERE SumKM = 300"), 1);
    }

    // The waybill's totals equal its lines after every line saved or deleted, also without "Изчисли";
    // a line moved to another number leaves the old number's totals right too.
    void theHeaderTotalsFollowEverySavedOrDeletedLine_data()
    {
        QTest::addColumn<QString>("step");
        QTest::addColumn<double>("km");
        QTest::addColumn<double>("fuel");
        QTest::newRow("a line added") << "add" << 850.0 << 306.2;
        QTest::newRow("a line corrected") << "correct" << 650.0 << 232.7;
        QTest::newRow("a line deleted") << "delete" << 250.0 << 93.5;
        QTest::newRow("every line deleted") << "delete all" << 0.0 << 0.0;
        QTest::newRow("a line moved to another number") << "move" << 250.0 << 93.5;
    }
    void theHeaderTotalsFollowEverySavedOrDeletedLine()
    {
        QFETCH(QString, step);
        QFETCH(double, km);
        QFETCH(double, fuel);
        WAYBILL_STORE();
        const QString number = QStringLiteral("0000000037");
        const RecordStore lines(db, QStringLiteral("Marsh"), WaybillStore::lineColumns(), QString(),
                                QStringLiteral("MarshID = ?"), {number});
        insertLine(db, number, 250, 93.5);
        insertLine(db, number, 350, 120.2);
        RecordRow saved = header(number);
        saved.values.insert(QStringLiteral("SumKM"), 600.0);
        saved.values.insert(QStringLiteral("SumRazhN"), 213.7);
        QVERIFY(store.saveHeader(saved, true, number, {}).ok());
        const QList<RecordRow> stored = lines.load().value();
        QCOMPARE(stored.size(), 2);
        const QString title = QStringLiteral("ГРЕШКА при запис!");
        if (step == QLatin1String("add")) {
            RecordRow line;
            line.values = {{QStringLiteral("MarshID"), number}, {QStringLiteral("Marshrut"), QStringLiteral("Перник")},
                           {QStringLiteral("KM"), 250.0}, {QStringLiteral("Ton"), 0.0}, {QStringLiteral("Koef"), 0.0},
                           {QStringLiteral("RazhN"), 92.5}};
            const auto written = store.saveLine(lines, line, true, title);
            QVERIFY(written.ok());
            QCOMPARE(written.value().sums.km, std::optional<double>(km));
        } else if (step == QLatin1String("correct") || step == QLatin1String("move")) {
            RecordRow line = stored.at(1);  // 350 km, 120.2 l
            if (step == QLatin1String("move"))
                line.values.insert(QStringLiteral("MarshID"), QStringLiteral("0000000038"));
            else {
                line.values.insert(QStringLiteral("KM"), 400.0);
                line.values.insert(QStringLiteral("RazhN"), 139.2);
            }
            QVERIFY(store.saveLine(lines, line, false, title).ok());
        } else {
            const auto sums = store.removeLine(lines, stored.at(1), title);
            QCOMPARE(sums.value().km, std::optional<double>(250));
            if (step == QLatin1String("delete all"))
                QCOMPARE(store.removeLine(lines, stored.at(0), title).value().km, std::optional<double>(0));
        }
        // The totals follow the lines without moving the header's version (1): a correction of the
        // header open meanwhile still saves.
        QCOMPARE(test::row(db, "SELECT SumKM, SumRazhN, row_version FROM RowdList WHERE ListID = '0000000037'"),
                 QStringLiteral("%1|%2|1").arg(km).arg(fuel));
    }

    // A header saved with totals that are not those of its lines stores its lines' totals.
    void aSavedHeaderHoldsTheTotalsOfItsLines()
    {
        WAYBILL_STORE();
        insertLine(db, QStringLiteral("0000000037"), 200, 70.0);
        insertLine(db, QStringLiteral("0000000037"), 450, 162.7);
        const Checked<RecordRow> saved = store.saveHeader(header(QStringLiteral("0000000037")), true,
                                                          QStringLiteral("0000000037"), {});
        QVERIFY(saved.ok());
        QCOMPARE(saved.value().values.value(QStringLiteral("SumKM")).toDouble(), 650.0);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM RowdList WHERE SumKM = 650 AND SumRazhN > 232.6 AND SumRazhN < 232.8"), 1);
    }

    void theListsAreSortedWithoutBlanksOrTwins()
    {
        WAYBILL_STORE();
        QVERIFY(test::execAll(db, {"INSERT INTO Config (kola) VALUES ('СА 1234 ВК')",
                                   "INSERT INTO Config (kola) VALUES ('РВ 7777 АА')", "INSERT INTO Config (kola) VALUES ('')",
                                   "INSERT INTO shof (kod, ime) VALUES ('001', 'Иван Петров')",
                                   "INSERT INTO shof (kod, ime) VALUES ('002', 'Иван Петров')"}));
        QCOMPARE(store.truckNumbers().value(), (QStringList{QStringLiteral("РВ 7777 АА"), QStringLiteral("СА 1234 ВК")}));
        QCOMPARE(store.driverNames().value(), QStringList{QStringLiteral("Иван Петров")});
    }
};

QTEST_GUILESS_MAIN(WaybillStoreTest)
#include "tst_waybillstore.moc"
