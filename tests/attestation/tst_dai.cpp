#include "examplefirm.h"
#include "attestation/dai.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <memory>

using namespace zarek;
using zarek::test::child;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

const QDate today(2026, 3, 16);

void prepare(test::ScratchDatabase &scratch)
{
    QVERIFY(scratch.exec("INSERT INTO shof (kod, ime, EGN, LKarta) VALUES "
                         "('002', 'Иван Петров Иванов', '7501020000', '612345678'), "
                         "('001', 'Георги Д''Амато', '0145020000', '645123987'), "
                         "('003', 'Петър Късия', '75010', '611111111')"));
}

QString label(QWidget &w, const char *name) { return child<QLabel>(w, name)->text(); }
// The texts of the labels named, in order.
QStringList labels(QWidget &w, std::initializer_list<const char *> names)
{
    QStringList texts;
    for (const char *name : names)
        texts << label(w, name);
    return texts;
}

// A click on the box itself (a check box reacts to its box and text, not to the rest of its row).
void tick(QWidget &w, const char *name)
{
    auto *box = child<QCheckBox>(w, name);
    QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, QPoint(8, box->height() / 2));
}

// Picks a driver from the list with the mouse, as a click in the open list does.
void pickDriver(DAI &screen, const QString &name)
{
    auto *combo = child<QComboBox>(screen, "Combo1");
    const int index = combo->findText(name);
    QVERIFY2(index >= 0, qPrintable(name));
    combo->setCurrentIndex(index);
    emit combo->activated(index);
}

}

// Each test starts on a fresh database with three drivers (one with a short personal number) and a
// message recorder; open() makes the screen on it.
class DaiTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<DAI> dai;

    DAI &open()
    {
        dai = std::make_unique<DAI>(database->db(), test::exampleAttestingFirm(), nullptr, today);
        return *dai;
    }

