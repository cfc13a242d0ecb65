#include "data/firmstore.h"
#include "app/firststart.h"
#include "forms/messageservice.h"
#include "app/personal.h"
#include "core/textcheck.h"
#include "testdatabase.h"

#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

using namespace zarek;

namespace {

void createFirm(test::ScratchDatabase &scratch)
{
    FirmProfile firm;
    firm.UserName = QStringLiteral("Стара Фирма ООД");
    firm.UserAdres = QStringLiteral("ул. Първа 1");
    firm.UserCity = QStringLiteral("Пловдив");
    firm.UserTel = QStringLiteral("032 1");
    firm.UserGSM = QStringLiteral("0888 1");
    firm.UserMOL = QStringLiteral("Иван Иванов");
    QVERIFY(!createFirmAndAdministrator(scratch.db(), firm, QStringLiteral("a"), QStringLiteral("b")));
}

QString stored(QSqlDatabase db, const QString &column)
{
    QSqlQuery query(db);
    query.exec(QStringLiteral("SELECT ") + column + QStringLiteral(" FROM ZarekCfg"));
    query.next();
    return query.value(0).toString();
}

void type(QWidget &form, const char *name, const QString &text)
{
    form.findChild<QLineEdit *>(QString::fromLatin1(name))->setText(text);
}

}

class PersonalTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void savingWritesTheRowAndTheProfileWithBlankOptionals()
    {
        ZAREK_SCRATCH_DB(scratch);
        createFirm(scratch);
        RecordingMessageService messages;
        FirmProfile profile = readFirmRow(scratch.db())->profile;
        Personal form(scratch.db(), profile);
        QCOMPARE(form.findChild<QLineEdit *>(QStringLiteral("txtFirmaMOL"))->text(), QStringLiteral("Иван Иванов"));
        type(form, "txtFirmaName", QStringLiteral("  Нова Фирма О'Брайън ЕООД "));
        type(form, "txtFirmaMOL", QStringLiteral("   "));
        form.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(form.result(), int(QDialog::Accepted));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName")), QStringLiteral("Нова Фирма О'Брайън ЕООД"));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserMOL")), QStringLiteral(" "));
        QCOMPARE(profile.UserName, QStringLiteral("Нова Фирма О'Брайън ЕООД"));
    }

    void aMissingTelephoneStopsTheSaveButTheNameIsAlreadyInMemory()
    {
        ZAREK_SCRATCH_DB(scratch);
        createFirm(scratch);
        RecordingMessageService messages;
        FirmProfile profile = readFirmRow(scratch.db())->profile;
        Personal form(scratch.db(), profile);
        type(form, "txtFirmaName", QStringLiteral("Нова Фирма"));
        type(form, "txtFirmaTel", QString());
        form.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0].text,
                 QStringLiteral("Телефона на фирмата не е въведен!\nМоля, въведете телефона на фирмата!"));
        QCOMPARE(messages.shown[0].title, QStringLiteral("   ВНИМАНИЕ!"));
        QCOMPARE(profile.UserName, QStringLiteral("Нова Фирма"));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName")), QStringLiteral("Стара Фирма ООД"));
    }

    void cancellingLeavesTheRow()
    {
        ZAREK_SCRATCH_DB(scratch);
        createFirm(scratch);
        FirmProfile profile = readFirmRow(scratch.db())->profile;
        Personal form(scratch.db(), profile);
        type(form, "txtFirmaName", QStringLiteral("Друга"));
        form.findChild<QPushButton *>(QStringLiteral("cmdCancel"))->click();
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName")), QStringLiteral("Стара Фирма ООД"));
        QCOMPARE(profile.UserName, QStringLiteral("Стара Фирма ООД"));
    }

    void aRowChangedByAnotherUserIsNotOverwritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        createFirm(scratch);
        RecordingMessageService messages;
        FirmProfile profile = readFirmRow(scratch.db())->profile;
        Personal form(scratch.db(), profile);
        QSqlQuery other(scratch.openSecondConnection());
        QVERIFY(other.exec(QStringLiteral("UPDATE ZarekCfg SET UserTel = '02 999', row_version = row_version + 1")));
        type(form, "txtFirmaName", QStringLiteral("Нова Фирма"));
        form.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0].title, QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName")), QStringLiteral("Стара Фирма ООД"));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserTel")), QStringLiteral("02 999"));
        QVERIFY(form.result() != int(QDialog::Accepted));
    }

    // A NUL pasted into the firm's name: SQLite kept it, PostgreSQL refused it with raw SQL.
    void aControlCharacterIsRefusedAndNothingWritten()
    {
        ZAREK_SCRATCH_DB(scratch);
        createFirm(scratch);
        RecordingMessageService messages;
        FirmProfile profile = readFirmRow(scratch.db())->profile;
        Personal form(scratch.db(), profile);
        type(form, "txtFirmaName", QStringLiteral("AB") + QChar(u'\0') + QStringLiteral("CD"));
        form.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0], controlCharacterMessage(QStringLiteral("   ВНИМАНИЕ!")));
        QCOMPARE(profile.UserName, QStringLiteral("Стара Фирма ООД"));
        QCOMPARE(stored(scratch.db(), QStringLiteral("UserName")), QStringLiteral("Стара Фирма ООД"));
    }
};

QTEST_MAIN(PersonalTest)
#include "tst_personal.moc"
