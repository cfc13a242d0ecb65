#include "core/currency.h"
#include "core/formats.h"
#include "data/scratchdatabase.h"
#include "reports/reportlayout.h"
#include "settlement/paysheetstore.h"
#include "settlement/scratchsheets.h"
#include "settlement/settlementreports.h"
#include "settlementfixture.h"
#include "testdatabase.h"

#include <QTemporaryDir>

using namespace zarek;
using namespace zarek::test;

namespace {

// A firm still in leva, on the day the test runs.
BooksDay leva()
{
    return {Changeover{}, QDate::currentDate()};
}

const QString truck = QStringLiteral("СА 1234 ВК");
const QString truck2 = QStringLiteral("РВ 7777 АА");
const QDate today(2006, 4, 5);


}

// Driver 007's pay sheet of March in leva (sheet), written to a scratch sheet (rows).
#define MARCH_PAY_SHEET_ROWS()                                                                               \
    const Checked<PaySheet> sheet = BuildDriverPaySheet(marchOf(QStringLiteral("007")), scratch.db(), leva()); \
    QVERIFY(sheet.ok());                                                                                    \
    QTemporaryDir folder;                                                                                   \
    zarek::ScratchDatabase temp(folder.path());                                                             \
    const Checked<RowSet> rows = writeTempZaplata(temp, sheet.value());                                     \
    QVERIFY(rows.ok())

class PaySheetStoreTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { addEngineRows(); }

    void theSheetPaysTheUnpaidCoursesOfThePeriodByDate()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillPaySheetExample(scratch.db()));
        int lastDone = 0;
        int lastTotal = 0;
        const Checked<PaySheet> sheet = BuildDriverPaySheet(marchOf(QStringLiteral("007")), scratch.db(), leva(),
                                                            [&](int done, int total) {
                                                                lastDone = done;
                                                                lastTotal = total;
                                                            });
        QVERIFY2(sheet.ok(), sheet.ok() ? "" : qPrintable(sheet.message().text));
        QCOMPARE(sheet.value().egn + '|' + sheet.value().lKarta, QStringLiteral("7503124567|645123987"));
        QStringList lines;
        for (const PaySheetLine &line : sheet.value().lines)
            lines << QStringLiteral("%1 %2 %3 %4").arg(line.red).arg(line.data.toString(Qt::ISODate), line.marsh,
                                                       formatAmount(line.zaplata()));
        QCOMPARE(lines, (QStringList{QStringLiteral("1 2006-03-01 София - Перник 100,00"),
                                     QStringLiteral("2 2006-03-05 Перник - София 40,00"),
                                     QStringLiteral("3 2006-03-10 Перник - Батановци 3,12"),
                                     QStringLiteral("4 2006-03-12 Батановци - Перник 3,12"),
                                     QStringLiteral("5 2006-03-31 Перник - Радомир 19,20")}));
        // The lines print 165,44; the unrounded pay adds up to 165,45.
        QCOMPARE(sheet.value().printedTotal(), Money::fromCents(16545));
        QCOMPARE(QPoint(lastDone, lastTotal), QPoint(5, 5));  // the progress told to the end
        // Run again, it gives the same sheet.
        const Checked<PaySheet> second = BuildDriverPaySheet(marchOf(QStringLiteral("007")), scratch.db(), leva());
        QVERIFY(second.ok());
        QCOMPARE(second.value().lines.size(), sheet.value().lines.size());
        QCOMPARE(second.value().total, sheet.value().total);
    }

    void theSheetIsRefusedWithTheReason_data()
    {
        QTest::addColumn<QString>("kod");
        QTest::addColumn<QString>("extraTruck");  // a further course of this truck, after computed ones
        QTest::addColumn<bool>("inConfig");       // the truck has a Config row at 0 %
        QTest::addColumn<QDate>("from");
        QTest::addColumn<QDate>("to");
        QTest::addColumn<QString>("message");
        const QDate first(2006, 3, 1);
        const QDate last(2006, 3, 31);
        QTest::newRow("no shof row for the code")
            << "008" << "" << false << first << last << "Няма данни за шофьора!";
        QTest::newRow("no unpaid course in the period")
            << "007" << "" << false << QDate(2006, 5, 1) << QDate(2006, 5, 31) << "Няма курсове за плащане!";
        QTest::newRow("a truck at 0 %")
            << "007" << "РК 0000 АА" << true << first << last << "Няма зададен процент за кола № РК 0000 АА !";
        QTest::newRow("a truck not in Config")
            << "007" << "ВТ 9999 ХХ" << false << first << last << "Няма зададен процент за кола № ВТ 9999 ХХ !";
    }
    void theSheetIsRefusedWithTheReason()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, kod);
        QFETCH(QString, extraTruck);
        QFETCH(bool, inConfig);
        QFETCH(QDate, from);
        QFETCH(QDate, to);
        QFETCH(QString, message);
        QVERIFY(fillPaySheetExample(scratch.db()));
        if (inConfig)
            QVERIFY(insertTruck(scratch.db(), extraTruck, 0, 20));
        if (!extraTruck.isEmpty())
            QVERIFY(insertCourse(scratch.db(), {QDate(2006, 3, 20), "007", extraTruck, "Без процент", 10, 25, 0.4, 100, 97}));
        SearchConditions conditions = marchOf(kod);
        conditions.period = {from, to};
        const Checked<PaySheet> sheet = BuildDriverPaySheet(conditions, scratch.db(), leva());
        QVERIFY(!sheet.ok());
        QCOMPARE(sheet.message(), (UserMessage{QStringLiteral("ВНИМАНИЕ!"), message}));
    }

    void aLongSheetIsLaidOutWholeInItsOrder()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(insertDriver(scratch.db(), QStringLiteral("007"), driverName(), QString(), QString()));
        QVERIFY(insertTruck(scratch.db(), truck, 10, 20));
        QVERIFY(scratch.db().transaction());
        for (int i = 0; i < 150; ++i)
            QVERIFY(insertCourse(scratch.db(), {QDate(2006, 3, 1).addDays(i / 5), "007", truck,
                                                QStringLiteral("Курс %1").arg(i), 10, 25, 0.1, 10.0 + i, 9}));
        QVERIFY(scratch.db().commit());
        MARCH_PAY_SHEET_ROWS();
        QCOMPARE(rows.value().rowCount(), 150);
        for (int row = 0; row < 150; ++row) {
            QCOMPARE(rows.value().value(row, QStringLiteral("Red")).toInt(), row + 1);
            QCOMPARE(rows.value().value(row, QStringLiteral("Marsh")).toString(), QStringLiteral("Курс %1").arg(row));
            QCOMPARE(rows.value().value(row, QStringLiteral("Zaplata")).toDouble(), (10 + row) / 10.0);
        }
    }

    void theSheetPrintsItsCoursesTotalAndReceiptWithItsBlanks()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillPaySheetExample(scratch.db()));
        MARCH_PAY_SHEET_ROWS();
        QCOMPARE(rows.value().rowCount(), 5);
        for (int row = 0; row < 5; ++row) {
            QCOMPARE(rows.value().value(row, QStringLiteral("Red")).toInt(), row + 1);
            QCOMPARE(rows.value().value(row, QStringLiteral("Nadnik")), rows.value().value(row, QStringLiteral("Zaplata")));
        }
        QCOMPARE(rows.value().value(1, QStringLiteral("Suma")).toDouble(), 1000.0);

        const Checked<Report> report = ReportZaplata(sheet.value(), rows.value(), exampleFirm(), today);
        QVERIFY(report.ok());
        QCOMPARE(report.value().windowCaption(), QStringLiteral("Зарек 2.3 - Заплата"));
        const LaidOutReport laid = layoutReport(report.value());
        QCOMPARE(laid.pageCount(), 1);
        const QStringList lines = laid.textLines();
        const QStringList head = lines.mid(0, 8);
        QCOMPARE(head, (QStringList{
                           QStringLiteral("Транспорт Петров ЕООД"), QStringLiteral("София, ул. Искър 12"),
                           QStringLiteral("тел:02 987 65 43, факс:0888 123 456, E-mail:office@petrov.bg, "
                                          "URL:http//www.petrov.bg"),
                           QStringLiteral("Извлечение"), QStringLiteral("за курсовете на Иван Д'Арков"),
                           QStringLiteral("за периода от 01.03.2006 до 31.03.2006"),
                           QStringLiteral("№ | Дата | Кола | Маршрут | Товар | Тон. | КМ | Сума | Зараб."),
                           QStringLiteral("1 | 01.03.2006 | СА 1234 ВК | София - Перник | Пясък | 20,900 | 100 | "
                                          "1000,00 | 100,00")}));
        QCOMPARE(lines.at(10), QStringLiteral("4 | 12.03.2006 | СА 1234 ВК | Батановци - Перник | Пясък | 10,000 | 25 | "
                                              "31,25 | 3,12"));
        QVERIFY2(lines.contains(QStringLiteral("Всичко заработка: 165,45 ") + amountUnit(Currency::Leva)), qPrintable(lines.join('\n')));
        QCOMPARE(lines.last(), QStringLiteral("Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd."));

        // The receipt reads back with its blanks.
        const qsizetype receipt = lines.indexOf(QStringLiteral("Разписка №_____ / 05.04.2006"));
        QVERIFY2(receipt > 0, qPrintable(lines.join('\n')));
        QCOMPARE(lines.at(receipt + 1), QStringLiteral("от Иван Д'Арков с ЕГН 7503124567 и л.к.№ 645123987"));
        // The sentence wraps; its first line keeps the nine blanks it starts with.
        const QString sentence = QStringLiteral("         Днес 05.04.2006 получих сумата от 165,45 ") + amountUnit(Currency::Leva)
                                 + QStringLiteral(" за извършените от мен курсове за фирма Транспорт Петров ЕООД "
                                                  "съгласно горното извлечение.");
        QVERIFY(lines.at(receipt + 2).startsWith(QStringLiteral("         Днес 05.04.2006")));
        QStringList wrapped;
        qsizetype next = receipt + 2;
        while (!lines.at(next).startsWith(QStringLiteral("    ")) || next == receipt + 2)
            wrapped << lines.at(next++);
        QCOMPARE(wrapped.join(QLatin1Char(' ')), sentence);
        QCOMPARE(lines.at(next), QString(76, QLatin1Char(' ')) + QStringLiteral("Подпис: ") + QString(32, QLatin1Char('.')));
    }

    // The pay sheet is printed from its computed lines: the paper is the one the scratch table
    // written and read back gave, line for line, in either currency.
    void thePaperFromTheSheetIsThePaperFromTheScratchTable_data()
    {
        QTest::addColumn<QDate>("changeover");
        QTest::newRow("leva") << QDate();
        QTest::newRow("mixed") << QDate(2006, 3, 10);
        QTest::newRow("euro") << QDate(2006, 1, 1);
    }
    void thePaperFromTheSheetIsThePaperFromTheScratchTable()
    {
        QFETCH(QDate, changeover);
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillPaySheetExample(scratch.db()));
        Changeover books;
        books.date = changeover;
        const Checked<PaySheet> sheet =
            BuildDriverPaySheet(marchOf(QStringLiteral("007")), scratch.db(), {books, QDate::currentDate()});
        QVERIFY(sheet.ok());
        QTemporaryDir folder;
        zarek::ScratchDatabase temp(folder.path());
        const Checked<RowSet> readBack = writeTempZaplata(temp, sheet.value());
        QVERIFY(readBack.ok());
        const QStringList expected =
            layoutReport(ReportZaplata(sheet.value(), readBack.value(), exampleFirm(), today).value()).textLines();
        const QStringList lines =
            layoutReport(ReportZaplata(sheet.value(), paySheetRows(sheet.value()), exampleFirm(), today).value())
                .textLines();
        QCOMPARE(lines, expected);
        // As the command shows it: the rows made as the pages are laid out.
        ReportLayouter streamed(ReportZaplata(sheet.value(), paySheetRowStream(sheet.value()), exampleFirm(), today).value());
        QCOMPARE(streamed.whole().textLines(), expected);
    }
};

QTEST_MAIN(PaySheetStoreTest)
#include "tst_paysheetstore.moc"