private slots:
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        prepare(*database);
    }
    void cleanup()
    {
        dai.reset();
        tearDown();
    }

    void theSheetShowsTheFirmAndWaitsForADriver()
    {
        DAI &screen = open();
        QCOMPARE(screen.windowTitle(), QStringLiteral("Удостоверение ДАИ"));
        // The form in use opens; the program's older one is a choice.
        QCOMPARE(screen.form(), AttestationForm::Decision2009);
        // Printed before a driver is picked, items 8 to 10 stay empty.
        const Report report = screen.attestationReport().value();
        for (const char *item : {"Label26", "Label28", "Label30"})
            QCOMPARE(report.control("PageHeader", item).caption, QString());
        QCOMPARE(label(screen, "lblItemFrom"), QStringLiteral("12. от (час/ден/месец/година):"));
        QCOMPARE(child<QLineEdit>(screen, "txtHour_0")->text(), QStringLiteral("00:00"));
        QCOMPARE(child<QLineEdit>(screen, "txtHour_1")->text(), QStringLiteral("24:00"));
        screen.setForm(AttestationForm::Decision2007);
        QCOMPARE(labels(screen, {"lblFirmaName", "lblFirmaAdres", "lblFirmaTel", "lblFirmaFax", "lblFirmaEmail", "lblFirmaMOL"}),
                 (QStringList{"Транспорт Петров ЕООД", "ул. Искър 12, София, България", "02 987 65 43", "0888 123 456",
                              "office@petrov.bg", "Петър Петров"}));
        QCOMPARE(label(screen, "lblT17"),
                 QStringLiteral("17. Аз, водач на превозно средство, потвърждавам, че по време на горепосочения период "
                                "не съм управлявал превозно средство,\n       попадащо в Регламент (ЕО) №561/2006 или AETR"));
        QCOMPARE(labels(screen, {"lblItem1", "lblItem2", "lblItem10", "lblItemFrom", "lblItem16", "lblItem18"}),
                 (QStringList{"1. Име на фирмата:", "2. Адрес, пощенски код, град, държава;", "10. Номер на лична карта:",
                              "11. от:", "16. За предприятието/фирмата място:", "18. Място"}));
        QCOMPARE(child<QCheckBox>(screen, "Check1")->text(), QStringLiteral("е бил в отпуск по болест"));
        for (const char *hidden : {"lblDriverName", "lblDriverBorn", "lblDriverLK", "lblDataStart", "lblDataStop",
                                   "Check4", "Check5", "Check6", "txtStarted"})
            QVERIFY2(child(screen, hidden)->isHidden(), hidden);
        auto *combo = child<QComboBox>(screen, "Combo1");
        QCOMPARE(combo->count(), 3);
        QCOMPARE(combo->itemText(0), QStringLiteral("Георги Д'Амато"));  // by code
        QCOMPARE(combo->currentIndex(), -1);
        QVERIFY(messages->shown.isEmpty());
    }

    // A driver with an apostrophe in the name is found; the birth date comes from the personal number.
    void pickingADriverShowsNameBirthDateAndCard()
    {
        DAI &screen = open();
        screen.show();
        pickDriver(screen, QStringLiteral("Георги Д'Амато"));
        QVERIFY(messages->shown.isEmpty());
        QCOMPARE(labels(screen, {"lblDriverName", "lblDriverBorn", "lblDriverLK"}),
                 (QStringList{"Георги Д'Амато", "02.5.2001 г.", "645123987"}));
        QVERIFY(child(screen, "lblDriverName")->isVisible());
        QVERIFY(!child(screen, "Combo1")->isVisible());
        const AttestationSheet sheet = screen.sheet();
        QCOMPARE(sheet.driverName, QStringLiteral("Георги Д'Амато"));
        QCOMPARE(sheet.birthDate, QStringLiteral("02.5.2001"));

        // A click on the name brings the list back to pick another.
        QTest::mouseClick(child(screen, "lblDriverName"), Qt::LeftButton);
        QVERIFY(child(screen, "Combo1")->isVisible());
        pickDriver(screen, QStringLiteral("Иван Петров Иванов"));
        QCOMPARE(label(screen, "lblDriverBorn"), QStringLiteral("02.01.1975 г."));
    }

    // A personal number too short or not digits: no birth date, a message, and the rest works.
    void aWrongPersonalNumberGivesAnEmptyBirthDateAndAMessage()
    {
        DAI &screen = open();
        pickDriver(screen, QStringLiteral("Петър Късия"));
        QCOMPARE(messages->shown.size(), 1);
        QCOMPARE(messages->shown.first().text.section('\n', 0, 0), QStringLiteral("Грешно ЕГН на шофьора!"));
        QCOMPARE(labels(screen, {"lblDriverBorn", "lblDriverLK"}), (QStringList{"", "611111111"}));
        QCOMPARE(screen.sheet().birthDate, QString());
        const Report report = screen.attestationReport().value();
        QCOMPARE(report.control("PageHeader", "Label26").caption, QStringLiteral("Петър Късия"));
        QCOMPARE(report.control("PageHeader", "Label28").caption, QString());
    }

    // Ticking a second box clears the first, and the cross follows it: what prints is what shows.
    void tickingASecondBoxClearsTheFirstAndTheCrossFollowsIt()
    {
        DAI &screen = open();
        screen.setForm(AttestationForm::Decision2007);
        screen.show();
        const auto crossTop = [&screen] {
            const Report report = screen.attestationReport().value();
            const ReportControl &line = report.control("PageHeader", "Line2");
            return line.visible ? line.top : -1;
        };
        QCOMPARE(crossTop(), -1);
        tick(screen, "Check1");
        QCOMPARE(screen.sheet().reason, AttestationReason::SickLeave);
        QCOMPARE(crossTop(), 8865);
        tick(screen, "Check3");
        QVERIFY(!child<QCheckBox>(screen, "Check1")->isChecked());
        QCOMPARE(screen.sheet().reason, AttestationReason::ExemptVehicle);
        QCOMPARE(crossTop(), 9510);
        QTest::keyClick(child<QCheckBox>(screen, "Check2"), Qt::Key_Space);
        QVERIFY(!child<QCheckBox>(screen, "Check3")->isChecked());
        QCOMPARE(crossTop(), 9195);
        QTest::keyClick(child<QCheckBox>(screen, "Check2"), Qt::Key_Space);  // cleared again: no reason, no cross
        QCOMPARE(crossTop(), -1);
    }

    // The period box turns into its "00:00 на … г." once left; the text is not read as a date.
    void aPeriodBoxTurnsIntoItsTextOnLeaving()
    {
        DAI &screen = open();
        test::showActive(screen);
        auto *from = child<QLineEdit>(screen, "Text1_0");
        from->setFocus();
        from->setText(QStringLiteral("1 март 2026"));
        QTest::keyClick(from, Qt::Key_Tab);
        QVERIFY(from->isHidden());
        QCOMPARE(label(screen, "lblDataStart"), QStringLiteral("00:00 на 1 март 2026 г."));
        QVERIFY(child(screen, "lblDataStart")->isVisible());
        QCOMPARE(screen.attestationReport().value().control("PageHeader", "Label36").caption,
                 QStringLiteral("00:00 на 1 март 2026 г."));
        QTest::mouseClick(child(screen, "lblDataStart"), Qt::LeftButton);
        QVERIFY(from->isVisible());
        QCOMPARE(QApplication::focusWidget(), from);
    }

    // The hours of the period are typed beside its days: going from the hour to the day keeps the
    // entry open; the last day ends at the hour typed, not at 00:00 of that day.
    void theHoursOfThePeriodAreTyped()
    {
        DAI &screen = open();
        test::showActive(screen);
        auto *hour = child<QLineEdit>(screen, "txtHour_1");
        auto *to = child<QLineEdit>(screen, "Text1_1");
        hour->setFocus();
        hour->setText(QStringLiteral("18.30"));
        QTest::keyClick(hour, Qt::Key_Tab);
        QVERIFY(to->isVisible());
        QCOMPARE(QApplication::focusWidget(), to);
        to->setText(QStringLiteral("15.03.2026"));
        QTest::keyClick(to, Qt::Key_Tab);
        QVERIFY(to->isHidden());
        QVERIFY(hour->isHidden());
        QCOMPARE(label(screen, "lblDataStop"), QStringLiteral("18:30 на 15.03.2026 г."));
        child(screen, "lblDataStop")->setFocus();
        test::saveScreenshot(screen, QStringLiteral("dai-2009-hours"));
        QCOMPARE(screen.sheet().hourTo, QStringLiteral("18.30"));
        QCOMPARE(screen.attestationReport().value().control("PageHeader", "Label42").caption,
                 QStringLiteral("18:30 на 15.03.2026 г."));
    }

    // "Печат" without a reason ticked, or without item 11, prints nothing and says what is missing.
    void printingAnIncompleteSheetIsRefused_data()
    {
        QTest::addColumn<bool>("reason");
        QTest::addColumn<QString>("startedOn");
        QTest::addColumn<QString>("message");
        QTest::newRow("no reason") << false << "01.06.2019" << "Не е отбелязана причина за удостоверението!";
        QTest::newRow("no item 11") << true << "" << "Няма въведена дата на започване на работа (точка 11)!";
    }
    void printingAnIncompleteSheetIsRefused()
    {
        QFETCH(bool, reason);
        QFETCH(QString, startedOn);
        QFETCH(QString, message);
        DAI &screen = open();
        screen.show();
        child<QLineEdit>(screen, "txtStarted")->setText(startedOn);
        if (reason)
            tick(screen, "Check1");
        bool previewed = false;
        QTimer closePreview;  // goes with the test: a print refused leaves no timer behind
        closePreview.setSingleShot(true);
        connect(&closePreview, &QTimer::timeout, [&] {
            if (auto *preview = qobject_cast<ReportPreview *>(QApplication::activeModalWidget())) {
                previewed = true;
                preview->reject();
            }
        });
        closePreview.start(0);
        child<QPushButton>(screen, "cmdPrint")->click();
        QVERIFY(!previewed);
        QCOMPARE(messages->shown.size(), 1);
        QCOMPARE(messages->shown.first().text.section(QLatin1Char('\n'), 0, 0), message);
    }

    // Today's form: its 22 items with their wording, and the reasons it adds; back on the program's
    // form a reason it lacks is cleared.
    void theFormOf2009IsAChoiceBesideTheProgramsOwn()
    {
        DAI &screen = open();
        screen.show();
        screen.setForm(AttestationForm::Decision2009);
        QCOMPARE(labels(screen, {"lblTitle", "lblItemFrom", "lblItem18"}),
                 (QStringList{"УДОСТОВЕРЕНИЕ ЗА ДЕЙНОСТИ", "12. от (час/ден/месец/година):", "22. Място"}));
        for (const char *shown : {"Check4", "Check5", "Check6", "txtStarted", "lblFirmPart", "lblChooseOne"})
            QVERIFY2(child(screen, shown)->isVisible(), shown);
        child<QLineEdit>(screen, "txtStarted")->setText(QStringLiteral("01.06.2019"));
        tick(screen, "Check5");
        AttestationSheet sheet = screen.sheet();
        QCOMPARE(sheet.form, AttestationForm::Decision2009);
        QCOMPARE(sheet.reason, AttestationReason::OtherWork);
        QCOMPARE(sheet.startedOn, QStringLiteral("01.06.2019"));
        const Report report = screen.attestationReport().value();
        QCOMPARE(report.design().name, QStringLiteral("rptDAI2009"));
        QCOMPARE(report.control("PageHeader", "Label55").caption, QStringLiteral("01.06.2019"));

        screen.setForm(AttestationForm::Decision2007);
        QVERIFY(child(screen, "Check5")->isHidden());
        QVERIFY(!child<QCheckBox>(screen, "Check5")->isChecked());
        sheet = screen.sheet();
        QCOMPARE(sheet.reason, AttestationReason::None);
        QCOMPARE(sheet.startedOn, QString());
        QCOMPARE(label(screen, "lblItemFrom"), QStringLiteral("11. от:"));
        QCOMPARE(child<QCheckBox>(screen, "Check3")->text(),
                 QStringLiteral("е управлявал превозно средство, попадащо извън обхвата на Регламент (ЕО) №561/2006 или AETR"));
    }

    // "Печат" shows the attestation in the preview, and waits for it.
    void printShowsThePreview()
    {
        DAI &screen = open();
        screen.show();
        child<QLineEdit>(screen, "txtStarted")->setText(QStringLiteral("01.06.2019"));
        tick(screen, "Check2");
        QString caption;
        int pages = 0;
        test::onNextModal<ReportPreview>([&](ReportPreview &preview) {
            caption = preview.report().windowCaption;
            pages = preview.report().pageCount();
            preview.reject();
        });
        child<QPushButton>(screen, "cmdPrint")->click();
        QVERIFY2(messages->shown.isEmpty(), qPrintable(messages->shown.value(0).text));
        QCOMPARE(caption, QStringLiteral("Зарек 2.3 - Удостоверение за ДАИ"));
        QCOMPARE(pages, 1);
    }

    void noDriverAtAllIsTold()
    {
        QVERIFY(database->exec(QStringLiteral("DELETE FROM shof")));
        open();
        QCOMPARE(onlyText(messages->shown), QStringLiteral("Списъка е празен\nЩе се създаде нов!"));
    }
};

QTEST_MAIN(DaiTest)
#include "tst_dai.moc"
