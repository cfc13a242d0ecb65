#include "forms/commandday.h"
#include "core/formats.h"
#include "data/scratchdatabase.h"
#include "reports/reportlayout.h"
#include "settlement/courselists.h"
#include "settlementfixture.h"
#include "laidoutpapers.h"
#include "testdatabase.h"

#include <QTemporaryDir>

using namespace zarek;
using namespace zarek::test;

namespace {

const QString truck = QStringLiteral("СА 1234 ВК");

// Driver 007 in March 2006: two paid courses on one day (routes out of order), two unpaid.
bool fillCourses(QSqlDatabase db)
{
    return insertCourse(db, {QDate(2006, 3, 9), "007", truck, "София - Перник", 10, 25, 0.125, 31.25, 30.31, true})
           && insertCourse(db, {QDate(2006, 3, 9), "007", truck, "Батановци - Перник", 20, 100, 0.05, 100, 97, true})
           && insertCourse(db, {QDate(2006, 3, 2), "007", truck, "Перник - Радомир", 12.5, 40, 0.1, 50, 48.5, true})
           && insertCourse(db, {QDate(2006, 3, 31), "007", truck, "Перник - София", 10, 30, 0.1375, 41.25, 40.01})
           && insertCourse(db, {QDate(2006, 3, 1), "007", truck, "Радомир - Перник", 7.25, 12, 0.3, 26.1, 25.32})
           && insertCourse(db, {QDate(2006, 3, 3), "008", truck, "Друг шофьор", 10, 25, 0.4, 100, 97, true})
           && insertCourse(db, {QDate(2006, 4, 1), "007", truck, "След периода", 10, 25, 0.4, 100, 97});
}

}

class CourseListsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { addEngineRows(); }

    void theListsGoByDateThenRoute_data()
    {
        QTest::addColumn<bool>("paid");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QStringList>("rows");
        QTest::addColumn<QString>("total");
        QTest::newRow("paid") << true << "Зарек 2.3 - Справка платени курсове"
                              << QStringList{"1 | 02.03.2006 | СА 1234 ВК | Перник - Радомир | Пясък | 12,500 | 40 | 0,10 | 48,50",
                                             "2 | 09.03.2006 | СА 1234 ВК | Батановци - Перник | Пясък | 20,000 | 100 | 0,05 | 97,00",
                                             "3 | 09.03.2006 | СА 1234 ВК | София - Перник | Пясък | 10,000 | 25 | 0,12 | 30,31"}
                              << "Всичко: 175,81 ";
        QTest::newRow("unpaid") << false << "Зарек 2.3 - Справка неплатени курсове"
                                << QStringList{"1 | 01.03.2006 | СА 1234 ВК | Радомир - Перник | Пясък | 7,250 | 12 | 0,30 | 25,32",
                                               "2 | 31.03.2006 | СА 1234 ВК | Перник - София | Пясък | 10,000 | 30 | 0,14 | 40,01"}
                                << "Всичко: 65,33 ";
    }
    void theListsGoByDateThenRoute()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(bool, paid);
        QFETCH(QString, caption);
        QFETCH(QStringList, rows);
        QFETCH(QString, total);
        QVERIFY(fillCourses(scratch.db()));
        QTemporaryDir folder;
        zarek::ScratchDatabase temp(folder.path());
        const Checked<Report> report =
            BuildDriverCourseList(paid, marchOf(QStringLiteral("007")), scratch.db(), temp, exampleFirm(), commandDay());
        QVERIFY(report.ok());
        QCOMPARE(report.value().windowCaption(), caption);
        const QStringList lines = laidOut(report).textLines();
        QCOMPARE(lines.mid(0, 7),
                 (QStringList{"Транспорт Петров ЕООД", "София, ул. Искър 12",
                              "тел:02 987 65 43, факс:0888 123 456, E-mail:office@petrov.bg, URL:http//www.petrov.bg",
                              "Извлечение", "за курсовете на Иван Д'Арков", "за периода от 01.03.2006 до 31.03.2006",
                              "№ | Дата | Кола | Маршрут | Товар | Тон. | КМ | Тар. | Сума"}));
        QCOMPARE(lines.mid(7, rows.size()), rows);
        QCOMPARE(lines.at(7 + rows.size()), total + amountUnit(Currency::Leva));
        // A list, not a payment paper: no receipt.
        QCOMPARE(lines.at(8 + rows.size()), QStringLiteral("Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd."));
        QCOMPARE(lines.size(), 9 + rows.size());
    }

    void bothEmptyListsSayNoPaidCourses_data()
    {
        QTest::addColumn<bool>("paid");
        QTest::newRow("paid") << true;
        QTest::newRow("unpaid") << false;
    }
    void bothEmptyListsSayNoPaidCourses()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(bool, paid);
        QVERIFY(fillCourses(scratch.db()));
        QTemporaryDir folder;
        zarek::ScratchDatabase temp(folder.path());
        SearchConditions conditions = marchOf(QStringLiteral("007"));
        conditions.period = {QDate(2006, 5, 1), QDate(2006, 5, 31)};
        const Checked<Report> report = BuildDriverCourseList(paid, conditions, scratch.db(), temp, exampleFirm(), commandDay());
        QVERIFY(!report.ok());
        QCOMPARE(report.message(), (UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма платени курсове!")}));
    }

    void aSecondListStartsFromAnEmptyTable()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        QTemporaryDir folder;
        zarek::ScratchDatabase temp(folder.path());
        QVERIFY(BuildDriverCourseList(true, marchOf(QStringLiteral("007")), scratch.db(), temp, exampleFirm(), commandDay()).ok());
        const Checked<Report> second =
            BuildDriverCourseList(false, marchOf(QStringLiteral("007")), scratch.db(), temp, exampleFirm(), commandDay());
        QVERIFY(second.ok());
        QCOMPARE(second.value().data().rowCount(), 2);
        QCOMPARE(test::countBy(temp.db(), QStringLiteral("SELECT COUNT(*) FROM TempPlaten")), 2);
    }
};

QTEST_MAIN(CourseListsTest)
#include "tst_courselists.moc"
