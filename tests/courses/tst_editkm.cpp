#include "forms/messageservice.h"
#include "courses/coursepricing.h"
#include "courses/coursestore.h"
#include "courses/editkm.h"
#include "coursesfixture.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QSqlQuery>
#include <QTableView>

using namespace zarek;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

const QString truck = QStringLiteral("СА 1234 ВК");
const Period march{QDate(2006, 3, 1), QDate(2006, 3, 31)};

// A course of 10 t at 0,125, priced as the editor prices it.
bool insert(QSqlDatabase db, QDate date, const QString &kola, double km, const QString &marsh, double ton = 10,
            double tarifa = 0.125)
{
    const CourseMoney money = priceCourse(ton, km, tarifa);
    return test::insertCourse(db, {.data = date, .kola = kola, .ton = ton, .km = km, .tarifa = tarifa,
                                   .bruto = money.bruto.toDouble(), .marsh = marsh, .procent = money.procent.toDouble(),
                                   .neto = money.neto.toDouble()});
}

bool fill(QSqlDatabase db)
{
    return insert(db, QDate(2006, 3, 10), truck, 1, QStringLiteral("Перник - София"))
           && insert(db, QDate(2006, 3, 2), truck, 1, QStringLiteral("София - Перник"))
           && insert(db, QDate(2006, 3, 2), truck, 1, QStringLiteral("Батановци - Перник"))
           && insert(db, QDate(2006, 3, 5), truck, 25, QStringLiteral("Не е заместител"))
           && insert(db, QDate(2006, 3, 6), QStringLiteral("РК 7777 АА"), 1, QStringLiteral("Друга кола"))
           && insert(db, QDate(2006, 4, 1), truck, 1, QStringLiteral("След периода"));
}

// The columns named of the course of a route, as "value|value|…".
QString courseOf(QSqlDatabase db, const QString &marsh, const QString &columns)
{
    return test::rowsText(db, QStringLiteral("SELECT %1 FROM tabl WHERE Marsh = ?").arg(columns), {marsh});
}

}

// A fresh database of the current engine with the courses, the messages recorded, and the
// kilometre correction on the truck's courses of March.
#define EDITKM_OF_MARCH()                     \
    ZAREK_SCRATCH_DB(scratch);                \
    QVERIFY(fill(scratch.db()));              \
    RecordingMessageService messages;         \
    EditKM screen(truck, march, scratch.db())

class EditKmTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void theGridListsTheTrucksPlaceholderCoursesOfThePeriodOnly()
    {
        EDITKM_OF_MARCH();
        QCOMPARE(screen.objectName(), QStringLiteral("EditKM"));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Корекция КМ на курсовете на кола СА 1234 ВК"));
        QVERIFY(screen.printButton()->isHidden());
        // Date, route, km and sum.
        QCOMPARE(test::gridRows(screen.model(), QStringLiteral(" "), {0, 1, 4, 7}),
                 (QStringList{"02.03.2006 Батановци - Перник 1 1,25", "02.03.2006 София - Перник 1 1,25",
                              "10.03.2006 Перник - София 1 1,25"}));
        QVERIFY(messages.shown.isEmpty());
        // A truck without placeholders gives an empty grid, without a message.
        EditKM none(QStringLiteral("ВТ 0000 ХХ"), march, scratch.db());
        QCOMPARE(none.model()->rowCount(), 0);
        QVERIFY(messages.shown.isEmpty());
    }

    void correctedKilometresAndRateArePricedAgainInTheSameWrite()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fill(scratch.db()));
        QVERIFY(test::addBands(scratch));
        EditKM screen(truck, march, scratch.db());
        test::showActive(screen);
        QTRY_COMPARE(screen.currentRow(), 0);
        QTableView *grid = screen.grid();
        grid->setCurrentIndex(screen.model()->index(1, 4));  // София - Перник, Км
        QTest::keyClick(grid, Qt::Key_F4);
        for (const char c : QByteArray("137"))
            QTest::keyClick(QApplication::focusWidget(), c);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QTRY_COMPARE(screen.model()->index(1, 4).data().toString(), QStringLiteral("137"));

        const QString figures = QStringLiteral("km, Tarifa, bruto, procent, neto, row_version");
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("София - Перник"), figures), "137|0.12|164.4|4.93|159.47|2");  // the band of 137 km
        QCOMPARE(test::gridRows(screen.model(), QStringLiteral("|"), {6, 7}).value(1), QStringLiteral("0,120|164,40"));

        // The rate of the same row next: the row's new version is used.
        QVERIFY(screen.model()->setData(screen.model()->index(1, 6), QStringLiteral("0,2")));
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("София - Перник"), figures), "137|0.2|274|8.22|265.78|3");
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("Перник - София"), "row_version"), "1");  // the other rows untouched
    }

    // Correcting 1 km to 215 km kept the 0,350 of the shortest band: 970,72 instead of 277,35.
    void aKilometreCorrectionKeptThePlaceholdersRate()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(test::addBands(scratch));
        for (const char *marsh : {"Перник - Бургас", "Перник - Варна"})
            QVERIFY(insert(scratch.db(), QDate(2006, 3, 7), truck, 1, QString::fromUtf8(marsh), 12.9, 0.35));
        RecordingMessageService messages;
        EditKM screen(truck, march, scratch.db());
        ResultGridModel *model = screen.model();
        screen.setEditingAllowed(true);
        QVERIFY(model->setData(model->index(0, 4), QStringLiteral("215")));
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("Перник - Бургас"), "Tarifa, bruto, neto"), "0.1|277.35|269.03");
        // The corrected row stays in the open grid with its new rate and sum, its rate still editable.
        QCOMPARE(test::gridRows(model, QStringLiteral("|"), {4, 6, 7}), (QStringList{"215|0,100|277,35", "1|0,350|4,52"}));
        QVERIFY(model->setData(model->index(0, 6), QStringLiteral("0,11")));
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("Перник - Бургас"), "bruto"), "305.08");  // 12,9 t x 215 km x 0,110

        // A rate typed in the row first is kept when the kilometres follow.
        QVERIFY(model->setData(model->index(1, 6), QStringLiteral("0,2")));
        QVERIFY(model->setData(model->index(1, 4), QStringLiteral("40")));
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("Перник - Варна"), "Tarifa, bruto"), "0.2|103.2");
        QVERIFY(messages.shown.isEmpty());
        EditKM again(truck, march, scratch.db());
        QCOMPARE(again.model()->rowCount(), 0);  // gone the next time the screen opens
    }

    void aCourseChangedMeanwhileIsNotOverwritten()
    {
        EDITKM_OF_MARCH();
        QSqlDatabase other = scratch.openSecondConnection();
        QSqlQuery change(other);
        QVERIFY(change.exec(QStringLiteral("UPDATE tabl SET km = 55, row_version = row_version + 1 "
                                           "WHERE Marsh = 'Перник - София'")));
        screen.setEditingAllowed(true);
        QVERIFY(!screen.model()->setData(screen.model()->index(2, 4), QStringLiteral("80")));
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first(), CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("Перник - София"), "km, bruto"), "55|1.25");
        QCOMPARE(screen.model()->index(2, 4).data().toString(), QStringLiteral("1"));
    }

    // The grid's edits once went around the course checks: a negative or impossible figure was priced and saved.
    void figuresBeyondTheirLimitsAreRefusedHereToo_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("typed");
        QTest::newRow("negative km") << 4 << "-137";
        QTest::newRow("km beyond a day's") << 4 << "1000000000";
        QTest::newRow("negative rate") << 6 << "-0,2";
        QTest::newRow("rate beyond its limit") << 6 << "1000";
    }
    void figuresBeyondTheirLimitsAreRefusedHereToo()
    {
        QFETCH(int, column);
        QFETCH(QString, typed);
        EDITKM_OF_MARCH();
        screen.setEditingAllowed(true);
        QVERIFY(!screen.model()->setData(screen.model()->index(1, column), typed));
        QCOMPARE(onlyTitle(messages.shown), QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(messages.shown.first().text.section(QLatin1Char('\n'), 0, 0).contains(QStringLiteral("извън разрешените граници")));
        QCOMPARE(courseOf(scratch.db(), QStringLiteral("София - Перник"), "km, row_version"), "1|1");
    }
};

QTEST_MAIN(EditKmTest)
#include "tst_editkm.moc"
