#include "documents/documentrules.h"
#include "documents/workingdays.h"

#include <QtTest>

using namespace zarek::documents;

namespace {

DocumentKind kindNamed(const QString &name)
{
    for (const DocumentKind &kind : standardKinds()) {
        if (kind.name == name)
            return kind;
    }
    qFatal("no such standard kind");
}

const QString inspection = QStringLiteral("Технически преглед");
const QString driverCard = QStringLiteral("Карта на водача");
const QString cardDownload = QStringLiteral("Сваляне на данни от картата на водача");
const QString psychTest = QStringLiteral("Психологическа годност");

}

class DocumentRulesTest : public QObject {
    Q_OBJECT
private slots:
    void orthodoxEasterFallsOnItsSunday_data()
    {
        QTest::addColumn<int>("year");
        QTest::addColumn<QDate>("easter");
        QTest::newRow("2021") << 2021 << QDate(2021, 5, 2);
        QTest::newRow("2022") << 2022 << QDate(2022, 4, 24);
        QTest::newRow("2023") << 2023 << QDate(2023, 4, 16);
        QTest::newRow("2024") << 2024 << QDate(2024, 5, 5);
        QTest::newRow("2025") << 2025 << QDate(2025, 4, 20);
        QTest::newRow("2026") << 2026 << QDate(2026, 4, 12);
        QTest::newRow("2027") << 2027 << QDate(2027, 5, 2);
    }
    void orthodoxEasterFallsOnItsSunday()
    {
        QFETCH(int, year);
        QFETCH(QDate, easter);
        QCOMPARE(orthodoxEaster(year), easter);
        QCOMPARE(orthodoxEaster(year).dayOfWeek(), int(Qt::Sunday));
    }

    void workingDaysAreWeekdaysThatAreNoHoliday_data()
    {
        QTest::addColumn<QDate>("day");
        QTest::addColumn<bool>("working");
        QTest::newRow("Monday before 3 March") << QDate(2026, 3, 2) << true;
        QTest::newRow("3 March, a Tuesday") << QDate(2026, 3, 3) << false;
        QTest::newRow("a Saturday") << QDate(2026, 3, 7) << false;
        QTest::newRow("Good Friday") << QDate(2026, 4, 10) << false;
        QTest::newRow("Easter Monday") << QDate(2026, 4, 13) << false;
        QTest::newRow("the Tuesday after Easter") << QDate(2026, 4, 14) << true;
        QTest::newRow("24 May on a Sunday moves to Monday") << QDate(2026, 5, 25) << false;
        QTest::newRow("6 September on a Sunday moves to Monday") << QDate(2026, 9, 7) << false;
        QTest::newRow("the Tuesday after it") << QDate(2026, 9, 8) << true;
        QTest::newRow("1 January on a Saturday moves to Monday") << QDate(2022, 1, 3) << false;
        QTest::newRow("24 and 25 December on the weekend: 27th") << QDate(2022, 12, 27) << false;
        QTest::newRow("24 and 25 December on the weekend: 28th") << QDate(2022, 12, 28) << false;
        QTest::newRow("24 and 25 December on the weekend: 29th works") << QDate(2022, 12, 29) << true;
        QTest::newRow("1 May on Holy Saturday moves past Easter Monday") << QDate(2021, 5, 4) << false;
        QTest::newRow("6 May on Easter Monday gives no further day") << QDate(2024, 5, 7) << true;
        QTest::newRow("1 November is no day off") << QDate(2027, 11, 1) << true;
    }
    void workingDaysAreWeekdaysThatAreNoHoliday()
    {
        QFETCH(QDate, day);
        QFETCH(bool, working);
        QCOMPARE(isWorkingDay(day), working);
    }

