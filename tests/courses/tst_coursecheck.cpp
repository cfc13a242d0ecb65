#include "courseexample.h"
#include "core/textcheck.h"
#include "courses/coursecheck.h"

#include <QtTest>

using namespace zarek;
using zarek::test::adding;
using zarek::test::leva;

namespace {

using test::exampleCourseEntry;

QString firstLine(const CourseCheckResult &result)
{
    return result.refusal ? result.refusal->text.section(QLatin1Char('\n'), 0, 0) : QString();
}

}

class CourseCheckTest : public QObject {
    Q_OBJECT
private slots:
    void allEmptyStopsAtTheDriver()
    {
        const auto result = checkCourse(CourseEntry{}, adding, leva());
        QVERIFY(result.refusal);
        QCOMPARE(result.refusal->title + '|' + result.refusal->text,
                 QStringLiteral("ГРЕШКА при запис!|Няма име на шофьора!\nМоля, изберете името на шофьора!"));
    }

    void theFirstFailingCheckWins_data()
    {
        QTest::addColumn<QStringList>("changes");  // field=value pairs applied to a valid entry
        QTest::addColumn<QString>("expected");
        QTest::newRow("1 driver") << QStringList{"driver=", "kola="} << "Няма име на шофьора!";
        QTest::newRow("2 truck") << QStringList{"kola= ", "date="} << "Няма номер на кола!";
        QTest::newRow("3 date") << QStringList{"date=", "ton="} << "Няма въведена дата!";
        QTest::newRow("4 tonnes") << QStringList{"ton=", "km="} << "Няма въведен тонаж!";
        QTest::newRow("5 km") << QStringList{"km=", "tarifa="} << "Няма въведени километри!";
        QTest::newRow("6 rate") << QStringList{"tarifa=", "marsh="} << "Няма въведена тарифа!";
        QTest::newRow("7 route") << QStringList{"marsh=", "klient="} << "Няма въведен маршрут!";
        QTest::newRow("8 client") << QStringList{"klient=", "tovar="} << "Няма въведен клиент!";
        QTest::newRow("9 cargo before a long truck") << QStringList{"tovar=", "kola=1234567890123"}
                                                      << "Няма въведен товар!";
        QTest::newRow("10 invoice") << QStringList{"nomFakt="} << "Няма въведена фактура!";
        QTest::newRow("11 invoice of 9") << QStringList{"nomFakt=000000001"} << "Грешен номер на фактура!";
        QTest::newRow("11 invoice of 11") << QStringList{"nomFakt=00000000001"} << "Грешен номер на фактура!";
        QTest::newRow("11 before 12") << QStringList{"nomFakt=1", "driver=Иван"} << "Грешен номер на фактура!";
        QTest::newRow("12 driver without comma") << QStringList{"driver=Иван Петров"} << "Грешно име на шофьор!";
        QTest::newRow("12 empty code") << QStringList{"driver= ,Иван"} << "Грешно име на шофьор!";
        QTest::newRow("13 truck of 13") << QStringList{"kola=1234567890123", "tovar=" + QString(26, 'x')}
                                        << "Номера на колата е по-дълъг от разрешения!";
        QTest::newRow("13 truck of 12 passes") << QStringList{"kola=123456789012"} << "";
        QTest::newRow("14 cargo of 26") << QStringList{"tovar=" + QString(26, u'т'), "klient=" + QString(26, 'x')}
                                        << "Вида на товара е по-дълъг от разрешения!";
        QTest::newRow("16 client of 26") << QStringList{"klient=" + QString(26, u'к'), "marsh=" + QString(26, 'x')}
                                         << "Името на клиента е по-дълъго от разрешеното!";
        QTest::newRow("17 route of 26") << QStringList{"marsh=" + QString(26, u'м')}
                                        << "Маршрута е по-дълъг от разрешения!";
        QTest::newRow("25 characters pass") << QStringList{"marsh=" + QString(25, u'м'), "tovar=" + QString(25, u'т')}
                                            << "";
        QTest::newRow("blanks around are trimmed") << QStringList{"klient=  " + QString(25, u'к') + "  "} << "";
        QTest::newRow("month 13 is not stored") << QStringList{"date=31.13.2005"} << "Неверен формат на датата!";
        QTest::newRow("impossible day") << QStringList{"date=30.02.2006"} << "Неверен формат на датата!";
        QTest::newRow("tonnes not a number") << QStringList{"ton=десет"} << "Тонажа не е число!";
        QTest::newRow("km not a number") << QStringList{"km=25км"} << "Километрите не са число!";
        QTest::newRow("rate not a number") << QStringList{"tarifa=0.1.2"} << "13:Несъвместим тип: тарифата \"0.1.2\" не е число";
        QTest::newRow("expense not a number") << QStringList{"razhod=петдесет"} << "Разхода не е число!";
        QTest::newRow("expense no money holds") << QStringList{"razhod=1" + QString(40, u'0')}
                                                << "Разхода е извън разрешените граници!";
    }
    void theFirstFailingCheckWins()
    {
        QFETCH(QStringList, changes);
        QFETCH(QString, expected);
        CourseEntry entry = exampleCourseEntry();
        for (const QString &change : changes) {
            const QString field = change.section(QLatin1Char('='), 0, 0);
            const QString value = change.section(QLatin1Char('='), 1);
            QString *target = field == "driver" ? &entry.driver : field == "kola" ? &entry.kola
                            : field == "date" ? &entry.date : field == "ton" ? &entry.ton
                            : field == "km" ? &entry.km : field == "tarifa" ? &entry.tarifa
                            : field == "marsh" ? &entry.marsh : field == "klient" ? &entry.klient
                            : field == "tovar" ? &entry.tovar : field == "nomFakt" ? &entry.nomFakt
                            : &entry.razhod;
            *target = value;
        }
        QCOMPARE(firstLine(checkCourse(entry, adding, leva())), expected);
    }

