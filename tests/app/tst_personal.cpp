#include "data/firmstore.h"
#include "app/firststart.h"
#include "forms/messageservice.h"
#include "app/personal.h"
#include "core/textcheck.h"
#include "examplefirm.h"
#include "testdatabase.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

using namespace zarek;

namespace {

void createFirm(test::ScratchDatabase &scratch)
{
    FirmProfile firm = test::firmOf("Стара Фирма ООД", "ул. Първа 1", "Пловдив", "032 1", "0888 1");
    firm.UserMOL = QStringLiteral("Иван Иванов");
    QVERIFY(!createFirmAndAdministrator(scratch.db(), firm, QStringLiteral("a"), QStringLiteral("b")));
}

QString stored(QSqlDatabase db, const QString &column)
{
    return test::scalar(db, QStringLiteral("SELECT ") + column + QStringLiteral(" FROM ZarekCfg")).toString();
}

void type(QWidget &form, const char *name, const QString &text)
{
    form.findChild<QLineEdit *>(QString::fromLatin1(name))->setText(text);
}

}

// A fresh database of the current engine with the firm, the messages recorded, and the firm's form on it.
#define FIRM_FORM()                                          \
    ZAREK_SCRATCH_DB(scratch);                               \
    createFirm(scratch);                                     \
    RecordingMessageService messages;                        \
    FirmProfile profile = readFirmRow(scratch.db())->profile;\
    Personal form(scratch.db(), profile)

class PersonalTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void savingWritesTheRowAndTheProfileWithBlankOptionals()
    {
        FIRM_FORM();
        QCOMPARE(form.findChild<QLineEdit *>(QStringLiteral("txtFirmaMOL"))->text(), QStringLiteral("Иван Иванов"));
        type(form, "txtFirmaName", QStringLiteral("  Нова Фирма О'Брайън ЕООД "));
        type(form, "txtFirmaMOL", QStringLiteral("   "));
        form.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName || '|' || UserMOL")), QStringLiteral("Нова Фирма О'Брайън ЕООД| "));
        QCOMPARE(profile.UserName, QStringLiteral("Нова Фирма О'Брайън ЕООД"));
    }

    // A save stopped by a check, by another user's change or by "Отказ" leaves the stored row; a
    // check's stop leaves the typed name in memory already, as it always did.
    void aSaveThatDoesNotHappenLeavesTheRow_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("message");  // title|text|icon
        QTest::addColumn<QString>("inMemory");
        const UserMessage control = controlCharacterMessage(QStringLiteral("   ВНИМАНИЕ!"));
        QTest::newRow("no telephone") << "Нова Фирма" << "OKButton"
                                      << "   ВНИМАНИЕ!|Телефона на фирмата не е въведен!\nМоля, въведете телефона на "
                                         "фирмата!|3"
                                      << "Нова Фирма";
        QTest::newRow("changed by another user") << "Нова Фирма" << "OKButton" << "ГРЕШКА при запис!" << "";
        // A NUL pasted into the firm's name: SQLite kept it, PostgreSQL refused it with raw SQL.
        QTest::newRow("control character") << QStringLiteral("AB") + QChar(u'\0') + QStringLiteral("CD") << "OKButton"
                                           << control.title + '|' + control.text + '|' + QString::number(int(control.icon))
                                           << "Стара Фирма ООД";
        QTest::newRow("cancel") << "Друга" << "cmdCancel" << "" << "Стара Фирма ООД";
    }
    void aSaveThatDoesNotHappenLeavesTheRow()
    {
        QFETCH(QString, name);
        QFETCH(QString, button);
        QFETCH(QString, message);
        QFETCH(QString, inMemory);
        FIRM_FORM();
        const bool elsewhere = message.startsWith(QStringLiteral("ГРЕШКА"));
        if (elsewhere) {
            QSqlQuery other(scratch.openSecondConnection());
            QVERIFY(other.exec(QStringLiteral("UPDATE ZarekCfg SET UserTel = '02 999', row_version = row_version + 1")));
        }
        type(form, "txtFirmaName", name);
        if (QTest::currentDataTag() == QLatin1String("no telephone"))
            type(form, "txtFirmaTel", QString());
        form.findChild<QPushButton *>(button)->click();
        QStringList said;
        for (const UserMessage &m : messages.shown)
            said << (elsewhere ? m.title : m.title + '|' + m.text + '|' + QString::number(int(m.icon)));
        QCOMPARE(said, message.isEmpty() ? QStringList() : QStringList{message});
        if (!inMemory.isEmpty())
            QCOMPARE(profile.UserName, inMemory);
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName || '|' || UserTel")),
                 QStringLiteral("Стара Фирма ООД|") + (elsewhere ? QStringLiteral("02 999") : QStringLiteral("032 1")));
        QVERIFY(form.result() != int(QDialog::Accepted));
    }

    // What an invoice needs of the firm: the account, its bank, the place of issue and the issuer.
    // The account is written without spaces and only with its check digits right.
    void theInvoiceFieldsAreWrittenWithACheckedAccount_data()
    {
        QTest::addColumn<QString>("iban");
        QTest::addColumn<QString>("kept");
        QTest::addColumn<bool>("refused");
        QTest::newRow("grouped by four") << "bg80 bnbg 9661 1020 3456 78" << "BG80BNBG96611020345678" << false;
        QTest::newRow("none") << "" << "" << false;
        QTest::newRow("a digit wrong") << "BG80BNBG96611020345679" << "" << true;
        QTest::newRow("too short") << "BG80BNBG9661" << "" << true;
    }
    void theInvoiceFieldsAreWrittenWithACheckedAccount()
    {
        QFETCH(QString, iban);
        QFETCH(QString, kept);
        QFETCH(bool, refused);
        FIRM_FORM();
        type(form, "txtFirmaIBAN", iban);
        type(form, "txtFirmaBank", QStringLiteral("Българска народна банка"));
        type(form, "txtFirmaBIC", QStringLiteral("bnbgbgsd"));
        type(form, "txtFirmaMiasto", QStringLiteral("Пловдив"));
        type(form, "txtFirmaSastavil", QStringLiteral("Иван Иванов"));
        if (!qEnvironmentVariableIsEmpty("ZAREK_SCREENSHOT_DIR") && QTest::currentDataTag() == QLatin1String("grouped by four"))
            form.grab().save(qEnvironmentVariable("ZAREK_SCREENSHOT_DIR") + QStringLiteral("/personal.png"));
        form.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        QCOMPARE(form.result() == int(QDialog::Accepted), !refused);
        QCOMPARE(messages.shown.size(), refused ? 1 : 0);
        QCOMPARE(stored(scratch.db(), QStringLiteral("COALESCE(UserIBAN, '') || '|' || COALESCE(UserBank, '')")),
                 kept + QLatin1Char('|') + (refused ? QString() : QStringLiteral("Българска народна банка")));
        if (refused) {
            QVERIFY(messages.shown.first().text.startsWith(QStringLiteral("IBAN ")));
            QCOMPARE(profile.UserIBAN, QString());  // nothing changed in memory either
        } else {
            QCOMPARE(stored(scratch.db(), QStringLiteral("UserBIC || '|' || UserMiasto || '|' || UserSastavil")),
                     QStringLiteral("BNBGBGSD|Пловдив|Иван Иванов"));
            QCOMPARE(profile.UserIBAN, kept);
        }
    }

    // The store refuses a wrong account whoever writes it.
    void theStoreRefusesAWrongAccount()
    {
        ZAREK_SCRATCH_DB(scratch);
        createFirm(scratch);
        FirmRow row = *readFirmRow(scratch.db());
        row.profile.UserIBAN = QStringLiteral("BG80BNBG96611020345679");
        QVERIFY(writeFirmRow(scratch.db(), row));
        QCOMPARE(stored(scratch.db(), QStringLiteral("COALESCE(UserIBAN, '')")), QString());
    }
};

QTEST_MAIN(PersonalTest)
#include "tst_personal.moc"
