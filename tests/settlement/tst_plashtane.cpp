#include "core/formats.h"
#include "data/scratchdatabase.h"
#include "data/sqlerror.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "settlement/paysheetstore.h"
#include "settlement/plashtane.h"
#include "settlementfixture.h"
#include "queryrows.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QLabel>
#include <algorithm>
#include <QLineEdit>
#include <QTemporaryDir>
#include <memory>

using namespace zarek;
using namespace zarek::test;

namespace {

const QString truck = QStringLiteral("СА 1234 ВК");
const QDate today(2006, 4, 5);

// Driver 007: three unpaid courses in March 2006, one paid; driver 008 and April are elsewhere.
// The driver earns 20 % of a course of truck СА 1234 ВК (20 t) and 10 % of one of РВ 7777 АА
// (10 t): 6,25 on the first course, 3,00 on the second (two tonnes over), 20,00 on the third.
bool fillCourses(QSqlDatabase db)
{
    return insertDriver(db, QStringLiteral("007"), driverName(), QStringLiteral("7503124567"),
                        QStringLiteral("645123987"))
           && insertTruck(db, truck, 20, 20) && insertTruck(db, QStringLiteral("РВ 7777 АА"), 10, 10)
           && insertCourse(db, {QDate(2006, 3, 17), "007", truck, "Батановци - Перник", 20, 100, 0.05, 100, 97})
           && insertCourse(db, {QDate(2006, 3, 1), "007", truck, "София - Перник", 10, 25, 0.125, 31.25, 30.31})
           && insertCourse(db, {QDate(2006, 3, 5), "007", "РВ 7777 АА", "Перник - Радомир", 12.5, 40, 0.1, 50, 48.5})
           && insertCourse(db, {QDate(2006, 3, 20), "007", truck, "Платен", 10, 25, 0.4, 100, 97, true})
           && insertCourse(db, {QDate(2006, 3, 7), "008", truck, "Друг шофьор", 10, 25, 0.4, 100, 97})
           && insertCourse(db, {QDate(2006, 4, 1), "007", truck, "След периода", 10, 25, 0.4, 100, 97});
}

bool changeElsewhere(QSqlDatabase other, const QString &marsh, const QString &assignment)
{
    QSqlQuery query(other);
    query.prepare(QStringLiteral("UPDATE tabl SET %1, row_version = row_version + 1 WHERE Marsh = ?").arg(assignment));
    query.addBindValue(marsh);
    return query.exec() && query.numRowsAffected() == 1;
}

void space(Plashtane &screen, int row)
{
    screen.grid()->setCurrentIndex(screen.model()->index(row, 0));
    QTest::keyClick(screen.grid(), Qt::Key_Space);
}

QString sumText(const Plashtane &screen)
{
    return screen.findChild<QLabel *>(QStringLiteral("Label4"))->text();
}

QString routeOf(const Plashtane &screen, int row)
{
    return screen.model()->value(row, QStringLiteral("Marsh")).toString();
}

// Presses "Печат" and reads the statement the preview shows, then closes it.
QStringList printStatement(Plashtane &screen)
{
    QStringList lines;
    test::onNextModal<ReportPreview>([&lines](ReportPreview &preview) {
        lines = preview.report().textLines();
        preview.reject();
    });
    screen.printButton()->click();
    return lines;
}

}

// Each test gets a fresh database with fillCourses(), a scratch sheet and a message recorder;
// open() makes the screen.
class PlashtaneTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<zarek::ScratchDatabase> temp;
    std::unique_ptr<Plashtane> plashtane;

    Plashtane &open(const SearchConditions &conditions = marchOf(QStringLiteral("007")))
    {
        plashtane = std::make_unique<Plashtane>(conditions, db, *temp, exampleFirm(), nullptr, today);
        return *plashtane;
    }
    QString sum(const char *amount) { return QString::fromUtf8(amount) + amountUnit(Currency::Leva); }
    // "paid vN" or "unpaid vN" of the course of that route.
    QString course(const char *marsh)
    {
        return test::row(db, "SELECT CASE WHEN plat = ? THEN 'paid v' ELSE 'unpaid v' END || row_version FROM tabl "
                             "WHERE Marsh = ?", {true, QString::fromUtf8(marsh)});
    }

