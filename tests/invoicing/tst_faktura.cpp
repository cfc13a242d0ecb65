#include "forms/commandday.h"
#include "core/currency.h"
#include "core/docnumber.h"
#include "data/dialect.h"
#include "data/scratchdatabase.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "invoicing/diafakt.h"
#include "invoicing/faktura.h"
#include "invoicing/invoicingcommands.h"
#include "invoicing/invoicestore.h"
#include "invoicingfixture.h"
#include "invoicingscreens.h"
#include "queryrows.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <memory>

using namespace zarek;
using namespace zarek::test;

namespace {

SearchConditions newConditions(const QString &klient = dargos)
{
    SearchConditions c;
    c.SeekFrom = QStringLiteral("01.03.2006");
    c.SeekTo = QStringLiteral("31.03.2006");
    c.SeekKlient = klient;
    c.period = march2006;
    return c;
}

SearchConditions editConditions(const QString &number = QStringLiteral("0000000120"))
{
    SearchConditions c;
    c.SeekNomFakt = number;
    return c;
}

FirmProfile firm()
{
    FirmProfile f;
    f.UserName = QStringLiteral("Транспорт Петров ЕООД");
    f.UserCity = QStringLiteral("Перник");
    f.UserAdres = QStringLiteral("ул. Индустриална 14");
    return f;
}

// A screen as the menu opens it, with the statement caught instead of previewed.
struct Screen {
    Faktura faktura;
    QList<LaidOutReport> statements;

    Screen(FakturaMode mode, const SearchConditions &c, QSqlDatabase db, Sheet &scratch)
        : faktura(mode, c, db, scratch.db.db(), firm())
    {
        faktura.showStatement = [this](const Report &report) { statements.append(layoutReport(report)); };
        faktura.clock = [] { return closingTime; };
        faktura.show();
    }
};

QString sumLabel(const Faktura &screen)
{
    return screen.findChild<QLabel *>(QStringLiteral("Label4"))->text();
}

// Steps through modal windows as a user would: each step waits for its window on top, then acts.
class ModalDriver : public QObject {
public:
    struct Step {
        std::function<bool(QWidget *)> is;
        std::function<void(QWidget *)> act;
    };
    explicit ModalDriver(QList<Step> steps) : m_steps(std::move(steps))
    {
        m_timer.setInterval(20);
        connect(&m_timer, &QTimer::timeout, this, [this] {
            QWidget *top = QApplication::activeModalWidget();
            if (m_next < m_steps.size() && top && m_steps.at(m_next).is(top)) {
                const Step step = m_steps.at(m_next++);
                step.act(top);
            }
        });
        m_timer.start();
    }
    qsizetype done() const { return m_next; }

private:
    QList<Step> m_steps;
    qsizetype m_next = 0;
    QTimer m_timer;
};

std::function<bool(QWidget *)> named(const char *name)
{
    return [name](QWidget *w) { return w->objectName() == QLatin1String(name); };
}

// Clicks a button after the current event, so a modal window it opens does not hold up the driver.
void clickLater(QWidget *window, const char *button)
{
    QPushButton *target = window->findChild<QPushButton *>(QString::fromLatin1(button));
    QTimer::singleShot(0, target, &QPushButton::click);
}

}