    void exampleCourseIsPriced()
    {
        const auto result = checkCourse(exampleCourseEntry(), adding, leva());
        QVERIFY(!result.refusal);
        QCOMPARE((QList<qint64>{result.course.bruto.cents(), result.course.procent.cents(), result.course.neto.cents()}),
                 (QList<qint64>{3125, 94, 3031}));
        QCOMPARE(result.course.kod, QStringLiteral("007"));
        QCOMPARE(result.course.data, QDate(2006, 3, 5));
        QCOMPARE(result.course.Klient, QStringLiteral("Д'Аргос ООД"));
        QVERIFY(!result.course.Doc);
    }

    // A new course is never invoiced; a row started in the correction task is added, but its
    // invoice is not forced.
    void onlyANewCourseHasItsInvoiceForced()
    {
        CourseEntry entry = exampleCourseEntry();
        entry.nomFakt = QStringLiteral("0000000125");
        entry.fakt = true;
        entry.plat = true;
        auto result = checkCourse(entry, adding, leva());
        QCOMPARE(result.course.NomFakt, QStringLiteral("0000000000"));
        QVERIFY(!result.course.Fakt);
        QVERIFY(result.course.plat);

        entry.fakt = entry.plat = false;
        result = checkCourse(entry, {CourseMode::EditKurs, true, {}}, leva());
        QCOMPARE(result.course.kod, QStringLiteral("007"));
        QCOMPARE(result.course.NomFakt, QStringLiteral("0000000125"));
    }

    void aCorrectionKeepsItsDriverAndInvoice()
    {
        CourseEntry entry = exampleCourseEntry();
        entry.driver = QStringLiteral("012");  // the bare code, as the combo shows it while correcting
        entry.driverCode = QStringLiteral("012");
        entry.nomFakt = QStringLiteral("0000000125");
        entry.fakt = true;
        Course original;
        original.id = 41;
        original.rowVersion = 3;
        const auto result = checkCourse(entry, {CourseMode::EditKurs, false, original}, leva());
        QVERIFY(!result.refusal);
        QCOMPARE(result.course.kod, QStringLiteral("012"));
        QCOMPARE(result.course.NomFakt, QStringLiteral("0000000125"));
        QVERIFY(result.course.Fakt);
        QCOMPARE(result.course.id, qint64(41));
        QCOMPARE(result.course.rowVersion, 3);
    }

    // A date that reads despite its form warns and goes on; one that does not read is refused with
    // one message, not two. Both put the cursor into the date box.
    void aBadDateFocusesTheDateBox()
    {
        CourseEntry entry = exampleCourseEntry();
        entry.date = QStringLiteral("05032006");
        auto result = checkCourse(entry, adding, leva());
        QVERIFY(!result.refusal && result.dateWarning && result.focusDate);
        QCOMPARE(result.dateWarning->text,
                 QStringLiteral("Неверен формат на датата!\nПроверете въведената дата и опитайте отново."));
        QCOMPARE(result.course.data, QDate(2006, 3, 5));

        entry.date = QStringLiteral("31.13.2005");
        result = checkCourse(entry, adding, leva());
        QVERIFY(result.refusal && result.focusDate && !result.dateWarning);
    }