    // The driver card's renewal is requested at least 15 working days before it expires.
    void workingDaysCountBackOverWeekendsAndHolidays_data()
    {
        QTest::addColumn<QDate>("from");
        QTest::addColumn<int>("count");
        QTest::addColumn<QDate>("day");
        QTest::newRow("one, over a weekend") << QDate(2026, 3, 16) << 1 << QDate(2026, 3, 13);
        QTest::newRow("one, over Easter") << QDate(2026, 4, 14) << 1 << QDate(2026, 4, 9);
        QTest::newRow("15, over three weekends and 3 March") << QDate(2026, 3, 13) << 15 << QDate(2026, 2, 19);
        QTest::newRow("15, over 24 May moved, 6 May and 1 May") << QDate(2026, 5, 26) << 15 << QDate(2026, 4, 30);
        QTest::newRow("15, no holiday") << QDate(2026, 7, 31) << 15 << QDate(2026, 7, 10);
        QTest::newRow("none") << QDate(2026, 3, 13) << 0 << QDate(2026, 3, 13);
    }
    void workingDaysCountBackOverWeekendsAndHolidays()
    {
        QFETCH(QDate, from);
        QFETCH(int, count);
        QFETCH(QDate, day);
        QCOMPARE(workingDaysBefore(from, count), day);
    }

