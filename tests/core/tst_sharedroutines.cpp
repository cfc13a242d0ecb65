#include "core/sharedroutines.h"

#include <QtTest>

using namespace zarek;

class SharedRoutinesTest : public QObject {
    Q_OBJECT
private slots:
    void badMonthLooksOnlyAtTheMonthField_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("bad");
        QTest::newRow("month 00 passes") << "31.00.2005" << false;
        QTest::newRow("month 13 fails") << "31.13.2005" << true;
        QTest::newRow("month 12 passes") << "31.12.2005" << false;
        QTest::newRow("empty fails") << "" << true;
        QTest::newRow("blanks fail") << "   " << true;
        QTest::newRow("leading blanks trimmed") << "  12.05.2005" << false;
        QTest::newRow("slash at 4 reads 0") << "5/3/2004" << false;
        QTest::newRow("letters read 0") << "12.ab.2005" << false;
        QTest::newRow("1a reads 1") << "12.1a.2005" << false;
        QTest::newRow("day not checked") << "99.01.2005" << false;
        QTest::newRow("compact form reads day and month digits") << "05032006" << true;
        QTest::newRow("negative month") << "12.-1.2005" << true;
    }
    void badMonthLooksOnlyAtTheMonthField()
    {
        QFETCH(QString, text);
        QFETCH(bool, bad);
        QCOMPARE(BadMonth(text), bad);
    }

    void lenCheckComparesTheTrimmedLength_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("limit");
        QTest::addColumn<int>("result");
        QTest::newRow("abc with blanks, 3") << "  abc  " << 3 << 0;
        QTest::newRow("longer") << "abcd" << 3 << 1;
        QTest::newRow("shorter") << "ab" << 3 << -1;
        QTest::newRow("empty") << "" << 0 << 0;
        QTest::newRow("cyrillic counts characters") << "шофьор" << 6 << 0;
    }
    void lenCheckComparesTheTrimmedLength()
    {
        QFETCH(QString, text);
        QFETCH(int, limit);
        QFETCH(int, result);
        QCOMPARE(LenCheck(text, limit), result);
    }

    void isBlankTrimsFirst()
    {
        QVERIFY(IsBlank(QString()));
        QVERIFY(IsBlank(QStringLiteral("   ")));
        QVERIFY(!IsBlank(QStringLiteral(" a ")));
    }

    void findInArrayAnswersYesOrNoNotAPosition()
    {
        const QStringList list{QStringLiteral("0000000001"), QStringLiteral("0000000002")};
        QCOMPARE(FindInArray(QStringLiteral("0000000002"), list), 0);
        QCOMPARE(FindInArray(QStringLiteral("0000000001"), list), 0);
        QCOMPARE(FindInArray(QStringLiteral("0000000003"), list), -1);
        QCOMPARE(FindInArray(QStringLiteral("x"), {}), -1);
    }
};

QTEST_APPLESS_MAIN(SharedRoutinesTest)
#include "tst_sharedroutines.moc"
