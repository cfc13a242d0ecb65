#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QTableView>

using namespace zarek;
using zarek::test::press;
using zarek::test::type;

namespace {

// A screen with the lines of one document in a grid (Marsh by MarshID), a route typed in the
// grid, and a number the screen fills itself.
struct LinesScreen {
    explicit LinesScreen(QSqlDatabase db, const QString &document)
    {
        RecordFormConfig config;
        config.numberColumns = {QStringLiteral("KM"), QStringLiteral("RazhN")};
        config.readOnlyColumns = {QStringLiteral("RazhN")};
        config.presets = [](QVariantMap &values) { values.insert(QStringLiteral("KM"), 0.0); };
        // The lines are the document's: its number goes with each line written.
        config.write = [this, document](const RecordRow &row, bool adding) -> Checked<RecordRow> {
            RecordRow line = row;
            line.values.insert(QStringLiteral("MarshID"), document);
            const QString title = QStringLiteral("ГРЕШКА при запис!");
            if (auto failure = adding ? form->store()->insert(line, title) : form->store()->update(line, title))
                return *failure;
            return line;
        };
        form = new RecordForm(std::make_unique<RecordStore>(db, QStringLiteral("Marsh"),
                                                            QStringList{QStringLiteral("MarshID"), QStringLiteral("Marshrut"),
                                                                        QStringLiteral("KM"), QStringLiteral("RazhN")},
                                                            QString(), QStringLiteral("MarshID = ?"),
                                                            QVariantList{document}),
                              config, &window);
        fuel = new QLineEdit(&window);
        fuel->setObjectName(QStringLiteral("txtFuel"));
        auto *fields = new QFormLayout;
        fields->addRow(QStringLiteral("Разход"), fuel);
        form->bind(fuel, QStringLiteral("RazhN"));
        grid = new QTableView(&window);
        grid->setObjectName(QStringLiteral("grdLines"));
        model = form->bindGrid(grid, {{QStringLiteral("Marshrut"), QStringLiteral("Маршрут"), 0},
                                      {QStringLiteral("KM"), QStringLiteral("КМ"), 80}});
        after = new QPushButton(QStringLiteral("След"), &window);
        auto *layout = new QVBoxLayout(&window);
        layout->addLayout(fields);
        layout->addWidget(grid);
        layout->addWidget(form);
        layout->addWidget(after);
        QWidget::setTabOrder(grid, after);
        form->open();
    }

    void show()
    {
        test::showActive(window);
    }
    QStringList lines() const
    {
        QStringList rows;
        for (int row = 0; row < model->rowCount(); ++row)
            rows.append(model->index(row, 0).data().toString() + QLatin1Char('|') + model->index(row, 1).data().toString());
        return rows;
    }

    QWidget window;
    RecordForm *form = nullptr;
    QLineEdit *fuel = nullptr;
    QTableView *grid = nullptr;
    RecordGridModel *model = nullptr;
    QPushButton *after = nullptr;
};

void addLine(QSqlDatabase db, const QString &document, const QString &route, double km)
{
    QVERIFY(test::insertRow(db, QStringLiteral("Marsh"), QStringLiteral("MarshID, Marshrut, KM, RazhN"), {document, route, km, 0}));
}

}

// The messages recorded and the lines of document A shown.
#define LINES_OF_A_SHOWN()                                \
    RecordingMessageService messages;                     \
    LinesScreen screen(scratch.db(), QStringLiteral("A"));\
    screen.show()

class RecordGridTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void theRowsShowAsLinesAndTheCursorFollowsTheForm()
    {
        ZAREK_SCRATCH_DB(scratch);
        addLine(scratch.db(), QStringLiteral("A"), QStringLiteral("София - Перник"), 30.5);
        addLine(scratch.db(), QStringLiteral("A"), QStringLiteral("Перник - София"), 31);
        addLine(scratch.db(), QStringLiteral("B"), QStringLiteral("Русе - Варна"), 200);
        LINES_OF_A_SHOWN();
        QCOMPARE(screen.lines(), (QStringList{QStringLiteral("София - Перник|30,5"), QStringLiteral("Перник - София|31")}));
        QCOMPARE(screen.model->headerData(1, Qt::Horizontal).toString(), QStringLiteral("КМ"));
        QCOMPARE(screen.model->index(0, 1).data(Qt::TextAlignmentRole).toInt() & Qt::AlignRight, int(Qt::AlignRight));
        QCOMPARE(screen.grid->currentIndex().row(), 0);
        screen.form->next();
        QCOMPARE(screen.grid->currentIndex().row(), 1);
        // A line clicked becomes the current row.
        screen.grid->setCurrentIndex(screen.model->index(0, 1));
        QCOMPARE(screen.form->currentIndex(), 0);
        QCOMPARE(screen.form->statusLabel()->text(), QStringLiteral("Запис №: 1"));
        QVERIFY(!(screen.model->flags(screen.model->index(0, 0)) & Qt::ItemIsEditable));
        // Another document's lines.
        screen.form->store()->setWhere(QStringLiteral("MarshID = ?"), {QStringLiteral("B")});
        QVERIFY(screen.form->reload());
        QCOMPARE(screen.lines(), QStringList{QStringLiteral("Русе - Варна|200")});
    }

    // A new line after the last, typed from the keyboard cell by cell; Enter saves it.
    void aLineIsTypedStraightIntoTheGrid()
    {
        ZAREK_SCRATCH_DB(scratch);
        addLine(scratch.db(), QStringLiteral("A"), QStringLiteral("София - Перник"), 30.5);
        LINES_OF_A_SHOWN();
        screen.form->add();
        QCOMPARE(screen.lines(), (QStringList{QStringLiteral("София - Перник|30,5"), QStringLiteral("|0")}));
        QCOMPARE(screen.model->headerData(1, Qt::Vertical).toString(), QStringLiteral("*"));
        QVERIFY(screen.model->flags(screen.model->index(1, 0)) & Qt::ItemIsEditable);
        QVERIFY(!(screen.model->flags(screen.model->index(0, 0)) & Qt::ItemIsEditable));
        QVERIFY(screen.grid->isAncestorOf(QApplication::focusWidget()));
        QCOMPARE(screen.grid->currentIndex(), screen.model->index(1, 0));
        type(QStringLiteral("Перник - Д'Аргос"));
        press(Qt::Key_Tab);
        QCOMPARE(screen.grid->currentIndex(), screen.model->index(1, 1));
        auto *cell = qobject_cast<QLineEdit *>(QApplication::focusWidget());
        QVERIFY(cell);
        QCOMPARE(cell->selectedText(), QStringLiteral("0"));  // typing goes over the preset
        type(QStringLiteral("42,5"));
        // Another line cannot be picked while one is typed.
        screen.grid->setCurrentIndex(screen.model->index(0, 0));
        QTRY_COMPARE(screen.grid->currentIndex().row(), 1);
        screen.grid->edit(screen.model->index(1, 1));
        press(Qt::Key_Return);
        QTRY_COMPARE(screen.form->state(), RecordFormState::Browsing);
        QCOMPARE(screen.lines(), (QStringList{QStringLiteral("София - Перник|30,5"), QStringLiteral("Перник - Д'Аргос|42,5")}));
        QCOMPARE(screen.grid->currentIndex().row(), 1);
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT MarshID, KM FROM Marsh WHERE Marshrut = 'Перник - Д''Аргос'")),
                 QStringLiteral("A|42.5"));
        QVERIFY(messages.shown.isEmpty());
    }

    // A cell that is no number is told by its caption; a control character pasted into a cell is
    // refused as in a box. Nothing is written, and the row stays open as typed.
    void aRefusedCellKeepsTheRowOpenAndWritesNothing_data()
    {
        QTest::addColumn<int>("column");
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("message");  // its start
        QTest::addColumn<QString>("shown");
        QTest::newRow("no number") << 1 << "трийсет"
                                   << "\"трийсет\" не е число!\nМоля, въведете число в поле \"КМ\"."
                                   << "София - Перник|трийсет";
        QTest::newRow("control character") << 0 << "София\x01 - Перник" << "Текстът съдържа непозволен знак!"
                                           << "София\x01 - Перник|30,5";
    }
    void aRefusedCellKeepsTheRowOpenAndWritesNothing()
    {
        QFETCH(int, column);
        QFETCH(QString, typed);
        QFETCH(QString, message);
        QFETCH(QString, shown);
        ZAREK_SCRATCH_DB(scratch);
        addLine(scratch.db(), QStringLiteral("A"), QStringLiteral("София - Перник"), 30.5);
        LINES_OF_A_SHOWN();
        screen.form->edit();
        QVERIFY(screen.model->flags(screen.model->index(0, column)) & Qt::ItemIsEditable);
        screen.model->setData(screen.model->index(0, column), typed);
        QVERIFY(!screen.form->update());
        QCOMPARE(messages.shown.size(), 1);
        QVERIFY2(messages.shown.first().text.startsWith(message), qPrintable(messages.shown.first().text));
        QCOMPARE(screen.form->state(), RecordFormState::Editing);
        QCOMPARE(screen.lines(), QStringList{shown});
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT Marshrut, Km FROM Marsh")), "София - Перник|30.5");
        screen.form->cancel();
        QCOMPARE(screen.lines(), QStringList{QStringLiteral("София - Перник|30,5")});
    }

    // A column the screen fills: grey, never typed into, stored with the row. Tab off the last cell
    // of a new line leaves the grid for what follows it, the line still open.
    void aReadOnlyColumnIsStoredButNotTypedAndTabLeavesTheGrid()
    {
        ZAREK_SCRATCH_DB(scratch);
        LINES_OF_A_SHOWN();
        QCOMPARE(screen.fuel->focusPolicy(), Qt::NoFocus);
        screen.form->add();
        QVERIFY(screen.fuel->isReadOnly());
        QVERIFY(screen.fuel->palette().color(QPalette::Base) != QApplication::palette(screen.fuel).color(QPalette::Base));
        press(Qt::Key_Tab);
        QCOMPARE(screen.grid->currentIndex().column(), 1);
        press(Qt::Key_Tab);
        QTRY_VERIFY(!screen.grid->isAncestorOf(QApplication::focusWidget()) && QApplication::focusWidget() != screen.grid);
        QCOMPARE(screen.form->state(), RecordFormState::Adding);
        screen.model->setData(screen.model->index(0, 0), QStringLiteral("Русе - Варна"));
        screen.fuel->setText(QStringLiteral("12,5"));  // what the screen worked out
        QVERIFY(screen.form->update());
        QCOMPARE(test::rowsText(scratch.db(), QStringLiteral("SELECT RazhN FROM Marsh")), QStringLiteral("12.5"));
    }
};

QTEST_MAIN(RecordGridTest)
#include "tst_recordgrid.moc"