    void expenseTakesCommaOrBlank_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("cents");
        QTest::newRow("blank") << "" << qint64(0);
        QTest::newRow("comma") << "12,50" << qint64(1250);
        QTest::newRow("point") << "45.5" << qint64(4550);
        QTest::newRow("blanks") << "  7 " << qint64(700);
    }
    void expenseTakesCommaOrBlank()
    {
        QFETCH(QString, text);
        QFETCH(qint64, cents);
        CourseEntry entry = exampleCourseEntry();
        entry.razhod = text;
        QCOMPARE(checkCourse(entry, adding, leva()).expense.cents(), cents);
    }

    // 100000000 t x 1000000000 km x 1,000 once saved a gross of -92233720368547760,00.
    // Figures beyond their limits are refused with the fault of the first (two lines); at their
    // limits they pass and are priced.
    void figuresAreRefusedBeyondTheirLimitsOnly_data()
    {
        QTest::addColumn<QString>("ton");
        QTest::addColumn<QString>("km");
        QTest::addColumn<QString>("rate");
        QTest::addColumn<QString>("fault");
        QTest::addColumn<qint64>("bruto");
        const QString tonnes = QStringLiteral("Тонажа е извън разрешените граници!");
        const QString kilometres = QStringLiteral("Километрите са извън разрешените граници!");
        const QString rate = QStringLiteral("Тарифата е извън разрешените граници!");
        QTest::newRow("the overflow course") << "100000000" << "1000000000" << "1,000" << tonnes << qint64(0);
        QTest::newRow("negative tonnes") << "-4" << "18" << "0,2" << tonnes << qint64(0);
        QTest::newRow("tonnes above a truck's") << "100,5" << "18" << "0,2" << tonnes << qint64(0);
        QTest::newRow("negative km") << "10" << "-18" << "0,2" << kilometres << qint64(0);
        QTest::newRow("km above a day's") << "10" << "2000,1" << "0,2" << kilometres << qint64(0);
        QTest::newRow("negative rate") << "10" << "18" << "-0,2" << rate << qint64(0);
        QTest::newRow("rate above the limit") << "10" << "18" << "100,001" << rate << qint64(0);
        QTest::newRow("rate of 1e300") << "10" << "18" << "1" + QString(300, u'0') << rate << qint64(0);
        QTest::newRow("zeros pass") << "0" << "0" << "0" << "" << qint64(0);
        QTest::newRow("all at the limit pass") << "100" << "2000" << "100" << "" << qint64(2'000'000'000);
        QTest::newRow("a typed rate wins") << "10" << "25" << "0.2" << "" << qint64(5000);
    }
    void figuresAreRefusedBeyondTheirLimitsOnly()
    {
        QFETCH(QString, ton);
        QFETCH(QString, km);
        QFETCH(QString, rate);
        QFETCH(QString, fault);
        QFETCH(qint64, bruto);
        CourseEntry entry = exampleCourseEntry();
        entry.ton = ton;
        entry.km = km;
        entry.tarifa = rate;
        const auto result = checkCourse(entry, adding, leva());
        QCOMPARE(result.refusal.has_value(), !fault.isEmpty());
        if (!fault.isEmpty()) {
            QCOMPARE(result.refusal->title, QStringLiteral("ГРЕШКА при запис!"));
            QCOMPARE(result.refusal->text.section(QLatin1Char('\n'), 0, 0), fault);
            QCOMPARE(result.refusal->text.count(QLatin1Char('\n')), 1);
        } else {
            QCOMPARE(result.course.Tarifa, rate.replace(QLatin1Char(','), QLatin1Char('.')).toDouble());
            QCOMPARE(result.course.bruto.cents(), bruto);
        }
    }

    void aControlCharacterInAnyTextIsRefusedFirst_data()
    {
        QTest::addColumn<QString>("field");
        QTest::newRow("route") << "marsh";
        QTest::newRow("client") << "klient";
        QTest::newRow("truck") << "kola";
        QTest::newRow("cargo") << "tovar";
        QTest::newRow("tonnes") << "ton";
    }
    void aControlCharacterInAnyTextIsRefusedFirst()
    {
        QFETCH(QString, field);
        CourseEntry entry = exampleCourseEntry();
        QString &text = field == "marsh" ? entry.marsh : field == "klient" ? entry.klient : field == "kola" ? entry.kola
                        : field == "tovar" ? entry.tovar : entry.ton;
        text.insert(1, QChar(u'\0'));
        entry.driver.clear();  // would be refused too, but later
        const auto result = checkCourse(entry, adding, leva());
        QVERIFY(result.refusal);
        QCOMPARE(*result.refusal, controlCharacterMessage(QStringLiteral("ГРЕШКА при запис!")));
    }
};

QTEST_APPLESS_MAIN(CourseCheckTest)
#include "tst_coursecheck.moc"