// Each test starts on a fresh database holding fillMarch()'s courses (their ids in ids), with a
// scratch sheet and a message recorder; open() shows the screen as the menu does.
class FakturaTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<Sheet> sheet;
    std::unique_ptr<Screen> s;
    QList<qint64> ids;

    Faktura &open(FakturaMode mode = FakturaMode::FaktNew, const SearchConditions &c = newConditions())
    {
        s = std::make_unique<Screen>(mode, c, db, *sheet);
        return s->faktura;
    }
    // Marked, numbered 130 and printed: what closing then writes.
    Faktura &printed(const QList<int> &rows)
    {
        Faktura &screen = open();
        mark(screen, rows);
        [&] { QVERIFY(chooseNumber(screen, QStringLiteral("130"))); }();
        screen.printButton()->click();
        return screen;
    }
    // "Fakt NomFakt DateMod" of each course of fillMarch() by its index.
    QStringList courses(const QList<int> &indexes)
    {
        QStringList list;
        for (const int i : indexes)
            list.append(test::row(db, "SELECT Fakt, NomFakt, DateMod FROM tabl WHERE id = ?", {ids[i]}));
        return list;
    }
    QString numberOf(int index) { return courses({index}).value(0).section(QLatin1Char('|'), 1, 1); }
    // The rows of the table under the number.
    qint64 numbered(const char *number, const char *table = "tabl")
    {
        return countWhere(db, QStringLiteral("SELECT COUNT(*) FROM %1 WHERE NomFakt = ?").arg(QLatin1String(table)),
                          {QString::fromLatin1(number)});
    }
    QString told() { return test::shown(*messages).join(QLatin1Char('\n')); }

