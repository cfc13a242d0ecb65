#include "forms/commandday.h"
#include "courses/coursejournal.h"
#include "core/currency.h"
#include "core/formats.h"
#include "courses/kurs.h"
#include "forms/recordform.h"
#include "forms/messageservice.h"
#include "coursesfixture.h"
#include "testdatabase.h"

#include <QCollator>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QTemporaryDir>

using namespace zarek;

namespace {

// Six clients whose Bulgarian order differs from the order of their code points; the net is left 0.
const QList<test::CourseRow> courses = {
    {QDate(2026, 3, 1), "007", "СА 1234 ВК", "Бетон АД", 10, 25, 0.125, 31.25, true, true, "София - Перник", 0, 0},
    {QDate(2026, 3, 2), "008", "РВ 7777 АА", "вихър ЕТ", 12.5, 40, 0.1, 50, false, false, "Пловдив - София", 0, 0},
    {QDate(2026, 3, 3), "007", "СА 1234 ВК", "Арго ООД", 20, 100, 0.05, 100, false, false, "Перник - Радомир", 0, 0},
    {QDate(2026, 3, 4), "007", "СА 1234 ВК", "Яна ЕООД", 7.25, 12, 0.3, 26.1, false, true, "софия - Банкя", 0, 0},
    {QDate(2026, 3, 5), "008", "СА 1234 ВК", "Ъгъл ООД", 8, 200, 0.04, 64, true, false, "Русе - Варна", 0, 0},
    {QDate(2026, 4, 1), "007", "СА 1234 ВК", "Д'Аргос ООД", 10, 25, 0.125, 31.25, false, false, "София - Перник", 0, 0},
};

bool fill(QSqlDatabase db)
{
    if (!test::execAll(db, {QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('007', 'Иван Петров')"),
                            QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('008', 'Георги Стоянов')")}))
        return false;
    return std::all_of(courses.begin(), courses.end(), [&db](const test::CourseRow &c) { return test::insertCourse(db, c); });
}

int directCount(QSqlDatabase db, const QString &where, const QVariantList &values)
{
    const QVariant count = test::scalar(db, QStringLiteral("SELECT COUNT(*) FROM tabl WHERE ") + where, values);
    return count.typeId() == QMetaType::QString ? -1 : count.toInt();
}

QStringList column(const CourseJournal &journal, JournalColumn column)
{
    QStringList values;
    for (int r = 0; r < journal.model()->rowCount(); ++r)
        values.append(journal.model()->index(r, int(column)).data().toString());
    return values;
}

}

// A fresh database of the current engine with the sample courses, the messages recorded, and the
// journal on it.
#define JOURNAL_OF_THE_SAMPLE()         \
    ZAREK_SCRATCH_DB(scratch);          \
    QVERIFY(fill(scratch.db()));        \
    RecordingMessageService messages;   \
    CourseJournal journal(scratch.db())

class CourseJournalTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void conditionsCombineAndAgreeWithADirectCount_data()
    {
        QTest::addColumn<QString>("truck");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<int>("paid");  // 0 all, 1 paid, 2 unpaid
        QTest::addColumn<QString>("where");
        QTest::addColumn<QVariantList>("values");
        QTest::newRow("truck, March, unpaid")
            << "1234" << "01.03.2026" << "31.03.2026" << 2 << "kola = ? AND data BETWEEN ? AND ? AND plat = ?"
            << QVariantList{QStringLiteral("СА 1234 ВК"), QDate(2026, 3, 1), QDate(2026, 3, 31), false};
        QTest::newRow("lower-case truck text") << "са 1234" << "" << "" << 0 << "kola = ?"
                                               << QVariantList{QStringLiteral("СА 1234 ВК")};
        QTest::newRow("both ends count") << "" << "02.03.2026" << "04.03.2026" << 0 << "data BETWEEN ? AND ?"
                                         << QVariantList{QDate(2026, 3, 2), QDate(2026, 3, 4)};
        QTest::newRow("paid only") << "" << "" << "" << 1 << "plat = ?" << QVariantList{true};
        QTest::newRow("no such truck") << "ХХ 0000" << "" << "" << 0 << "1 = 0" << QVariantList{};
    }
    void conditionsCombineAndAgreeWithADirectCount()
    {
        QFETCH(QString, truck);
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(int, paid);
        QFETCH(QString, where);
        QFETCH(QVariantList, values);
        JOURNAL_OF_THE_SAMPLE();
        journal.findChild<QLineEdit *>(QStringLiteral("txtTruck"))->setText(truck);
        journal.findChild<QLineEdit *>(QStringLiteral("txtFrom"))->setText(from);
        journal.findChild<QLineEdit *>(QStringLiteral("txtTo"))->setText(to);
        journal.findChild<QComboBox *>(QStringLiteral("cboPaid"))->setCurrentIndex(paid);
        journal.applyFilter();
        journal.refreshSummary();
        const int expected = directCount(scratch.db(), where, values);
        QCOMPARE(journal.model()->rowCount(), expected);
        QCOMPARE(journal.totals().count, expected);
    }

    void theTextOfRouteOrCargoMatchesWhateverTheCase()
    {
        JOURNAL_OF_THE_SAMPLE();
        journal.findChild<QLineEdit *>(QStringLiteral("txtText"))->setText(QStringLiteral("СОФИЯ"));
        journal.applyFilter();
        journal.refreshSummary();
        QCOMPARE(journal.model()->rowCount(), 4);  // "София - …", "… - София" and "софия - Банкя"
        journal.findChild<QLineEdit *>(QStringLiteral("txtDriver"))->setText(QStringLiteral("георги"));
        journal.applyFilter();
        journal.refreshSummary();
        QCOMPARE(journal.model()->rowCount(), 1);
    }

    void sortingFollowsTheBulgarianAlphabetAndDates()
    {
        JOURNAL_OF_THE_SAMPLE();
        // The newest first when the journal opens.
        QCOMPARE(column(journal, JournalColumn::Date),
                 (QStringList{"01.04.2026", "05.03.2026", "04.03.2026", "03.03.2026", "02.03.2026", "01.03.2026"}));
        journal.model()->sort(int(JournalColumn::Client), Qt::AscendingOrder);
        QCOMPARE(column(journal, JournalColumn::Client),
                 (QStringList{"Арго ООД", "Бетон АД", "вихър ЕТ", "Д'Аргос ООД", "Ъгъл ООД", "Яна ЕООД"}));
        journal.model()->sort(int(JournalColumn::Client), Qt::DescendingOrder);
        QCOMPARE(column(journal, JournalColumn::Client).first(), QStringLiteral("Яна ЕООД"));
        journal.model()->sort(int(JournalColumn::Gross), Qt::DescendingOrder);
        QCOMPARE(column(journal, JournalColumn::Gross).first(), QStringLiteral("100,00"));
    }

    void theTotalsAreThoseOfTheRowsShown()
    {
        JOURNAL_OF_THE_SAMPLE();
        journal.findChild<QLineEdit *>(QStringLiteral("txtTo"))->setText(QStringLiteral("31.03.2026"));
        journal.applyFilter();
        journal.refreshSummary();
        double tonnes = 0, km = 0, gross = 0;
        for (int r = 0; r < journal.model()->rowCount(); ++r) {
            tonnes += journal.model()->rowAt(r)->tonnes;
            km += journal.model()->rowAt(r)->km;
            gross += journal.model()->rowAt(r)->gross;
        }
        QCOMPARE(journal.totals().count, 5);
        QCOMPARE(journal.totals().tonnes, tonnes);
        QCOMPARE(journal.totals().km, km);
        QCOMPARE(journal.totals().gross, std::round(gross * 100) / 100);
        const QString label = journal.findChild<QLabel *>(QStringLiteral("lblTotals"))->text();
        QVERIFY2(label.startsWith(QStringLiteral("Курсове: 5    Тонаж: 57,750    Км: 377    Бруто: 271,35")), qPrintable(label));
        // March, the only month of the rows shown.
        QCOMPARE(journal.months().size(), 1);
        QCOMPARE(journal.months().first().first, QStringLiteral("2026-03"));
        QCOMPARE(journal.months().first().second, 271.35);
    }

    void aCourseOpenedAndSavedShowsItsNewValuesAndStaysCurrent()
    {
        JOURNAL_OF_THE_SAMPLE();
        QSqlDatabase db = scratch.db();
        journal.openCourse = [db](qint64 id) {
            return test::execBound(db, QStringLiteral("UPDATE tabl SET Klient = ?, data = ? WHERE id = ?"),
                                   {QStringLiteral("Нов клиент"), QDate(2026, 5, 1), id});
        };
        journal.grid()->setCurrentIndex(journal.model()->index(4, int(JournalColumn::Client)));
        const qint64 id = journal.model()->idAt(4);
        QTest::keyClick(journal.grid(), Qt::Key_Return);
        const int row = journal.model()->rowOf(id);
        QCOMPARE(row, 0);  // moved to the top by its new date
        QCOMPARE(journal.grid()->currentIndex().row(), row);
        QCOMPARE(journal.model()->index(row, int(JournalColumn::Client)).data().toString(), QStringLiteral("Нов клиент"));
    }

    void aCourseCorrectedInTheCourseEditorShowsItsNewFigures()
    {
        JOURNAL_OF_THE_SAMPLE();
        QSqlDatabase db = scratch.db();
        bool opened = false;
        journal.openCourse = [db, &opened](qint64 id) {
            const std::unique_ptr<Kurs> screen = Kurs::forCourse(db, id);
            if (!screen)
                return false;
            opened = screen->recordForm()->state() == RecordForm::State::Editing;
            screen->findChild<QLineEdit *>(QStringLiteral("txtFields_12"))->setText(QStringLiteral("11"));
            return screen->recordForm()->update();
        };
        journal.grid()->setCurrentIndex(journal.model()->index(3, int(JournalColumn::Tonnes)));  // Арго ООД, 20 t
        QCOMPARE(journal.model()->index(3, int(JournalColumn::Tonnes)).data().toString(), QStringLiteral("20,000"));
        QTest::keyClick(journal.grid(), Qt::Key_Return);
        QVERIFY2(messages.shown.isEmpty(), messages.shown.isEmpty() ? "" : qPrintable(messages.shown.first().text));
        QVERIFY(opened);
        QCOMPARE(journal.grid()->currentIndex().row(), 3);
        QCOMPARE(journal.model()->index(3, int(JournalColumn::Tonnes)).data().toString() + '|'
                     + journal.model()->index(3, int(JournalColumn::Gross)).data().toString(), QStringLiteral("11,000|55,00"));
    }

    void theListGoesToASpreadsheetAsShown()
    {
        JOURNAL_OF_THE_SAMPLE();
        journal.model()->sort(int(JournalColumn::Client), Qt::AscendingOrder);
        QTemporaryDir dir;
        const QString csv = dir.filePath(QStringLiteral("журнал.csv"));
        QVERIFY(journal.exportTo(csv));
        const QStringList lines = test::csvLines(csv);
        QCOMPARE((QStringList{lines.value(1), lines.value(2), lines.value(5), lines.value(8)}),
                 (QStringList{"Дата;Шофьор;Кола;Клиент;Маршрут;Товар;Тон.;Км;Тарифа;Бруто;Фактура №;Факт.;Платен",
                              "03.03.2026;Иван Петров;СА 1234 ВК;Арго ООД;Перник - Радомир;Пясък;20,000;100;0,050;100,00;0000000000;Не;Не",
                              "01.04.2026;Иван Петров;СА 1234 ВК;Д'Аргос ООД;София - Перник;Пясък;10,000;25;0,125;31,25;0000000000;Не;Не",
                              "Всичко:;;;;;;67,750;402;;302,60;;;"}));
        QVERIFY(journal.exportTo(dir.filePath(QStringLiteral("журнал.xlsx"))));
        QVERIFY(messages.shown.isEmpty());
    }

    // Across the changeover the file's total is the one under the grid, to the cent, with the note.
    void aSpreadsheetAcrossTheChangeoverTotalsAsTheScreen()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fill(scratch.db()));
        // Two leva courses of a stotinka: converted one by one they would add two cents, the
        // month's leva converted once adds one.
        for (int i = 0; i < 2; ++i)
            QVERIFY(test::insertCourse(scratch.db(), {QDate(2026, 3, 2), "007", "СА 1234 ВК", "Арго ООД", 1, 1, 0.01, 0.01,
                                                      false, false, "а", 0, 0}));
        setCommandDay({Changeover{QDate(2026, 3, 3)}, QDate::currentDate()});
        const auto restore = qScopeGuard([] { setCommandDay({}); });
        RecordingMessageService messages;
        CourseJournal journal(scratch.db());
        journal.refreshSummary();
        QCOMPARE(journal.totals().currency, Currency::Euro);
        QVERIFY(journal.totals().converted);
        QTemporaryDir dir;
        const QString csv = dir.filePath(QStringLiteral("журнал.csv"));
        QVERIFY(journal.exportTo(csv));
        const QStringList lines = test::csvLines(csv);
        const QString total = lines.value(10);
        QVERIFY2(total.startsWith(QStringLiteral("Всичко:;;;;;;69,750;404;;")), qPrintable(total));
        QCOMPARE(total.section(QLatin1Char(';'), 9, 9), formatAmount(journal.totals().gross));
        QVERIFY(total.endsWith(QStringLiteral(";евро")));
        QCOMPARE(lines.value(11), conversionNote(commandDay().changeover, Currency::Euro));
        QVERIFY(journal.findChild<QLabel *>(QStringLiteral("lblTotals"))->text().contains(formatAmount(journal.totals().gross)));
        QVERIFY(messages.shown.isEmpty());
    }

