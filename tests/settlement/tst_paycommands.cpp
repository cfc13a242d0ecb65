#include "app/frmmain.h"
#include "courses/searchdialog.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "reports/reportpreview.h"
#include "settlementfixture.h"
#include "testdatabase.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

using namespace zarek;
using namespace zarek::test;

namespace {

bool fillCourses(QSqlDatabase db)
{
    const QString truck = QStringLiteral("СА 1234 ВК");
    return insertDriver(db, QStringLiteral("007"), driverName(), QStringLiteral("7503124567"),
                        QStringLiteral("645123987"))
           && insertTruck(db, truck, 10, 20)
           && insertCourse(db, {QDate(2006, 3, 1), "007", truck, "София - Перник", 10, 25, 0.125, 31.25, 30.31})
           && insertCourse(db, {QDate(2006, 3, 5), "007", truck, "Перник - Радомир", 12.5, 40, 0.1, 50, 48.5, true});
}

// What the command showed: the papers and screens in turn, and the progress boxes still alive
// while each stood on screen.
struct Seen {
    QStringList windows;
    QString dialogCaption;
    QString caption;
    int rows = -1;
    qsizetype progressBoxes = -1;
    // The paper as it first showed: its pages laid out by then, and whether that was all.
    int pagesWhenShown = -1;
    bool laidOutWhenShown = false;
};

// Notes what a paper had laid out at the moment it showed.
class ShowWatcher : public QObject {
public:
    explicit ShowWatcher(Seen &seen) : m_seen(seen) { qApp->installEventFilter(this); }
    ~ShowWatcher() override { qApp->removeEventFilter(this); }

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *preview = qobject_cast<ReportPreview *>(watched);
        if (preview && event->type() == QEvent::Show && m_seen.pagesWhenShown < 0) {
            m_seen.pagesWhenShown = preview->pageCount();
            m_seen.laidOutWhenShown = preview->isLaidOut();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    Seen &m_seen;
};

qsizetype progressBoxes()
{
    qsizetype count = 0;
    for (QWidget *widget : QApplication::allWidgets())
        count += qobject_cast<ProgDialog *>(widget) != nullptr;
    return count;
}

// Answers whatever modal window comes up: the search dialog with the period of March 2006 and the
// choice given, a paper or screen by reading and closing it.
class ModalDriver : public QObject {
public:
    ModalDriver(Seen &seen, const char *option) : m_seen(seen), m_option(option)
    {
        connect(&m_timer, &QTimer::timeout, this, &ModalDriver::step);
        m_timer.start(10);
    }

private:
    void step()
    {
        QWidget *modal = QApplication::activeModalWidget();
        if (!modal)
            return;
        m_seen.windows << modal->objectName();
        if (auto *dialog = qobject_cast<SearchDialog *>(modal)) {
            m_seen.dialogCaption = dialog->windowTitle();
            dialog->findChild<QLineEdit *>(QStringLiteral("Text1_0"))->setText(QStringLiteral("01.03.2006"));
            dialog->findChild<QLineEdit *>(QStringLiteral("Text1_1"))->setText(QStringLiteral("31.03.2006"));
            if (m_option)
                dialog->findChild<QRadioButton *>(QString::fromLatin1(m_option))->click();
            dialog->findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
        } else if (auto *preview = qobject_cast<ReportPreview *>(modal)) {
            m_seen.caption = preview->report().windowCaption;
            m_seen.windows.last() = preview->report().name;
            m_seen.progressBoxes = progressBoxes();
            preview->reject();
        } else if (modal->objectName() == QLatin1String("Plashtane")) {
            m_seen.caption = modal->windowTitle();
            m_seen.rows = modal->findChild<QTableView *>(QStringLiteral("GridEX1"))->model()->rowCount();
            static_cast<QDialog *>(modal)->reject();
        }
    }

