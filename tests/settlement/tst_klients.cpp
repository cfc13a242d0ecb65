#include "data/scratchdatabase.h"
#include "forms/commandday.h"
#include "forms/commands.h"
#include "forms/messageservice.h"
#include "reports/reportpreview.h"
#include "settlement/klfile.h"
#include "settlement/klients.h"
#include "settlement/klientsstore.h"
#include "settlement/settlementcommands.h"
#include "klientstestdata.h"
#include "queryrows.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QTableView>
#include <QTemporaryDir>
#include <memory>

using namespace zarek;
using zarek::test::button;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;

namespace {

constexpr int kmColumn = 4;
constexpr int sumaColumn = 7;

std::unique_ptr<Klients> openStatement(QSqlDatabase db, const QString &folder,
                                       const SearchConditions &conditions = klientstest::march())
{
    return std::make_unique<Klients>(conditions, db, std::make_unique<ScratchDatabase>(folder),
                                     []() -> const FirmProfile & { return klientstest::firm(); });
}

QString labelText(const QWidget &screen, const QString &name)
{
    auto *label = screen.findChild<QLabel *>(name);
    return label ? label->text() : QStringLiteral("<no %1>").arg(name);
}

// Each row as date, route and km, as the grid shows them.
QStringList shownRows(const Klients &screen)
{
    return test::gridRows(screen.model(), QStringLiteral(" "), {0, 1, kmColumn});
}

int scratchCount(Klients &screen, const QString &table)
{
    return test::countBy(screen.scratch()->db(), QStringLiteral("SELECT COUNT(*) FROM ") + table);
}

// Types a number into the current cell of the grid after F4, as a dispatcher would.
void typeIntoCell(QTableView *grid, const QByteArray &digits)
{
    QTest::keyClick(grid, Qt::Key_F4);
    for (const char c : digits)
        QTest::keyClick(QApplication::focusWidget(), c);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
}

// Where two row sets differ, value for value and kind for kind; empty when they are the same.
QString rowSetDifference(const RowSet &a, const RowSet &b)
{
    if (a.columns() != b.columns() || a.rowCount() != b.rowCount())
        return QStringLiteral("%1 rows of %2, %3 rows of %4")
            .arg(a.rowCount())
            .arg(a.columns().join(','))
            .arg(b.rowCount())
            .arg(b.columns().join(','));
    for (int row = 0; row < a.rowCount(); ++row) {
        for (int column = 0; column < a.columnCount(); ++column) {
            const QVariant x = a.value(row, column);
            const QVariant y = b.value(row, column);
            if (x.isNull() != y.isNull() || (!x.isNull() && (x.typeId() != y.typeId() || x != y)))
                return QStringLiteral("row %1 column %2: %3 (%4), %5 (%6)")
                    .arg(row)
                    .arg(a.columns().at(column))
                    .arg(x.toString(), QString::fromLatin1(x.typeName()), y.toString(),
                         QString::fromLatin1(y.typeName()));
        }
    }
    return {};
}

QStringList previewLines(ReportPreview *preview)
{
    if (!preview)
        return {};
    const QStringList lines = preview->report().textLines();
    delete preview;
    return lines;
}

}

// The statement opened and shown (screen), its first row current.
#define STATEMENT_SHOWN()                 \
    Klients *screen = open();             \
    zarek::test::showActive(*screen);     \
    QTRY_COMPARE(screen->currentRow(), 0)

// Each test starts on a fresh database holding the client's courses, with a folder for the
// statement's scratch file and a message recorder; open() makes the statement.
class KlientsTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<Klients> klients;

    Klients *open(const SearchConditions &conditions = klientstest::march())
    {
        klients = openStatement(db, dir->path(), conditions);
        return klients.get();
    }

