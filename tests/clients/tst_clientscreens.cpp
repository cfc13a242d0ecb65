#include "clients/clientstore.h"
#include "clients/klienti.h"
#include "courses/courseexample.h"
#include "courses/coursesfixture.h"
#include "courses/coursestore.h"
#include "courses/kurs.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QComboBox>
#include <QLineEdit>
#include <QSignalSpy>

using namespace zarek;
using zarek::test::child;
using zarek::test::items;
using namespace zarek::clients;
using zarek::test::rowsText;
using zarek::test::scalar;

namespace {

// Tariff bands, a driver, and a course of an earlier client saved through the store.
void prepareCourses(test::ScratchDatabase &scratch)
{
    QVERIFY(test::addBands(scratch));
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO shof (kod, ime) VALUES ('007', 'Иван Петров Иванов')")));
    CourseEntry entry = test::exampleCourseEntry();
    entry.klient = QStringLiteral("Бетон Юг ООД");
    entry.date = QStringLiteral("02.03.2026");
    QVERIFY(CourseStore(scratch.db()).save(entry, {}, {commandDay().changeover, QDate(2026, 1, 1)}).ok());
    QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Klienti (Ime, EIK) VALUES ('Агрополис ООД', '104431141')")));
}

void fillCourse(Kurs &screen, const QString &client)
{
    child<QComboBox>(screen, QStringLiteral("Combo5"))->setEditText(QStringLiteral("007,Иван Петров Иванов"));
    child<QComboBox>(screen, QStringLiteral("Combo1"))->setEditText(QStringLiteral("СА 1234 ВК"));
    child<QLineEdit>(screen, QStringLiteral("txtFields_1"))->setText(QStringLiteral("05.03.2026"));
    child<QLineEdit>(screen, QStringLiteral("txtFields_12"))->setText(QStringLiteral("10"));
    child<QLineEdit>(screen, QStringLiteral("txtFields_4"))->setText(QStringLiteral("25"));
    child<QLineEdit>(screen, QStringLiteral("txtTarifa"))->setText(QStringLiteral("0,125"));
    child<QComboBox>(screen, QStringLiteral("Combo2"))->setEditText(QStringLiteral("София - Перник"));
    child<QComboBox>(screen, QStringLiteral("Combo3"))->setEditText(client);
    child<QComboBox>(screen, QStringLiteral("Combo4"))->setEditText(QStringLiteral("Пясък"));
}

const QString newClientQuestion = QStringLiteral("Нов клиент: да го добавя ли в регистъра?");

}

class ClientScreensTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // A client typed into the boxes is written; the boxes name their columns.
    void theRegisterWritesWhatIsTyped()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        Klienti screen(scratch.db());
        test::showActive(screen);
        screen.recordForm()->add();
        const QStringList typed = {" Виваком България ЕАД", "831 642 181", "bg831642181", "бул. Цариградско шосе 115и",
                                   "София", "България", "Атанас Добрев", "02 800 0000", "office@vivacom.bg", "45"};
        for (int i = 0; i < typed.size(); ++i)
            screen.field(i)->setText(typed[i]);
        test::saveScreenshot(screen, QStringLiteral("klienti"));
        QVERIFY(screen.recordForm()->update());
        QVERIFY2(messages.shown.isEmpty(), messages.shown.isEmpty() ? "" : qPrintable(messages.shown.first().text));
        QCOMPARE(rowsText(scratch.db(), "SELECT Ime, EIK, DDSNomer, Adres, Grad, Darzhava, MOL, Tel, Email, SrokDni FROM Klienti"),
                 "Виваком България ЕАД|831642181|BG831642181|бул. Цариградско шосе 115и|София|България|Атанас Добрев|"
                 "02 800 0000|office@vivacom.bg|45");
        QCOMPARE(screen.field(1)->text(), QStringLiteral("831642181"));  // shown as kept
        QVERIFY(items(screen.findCombo()).contains(QStringLiteral("Виваком България ЕАД")));
    }

    // A bad entry is refused with its message, the cursor on its box, and nothing is written.
    void theRegisterRefusesABadEntry_data()
    {
        QTest::addColumn<int>("box");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("fault");
        QTest::newRow("no name") << 0 << "" << "Името на клиента не е въведено!";
        QTest::newRow("bad ЕИК") << 1 << "831642182" << "Контролната цифра на ЕИК/БУЛСТАТ 831642182 не е вярна!";
        QTest::newRow("bad VAT number") << 2 << "BG130460283" << "ИН по ДДС BG130460283 не отговаря на ЕИК 831642181!";
        QTest::newRow("term over a year") << 9 << "400" << "Срокът за плащане „400“ е невалиден!";
        QTest::newRow("a name the register has") << 0 << "Агрополис ООД" << "Клиент с име „Агрополис ООД“ вече има в регистъра!";
    }
    void theRegisterRefusesABadEntry()
    {
        QFETCH(int, box);
        QFETCH(QString, text);
        QFETCH(QString, fault);
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Klienti (Ime) VALUES ('Агрополис ООД')")));
        RecordingMessageService messages;
        Klienti screen(scratch.db());
        test::showActive(screen);
        screen.recordForm()->add();
        const QStringList good = {"Виваком България ЕАД", "831642181", "BG831642181", "", "", "", "", "", "", "30"};
        for (int i = 0; i < good.size(); ++i)
            screen.field(i)->setText(i == box ? text : good[i]);
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(messages.shown.size(), 1);
        QVERIFY2(messages.shown.first().text.startsWith(fault), qPrintable(messages.shown.first().text));
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(scalar(scratch.db(), "SELECT COUNT(*) FROM Klienti").toInt(), 1);
        if (QTest::currentDataTag() != QLatin1String("a name the register has"))
            QCOMPARE(QApplication::focusWidget(), static_cast<QWidget *>(screen.field(box)));
    }

    // The search box goes to the first client whose name holds what is typed.
    void theSearchFindsByAPartOfTheName()
    {
        ZAREK_SCRATCH_DB(scratch);
        for (const char *name : {"Агрополис ООД", "Бетон Юг ООД", "Марица Агро ООД"})
            QVERIFY(scratch.exec(QStringLiteral("INSERT INTO Klienti (Ime) VALUES ('%1')").arg(QString::fromUtf8(name))));
        RecordingMessageService messages;
        Klienti screen(scratch.db());
        QVERIFY(screen.findClient(QStringLiteral("юг")));
        QCOMPARE(screen.field(0)->text(), QStringLiteral("Бетон Юг ООД"));
        QVERIFY(screen.findClient(QStringLiteral("Марица Агро ООД")));
        QCOMPARE(screen.field(0)->text(), QStringLiteral("Марица Агро ООД"));
        QVERIFY(!screen.findClient(QStringLiteral("Дунав")));
        QCOMPARE(messages.beeps, 1);
    }

    // A course saved with a client the register lacks is saved as typed, then the register is
    // offered it: "Да" adds the name and opens it there, "Не" adds nothing; a known client asks nothing.
    void aNewClientIsOfferedForTheRegister_data()
    {
        QTest::addColumn<QString>("client");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<int>("asked");
        QTest::addColumn<QString>("registered");
        QTest::newRow("new, Да") << " Тракия Зърно ЕООД " << true << 1 << "Агрополис ООД Тракия Зърно ЕООД";
        QTest::newRow("new, Не") << "Тракия Зърно ЕООД" << false << 1 << "Агрополис ООД";
        QTest::newRow("from earlier courses, Не") << "Бетон Юг ООД" << false << 1 << "Агрополис ООД";
        QTest::newRow("in the register") << "Агрополис ООД" << true << 0 << "Агрополис ООД";
    }
    void aNewClientIsOfferedForTheRegister()
    {
        QFETCH(QString, client);
        QFETCH(bool, answer);
        QFETCH(int, asked);
        QFETCH(QString, registered);
        ZAREK_SCRATCH_DB(scratch);
        prepareCourses(scratch);
        RecordingMessageService messages;
        Kurs screen(scratch.db());
        // The course editor offers the register's clients beside those earlier courses named.
        QCOMPARE(items(child<QComboBox>(screen, QStringLiteral("Combo3"))), (QStringList{"Агрополис ООД", "Бетон Юг ООД"}));
        test::showActive(screen);
        QSignalSpy opened(&screen, &Kurs::newClientAdded);
        fillCourse(screen, client);
        messages.answers = {answer};
        QVERIFY(screen.recordForm()->update());
        QCOMPARE(scalar(scratch.db(), "SELECT Klient FROM tabl ORDER BY id DESC").toString(), client.trimmed());
        QCOMPARE(messages.asked.size(), asked);
        if (asked > 0) {
            QCOMPARE(messages.asked.first().text,
                     QStringLiteral("Клиентът „%1“ не е в регистъра.\n").arg(client.trimmed()) + newClientQuestion);
        }
        QCOMPARE(rowsText(scratch.db(), "SELECT Ime FROM Klienti ORDER BY Ime"), registered);
        QCOMPARE(opened.size(), asked > 0 && answer ? 1 : 0);
        if (!opened.isEmpty()) {
            // The register opens on the new client, for its ЕИК and address.
            const qint64 id = opened.first().first().toLongLong();
            QCOMPARE(id, ClientStore(scratch.db()).idOf(client).value());
            Klienti clients(scratch.db(), &screen);
            QVERIFY(clients.editClient(id));
            QCOMPARE(clients.field(0)->text(), client.trimmed());
            QCOMPARE(clients.recordForm()->state(), RecordForm::State::Editing);
        }
        QCOMPARE(messages.shown.size(), 0);
    }
};

QTEST_MAIN(ClientScreensTest)
#include "tst_clientscreens.moc"