    Seen &m_seen;
    const char *m_option;
    QTimer m_timer;
};

}

class PayCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { addEngineRows(); }
    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        FrmMain::setSettingsFile(m_dir->filePath(QStringLiteral("zarek.ini")));
    }

    void payCommandsAreInTheMenu()
    {
        ZAREK_SCRATCH_DB(scratch);
        FrmMain window(exampleFirm(), scratch.config(), scratch.db(), QStringLiteral("C"));
        for (const char *item : {"mnuSlgZapl", "mnuDataKorPl", "mnuSprShof"})
            QVERIFY2(window.menuAction(QString::fromLatin1(item))->isEnabled(), item);
    }

    void theCommandsShowTheirPaperOrScreen_data()
    {
        QTest::addColumn<QString>("menuItem");
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("dialog");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QString>("panel");
        QTest::newRow("pay sheet") << "mnuSlgZapl" << "" << "Търсене - Заплата на шофьор..." << "rptZaplata"
                                   << "Зарек 2.3 - Заплата" << "Заплати за период";
        QTest::newRow("payment correction") << "mnuDataKorPl" << "" << "Търсене - Корекция плащане на шофьор"
                                            << "Plashtane" << "Зарек 2.3 - Плащане курсове" << "Справка за курсове...";
        QTest::newRow("paid list") << "mnuSprShof" << "Option2" << "Търсене - Курсове на шофьор" << "rptNePlaten"
                                   << "Зарек 2.3 - Справка платени курсове" << "Справка за курсове...";
        QTest::newRow("unpaid list") << "mnuSprShof" << "Option3" << "Търсене - Курсове на шофьор" << "rptNePlaten"
                                     << "Зарек 2.3 - Справка неплатени курсове" << "Справка за курсове...";
    }
    void theCommandsShowTheirPaperOrScreen()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, menuItem);
        QFETCH(QString, option);
        QFETCH(QString, dialog);
        QFETCH(QString, shown);
        QFETCH(QString, caption);
        QFETCH(QString, panel);
        QVERIFY(fillCourses(scratch.db()));
        RecordingMessageService messages;
        FrmMain window(exampleFirm(), scratch.config(), scratch.db(), QStringLiteral("A"));
        Seen seen;
        const QByteArray optionName = option.toLatin1();
        ModalDriver driver(seen, option.isEmpty() ? nullptr : optionName.constData());
        window.menuAction(menuItem)->trigger();
        QVERIFY2(messages.shown.isEmpty(), messages.shown.isEmpty() ? "" : qPrintable(messages.shown.first().text));
        QCOMPARE(seen.windows.size(), 2);
        QCOMPARE(seen.dialogCaption, dialog);
        QCOMPARE(seen.windows.last(), shown);
        QCOMPARE(seen.caption, caption);
        QCOMPARE(window.panelText(1), panel);
        if (shown == QLatin1String("Plashtane"))
            QCOMPARE(seen.rows, 1);
        else
            QCOMPARE(seen.progressBoxes, 0);  // the progress box went with its work, before the paper
        QCOMPARE(progressBoxes(), 0);
    }

    void aLongPaySheetShowsItsFirstPageBeforeTheRestIsLaidOut()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(fillCourses(scratch.db()));
        const QString truck = QStringLiteral("СА 1234 ВК");
        for (int day = 0; day < 150; ++day)
            QVERIFY(insertCourse(scratch.db(), {QDate(2006, 3, 1 + day % 28), "007", truck, "София - Перник", 10, 25,
                                                0.125, 31.25, 30.31}));
        RecordingMessageService messages;
        FrmMain window(exampleFirm(), scratch.config(), scratch.db(), QStringLiteral("A"));
        Seen seen;
        ShowWatcher watcher(seen);
        ModalDriver driver(seen, nullptr);
        window.menuAction(QStringLiteral("mnuSlgZapl"))->trigger();
        QCOMPARE(seen.windows.last(), QStringLiteral("rptZaplata"));
        QCOMPARE(seen.pagesWhenShown, 1);
        QVERIFY(!seen.laidOutWhenShown);
    }

    void noProgressBoxOutlivesARefusedRun_data()
    {
        QTest::addColumn<QString>("menuItem");
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("prepare");
        QTest::addColumn<QString>("message");
        QTest::newRow("pay sheet, no unpaid course") << "mnuSlgZapl" << "" << "UPDATE tabl SET plat = TRUE"
                                                     << "Няма курсове за плащане!";
        QTest::newRow("pay sheet, truck without percent") << "mnuSlgZapl" << "" << "DELETE FROM Config"
                                                          << "Няма зададен процент за кола № СА 1234 ВК !";
        QTest::newRow("empty paid list") << "mnuSprShof" << "Option2" << "UPDATE tabl SET plat = FALSE"
                                         << "Няма платени курсове!";
        QTest::newRow("empty unpaid list") << "mnuSprShof" << "Option3" << "UPDATE tabl SET plat = TRUE"
                                           << "Няма платени курсове!";
    }
    void noProgressBoxOutlivesARefusedRun()
    {
        ZAREK_SCRATCH_DB(scratch);
        QFETCH(QString, menuItem);
        QFETCH(QString, option);
        QFETCH(QString, prepare);
        QFETCH(QString, message);
        QVERIFY(fillCourses(scratch.db()));
        QVERIFY(scratch.exec(prepare));
        RecordingMessageService messages;
        FrmMain window(exampleFirm(), scratch.config(), scratch.db(), QStringLiteral("A"));
        Seen seen;
        const QByteArray optionName = option.toLatin1();
        ModalDriver driver(seen, option.isEmpty() ? nullptr : optionName.constData());
        window.menuAction(menuItem)->trigger();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first(), (UserMessage{QStringLiteral("ВНИМАНИЕ!"), message}));
        QCOMPARE(seen.windows.size(), 1);  // the search dialog alone
        QCOMPARE(progressBoxes(), 0);
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
};

QTEST_MAIN(PayCommandsTest)
#include "tst_paycommands.moc"