private slots:
    void initTestCase_data() { addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        ids = fillMarch(db);
        sheet = std::make_unique<Sheet>();
    }
    void cleanup()
    {
        s.reset();
        sheet.reset();
        tearDown();
    }

    void theNewInvoiceScreenListsTheClientsUninvoicedCourses()
    {
        Faktura &screen = open();
        QCOMPARE(screen.objectName(), QStringLiteral("Faktura"));
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Курсове за Д'Аргос ООД"));
        // The "a" of "зa" is the Latin letter.
        QCOMPARE(screen.findChild<QLineEdit *>(QStringLiteral("Text1"))->text(),
                 QStringLiteral("Курсове з") + QChar(0x61) + QStringLiteral(" Д'Аргос ООД от 01.03.2006 до 31.03.2006"));
        QCOMPARE(Faktura::panelText(FakturaMode::FaktNew, newConditions()), QStringLiteral("Курсове за фактуриране..."));
        QCOMPARE(screen.model()->rowCount(), 4);
        QCOMPARE(gridRows(screen.model(), QStringLiteral("|"), {1, 7}).value(1), QStringLiteral("Перник - Радомир|50,00"));
        QVERIFY(screen.grid()->isColumnHidden(9));
        QVERIFY(!screen.printButton()->isEnabled());
        auto *fakt = screen.findChild<QPushButton *>(QStringLiteral("cmdFakt"));
        QCOMPARE(fakt->text(), QStringLiteral("Фактура №"));
        QVERIFY(fakt->isEnabled());
        QStringList labels;
        for (const char *name : {"Label7", "Label8", "Label1"})
            labels << screen.findChild<QLabel *>(QString::fromLatin1(name))->text();
        QCOMPARE(labels, (QStringList{"Space", "- Маркира плащане", "Сума за плащане:"}));
        QVERIFY(messages->shown.isEmpty());
    }

    void anEmptySearchIsToldInEachMode_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("message");
        QTest::newRow("new") << int(FakturaMode::FaktNew) << "ВНИМАНИЕ!: Няма курсове за фактуриране!";
        QTest::newRow("edit") << int(FakturaMode::EditFakt) << "ВНИМАНИЕ!: В избраната фактура няма курсове!";
    }
    void anEmptySearchIsToldInEachMode()
    {
        QFETCH(int, mode);
        QFETCH(QString, message);
        Faktura &screen = open(FakturaMode(mode), mode == int(FakturaMode::FaktNew)
                                                      ? newConditions(QStringLiteral("Няма такъв ООД"))
                                                      : editConditions(QStringLiteral("0000000999")));
        QCOMPARE(told(), message);
        QVERIFY(screen.isVisible());
    }

    void marksStayOnTheScreenUntilClosingWritesThemAll()
    {
        Faktura &screen = open();
        const QStringList untouched = invoiceState(db);
        mark(screen, {0, 2, 3});
        QCOMPARE(sumLabel(screen), QStringLiteral("162,50лв."));
        QVERIFY(chooseNumber(screen, QStringLiteral("130")));
        // Asked again and cancelled, the number keeps the one chosen before.
        test::onNextModal<DiaFakt>([](DiaFakt &dialog) { dialog.cancelButton()->click(); });
        screen.chooseNumber();
        QCOMPARE(screen.NomFakt(), QStringLiteral("0000000130"));
        QVERIFY(screen.FaktChosen() && screen.printButton()->isEnabled());
        QVERIFY(screen.findChild<QLineEdit *>(QStringLiteral("Text1"))->text().endsWith(
            QStringLiteral("до 31.03.2006 за фактура №0000000130")));
        screen.printButton()->click();
        QCOMPARE(s->statements.size(), 1);
        // Marked and printed, and still nothing in the table: the program may die here without a half-invoice.
        QCOMPARE(invoiceState(db), untouched);

        screen.closeButton()->click();
        QVERIFY(!screen.isVisible());
        QCOMPARE(courses({0, 1, 2, 3}), (QStringList{"1|0000000130|2006-04-02", "0|0000000000|",
                                                     "1|0000000130|2006-04-02", "1|0000000130|2006-04-02"}));
        QCOMPARE(courseById(db, ids[0]).value(QStringLiteral("TimeMod")).toTime(), QTime(16, 5));
        QCOMPARE(countWhere(db, QStringLiteral("SELECT COUNT(*) FROM tabl WHERE Fakt = ? AND NomFakt = ?"),
                            {true, noDocumentNumber()}),
                 0);
        QVERIFY(messages->shown.isEmpty());
    }

    void closingWithoutAKeyWritesNothing()
    {
        const QStringList before = invoiceState(db);
        printed({}).close();
        QCOMPARE(invoiceState(db), before);
    }

    void marksNeverPrintedAreUndoneAndStamped()
    {
        Faktura &screen = open();
        mark(screen, {0, 1, 2});
        QVERIFY(chooseNumber(screen, QStringLiteral("130")));
        screen.close();
        QCOMPARE(numbered("0000000130"), 0);
        QCOMPARE(courses({0, 1, 2, 3}), (QStringList{"0|0000000000|2006-04-02", "0|0000000000|2006-04-02",
                                                     "0|0000000000|2006-04-02", "0|0000000000|"}));
    }

    // A number lands only on courses of the last statement printed under it: a mark the client's
    // statement never showed leaves the course uninvoiced.
    void aCourseOnNoPrintedStatementGetsNoNumber_data()
    {
        QTest::addColumn<QList<int>>("before");  // marked before the print
        QTest::addColumn<QList<int>>("after");   // marked after it
        QTest::addColumn<bool>("asked");         // closing asks first ("Да")
        QTest::addColumn<QList<int>>("invoiced");
        QTest::newRow("printed with nothing marked, then marked") << QList<int>{} << QList<int>{1} << false << QList<int>{};
        QTest::newRow("one more marked after the print") << QList<int>{0} << QList<int>{1} << true << QList<int>{0};
        QTest::newRow("one taken off after the print") << QList<int>{0, 2} << QList<int>{2} << true << QList<int>{0};
        QTest::newRow("marks as printed") << QList<int>{0, 2} << QList<int>{} << false << QList<int>{0, 2};
    }
    void aCourseOnNoPrintedStatementGetsNoNumber()
    {
        QFETCH(QList<int>, before);
        QFETCH(QList<int>, after);
        QFETCH(bool, asked);
        QFETCH(QList<int>, invoiced);
        Faktura &screen = printed(before);
        QVERIFY(screen.FaktPrinted());
        QCOMPARE(s->statements.size(), before.isEmpty() ? 0 : 1);
        mark(screen, after);
        screen.close();
        QVERIFY(!screen.isVisible());
        QCOMPARE(test::firstLines(messages->asked),
                 asked ? QStringList{"Маркировката е променена след печата на справката за фактура №0000000130!"}
                       : QStringList());
        for (int row = 0; row < 4; ++row)
            QCOMPARE(courses({row}).value(0).section(QLatin1Char('|'), 0, 1),
                     invoiced.contains(row) ? QStringLiteral("1|0000000130") : "0|" + noDocumentNumber());
        QCOMPARE(numbered("0000000130", "Fakturi"), invoiced.isEmpty() ? 0 : 1);
    }

    void aChangedMarkingAnsweredNoKeepsTheScreenOpen()
    {
        Faktura &screen = printed({0});
        mark(screen, {1});
        const QStringList before = invoiceState(db);
        messages->answers = {false};
        screen.close();
        QVERIFY(screen.isVisible());
        QCOMPARE(invoiceState(db), before);
        QVERIFY(screen.model()->isMarked(0) && screen.model()->isMarked(1));
        // Printed again, the statement lists both, and closing numbers both without a question.
        screen.printButton()->click();
        screen.close();
        QVERIFY(!screen.isVisible());
        QCOMPARE(messages->asked.size(), 1);
        QCOMPARE(numbered("0000000130"), 2);
    }

    // The number's currency is recorded with it: the euro when its statement was in euro.
    void theInvoicesCurrencyIsRecordedWithItsNumber_data()
    {
        QTest::addColumn<QDate>("changeover");
        QTest::addColumn<int>("euroRows");
        QTest::newRow("leva books") << QDate() << 0;
        QTest::newRow("handed out after the changeover") << QDate(2006, 4, 1) << 1;
    }
    void theInvoicesCurrencyIsRecordedWithItsNumber()
    {
        QFETCH(QDate, changeover);
        QFETCH(int, euroRows);
        ScopedCommandDay books({Changeover{changeover}, QDate::currentDate()});
        Faktura &screen = printed({0});
        QCOMPARE(s->statements.size(), 1);
        screen.close();
        QVERIFY(!screen.isVisible());
        QCOMPARE(numberOf(0), QStringLiteral("0000000130"));
        QCOMPARE(numbered("0000000130", "EvroFakt"), euroRows);
    }

    void aSecondPrintListsTheMarkedCoursesOnce()
    {
        Faktura &screen = printed({0, 2});
        mark(screen, {0});  // taken off again
        screen.printButton()->click();
        QCOMPARE(s->statements.size(), 2);
        const QStringList second = s->statements.last().textLines();
        QCOMPARE(second.filter(QStringLiteral("Батановци - Перник")).size(), 1);
        QCOMPARE(second.filter(QStringLiteral("София - Перник")).size(), 0);
        QVERIFY(second.contains(QStringLiteral("Сума без ДДС: 100,00 лв.")));
        QVERIFY(second.contains(QStringLiteral("      Всичко: 120,00 лв.")));
        screen.close();
    }

    void correctingAnInvoiceStartsWithEveryCourseMarked()
    {
        Faktura &screen = open(FakturaMode::EditFakt, editConditions());
        QCOMPARE(screen.windowTitle(), QStringLiteral("Зарек 2.3 - Курсове във фактурира № 0000000120"));
        QCOMPARE(screen.findChild<QLineEdit *>(QStringLiteral("Text1"))->text(),
                 QStringLiteral("Курсове във фактурира № 0000000120"));
        QCOMPARE(Faktura::panelText(FakturaMode::EditFakt, editConditions()),
                 QStringLiteral("Курсове във фактурира № 0000000120"));
        QCOMPARE(screen.model()->rowCount(), 2);
        QVERIFY(screen.model()->isMarked(0) && screen.model()->isMarked(1));
        QVERIFY(!screen.findChild<QPushButton *>(QStringLiteral("cmdFakt"))->isEnabled());
        QVERIFY(screen.printButton()->isEnabled());
        QCOMPARE(screen.FaktSum(), Money::fromCents(6250));
        QCOMPARE(sumLabel(screen), QString());  // shown from the first Space on
        screen.printButton()->click();
        QCOMPARE(s->statements.size(), 1);
        QCOMPARE(s->statements.first().textLines().at(4), QStringLiteral("за курсовете по издадена фактура №0000000120"));
        mark(screen, {0});
        QCOMPARE(sumLabel(screen), QStringLiteral("31,25лв."));
        screen.close();
    }

    void anInvoiceWithEveryMarkRemovedVanishes()
    {
        Faktura &screen = open(FakturaMode::EditFakt, editConditions());
        mark(screen, {0, 1});
        screen.close();
        QCOMPARE(numbered("0000000120"), 0);
        QVERIFY(!InvoiceStore(db).usedNumbers().contains(QStringLiteral("0000000120")));
        QCOMPARE(courses({6, 7}), QStringList(2, QStringLiteral("0|0000000000|2006-04-02")));
    }

    void aCorrectedInvoiceKeepsItsMarkedCoursesAndStampsAll()
    {
        Faktura &screen = open(FakturaMode::EditFakt, editConditions());
        mark(screen, {1});
        screen.close();
        QCOMPARE(courses({6, 7}), (QStringList{"1|0000000120|2006-04-02", "0|0000000000|2006-04-02"}));
    }

    // OK or Enter takes the number typed or offered; a used or malformed one is refused in two lines
    // and the dialog stays.
    void diaFaktRefusesUsedAndMalformedNumbers_data()
    {
        QTest::addColumn<QString>("typed");  // by the keyboard when Enter confirms
        QTest::addColumn<bool>("enter");
        QTest::addColumn<QString>("number");  // empty: refused
        QTest::addColumn<QStringList>("told");
        const QStringList used{"Имате издадена фактура под този номер!"};
        QTest::newRow("the number offered, unedited") << "" << false << "0000000121" << QStringList();
        QTest::newRow("the one offered, Enter") << "" << true << "0000000121" << QStringList();
        QTest::newRow("typed short, Enter") << "1" << true << "0000000001" << QStringList();
        QTest::newRow("used, without its zeros") << "120" << false << "" << used;
        QTest::newRow("used, Enter") << "120" << true << "" << used;
        QTest::newRow("used, with them") << "0000000120" << false << "" << used;
        QTest::newRow("125") << "125" << false << "0000000125" << QStringList();
        QTest::newRow("eleven digits") << "12345678901" << false << ""
                                       << QStringList{"Номерът на фактурата е по-дълъг от 10 цифри!"};
        QTest::newRow("not a number") << "12/2006" << false << ""
                                      << QStringList{"Номерът на фактурата трябва да е число!"};
    }
    void diaFaktRefusesUsedAndMalformedNumbers()
    {
        QFETCH(QString, typed);
        QFETCH(bool, enter);
        QFETCH(QString, number);
        insertCourse(db, {QDate(2006, 1, 5), beton, QStringLiteral("А"), QStringLiteral("Пясък"),
                          QStringLiteral("СА 1234 ВК"), 1, 1, 1, 1, true, QStringLiteral("0000000117")});
        DiaFakt dialog(db);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Номер на фактурата"));
        // The free numbers: the next one, shown, then those left free below it, latest first.
        QStringList offered;
        for (int i = 0; i < dialog.combo()->count(); ++i)
            offered << dialog.combo()->itemText(i);
        QCOMPARE(offered, (QStringList{"0000000121", "0000000119", "0000000118"}));
        QCOMPARE(dialog.combo()->currentText(), offered.first());
        QVERIFY(dialog.okButton()->isDefault() && !dialog.cancelButton()->isDefault());
        QCOMPARE(dialog.okButton()->text(), QStringLiteral("OK"));
        test::showActive(dialog);
        if (enter && !typed.isEmpty()) {
            dialog.combo()->lineEdit()->selectAll();
            QTest::keyClicks(dialog.combo()->lineEdit(), typed);
        } else if (!typed.isEmpty()) {
            dialog.combo()->setEditText(typed);
        }
        enter ? QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return) : dialog.okButton()->click();
        QCOMPARE(dialog.FaktChosen(), !number.isEmpty());
        QCOMPARE(dialog.NomFakt(), number.isEmpty() ? noDocumentNumber() : number);
        QCOMPARE(dialog.isVisible(), number.isEmpty());
        QTEST(test::firstLines(messages->shown), "told");
        for (const auto &message : std::as_const(messages->shown))
            QCOMPARE(message.text.count(QLatin1Char('\n')), 1);
    }

    void aConflictWritesNothingNamesTheCourseAndKeepsTheScreenOpen()
    {
        Faktura &screen = printed({0, 1, 2});

        // Meanwhile another workstation invoices the course of 05.03.
        QSqlDatabase other = database->openSecondConnection();
        QCOMPARE(test::rows(other, "UPDATE tabl SET Fakt = ?, NomFakt = ?, row_version = row_version + 1 WHERE id = ?",
                            {true, QStringLiteral("0000000777"), ids[1]}),
                 QStringList());
        const QStringList before = invoiceState(db);

        screen.close();
        QVERIFY(screen.isVisible());
        QCOMPARE(invoiceState(db), before);
        QCOMPARE(onlyTitle(messages->shown), QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY2(told().contains(QStringLiteral("05.03.2006  Перник - Радомир  Д'Аргос ООД")), qPrintable(told()));
        QVERIFY(!told().contains(QStringLiteral("02.03.2006")));

        // Fresh rows: the other's course is gone from the list, the other marks stay, and the
        // statement must be printed again before closing makes the invoice.
        QCOMPARE(screen.model()->rowCount(), 3);
        QVERIFY(screen.model()->isMarked(0) && screen.model()->isMarked(1) && !screen.model()->isMarked(2));
        QCOMPARE(screen.FaktSum(), Money::fromCents(13125));
        QCOMPARE(sumLabel(screen), QStringLiteral("131,25лв."));
        QVERIFY(!screen.FaktPrinted());
        screen.printButton()->click();
        screen.close();
        QVERIFY(!screen.isVisible());
        QCOMPARE((QStringList{numberOf(0), numberOf(1), numberOf(2)}),
                 (QStringList{"0000000130", "0000000777", "0000000130"}));
    }

    void aNumberTakenMeanwhileIsChosenAgain()
    {
        Faktura &screen = printed({0});
        // Meanwhile another workstation issues 130 to another client.
        QCOMPARE(int(InvoiceStore(database->openSecondConnection())
                         .settle({{ids[5], 1, true, QStringLiteral("0000000130")}}, closingTime,
                                 InvoiceRecord::issue(QStringLiteral("0000000130"), beton, false))
                         .kind),
                 int(SettleOutcome::Kind::Written));
        screen.close();
        QVERIFY(screen.isVisible());
        QCOMPARE(onlyText(messages->shown), QStringLiteral("Имате издадена фактура под този номер!\n"
                                                              "Моля, сменете номера и опитайте отново."));
        QVERIFY(screen.model()->isMarked(0));  // the marks stay
        QVERIFY(!screen.printButton()->isEnabled() && !screen.FaktChosen());
        QCOMPARE(courses({0}).value(0).left(1), QStringLiteral("0"));
        QVERIFY(chooseNumber(screen, QStringLiteral("131")));
        screen.printButton()->click();
        screen.close();
        QCOMPARE(numberOf(0), QStringLiteral("0000000131"));
    }

    void aFailureWhileClosingLeavesEveryCourseAsItWas()
    {
        Faktura &screen = printed({0, 1, 2, 3});
        // The write of the third course fails inside the database.
        forceFailure(*database, "UPDATE ON tabl", QStringLiteral("OLD.id = %1").arg(ids[2]));
        const QStringList before = invoiceState(db);
        screen.close();
        QVERIFY(screen.isVisible());
        QCOMPARE(invoiceState(db), before);
        // A printed invoice: told, never offered to be closed unrecorded.
        QVERIFY(messages->asked.isEmpty());
        QCOMPARE(onlyTitle(messages->shown), QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(told().contains(QStringLiteral("forced failure")));
        QVERIFY(told().endsWith(QStringLiteral("махнете маркировката.")));

        // Once the database takes writes again, closing writes the whole invoice.
        QVERIFY(dropForcedFailure(*database, "tabl"));
        screen.close();
        QVERIFY(!screen.isVisible());
        QCOMPARE(numbered("0000000130"), 4);
    }

    void aClientWithAnApostropheIsInvoicedFromTheMenu()
    {
        QString panel;
        CommandContext context;
        context.db = db;
        context.scratch = &sheet->db;
        const FirmProfile profile = firm();
        context.firm = [&profile]() -> const FirmProfile & { return profile; };
        context.setPanel = [&panel](const QString &text) { panel = text; };
        context.helpTopic = [](const QString &) { return 16; };
        CommandRegistry commands(context);
        registerInvoicingCommands(commands);
        QVERIFY(commands.has(QStringLiteral("mnuDataFakt")) && commands.has(QStringLiteral("mnuDataEditFakt")));

        QStringList statement;
        QString dialogTitle;
        ModalDriver driver({
            {named("DiaSeekAll"),
             [&](QWidget *w) {
                 dialogTitle = w->windowTitle();
                 w->findChild<QLineEdit *>(QStringLiteral("Text1_0"))->setText(QStringLiteral("01.03.2006"));
                 w->findChild<QLineEdit *>(QStringLiteral("Text1_1"))->setText(QStringLiteral("31.03.2006"));
                 w->findChild<QComboBox *>(QStringLiteral("Combo1"))->setEditText(dargos);
                 w->findChild<QComboBox *>(QStringLiteral("Combo2"))->setEditText(QString());
                 w->findChild<QLineEdit *>(QStringLiteral("Text3"))->setText(QStringLiteral("софия"));
                 clickLater(w, "OKButton");
             }},
            {named("Faktura"),
             [&](QWidget *w) {
                 auto *screen = static_cast<Faktura *>(w);
                 for (int row = 0; row < screen->model()->rowCount(); ++row) {
                     screen->grid()->setCurrentIndex(screen->model()->index(row, 0));
                     QTest::keyClick(screen->grid(), Qt::Key_Space);
                 }
                 clickLater(w, "cmdFakt");
             }},
            {named("DiaFakt"),
             [&](QWidget *w) {
                 static_cast<DiaFakt *>(w)->combo()->setEditText(QStringLiteral("130"));
                 clickLater(w, "OKButton");
             }},
            {named("Faktura"), [&](QWidget *w) { clickLater(w, "cmdPrint"); }},
            {[](QWidget *w) { return qobject_cast<ReportPreview *>(w) != nullptr; },
             [&](QWidget *w) {
                 statement = static_cast<ReportPreview *>(w)->report().textLines();
                 QTimer::singleShot(0, w, &QWidget::close);
             }},
            {named("Faktura"),
             [&](QWidget *w) {
                 panel = panel + QStringLiteral(" | ") + static_cast<Faktura *>(w)->NomFakt();
                 clickLater(w, "cmdClose");
             }},
        });
        commands.handler(QStringLiteral("mnuDataFakt"))();
        QCOMPARE(driver.done(), 6);
        QCOMPARE(dialogTitle, QStringLiteral("Търсене - Нефактурирани курсове"));
        QCOMPARE(panel, QStringLiteral("Курсове за фактуриране... | 0000000130"));
        for (const char *line : {"за курсовете на Д'Аргос ООД по издадена фактура №0000000130", "Сума без ДДС: 62,50 лв.",
                                 "         ДДС: 12,50 лв.", "      Всичко: 75,00 лв."})
            QVERIFY2(statement.contains(QString::fromUtf8(line)), line);
        QStringList numbers;  // stamped with the day of the run
        for (const QString &course : courses({0, 1, 2, 3, 4}))
            numbers << course.section(QLatin1Char('|'), 0, 1);
        QCOMPARE(numbers.join(QLatin1Char(' ')), QStringLiteral("1|0000000130 0|0000000000 0|0000000000 1|0000000130 0|0000000000"));
        QVERIFY2(messages->shown.isEmpty(), qPrintable(told()));
    }
};

QTEST_MAIN(FakturaTest)
#include "tst_faktura.moc"
