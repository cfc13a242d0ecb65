#include "core/eik.h"
#include "core/firmprofile.h"
#include "data/firmstore.h"
#include "app/passwordhash.h"
#include "courses/coursepricing.h"
#include "courses/coursestore.h"
#include "app/demodata.h"
#include "attestation/birthdate.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;
using zarek::test::countBy;

namespace {

bool validEgn(const QString &egn)
{
    static const int weights[] = {2, 4, 8, 5, 10, 9, 7, 3, 6};
    if (egn.size() != 10)
        return false;
    int sum = 0;
    for (int i = 0; i < 9; ++i)
        sum += egn[i].digitValue() * weights[i];
    return (sum % 11 == 10 ? 0 : sum % 11) == egn[9].digitValue();
}

DemoOptions smallDemo()
{
    DemoOptions options;
    options.courses = 300;
    options.today = QDate(2026, 11, 22);
    return options;
}

}

class DemoDataTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // A demo firm is whole and consistent, and the same for the same seed.
    void aDemoFirmIsWholeAndConsistent()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        int lastProgress = 0;
        DemoOptions options = smallDemo();
        options.progress = [&](int done, int) { lastProgress = done; };
        const auto summary = fillDemoDatabase(db, options);
        QVERIFY2(summary.ok(), summary.ok() ? "" : qPrintable(summary.message().text));
        QCOMPARE(lastProgress, 300);

        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM tabl"), 300);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Sklad WHERE Name = 'Разходи за курс'"), 300);
        QVERIFY(summary.value().trucks >= 8);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM tabl WHERE Fakt = TRUE") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM tabl WHERE Fakt = FALSE") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM tabl WHERE plat = TRUE") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM tabl WHERE km = 1") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Sklad WHERE VidKol = 'P'") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Nalich") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Marsh") > countBy(db, "SELECT COUNT(*) FROM RowdList"));
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM ExternalKurs") >= 10);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Tarifi"), 1);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Config WHERE LENGTH(kola) > 12"), 0);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM shof WHERE LENGTH(kod) <> 3"), 0);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM tabl WHERE Fakt = TRUE AND NomFakt = '0000000000'"), 0);
        // Every number on a course is held as issued, so numbering goes on after a year close.
        QCOMPARE(countBy(db, "SELECT COUNT(DISTINCT NomFakt) FROM tabl WHERE Fakt = TRUE AND NomFakt NOT IN "
                            "(SELECT NomFakt FROM Fakturi)"), 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Fakturi") > 0);

        // Every driver's personal number is valid and gives a birth date of a driver of working age.
        QSqlQuery drivers(db);
        QVERIFY(drivers.exec("SELECT EGN, LKarta FROM shof"));
        while (drivers.next()) {
            QVERIFY2(validEgn(drivers.value(0).toString()), qPrintable(drivers.value(0).toString()));
            QCOMPARE(drivers.value(1).toString().size(), 9);
            const auto born = birthDateFromEgn(drivers.value(0).toString());
            QVERIFY2(born.ok(), qPrintable(drivers.value(0).toString()));
            const QStringList parts = born.value().split(QLatin1Char('.'));
            const QDate date(parts.value(2).toInt(), parts.value(1).toInt(), parts.value(0).toInt());
            QVERIFY2(date.isValid(), qPrintable(born.value()));
            const int age = date.daysTo(smallDemo().today) / 365;
            QVERIFY2(age >= 21 && age <= 65, qPrintable(born.value()));
        }

        QSqlQuery courses(db);
        QVERIFY(courses.exec("SELECT * FROM tabl"));
        while (courses.next()) {
            const Course course = CourseStore::fromRecord(courses.record());
            const CourseMoney money = priceCourse(course.ton, course.km, course.Tarifa);
            QCOMPARE(course.bruto, money.bruto);
            QCOMPARE(course.neto, money.neto);
        }

        // The warehouse as the screens leave it: stock on hand is the open receipts, every stock
        // issue is the lots it took, and some articles are priced under 1 (drawn red).
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Nalich n WHERE ABS(n.Broi - (SELECT COALESCE(SUM(s.Ostat), 0) "
                            "FROM Sklad s WHERE s.Name = n.Name AND s.VidKol = 'P' AND s.Lipsa = FALSE)) > 0.0005"),
                 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM SkladLots") > 0);
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM Sklad s WHERE s.VidKol = 'R' AND s.Name NOT IN ('Ремонт', "
                            "'Разходи за курс') AND ABS(s.Kol - (SELECT COALESCE(SUM(l.Kol), 0) FROM SkladLots l "
                            "WHERE l.IssueID = s.id)) > 0.0005"),
                 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Sklad WHERE Name = 'Ремонт'") > 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Nalich WHERE Edin < 1") > 0);
        QCOMPARE(summary.value().stockRows, countBy(db, "SELECT COUNT(*) FROM Sklad WHERE Name <> 'Разходи за курс'"));

        QVERIFY(LoadFirmProfile(db).profile.has_value());
        QSqlQuery admin(db);
        QVERIFY(admin.exec("SELECT Password FROM Users WHERE Vid = 'A'"));
        QVERIFY(admin.next());
        QVERIFY(verifyPassword(admin.value(0).toString(), QString::fromLatin1(demoAdministratorPassword)));
        QVERIFY(admin.value(0).toString() != QString::fromLatin1(demoAdministratorPassword));

        // The trips' senders and receivers are the address book, each firm once.
        const QString parties = QStringLiteral(
            "SELECT SendName, SendAdres, SendCity, SendCountry FROM ExternalKurs "
            "UNION SELECT ResivName, ResivAdres, ResivCity, ResivCountry FROM ExternalKurs");
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM (" + parties + ") AS p"), countBy(db, "SELECT COUNT(*) FROM Firms"));
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM (SELECT DISTINCT SrName, SrAdres, SrCity, SrCountry FROM Firms) AS f"),
                 countBy(db, "SELECT COUNT(*) FROM Firms"));
        QCOMPARE(countBy(db, "SELECT COUNT(*) FROM ExternalKurs e WHERE NOT EXISTS (SELECT 1 FROM Firms f WHERE "
                            "f.SrName = e.ResivName AND f.SrAdres = e.ResivAdres AND f.SrCity = e.ResivCity AND "
                            "f.SrCountry = e.ResivCountry)"),
                 0);
        QVERIFY(countBy(db, "SELECT COUNT(DISTINCT TruckR) FROM ExternalKurs") <= 4);


        // Every client the demo courses name is in the register, with an ЕИК whose control digit is
        // right and a VAT number that is BG and that ЕИК; the firm has a valid account for its invoices.
        QCOMPARE(countBy(db, "SELECT COUNT(DISTINCT Klient) FROM tabl WHERE Klient NOT IN (SELECT Ime FROM Klienti)"), 0);
        QVERIFY(countBy(db, "SELECT COUNT(*) FROM Klienti") >= 10);
        QSqlQuery clients(db);
        QVERIFY(clients.exec("SELECT Ime, EIK, DDSNomer, Adres, Grad FROM Klienti"));
        while (clients.next()) {
            const QString eik = clients.value(1).toString();
            QVERIFY2(isValidEik(eik), qPrintable(clients.value(0).toString() + ' ' + eik));
            const QString vat = clients.value(2).toString();
            QVERIFY2(vat.isEmpty() || vat == QStringLiteral("BG") + eik, qPrintable(vat));
            QVERIFY(!clients.value(3).toString().isEmpty() && !clients.value(4).toString().isEmpty());
        }
        QVERIFY(isValidIban(LoadFirmProfile(db).profile->UserIBAN));

        // The same seed gives the same firm.
        ZAREK_SCRATCH_DB_NAMED(second, engine);
        QSqlDatabase again = second.db();
        QVERIFY(fillDemoDatabase(again, smallDemo()).ok());
        const QString sql = QStringLiteral("SELECT kola, Klient, km, ton, bruto FROM tabl ORDER BY id");
        QCOMPARE(test::rowsText(again, sql), test::rowsText(db, sql));
    }

};

QTEST_GUILESS_MAIN(DemoDataTest)
#include "tst_demodata.moc"
