// The program as a desktop program: Alt letters on every menu, F10, Enter on a button, F1 over a
// modal screen, the keys page, titles, the command line, and every screen on a 1024×768 screen.
// The screen is the offscreen platform's, set to 1024×768 less a panel (ZAREK_TEST_SCALE=2: the
// same in logical pixels on a screen of twice the resolution, scale factor 2).
#include "app/appstartup.h"
#include "app/demodata.h"
#include "app/desktopconventions.h"
#include "app/diskcommands.h"
#include "app/firststart.h"
#include "app/firststartdialog.h"
#include "app/frmmain.h"
#include "mainwindowfixture.h"
#include "app/helptopics.h"
#include "app/helpwindow.h"
#include "app/menutree.h"
#include "app/userlogin.h"
#include "core/windowtitle.h"
#include "courses/searchdialog.h"
#include "data/firmstore.h"
#include "data/schema.h"
#include "forms/messageservice.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QAbstractScrollArea>
#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QScreen>
#include <QTemporaryDir>
#include <QTimer>
#include <QToolButton>

using namespace zarek;
using zarek::test::acme;

namespace {

// Every question answered "Не": nothing is discarded or deleted while the screens are walked.
class NoSayingMessageService : public MessageService {
public:
    NoSayingMessageService() { MessageService::setInstance(this); }
    ~NoSayingMessageService() override { MessageService::setInstance(nullptr); }
    void inform(const UserMessage &message) override { shown.append(message); }
    bool ask(const UserMessage &) override { return false; }
    void beep() override {}
    QList<UserMessage> shown;
};

// The Alt letter of a caption ("&Справки" gives "с"), empty for none.
QString mnemonicOf(const QString &text)
{
    for (qsizetype i = 0; i + 1 < text.size(); ++i) {
        if (text[i] == QLatin1Char('&')) {
            if (text[i + 1] == QLatin1Char('&')) {
                ++i;
                continue;
            }
            return text[i + 1].toLower();
        }
    }
    return {};
}

// The buttons of a window that lie (partly) outside it or outside the box that holds them.
QStringList buttonsOutside(QWidget *window)
{
    QStringList outside;
    for (QAbstractButton *button : window->findChildren<QAbstractButton *>()) {
        if (!button->isVisibleTo(window) || (!qobject_cast<QPushButton *>(button) && !qobject_cast<QToolButton *>(button)))
            continue;
        bool scrolled = false;  // a button in a scrolled list is reached by scrolling
        for (QWidget *up = button->parentWidget(); up && up != window; up = up->parentWidget())
            scrolled = scrolled || qobject_cast<QAbstractScrollArea *>(up);
        if (scrolled)
            continue;
        const QRect place(button->mapTo(window, QPoint(0, 0)), button->size());
        for (QWidget *up = button->parentWidget(); up; up = up == window ? nullptr : up->parentWidget()) {
            const QRect box(up->mapTo(window, QPoint(0, 0)), up->size());
            if (!box.contains(place)) {
                outside.append(QStringLiteral("%1 \"%2\" at %3,%4 %5x%6")
                                   .arg(button->objectName(), button->text())
                                   .arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height()));
                break;
            }
        }
    }
    return outside;
}

}

class DesktopTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase()
    {
        QCOMPARE(QGuiApplication::primaryScreen()->availableGeometry().size(), QSize(1024, 704));
        qApp->installEventFilter(new DesktopConventions(qApp));
    }
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        FrmMain::setSettingsFile(m_dir->filePath(QStringLiteral("zarek.ini")));
    }

    // The windows had the platform's blank icon and the desktop could not tell the program's entry.
    // The icon reads its pictures only when asked for one, and then gives the program's own.
    void theWindowsHadNoIcon_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {48, 64, 128, 256})
            QTest::addRow("%d", size) << size;
    }
    void theWindowsHadNoIcon()
    {
        QFETCH(int, size);
        applyDesktopIdentity(*qApp);
        QCOMPARE(QGuiApplication::desktopFileName(), QStringLiteral("bg.zarek.Zarek"));
        QDialog screen;
        QCOMPARE(screen.windowIcon().availableSizes(),
                 (QList<QSize>{QSize(48, 48), QSize(64, 64), QSize(128, 128), QSize(256, 256)}));
        const QImage drawn = QApplication::windowIcon().pixmap(QSize(size, size)).toImage();
        const QImage own(QStringLiteral(":/icons/%1x%1/bg.zarek.Zarek.png").arg(size));
        QVERIFY(!own.isNull());
        QCOMPARE(drawn.size(), own.size());
        QCOMPARE(drawn.convertToFormat(QImage::Format_ARGB32_Premultiplied), own.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }

    void captionsTakeTheFirstFreeLetter_data()
    {
        QTest::addColumn<QStringList>("captions");
        QTest::addColumn<QStringList>("marked");
        QTest::newRow("first letters") << QStringList{"Справки", "Данни"} << QStringList{"&Справки", "&Данни"};
        QTest::newRow("a later word") << QStringList{"Справки", "Служебна баланс"} << QStringList{"&Справки", "Служебна &баланс"};
        QTest::newRow("any free letter") << QStringList{"Данни", "Дискети"} << QStringList{"&Данни", "Д&искети"};
        QTest::newRow("case does not make two") << QStringList{"ДАИ", "даи"} << QStringList{"&ДАИ", "д&аи"};
        QTest::newRow("an ampersand stays one") << QStringList{"А & Б"} << QStringList{"&А && Б"};
        QTest::newRow("no letter left") << QStringList{"аб", "ба", "аб"} << QStringList{"&аб", "&ба", "аб"};
    }
    void captionsTakeTheFirstFreeLetter()
    {
        QFETCH(QStringList, captions);
        QFETCH(QStringList, marked);
        QCOMPARE(withMnemonics(captions), marked);
    }

    // The menus had no Alt letters: every menu and every item has one, unique within its menu.
    void theMenusHadNoAltLettersAndF10DidNothing()
    {
        MAIN_WINDOW(window);
        QStringList topLetters;
        for (QAction *top : window.menuBar()->actions()) {
            const QString letter = mnemonicOf(top->text());
            QVERIFY2(!letter.isEmpty(), qPrintable(top->text()));
            QVERIFY2(!topLetters.contains(letter), qPrintable(top->text()));
            topLetters.append(letter);
            QStringList letters;
            for (QAction *entry : top->menu()->actions()) {
                if (entry->isSeparator())
                    continue;
                const QString itemLetter = mnemonicOf(entry->text());
                QVERIFY2(!itemLetter.isEmpty(), qPrintable(entry->text()));
                QVERIFY2(!letters.contains(itemLetter), qPrintable(top->text() + QStringLiteral(" → ") + entry->text()));
                letters.append(itemLetter);
            }
        }
        QCOMPARE(topLetters.size(), 6);

        // F10 did nothing: it opens the first menu of the bar.
        test::showActive(window);
        QTest::keyClick(&window, Qt::Key_F10);
        QTRY_VERIFY(window.menuBar()->activeAction());
        QCOMPARE(window.menuBar()->activeAction()->objectName(), QStringLiteral("mnuSpr"));
        QTRY_VERIFY(QApplication::activePopupWidget());
        QApplication::activePopupWidget()->close();
    }

    // Enter on a focused button did nothing outside a dialog, and in a dialog pressed the default
    // button instead: it presses the button that has the focus.
    void enterOnAFocusedButtonPressedAnotherOrNothing_data()
    {
        QTest::addColumn<bool>("inDialog");
        QTest::newRow("window") << false;
        QTest::newRow("dialog with another default") << true;
    }
    void enterOnAFocusedButtonPressedAnotherOrNothing()
    {
        QFETCH(bool, inDialog);
        std::unique_ptr<QWidget> window(inDialog ? new QDialog : new QWidget);
        auto *focused = new QPushButton(QStringLiteral("Изтрий"), window.get());
        auto *other = new QPushButton(QStringLiteral("Запиши"), window.get());
        other->move(0, 40);
        other->setDefault(true);
        int focusedClicks = 0, otherClicks = 0;
        connect(focused, &QPushButton::clicked, [&] { ++focusedClicks; });
        connect(other, &QPushButton::clicked, [&] { ++otherClicks; });
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        focused->setFocus();
        QTest::keyClick(focused, Qt::Key_Return);
        QTRY_COMPARE(focusedClicks, 1);
        QCOMPARE(otherClicks, 0);
        QTest::keyClick(focused, Qt::Key_Enter, Qt::KeypadModifier);
        QTRY_COMPARE(focusedClicks, 2);
    }

    // F1 on a modal screen opened the help behind it, out of reach: it opens in front of it.
    void f1OnAModalScreenShowedTheHelpBehindIt()
    {
        MAIN_WINDOW(window);
        test::showActive(window);
        QDialog screen(&window);
        screen.setProperty("helpTopic", 13);
        QWidget *helpInFront = nullptr;
        QWidget *helpOwner = nullptr;
        int topic = 0;
        QTimer::singleShot(0, [&] {
            QTest::keyClick(&screen, Qt::Key_F1);
            helpInFront = QApplication::activeModalWidget();
            if (auto *help = qobject_cast<HelpWindow *>(helpInFront)) {
                helpOwner = help->parentWidget();
                topic = help->currentTopic();
                // F1 in the help itself keeps it in front.
                QTest::keyClick(help, Qt::Key_F1);
                if (QApplication::activeModalWidget() != help)
                    helpOwner = nullptr;
                help->close();
            }
            screen.reject();
        });
        screen.exec();
        QVERIFY(qobject_cast<HelpWindow *>(helpInFront));
        QCOMPARE(helpOwner, &screen);
        QCOMPARE(topic, 13);
    }

    // The keys page is made from the menu tree: every shortcut of the menus is on it.
    void theKeysPageListsEveryShortcutOfTheMenus()
    {
        const QString page = findHelpTopic(helpKeysTopic)->html;
        int shortcuts = 0;
        for (const MenuEntry &entry : menuTree()) {
            if (entry.kind != MenuEntry::Kind::Item || entry.shortcut.isEmpty())
                continue;
            ++shortcuts;
            QVERIFY2(page.contains(QKeySequence(entry.shortcut).toString(QKeySequence::NativeText)), qPrintable(entry.name));
            QVERIFY2(page.contains(entry.caption), qPrintable(entry.name));
        }
        QVERIFY(shortcuts >= 8);
        QVERIFY(page.contains(QStringLiteral("F10")));
        QCOMPARE(findHelpTopic(helpKeysTopic)->title, QStringLiteral("Клавишни комбинации"));
        QVERIFY(findHelpTopic(helpGuideTopic)->html.contains(QStringLiteral("qrc:/guide/images/")));
    }

    void titlesAreZarekDashScreen_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("title");
        QTest::newRow("version and hyphen") << "Зарек 2.3 - Шофьори" << "Зарек – Шофьори";
        QTest::newRow("full version") << "Зарек 2.3.4 - Пътни листи" << "Зарек – Пътни листи";
        QTest::newRow("already so") << "Зарек – Помощ" << "Зарек – Помощ";
        QTest::newRow("no prefix") << "Журнал на курсовете" << "Зарек – Журнал на курсовете";
        QTest::newRow("leading blank") << " Инициализация" << "Зарек – Инициализация";
        QTest::newRow("name only") << "Зарек 2.3.4" << "Зарек";
        QTest::newRow("a word beginning so") << "Зареждане" << "Зарек – Зареждане";
    }
    void titlesAreZarekDashScreen()
    {
        QFETCH(QString, caption);
        QFETCH(QString, title);
        QCOMPARE(screenTitle(caption), title);
        QCOMPARE(screenTitle(title), title);
        QWidget window;
        window.setWindowTitle(caption);
        window.show();
        QCOMPARE(window.windowTitle(), title);
        window.setWindowTitle(caption);  // a screen that sets its title later
        QCOMPARE(window.windowTitle(), title);
        QMessageBox box(QMessageBox::Warning, QStringLiteral("ГРЕШКА при запис!"), QStringLiteral("текст"));
        box.show();
        QCOMPARE(box.windowTitle(), QStringLiteral("ГРЕШКА при запис!"));
    }

    void theCommandLineAnswersInBulgarian_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("answerStart");
        QTest::addColumn<int>("exitCode");
        QTest::newRow("--version") << QStringList{"--version"} << "Зарек, версия 2.3.4\n" << 0;
        QTest::newRow("-v") << QStringList{"-v"} << "Зарек, версия 2.3.4\n" << 0;
        QTest::newRow("--help") << QStringList{"--help"} << "Употреба: zarek [настройки]\n" << 0;
        QTest::newRow("-h") << QStringList{"-h"} << "Употреба: zarek [настройки]\n" << 0;
        QTest::newRow("unknown") << QStringList{"--databse", "x.db"} << "Непозната настройка: databse\n" << 2;
        QTest::newRow("no value") << QStringList{"--database"} << "Непълен команден ред" << 2;
        QTest::newRow("a start") << QStringList{"--database", "x.db"} << "" << 0;
    }
    void theCommandLineAnswersInBulgarian()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, answerStart);
        QFETCH(int, exitCode);
        const StartOptions options = parseStartOptions(QStringList{QStringLiteral("zarek")} + arguments);
        QCOMPARE(options.answers(), !answerStart.isEmpty());
        if (options.answers())
            QVERIFY2(options.answer.startsWith(answerStart), qPrintable(options.answer));
        QCOMPARE(options.answerExitCode, exitCode);
        QVERIFY(!options.probeStart);
    }
    void theHelpNamesEveryOptionButTheHiddenOnes()
    {
        const QString help = commandLineHelp();
        for (const char *option : {"--database <база>", "--demo-courses <брой>", "-h, --help", "-v, --version", "ZAREK_DATABASE"})
            QVERIFY2(help.contains(QString::fromUtf8(option)), option);
        QVERIFY(!help.contains(QStringLiteral("probe")));
        QVERIFY(!help.contains(QStringLiteral("--empty")));
        QVERIFY(parseStartOptions({QStringLiteral("zarek"), QStringLiteral("--probe-start")}).probeStart);
    }

    // The screens before the main window fit as well.
    void theFirstWindowsFitTheScreen()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const StartState state = readStartState(db);
        FirstStartDialog first(db, state);
        test::showExposed(first);
        checkFits(&first);
        UserLogin login(db);
        test::showExposed(login);
        checkFits(&login);
    }

    // The journal ran off a 1024×768 screen. Every command of the menus is run on a demo firm;
    // every window it opens (search dialogs are answered with a wide period and their first
    // choices, so the screens behind them open too) must fit the screen with all its buttons.
    void everyScreenFitsTheScreenWithAllItsButtons()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        DemoOptions demo;
        demo.courses = 120;
        QVERIFY(fillDemoDatabase(db, demo).ok());
        NoSayingMessageService messages;
        DiskCommandHooks hooks;
        hooks.chooseFile = [](ArchiveDialog) { return QString(); };
        hooks.dataFolder = m_dir->path();
        setDiskCommandHooks(hooks);

        FrmMain window(acme(), scratch.config(), db, QStringLiteral("A"));
        test::showExposed(window);
        checkFits(&window);

        // Commands that would change the firm's data or leave the program are not run.
        const QStringList skipped = {QStringLiteral("mnuFileExit"), QStringLiteral("mnuNewPer"), QStringLiteral("mnuHelpWeb"),
                                     QStringLiteral("mnuSpEvro"), QStringLiteral("mnuViewToolbar"),
                                     QStringLiteral("mnuViewStatusBar")};
        QSet<QString> reached;
        for (const MenuEntry &entry : menuTree()) {
            QAction *action = window.menuAction(entry.name);
            if (entry.kind != MenuEntry::Kind::Item || skipped.contains(entry.name) || !action->isEnabled())
                continue;
            QSet<QWidget *> seen;
            QSet<QWidget *> searched;
            QTimer walker;
            walker.setInterval(30);
            connect(&walker, &QTimer::timeout, [&] { walk(&window, seen, searched, reached); });
            walker.start();
            action->trigger();
            // The windows that stay beside the main window are closed too.
            QTRY_VERIFY_WITH_TIMEOUT(openWindows(&window).isEmpty(), 5000);
            walker.stop();
        }
        qInfo() << "screens opened:" << QStringList(reached.cbegin(), reached.cend()).join(QLatin1Char(' '));
        // The screens of the search commands were reached, not only their dialogs.
        for (const char *screen : {"Kurs", "Driver", "RowdList", "Faktura", "CourseJournal", "EditKM", "Options"})
            QVERIFY2(reached.contains(QString::fromLatin1(screen)), screen);
        setDiskCommandHooks({});
    }

    // With ZAREK_GUIDE_PICTURES naming a folder (scripts/guide-pictures.sh), the pictures of the
    // guide "Ръководство" are made there from the running program on the demo firm.
    void guidePictures()
    {
        const QString dir = qEnvironmentVariable("ZAREK_GUIDE_PICTURES");
        if (dir.isEmpty())
            QSKIP("set ZAREK_GUIDE_PICTURES to make the guide's pictures");
        ZAREK_ONLY_ON("sqlite", "the pictures are made once");
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const auto save = [&dir](QWidget *w, const QString &name) {
            w->activateWindow();
            QTest::qWait(80);
            QVERIFY2(w->grab().save(QDir(dir).filePath(name + QStringLiteral(".png"))), qPrintable(name));
        };
        {
            FirstStartDialog first(db, readStartState(db));
            first.show();
            save(&first, QStringLiteral("first-start"));
        }
        DemoOptions demo;
        demo.courses = 400;
        demo.today = QDate(2026, 11, 20);
        QVERIFY(fillDemoDatabase(db, demo).ok());
        {
            UserLogin login(db);
            login.show();
            save(&login, QStringLiteral("sign-in"));
        }
        NoSayingMessageService messages;
        const FirmProfileLoad firm = LoadFirmProfile(db);
        QVERIFY(firm.profile);
        FrmMain window(*firm.profile, scratch.config(), db, QStringLiteral("A"));
        window.resize(900, 560);
        window.show();
        save(&window, QStringLiteral("main-window"));

        // A command run; the windows it opens in turn are saved under the names given (an empty
        // name is not saved); a search dialog is answered with a wide period to reach its screen.
        const auto shoot = [&](const QString &menuItem, const QStringList &names) {
            int shown = 0;
            QSet<QWidget *> seen;
            QHash<QWidget *, int> waited;
            QTimer walker;
            walker.setInterval(40);
            connect(&walker, &QTimer::timeout, [&] {
                if (m_walking)
                    return;
                const QScopedValueRollback<bool> walking(m_walking, true);
                for (QWidget *w : openWindows(&window)) {
                    if (QApplication::activeModalWidget() && w != QApplication::activeModalWidget())
                        continue;
                    if (seen.contains(w)) {
                        // A search that found nothing stays open: the next choices are tried, then it
                        // is closed.
                        auto *search = qobject_cast<SearchDialog *>(w);
                        if (search && ++waited[w] % 10 == 0 && waited[w] < 200) {
                            for (QComboBox *combo : search->findChildren<QComboBox *>()) {
                                if (combo->isEnabled() && combo->count() > 1)
                                    combo->setCurrentIndex((combo->currentIndex() + 1) % combo->count());
                            }
                            pressOkLater(search);
                        } else if (search ? waited[w] == 200 : ++waited[w] == 50) {
                            qWarning() << menuItem << "closed" << w->objectName() << "after waiting";
                            closeLater(w);
                        }
                        continue;
                    }
                    seen.insert(w);
                    const QString name = names.value(shown++);
                    qInfo() << menuItem << w->objectName() << name;
                    if (!name.isEmpty())
                        save(w, name);
                    auto *search = qobject_cast<SearchDialog *>(w);
                    if (search && shown < names.size())
                        answerSearch(search);
                    else
                        closeLater(w);
                    return;
                }
            });
            walker.start();
            window.menuAction(menuItem)->trigger();
            QTRY_VERIFY_WITH_TIMEOUT(shown > 0, 5000);
            QTRY_VERIFY_WITH_TIMEOUT(openWindows(&window).isEmpty(), 5000);
            walker.stop();
        };
        shoot(QStringLiteral("mnuHelpPerson"), {QStringLiteral("firm")});
        shoot(QStringLiteral("mnuSpOption"), {QStringLiteral("options")});
        shoot(QStringLiteral("mnuDataShof"), {QStringLiteral("drivers")});
        shoot(QStringLiteral("mnuDataNew"), {QStringLiteral("course")});
        shoot(QStringLiteral("mnuDataKyrc"), {QStringLiteral("search")});
        shoot(QStringLiteral("mnuDataFakt"), {QString(), QStringLiteral("invoicing")});
        shoot(QStringLiteral("mnuDataKorPl"), {QString(), QStringLiteral("payment")});
        shoot(QStringLiteral("mnuSprJournal"), {QStringLiteral("journal")});
        std::unique_ptr<QFileDialog> archive(makeArchiveFileDialog(ArchiveDialog::Save, &window, m_dir->path()));
        archive->setOption(QFileDialog::DontUseNativeDialog);
        archive->resize(720, 420);
        archive->show();
        save(archive.get(), QStringLiteral("archive"));
    }

