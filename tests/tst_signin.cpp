#include "core/firmprofile.h"
#include "data/firmstore.h"
#include "app/firststart.h"
#include "forms/messageservice.h"
#include "app/password.h"
#include "app/passwordhash.h"
#include "forms/recordform.h"
#include "app/userlogin.h"
#include "app/users.h"
#include "testdatabase.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

using namespace zarek;

namespace {

void addUser(QSqlDatabase db, const QString &name, const QString &password, const QString &vid)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("INSERT INTO Users (Ime, Password, Vid) VALUES (?, ?, ?)"));
    query.addBindValue(name);
    query.addBindValue(hashPassword(password));
    query.addBindValue(vid);
    QVERIFY(query.exec());
}

FirmProfile firm()
{
    FirmProfile profile;
    profile.UserName = QStringLiteral("Д'Арт Транс ООД");
    profile.UserAdres = QStringLiteral("ул. Шипка 5");
    profile.UserCity = QStringLiteral("Пловдив");
    profile.UserTel = QStringLiteral("032 111 222");
    profile.UserGSM = QStringLiteral("0888 111 222");
    return profile;
}

}

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
        addUser(scratch.db(), QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
        addUser(scratch.db(), QStringLiteral("Мария"), QStringLiteral("m1"), QStringLiteral("B"));
        addUser(scratch.db(), QStringLiteral("Иван"), QStringLiteral("i1"), QStringLiteral("C"));
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

    void passwordsAreNeverStoredInClear()
    {
        ZAREK_SCRATCH_DB(scratch);
        addUser(scratch.db(), QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
        QSqlQuery query(scratch.db());
        QVERIFY(query.exec(QStringLiteral("SELECT Password FROM Users")) && query.next());
        QVERIFY(query.value(0).toString().startsWith(QStringLiteral("$argon2id$")));
        QVERIFY(!query.value(0).toString().contains(QStringLiteral("тайна")));
    }

    void theSignInListHoldsOnlyOrdinaryUsersAndAnEmptyTableIsTold()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        {
            UserLogin login(scratch.db());
            login.findChild<QLineEdit *>(QStringLiteral("txtUserName"))->setText(QStringLiteral("admin"));
            login.findChild<QPushButton *>(QStringLiteral("cmdOK"))->click();
            QCOMPARE(messages.shown.size(), 2);
            QCOMPARE(messages.shown[0].text, QStringLiteral("Постави въвеждане на администратор"));
            QCOMPARE(messages.shown[1].text, QStringLiteral("Парола е невалидна! \nОпитайте отново! "));
            QCOMPARE(messages.shown[1].title, QStringLiteral("Парола"));
            QVERIFY(!login.LoginSucceeded());
        }
        addUser(scratch.db(), QStringLiteral("admin"), QStringLiteral("тайна"), QStringLiteral("A"));
        addUser(scratch.db(), QStringLiteral("Мария"), QStringLiteral("m1"), QStringLiteral("B"));
        addUser(scratch.db(), QStringLiteral("Иван"), QStringLiteral("i1"), QStringLiteral("C"));
        UserLogin login(scratch.db());
        auto *combo = login.findChild<QComboBox *>(QStringLiteral("Combo"));
        QCOMPARE(combo->count(), 1);
        QCOMPARE(combo->itemText(0), QStringLiteral("Иван"));
        combo->setEditText(QStringLiteral("Мария"));  // kind B types the name
        QCOMPARE(login.findChild<QLineEdit *>(QStringLiteral("txtUserName"))->text(), QStringLiteral("Мария"));
        login.findChild<QLineEdit *>(QStringLiteral("txtPassword"))->setText(QStringLiteral("m1"));
        login.findChild<QPushButton *>(QStringLiteral("cmdOK"))->click();
        QVERIFY(login.LoginSucceeded());
        QCOMPARE(login.UserVid(), QStringLiteral("B"));
    }

    void cancellingSignsNobodyIn()
    {
        ZAREK_SCRATCH_DB(scratch);
        UserLogin login(scratch.db());
        login.findChild<QPushButton *>(QStringLiteral("cmdCancel"))->click();
        QVERIFY(!login.LoginSucceeded());
        QCOMPARE(login.result(), int(QDialog::Rejected));
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
            screen.recordForm()->edit();
            screen.findChild<QLineEdit *>(QStringLiteral("txtFields_0"))->setText(QStringLiteral("Иван Г."));
            QVERIFY(screen.recordForm()->update());
            QVERIFY(CheckUser(scratch.db(), QStringLiteral("i1"), QStringLiteral("Иван Г.")).LoginOk);

            // A new password is stored hashed and signs in.
            screen.recordForm()->edit();
            screen.findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->setText(QStringLiteral("ново"));
            QVERIFY(screen.recordForm()->update());
            QVERIFY(CheckUser(scratch.db(), QStringLiteral("ново"), QStringLiteral("Иван Г.")).LoginOk);
            QVERIFY(screen.findChild<QLineEdit *>(QStringLiteral("txtFields_1"))->text().isEmpty());

            // Made an administrator, the row leaves this screen for good.
            screen.recordForm()->edit();
            screen.findChild<QLineEdit *>(QStringLiteral("txtFields_2"))->setText(QStringLiteral("A"));
            QVERIFY(screen.recordForm()->update());
        }
        PassWord again(scratch.db());
        QCOMPARE(again.recordForm()->rowCount(), 0);
        QVERIFY(messages.shown.isEmpty());
    }

    void deletingAUserAsksNothing()
    {
        ZAREK_SCRATCH_DB(scratch);
        addUser(scratch.db(), QStringLiteral("Иван"), QStringLiteral("i1"), QStringLiteral("C"));
        RecordingMessageService messages;
        PassWord screen(scratch.db());
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
};

QTEST_MAIN(SignInTest)
#include "tst_signin.moc"
