#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "core/valueformat.h"

#include <QtTest>

using namespace zarek;

class FormatsTest : public QObject {
    Q_OBJECT
private slots:
    void numbersAreShownWithDecimalCommaAndNoGrouping_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("expected");
        QTest::newRow("amount") << formatAmount(31.25) << "31,25";
        QTest::newRow("amount rounds half even") << formatAmount(0.125) << "0,12";
        QTest::newRow("amount of thousands, no separator") << formatAmount(1234567.5) << "1234567,50";
        QTest::newRow("negative amount") << formatAmount(-3.5) << "-3,50";
        QTest::newRow("no negative zero") << formatAmount(-0.001) << "0,00";
        QTest::newRow("money") << formatAmount(Money::fromCents(3031)) << "30,31";
        QTest::newRow("rate") << formatRate(0.125) << "0,125";
        QTest::newRow("rate pads") << formatRate(0.1) << "0,100";
        QTest::newRow("rate keeps a converted euro rate whole") << formatRate(0.06391149) << "0,06391149";
        QTest::newRow("rate shows a fourth decimal it has") << formatRate(0.1255) << "0,1255";
        QTest::newRow("rate stops at eight decimals") << formatRate(0.123456789) << "0,12345679";
        QTest::newRow("tonnes") << formatTonnes(12.3456) << "12,346";
        QTest::newRow("km") << formatKm(250.0) << "250";
        QTest::newRow("km half even") << formatKm(20.5) << "20";
    }
    void numbersAreShownWithDecimalCommaAndNoGrouping()
    {
        QFETCH(QString, shown);
        QFETCH(QString, expected);
        QCOMPARE(shown, expected);
    }

    // Each currency has one written form; the unit follows the date.
    void eachCurrencyHasOneWrittenFormByTheDate()
    {
        QCOMPARE(amountUnit(Currency::Leva), QStringLiteral("лв."));
        QCOMPARE(amountUnit(Currency::Euro), QStringLiteral("евро"));
        QCOMPARE(amountText(Money::fromCents(27500), Currency::Leva), QStringLiteral("275,00лв."));
        QCOMPARE(amountText(Money::fromCents(27500), Currency::Euro), QStringLiteral("275,00 евро"));
        const QDate today(2026, 6, 1);
        QCOMPARE(amountUnit(BooksDay{{}, today}.currencyOn(QDate(2030, 1, 1))), QStringLiteral("лв."));  // not changed over: leva
        const BooksDay books{Changeover{QDate(2026, 1, 1)}, today};
        QCOMPARE(amountUnit(books.currencyOn(QDate(2025, 12, 31))), QStringLiteral("лв."));
        QCOMPARE(amountUnit(books.currencyOn(QDate(2026, 1, 1))), QStringLiteral("евро"));
    }

    void typedNumbersTakeCommaOrPoint_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("isNumber");
        QTest::addColumn<double>("value");
        QTest::newRow("comma") << "12,5" << true << 12.5;
        QTest::newRow("point") << "12.5" << true << 12.5;
        QTest::newRow("blanks around") << "  7 " << true << 7.0;
        QTest::newRow("leading comma") << ",25" << true << 0.25;
        QTest::newRow("negative") << "-3" << true << -3.0;
        QTest::newRow("trailing comma") << "10," << true << 10.0;
        QTest::newRow("empty") << "" << false << 0.0;
        QTest::newRow("letters") << "abc" << false << 0.0;
        QTest::newRow("digits then letters") << "12a" << false << 0.0;
        QTest::newRow("two separators") << "1,2,3" << false << 0.0;
        QTest::newRow("thousands with blank") << "1 000" << false << 0.0;
        QTest::newRow("cyrillic") << "десет" << false << 0.0;
    }
    void typedNumbersTakeCommaOrPoint()
    {
        QFETCH(QString, text);
        QFETCH(bool, isNumber);
        QFETCH(double, value);
        const auto parsed = parseNumber(text);
        QCOMPARE(parsed.has_value(), isNumber);
        if (isNumber)
            QCOMPARE(*parsed, value);
    }

    void leadingNumberReadsUpToTheFirstForeignCharacter_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value");
        QTest::newRow("1a") << "1a" << 1.0;
        QTest::newRow("ab") << "ab" << 0.0;
        QTest::newRow("comma stops") << "12,50" << 12.0;
        QTest::newRow("point reads") << "12.50" << 12.5;
        QTest::newRow("inner blanks skipped") << " 1 2" << 12.0;
        QTest::newRow("sign") << "-05" << -5.0;
        QTest::newRow("empty") << "" << 0.0;
        QTest::newRow("slash") << "/2" << 0.0;
    }
    void leadingNumberReadsUpToTheFirstForeignCharacter()
    {
        QFETCH(QString, text);
        QFETCH(double, value);
        QCOMPARE(leadingNumber(text), value);
    }

    // A stored date reads the same however it was stored: as a date, or as text of its ISO form
    // with or without a time after it; anything else is no date.
    void storedDatesReadAsTheirDay_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<QDate>("day");
        QTest::newRow("date") << QVariant(QDate(2023, 1, 5)) << QDate(2023, 1, 5);
        QTest::newRow("date and time") << QVariant(QDateTime(QDate(2026, 12, 31), QTime(23, 59))) << QDate(2026, 12, 31);
        QTest::newRow("text") << QVariant(QStringLiteral("2006-03-02")) << QDate(2006, 3, 2);
        QTest::newRow("text with a time") << QVariant(QStringLiteral("2006-03-02T10:15:00")) << QDate(2006, 3, 2);
        QTest::newRow("leap day") << QVariant(QStringLiteral("2024-02-29")) << QDate(2024, 2, 29);
        QTest::newRow("no such day") << QVariant(QStringLiteral("2023-02-29")) << QDate();
        QTest::newRow("month 13") << QVariant(QStringLiteral("2023-13-01")) << QDate();
        QTest::newRow("year 0") << QVariant(QStringLiteral("0000-01-01")) << QDate();
        QTest::newRow("short") << QVariant(QStringLiteral("2023-1-05")) << QDate();
        QTest::newRow("letters") << QVariant(QStringLiteral("2023-0a-05")) << QDate();
        QTest::newRow("Bulgarian form") << QVariant(QStringLiteral("05.01.2023")) << QDate();
        QTest::newRow("empty") << QVariant(QString()) << QDate();
        QTest::newRow("nothing") << QVariant() << QDate();
    }
    void storedDatesReadAsTheirDay()
    {
        QFETCH(QVariant, stored);
        QFETCH(QDate, day);
        QCOMPARE(dateOfValue(stored), day);
        // As Qt reads the ISO form.
        if (stored.typeId() == QMetaType::QString)
            QCOMPARE(dateOfValue(stored), QDate::fromString(stored.toString().left(10), Qt::ISODate));
    }

    void datesAreReadAsABulgarianTypesThem_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDate>("expected");
        const QDate none;
        QTest::newRow("full") << "05.03.2006" << QDate(2006, 3, 5);
        QTest::newRow("short parts") << "5.3.2006" << QDate(2006, 3, 5);
        QTest::newRow("two-digit year") << "05.03.06" << QDate(2006, 3, 5);
        QTest::newRow("no year") << "5.3" << QDate(2026, 3, 5);
        QTest::newRow("slashes") << "5/3/2006" << QDate(2006, 3, 5);
        QTest::newRow("dashes") << "05-03-2006" << QDate(2006, 3, 5);
        QTest::newRow("with г.") << "05.03.2006 г." << QDate(2006, 3, 5);
        QTest::newRow("compact 8") << "05032006" << QDate(2006, 3, 5);
        QTest::newRow("compact 6") << "050306" << QDate(2006, 3, 5);
        QTest::newRow("blanks") << "  12.05.2005 " << QDate(2005, 5, 12);
        QTest::newRow("leap day") << "29.02.2024" << QDate(2024, 2, 29);
        QTest::newRow("no leap day") << "29.02.2025" << none;
        QTest::newRow("month 13") << "31.13.2005" << none;
        QTest::newRow("month 00") << "31.00.2005" << none;
        QTest::newRow("day 32") << "32.01.2005" << none;
        QTest::newRow("letters") << "ааа" << none;
        QTest::newRow("empty") << "" << none;
        QTest::newRow("iso is not typed here") << "2006-03-05" << none;
    }
    void datesAreReadAsABulgarianTypesThem()
    {
        QFETCH(QString, text);
        QFETCH(QDate, expected);
        const auto parsed = parseDate(text, QDate(2026, 11, 22));
        QCOMPARE(parsed.value_or(QDate()), expected);
    }

    // With no today handed in, a full date needs no clock, and a date without its year is of the clock's year.
    void aDateWithoutTodayTakesTheClocksYearOnlyWhenItHasNone()
    {
        QCOMPARE(parseDate(QStringLiteral("05.03.2006")).value_or(QDate()), QDate(2006, 3, 5));
        QCOMPARE(parseDate(QStringLiteral("5.3")).value_or(QDate()), QDate(QDate::currentDate().year(), 3, 5));
    }

    // Dates are written as Qt writes them, every day of the years a firm meets and the edges.
    void datesAreWrittenAsQtWritesThem()
    {
        QList<QDate> dates = {QDate(), QDate(1, 1, 1), QDate(999, 12, 31), QDate(9999, 12, 31), QDate(10000, 1, 1),
                              QDate(-1, 6, 15)};
        for (QDate day(1999, 1, 1); day.year() < 2031; day = day.addDays(1))
            dates.append(day);
        for (const QDate &date : std::as_const(dates)) {
            QCOMPARE(formatDate(date), date.toString(QStringLiteral("dd.MM.yyyy")));
            QCOMPARE(isoDateText(date), date.toString(Qt::ISODate));
        }
    }

    void periodNeedsTheEndStrictlyAfterTheStart()
    {
        QVERIFY(!(Period{QDate(2006, 3, 5), QDate(2006, 3, 5)}.isValid()));
        QVERIFY(!(Period{QDate(2006, 3, 6), QDate(2006, 3, 5)}.isValid()));
        const Period march{QDate(2006, 3, 1), QDate(2006, 3, 31)};
        QVERIFY(march.isValid());
        QVERIFY(march.contains(QDate(2006, 3, 1)));
        QVERIFY(march.contains(QDate(2006, 3, 31)));
        QVERIFY(!march.contains(QDate(2006, 4, 1)));
    }

    void periodTextsGetTheSearchMessages_data()
    {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("firstLine");
        QTest::newRow("empty start") << "" << "05.03.2006" << "Няма избран период за търсене!";
        QTest::newRow("empty end") << "01.03.2006" << " " << "Няма избран период за търсене!";
        QTest::newRow("same day") << "05.03.2006" << "05.03.2006" << "Грешно зададен период!";
        QTest::newRow("reversed") << "06.03.2006" << "05.03.2006" << "Грешно зададен период!";
        QTest::newRow("unreadable") << "ааа" << "05.03.2006" << "Неверен формат на датата!";
        QTest::newRow("valid") << "01.03.2006" << "31.03.2006" << "";
    }
    void periodTextsGetTheSearchMessages()
    {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QString, firstLine);
        const auto message = checkPeriodTexts(from, to, QDate(2026, 11, 22));
        QCOMPARE(message ? message->text.section(QLatin1Char('\n'), 0, 0) : QString(), firstLine);
    }

    void documentNumbersArePaddedToTen_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("125") << "125" << "0000000125";
        QTest::newRow("blanks") << " 37 " << "0000000037";
        QTest::newRow("ten") << "1234567890" << "1234567890";
        QTest::newRow("empty") << "" << "0000000000";
        QTest::newRow("eleven refused") << "12345678901" << "";
    }
    void documentNumbersArePaddedToTen()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const auto padded = padDocumentNumber(text);
        if (expected.isEmpty()) {
            QVERIFY(!padded.ok());
            QVERIFY(padded.message().text.contains(QStringLiteral("10 символа")));
        } else {
            QCOMPARE(padded.value(), expected);
        }
    }
};

QTEST_APPLESS_MAIN(FormatsTest)
#include "tst_formats.moc"