private slots:
    void initTestCase_data() { test::addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
        QVERIFY(klientstest::fillCourses(db));
        dir = std::make_unique<QTemporaryDir>();
    }
    void cleanup()
    {
        klients.reset();
        dir.reset();
        tearDown();
    }

    void aLongStatementShowsItsFirstPageBeforeTheRestIsLaidOut()
    {
        for (int i = 0; i < 150; ++i)
            QVERIFY(klientstest::insertCourse(db, QDate(2006, 3, 1 + i % 28), klientstest::client,
                                              QStringLiteral("Перник - София"), QStringLiteral("Пясък"),
                                              QStringLiteral("РВ 7777 АА"), 30, 10, 0.1, 30));
        Klients *screen = open();
        std::unique_ptr<ReportPreview> preview(screen->print());
        QVERIFY(preview);
        QCOMPARE(preview->pageCount(), 1);
        QVERIFY(!preview->isLaidOut());
        QVERIFY(preview->report().pageCount() > 1);  // the rest follows when wanted
        preview->resize(900, 700);
        preview->show();
        zarek::test::saveScreenshot(*preview, QStringLiteral("klients-preview"));
        for (QScrollBar *bar : preview->findChildren<QScrollBar *>())
            bar->setValue(bar->maximum() / 3);
        zarek::test::saveScreenshot(*preview, QStringLiteral("klients-preview-scrolled"));
    }

    void theClientsCoursesOfThePeriodAreListedWithTheirSums()
    {
        Klients *screen = open();
        QCOMPARE(screen->objectName(), QStringLiteral("Klients"));
        QCOMPARE(screen->windowTitle(), QStringLiteral("Зарек 2.3 - Курсове на Д'Аргос ООД"));
        QCOMPARE(screen->findChild<QLineEdit *>(QStringLiteral("Text1"))->text(),
                 QStringLiteral("Курсове за клиент към ") + QDate::currentDate().toString(QStringLiteral("dd.MM.yyyy")));
        QCOMPARE(shownRows(*screen), (QStringList{QStringLiteral("02.03.2006 Батановци - Перник 40"),
                                                  QStringLiteral("02.03.2006 София - Перник 100"),
                                                  QStringLiteral("15.03.2006 Перник - София 25"),
                                                  QStringLiteral("31.03.2006 София - Перник 60")}));
        QCOMPARE(test::captions(screen->model()), (QStringList{"Дата", "Маршрут", "Товар", "Кола", "Км", "Тонаж", "Тар.", "Сума"}));
        QCOMPARE(test::gridRows(screen->model(), QStringLiteral("|"), {5, sumaColumn}).value(1), QStringLiteral("10,000|125,00"));
        QStringList labels;
        for (const char *name : {"Label1", "Label2", "Label3", "Label4"})
            labels << labelText(*screen, QString::fromLatin1(name));
        QCOMPARE(labels, (QStringList{"Всичко:", "225", "40,50", "275,00лв."}));
        QCOMPARE(scratchCount(*screen, QStringLiteral("TempKlients")), 4);
        // Nothing touched yet: the list cannot be saved, a file can be loaded.
        QVERIFY(!button(*screen, QStringLiteral("cmdSaveFile"))->isEnabled());
        QVERIFY(!button(*screen, QStringLiteral("cmdSaveFile"))->isHidden());
        QVERIFY(button(*screen, QStringLiteral("cmdOpenFile"))->isEnabled());
        QVERIFY(!screen->dirty() && !screen->printed() && !screen->fileSaved() && !screen->fileLoaded());
        QVERIFY(messages->shown.isEmpty());

        // A second print lists the rows once, as the first did.
        const QStringList first = previewLines(screen->print());
        const QStringList second = previewLines(screen->print());
        QVERIFY(!first.isEmpty());
        QCOMPARE(second, first);
        QCOMPARE(scratchCount(*screen, QStringLiteral("TempKlientsNew")), 4);
    }

    void theSearchPrefixesNarrowTheListWithoutRegardToCase_data()
    {
        QTest::addColumn<QString>("tovar");
        QTest::addColumn<QString>("marsh");
        QTest::addColumn<QString>("kola");
        QTest::addColumn<int>("rows");
        QTest::newRow("cargo") << "пяс" << "" << "" << 3;
        QTest::newRow("route") << "" << "софия" << "" << 2;
        QTest::newRow("truck") << "" << "" << "РВ" << 1;
        QTest::newRow("all three") << "Пясък" << "София" << "СА 1234 ВК" << 2;
        QTest::newRow("none match") << "Цимент" << "" << "" << 0;
    }
    void theSearchPrefixesNarrowTheListWithoutRegardToCase()
    {
        QFETCH(QString, tovar);
        QFETCH(QString, marsh);
        QFETCH(QString, kola);
        SearchConditions conditions = klientstest::march();
        conditions.SeekTovar = tovar;
        conditions.SeekMarsh = marsh;
        conditions.SeekKola = kola;
        Klients *screen = open(conditions);
        QTEST(screen->model()->rowCount(), "rows");
    }

    void noCourseTellsSoAndLeavesTheScreenEmpty()
    {
        SearchConditions conditions = klientstest::march();
        conditions.SeekKlient = QStringLiteral("Никой ООД");
        Klients *screen = open(conditions);
        QCOMPARE(screen->model()->rowCount(), 0);
        QCOMPARE(messages->shown, (QList<UserMessage>{{QStringLiteral("ВНИМАНИЕ!"),
                                                       QStringLiteral("Няма курсове при тези условия!\n\n"
                                                                      "Проверете си условията за търсене!")}}));
        // Printing an empty list says so and shows no report.
        QCOMPARE(screen->print(), nullptr);
        QCOMPARE(messages->shown.last().text, QStringLiteral("Няма!!!!!!!!"));
    }

    // A row's km changed from 100 to 120 prints 120 × Ton × Tarifa; the screen keeps the old money.
    void aCorrectedKmPrintsTheNewSumWhileTheScreenKeepsTheOld()
    {
        const QString before = klientstest::registerFingerprint(db);
        STATEMENT_SHOWN();
        screen->grid()->setCurrentIndex(screen->model()->index(1, kmColumn));  // 02.03 София - Перник, 100 km
        typeIntoCell(screen->grid(), "120");
        QTRY_COMPARE(screen->model()->index(1, kmColumn).data().toString(), QStringLiteral("120"));
        QCOMPARE(screen->model()->index(1, sumaColumn).data().toString(), QStringLiteral("125,00"));
        QCOMPARE(labelText(*screen, QStringLiteral("Label4")), QStringLiteral("275,00лв."));
        QCOMPARE(labelText(*screen, QStringLiteral("Label2")), QStringLiteral("225"));

        const QStringList lines = previewLines(screen->print());
        QVERIFY(screen->printed());
        const QStringList expected = {
            QStringLiteral("Транспорт Петров ЕООД"),
            QStringLiteral("Перник, ул. Индустриална 14"),
            QStringLiteral("тел:076 60 11 22, факс:0888 11 22 33, E-mail:office@petrov.bg, URL:http//www.petrov.bg"),
            QStringLiteral("Извършени от Транспорт Петров ЕООД курсове"),
            QStringLiteral("по заявка на Д'Аргос ООД"),
            QStringLiteral("за периода от 01.03.2006 до 31.03.2006"),
            QStringLiteral("Дата | Маршрут | Товар | Кола | Тон. | Тар. | КМ | Сума"),
            QStringLiteral("02.03.2006 | Батановци - Перник | Чакъл | РВ 7777 АА | 12,500 | 0,100 | 40 | 50,00"),
            QStringLiteral("15.03.2006 | Перник - София | пясък едър | СА 1234 ВК | 8,000 | 0,200 | 25 | 40,00"),
            QStringLiteral("02.03.2006 | София - Перник | Пясък | СА 1234 ВК | 10,000 | 0,125 | 120 | 150,00"),
            QStringLiteral("31.03.2006 | София - Перник | Пясък | СА 1234 ВК | 10,000 | 0,100 | 60 | 60,00"),
            QStringLiteral("Всичко | Товар | 40 t | Км | 245 км"),
            QStringLiteral("Сума | 240,00лв."),
            QStringLiteral("ДДС | 60,00лв."),
            QStringLiteral("Общо | 300,00лв."),
            QStringLiteral("Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd."),
        };
        QCOMPARE(lines, expected);
        // The grid now follows the statement: route, then date.
        QCOMPARE(shownRows(*screen).first(), QStringLiteral("02.03.2006 Батановци - Перник 40"));
        QCOMPARE(shownRows(*screen).at(2), QStringLiteral("02.03.2006 София - Перник 120"));
        QCOMPARE(klientstest::registerFingerprint(db), before);
        QVERIFY(messages->shown.isEmpty());
    }

    // Printing twice in one opening lists every row once.
    // The screen shows the courses as read and writes its working list only when something needs
    // it; what it showed is what the list then holds, value for value and of the same kind, on
    // every engine.
    void theRowsShownBeforeTheListIsWrittenAreThoseItHolds()
    {
        // Half kilometres round to even, a whole tonnage and an empty truck as the list keeps them.
        QVERIFY(klientstest::insertCourse(db, QDate(2006, 3, 20), klientstest::client, QStringLiteral("Перник - Радомир"),
                                          QStringLiteral("Пясък"), QString(), 32.5, 7, 0.15, 34.13));
        QVERIFY(klientstest::insertCourse(db, QDate(2006, 3, 21), klientstest::client, QStringLiteral("Радомир - Перник"),
                                          QStringLiteral("Чакъл"), QStringLiteral("РВ 7777 АА"), 33.5, 9.25, 0.2, 62.9));
        Klients *screen = open();
        QVERIFY(!screen->listWritten());
        const RowSet shown = screen->model()->rows();
        QCOMPARE(shown.rowCount(), 6);
        const Checked<RowSet> held = KlientsStore(screen->scratch()->db()).workingList(KlientsStore::Order::AsEntered);
        QVERIFY(screen->listWritten());
        QVERIFY(held.ok());
        const QString difference = rowSetDifference(shown, held.value());
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        QVERIFY(messages->shown.isEmpty());
    }

    // The paper is laid out from the lines of the printed copy as made, not as read back: they
    // must be what the copy gives back once written, value for value, on every engine.
    void thePrintedLinesAreThoseThePrintedCopyHolds()
    {
        QVERIFY(klientstest::insertCourse(db, QDate(2006, 3, 20), klientstest::client, QStringLiteral("Перник - Радомир"),
                                          QStringLiteral("Пясък"), QString(), 32.5, 7, 0.15, 34.13));
        Klients *screen = open();
        KlientsStore store(screen->scratch()->db());
        const Checked<RowSet> byRoute = store.workingList(KlientsStore::Order::ByRouteAndDate);
        QVERIFY(byRoute.ok());
        const KlientsStore::PrintedCopy copy = KlientsStore::printedCopy(commandDay(), byRoute.value());
        QCOMPARE(copy.totals.lines, 5);
        QVERIFY(!store.writePrintCopy(copy.lines));
        const Checked<RowSet> held = store.printCopy();
        QVERIFY(held.ok());
        const QString difference = rowSetDifference(copy.lines, held.value());
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    // The first correction or deletion writes every course into the working list before it
    // changes one, so a file saved afterwards holds them all.
    void theFirstCorrectionWritesTheWholeListBeforeChangingIt_data()
    {
        QTest::addColumn<bool>("deleting");
        QTest::addColumn<QStringList>("saved");
        QTest::newRow("corrected km") << false
                                      << QStringList{"2006-03-02|Батановци - Перник|40", "2006-03-02|София - Перник|120",
                                                     "2006-03-15|Перник - София|25", "2006-03-31|София - Перник|60"};
        QTest::newRow("deleted row") << true
                                     << QStringList{"2006-03-02|Батановци - Перник|40", "2006-03-15|Перник - София|25",
                                                    "2006-03-31|София - Перник|60"};
    }
    void theFirstCorrectionWritesTheWholeListBeforeChangingIt()
    {
        QFETCH(bool, deleting);
        STATEMENT_SHOWN();
        QVERIFY(!screen->listWritten());
        screen->grid()->setCurrentIndex(screen->model()->index(1, kmColumn));  // 02.03 София - Перник, 100 km
        if (deleting) {
            QTest::keyClick(screen->grid(), Qt::Key_Delete);
        } else {
            typeIntoCell(screen->grid(), "120");
            QTRY_COMPARE(screen->model()->index(1, kmColumn).data().toString(), QStringLiteral("120"));
        }
        QVERIFY(screen->listWritten() && screen->dirty());
        const QString path = dir->filePath(QStringLiteral("поправен.kl"));
        screen->chooseFileToSave = [&path](QWidget *) { return path; };
        screen->saveFile();
        QVERIFY(screen->fileSaved());
        const Checked<StatementFile> file = readStatementFile(path);
        QVERIFY(file.ok());
        QTEST(test::rowTexts(file.value().rows.klients, {"Data", "Marsh", "KM"}), "saved");
        QVERIFY(messages->shown.isEmpty());
    }

    void f4AllowsEditingUntilPageOrEndKeys_data()
    {
        QTest::addColumn<QList<int>>("keys");
        QTest::addColumn<bool>("editing");
        QTest::newRow("nothing") << QList<int>{} << false;
        QTest::newRow("F4") << QList<int>{Qt::Key_F4} << true;
        QTest::newRow("F4 Down") << QList<int>{Qt::Key_F4, Qt::Key_Down} << true;
        QTest::newRow("F4 Up") << QList<int>{Qt::Key_F4, Qt::Key_Down, Qt::Key_Up} << true;
        QTest::newRow("F4 PageUp") << QList<int>{Qt::Key_F4, Qt::Key_PageUp} << false;
        QTest::newRow("F4 PageDown") << QList<int>{Qt::Key_F4, Qt::Key_PageDown} << false;
        QTest::newRow("F4 Home") << QList<int>{Qt::Key_F4, Qt::Key_Home} << false;
        QTest::newRow("F4 End") << QList<int>{Qt::Key_F4, Qt::Key_End} << false;
        QTest::newRow("F4 End F4") << QList<int>{Qt::Key_F4, Qt::Key_End, Qt::Key_F4} << true;
    }
    void f4AllowsEditingUntilPageOrEndKeys()
    {
        QFETCH(QList<int>, keys);
        STATEMENT_SHOWN();
        for (const int key : keys)
            QTest::keyClick(screen->grid(), Qt::Key(key));
        QTEST(screen->editingAllowed(), "editing");
        // F4 touches the list: it may now be saved, and no file loaded over it.
        const bool touched = keys.contains(Qt::Key_F4);
        QCOMPARE(screen->dirty(), touched);
        QCOMPARE(button(*screen, QStringLiteral("cmdSaveFile"))->isEnabled(), touched);
        QCOMPARE(button(*screen, QStringLiteral("cmdOpenFile"))->isVisible(), !touched);
    }

    void withoutF4TypingChangesNothing()
    {
        STATEMENT_SHOWN();
        screen->grid()->setCurrentIndex(screen->model()->index(0, kmColumn));
        QTest::keyClick(screen->grid(), '7');
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        QCOMPARE(screen->model()->index(0, kmColumn).data().toString(), QStringLiteral("40"));
        QVERIFY(!screen->dirty());
    }

    void deleteRemovesTheRowFromTheWorkingList()
    {
        const QString before = klientstest::registerFingerprint(db);
        STATEMENT_SHOWN();
        QTest::keyClick(screen->grid(), Qt::Key_F4);
        screen->grid()->setCurrentIndex(screen->model()->index(1, 1));
        QTest::keyClick(screen->grid(), Qt::Key_Delete);
        QCOMPARE(shownRows(*screen),
                 (QStringList{"02.03.2006 Батановци - Перник 40", "15.03.2006 Перник - София 25", "31.03.2006 София - Перник 60"}));
        QCOMPARE(screen->currentRow(), 1);
        QCOMPARE(scratchCount(*screen, QStringLiteral("TempKlients")), 3);
        QVERIFY(!screen->editingAllowed() && screen->dirty());
        QVERIFY(button(*screen, QStringLiteral("cmdSaveFile"))->isEnabled()
                && button(*screen, QStringLiteral("cmdOpenFile"))->isHidden());
        // The sums tell what was read from the register; the print tells the list.
        QCOMPARE(labelText(*screen, QStringLiteral("Label4")), QStringLiteral("275,00лв."));
        const QStringList lines = previewLines(screen->print());
        QVERIFY(lines.contains(QStringLiteral("Общо | 150,00лв.")));
        QCOMPARE(klientstest::registerFingerprint(db), before);
    }

    void kilometresThatAreNotAWholeNumberAreRefused_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("too many") << "40000";
        QTest::newRow("a fraction") << "12,5";
        QTest::newRow("negative") << "-3";
        QTest::newRow("letters") << "abc";
    }
    void kilometresThatAreNotAWholeNumberAreRefused()
    {
        QFETCH(QString, typed);
        Klients *screen = open();
        screen->setEditingAllowed(true);
        QVERIFY(!screen->model()->setData(screen->model()->index(0, kmColumn), typed));
        QCOMPARE(onlyTitle(messages->shown), QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(screen->model()->index(0, kmColumn).data().toString(), QStringLiteral("40"));
        QCOMPARE(test::scalar(screen->scratch()->db(), QStringLiteral("SELECT SUM(KM) FROM TempKlients")).toInt(), 225);
    }

    void closingWithUnsavedCorrectionsAsksFirst()
    {
        auto untouched = openStatement(db, dir->path());
        test::showActive(*untouched);
        QVERIFY(untouched->close());
        QVERIFY(messages->asked.isEmpty());

        STATEMENT_SHOWN();
        QTest::keyClick(screen->grid(), Qt::Key_Delete);
        messages->answers = {false};
        QVERIFY(!screen->close());
        QVERIFY(screen->isVisible());
        QCOMPARE(onlyText(messages->asked),
                 QStringLiteral("Корекциите в списъка не са записани във файл!\nЗатваряте ли справката без запис?"));
        // The save dialog dismissed: saving ends the screen, but not without the question.
        screen->chooseFileToSave = [](QWidget *) { return QString(); };
        messages->answers = {false};
        screen->saveFile();
        QVERIFY(screen->isVisible());
        messages->answers = {true};
        QVERIFY(screen->close());
        QCOMPARE(messages->asked.size(), 3);
    }

    void theCommandAsksAClientSearchAndOpensTheStatementBesideTheMainWindow()
    {
        ScratchDatabase shared(dir->path());
        QString panel;
        CommandContext context;
        context.db = db;
        context.scratch = &shared;
        context.firm = []() -> const FirmProfile & { return klientstest::firm(); };
        context.setPanel = [&panel](const QString &text) { panel = text; };
        context.helpTopic = [](const QString &) { return 9; };
        context.searchMode = SearchMode::SkladPRN;  // what a warehouse report left
        CommandRegistry commands(context);
        registerSettlementCommands(commands);
        QVERIFY(commands.has(QStringLiteral("mnuSprKlientSakr")));
        QString caption;
        bool clientAsked = false;
        test::onNextModal([&](QDialog &dialog) {
            caption = dialog.windowTitle();
            auto *klient = dialog.findChild<QComboBox *>(QStringLiteral("Combo1"));
            clientAsked = klient->isEnabled();
            klient->setEditText(klientstest::client);
            dialog.findChild<QComboBox *>(QStringLiteral("Combo2"))->setEditText(QString());
            test::enterPeriod(dialog, QStringLiteral("01.03.2006"), QStringLiteral("31.03.2006"));
        });
        commands.handler(QStringLiteral("mnuSprKlientSakr"))();
        QCOMPARE(caption, QStringLiteral("Търсене - Клиент за фактуриране"));
        QVERIFY(clientAsked);
        auto *screen = qobject_cast<Klients *>(commands.openWindow(QStringLiteral("Klients")));
        QVERIFY(screen);
        QVERIFY(screen->isVisible());
        QVERIFY(!screen->isModal());
        QCOMPARE(screen->model()->rowCount(), 4);
        QCOMPARE(screen->property("helpTopic").toInt(), 9);
        QCOMPARE(panel, QStringLiteral("Справка за курсове..."));
        // The statement's working list is not in the shared scratch file.
        QVERIFY(screen->scratch()->filePath() != shared.filePath());
        QVERIFY(messages->shown.isEmpty());
        delete screen;
    }
};

QTEST_MAIN(KlientsTest)
#include "tst_klients.moc"
