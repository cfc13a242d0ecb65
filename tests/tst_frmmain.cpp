#include "app/about.h"
#include "app/frmmain.h"
#include "app/helptopics.h"
#include "app/helpwindow.h"
#include <QMenu>
#include <QMenuBar>
#include "app/menutree.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "testdatabase.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolBar>

using namespace zarek;

namespace {

FirmProfile acme()
{
    FirmProfile profile;
    profile.UserName = QStringLiteral("ACME");
    return profile;
}

}

class FrmMainTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        FrmMain::setSettingsFile(m_dir->filePath(QStringLiteral("zarek.ini")));
    }

    void theMenuTreeIsCompleteWithItsCaptionsAndKeys()
    {
        ZAREK_SCRATCH_DB(scratch);
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QCOMPARE(window.windowTitle(), QStringLiteral("Зарек 2.3.4 - ACME"));
        for (const MenuEntry &entry : menuTree()) {
            QAction *action = window.menuAction(entry.name);
            QVERIFY2(action, qPrintable(entry.name));
            if (entry.kind == MenuEntry::Kind::Separator)
                QVERIFY(action->isSeparator());
            else
                QCOMPARE(action->text(), entry.caption);
            QCOMPARE(action->data().toInt(), entry.help);
        }
        QCOMPARE(window.menuAction(QStringLiteral("mnuSprKlientSakr"))->text(), QStringLiteral("Клиент за факруриране"));
        QCOMPARE(window.menuAction(QStringLiteral("mnuFileExit"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+Z")));
        QCOMPARE(window.menuAction(QStringLiteral("mnuDataNew"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+N")));
        QCOMPARE(window.menuAction(QStringLiteral("mnuDiskZar"))->shortcut(), QKeySequence(QStringLiteral("Ctrl+O")));
    }

    void rightsHideExactlyTheRestrictedItems_data()
    {
        QTest::addColumn<QString>("vid");
        QTest::addColumn<bool>("seesAll");
        QTest::newRow("administrator") << "A" << true;
        QTest::newRow("kind B") << "B" << true;
        QTest::newRow("ordinary") << "C" << false;
        QTest::newRow("lower-case b is ordinary") << "b" << false;
    }
    void rightsHideExactlyTheRestrictedItems()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, vid);
        QFETCH(bool, seesAll);
        FrmMain window(acme(), scratch.config(), scratch.db(), vid);
        for (const MenuEntry &entry : menuTree()) {
            const bool restricted = restrictedMenuEntries().contains(entry.name);
            QCOMPARE(window.menuAction(entry.name)->isVisible(), seesAll || !restricted);
        }
    }

    void theToolbarRunsItsMenuItems()
    {
        ZAREK_SCRATCH_DB(scratch);
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("C"));
        auto *toolbar = window.findChild<QToolBar *>(QStringLiteral("tbToolBar"));
        QVERIFY(toolbar);
        int buttons = 0;
        for (const ToolbarKey &key : toolbarKeys()) {
            auto *button = toolbar->findChild<QAction *>(key.key);
            QVERIFY2(button, qPrintable(key.key));
            QCOMPARE(button->toolTip(), key.toolTip);
            QCOMPARE(button->isEnabled(), window.menuAction(key.menuItem)->isEnabled());
            QVERIFY(!button->icon().isNull());
            ++buttons;
        }
        QCOMPARE(buttons, 13);
        QVERIFY(toolbar->findChild<QAction *>(QStringLiteral("Kola"))->isEnabled());
        QVERIFY(toolbar->findChild<QAction *>(QStringLiteral("NewKurs"))->isEnabled());
        QVERIFY(!toolbar->findChild<QAction *>(QStringLiteral("NewF"))->isEnabled());
    }

    void commandsWithoutTheirScreenAreDisabled()
    {
        ZAREK_SCRATCH_DB(scratch);
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        for (const char *built : {"mnuSprKola", "mnuSprPer", "mnuSprKlient", "mnuSprShof", "mnuDataKorКм", "mnuFileExit",
                                  "mnuSprBalans", "mnuViewToolbar", "mnuDataNew", "mnuDataKyrc", "mnuNal"})
            QVERIFY2(window.menuAction(QString::fromUtf8(built))->isEnabled(), built);
        for (const char *waiting : {"mnuDataNewInside", "mnuDataFakt", "mnuSlgZapl", "mnuDataPList", "mnuDiskZap"})
            QVERIFY2(!window.menuAction(QString::fromUtf8(waiting))->isEnabled(), waiting);
    }

    void aSearchCommandShowsItsDialogAndCancellingLeavesThePanel()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QString caption;
        QString dialogName;
        QTimer::singleShot(0, [&] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            caption = modal->windowTitle();
            dialogName = modal->objectName();
            static_cast<QDialog *>(modal)->reject();
        });
        window.menuAction(QStringLiteral("mnuSprKola"))->trigger();
        QCOMPARE(caption, QStringLiteral("Търсене - Курсове на кола №"));
        QCOMPARE(dialogName, QStringLiteral("DiaSeek"));
        QCOMPARE(window.searchMode(), SearchMode::Kola);
        QCOMPARE(window.panelText(1), QStringLiteral("Обработвам данните..."));
        QCOMPARE(messages.shown.last().text, QStringLiteral("Няма избрани ограничения за търсене!"));
    }

    // "Нов курс" opens the course editor at once, a new course started.
    void newCourseOpensTheEditorEntering()
    {
        ZAREK_SCRATCH_DB(scratch);
        RecordingMessageService messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QString caption, status;
        QTimer::singleShot(0, [&] {
            QWidget *modal = QApplication::activeModalWidget();
            if (!modal)
                return;
            caption = modal->windowTitle();
            status = modal->findChild<QLabel *>(QStringLiteral("lblStatus"))->text();
            static_cast<QDialog *>(modal)->reject();
        });
        window.menuAction(QStringLiteral("mnuDataNew"))->trigger();
        QVERIFY(caption.endsWith(QStringLiteral(" - Нов курс")));
        QCOMPARE(status, QStringLiteral("Нов курс"));
        QCOMPARE(window.searchMode(), SearchMode::NewKurs);
        QCOMPARE(window.panelText(1), QStringLiteral("Въвеждане на нов курс"));
    }

    // "Корекция на курс" asks for a truck and a period, then opens the editor on those courses.
    void courseCorrectionAsksForTheTruckThenOpensItsCourses()
    {
        ZAREK_SCRATCH_DB(scratch);
        scratch.exec(QStringLiteral("INSERT INTO tabl (data, kod, kola, Klient, Marsh, Tovar, km, ton, Tarifa, bruto, "
                                    "procent, neto, Fakt, NomFakt, plat, Doc) VALUES ('2026-03-05', '007', "
                                    "'РВ 5678 ТМ', 'Д''Аргос', 'Перник - София', 'Пясък', 25, 10, 0.125, 31.25, 0.94, "
                                    "30.31, FALSE, '0000000000', FALSE, FALSE)"));
        RecordingMessageService messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QString dialogCaption, editorCaption;
        int rows = -1;
        QTimer::singleShot(0, [&] {
            auto *dialog = static_cast<QDialog *>(QApplication::activeModalWidget());
            dialogCaption = dialog->windowTitle();
            dialog->findChild<QLineEdit *>(QStringLiteral("Text1_0"))->setText(QStringLiteral("01.03.2026"));
            dialog->findChild<QLineEdit *>(QStringLiteral("Text1_1"))->setText(QStringLiteral("31.03.2026"));
            QTimer::singleShot(0, [&] {
                auto *editor = static_cast<QDialog *>(QApplication::activeModalWidget());
                editorCaption = editor->windowTitle();
                rows = editor->findChild<RecordForm *>()->rowCount();
                editor->reject();
            });
            dialog->findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        });
        window.menuAction(QStringLiteral("mnuDataKyrc"))->trigger();
        QCOMPARE(dialogCaption, QStringLiteral("Търсене - Корекция на курсове на кола №"));
        QVERIFY(editorCaption.endsWith(QStringLiteral(" - Корекция курс")));
        QCOMPARE(rows, 1);
        QCOMPARE(window.searchMode(), SearchMode::EditKurs);
        QCOMPARE(window.panelText(1), QStringLiteral("Корекция на курс"));
        QVERIFY(messages.shown.isEmpty());
    }

    void geometryAndBarsSurviveARestartButAHiddenStatusBarComesBack()
    {
        ZAREK_SCRATCH_DB(scratch);
        {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            window.show();
            window.setGeometry(120, 90, 800, 500);
            window.menuAction(QStringLiteral("mnuViewToolbar"))->setChecked(false);
            window.menuAction(QStringLiteral("mnuViewStatusBar"))->setChecked(false);
            window.close();
        }
        QSettings stored(m_dir->filePath(QStringLiteral("zarek.ini")), QSettings::IniFormat);
        QCOMPARE(stored.value(QStringLiteral("Settings/MainWidth")).toString(), QStringLiteral("12000"));
        QCOMPARE(stored.value(QStringLiteral("Settings/MainStatBar")).toString(), QStringLiteral("False"));
        QVERIFY(!stored.contains(QStringLiteral("Settings/MainSataBar")));

        FrmMain again(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QCOMPARE(again.size(), QSize(800, 500));
        QVERIFY(again.findChild<QToolBar *>(QStringLiteral("tbToolBar"))->isHidden());
        QVERIFY(!again.statusBar()->isHidden());
    }

    void aMinimisedCloseStoresNoGeometry()
    {
        ZAREK_SCRATCH_DB(scratch);
        {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            window.show();
            window.setGeometry(100, 100, 700, 400);
            window.close();
        }
        {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            window.show();
            window.resize(900, 650);
            window.setWindowState(Qt::WindowMinimized);
            window.close();
        }
        FrmMain again(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QCOMPARE(again.size(), QSize(700, 400));
    }

    void aboutAndSplashTellVersionPlatformAndDatabase()
    {
        ZAREK_SCRATCH_DB(scratch);
        About about(scratch.config());
        QCOMPARE(about.windowTitle(), QStringLiteral("Зарек 2.3.4"));
        QCOMPARE(about.findChild<QLabel *>(QStringLiteral("lblVersion"))->text(), QStringLiteral("Version 2.3.4"));
        const QString info = About::systemInformation(scratch.config());
        QVERIFY(info.contains(QStringLiteral("Qt 6")));
        QVERIFY(info.contains(scratch.config().describe()));
        Splash splash;
        QCOMPARE(splash.findChild<QLabel *>(QStringLiteral("lblVersion"))->text(), QStringLiteral("Версия 2.3.4"));
        QCOMPARE(splash.findChild<QLabel *>(QStringLiteral("lblCompany"))->text(), QStringLiteral("Orvenn Ltd."));
        QVERIFY(splash.findChild<QLabel *>(QStringLiteral("lblSignedUser"))->text().startsWith(QStringLiteral("Потребител: ")));
        QVERIFY(!splash.findChild<QLabel *>(QStringLiteral("lblPlatform"))->text().contains(QStringLiteral("Windows 9")));
    }

    void everyHelpNumberOfTheMenusHasATopic()
    {
        for (const MenuEntry &entry : menuTree()) {
            if (entry.help > 0)
                QVERIFY2(findHelpTopic(entry.help), qPrintable(entry.name));
        }
        QVERIFY(findHelpTopic(helpContentsTopic)->html.contains(QStringLiteral("href=\"18\"")));
    }

    void f1ShowsTheTopicOfTheScreenInFront()
    {
        ZAREK_SCRATCH_DB(scratch);
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_F1);
        QCOMPARE(window.shownHelpTopic(), helpContentsTopic);

        QDialog screen(&window);
        screen.setProperty("helpTopic", 18);
        screen.show();
        screen.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&screen));
        QTest::keyClick(&screen, Qt::Key_F1);
        QCOMPARE(window.shownHelpTopic(), 18);
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the window, each top menu for both kinds of user, About and help.
    void screenshots()
    {
        const QString dir = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR");
        if (dir.isEmpty())
            QSKIP("set ZAREK_SCREENSHOT_DIR to save pictures");
        ZAREK_SCRATCH_DB(scratch);
        for (const QString &vid : {QStringLiteral("A"), QStringLiteral("C")}) {
            FrmMain window(acme(), scratch.config(), scratch.db(), vid);
            window.show();
            QTest::qWait(50);
            window.grab().save(dir + QStringLiteral("/main-%1.png").arg(vid));
            for (QMenu *menu : window.menuBar()->findChildren<QMenu *>(QString(), Qt::FindDirectChildrenOnly)) {
                if (!menu->menuAction()->isVisible())
                    continue;
                menu->popup(window.mapToGlobal(QPoint(0, 0)));
                QTest::qWait(30);
                menu->grab().save(dir + QStringLiteral("/menu-%1-%2.png").arg(vid, menu->objectName()));
                menu->close();
            }
        }
        About about(scratch.config());
        about.show();
        QTest::qWait(30);
        about.grab().save(dir + QStringLiteral("/about.png"));
        HelpWindow help;
        help.show();
        help.showTopic(13);
        QTest::qWait(30);
        help.grab().save(dir + QStringLiteral("/help-13.png"));
    }

    void weekdaysAreBulgarian()
    {
        QCOMPARE(weekdayName(1), QStringLiteral("Понеделник"));
        QCOMPARE(weekdayName(7), QStringLiteral("Неделя"));
        QCOMPARE(weekdayName(QDate(2026, 11, 22).dayOfWeek()), QStringLiteral("Неделя"));
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(FrmMainTest)
#include "tst_frmmain.moc"