private slots:
    void initTestCase_data() { addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        folder = std::make_unique<QTemporaryDir>();
        temp = std::make_unique<zarek::ScratchDatabase>(folder->path());
        // Every test but the pay sheet's runs on the courses of fillCourses().
        if (qstrcmp(QTest::currentTestFunction(), "theSumDueIsThePayOfThePaySheet") != 0)
            QVERIFY(fillCourses(db));
    }
    void cleanup()
    {
        plashtane.reset();
        temp.reset();
        folder.reset();
        tearDown();
    }

    void theScreenListsTheDriversUnpaidCoursesOfThePeriod()
    {
        Plashtane &screen = open();
        QCOMPARE(screen.objectName(), QStringLiteral("Plashtane"));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Плащане курсове"));
        QCOMPARE(screen.findChild<QLineEdit *>(QStringLiteral("Text1"))->text(),
                 QStringLiteral("Курсове na Иван Д'Арков към 05.04.2006"));
        const ResultGridModel *model = screen.model();
        QCOMPARE(model->rowCount(), 3);
        QCOMPARE(test::captions(model), (QStringList{"Дата", "Маршрут", "Товар", "Кола", "Км", "Тонаж", "Тар.", "Сума", "Плат."}));
        QCOMPARE(test::gridRows(model, QStringLiteral("|"), {0, 1, 2, 3, 4, 5, 6, 7}).first(),
                 QStringLiteral("01.03.2006|София - Перник|Пясък|СА 1234 ВК|25|10,000|0,125|30,31"));
        QCOMPARE(routeOf(screen, 1) + QLatin1Char(' ') + routeOf(screen, 2),
                 QStringLiteral("Перник - Радомир Батановци - Перник"));
        QCOMPARE(model->index(0, 8).data(Qt::CheckStateRole).value<Qt::CheckState>(), Qt::Unchecked);
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("Label8"))->text() + '|'
                     + screen.findChild<QLabel *>(QStringLiteral("Label1"))->text(), QStringLiteral("- Маркира плащане|Сума за плащане:"));
        QVERIFY(messages->shown.isEmpty());

        test::showActive(screen);
        // The legend says "Space - Маркира плащане": the first Space marks, it does not close.
        QTRY_VERIFY(screen.grid()->hasFocus());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QVERIFY(screen.isVisible());
        QCOMPARE(model->index(0, 8).data(Qt::CheckStateRole).value<Qt::CheckState>(), Qt::Checked);
    }

    void noUnpaidCourseLeavesTheEmptyScreenOpenWithTheMessage()
    {
        SearchConditions conditions = marchOf(QStringLiteral("007"));
        conditions.period = {QDate(2007, 1, 1), QDate(2007, 1, 31)};
        Plashtane &screen = open(conditions);
        QCOMPARE(screen.model()->rowCount(), 0);
        QCOMPARE(messages->shown, (QList<UserMessage>{{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма курсове за плащане!")}}));
        // Printing an empty grid: nothing is marked.
        screen.printButton()->click();
        QCOMPARE(messages->shown.last().text, QStringLiteral("Няма платени курсове!"));
    }

    void spaceWritesTheMarkAtOnceAndTwiceRestoresIt()
    {
        Plashtane &screen = open();
        QCOMPARE(sumText(screen), QString());

        space(screen, 0);
        QVERIFY(screen.model()->isMarked(0));
        QCOMPARE(screen.model()->index(0, 1).data(Qt::ForegroundRole).value<QColor>(), QColor(255, 0, 0));
        QCOMPARE(sumText(screen), sum("6,25"));
        QCOMPARE(course("София - Перник"), QStringLiteral("paid v2"));

        space(screen, 1);
        QCOMPARE(sumText(screen), sum("9,25"));
        space(screen, 1);
        QCOMPARE(sumText(screen), sum("6,25"));
        QCOMPARE(course("Перник - Радомир"), QStringLiteral("unpaid v3"));
        space(screen, 0);
        QCOMPARE(sumText(screen), sum("0,00"));
        QCOMPARE(screen.runningTotal(), Money());
        QCOMPARE(course("София - Перник"), QStringLiteral("unpaid v3"));
        QVERIFY(messages->shown.isEmpty());
        // The paid course of another opening stays as it was.
        QCOMPARE(course("Платен"), QStringLiteral("paid v1"));
        // Every mark taken back: there is nothing to print.
        screen.printButton()->click();
        QCOMPARE(messages->shown, (QList<UserMessage>{{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма платени курсове!")}}));
    }

    void anyKeyShowsTheSumAgain()
    {
        Plashtane &screen = open();
        QTest::keyClick(screen.grid(), Qt::Key_Down);
        QCOMPARE(sumText(screen), sum("0,00"));
        space(screen, 2);
        screen.findChild<QLabel *>(QStringLiteral("Label4"))->clear();
        QTest::keyClick(screen.grid(), Qt::Key_A);
        QCOMPARE(sumText(screen), sum("20,00"));
    }

    void aCourseChangedAtAnotherWorkstationIsNotMarked()
    {
        Plashtane &screen = open();
        QVERIFY(changeElsewhere(database->openSecondConnection(), QStringLiteral("Перник - Радомир"),
                                QStringLiteral("ton = 13, bruto = 60, neto = 58.2")));
        space(screen, 1);
        QCOMPARE(messages->shown, (QList<UserMessage>{rowConflictMessage(QStringLiteral("ГРЕШКА при запис!"))}));
        QVERIFY(course("Перник - Радомир").startsWith(QLatin1String("unpaid")));
        // The row shows what is stored now, unmarked, and a second Space marks that.
        QVERIFY(!screen.model()->isMarked(1));
        QCOMPARE(screen.model()->index(1, 7).data().toString(), QStringLiteral("58,20"));
        QCOMPARE(screen.runningTotal(), Money());
        space(screen, 1);
        QCOMPARE(messages->shown.size(), 1);
        QVERIFY(course("Перник - Радомир").startsWith(QLatin1String("paid")));
        // The pay of the course as stored now: 10 % of 60,00 less three fifths for three tonnes over.
        QCOMPARE(sumText(screen), sum("2,40"));
    }

    void aCoursePaidAtAnotherWorkstationLeavesTheGridUnpaidTwice()
    {
        Plashtane &screen = open();
        space(screen, 0);
        QVERIFY(changeElsewhere(database->openSecondConnection(), QStringLiteral("Батановци - Перник"),
                                QStringLiteral("plat = TRUE")));
        space(screen, 2);
        QCOMPARE(messages->shown.size(), 1);
        QCOMPARE(messages->shown.first(), rowConflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(screen.model()->rowCount(), 2);
        QCOMPARE(routeOf(screen, 0) + QLatin1Char(' ') + routeOf(screen, 1),
                 QStringLiteral("София - Перник Перник - Радомир"));
        QCOMPARE(sumText(screen), sum("6,25"));
        QCOMPARE(course("Батановци - Перник"), QStringLiteral("paid v2"));
    }

    void aMarkOfThisScreenChangedElsewhereKeepsTheSumEqualToTheMarks()
    {
        Plashtane &screen = open();
        space(screen, 0);
        space(screen, 2);
        QVERIFY(changeElsewhere(database->openSecondConnection(), QStringLiteral("Батановци - Перник"),
                                QStringLiteral("bruto = 90, neto = 87.3")));
        space(screen, 2);  // unmarking is refused: the course stays paid, with its new sum
        QCOMPARE(messages->shown.size(), 1);
        QVERIFY(screen.model()->isMarked(2));
        QVERIFY(course("Батановци - Перник").startsWith(QLatin1String("paid")));
        QCOMPARE(sumText(screen), sum("24,25"));
    }

    void theStatementListsTheMarkedCoursesOnceWithTheReceipt()
    {
        Plashtane &screen = open();
        test::showActive(screen);
        space(screen, 0);
        space(screen, 2);
        QStringList lines = printStatement(screen);
        QVERIFY2(lines.size() > 10, qPrintable(lines.join('\n')));
        QCOMPARE(lines.at(1), QStringLiteral("ул. Искър 12"));  // the address without the town
        QCOMPARE(lines.mid(3, 2), (QStringList{"Извлечение", "за курсовете на Иван Д'Арков"}));
        // The courses with their sums; the total and the receipt state what the driver earned on them.
        QCOMPARE(lines.mid(6, 5),
                 (QStringList{"№ | Дата | Кола | Маршрут | Товар | Тон. | КМ | Тар. | Сума",
                              "1 | 01.03.2006 | СА 1234 ВК | София - Перник | Пясък | 10,000 | 25 | 0,125 | 30,31",
                              "2 | 17.03.2006 | СА 1234 ВК | Батановци - Перник | Пясък | 20,000 | 100 | 0,050 | 97,00",
                              "Всичко заработка: 26,25 " + amountUnit(Currency::Leva), "Разписка №_____ / 05.04.2006"}));
        QVERIFY(lines.contains(QString(76, QLatin1Char(' ')) + QStringLiteral("Подпис: ") + QString(32, QLatin1Char('.'))));

        // A second print in the same opening lists each marked course once, numbered from 1 again.
        space(screen, 1);
        lines = printStatement(screen);
        for (const QString &course : QStringList{"1 | 01.03.2006", "2 | 05.03.2006", "3 | 17.03.2006"})
            QCOMPARE(lines.at(6 + course.left(1).toInt()).left(14), course);
        QCOMPARE(lines.at(10), QStringLiteral("Всичко заработка: 29,25 ") + amountUnit(Currency::Leva));
        // The marks stay and the screen stays open.
        QVERIFY(screen.isVisible());
        QVERIFY(course("Перник - Радомир").startsWith(QLatin1String("paid")));
        QVERIFY(messages->shown.isEmpty());
    }

    // The sum due and the receipt are the driver's pay of the marked courses as the pay sheet
    // works it out (the truck's percent, overload, the total added up before rounding), never the
    // courses' net sums.
    void theSumDueIsThePayOfThePaySheet_data()
    {
        QTest::addColumn<QList<int>>("marked");
        QTest::addColumn<QString>("sum");
        QTest::newRow("within the rated load") << QList<int>{3} << QStringLiteral("3,12");          // 10 % of 31,25
        QTest::newRow("0,9 t over pays in full") << QList<int>{0} << QStringLiteral("100,00");      // 20,9 t on 20 t
        QTest::newRow("three tonnes over") << QList<int>{1} << QStringLiteral("40,00");             // 23,5 t: 100 − 60 %
        QTest::newRow("another truck's percent") << QList<int>{4} << QStringLiteral("19,20");       // 12 %, 1 t over
        QTest::newRow("the whole sheet, added up unrounded") << QList<int>{0, 1, 2, 3, 4} << QStringLiteral("165,45");
    }
    void theSumDueIsThePayOfThePaySheet()
    {
        QFETCH(QList<int>, marked);
        QFETCH(QString, sum);
        QVERIFY(fillPaySheetExample(db));
        Plashtane &screen = open();
        QCOMPARE(screen.model()->rowCount(), 5);
        if (marked.size() == 5) {
            // The pay sheet of the same courses, before they are marked paid.
            const Checked<PaySheet> sheet = BuildDriverPaySheet(marchOf(QStringLiteral("007")), db, {Changeover{}, today});
            QVERIFY(sheet.ok());
            QCOMPARE(formatAmount(sheet.value().printedTotal()), sum);
        }
        test::showActive(screen);
        for (const int row : marked)
            space(screen, row);
        QCOMPARE(sumText(screen), sum + amountUnit(Currency::Leva));
        if (marked.size() == 5)
            test::saveScreenshot(screen, QStringLiteral("plashtane-pay"));
        const QStringList lines = printStatement(screen);
        QVERIFY(lines.contains(QStringLiteral("Всичко заработка: ") + sum + QLatin1Char(' ') + amountUnit(Currency::Leva)));
        const QString receipt = QStringLiteral(" получих сумата от ") + sum + QLatin1Char(' ') + amountUnit(Currency::Leva);
        QVERIFY2(std::any_of(lines.cbegin(), lines.cend(), [&](const QString &line) { return line.contains(receipt); }),
                 qPrintable(lines.join('\n')));
        QVERIFY(messages->shown.isEmpty());
    }

    // A course of a truck without a percent has no pay: it is not marked, and the message says why.
    void aCourseOfATruckWithoutAPercentIsNotMarked()
    {
        QVERIFY(database->exec(QStringLiteral("UPDATE Config SET Procent = 0 WHERE kola = 'РВ 7777 АА'")));
        Plashtane &screen = open();
        space(screen, 1);
        QCOMPARE(messages->shown, QList<UserMessage>{noPercentMessage(QStringLiteral("РВ 7777 АА"))});
        QVERIFY(!screen.model()->isMarked(1));
        QVERIFY(course("Перник - Радомир").startsWith(QLatin1String("unpaid")));
        space(screen, 0);
        QCOMPARE(sumText(screen), sum("6,25"));
    }

    void printingWithoutTheDriversRowIsRefused()
    {
        QVERIFY(database->exec(QStringLiteral("DELETE FROM shof")));
        Plashtane &screen = open();
        space(screen, 0);
        screen.printButton()->click();
        QCOMPARE(messages->shown, (QList<UserMessage>{{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма данни за шофьора!")}}));
    }
};

QTEST_MAIN(PlashtaneTest)
#include "tst_plashtane.moc"
