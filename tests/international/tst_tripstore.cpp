#include "international/triprules.h"
#include "international/tripstore.h"
#include "testdatabase.h"
#include "tripfixture.h"

#include <QSqlError>
#include <QSqlQuery>
#include <limits>

using namespace zarek;
using zarek::test::agro;
using zarek::test::countBy;
using zarek::test::dargos;

namespace {

RecordRow trip(const QString &number, const FirmAddress &sender, const FirmAddress &receiver)
{
    return test::tripRow(number, sender, receiver, QStringLiteral("Иван Петров"), QStringLiteral("РВ 5678 ЕЕ"), 10.0);
}

}

Q_DECLARE_METATYPE(zarek::FirmAddress)

// A fresh database of the current engine (scratch) and the trip store on it.
#define TRIP_STORE()               \
    ZAREK_SCRATCH_DB(scratch);     \
    const TripStore store(scratch.db())

class TripStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // The first empty box stops the save, in the order number, date, driver, tractor, trailer.
    void theFiveChecksStopAtTheFirstEmptyBoxInTheirOrder_data()
    {
        QTest::addColumn<QStringList>("filled");
        QTest::addColumn<QString>("fault");
        const QStringList all = {"KursID", "Data", "DriverName", "TruckV", "TruckR"};
        QTest::newRow("nothing") << QStringList() << "Няма въведен номер на ЧМР!";
        QTest::newRow("number") << QStringList{"KursID"} << "Няма въведена дата на ЧМР!";
        QTest::newRow("number, date") << QStringList{"KursID", "Data"} << "Няма въведено име на шофьор!";
        QTest::newRow("up to the driver") << all.mid(0, 3) << "Няма въведен номер на влекач!";
        QTest::newRow("up to the tractor") << all.mid(0, 4) << "Няма въведен номер на ремарке!";
        QTest::newRow("all but the number") << all.mid(1) << "Няма въведен номер на ЧМР!";
        QTest::newRow("all but the trailer, blanks only") << all.mid(0, 4) << "Няма въведен номер на ремарке!";
        QTest::newRow("all five") << all << "";
    }
    void theFiveChecksStopAtTheFirstEmptyBoxInTheirOrder()
    {
        QFETCH(QStringList, filled);
        QFETCH(QString, fault);
        QVariantMap typed;
        for (const QString &column : tripColumns())
            typed.insert(column, QStringLiteral("   "));
        for (const QString &column : filled)
            typed.insert(column, QStringLiteral("x"));
        const auto message = checkTrip(typed);
        if (fault.isEmpty()) {
            QVERIFY(!message);
            return;
        }
        QVERIFY(message);
        QCOMPARE(message->title, QStringLiteral("   ВНИМАНИЕ!"));
        QCOMPARE(message->text.section(QLatin1Char('\n'), 0, 0), fault);
        QCOMPARE(message->text.section(QLatin1Char('\n'), 1, 1), QString());  // a blank line between the two
        QCOMPARE(message->icon, UserMessage::Icon::Critical);
    }

    // One firm is one row however it was typed; a change in any of its four parts is another firm.
    void theSameFirmOnTwoTripsIsOneRowAndAChangedPartIsANewRow_data()
    {
        QTest::addColumn<FirmAddress>("second");
        QTest::addColumn<int>("firms");
        QTest::newRow("the same") << agro << 2;
        QTest::newRow("the same with blanks around")
            << FirmAddress{"  Agro Trade SRL ", "Str. Fabricii 8 ", " Bucuresti", "Румъния  "} << 2;
        QTest::newRow("another name") << FirmAddress{"Agro Trade SA", agro.adres, agro.city, agro.country} << 3;
        QTest::newRow("another address") << FirmAddress{agro.name, "Str. Fabricii 10", agro.city, agro.country} << 3;
        QTest::newRow("another town") << FirmAddress{agro.name, agro.adres, "Ploiesti", agro.country} << 3;
        QTest::newRow("another country") << FirmAddress{agro.name, agro.adres, agro.city, "Молдова"} << 3;
    }
    void theSameFirmOnTwoTripsIsOneRowAndAChangedPartIsANewRow()
    {
        QFETCH(FirmAddress, second);
        QFETCH(int, firms);
        TRIP_STORE();
        QVERIFY(store.save(trip("0000000001", dargos, agro), true, "ГРЕШКА при запис!").ok());
        QVERIFY(store.save(trip("0000000002", dargos, second), true, "ГРЕШКА при запис!").ok());
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM Firms"), firms);
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM Firms WHERE SrName <> TRIM(SrName) OR SrAdres <> "
                                     "TRIM(SrAdres) OR SrCity <> TRIM(SrCity) OR SrCountry <> TRIM(SrCountry)"),
                 0);
    }

    void aFirmWithAnApostropheIsStoredAndFoundAgain()
    {
        TRIP_STORE();
        QVERIFY(!store.addFirm(dargos, "ГРЕШКА при запис!"));
        QVERIFY(!store.addFirm(dargos, "ГРЕШКА при запис!"));
        const auto firms = store.firms();
        QVERIFY(firms.ok());
        QCOMPARE(firms.value(), QList<FirmAddress>{dargos});
    }

    // A firm row from before, with a part never stored, is the same firm as one typed with it empty.
    void aPartNeverStoredCountsAsAnEmptyOne()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec("INSERT INTO Firms (SrName, SrCity) VALUES ('Bau Handel GmbH', 'Nürnberg')"));
        QVERIFY(!TripStore(scratch.db()).addFirm({"Bau Handel GmbH", "", "Nürnberg", ""}, "ГРЕШКА при запис!"));
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM Firms"), 1);
    }

    // Empty panels make one all-empty firm, once; the picker then lists it.
    void emptyPanelsAddOneEmptyFirmOnce()
    {
        TRIP_STORE();
        QVERIFY(store.save(trip("0000000001", {}, {}), true, "ГРЕШКА при запис!").ok());
        QVERIFY(store.save(trip("0000000002", {}, {}), true, "ГРЕШКА при запис!").ok());
        QCOMPARE(store.firms().value(), QList<FirmAddress>{FirmAddress{}});
    }

    // Another workstation may have taken the number since it was typed: the save refuses it, and
    // neither the trip nor its firms are written.
    void aNumberAnotherTripCarriesIsRefusedAndNothingIsWritten()
    {
        TRIP_STORE();
        QVERIFY(store.save(trip("0000000037", dargos, dargos), true, "ГРЕШКА при запис!").ok());
        const auto refused = store.save(trip("0000000037", agro, agro), true, "ГРЕШКА при запис!");
        QVERIFY(!refused.ok());
        QCOMPARE(refused.message(), tripNumberTakenMessage());
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM ExternalKurs"), 1);
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM Firms"), 1);
        QCOMPARE(store.numberTaken("0000000037").value(), true);
        QCOMPARE(store.numberTaken("0000000038").value(), false);
    }

    // The store refuses the figures the screen refuses, on a new trip and on a corrected one; a
    // blank figure and the limits themselves are taken.
    void aFigureTheScreenRefusesIsNeverStored_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<bool>("stored");
        const double nan = std::numeric_limits<double>::quiet_NaN();
        const double inf = std::numeric_limits<double>::infinity();
        QTest::newRow("tonnes NaN") << "TovarTon" << QVariant(nan) << false;
        QTest::newRow("tonnes negative") << "TovarTon" << QVariant(-1.0) << false;
        QTest::newRow("tonnes over 100") << "TovarTon" << QVariant(100.5) << false;
        QTest::newRow("tonnes 100") << "TovarTon" << QVariant(100.0) << true;
        QTest::newRow("fuel infinite") << "TotalFuel" << QVariant(inf) << false;
        QTest::newRow("km -500") << "TotalKM" << QVariant(-500.0) << false;
        QTest::newRow("km 1e300") << "TotalKM" << QVariant(1e300) << false;
        QTest::newRow("income minus infinity") << "TotalP" << QVariant(-inf) << false;
        QTest::newRow("cost over the limit") << "TotalR" << QVariant(1e9) << false;
        QTest::newRow("cost 1234,50") << "TotalR" << QVariant(1234.5) << true;
        QTest::newRow("cost text not a number") << "TotalR" << QVariant(QStringLiteral("nan")) << false;
        QTest::newRow("fuel blank") << "TotalFuel" << QVariant(QMetaType::fromType<double>()) << true;
    }
    void aFigureTheScreenRefusesIsNeverStored()
    {
        QFETCH(QString, column);
        QFETCH(QVariant, value);
        QFETCH(bool, stored);
        TRIP_STORE();
        RecordRow row = trip("0000000041", dargos, agro);
        row.values.insert(column, value);
        QCOMPARE(checkTrip(row.values).has_value(), !stored);
        const auto added = store.save(row, true, "ГРЕШКА при запис!");
        QCOMPARE(added.ok(), stored);
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM ExternalKurs"), stored ? 1 : 0);
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM Firms"), stored ? 2 : 0);
        if (!stored) {
            QCOMPARE(added.message().title, QStringLiteral("   ГРЕШКА!"));
            // The same figure typed into a trip that stands is refused too, and the trip keeps its values.
            const auto first = store.save(trip("0000000041", dargos, agro), true, "ГРЕШКА при запис!");
            QVERIFY(first.ok());
            RecordRow corrected = first.value();
            corrected.values.insert(column, value);
            QVERIFY(!store.save(corrected, false, "ГРЕШКА при запис!").ok());
            QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM ExternalKurs WHERE TovarTon = 10 AND TotalFuel = 10 AND "
                                         "TotalKM = 10 AND TotalP = 10 AND TotalR = 10"), 1);
        }
    }

    // A trip corrected keeps its own number: that is no duplicate.
    void aTripCorrectedKeepsItsOwnNumber()
    {
        TRIP_STORE();
        const auto saved = store.save(trip("0000000037", dargos, agro), true, "ГРЕШКА при запис!");
        QVERIFY(saved.ok());
        QCOMPARE(store.numberTaken("0000000037", saved.value().id).value(), false);
        RecordRow corrected = saved.value();
        corrected.values.insert(QStringLiteral("TovarName"), QStringLiteral("Пшеница"));
        const auto again = store.save(corrected, false, "ГРЕШКА при запис!");
        QVERIFY2(again.ok(), again.ok() ? "" : qPrintable(again.message().text));
        QCOMPARE(again.value().rowVersion, saved.value().rowVersion + 1);
    }

    // A trip another user changed meanwhile is not overwritten, and its firms stay unwritten too.
    void aTripChangedElsewhereIsNotOverwritten()
    {
        TRIP_STORE();
        const auto saved = store.save(trip("0000000037", dargos, dargos), true, "ГРЕШКА при запис!");
        QVERIFY(saved.ok());
        QVERIFY(scratch.exec("UPDATE ExternalKurs SET TovarName = 'Олио', row_version = row_version + 1"));
        RecordRow stale = saved.value();
        stale.values.insert(QStringLiteral("ResivName"), QStringLiteral("Hellas Foods SA"));
        const auto refused = store.save(stale, false, "ГРЕШКА при запис!");
        QVERIFY(!refused.ok());
        QVERIFY(refused.message().text.startsWith(QStringLiteral("-2147217864:")));
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM Firms"), 1);
        QCOMPARE(countBy(scratch.db(), "SELECT COUNT(*) FROM ExternalKurs WHERE TovarName = 'Олио'"), 1);
    }

    void theListsOfferDriversTractorsAndEarlierTrailersSorted()
    {
        TRIP_STORE();
        QVERIFY(store.trailers().isEmpty());
        QVERIFY(scratch.exec("INSERT INTO shof (kod, ime) VALUES ('002', 'Петър Колев'), ('001', 'Георги Д''Амато')"));
        QVERIFY(scratch.exec("INSERT INTO Config (kola) VALUES ('СА 9999 ВВ'), ('РВ 1234 ВК')"));
        RecordRow second = trip("0000000002", agro, agro);
        second.values.insert(QStringLiteral("TruckR"), QStringLiteral("РВ 0001 ЕЕ"));
        QVERIFY(store.save(trip("0000000001", agro, agro), true, "ГРЕШКА при запис!").ok());
        QVERIFY(store.save(second, true, "ГРЕШКА при запис!").ok());
        QVERIFY(store.save(trip("0000000003", agro, agro), true, "ГРЕШКА при запис!").ok());
        QCOMPARE(store.driverNames(), (QStringList{"Георги Д'Амато", "Петър Колев"}));
        QCOMPARE(store.tractors(), (QStringList{"РВ 1234 ВК", "СА 9999 ВВ"}));
        QCOMPARE(store.trailers(), (QStringList{"РВ 0001 ЕЕ", "РВ 5678 ЕЕ"}));
    }
};

QTEST_GUILESS_MAIN(TripStoreTest)
#include "tst_tripstore.moc"
