#include "app/demodata.h"
#include "app/firststart.h"
#include "app/firststartdialog.h"
#include "app/users.h"
#include "core/textcheck.h"
#include "data/database.h"
#include "data/schema.h"
#include "data/transaction.h"
#include "forms/messageservice.h"
#include "examplefirm.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

using namespace zarek;
using zarek::test::countBy;

namespace {

void type(QDialog &dialog, const char *name, const QString &text)
{
    dialog.findChild<QLineEdit *>(QString::fromLatin1(name))->setText(text);
}

void typeFirm(QDialog &dialog)
{
    type(dialog, "txtFirmaName", QStringLiteral("Д'Арт Транс ООД"));
    type(dialog, "txtFirmaAdres", QStringLiteral("ул. Шипка 5"));
    type(dialog, "txtFirmaCity", QStringLiteral("Пловдив"));
    type(dialog, "txtFirmaTel", QStringLiteral("032 111 222"));
    type(dialog, "txtFirmaFax", QStringLiteral("0888 111 222"));
}

void typeAdministrator(QDialog &dialog, const QString &name = QStringLiteral("Стоян"))
{
    type(dialog, "txtAdminName", name);
    type(dialog, "txtAdminPassword", QStringLiteral("s3cret"));
    type(dialog, "txtAdminRepeat", QStringLiteral("s3cret"));
}

bool shown(QDialog &dialog, const char *name)
{
    QWidget *widget = dialog.findChild<QWidget *>(QString::fromLatin1(name));
    return widget && widget->isVisibleTo(&dialog);
}

const char *firmRow = "INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserTel, UserGSM) "
                      "VALUES ('Фирма', 'Адрес', 'Град', '1', '2')";

}

// A fresh database of the current engine, the messages recorded, and the first start's dialog.
#define FIRST_START()                                                    \
    ZAREK_SCRATCH_DB_TELLING(scratch);                                   \
    FirstStartDialog dialog(scratch.db(), readStartState(scratch.db()))

class FirstStartTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void aNewDatabaseOffersTheFirmOrTheDemo()
    {
        ZAREK_SCRATCH_DB(scratch);
        const StartState state = readStartState(scratch.db());
        QVERIFY(state.needsFirstStart());
        QVERIFY(!state.hasData);
        RecordingMessageService messages;
        FirstStartDialog dialog(scratch.db(), state);
        QCOMPARE((QList<bool>{shown(dialog, "fraFirm"), shown(dialog, "fraAdmin"), shown(dialog, "cmdDemo")}),
                 (QList<bool>{true, true, true}));
        dialog.findChild<QPushButton *>(QStringLiteral("cmdDemo"))->click();
        QVERIFY(dialog.demoWanted());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM ZarekCfg")), 0);  // the caller makes it
    }

    // A control character is refused with nothing made; put right, the firm and its administrator
    // are made together.
    void theFirmAndItsAdministratorAreMadeTogetherOnceWithoutAControlCharacter()
    {
        FIRST_START();
        typeFirm(dialog);
        type(dialog, "txtFirmaName", QStringLiteral("AB") + QChar(u'\0') + QStringLiteral("CD"));
        typeAdministrator(dialog);
        dialog.findChild<QPushButton *>(QStringLiteral("cmdCreate"))->click();
        QCOMPARE(messages.shown, QList<UserMessage>{controlCharacterMessage(QStringLiteral("   ВНИМАНИЕ!"))});
        QCOMPARE(dialog.result(), int(QDialog::Rejected));
        QVERIFY(needsFirstStart(scratch.db()));
        QCOMPARE(countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM ZarekCfg")), 0);

        messages.shown.clear();
        typeFirm(dialog);
        typeAdministrator(dialog);
        dialog.findChild<QPushButton *>(QStringLiteral("cmdCreate"))->click();
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(!needsFirstStart(scratch.db()));
        QVERIFY(CheckUser(scratch.db(), QStringLiteral("s3cret"), QStringLiteral("Стоян")).LoginOk);
    }

    void aFirmWithoutAUserIsAskedOnlyForTheAdministrator()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QString::fromUtf8(firmRow)));
        const StartState state = readStartState(scratch.db());
        QVERIFY(state.needsFirstStart());
        RecordingMessageService messages;
        FirstStartDialog dialog(scratch.db(), state);
        // No demo: the database holds data.
        QCOMPARE((QList<bool>{shown(dialog, "fraFirm"), shown(dialog, "fraAdmin"), shown(dialog, "cmdDemo")}),
                 (QList<bool>{false, true, false}));
        typeAdministrator(dialog);
        dialog.findChild<QPushButton *>(QStringLiteral("cmdCreate"))->click();
        QVERIFY2(messages.shown.isEmpty(), qPrintable(messages.shown.value(0).text));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT COUNT(*), (SELECT COUNT(*) FROM Users WHERE Vid = 'A') FROM ZarekCfg"),
                 QStringLiteral("1|1"));
    }

    void theDemoIsRefusedWhereDataExists_data()
    {
        QTest::addColumn<QString>("row");
        QTest::newRow("a course") << "INSERT INTO tabl (data, kola, km, ton) VALUES ('2006-03-05', 'СА 1234 ВК', 1, 1)";
        QTest::newRow("a firm row") << QString::fromUtf8(firmRow);
        QTest::newRow("a truck") << "INSERT INTO Config (kola, Ton) VALUES ('СА 1234 ВК', 20)";
    }
    void theDemoIsRefusedWhereDataExists()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, row);
        QVERIFY(scratch.exec(row));
        QSqlDatabase db = scratch.db();
        DemoOptions options;
        options.courses = 20;
        const auto demo = fillDemoDatabase(db, options);
        QVERIFY(!demo);
        QCOMPARE(demo.message(), databaseHoldsDataMessage());
        QCOMPARE(test::rowsText(db, "SELECT COUNT(*), (SELECT COUNT(*) FROM Sklad) FROM Users"), QStringLiteral("0|0"));
    }

    void anAdministratorMadeMeanwhileByAnotherCopyEndsTheDialog()
    {
        FIRST_START();
        // Another workstation finishes its first start while this dialog is being filled in.
        QVERIFY(!createFirmAndAdministrator(scratch.openSecondConnection(), test::firmOf("Друга", "а", "г", "1", "2"),
                                            QStringLiteral("първи"), QStringLiteral("p")));
        typeFirm(dialog);
        typeAdministrator(dialog, QStringLiteral("втори"));
        dialog.findChild<QPushButton *>(QStringLiteral("cmdCreate"))->click();
        QCOMPARE(messages.shown, QList<UserMessage>{administratorExistsMessage()});
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT COUNT(*), (SELECT COUNT(*) FROM Users) FROM ZarekCfg"),
                 QStringLiteral("1|1"));
    }

    // A database at this program's schema is read without the write lock, so another copy's long
    // save never holds up a start; one at an older schema is still brought up to date, and one
    // that records a version this program does not know is still refused.
    void aCurrentDatabaseStartsWhileAnotherCopyWrites()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QString::fromUtf8(firmRow)));
        {
            const auto other = connectDatabase(scratch.config(), QStringLiteral("other"));
            QVERIFY(other);
            Transaction writing(other.value(), Transaction::Lock::Writer);
            QVERIFY(writing.isActive());
            const Checked<StartState> state = prepareDatabase(scratch.db());
            QVERIFY2(state, state ? "" : qPrintable(state.message().text));
            QVERIFY(state.value().hasFirm);
            QVERIFY(!state.value().hasUser);
        }
        closeDatabase(QStringLiteral("other"));

        const QString latest = QString::number(latestSchemaVersion());
        QVERIFY(scratch.exec(QStringLiteral("DELETE FROM zarek_schema WHERE version = ") + latest));
        const Checked<StartState> older = prepareDatabase(scratch.db());
        QVERIFY(!older || countBy(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM zarek_schema WHERE version = ") + latest) == 1);

        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO zarek_schema (version) VALUES (999)")));
        const Checked<StartState> newer = prepareDatabase(scratch.db());
        QVERIFY(!newer);
        QCOMPARE(newer.message(), newerSchemaMessage(999, latestSchemaVersion()));
    }

};

QTEST_MAIN(FirstStartTest)
#include "tst_firststart.moc"
