#include "forms/dialog.h"
#include "forms/messageservice.h"
#include "courses/coursestore.h"
#include "forms/recordform.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTimer>

using namespace zarek;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

// A small screen on the record form over Sklad: a date, a text covered by a combo while a row is
// pending, a name, a number and a yes/no mark, each naming its column as a .ui file would.
struct StockScreen {
    explicit StockScreen(QSqlDatabase db, RecordFormConfig config = {})
    {
        config.numberColumns = {QStringLiteral("Kol")};
        config.dateColumns = {QStringLiteral("Data")};
        form = new RecordForm(std::make_unique<RecordStore>(db, QStringLiteral("Sklad"),
                                                            QStringList{QStringLiteral("Data"), QStringLiteral("DocVid"),
                                                                        QStringLiteral("Name"), QStringLiteral("Kol"),
                                                                        QStringLiteral("Lipsa")},
                                                            QStringLiteral("Data")),
                              config, &window);
        auto *fields = new QFormLayout;
        const char *labels[] = {"Дата", "Вид:", "Име", "Кол."};
        const char *columns[] = {"Data", "DocVid", "Name", "Kol"};
        for (int i = 0; i < 4; ++i) {
            boxes[i] = new QLineEdit(&window);
            boxes[i]->setObjectName(QStringLiteral("txtFields%1_%2").arg(config.suffix).arg(i));
            fields->addRow(QString::fromUtf8(labels[i]), boxes[i]);
            boxes[i]->setProperty(RecordForm::columnProperty, QString::fromLatin1(columns[i]));
        }
        combo = new QComboBox(&window);
        combo->setObjectName(QStringLiteral("Combo1"));
        combo->addItems({QStringLiteral("Фактура"), QStringLiteral("Стокова разписка")});
        fields->addRow(QString(), combo);
        combo->setProperty(RecordForm::columnProperty, QStringLiteral("DocVid"));
        mark = new QCheckBox(QStringLiteral("Изписан"), &window);
        mark->setObjectName(QStringLiteral("chkFields"));
        fields->addRow(QString(), mark);
        mark->setProperty(RecordForm::columnProperty, QStringLiteral("Lipsa"));
        bound = form->bindColumns(&window);
        auto *layout = new QVBoxLayout(&window);
        layout->addLayout(fields);
        layout->addWidget(form);
        QObject::connect(form, &RecordForm::closeRequested, &window, &QWidget::close);
        form->open();
    }

    QPushButton *button(const char *name) const { return form->button(QString::fromLatin1(name)); }
    QString status() const { return form->statusLabel()->text(); }
    QString name() const { return boxes[2]->text(); }
    // The row shown: "index|name".
    QString at() const { return QString::number(form->currentIndex()) + QLatin1Char('|') + name(); }
    void show()
    {
        test::showExposed(window);
    }
    void key(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(boxes[2], Qt::Key(key), modifiers);
    }

    QWidget window;
    RecordForm *form = nullptr;
    bool bound = false;
    QLineEdit *boxes[4] = {};
    QComboBox *combo = nullptr;
    QCheckBox *mark = nullptr;
};

void addStock(QSqlDatabase db, const QDate &date, const QString &name, double kol)
{
    QVERIFY(test::insertRow(db, QStringLiteral("Sklad"), QStringLiteral("Data, DocVid, Name, Kol, Lipsa"),
                            {date, QStringLiteral("Фактура"), name, kol, false}));
}

void addThree(QSqlDatabase db)
{
    for (int i = 1; i <= 3; ++i)
        addStock(db, QDate(2026, 1, i), QStringLiteral("Артикул %1").arg(i), i);
}

int stockRows(QSqlDatabase db)
{
    return test::scalar(db, QStringLiteral("SELECT COUNT(*) FROM Sklad")).toInt();
}

}

// A fresh database of the current engine with three stock rows, and the messages recorded; with
// the stock screen on it.
#define THREE_STOCK_ROWS()           \
    ZAREK_SCRATCH_DB(scratch);       \
    addThree(scratch.db());          \
    RecordingMessageService messages
