#include "core/firmprofile.h"
#include "data/firmstore.h"
#include "app/firststart.h"
#include "forms/messageservice.h"
#include "app/password.h"
#include "app/passwordhash.h"
#include "forms/recordform.h"
#include "app/userlogin.h"
#include "app/users.h"
#include "core/textcheck.h"
#include "data/sqlerror.h"
#include "examplefirm.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QElapsedTimer>
#include <limits>

using namespace zarek;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

void addUser(QSqlDatabase db, const QString &name, const QString &password, const QString &vid)
{
    QVERIFY(test::insertRow(db, QStringLiteral("Users"), QStringLiteral("Ime, Password, Vid"), {name, hashPassword(password), vid}));
}

// admin (A, "тайна"), Мария (B, "m1") and Иван (C, "i1").
void addThreeUsers(QSqlDatabase db)
{
    addUser(db, QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
    addUser(db, QStringLiteral("Мария"), QStringLiteral("m1"), QStringLiteral("B"));
    addUser(db, QStringLiteral("Иван"), QStringLiteral("i1"), QStringLiteral("C"));
}

// The name and the password typed into the sign-in, then OK pressed.
void signIn(UserLogin &login, const QString &name, const QString &password)
{
    login.findChild<QLineEdit *>(QStringLiteral("txtUserName"))->setText(name);
    login.findChild<QLineEdit *>(QStringLiteral("txtPassword"))->setText(password);
    login.findChild<QPushButton *>(QStringLiteral("cmdOK"))->click();
}

// The user's box index corrected to text on the passwords screen, and saved: whether it was.
bool correct(PassWord &screen, int box, const QString &text)
{
    screen.recordForm()->edit();
    screen.findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(box))->setText(text);
    return screen.recordForm()->update();
}

FirmProfile firm()
{
    return test::firmOf("Д'Арт Транс ООД", "ул. Шипка 5", "Пловдив", "032 111 222", "0888 111 222");
}

}

// A fresh database of the current engine with the user Иван, the messages recorded, and the
// passwords screen on it.
#define PASSWORDS_WITH_IVAN()                                                                \
    ZAREK_SCRATCH_DB(scratch);                                                               \
    addUser(scratch.db(), QStringLiteral("Иван"), QStringLiteral("i1"), QStringLiteral("C"));\
    RecordingMessageService messages;                                                        \
    PassWord screen(scratch.db())

Q_DECLARE_METATYPE(zarek::UserMessage)

class SignInTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void namesAndPasswordsMatchExactly_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("password");
        QTest::addColumn<bool>("ok");
        QTest::addColumn<QString>("vid");
        QTest::newRow("administrator") << "admin" << "тайна" << true << "A";
        QTest::newRow("kind B typed in") << "Мария" << "m1" << true << "B";
        QTest::newRow("ordinary") << "Иван" << "i1" << true << "C";
        QTest::newRow("name differs by case") << "Admin" << "тайна" << false << "";
        QTest::newRow("name with a blank") << "admin " << "тайна" << false << "";
        QTest::newRow("wrong password") << "admin" << "Тайна" << false << "";
        QTest::newRow("another's password") << "Иван" << "m1" << false << "";
    }
    void namesAndPasswordsMatchExactly()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, name);
        QFETCH(QString, password);
        QFETCH(bool, ok);
        QFETCH(QString, vid);
        addThreeUsers(scratch.db());
        // Passwords are never stored in clear.
        QCOMPARE(test::countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Users WHERE Password LIKE '$argon2id$%' "
                                                            "AND Password NOT LIKE '%тайна%'")),
                 3);
        const UserCheck check = CheckUser(scratch.db(), password, name);
        QCOMPARE(check.LoginOk, ok);
        QCOMPARE(check.vid, vid);
        QVERIFY(!check.message);
    }

    void twoMatchingRowsGiveTheKindOfTheLast()
    {
        ZAREK_SCRATCH_DB(scratch);
        addUser(scratch.db(), QStringLiteral("Петя"), QStringLiteral("p"), QStringLiteral("C"));
        addUser(scratch.db(), QStringLiteral("Петя"), QStringLiteral("p"), QStringLiteral("B"));
        QCOMPARE(CheckUser(scratch.db(), QStringLiteral("p"), QStringLiteral("Петя")).vid, QStringLiteral("B"));
    }

    void theSignInListHoldsOnlyOrdinaryUsersAndAnEmptyTableIsTold()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        {
            UserLogin login(scratch.db());
            signIn(login, QStringLiteral("admin"), QString());
            QCOMPARE(test::titled(messages.shown).mid(1), QStringList{"Парола|Парола е невалидна! \nОпитайте отново! "});
            QCOMPARE(messages.shown[0].text, QStringLiteral("Постави въвеждане на администратор"));
            QVERIFY(!login.LoginSucceeded());
        }
        {  // Cancelling signs nobody in.
            UserLogin login(scratch.db());
            login.findChild<QPushButton *>(QStringLiteral("cmdCancel"))->click();
            QVERIFY(!login.LoginSucceeded());
            QCOMPARE(login.result(), int(QDialog::Rejected));
        }
        addThreeUsers(scratch.db());
        UserLogin login(scratch.db());
        auto *combo = login.findChild<QComboBox *>(QStringLiteral("Combo"));
        QCOMPARE(test::items(combo), QStringList{QStringLiteral("Иван")});
        combo->setEditText(QStringLiteral("Мария"));  // kind B types the name
        QCOMPARE(login.findChild<QLineEdit *>(QStringLiteral("txtUserName"))->text(), QStringLiteral("Мария"));
        signIn(login, QStringLiteral("Мария"), QStringLiteral("m1"));
        QVERIFY(login.LoginSucceeded());
        QCOMPARE(login.UserVid(), QStringLiteral("B"));
    }

    void thePasswordScreenNeverShowsAdministratorsOrPasswords()
    {
        ZAREK_SCRATCH_DB(scratch);
        addUser(scratch.db(), QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
        addUser(scratch.db(), QStringLiteral("Иван"), QStringLiteral("i1"), QStringLiteral("C"));
        RecordingMessageService messages;
        {
            PassWord screen(scratch.db());
            QCOMPARE(screen.recordForm()->rowCount(), 1);
            QCOMPARE(screen.findChild<QLineEdit *>(QStringLiteral("txtFields_0"))->text(), QStringLiteral("Иван"));
            QVERIFY(screen.findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->text().isEmpty());
            QCOMPARE(screen.findChild<QLabel *>(QStringLiteral("lblStatus"))->text(), QStringLiteral(" Потребител №:1"));

            // Correcting with the password box left empty keeps the password.
            QVERIFY(correct(screen, 0, QStringLiteral("Иван Г.")));
            QVERIFY(CheckUser(scratch.db(), QStringLiteral("i1"), QStringLiteral("Иван Г.")).LoginOk);

            // A new password is stored hashed and signs in.
            QVERIFY(correct(screen, 1, QStringLiteral("ново")));
            QVERIFY(CheckUser(scratch.db(), QStringLiteral("ново"), QStringLiteral("Иван Г.")).LoginOk);
            QVERIFY(screen.findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->text().isEmpty());

            // Made an administrator, the row leaves this screen for good.
            QVERIFY(correct(screen, 2, QStringLiteral("A")));
        }
        PassWord again(scratch.db());
        QCOMPARE(again.recordForm()->rowCount(), 0);
        QVERIFY(messages.shown.isEmpty());
    }

    void deletingAUserAsksNothing()
    {
        PASSWORDS_WITH_IVAN();
        screen.findChild<QPushButton *>(QStringLiteral("cmdDelete"))->click();
        QVERIFY(messages.asked.isEmpty());
        QCOMPARE(screen.recordForm()->rowCount(), 0);
    }

    void firstStartMakesAWorkingDatabase()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(needsFirstStart(scratch.db()));
        QVERIFY(!createFirmAndAdministrator(scratch.db(), firm(), QStringLiteral("Стоян"), QStringLiteral("s3cret")));
        QVERIFY(!needsFirstStart(scratch.db()));
        QSqlDatabase db = scratch.db();
        const FirmProfileLoad load = LoadFirmProfile(db);
        QCOMPARE(load.profile->UserName, QStringLiteral("Д'Арт Транс ООД"));
        QCOMPARE(load.profile->UserURL, QStringLiteral(" "));
        const UserCheck check = CheckUser(db, QStringLiteral("s3cret"), QStringLiteral("Стоян"));
        QVERIFY(check.LoginOk);
        QCOMPARE(check.vid, QStringLiteral("A"));
    }

    void firstStartAsksTheRequiredFieldsInOrder_data()
    {
        QTest::addColumn<int>("blank");  // which required field is left empty, and all after it
        QTest::addColumn<QString>("firstLine");
        QTest::newRow("name") << 0 << "Името на фирмата не е въведено!";
        QTest::newRow("address") << 1 << "Адреса на фирмата не е въведен!";
        QTest::newRow("town") << 2 << "Населеното място на фирмата не е въведено";
        QTest::newRow("telephone") << 3 << "Телефона на фирмата не е въведен!";
        QTest::newRow("gsm asked as fax") << 4 << "Номера на факса на фирмата не е въведен!";
    }
    void firstStartAsksTheRequiredFieldsInOrder()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(int, blank);
        QFETCH(QString, firstLine);
        FirmProfile profile = firm();
        QString *fields[] = {&profile.UserName, &profile.UserAdres, &profile.UserCity, &profile.UserTel, &profile.UserGSM};
        for (int i = blank; i < 5; ++i)
            *fields[i] = QStringLiteral("   ");
        const auto refused = createFirmAndAdministrator(scratch.db(), profile, QStringLiteral("a"), QStringLiteral("b"));
        QVERIFY(refused);
        QCOMPARE(refused->text.section(QLatin1Char('\n'), 0, 0), firstLine);
        QCOMPARE(refused->title, QStringLiteral("   ВНИМАНИЕ!"));
        QVERIFY(needsFirstStart(scratch.db()));
    }

    // A user saved with no name and no password once let Enter on an empty sign-in open the program.
    void anEmptyNameOrPasswordNeverSignsIn_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("password");
        QTest::newRow("both empty") << "" << "";
        QTest::newRow("empty name") << "" << "тайна";
        QTest::newRow("blank name") << "  " << "тайна";
        QTest::newRow("empty password") << "admin" << "";
    }
    void anEmptyNameOrPasswordNeverSignsIn()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, name);
        QFETCH(QString, password);
        // Rows as an older program could leave them: each matches its own empty texts exactly.
        addUser(scratch.db(), name, password, QStringLiteral("A"));
        QVERIFY(!CheckUser(scratch.db(), password, name).LoginOk);
        RecordingMessageService messages;
        UserLogin login(scratch.db());
        signIn(login, name, password);
        QVERIFY(!login.LoginSucceeded());
    }

    // An unknown name was answered in 0.01 ms and a known one in 80 ms: timing told the names.
    void anUnknownNameTakesAsLongAsAWrongPassword()
    {
        ZAREK_SCRATCH_DB(scratch);
        addUser(scratch.db(), QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
        // The two in turn, the fastest of five each: a moment the machine is busy slows both alike.
        const auto taken = [&](const QString &name) {
            QElapsedTimer timer;
            timer.start();
            return CheckUser(scratch.db(), QStringLiteral("грешна"), name).LoginOk ? qint64(-1) : timer.nsecsElapsed();
        };
        qint64 known = std::numeric_limits<qint64>::max();
        qint64 unknown = known;
        for (int i = 0; i < 5; ++i) {
            known = std::min(known, taken(QStringLiteral("admin")));
            unknown = std::min(unknown, taken(QStringLiteral("никой")));
        }
        QVERIFY(known > 0 && unknown > 0);  // neither signed in
        const double ratio = double(unknown) / double(known);
        QVERIFY2(ratio > 0.5 && ratio < 2.0, qPrintable(QStringLiteral("known %1 ns, unknown %2 ns").arg(known).arg(unknown)));
        // An unknown name is checked against a hash of today's parameters that no password matches.
        QVERIFY(dummyPasswordHash().startsWith(QStringLiteral("$argon2id$")));
        QVERIFY(!passwordNeedsRehash(dummyPasswordHash()));
        QVERIFY(!verifyPassword(dummyPasswordHash(), QString()));
    }

    void eachFailedTryWaitsLonger_data()
    {
        QTest::addColumn<int>("failures");
        QTest::addColumn<int>("delay");
        QTest::newRow("none yet") << 0 << 0;
        QTest::newRow("first") << 1 << 1000;
        QTest::newRow("second") << 2 << 2000;
        QTest::newRow("third") << 3 << 4000;
        QTest::newRow("fifth") << 5 << 16000;
        QTest::newRow("sixth, at the cap") << 6 << 30000;
        QTest::newRow("many") << 1000 << 30000;
    }
    void eachFailedTryWaitsLonger()
    {
        QFETCH(int, failures);
        QFETCH(int, delay);
        QCOMPARE(signInDelayMs(failures), delay);
    }

    void aFailedTryHoldsOkForItsDelay()
    {
        ZAREK_SCRATCH_DB(scratch);
        addUser(scratch.db(), QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
        RecordingMessageService messages;
        UserLogin login(scratch.db());
        auto *ok = login.findChild<QPushButton *>(QStringLiteral("cmdOK"));
        signIn(login, QStringLiteral("admin"), QStringLiteral("грешна"));
        QCOMPARE(messages.shown.size(), 1);
        QVERIFY(!ok->isEnabled());
        login.findChild<QLineEdit *>(QStringLiteral("txtPassword"))->setText(QStringLiteral("тайна"));
        ok->click();  // nothing while it waits
        QTest::keyClick(&login, Qt::Key_Return);
        QVERIFY(!login.LoginSucceeded());
        QCOMPARE(messages.shown.size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(ok->isEnabled(), 3000);
        ok->click();
        QVERIFY(login.LoginSucceeded());
    }

    // A user without a name or a password, or with a control character, is refused with its box.
    void thePasswordScreenRefusesAUserWithoutNameOrPassword_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("password");
        QTest::addColumn<UserMessage>("fault");
        const auto attention = [](const char *first, const char *second) {
            return UserMessage::twoLines(QStringLiteral("   ВНИМАНИЕ!"), QString::fromUtf8(first), QString::fromUtf8(second),
                                         UserMessage::Icon::Critical);
        };
        const UserMessage noName = attention("Няма въведено име на потребителя!", "Моля, въведете име на потребителя!");
        QTest::newRow("no name") << "" << "p1" << noName;
        QTest::newRow("blank name") << "   " << "p1" << noName;
        QTest::newRow("no password") << "Иван" << ""
                                     << attention("Няма въведена парола!", "Моля, въведете парола на потребителя!");
        QTest::newRow("a control character") << QStringLiteral("AB") + QChar(u'\0') + QStringLiteral("CD") << "p"
                                             << controlCharacterMessage(QStringLiteral("ГРЕШКА при запис!"));
    }
    void thePasswordScreenRefusesAUserWithoutNameOrPassword()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, name);
        QFETCH(QString, password);
        QFETCH(UserMessage, fault);
        RecordingMessageService messages;
        PassWord screen(scratch.db());
        screen.recordForm()->add();
        screen.findChild<QLineEdit *>(QStringLiteral("txtFields_0"))->setText(name);
        screen.findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->setText(password);
        screen.findChild<QLineEdit *>(QStringLiteral("txtFields_2"))->setText(QStringLiteral("C"));
        QVERIFY(!screen.recordForm()->update());
        QCOMPARE(messages.shown, QList<UserMessage>{fault});
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE(test::countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Users")), 0);
    }

    void correctingAUserStillNeedsAName()
    {
        PASSWORDS_WITH_IVAN();
        QVERIFY(!correct(screen, 0, QString()));
        QCOMPARE(messages.shown.size(), 1);
        QVERIFY(CheckUser(scratch.db(), QStringLiteral("i1"), QStringLiteral("Иван")).LoginOk);
    }

    void passwordErrorBoxesShowTheDescriptionAlone()
    {
        PASSWORDS_WITH_IVAN();
        QSqlQuery change(scratch.openSecondConnection());
        QVERIFY(change.exec(QStringLiteral("UPDATE Users SET Vid = 'B', row_version = row_version + 1")));
        QVERIFY(!correct(screen, 0, QStringLiteral("Иван Г.")));
        QCOMPARE(messages.shown.size(), 1);
        const QString conflict = rowConflictMessage(QString()).text;
        QCOMPARE(messages.shown[0].text, conflict.section(QLatin1Char(':'), 1));
        QVERIFY(!messages.shown[0].text.startsWith(QStringLiteral("-2147217864")));
    }
};

QTEST_MAIN(SignInTest)
#include "tst_signin.moc"
