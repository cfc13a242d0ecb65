#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "reference/driver.h"
#include "reference/driverrules.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

using namespace zarek;
using zarek::test::button;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

// A driver that passes every check.
QVariantMap goodDriver()
{
    return {{"ime", QStringLiteral("Иван Петров")}, {"kod", QStringLiteral("001")},
            {"adres", QStringLiteral("Пловдив, ул. Гладстон 3")}, {"tel", QStringLiteral("032123456")},
            {"mob", QStringLiteral("0888123456")}, {"EGN", QStringLiteral("7501011234")},
            {"LKarta", QStringLiteral("612345678")}};
}

QString firstLine(const std::optional<UserMessage> &failure)
{
    return failure ? failure->text.section(QLatin1Char('\n'), 0, 0) : QString();
}

void addDriver(QSqlDatabase db, const QString &kod, const QString &ime)
{
    QVERIFY(test::insertRow(db, QStringLiteral("shof"), QStringLiteral("kod, ime, EGN, LKarta"),
                            {kod, ime, QStringLiteral("7501011234"), QStringLiteral("612345678")}));
}

QLineEdit *field(QWidget &w, int index)
{
    return w.findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(index));
}

}

class DriverTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // Each check alone, with its two lines.
    void eachCheckHasItsMessage_data()
    {
        QTest::addColumn<QString>("column");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("message");
        QTest::newRow("1 no name") << "ime" << "   "
                                   << "Няма въведено име на шофьора!\nМоля, въведете до 50 символа за име на шофьора!";
        QTest::newRow("2 long name") << "ime" << QString(51, u'и')
                                     << "Въведеното име е по дълго от разрешеното!\n"
                                        "Моля, въведете до 50 символа за име на шофьора!";
        QTest::newRow("3 long GSM") << "mob" << "0888 123 4567"
                                    << "Въведения номер на GSM е по дълъг от разрешения!\n"
                                       "Моля, въведете до 12 символа за GSM на шофьора!";
        QTest::newRow("4 long telephone") << "tel" << "032 123 456"
                                          << "Въведения тел.номер е по дълъг от разрешения!\n"
                                             "Моля, въведете до 10 символа за тел.номер на шофьора!";
        QTest::newRow("5 long address") << "adres" << QString(61, u'а')
                                        << "Въведения адрес е по дълъг от разрешения!\n"
                                           "Моля, въведете до 60 символа за адрес на шофьора!";
        QTest::newRow("6 short EGN") << "EGN" << "750101"
                                     << "Грешно ЕГН на шофьора!\nМоля, въведете 10 числа за ЕГН на шофьора!";
        QTest::newRow("7 code ab") << "kod" << "ab"
                                   << "Няма въведени данни за кода!\nМоля, въведете 3 символа за код на шофьора!";
        QTest::newRow("7 code abcd") << "kod" << "abcd"
                                     << "Няма въведени данни за кода!\nМоля, въведете 3 символа за код на шофьора!";
        QTest::newRow("8 no identity card") << "LKarta" << ""
                                            << "Няма въведен № на лична карта на шофьора!\n"
                                               "Моля, въведете 9 символа за № за лична карта на шофьора!";
    }
    void eachCheckHasItsMessage()
    {
        QFETCH(QString, column);
        QFETCH(QString, value);
        QFETCH(QString, message);
        QVariantMap driver = goodDriver();
        driver.insert(column, value);
        const auto failure = checkDriver(driver);
        QVERIFY(failure);
        QCOMPARE(failure->title, QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(failure->text, message);
    }

    // All checks run; the last one that fails is the one shown.
    void theLastFailingCheckIsShown_data()
    {
        QTest::addColumn<QVariantMap>("changes");
        QTest::addColumn<QString>("shown");
        QTest::newRow("all empty: check 8 alone")
            << QVariantMap{{"ime", ""}, {"kod", ""}, {"adres", ""}, {"tel", ""}, {"mob", ""}, {"EGN", ""}, {"LKarta", ""}}
            << "Няма въведен № на лична карта на шофьора!";
        QTest::newRow("51 characters fail check 2 only") << QVariantMap{{"ime", QString(51, u'я')}}
                                                         << "Въведеното име е по дълго от разрешеното!";
        QTest::newRow("long name and bad code: the code") << QVariantMap{{"ime", QString(51, u'я')}, {"kod", "ab"}}
                                                          << "Няма въведени данни за кода!";
        QTest::newRow("bad EGN and no card: the card") << QVariantMap{{"EGN", "1"}, {"LKarta", ""}}
                                                       << "Няма въведен № на лична карта на шофьора!";
        QTest::newRow("ten letters pass as EGN") << QVariantMap{{"EGN", "абвгдежзий"}} << "";
        QTest::newRow("blanks around do not count") << QVariantMap{{"kod", "  001 "}, {"ime", QString(50, u'я') + "   "}}
                                                    << "";
        QTest::newRow("exactly 50, 12, 10, 60")
            << QVariantMap{{"ime", QString(50, u'я')}, {"mob", QString(12, u'1')}, {"tel", QString(10, u'2')},
                           {"adres", QString(60, u'а')}}
            << "";
    }
    void theLastFailingCheckIsShown()
    {
        QFETCH(QVariantMap, changes);
        QFETCH(QString, shown);
        QVariantMap driver = goodDriver();
        for (auto it = changes.cbegin(); it != changes.cend(); ++it)
            driver.insert(it.key(), it.value());
        QCOMPARE(firstLine(checkDriver(driver)), shown);
    }

    void theScreenHasItsCaptionFieldsAndFrames()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Driver screen(scratch.db());
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Шофьори"));
        const struct {
            int index;
            const char *frame;
        } fields[] = {{2, "Frame1"}, {3, "Frame1"}, {0, "Frame2"}, {6, "Frame2"}, {5, "Frame2"}, {1, "Frame3"}, {4, "Frame3"}};
        for (const auto &f : fields) {
            QLineEdit *box = field(screen, f.index);
            QVERIFY2(box, qPrintable(QString::number(f.index)));
            QCOMPARE(box->parentWidget()->objectName(), QString::fromLatin1(f.frame));
        }
        QStringList captions;
        for (int index : {2, 3, 0, 6, 5, 1, 4})
            captions.append(RecordBinder::captionOf(field(screen, index)));
        QCOMPARE(captions, (QStringList{"Имена", "Код", "Адрес", "Тел.", "GSM", "ЕГН", "Л.карта"}));
    }

    void anEmptyNewDriverShowsCheckEightAndKeepsTheRowOpen()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Driver screen(scratch.db());
        button(screen, "cmdAdd")->click();
        button(screen, "cmdUpdate")->click();
        QCOMPARE(onlyOne(messages.shown), QStringLiteral("ГРЕШКА при запис!|Няма въведен № на лична карта на шофьора!\n"
                                                        "Моля, въведете 9 символа за № за лична карта на шофьора!"));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
    }

    void aDriverIsStoredAsTypedBlanksIncluded()
    {
        ZAREK_SCRATCH_DB(scratch);
        addDriver(scratch.db(), QStringLiteral("005"), QStringLiteral("Стоян Стоянов"));
        RecordingMessageService messages;
        Driver screen(scratch.db());
        button(screen, "cmdAdd")->click();
        field(screen, 2)->setText(QStringLiteral(" Димитър О'Нийл "));
        field(screen, 3)->setText(QStringLiteral("001"));
        field(screen, 1)->setText(QStringLiteral("абвгдежзий"));
        field(screen, 4)->setText(QStringLiteral("612345678"));
        button(screen, "cmdUpdate")->click();
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Browsing);
        QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus"))->text(), QStringLiteral("Запис №: 2"));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT ime, EGN FROM shof WHERE kod = '001'"), " Димитър О'Нийл |абвгдежзий");

        Driver again(scratch.db());
        QCOMPARE(field(again, 2)->text(), QStringLiteral(" Димитър О'Нийл "));  // ordered by code
    }

    // Tab goes through the frames, then the buttons. Esc closes the screen; while a correction
    // holds typing it asks first, and "Не" stays.
    void tabGoesThroughTheFramesAndEscClosesAskingAboutTyping()
    {
        ZAREK_SCRATCH_DB(scratch);
        addDriver(scratch.db(), QStringLiteral("001"), QStringLiteral("Иван Петров"));
        RecordingMessageService messages;
        Driver screen(scratch.db());
        test::showExposed(screen);
        QStringList order{QApplication::focusWidget()->objectName()};
        for (int i = 0; i < 8; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            order.append(QApplication::focusWidget()->objectName());
        }
        QCOMPARE(order, (QStringList{"txtFields_2", "txtFields_3", "txtFields_0", "txtFields_6", "txtFields_5",
                                     "txtFields_1", "txtFields_4", "cmdAdd", "cmdEdit"}));

        button(screen, "cmdEdit")->click();
        QCOMPARE(QApplication::focusWidget(), field(screen, 2));  // the first box takes the typing
        field(screen, 2)->setText(QStringLiteral("Иван Петров Иванов"));
        messages.answers = {false};
        QTest::keyClick(field(screen, 2), Qt::Key_Escape);
        QCOMPARE(messages.asked.size(), 1);
        QVERIFY(screen.isVisible());
        button(screen, "cmdCancel")->click();
        QTest::keyClick(field(screen, 2), Qt::Key_Escape);
        QVERIFY(!screen.isVisible());
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(screen.result(), int(QDialog::Rejected));
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the screen browsing and editing.
    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(dir);
        ZAREK_SCRATCH_DB(scratch);
        addDriver(scratch.db(), QStringLiteral("001"), QStringLiteral("Иван Петров Иванов"));
        scratch.exec(QStringLiteral("UPDATE shof SET adres = 'Пловдив, бул. „Марица“ 122', tel = '032643210', "
                                    "mob = '0888123456'"));
        Driver screen(scratch.db());
        test::showExposed(screen);
        screen.grab().save(dir + QStringLiteral("/driver-browsing.png"));
        button(screen, "cmdEdit")->click();
        QTest::qWait(50);
        screen.grab().save(dir + QStringLiteral("/driver-editing.png"));
    }
};

QTEST_MAIN(DriverTest)
#include "tst_driver.moc"