private:
    // Rejects a dialog, closes any other window, once the event loop turns.
    static void closeLater(QWidget *w)
    {
        if (auto *dialog = qobject_cast<QDialog *>(w))
            QMetaObject::invokeMethod(dialog, &QDialog::reject, Qt::QueuedConnection);
        else
            QMetaObject::invokeMethod(w, &QWidget::close, Qt::QueuedConnection);
    }

    static QList<QWidget *> openWindows(QWidget *main)
    {
        QList<QWidget *> open;
        for (QWidget *w : QApplication::topLevelWidgets()) {
            if (w != main && w->isVisible() && w->windowType() != Qt::Popup && w->windowType() != Qt::ToolTip
                && w->windowType() != Qt::SplashScreen && !w->inherits("QTipLabel"))
                open.append(w);
        }
        return open;
    }

    void walk(QWidget *main, QSet<QWidget *> &seen, QSet<QWidget *> &searched, QSet<QString> &reached)
    {
        if (m_walking)
            return;  // a tick while a window is being looked at
        const QScopedValueRollback<bool> walking(m_walking, true);
        for (QWidget *w : openWindows(main)) {
            if (!seen.contains(w)) {
                seen.insert(w);
                reached.insert(w->objectName());
                checkFits(w);
            }
            if (w != QApplication::activeModalWidget() && QApplication::activeModalWidget())
                continue;  // the one in front first
            auto *search = qobject_cast<SearchDialog *>(w);
            if (search && !searched.contains(w)) {
                searched.insert(w);
                answerSearch(search);
                return;
            }
            closeLater(w);
            return;
        }
    }

    // A wide period and the first entry of every list, then OK.
    static void answerSearch(QDialog *dialog)
    {
        if (auto *from = dialog->findChild<QLineEdit *>(QStringLiteral("Text1_0")))
            from->setText(QStringLiteral("01.01.2000"));
        if (auto *to = dialog->findChild<QLineEdit *>(QStringLiteral("Text1_1")))
            to->setText(QStringLiteral("31.12.2099"));
        for (QComboBox *combo : dialog->findChildren<QComboBox *>()) {
            if (combo->isEnabled() && combo->count() > 0 && combo->currentText().isEmpty())
                combo->setCurrentIndex(0);
        }
        pressOkLater(dialog);
    }

    // Presses a search dialog's OK once the event loop turns.
    static void pressOkLater(QDialog *dialog)
    {
        if (auto *ok = dialog->findChild<QPushButton *>(QStringLiteral("OKButton")))
            QMetaObject::invokeMethod(ok, &QPushButton::click, Qt::QueuedConnection);
    }

    static void checkFits(QWidget *w)
    {
        QCoreApplication::processEvents();
        const QRect room = w->screen()->availableGeometry();
        const QString name = w->objectName() + QStringLiteral(" \"") + w->windowTitle() + QLatin1Char('"');
        QVERIFY2(room.contains(w->frameGeometry()),
                 qPrintable(QStringLiteral("%1 is %2x%3 at %4,%5").arg(name).arg(w->frameGeometry().width())
                                .arg(w->frameGeometry().height()).arg(w->frameGeometry().x()).arg(w->frameGeometry().y())));
        const QStringList outside = buttonsOutside(w);
        QVERIFY2(outside.isEmpty(), qPrintable(name + QStringLiteral(": ") + outside.join(QStringLiteral("; "))));
        QVERIFY2(w->windowTitle().startsWith(QStringLiteral("Зарек")), qPrintable(name));
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    bool m_walking = false;
};

// The offscreen screen as a desktop of 1024×768 leaves it to a window: less a panel of 64 pixels
// (at scale factor 2, twice as many device pixels).
int main(int argc, char *argv[])
{
    const int scale = qEnvironmentVariableIntValue("ZAREK_TEST_SCALE") == 2 ? 2 : 1;
    QTemporaryDir configDir;
    const QString config = configDir.filePath(QStringLiteral("screen.json"));
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly))
        return 1;
    file.write(QStringLiteral("{\"screens\": [{\"name\": \"desk\", \"x\": 0, \"y\": 0, \"width\": %1, \"height\": %2, "
                              "\"logicalDpi\": %3, \"logicalBaseDpi\": 96}]}")
                   .arg(1024 * scale).arg(704 * scale).arg(96 * scale).toUtf8());
    file.close();
    qputenv("QT_QPA_PLATFORM", (QStringLiteral("offscreen:configfile=") + config).toUtf8());
    QApplication app(argc, argv);
    QTEST_SET_MAIN_SOURCE_PATH
    DesktopTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_desktop.moc"
