#include "app/about.h"
#include "app/frmmain.h"
#include "mainwindowfixture.h"
#include "app/helptopics.h"
#include "app/helpwindow.h"
#include <QMenu>
#include <QMenuBar>
#include "app/menutree.h"
#include "app/qttranslations.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

using namespace zarek;
using zarek::test::acme;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

class FrmMainTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        FrmMain::setSettingsFile(m_dir->filePath(QStringLiteral("zarek.ini")));
    }

    // The menu bar as built, walked menu by menu, against the menu tree as the firm knows it:
    // name, caption, shortcut and help number of every entry, separators included.
    void theMenuBarIsTheFixedMenuTree()
    {
        MAIN_WINDOW(window);
        QCOMPARE(window.windowTitle(), QStringLiteral("Зарек 2.3.4 - ACME"));
        const QStringList expected = {
            "mnuSpr|Справки||100", "mnuSprKola|Курсове на кола||5", "mnuSprPer|Всички курсове||6",
            "mnuSprJournal|Журнал на курсовете|Ctrl+J|270",  // added beside the firm's menu
            "mnuBar001|-",
            "mnuSprKlient|Курсове на клиент||7", "mnuSprShof|Курсове от шофьор||8", "mnuBar002|-",
            "mnuSprKlientSakr|Клиент за факруриране||9",
            "mnuSprFakturi|Фактури||325",  // added beside the firm's menu
            "mnuBar003|-", "mnuSprBalanc|Баланс на колите||10",
            "mnuSprPreRazh|Разход нафта||11", "mnuBar006|-", "mnuSprRowdList|Пътни листи||12",
            "mnuSprDok|Изтичащи документи||301",  // added beside the firm's menu
            "mnuSprVzemania|Вземания||381", "mnuSprIzvlechenie|Извлечение по сметка||382",  // added beside the firm's menu
            "mnuBar005|-",
            "mnuFileExit|Изход|Ctrl+Z|0",
            "mnuData|Данни||101", "mnuDataNew|Нов курс|Ctrl+N|13", "mnuDataShof|Шофьори|Ctrl+D|14",
            "mnuDataPList|Пътни листи|Ctrl+L|15", "mnuDataFakt|Фактуриране|Ctrl+F|16", "mnuDataBar3|-",
            "mnuDataNewInside|Международни курсове||0",
            "mnuDataDok|Документи||300",  // added beside the firm's menu
            "mnuDataKlienti|Клиенти||310",  // added beside the firm's menu
            "mnuDataPlashtania|Плащания от клиенти||380",  // added beside the firm's menu
            "mnuDataBar1|-", "mnuDataKyrc|Корекция на курс||17",
            "mnuDataKorКм|Корекция КМ||18", "mnuDataKorPl|Корекция плащане||36", "mnuDataEditFakt|Корекция фактури||19",
            "mnuDataDebit|Дебитно известие||318",  // added beside the firm's menu
            "mnuDataBar0|-", "mnuSlgZapl|Заплати||20", "mnuDataBar2|-", "mnuDataDAI|ДАИ||0",
            "mnuDisk|Дискети||102", "mnuDiskZap|Записване|Ctrl+S|21", "mnuDiskZar|Зареждане|Ctrl+O|22",
            "mnuDiskBar1|-", "mnuNewPer|Нова година||23",
            "mnuView|Служебна||103", "mnuViewToolbar|Бутони||24", "mnuViewStatusBar|Статус поле||25", "mnuSpBar0|-",
            "mnuSpOption|Настройки||26", "mnuSpBar1|-", "mnuSpAdmin|Пароли||0",
            "mnuSpBar2|-", "mnuSpEvro|Преминаване към евро||290",
            "mnuSklad|Склад||104", "mnuSklPrih|Приход||27", "mnuSklRaz|Разход||28", "mnuSepBar0|-",
            "mnuSprPrihod|Справка приходи||29", "mnuSprRazhod|Справка разходи||30", "mnuSprBalans|Справка баланс||0",
            "mnuSepBar1|-", "mnuNal|Наличност||31", "mnuSepBar2|-", "mnuPrihPer|Ревизия||32",
            "mnuHelp|Помощ||105", "mnuHelpContents|Съдържание||33",
            "mnuHelpGuide|Ръководство||292", "mnuHelpKeys|Клавишни комбинации||291", "mnuHelpBar1|-", "mnuHelpPerson|Инициализация||0",
            "mnuHelpBar0|-", "mnuHelpWeb|Интернет-страница||0", "mnuHelpBar2|-", "mnuHelpAbout|За програмата...||35"};
        const auto describe = [](QAction *action) {
            if (action->isSeparator())
                return action->objectName() + QStringLiteral("|-");
            return QStringLiteral("%1|%2|%3|%4")
                .arg(action->objectName(), QString(action->text()).remove(QLatin1Char('&')), action->shortcut().toString(QKeySequence::PortableText))
                .arg(action->data().toInt());
        };
        QStringList built;
        for (QAction *top : window.menuBar()->actions()) {
            built.append(describe(top));
            for (QAction *entry : top->menu()->actions())
                built.append(describe(entry));
        }
        QCOMPARE(built, expected);
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
        // The changeover to the euro is the administrator's alone.
        const QStringList administratorOnly = {QStringLiteral("mnuSpBar2"), QStringLiteral("mnuSpEvro")};
        for (const MenuEntry &entry : menuTree()) {
            const bool restricted = restrictedMenuEntries().contains(entry.name);
            const bool visible = administratorOnly.contains(entry.name) ? vid == QLatin1String("A") : seesAll || !restricted;
            QCOMPARE(window.menuAction(entry.name)->isVisible(), visible);
        }
    }

    // The toolbar's buttons in order with their tips; pressing one runs its menu item and nothing
    // else, and a button whose item has no screen yet is disabled and runs nothing.
    void theToolbarButtonsRunTheirMenuItems()
    {
        MAIN_WINDOW_TELLING(window, "C");
        test::showExposed(window);
        const QList<QStringList> expected = {
            {"Kola", "Справка за кола", "mnuSprKola"},
            {"Per", "Справка за период", "mnuSprPer"},
            {"SprList", "Справка пътни листи", "mnuSprRowdList"},
            {"Kl", "Справка за клиент", "mnuSprKlientSakr"},
            {"SprSh", "Справка за шофьор", "mnuSprShof"},
            {"Journal", "Журнал на курсовете", "mnuSprJournal"},  // added beside the firm's toolbar
            {"NewKurs", "Нов курс", "mnuDataNew"},
            {"NewShof", "Шофьор - нов/корекция ", "mnuDataShof"},
            {"NewL", "Пътен лист - нов/корекция ", "mnuDataPList"},
            {"NewF", "Фактура - нова/корекция ", "mnuDataFakt"},
            {"KM", "Корекция КМ", "mnuDataKorКм"},
            {"PL", "Корекция плащане", "mnuDataKorPl"},
            {"Save", "Запис на дискета", "mnuDiskZap"},
            {"Open", "Зареждане от дискета", "mnuDiskZar"}};
        auto *toolbar = window.findChild<QToolBar *>(QStringLiteral("tbToolBar"));
        QVERIFY(toolbar);
        QList<QAction *> buttons;
        for (QAction *action : toolbar->actions()) {
            if (!action->isSeparator())
                buttons.append(action);
        }
        QCOMPARE(buttons.size(), expected.size());

        // Every menu item that runs while a button is pressed; each screen it opens is closed at once.
        QStringList ran;
        for (const MenuEntry &entry : menuTree()) {
            if (entry.kind == MenuEntry::Kind::Item)
                connect(window.menuAction(entry.name), &QAction::triggered, this, [&ran, entry] { ran.append(entry.name); });
        }
        QTimer closer;
        connect(&closer, &QTimer::timeout, [] {
            if (auto *modal = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
                modal->reject();
        });
        closer.start(20);
        // Every button's item has its screen now: each is enabled and runs its item.
        for (qsizetype i = 0; i < expected.size(); ++i) {
            QAction *button = buttons.at(i);
            QCOMPARE((QStringList{button->objectName(), button->toolTip(), expected[i][2]}), expected[i]);
            QVERIFY(!button->icon().isNull());
            QVERIFY(button->isEnabled());
            auto *pressed = qobject_cast<QToolButton *>(toolbar->widgetForAction(button));
            QVERIFY(pressed);
            ran.clear();
            pressed->click();
            QCOMPARE(ran, QStringList{expected[i][2]});
        }
    }

    void commandsWithoutTheirScreenAreDisabled()
    {
        MAIN_WINDOW(window);
        for (const char *built : {"mnuSprKola", "mnuSprPer", "mnuSprKlient", "mnuSprShof", "mnuDataKorКм", "mnuFileExit",
                                  "mnuSprBalans", "mnuViewToolbar", "mnuDataNew", "mnuDataKyrc", "mnuDataFakt",
                                  "mnuDataEditFakt", "mnuDataNewInside", "mnuDataDAI", "mnuSlgZapl", "mnuDataKorPl",
                                  "mnuSprKlientSakr", "mnuSprBalanc", "mnuSprPreRazh", "mnuNal", "mnuSklPrih",
                                  "mnuSklRaz", "mnuSprPrihod", "mnuSprRazhod", "mnuPrihPer", "mnuDataPList",
                                  "mnuSprRowdList", "mnuDiskZap", "mnuDiskZar", "mnuNewPer", "mnuSpEvro"})
            QVERIFY2(window.menuAction(QString::fromUtf8(built))->isEnabled(), built);
    }

    // "Нов курс" opens the course editor at once, a new course started.
    void newCourseOpensTheEditorEntering()
    {
        MAIN_WINDOW_TELLING(window, "A");
        QString caption, status;
        test::onNextModal([&](QDialog &modal) {
            caption = modal.windowTitle();
            status = modal.findChild<QLabel *>(QStringLiteral("lblStatus"))->text();
            modal.reject();
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
        QVERIFY(test::insertRow(scratch.db(), QStringLiteral("tabl"), test::courseColumns,
                                {QDate(2026, 3, 5), "007", "РВ 5678 ТМ", "Д'Аргос", "Перник - София", "Пясък", 25, 10, 0.125,
                                 31.25, 0.94, 30.31, false, "0000000000", false, false}));
        RecordingMessageService messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QString dialogCaption, editorCaption;
        int rows = -1;
        test::onNextModal([&](QDialog &dialog) {
            dialogCaption = dialog.windowTitle();
            test::onNextModal([&](QDialog &editor) {
                editorCaption = editor.windowTitle();
                rows = editor.findChild<RecordForm *>()->rowCount();
                editor.reject();
            });
            test::enterPeriod(dialog, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        });
        window.menuAction(QStringLiteral("mnuDataKyrc"))->trigger();
        QCOMPARE(dialogCaption, QStringLiteral("Търсене - Корекция на курсове на кола №"));
        QVERIFY(editorCaption.endsWith(QStringLiteral(" - Корекция курс")));
        QCOMPARE(rows, 1);
        QCOMPARE(window.searchMode(), SearchMode::EditKurs);
        QCOMPARE(window.panelText(1), QStringLiteral("Корекция на курс"));
        QVERIFY(messages.shown.isEmpty());
    }

    // Geometry and bars survive a restart, but a hidden status bar comes back. The window was
    // placed with move() from geometry(): with a frame it crept by the frame at every start. The
    // same rectangle is stored and restored, start after start; a close while minimised stores none.
    void geometryAndBarsSurviveARestartButAHiddenStatusBarComesBack()
    {
        ZAREK_SCRATCH_DB(scratch);
        const QRect placed(150, 120, 800, 500);
        {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            test::showExposed(window);
            window.setGeometry(placed);
            window.menuAction(QStringLiteral("mnuViewToolbar"))->setChecked(false);
            window.menuAction(QStringLiteral("mnuViewStatusBar"))->setChecked(false);
            window.close();
        }
        QSettings stored(m_dir->filePath(QStringLiteral("zarek.ini")), QSettings::IniFormat);
        QCOMPARE(stored.value(QStringLiteral("Settings/MainWidth")).toString(), QStringLiteral("12000"));
        QCOMPARE(stored.value(QStringLiteral("Settings/MainStatBar")).toString(), QStringLiteral("False"));
        QVERIFY(!stored.contains(QStringLiteral("Settings/MainSataBar")));
        {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            window.show();
            window.resize(900, 650);
            window.setWindowState(Qt::WindowMinimized);
            window.close();
        }
        for (int start = 1; start <= 3; ++start) {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            test::showExposed(window);
            QCOMPARE(window.geometry(), placed);
            QVERIFY(window.findChild<QToolBar *>(QStringLiteral("tbToolBar"))->isHidden());
            QVERIFY(!window.statusBar()->isHidden());
            window.close();
        }
    }

    // A hidden toolbar or status bar came back whenever a modal screen closed: the marks are set
    // on activation without showing the bars.
    void aHiddenBarCameBackAfterAModalScreen()
    {
        MAIN_WINDOW(window);
        test::showActive(window);
        window.menuAction(QStringLiteral("mnuViewToolbar"))->trigger();
        window.menuAction(QStringLiteral("mnuViewStatusBar"))->trigger();
        auto *toolbar = window.findChild<QToolBar *>(QStringLiteral("tbToolBar"));
        QVERIFY(toolbar->isHidden());
        QVERIFY(window.statusBar()->isHidden());

        QDialog screen(&window);
        QTimer::singleShot(50, &screen, &QDialog::accept);
        screen.exec();
        window.activateWindow();  // as the window manager does when the screen goes
        QTRY_VERIFY(window.isActiveWindow());
        QCoreApplication::processEvents();
        QVERIFY(toolbar->isHidden());
        QVERIFY(window.statusBar()->isHidden());
        // The marks are on whatever the bars show, until the item is chosen again.
        QVERIFY(window.menuAction(QStringLiteral("mnuViewToolbar"))->isChecked());
        window.menuAction(QStringLiteral("mnuViewToolbar"))->trigger();
        QVERIFY(toolbar->isHidden());
        window.menuAction(QStringLiteral("mnuViewToolbar"))->trigger();
        QVERIFY(!toolbar->isHidden());
    }

    // "Инициализация" opened a new firm profile window at every click.
    void aNonModalFormOpenedAgainAtEveryClick()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserTel, UserGSM) "
                                            "VALUES ('ACME', 'ул. Първа 1', 'Пловдив', '032 1', '0888 1')")));
        RecordingMessageService messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        window.show();
        const auto shown = [&window] {
            int count = 0;
            for (QDialog *dialog : window.findChildren<QDialog *>(QStringLiteral("Personal")))
                count += dialog->isVisible() ? 1 : 0;
            return count;
        };
        QAction *person = window.menuAction(QStringLiteral("mnuHelpPerson"));
        person->trigger();
        person->trigger();
        QCOMPARE(window.findChildren<QDialog *>(QStringLiteral("Personal")).size(), 1);
        QCOMPARE(shown(), 1);
        QDialog *first = window.findChild<QDialog *>(QStringLiteral("Personal"));
        first->setWindowState(Qt::WindowMinimized);
        person->trigger();  // a minimised one comes back
        QVERIFY(!first->isMinimized());
        first->close();
        person->trigger();  // a closed one is not shown again: a fresh one opens
        QCOMPARE(shown(), 1);
        QTRY_COMPARE(window.findChildren<QDialog *>(QStringLiteral("Personal")).size(), 1);
        QVERIFY(messages.shown.isEmpty());
    }

    // A search command shows its dialog, with the hourglass while the dialog loads its lists (the
    // kilometre correction only the text) and the pointer back once the dialog waits for the user.
    // Cancelling it tells so and puts the panel back.
    void aSearchCommandShowsItsDialogWithoutAnHourglassWhileItWaits_data()
    {
        QTest::addColumn<QString>("menuItem");
        QTest::addColumn<bool>("hourglass");
        QTest::addColumn<QString>("caption");
        QTest::newRow("courses of a truck") << "mnuSprKola" << true << "Търсене - Курсове на кола №";
        QTest::newRow("course correction") << "mnuDataKyrc" << true << "Търсене - Корекция на курсове на кола №";
        QTest::newRow("km correction: text only")
            << "mnuDataKorКм" << false << "Търсене - Корекция КМ на курсовете на кола №";
    }
    void aSearchCommandShowsItsDialogWithoutAnHourglassWhileItWaits()
    {
        QFETCH(QString, menuItem);
        QFETCH(bool, hourglass);
        QFETCH(QString, caption);
        ZAREK_SCRATCH_DB(scratch);
        // No courses: the dialog tells the empty list while it loads, and the pointer is seen then.
        struct PointerWatch : RecordingMessageService {
            void inform(const UserMessage &message) override
            {
                RecordingMessageService::inform(message);
                pointers.append(QApplication::overrideCursor() ? QApplication::overrideCursor()->shape() : -1);
            }
            QList<int> pointers;
        } messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QString panel, shownCaption, dialogName;
        bool pointerWhileWaiting = true;
        test::onNextModal([&](QDialog &modal) {
            panel = window.panelText(1);
            shownCaption = modal.windowTitle();
            dialogName = modal.objectName();
            pointerWhileWaiting = QApplication::overrideCursor() != nullptr;
            modal.reject();
        });
        window.menuAction(menuItem)->trigger();
        QCOMPARE(shownCaption + QLatin1Char('|') + dialogName, caption + QStringLiteral("|DiaSeek"));
        QCOMPARE(window.searchMode(), SearchMode::Kola);
        QCOMPARE(panel, QStringLiteral("Обработвам данните..."));
        QVERIFY(!pointerWhileWaiting);
        QCOMPARE(messages.pointers.first(), hourglass ? int(Qt::WaitCursor) : -1);  // "Липсват данните за списъка!"
        QVERIFY(!QApplication::overrideCursor());
        QCOMPARE(window.panelText(1), QStringLiteral("Готов за работа"));  // nothing is being worked on
        QCOMPARE(messages.shown.last().text, QStringLiteral("Няма избрани ограничения за търсене!"));
    }

    // The kilometre correction's own status text was missing.
    void theKmCorrectionToldNothingInTheStatusBar()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(test::insertRow(scratch.db(), QStringLiteral("tabl"), test::courseColumns,
                                {QDate(2026, 3, 5), "007", "РВ 5678 ТМ", "Бетон АД", "Перник - София", "Пясък", 1, 10, 0.35,
                                 3.5, 0.11, 3.39, false, "0000000000", false, false}));
        RecordingMessageService messages;
        FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
        QString panel, screenName;
        test::onNextModal([&](QDialog &dialog) {
            test::onNextModal([&](QDialog &screen) {
                screenName = screen.objectName();
                panel = window.panelText(1);
                screen.reject();
            });
            test::enterPeriod(dialog, QStringLiteral("01.03.2026"), QStringLiteral("31.03.2026"));
        });
        window.menuAction(QStringLiteral("mnuDataKorКм"))->trigger();
        QCOMPARE(screenName, QStringLiteral("EditKM"));
        QCOMPARE(panel, QStringLiteral("Корекция на курсове..."));
    }

    // Qt's own dialogs spoke English.
    void qtsOwnDialogsSpokeEnglish()
    {
        QVERIFY(loadQtTranslations(*qApp));
        QDialogButtonBox buttons(QDialogButtonBox::Cancel | QDialogButtonBox::Save);
        QCOMPARE(buttons.button(QDialogButtonBox::Cancel)->text().remove(QLatin1Char('&')), QStringLiteral("Отказ"));
        QVERIFY(QCoreApplication::translate("QFileDialog", "File &name:") != QLatin1String("File &name:"));
    }

    // Ctrl+Z, "undo" in every other program, ended this one at once.
    void ctrlZEndedTheProgramWithoutAQuestion()
    {
        MAIN_WINDOW_TELLING(window, "A");
        test::showActive(window);
        messages.answers = {false};
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(onlyText(messages.asked), QStringLiteral("Да изляза ли от програмата?"));
        QVERIFY(window.isVisible());
        messages.answers = {true};
        QTest::keyClick(&window, Qt::Key_Z, Qt::ControlModifier);
        QVERIFY(!window.isVisible());
    }


    void aboutAndSplashTellVersionPlatformAndDatabase()
    {
        ZAREK_SCRATCH_DB(scratch);
        About about(scratch.config());
        QCOMPARE(about.windowTitle(), QStringLiteral("Зарек – За програмата"));
        QCOMPARE(about.findChild<QLabel *>(QStringLiteral("lblVersion"))->text(), QStringLiteral("Версия 2.3.4"));
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
        MAIN_WINDOW(window);
        test::showActive(window);
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
        ZAREK_SCREENSHOT_DIR(dir);
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
