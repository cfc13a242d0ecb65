#include "core/docnumber.h"
#include "invoicing/invoiceclosing.h"
#include "invoicing/invoicenumber.h"
#include "invoicing/invoicestatement.h"
#include "invoicing/invoicestore.h"

#include <QtTest>

using namespace zarek;
using namespace zarek::invoicing;

namespace {

const QStringList used = {QStringLiteral("0000000125"), QStringLiteral("0000000124"), QStringLiteral("0000000009")};

// The marks of four courses: 1 and 3 marked, 2 and 4 not.
QList<HeldCourse> fourCourses()
{
    return {{1, 1, true}, {2, 1, false}, {3, 4, true}, {4, 2, false}};
}

QString describe(const QList<CourseWrite> &writes)
{
    QStringList out;
    for (const CourseWrite &w : writes)
        out << QStringLiteral("%1:v%2:%3:%4").arg(w.id).arg(w.rowVersion).arg(w.fakt ? 1 : 0).arg(w.nomFakt);
    return out.join(QLatin1Char(' '));
}

}

class InvoicingRulesTest : public QObject {
    Q_OBJECT
private slots:
    void theNumberIsPaddedOrRefused_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("number");   // empty: refused
        QTest::addColumn<QString>("refusal");  // the first line of the refusal
        QTest::newRow("125 is free? no: used") << "125" << "" << "Имате издадена фактура под този номер!";
        QTest::newRow("126 padded") << "126" << "0000000126" << "";
        QTest::newRow("blanks around") << "  127 " << "0000000127" << "";
        QTest::newRow("used, typed with its zeros") << "0000000124" << "" << "Имате издадена фактура под този номер!";
        QTest::newRow("used, typed with some zeros") << "0009" << "" << "Имате издадена фактура под този номер!";
        QTest::newRow("the first item as shown") << "0000000125" << "" << "Имате издадена фактура под този номер!";
        QTest::newRow("ten digits") << "9999999999" << "9999999999" << "";
        QTest::newRow("eleven digits") << "12345678901" << "" << "Номерът на фактурата е по-дълъг от 10 цифри!";
        QTest::newRow("letters") << "12A" << "" << "Номерът на фактурата трябва да е число!";
        QTest::newRow("sign") << "-5" << "" << "Номерът на фактурата трябва да е число!";
        QTest::newRow("blank") << "   " << "" << "Няма въведен номер на фактура!";
        QTest::newRow("zeros mean no invoice") << "000" << "" << "Няма въведен номер на фактура!";
        QTest::newRow("long text, not a crash") << QString(40, QLatin1Char('7')) << ""
                                                << "Номерът на фактурата е по-дълъг от 10 цифри!";
    }
    void theNumberIsPaddedOrRefused()
    {
        QFETCH(QString, typed);
        QFETCH(QString, number);
        QFETCH(QString, refusal);
        const Checked<QString> checked = checkInvoiceNumber(typed, used);
        if (number.isEmpty()) {
            QVERIFY(!checked);
            QCOMPARE(checked.message().text.section(QLatin1Char('\n'), 0, 0), refusal);
            QCOMPARE(checked.message().text.count(QLatin1Char('\n')), 1);  // the fault, then the request
        } else {
            QVERIFY(checked);
            QCOMPARE(checked.value(), number);
        }
    }

    void aUsedNumberIsRefusedWithThePartsTwoLines()
    {
        const Checked<QString> checked = checkInvoiceNumber(QStringLiteral("125"), used);
        QCOMPARE(checked.message().text, QStringLiteral("Имате издадена фактура под този номер!\n"
                                                        "Моля, сменете номера и опитайте отново."));
    }

    void theNextFreeNumberIsOfferedFirstThenTheGaps_data()
    {
        QTest::addColumn<QStringList>("usedNumbers");
        QTest::addColumn<QString>("offered");
        QTest::newRow("none used: the first") << QStringList{} << "0000000001";
        QTest::newRow("in a row: the next") << QStringList{"0000000003", "0000000002", "0000000001"} << "0000000004";
        QTest::newRow("gaps after the next, latest first")
            << used << "0000000126 0000000123 0000000122 0000000121";
        QTest::newRow("texts that are no number passed over")
            << QStringList{"12/2006", "0000000005", " ", "-7"} << "0000000006";
        QTest::newRow("the last number: no next, the gap")
            << QStringList{"9999999999", "9999999997"} << "9999999998";
    }
    void theNextFreeNumberIsOfferedFirstThenTheGaps()
    {
        QFETCH(QStringList, usedNumbers);
        QFETCH(QString, offered);
        QCOMPARE(offeredInvoiceNumbers(usedNumbers, 3).join(QLatin1Char(' ')), offered);
        // Every number offered is taken by the dialog's own check.
        for (const QString &number : offeredInvoiceNumbers(usedNumbers, 3))
            QVERIFY2(checkInvoiceNumber(number, usedNumbers), qPrintable(number));
    }

    void closingWritesByModeAndFlags_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("changed");
        QTest::addColumn<bool>("printed");
        QTest::addColumn<QList<qint64>>("statement");  // the courses on the last statement printed
        QTest::addColumn<QString>("writes");
        const int fresh = int(FakturaMode::FaktNew);
        const int edit = int(FakturaMode::EditFakt);
        const QList<qint64> none;
        QTest::newRow("new, untouched") << fresh << false << true << none << "";
        QTest::newRow("new, marked, never printed: undone and stamped")
            << fresh << true << false << none << "1:v1:0:0000000000 3:v4:0:0000000000";
        QTest::newRow("new, marked and printed: numbered")
            << fresh << true << true << QList<qint64>{1, 3} << "1:v1:1:0000000130 3:v4:1:0000000130";
        QTest::newRow("new, printed with nothing marked, marked after: on no statement, undone")
            << fresh << true << true << none << "1:v1:0:0000000000 3:v4:0:0000000000";
        QTest::newRow("new, one marked after the print: only the printed one numbered")
            << fresh << true << true << QList<qint64>{1} << "1:v1:1:0000000130 3:v4:0:0000000000";
        QTest::newRow("new, printed then unmarked: not numbered")
            << fresh << true << true << QList<qint64>{1, 2, 3} << "1:v1:1:0000000130 3:v4:1:0000000130";
        QTest::newRow("edit, untouched") << edit << false << false << none << "";
        QTest::newRow("edit, changed: kept ones keep the number, the rest leave")
            << edit << true << false << none
            << "1:v1:1:0000000130 2:v1:0:0000000000 3:v4:1:0000000130 4:v2:0:0000000000";
    }
    void closingWritesByModeAndFlags()
    {
        QFETCH(int, mode);
        QFETCH(bool, changed);
        QFETCH(bool, printed);
        QFETCH(QList<qint64>, statement);
        QFETCH(QString, writes);
        const Checked<QList<CourseWrite>> result =
            closingWrites({FakturaMode(mode), changed, printed, QStringLiteral("0000000130"), statement}, fourCourses());
        QVERIFY(result);
        QCOMPARE(describe(result.value()), writes);
    }

    void noCourseIsWrittenAsInvoicedWithoutANumber()
    {
        const Checked<QList<CourseWrite>> result =
            closingWrites({FakturaMode::FaktNew, true, true, noDocumentNumber(), {1, 3}}, fourCourses());
        QVERIFY(!result);
        QCOMPARE(result.message().title, QStringLiteral("ГРЕШКА при запис!"));
        // With nothing marked there is nothing to number, and nothing to refuse.
        QVERIFY(closingWrites({FakturaMode::FaktNew, true, true, noDocumentNumber(), {}}, {{1, 1, false}}));
    }

    void vatIsAFifthUnroundedShownByTheFormat_data()
    {
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("100.00") << qint64(10000)
                                << QStringList{"Сума без ДДС: 100,00 лв.", "         ДДС: 20,00 лв.",
                                               "      Всичко: 120,00 лв."};
        QTest::newRow("33.33") << qint64(3333)
                               << QStringList{"Сума без ДДС: 33,33 лв.", "         ДДС: 6,67 лв.",
                                              "      Всичко: 40,00 лв."};
        QTest::newRow("0.01") << qint64(1)
                              << QStringList{"Сума без ДДС: 0,01 лв.", "         ДДС: 0,00 лв.",
                                             "      Всичко: 0,01 лв."};
    }
    void vatIsAFifthUnroundedShownByTheFormat()
    {
        QFETCH(qint64, cents);
        QFETCH(QStringList, lines);
        QCOMPARE(statementTotals(Money::fromCents(cents)), lines);
    }

    void vatKeepsItsThirdDecimal()
    {
        QCOMPARE(vatOf(Money::fromCents(3333)), 33.33 * 0.2);  // 6.666, not 6.67
        QVERIFY(qAbs(vatOf(Money::fromCents(3333)) - 6.666) < 1e-9);
    }

    void theStatementListsTheMarkedRowsInOrder()
    {
        RowSet rows({QStringLiteral("Data"), QStringLiteral("Marsh"), QStringLiteral("Tovar"), QStringLiteral("kola"),
                     QStringLiteral("KM"), QStringLiteral("Ton"), QStringLiteral("Tarifa"), QStringLiteral("bruto"),
                     QStringLiteral("Fakt")});
        rows.appendRow({QStringLiteral("2006-03-02"), QStringLiteral("А"), QStringLiteral("Пясък"), QStringLiteral("К1"),
                        25.0, 10.0, 0.125, 31.25, true});
        rows.appendRow({QDate(2006, 3, 3), QStringLiteral("Б"), QStringLiteral("Чакъл"), QStringLiteral("К2"), 40.0,
                        12.5, 0.1, 50.0, false});
        rows.appendRow({QDate(2006, 3, 4), QStringLiteral("В"), QStringLiteral("Пясък"), QStringLiteral("К1"), 100.0,
                        20.0, 0.05, 100.0, 1});
        const QList<StatementLine> lines = statementLines(rows, BooksDay{});
        QStringList listed;  // number, day and route of each line
        for (const StatementLine &line : lines)
            listed << QStringLiteral("%1 %2 %3").arg(line.red).arg(line.data.toString(Qt::ISODate), line.marsh);
        QCOMPARE(listed, (QStringList{"1 2006-03-02 А", "2 2006-03-04 В"}));
        QCOMPARE(statementSum(lines), Money::fromCents(13125));
    }

    void aPrefixMatchesInAnyCaseAndABlankMatchesAll_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<bool>("matches");
        QTest::newRow("blank") << "София - Перник" << "  " << true;
        QTest::newRow("prefix") << "София - Перник" << "София" << true;
        QTest::newRow("lower case") << "София - Перник" << "софия" << true;
        QTest::newRow("inside is no prefix") << "София - Перник" << "Перник" << false;
        QTest::newRow("wildcards are letters") << "София - Перник" << "%" << false;
        QTest::newRow("apostrophe") << "Д'Аргос" << "д'а" << true;
    }
    void aPrefixMatchesInAnyCaseAndABlankMatchesAll()
    {
        QFETCH(QString, value);
        QFETCH(QString, prefix);
        QFETCH(bool, matches);
        QCOMPARE(matchesPrefix(value, prefix), matches);
    }

    void theConflictMessageNamesTheCourses()
    {
        QList<ChangedCourse> courses;
        for (int i = 1; i <= 12; ++i)
            courses.append({QDate(2006, 3, i), QStringLiteral("София - Перник"), QStringLiteral("Д'Аргос ООД")});
        const UserMessage message = changedCoursesMessage(courses, true);
        QCOMPARE(message.title, QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(message.text.contains(QStringLiteral("01.03.2006  София - Перник  Д'Аргос ООД")));
        QVERIFY(message.text.contains(QStringLiteral("10.03.2006")));
        QVERIFY(!message.text.contains(QStringLiteral("11.03.2006")));
        QVERIFY(message.text.contains(QStringLiteral("... и още 2")));
        QVERIFY(message.text.contains(QStringLiteral("Нищо не е записано.")));
        QVERIFY(message.text.contains(QStringLiteral("отпечатайте отново")));
    }
};

QTEST_GUILESS_MAIN(InvoicingRulesTest)
#include "tst_invoicingrules.moc"