#define STOCK_SCREEN_ON_THREE_ROWS(screen) \
    THREE_STOCK_ROWS();                    \
    StockScreen screen(scratch.db())

class RecordFormTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void theStripsFollowTheState()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        const auto visible = [&screen](const char *name) { return !screen.button(name)->isHidden(); };
        const auto enabled = [&screen](const char *name) { return screen.button(name)->isEnabled(); };
        const QList<const char *> browseButtons = {"cmdAdd", "cmdEdit", "cmdDelete", "cmdClose"};
        const QList<const char *> pendingButtons = {"cmdUpdate", "cmdCancel"};
        const QList<const char *> moves = {"cmdFirst", "cmdPrevious", "cmdNext", "cmdLast"};

        QCOMPARE(screen.at() + screen.status() + screen.boxes[0]->text(), QStringLiteral("0|Артикул 1Запис №: 101.01.2026"));
        for (const char *name : browseButtons)
            QVERIFY2(visible(name), name);
        for (const char *name : pendingButtons)
            QVERIFY2(!visible(name), name);
        for (const char *name : moves)
            QVERIFY2(enabled(name), name);
        QVERIFY(screen.boxes[2]->isReadOnly());
        QVERIFY(!screen.mark->isEnabled());

        for (const char *start : {"cmdAdd", "cmdEdit"}) {
            screen.button(start)->click();
            QCOMPARE(screen.status(), QString::fromUtf8(start == QLatin1String("cmdAdd") ? "Нов запис" : "Корекция"));
            for (const char *name : browseButtons)
                QVERIFY2(!visible(name), name);
            for (const char *name : pendingButtons)
                QVERIFY2(visible(name), name);
            for (const char *name : moves)
                QVERIFY2(!enabled(name), name);
            QVERIFY(!screen.boxes[2]->isReadOnly());
            QVERIFY(screen.mark->isEnabled());
            screen.button("cmdCancel")->click();
            QCOMPARE(screen.form->state(), RecordForm::State::Browsing);
        }
        QVERIFY(messages.shown.isEmpty());
    }

    // A screen's own rule locks a box for the row at hand; the next state frees it again.
    void aBoxLockedByTheScreenStaysLockedUntilTheStateChanges()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        screen.button("cmdEdit")->click();
        screen.form->setFieldLocked(QStringLiteral("Kol"), true);
        screen.form->setFieldLocked(QStringLiteral("DocVid"), true);
        QVERIFY(screen.boxes[3]->isReadOnly());
        QCOMPARE(screen.boxes[3]->palette().color(QPalette::Base), QColor(0xC0, 0xC0, 0xC0));
        QVERIFY(!screen.combo->isEnabled());
        QVERIFY(!screen.boxes[2]->isReadOnly());
        screen.form->setFieldLocked(QStringLiteral("Kol"), false);
        QVERIFY(!screen.boxes[3]->isReadOnly());
        screen.form->setFieldLocked(QStringLiteral("Kol"), true);
        screen.button("cmdCancel")->click();
        screen.button("cmdAdd")->click();
        QVERIFY(!screen.boxes[3]->isReadOnly());
        QVERIFY(screen.combo->isEnabled());
        QVERIFY(screen.boxes[3]->palette().color(QPalette::Base) != QColor(0xC0, 0xC0, 0xC0));
        // While browsing a freed box still takes no typing.
        screen.button("cmdCancel")->click();
        screen.form->setFieldLocked(QStringLiteral("Kol"), false);
        QVERIFY(screen.boxes[3]->isReadOnly());
    }

    // Keys move while browsing, Ctrl counting only alone; while a row is pending they are dead.
    void keysMoveWhileBrowsingAndAreDeadWhileARowIsPending()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        screen.show();
        const struct {
            int key;
            Qt::KeyboardModifiers modifiers;
            int position;
            int beeps;
        } steps[] = {
            {Qt::Key_End, Qt::NoModifier, 2, 0},
            {Qt::Key_Down, Qt::NoModifier, 2, 1},  // past the end: a beep, and it stays
            {Qt::Key_PageDown, Qt::NoModifier, 2, 2},
            {Qt::Key_Up, Qt::ControlModifier, 0, 2},
            {Qt::Key_Up, Qt::NoModifier, 0, 3},
            {Qt::Key_PageDown, Qt::ControlModifier | Qt::ShiftModifier, 1, 3},  // Ctrl with Shift is no Ctrl
            {Qt::Key_Down, Qt::ControlModifier, 2, 3},
            {Qt::Key_PageUp, Qt::NoModifier, 1, 3},
            {Qt::Key_Home, Qt::NoModifier, 0, 3},
        };
        for (const auto &step : steps) {
            screen.key(step.key, step.modifiers);
            QCOMPARE(screen.form->currentIndex(), step.position);
            QCOMPARE(messages.beeps, step.beeps);
        }
        QCOMPARE(screen.status(), QStringLiteral("Запис №: 1"));
        QTest::keyClick(screen.button("cmdAdd"), Qt::Key_End);  // from any control of the window
        QCOMPARE(screen.form->currentIndex(), 2);
        // A click selects the whole text.
        QTest::mouseClick(screen.boxes[2], Qt::LeftButton, {}, QPoint(5, 5));
        QTRY_COMPARE(screen.boxes[2]->selectedText(), QStringLiteral("Артикул 3"));

        for (const char *start : {"cmdAdd", "cmdEdit"}) {
            screen.button(start)->click();
            screen.boxes[2]->setText(QStringLiteral("набрано"));
            messages.answers = {false};  // Esc asks about the typing; "Не" stays
            for (int key : {Qt::Key_Escape, Qt::Key_Down, Qt::Key_End, Qt::Key_PageUp})
                screen.key(key);
            QVERIFY(screen.window.isVisible());
            QVERIFY(screen.form->state() != RecordForm::State::Browsing);
            QCOMPARE(screen.name(), QStringLiteral("набрано"));
            screen.button("cmdCancel")->click();
        }
        QCOMPARE(messages.asked.size(), 2);
        screen.key(Qt::Key_Escape);
        QVERIFY(!screen.window.isVisible());
        QCOMPARE(stockRows(scratch.db()), 3);
    }

    // On an empty table nothing moves or beeps, and "Отказ" leaves it empty; "Поправи" and "Изтрий",
    // which need a row, show the handler's error box.
    void onAnEmptyTableNothingMovesOrBeepsAndCancelLeavesItEmpty()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        StockScreen screen(scratch.db());
        QCOMPARE(screen.at() + screen.status(), QStringLiteral("-1|"));
        screen.button("cmdNext")->click();
        screen.button("cmdPrevious")->click();
        QCOMPARE(messages.beeps, 0);
        screen.button("cmdAdd")->click();
        screen.boxes[2]->setText(QStringLiteral("Филтър"));
        screen.button("cmdCancel")->click();
        QCOMPARE(screen.form->state(), RecordForm::State::Browsing);
        QCOMPARE(screen.at(), QStringLiteral("-1|"));
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(stockRows(scratch.db()), 0);
        for (const auto &[press, caption] : {std::pair{"cmdEdit", "ГРЕШКА при корекция!"}, {"cmdDelete", "ГРЕШКА при изтриване!"}}) {
            messages.shown.clear();
            screen.button(press)->click();
            QCOMPARE(onlyOne(messages.shown), QString::fromUtf8(caption) + QStringLiteral("|3021:Няма текущ запис."));
            QVERIFY(messages.asked.isEmpty());
            QCOMPARE(screen.form->state(), RecordForm::State::Browsing);
        }
    }

    // "Отказ" after "Поправи" went to the row of the last "Добави" (or the first row), and a
    // following "Изтрий" deleted a row the user never meant. It stays on the row being corrected;
    // after "Добави" it goes back to the row current at the add.
    void cancelReturnsToTheRowBeingCorrectedOrToTheRowOfTheAdd()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        screen.form->last();
        screen.button("cmdEdit")->click();
        screen.button("cmdCancel")->click();
        QCOMPARE(screen.at(), QStringLiteral("2|Артикул 3"));
        screen.form->previous();
        screen.button("cmdAdd")->click();
        QCOMPARE(screen.name(), QString());
        screen.button("cmdCancel")->click();
        QCOMPARE(screen.at(), QStringLiteral("1|Артикул 2"));
        screen.form->first();
        screen.button("cmdEdit")->click();
        screen.boxes[2]->setText(QStringLiteral("не се записва"));
        screen.button("cmdCancel")->click();
        QCOMPARE(screen.at(), QStringLiteral("0|Артикул 1"));  // the row corrected, not the row kept by the add
        messages.answers = {true, true};
        screen.button("cmdDelete")->click();
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT Name FROM Sklad ORDER BY id")),
                 QStringLiteral("Артикул 2 Артикул 3"));  // the first deleted, the typing not written
    }

    // A key on a button of the strip (where it does nothing) says how to start. Keys typed into a
    // box of a row only shown went nowhere: the first starts "Поправи" on that row and goes into the
    // box, typing over it; the keys after it follow in order.
    void aKeyOnTheStripSaysHowToStartAndTypingInARowStartsItsCorrection()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        test::showActive(screen.window);
        screen.button("cmdDelete")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_A);
        QCOMPARE(screen.status(), QStringLiteral("За корекция натиснете \"Поправи\", за нов запис \"Добави\""));
        QCOMPARE(messages.beeps, 1);
        QCOMPARE(screen.form->state(), RecordForm::State::Browsing);
        screen.form->next();
        QCOMPARE(screen.status(), QStringLiteral("Запис №: 2"));

        screen.boxes[3]->setFocus();
        QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("17"));
        QCoreApplication::processEvents();
        QCOMPARE(screen.form->state(), RecordForm::State::Editing);
        QCOMPARE(screen.status(), QStringLiteral("Корекция"));
        QCOMPARE(QApplication::focusWidget(), screen.boxes[3]);
        QCOMPARE(screen.boxes[3]->text(), QStringLiteral("17"));
        QVERIFY(screen.form->update());
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT Kol FROM Sklad WHERE Name = 'Артикул 2'")).toDouble(), 17.0);
        QVERIFY(messages.shown.isEmpty());
    }

    // A value its column cannot take is refused with the box named, nothing written, and the message
    // closes onto the box at fault. "Запиши" goes as the row is written, and the focus passed on to
    // "Затвори", where Enter or Space closed the window. It goes to "Добави" (Enter there starts the
    // next row), after a correction to "Поправи".
    void aRefusedValuePutsTheCursorInItsBoxAndAfterASaveTheFocusIsNotOnClose()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        test::showActive(screen.window);
        screen.button("cmdEdit")->click();
        screen.boxes[3]->setText(QStringLiteral("дванадесет"));
        screen.button("cmdUpdate")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(onlyOne(messages.shown),
                 QStringLiteral("ГРЕШКА при запис!|\"дванадесет\" не е число!\nМоля, въведете число в поле \"Кол.\"."));
        QCOMPARE(screen.form->state(), RecordForm::State::Editing);
        QCOMPARE(QApplication::focusWidget(), screen.boxes[3]);
        QCOMPARE(screen.boxes[3]->selectedText(), QStringLiteral("дванадесет"));
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT Kol FROM Sklad WHERE Name = 'Артикул 1'")).toDouble(), 1.0);

        screen.boxes[3]->setText(QStringLiteral("1"));
        screen.boxes[2]->setText(QStringLiteral("Нов артикул"));
        screen.button("cmdUpdate")->setFocus();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(screen.form->state(), RecordForm::State::Browsing);
        QCOMPARE(QApplication::focusWidget(), screen.button("cmdAdd"));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(screen.form->state(), RecordForm::State::Adding);
        QVERIFY(screen.window.isVisible());
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Sklad WHERE Name = 'Нов артикул'")).toInt(), 1);
    }

    // "Изтрий", then Enter as the question opens: the row stays. Enter answers "Отказ" there.
    void enterOnTheDeleteQuestionKeepsTheRow()
    {
        ZAREK_SCRATCH_DB(scratch);
        addThree(scratch.db());
        WidgetMessageService boxes;
        MessageService::setInstance(&boxes);
        StockScreen screen(scratch.db());
        test::showActive(screen.window);
        QStringList asked;
        QTimer answer;
        answer.setInterval(20);
        QObject::connect(&answer, &QTimer::timeout, [&asked] {
            auto *box = qobject_cast<Dialog *>(QApplication::activeModalWidget());
            if (!box || !box->isActiveWindow())
                return;
            asked.append(box->text());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        });
        answer.start();
        screen.button("cmdDelete")->click();
        answer.stop();
        MessageService::setInstance(nullptr);
        QCOMPARE(asked, QStringList{QStringLiteral("Наистна ли искате да изтриете записа?")});
        QCOMPARE(stockRows(scratch.db()), 3);
    }

    void aNewRowIsWrittenAndStandsLast()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        screen.button("cmdAdd")->click();
        screen.boxes[0]->setText(QStringLiteral("5.3.2006"));
        screen.combo->setEditText(QStringLiteral("  Стокова разписка "));
        screen.boxes[2]->setText(QStringLiteral("Д'Аргос филтър"));
        screen.boxes[3]->setText(QStringLiteral("2,5"));
        screen.mark->setChecked(true);
        QVERIFY(screen.form->update());
        QVERIFY(messages.shown.isEmpty());
        // Last, though its date sorts first; the boxes as the row was written.
        QCOMPARE(screen.at() + QLatin1Char('|') + screen.status(), QStringLiteral("3|Д'Аргос филтър|Запис №: 4"));
        QStringList shown;
        for (QLineEdit *box : screen.boxes)
            shown << box->text();
        QCOMPARE(shown, (QStringList{"05.03.2006", "Стокова разписка", "Д'Аргос филтър", "2,5"}));
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT Data, DocVid, Kol, Lipsa FROM Sklad WHERE Name = 'Д''Аргос филтър'")),
                 QStringLiteral("2006-03-05|Стокова разписка|2.5|1"));

        // The row keeps the version it was written at: a second correction is no conflict.
        for (const char *kol : {"3", "4"}) {
            screen.button("cmdEdit")->click();
            screen.boxes[3]->setText(QString::fromLatin1(kol));
            QVERIFY(screen.form->update());
        }
        QVERIFY(messages.shown.isEmpty());
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT Kol FROM Sklad WHERE Name = 'Д''Аргос филтър'")).toDouble(), 4.0);
    }

    void aFailedCheckShowsTheLastFailureAndKeepsWhatWasTyped()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        RecordFormConfig config;
        config.validate = [](const QVariantMap &typed) {
            std::optional<UserMessage> kept;
            if (typed.value(QStringLiteral("Name")).toString().trimmed().isEmpty())
                kept = UserMessage::twoLines({}, QStringLiteral("Няма име!"), QStringLiteral("Моля, въведете име."));
            if (typed.value(QStringLiteral("DocVid")).toString().isEmpty())
                kept = UserMessage::twoLines({}, QStringLiteral("Няма вид!"), QStringLiteral("Моля, въведете вид."));
            return kept;
        };
        StockScreen screen(scratch.db(), config);
        screen.button("cmdAdd")->click();
        screen.combo->setEditText(QString());
        screen.boxes[3]->setText(QStringLiteral("7"));
        screen.button("cmdUpdate")->click();
        QCOMPARE(onlyOne(messages.shown), QStringLiteral("ГРЕШКА при запис!|Няма вид!\nМоля, въведете вид."));
        QCOMPARE(screen.form->state(), RecordForm::State::Adding);
        QCOMPARE(screen.boxes[3]->text(), QStringLiteral("7"));
        QVERIFY(!screen.button("cmdUpdate")->isHidden());
        QCOMPARE(stockRows(scratch.db()), 0);
    }

    // A .ui file that names a column the table lacks (a typo) shows no rows under a wrong caption.
    void aBoxNamingAColumnTheRowsLackIsRefusedAtOpening()
    {
        THREE_STOCK_ROWS();
        QWidget window;
        auto *form = new RecordForm(std::make_unique<RecordStore>(scratch.db(), QStringLiteral("Sklad"),
                                                                  QStringList{QStringLiteral("Name")}, QStringLiteral("Data")),
                                    {}, &window);
        auto *name = new QLineEdit(&window);
        name->setObjectName(QStringLiteral("txtFields_0"));
        name->setProperty(RecordForm::columnProperty, QStringLiteral("Name"));
        auto *typo = new QLineEdit(&window);
        typo->setObjectName(QStringLiteral("txtFields_1"));
        typo->setProperty(RecordForm::columnProperty, QStringLiteral("Nmae"));
        QVERIFY(!form->bindColumns(&window));
        QVERIFY(!form->open());
        QCOMPARE(onlyTitle(messages.shown), QStringLiteral("ГРЕШКА при зареждане!"));
        QVERIFY(messages.shown[0].text.contains(QStringLiteral("txtFields_1")));
        QCOMPARE(form->rowCount(), 0);
        QVERIFY(name->text().isEmpty());

        StockScreen screen(scratch.db());
        QVERIFY(screen.bound);  // every box of a well-made screen is found
        QCOMPARE(screen.name(), QStringLiteral("Артикул 1"));
    }

    // What a check puts right in the entry (a name trimmed, a number padded) is what stands in
    // the box and what is written, even when a later check refuses the save.
    void whatTheCheckPutsRightIsShownAndWritten()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        RecordFormConfig config;
        config.validate = [](QVariantMap &entry) -> std::optional<UserMessage> {
            entry.insert(QStringLiteral("Name"), entry.value(QStringLiteral("Name")).toString().trimmed());
            if (entry.value(QStringLiteral("Kol")).toString().isEmpty())
                return UserMessage::twoLines({}, QStringLiteral("Няма количество!"), QStringLiteral("Моля, въведете количество."));
            return std::nullopt;
        };
        StockScreen screen(scratch.db(), config);
        screen.button("cmdAdd")->click();
        screen.boxes[2]->setText(QStringLiteral("  Филтър  "));
        QVERIFY(!screen.form->update());
        QCOMPARE(screen.boxes[2]->text(), QStringLiteral("Филтър"));
        screen.boxes[3]->setText(QStringLiteral("2"));
        QVERIFY(screen.form->update());
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT Name FROM Sklad")).toString(), QStringLiteral("Филтър"));
    }

    void deletingAsksTwiceAndTheNewLastRowBecomesCurrent()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        screen.form->last();
        for (const QList<bool> &answers : {QList<bool>{false}, QList<bool>{true, false}}) {
            messages.answers = answers;
            screen.button("cmdDelete")->click();
            QCOMPARE(stockRows(scratch.db()), 3);
        }
        QCOMPARE(test::titled(messages.asked).mid(1), (QStringList{"Изтриване на запис|Наистна ли искате да изтриете записа?",
                                                                   "Изтриване на запис|Ще загубите данните окончателно"}));
        messages.answers = {true, true};
        screen.button("cmdDelete")->click();
        QCOMPARE(stockRows(scratch.db()), 2);
        QCOMPARE(screen.at() + QLatin1Char('|') + screen.status(), QStringLiteral("1|Артикул 2|Запис №: 2"));
    }

    void theOtherDeleteQuestions()
    {
        THREE_STOCK_ROWS();
        RecordFormConfig oneQuestion;
        oneQuestion.deleteQuestion = UserMessage::twoLines(
            QStringLiteral("   ВНИМАНИЕ!"), QStringLiteral("Изтривате информацията за пътния лист!"),
            QStringLiteral("Потвърдете изтриването на пътния лист!"), UserMessage::Icon::Critical);
        {
            StockScreen screen(scratch.db(), oneQuestion);
            messages.answers = {false};
            screen.button("cmdDelete")->click();
            QCOMPARE(stockRows(scratch.db()), 3);
            screen.button("cmdDelete")->click();
            QCOMPARE(stockRows(scratch.db()), 2);
            QCOMPARE(messages.asked.size(), 2);
            QCOMPARE(messages.asked[0].title, QStringLiteral("   ВНИМАНИЕ!"));
        }
        RecordFormConfig atOnce;
        atOnce.confirmDelete = false;
        StockScreen screen(scratch.db(), atOnce);
        screen.button("cmdDelete")->click();
        QCOMPARE(stockRows(scratch.db()), 1);
        QCOMPARE(messages.asked.size(), 2);
    }

    void presetsLockedFieldsAndCoveringCombos()
    {
        THREE_STOCK_ROWS();
        RecordFormConfig config;
        config.presets = [](QVariantMap &values) {
            values.insert(QStringLiteral("Kol"), 0.0);
            values.insert(QStringLiteral("Lipsa"), true);
        };
        config.lockedWhileEditing = {QStringLiteral("Name"), QStringLiteral("DocVid")};
        StockScreen screen(scratch.db(), config);
        screen.show();
        QVERIFY(!screen.combo->isVisible());
        QVERIFY(screen.boxes[1]->isVisible());

        screen.button("cmdAdd")->click();
        QCOMPARE(screen.boxes[3]->text(), QStringLiteral("0"));
        QVERIFY(screen.mark->isChecked());
        QVERIFY(screen.combo->isVisible());
        QVERIFY(!screen.boxes[1]->isVisible());
        QVERIFY(screen.combo->isEnabled());
        QVERIFY(!screen.boxes[2]->isReadOnly());
        const QColor white = screen.boxes[2]->palette().color(QPalette::Base);
        screen.button("cmdCancel")->click();

        screen.form->next();
        screen.button("cmdEdit")->click();
        QCOMPARE(screen.combo->currentText(), QStringLiteral("Фактура"));  // loaded from the box it covers
        QVERIFY(!screen.combo->isEnabled());
        QVERIFY(screen.boxes[2]->isReadOnly());
        QCOMPARE(screen.boxes[2]->palette().color(QPalette::Base), QColor(0xC0, 0xC0, 0xC0));
        QVERIFY(!screen.boxes[3]->isReadOnly());
        screen.button("cmdCancel")->click();
        QCOMPARE(screen.boxes[2]->palette().color(QPalette::Base), white);
        QVERIFY(!screen.combo->isVisible());
    }

    void hooksWriteAndRefreshAndTheirErrorsAreTrapped()
    {
        THREE_STOCK_ROWS();
        RecordFormConfig config;
        int moves = 0;
        config.afterMove = [&moves]() -> std::optional<UserMessage> {
            if (++moves == 2)
                return UserMessage::error({}, QStringLiteral("94"), QStringLiteral("Невалидно използване на Null"));
            return std::nullopt;
        };
        QList<bool> writes;
        config.write = [&writes](const RecordRow &row, bool adding) -> Checked<RecordRow> {
            writes.append(adding);
            if (row.values.value(QStringLiteral("Name")).toString() == QStringLiteral("грешка"))
                return UserMessage::error(QStringLiteral("ГРЕШКА при записа на пътния лист!"), QStringLiteral("5"),
                                          QStringLiteral("Невалидно извикване"));
            RecordRow written = row;
            written.id = 99;
            written.values.insert(QStringLiteral("Kol"), 42.0);  // what the write computed
            return written;
        };
        config.clickStartsEditing = true;
        StockScreen screen(scratch.db(), config);
        screen.show();
        screen.form->next();
        screen.form->next();
        QCOMPARE(onlyOne(messages.shown), QStringLiteral("ГРЕШКА при преместване!|94:Невалидно използване на Null"));
        QCOMPARE(screen.form->currentIndex(), 2);

        QTest::mouseClick(screen.boxes[2], Qt::LeftButton);  // a click starts the correction
        QCOMPARE(screen.form->state(), RecordForm::State::Editing);
        screen.boxes[2]->setText(QStringLiteral("грешка"));
        screen.button("cmdUpdate")->click();
        QCOMPARE(messages.shown.last().title, QStringLiteral("ГРЕШКА при записа на пътния лист!"));
        QCOMPARE(screen.form->state(), RecordForm::State::Editing);
        screen.boxes[2]->setText(QStringLiteral("наред"));
        screen.button("cmdUpdate")->click();
        QCOMPARE(writes, (QList<bool>{false, false}));
        QCOMPARE(screen.boxes[3]->text(), QStringLiteral("42"));
        QCOMPARE(test::scalar(scratch.db(), QStringLiteral("SELECT COUNT(*) FROM Sklad WHERE Name = 'наред'")).toInt(), 0);
    }

    void aSuffixNamesEveryControlAndCloseMayStandOutside()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        RecordFormConfig config;
        config.suffix = QStringLiteral("1");
        config.closeInStrip = false;
        config.buttonCaptions = {{QStringLiteral("cmdAdd"), QStringLiteral("&Добави")}};
        StockScreen screen(scratch.db(), config);
        for (const char *name : {"picButtons1", "picStatBox1", "lblStatus1", "cmdAdd1", "cmdEdit1", "cmdUpdate1",
                                 "cmdCancel1", "cmdDelete1", "cmdFirst1", "cmdPrevious1", "cmdNext1", "cmdLast1"})
            QVERIFY2(screen.window.findChild<QWidget *>(QString::fromLatin1(name)), name);
        QVERIFY(!screen.window.findChild<QWidget *>(QStringLiteral("cmdClose1")));
        QVERIFY(!screen.window.findChild<QWidget *>(QStringLiteral("cmdAdd")));
        QCOMPARE(screen.button("cmdAdd")->text(), QStringLiteral("&Добави"));
    }

    void aRowChangedByAnotherUserIsNotOverwritten()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        screen.button("cmdEdit")->click();
        screen.boxes[2]->setText(QStringLiteral("Моят артикул"));
        screen.boxes[3]->setText(QStringLiteral("11"));

        QSqlQuery other(scratch.openSecondConnection());
        QVERIFY(other.exec(QStringLiteral("UPDATE Sklad SET Kol = 77, row_version = row_version + 1 "
                                          "WHERE Name = 'Артикул 1'")));
        screen.button("cmdUpdate")->click();
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown[0], CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(screen.form->state(), RecordForm::State::Editing);
        QCOMPARE(screen.name(), QStringLiteral("Моят артикул"));
        QCOMPARE(screen.boxes[3]->text(), QStringLiteral("11"));
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT Name, Kol FROM Sklad ORDER BY id")),
                 QStringLiteral("Артикул 1|77 Артикул 2|2 Артикул 3|3"));
    }

    void aRowDeletedByAnotherUserIsNeitherWrittenNorDeletedTwice()
    {
        STOCK_SCREEN_ON_THREE_ROWS(screen);
        QSqlQuery other(scratch.openSecondConnection());
        QVERIFY(other.exec(QStringLiteral("DELETE FROM Sklad WHERE Name = 'Артикул 1'")));
        QVERIFY(other.exec(QStringLiteral("UPDATE Sklad SET Kol = 5, row_version = row_version + 1 "
                                          "WHERE Name = 'Артикул 2'")));

        screen.button("cmdEdit")->click();
        screen.boxes[3]->setText(QStringLiteral("9"));
        screen.button("cmdUpdate")->click();
        QCOMPARE(messages.shown.last(), CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(stockRows(scratch.db()), 2);  // not written back as a new row
        screen.button("cmdCancel")->click();

        screen.form->next();
        screen.button("cmdDelete")->click();
        QCOMPARE(messages.shown.last(), CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при изтриване!")));
        QCOMPARE(stockRows(scratch.db()), 2);
        QCOMPARE(screen.form->rowCount(), 3);
    }
};

QTEST_MAIN(RecordFormTest)
#include "tst_recordform.moc"