    // The journal reads a page at a time in the order the database gives: far down the list, in
    // every order, the rows are those of the whole list ordered here, ties by date.
    void pagesFarDownFollowTheWholeOrder_data()
    {
        QTest::addColumn<int>("sortColumn");
        QTest::addColumn<bool>("ascending");
        QTest::newRow("newest first") << int(JournalColumn::Date) << false;
        QTest::newRow("clients, Bulgarian alphabet") << int(JournalColumn::Client) << true;
        QTest::newRow("clients backwards") << int(JournalColumn::Client) << false;
        QTest::newRow("drivers by name") << int(JournalColumn::Driver) << true;
        QTest::newRow("gross, largest first") << int(JournalColumn::Gross) << false;
        QTest::newRow("paid first") << int(JournalColumn::Paid) << false;
    }
    void pagesFarDownFollowTheWholeOrder()
    {
        QFETCH(int, sortColumn);
        QFETCH(bool, ascending);
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fill(scratch.db()));
        QVERIFY(scratch.db().transaction());
        for (int i = 0; i < 2 * CourseJournalModel::pageSize + 50; ++i) {
            test::CourseRow row = courses.at(i % courses.size());
            row.data = QDate(2025, 1, 1).addDays(i % 37);
            row.bruto = (i * 7 % 90) + 0.5;
            row.plat = i % 3 == 0;
            QVERIFY(test::insertCourse(scratch.db(), row));
        }
        QVERIFY(scratch.db().commit());
        CourseJournal journal(scratch.db());
        journal.model()->sort(sortColumn, ascending ? Qt::AscendingOrder : Qt::DescendingOrder);
        // The whole list by date and id, ordered here by the column's value, ties kept by date.
        CourseJournalStore store(scratch.db());
        QVERIFY(!store.refreshLists());
        const Checked<QList<JournalRow>> all = store.allRows({}, JournalColumn::Date, true);
        QVERIFY(all);
        QList<JournalRow> expected = all.value();
        QCollator collator{QLocale(QLocale::Bulgarian, QLocale::Bulgaria)};
        const auto column = static_cast<JournalColumn>(sortColumn);
        const auto key = [&](const JournalRow &r) {
            return column == JournalColumn::Driver ? QVariant(r.driverName) : r.value(column);
        };
        const auto before = [&](const JournalRow &a, const JournalRow &b) {
            const QVariant x = key(a), y = key(b);
            if (x.metaType().id() == QMetaType::QString)
                return collator.compare(x.toString(), y.toString()) < 0;
            return QVariant::compare(x, y) == QPartialOrdering::Less;
        };
        if (column == JournalColumn::Date && !ascending)
            std::reverse(expected.begin(), expected.end());
        else if (column != JournalColumn::Date)
            std::stable_sort(expected.begin(), expected.end(), [&](const JournalRow &a, const JournalRow &b) {
                return ascending ? before(a, b) : before(b, a);
            });
        QCOMPARE(journal.model()->rowCount(), expected.size());
        QList<qint64> shown, wanted;
        for (int r = 0; r < expected.size(); ++r) {
            shown.append(journal.model()->idAt(r));
            wanted.append(expected.at(r).id);
        }
        QCOMPARE(shown, wanted);
        // A course far down is found where it stands.
        QCOMPARE(journal.model()->rowOf(wanted.at(wanted.size() - 3)), int(wanted.size() - 3));
        const Checked<ExportTable> table = journal.exportTable();
        QVERIFY(table);
        QCOMPARE(table.value().rowCount, int(expected.size()));
        QCOMPARE(table.value().cell(int(expected.size()) - 1, int(JournalColumn::Gross)), expected.last().value(JournalColumn::Gross));
    }
};

QTEST_MAIN(CourseJournalTest)
#include "tst_coursejournal.moc"