    // Due from the warning day to the expiry, expired the day after; some kinds never remind.
    void dueAndExpiredAtTheBoundaries_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QDate>("validUntil");
        QTest::addColumn<QDate>("today");
        QTest::addColumn<QString>("state");
        const QDate june30(2026, 6, 30);
        QTest::newRow("the day before the warning") << inspection << june30 << QDate(2026, 5, 30) << "Валиден";
        QTest::newRow("the warning day") << inspection << june30 << QDate(2026, 5, 31) << "Изтича";
        QTest::newRow("the last valid day (today)") << inspection << june30 << june30 << "Изтича";
        QTest::newRow("the day after expiry") << inspection << june30 << QDate(2026, 7, 1) << "Изтекъл";
        QTest::newRow("long after expiry") << inspection << june30 << QDate(2027, 7, 1) << "Изтекъл";
        QTest::newRow("no expiry date") << inspection << QDate() << june30 << "Валиден";
        // The card: the request is due 15 working days before 13 March (19 February), warned 30 days before that.
        QTest::newRow("card, the day before its warning") << driverCard << QDate(2026, 3, 13) << QDate(2026, 1, 19) << "Валиден";
        QTest::newRow("card, its warning day") << driverCard << QDate(2026, 3, 13) << QDate(2026, 1, 20) << "Изтича";
        QTest::newRow("card, past the request day, still valid") << driverCard << QDate(2026, 3, 13) << QDate(2026, 3, 13) << "Изтича";
        QTest::newRow("card, the day after expiry") << driverCard << QDate(2026, 3, 13) << QDate(2026, 3, 14) << "Изтекъл";
        QTest::newRow("card download, a week ahead") << cardDownload << QDate(2026, 2, 2) << QDate(2026, 1, 26) << "Изтича";
        QTest::newRow("card download, eight days ahead") << cardDownload << QDate(2026, 2, 2) << QDate(2026, 1, 25) << "Валиден";
        QTest::newRow("card download, overdue") << cardDownload << QDate(2026, 2, 2) << QDate(2026, 2, 3) << "Изтекъл";
        QTest::newRow("psychological test never reminds") << psychTest << QDate(2020, 1, 1) << june30 << "Валиден";
    }
    void dueAndExpiredAtTheBoundaries()
    {
        QFETCH(QString, kind);
        QFETCH(QDate, validUntil);
        QFETCH(QDate, today);
        QFETCH(QString, state);
        QCOMPARE(dueStateText(dueState(kindNamed(kind), validUntil, today)), state);
    }

    void renewalProposesTheKindsPeriod_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QDate>("issued");
        QTest::addColumn<QDate>("validUntil");
        QTest::newRow("a year ends the day before") << inspection << QDate(2026, 1, 15) << QDate(2027, 1, 14);
        QTest::newRow("six months") << QStringLiteral("Технически преглед (над 10 г.)") << QDate(2026, 3, 1) << QDate(2026, 8, 31);
        QTest::newRow("two years") << QStringLiteral("Тахограф - периодична проверка") << QDate(2026, 3, 1) << QDate(2028, 2, 29);
        QTest::newRow("five years") << driverCard << QDate(2026, 3, 14) << QDate(2031, 3, 13);
        QTest::newRow("28 days after a download") << cardDownload << QDate(2026, 1, 5) << QDate(2026, 2, 2);
        QTest::newRow("90 days after a download")
            << QStringLiteral("Сваляне на данни от тахографа") << QDate(2026, 1, 5) << QDate(2026, 4, 5);
        QTest::newRow("no expiry") << psychTest << QDate(2026, 1, 5) << QDate();
        QTest::newRow("no issue date") << inspection << QDate() << QDate();
    }
    void renewalProposesTheKindsPeriod()
    {
        QFETCH(QString, kind);
        QFETCH(QDate, issued);
        QFETCH(QDate, validUntil);
        QCOMPARE(proposedValidUntil(kindNamed(kind), issued), validUntil);
    }

    void aDocumentIsCheckedBeforeItIsWritten_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("holder");
        QTest::addColumn<QString>("issued");
        QTest::addColumn<QString>("valid");
        QTest::addColumn<QString>("fault");
        QTest::newRow("complete") << inspection << "СА 1234 ВК" << "15.01.2026" << "14.01.2027" << "";
        QTest::newRow("valid the day it is issued") << inspection << "СА 1234 ВК" << "15.01.2026" << "15.01.2026" << "";
        QTest::newRow("valid before issued") << inspection << "СА 1234 ВК" << "15.01.2026" << "14.01.2026"
                                             << "\"Валиден до\" е преди датата на издаване!";
        QTest::newRow("no kind") << "" << "СА 1234 ВК" << "" << "" << "Не е избран вид на документа!";
        QTest::newRow("unknown kind") << "Паспорт" << "001" << "" << "" << "Няма такъв вид документ!";
        QTest::newRow("no truck") << inspection << " " << "" << "14.01.2027" << "Не е избрана кола!";
        QTest::newRow("no driver") << driverCard << "" << "" << "14.01.2027" << "Не е избран шофьор!";
        QTest::newRow("impossible date") << inspection << "СА 1234 ВК" << "31.02.2026" << "14.01.2027"
                                         << "Датата на издаване не е вярна!";
        QTest::newRow("text for a date") << inspection << "СА 1234 ВК" << "" << "утре" << "Датата \"Валиден до\" не е вярна!";
        QTest::newRow("expiring kind without validity") << inspection << "СА 1234 ВК" << "15.01.2026" << ""
                                                        << "Не е въведено до кога е валиден документът!";
        QTest::newRow("lasting kind without validity") << psychTest << "001" << "15.01.2026" << "" << "";
    }
    void aDocumentIsCheckedBeforeItIsWritten()
    {
        QFETCH(QString, kind);
        QFETCH(QString, holder);
        QFETCH(QString, issued);
        QFETCH(QString, valid);
        QFETCH(QString, fault);
        const QVariantMap typed{{"Vid", kind}, {"Kod", holder}, {"Izdaden", issued}, {"Valid", valid}};
        std::optional<DocumentKind> known;
        for (const DocumentKind &k : standardKinds()) {
            if (k.name == kind)
                known = k;
        }
        const auto message = checkDocument(typed, known, QDate(2026, 3, 1));
        QCOMPARE(message ? message->text.section(QLatin1Char('\n'), 0, 0) : QString(), fault);
    }

    void aScanOverTenMegabytesIsRefused_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<bool>("refused");
        QTest::newRow("a page") << qint64(300 * 1024) << false;
        QTest::newRow("exactly 10 MB") << maxScanBytes << false;
        QTest::newRow("one byte more") << maxScanBytes + 1 << true;
        QTest::newRow("25 MB") << qint64(25) * 1024 * 1024 << true;
    }
    void aScanOverTenMegabytesIsRefused()
    {
        QFETCH(qint64, bytes);
        QFETCH(bool, refused);
        QCOMPARE(checkScanSize(bytes).has_value(), refused);
    }

    void theDeleteQuestionTellsHowManyDocumentsGo()
    {
        const auto question = holderDeleteQuestion(Holder::Driver, QStringLiteral("001"), 3);
        QCOMPARE(question.text.section(QLatin1Char('\n'), 0, 0),
                 QStringLiteral("Шофьорът 001 има 3 документа. С него ще бъдат изтрити и документите."));
        QCOMPARE(holderDeleteQuestion(Holder::Truck, QStringLiteral("СА 1234 ВК"), 1).text.section(QLatin1Char('\n'), 0, 0),
                 QStringLiteral("Колата СА 1234 ВК има 1 документ. С нея ще бъдат изтрити и документите."));
    }
};

QTEST_GUILESS_MAIN(DocumentRulesTest)
#include "tst_documentrules.moc"
