#include "app/demodata.h"
#include "app/diskcommands.h"
#include "app/frmmain.h"
#include "mainwindowfixture.h"
#include "app/qttranslations.h"
#include "archivefixture.h"
#include "data/archive.h"
#include "data/restore.h"
#include "data/yearclose.h"
#include "forms/diainf.h"
#include "forms/dialog.h"
#include "forms/messageservice.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSqlQuery>
#include <QTemporaryDir>

using namespace zarek;
using zarek::test::acme;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;
using zarek::test::countOf;
using zarek::test::dumpDatabase;
using zarek::test::fillEveryTable;
using zarek::test::insertCourse;

namespace {

const QDateTime moment(QDate(2026, 1, 5), QTime(9, 15, 30));

QString native(const QString &path)
{
    return QDir::toNativeSeparators(path);
}

QStringList filesIn(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

// The courses of the archive at path as its check counts them, or -1 when the check refuses it.
qint64 archivedCourses(const QString &path, const QString &workFolder)
{
    PreparedArchive archive;
    return archive.prepare(path, workFolder) ? -1 : archive.counts().value(QStringLiteral("tabl"));
}

}

// A fresh database of the current engine with rows in every table, the messages recorded, and the
// main window of the administrator on it.
#define MAIN_WINDOW_ON_A_FILLED_DATABASE(window)                                  \
    ZAREK_SCRATCH_DB(scratch);                                                    \
    QVERIFY(fillEveryTable(scratch.db()));                                        \
    RecordingMessageService messages;                                             \
    FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"))

// The same, its archive written at archive and then its courses deleted, and the firm's screen
// (personal) open beside the main window.
#define ARCHIVED_THEN_EMPTIED_WITH_THE_FIRM_SCREEN(window, archive, personal)     \
    ZAREK_SCRATCH_DB(scratch);                                                    \
    QVERIFY(fillEveryTable(scratch.db()));                                        \
    const QString archive = m_dir->filePath(QStringLiteral("архив.abd"));         \
    QVERIFY(writeArchive(scratch.db(), archive));                                 \
    [[maybe_unused]] const QStringList archived = dumpDatabase(scratch.db());     \
    QVERIFY(scratch.exec(QStringLiteral("UPDATE ZarekCfg SET UserName = 'ACME'"))); \
    QVERIFY(scratch.exec(QStringLiteral("DELETE FROM tabl")));                    \
    RecordingMessageService messages;                                             \
    FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));  \
    window.menuAction(QStringLiteral("mnuHelpPerson"))->trigger();                \
    QWidget *personal = test::visibleWindow(QStringLiteral("Personal"));          \
    QVERIFY(personal);                                                            \
    m_chosen = archive

// The three commands of "Дискети" from the main window: their dialogs, questions and messages.
class DiskCommandsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    void init()
    {
        m_dir = std::make_unique<QTemporaryDir>();
        m_data = m_dir->filePath(QStringLiteral("data"));
        m_chosen = QString();
        FrmMain::setSettingsFile(m_dir->filePath(QStringLiteral("zarek.ini")));
        DiskCommandHooks hooks;
        hooks.chooseFile = [this](ArchiveDialog kind) {
            m_dialogs.append(kind);
            return m_chosen;
        };
        hooks.dataFolder = m_data;
        hooks.now = [] { return moment; };
        setDiskCommandHooks(hooks);
        m_dialogs.clear();
    }
    void cleanup() { setDiskCommandHooks({}); }

    void theFileDialogsAreTheArchiveDialogs()
    {
        std::unique_ptr<QFileDialog> save(makeArchiveFileDialog(ArchiveDialog::Save, nullptr));
        QCOMPARE(save->windowTitle(), QStringLiteral("Запис на данни"));
        QCOMPARE(save->nameFilters(), (QStringList{QStringLiteral("Архивни файлове с данни (*.abd)"),
                                                   QStringLiteral("Всички файлове (*.*)")}));
        QCOMPARE(save->defaultSuffix(), QStringLiteral("abd"));
        QCOMPARE(save->acceptMode(), QFileDialog::AcceptSave);
        QVERIFY(!save->testOption(QFileDialog::DontConfirmOverwrite));
        std::unique_ptr<QFileDialog> open(makeArchiveFileDialog(ArchiveDialog::Open, nullptr));
        QCOMPARE(open->windowTitle(), QStringLiteral("Зареждане на архивни данни"));
        QCOMPARE(open->nameFilters(), save->nameFilters());
        QCOMPARE(open->fileMode(), QFileDialog::ExistingFile);
    }

    // The archive dialogs opened in the documents folder, away from the archives: they open in the
    // data folder where the database and its archives are kept.
    void theArchiveDialogsOpenedAwayFromTheArchives()
    {
        ZAREK_SCRATCH_DB(scratch);
        setDiskCommandHooks({});
        const QString data = archiveFolder(scratch.db());
        const QString expected = QFileInfo(data).isDir() ? data : QDir::homePath();
        QCOMPARE(archiveDialogFolder(scratch.db()), expected);
        for (const ArchiveDialog kind : {ArchiveDialog::Save, ArchiveDialog::Open}) {
            std::unique_ptr<QFileDialog> dialog(makeArchiveFileDialog(kind, nullptr, archiveDialogFolder(scratch.db())));
            QCOMPARE(QDir(dialog->directory()).canonicalPath(), QDir(expected).canonicalPath());
        }
    }

    // Cancelling either file dialog copies nothing, replaces nothing and says nothing.
    void aCancelledDialogCopiesNothing()
    {
        MAIN_WINDOW_ON_A_FILLED_DATABASE(window);
        const QStringList before = dumpDatabase(scratch.db());
        window.menuAction(QStringLiteral("mnuDiskZap"))->trigger();
        window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
        QCOMPARE(m_dialogs, (QList<ArchiveDialog>{ArchiveDialog::Save, ArchiveDialog::Open}));
        QCOMPARE(messages.shown.size(), 0);
        QStringList files = filesIn(m_dir->path());
        files.removeAll(QStringLiteral("zarek.ini"));
        QCOMPARE(files, QStringList());
        QVERIFY(!QFileInfo::exists(m_data));
        QCOMPARE(dumpDatabase(scratch.db()), before);
    }

    // "Записване" writes the checked archive, with the default extension, and says where.
    void saveWritesTheArchiveAndSaysWhere()
    {
        MAIN_WINDOW_ON_A_FILLED_DATABASE(window);
        m_chosen = m_dir->filePath(QStringLiteral("копие"));
        window.menuAction(QStringLiteral("mnuDiskZap"))->trigger();
        QCOMPARE(onlyOne(messages.shown),
                 QLatin1Char('|') + QStringLiteral("Данните са записани във файла:\n%1\nАрхивът е проверен: 3 курса, 1 складово движение.")
                     .arg(native(m_dir->filePath(QStringLiteral("копие.abd")))));
        QCOMPARE(archivedCourses(m_dir->filePath(QStringLiteral("копие.abd")), m_dir->path()), 3);
    }

    void aSaveThatCannotBeWrittenSaysWhy()
    {
        MAIN_WINDOW_ON_A_FILLED_DATABASE(window);
        m_chosen = m_dir->filePath(QStringLiteral("zarek.ini/копие.abd"));
        QFile(m_dir->filePath(QStringLiteral("zarek.ini"))).open(QIODevice::WriteOnly);
        window.menuAction(QStringLiteral("mnuDiskZap"))->trigger();
        QCOMPARE(onlyTitle(messages.shown), QStringLiteral("ГРЕШКА при запис на данни!"));
        QCOMPARE(messages.shown[0].icon, UserMessage::Icon::Critical);
    }

    // A file that is not an archive is refused before anything else happens.
    void loadRefusesATextFileAndKeepsTheData()
    {
        MAIN_WINDOW_ON_A_FILLED_DATABASE(window);
        const QStringList before = dumpDatabase(scratch.db());
        m_chosen = m_dir->filePath(QStringLiteral("бележки.abd"));
        QFile text(m_chosen);
        QVERIFY(text.open(QIODevice::WriteOnly));
        text.write(QByteArray("Това не е архив.\n").repeated(100));
        text.close();
        window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
        QCOMPARE(onlyOne(messages.shown),
                 QStringLiteral("ГРЕШКА при зареждане на данни!|") + QStringLiteral("Файлът %1 не е архив на Зарек!\nМоля, посочете друг архивен файл. "
                                                        "Данните не са променени.")
                                             .arg(native(m_chosen)));
        QCOMPARE(dumpDatabase(scratch.db()), before);
        QCOMPARE(filesIn(m_data), QStringList());
        QCOMPARE(window.windowTitle(), QStringLiteral("Зарек 2.3.4 - ACME"));
    }

    // "Зареждане" closes the screens beside the main window, keeps a safety copy, replaces the data
    // and shows the firm of the archive in the title.
    void loadReplacesTheDataTheFirmAndTheScreens()
    {
        ARCHIVED_THEN_EMPTIED_WITH_THE_FIRM_SCREEN(window, archive, personal);
        QPointer<QWidget> watched = personal;
        window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
        QCOMPARE(messages.asked.size(), 0);  // nothing typed on the firm's screen: no question
        QCOMPARE(messages.shown.size(), 1);
        const QString safety = QDir(m_data).filePath(QStringLiteral("Преди зареждане 2026-01-05 09-15-30.abd"));
        QCOMPARE(messages.shown[0].text, QStringLiteral("Данните са заредени от файла:\n%1\nДосегашните данни са запазени във файла:\n%2")
                                             .arg(native(archive), native(safety)));
        QVERIFY(!watched || !watched->isVisible());
        QCOMPARE(window.windowTitle(), QStringLiteral("Зарек 2.3.4 - Зарек Транс ООД"));
        QCOMPARE(window.firmProfile().UserName, QStringLiteral("Зарек Транс ООД"));
        COMPARE_DUMPS(dumpDatabase(scratch.db()), archived);
        QCOMPARE(archivedCourses(safety, m_dir->path()), 0);
    }

    // A screen holding typing asks before it closes; keeping the typing stops the load, with
    // nothing written and no safety copy.
    void aScreenKeepingItsTypingStopsTheLoad()
    {
        ARCHIVED_THEN_EMPTIED_WITH_THE_FIRM_SCREEN(window, archive, personal);
        auto *box = personal->findChild<QLineEdit *>();
        QVERIFY(box);
        const QString typed = box->text();
        box->setText(typed + QStringLiteral(" (ново)"));
        messages.answers = {false};  // "Не": keep what was typed
        window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
        QCOMPARE(onlyText(messages.asked),
                 QStringLiteral("Въведените данни не са записани!\nДа се откажа ли от промените?"));
        QVERIFY(personal->isVisible());
        QCOMPARE(messages.shown.size(), 0);
        QCOMPARE(countOf(scratch.db(), QStringLiteral("tabl")), 0);
        QCOMPARE(filesIn(m_data), QStringList());
        box->setText(typed);
        personal->close();
    }

    // "Нова година" asks first; "Отказ" leaves everything, the status text as it was written. "OK"
    // archives, deletes the courses and says so. A second close of the same year asks before it
    // replaces that year's archive; "Не" stops it with every course in place, "Да" keeps the earlier
    // archive under another name.
    void yearCloseCancelledKeepsEverything()
    {
        MAIN_WINDOW_ON_A_FILLED_DATABASE(window);
        messages.answers = {false};
        window.menuAction(QStringLiteral("mnuNewPer"))->trigger();
        QCOMPARE(window.panelText(1), QStringLiteral("Приключване на годината..."));
        QCOMPARE(onlyOne(messages.asked),
                 QStringLiteral("|Данните ще бъдат изтрити!\n\nДа продължа ли?"));  // the question box's own caption, "Внимание!"
        QCOMPARE(messages.shown.size(), 0);
        QCOMPARE(countOf(scratch.db(), QStringLiteral("tabl")), 3);
        QVERIFY(!QFileInfo::exists(m_data));

        messages.answers.clear();
        window.menuAction(QStringLiteral("mnuNewPer"))->trigger();
        QCOMPARE(messages.asked.size(), 2);
        const QString archive = QDir(m_data).filePath(QStringLiteral("2025.arh"));
        QCOMPARE(onlyText(messages.shown), QStringLiteral("Операцията завърши успешно\nАрхив на 2025 година:\n%1").arg(native(archive)));
        QCOMPARE(countOf(scratch.db(), QStringLiteral("tabl")), 0);
        QCOMPARE(countOf(scratch.db(), QStringLiteral("shof")), 1);
        QCOMPARE(archivedCourses(archive, m_dir->path()), 3);
        QVERIFY(insertCourse(scratch.db(), QDate(2025, 12, 31), QStringLiteral("Късен курс")));

        messages.asked.clear();
        messages.shown.clear();
        messages.answers = {true, false};
        window.menuAction(QStringLiteral("mnuNewPer"))->trigger();
        QCOMPARE(messages.asked.size(), 2);
        QCOMPARE(messages.asked[1].text, QStringLiteral("Архивът на 2025 година вече е записан:\n%1\nДа го заменя ли с нов? "
                                                        "Досегашният ще остане в същата папка под друго име.")
                                             .arg(native(archive)));
        QCOMPARE(messages.shown.size(), 0);
        QCOMPARE(countOf(scratch.db(), QStringLiteral("tabl")), 1);

        messages.answers = {true, true};
        window.menuAction(QStringLiteral("mnuNewPer"))->trigger();
        const QString previous = QDir(m_data).filePath(QStringLiteral("2025 предишен 2026-01-05 09-15-30.arh"));
        QCOMPARE(onlyText(messages.shown), QStringLiteral("Операцията завърши успешно\nАрхив на 2025 година:\n%1\n"
                                                        "Досегашният архив е запазен като:\n%2")
                                             .arg(native(archive), native(previous)));
        QCOMPARE(countOf(scratch.db(), QStringLiteral("tabl")), 0);
        QCOMPARE(archivedCourses(previous, m_dir->path()), 3);
    }

    // With ZAREK_SCREENSHOT_DIR set, saves the dialogs, the questions and the messages as pictures
    // for a person to look at.
    void screenshots()
    {
        ZAREK_SCREENSHOT_DIR(shots);
        ZAREK_SCRATCH_DB(scratch);
        loadQtTranslations(*qApp);
        QVERIFY(fillEveryTable(scratch.db()));
        const auto save = [&](QWidget &widget, const QString &name) {
            widget.show();
            QTest::qWait(100);
            QVERIFY(widget.grab().save(QDir(shots).filePath(name + QStringLiteral(".png"))));
            widget.hide();
        };
        // Archives beside each other, as a user's folder would hold them.
        const QString folder = m_dir->filePath(QStringLiteral("Архиви"));
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(writeArchive(scratch.db(), QDir(folder).filePath(QStringLiteral("Зарек 2025-12-31.abd"))));
        QVERIFY(writeArchive(scratch.db(), QDir(folder).filePath(QStringLiteral("Зарек 2026-01-02.abd"))));
        for (const ArchiveDialog kind : {ArchiveDialog::Save, ArchiveDialog::Open}) {
            std::unique_ptr<QFileDialog> dialog(makeArchiveFileDialog(kind, nullptr));
            dialog->setOption(QFileDialog::DontUseNativeDialog);
            dialog->setDirectory(folder);
            dialog->resize(720, 420);
            save(*dialog, kind == ArchiveDialog::Save ? QStringLiteral("disk-save-dialog") : QStringLiteral("disk-open-dialog"));
        }

        RecordingMessageService messages;
        {
            FrmMain window(acme(), scratch.config(), scratch.db(), QStringLiteral("A"));
            m_chosen = QDir(folder).filePath(QStringLiteral("Зарек 2026-01-05.abd"));
            window.menuAction(QStringLiteral("mnuDiskZap"))->trigger();
            m_chosen = QDir(folder).filePath(QStringLiteral("Зарек 2025-12-31.abd"));
            window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
            QFile text(m_dir->filePath(QStringLiteral("бележки.abd")));
            text.open(QIODevice::WriteOnly);
            text.write(QByteArray("не е архив\n").repeated(50));
            text.close();
            m_chosen = text.fileName();
            window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
            // An archive with a trigger in it, and one with a value no screen takes.
            const QString withCode = QDir(folder).filePath(QStringLiteral("Чужд.abd"));
            QVERIFY(QFile::copy(QDir(folder).filePath(QStringLiteral("Зарек 2025-12-31.abd")), withCode));
            QVERIFY(test::makePlainSqliteFile(withCode, {QStringLiteral("CREATE TRIGGER t AFTER UPDATE ON Sklad BEGIN "
                                                                        "SELECT RAISE(ABORT, 'не се показва'); END")}));
            m_chosen = withCode;
            window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
            const QString damaged = QDir(folder).filePath(QStringLiteral("Повреден.abd"));
            QVERIFY(QFile::copy(QDir(folder).filePath(QStringLiteral("Зарек 2025-12-31.abd")), damaged));
            QVERIFY(test::makePlainSqliteFile(damaged, {QStringLiteral("UPDATE tabl SET km = -500 WHERE id = 1")}));
            m_chosen = damaged;
            window.menuAction(QStringLiteral("mnuDiskZar"))->trigger();
            messages.answers = {true, true, true};
            window.menuAction(QStringLiteral("mnuNewPer"))->trigger();
            QVERIFY(insertCourse(scratch.db(), QDate(2025, 12, 31), QStringLiteral("Късен курс")));
            window.menuAction(QStringLiteral("mnuNewPer"))->trigger();
            window.resize(900, 300);
            window.show();
            QTest::qWait(100);
            QVERIFY(window.grab().save(QDir(shots).filePath(QStringLiteral("disk-main-window.png"))));
            QMenu *disk = window.menuBar()->findChild<QMenu *>(QStringLiteral("mnuDisk"));
            QVERIFY(disk);
            disk->popup(window.mapToGlobal(QPoint(0, 0)));
            QTest::qWait(100);
            QVERIFY(disk->grab().save(QDir(shots).filePath(QStringLiteral("disk-menu.png"))));
            disk->hide();
        }
        int n = 0;
        for (const UserMessage &question : std::as_const(messages.asked)) {
            // The close's own question has OK and "Отказ"; replacing an archive, "Да" and "Не".
            Dialog box(question, question.text.startsWith(QStringLiteral("Данните ще")) ? Dialog::Buttons::OkCancel
                                                                                         : Dialog::Buttons::YesNo);
            save(box, QStringLiteral("disk-question-%1").arg(++n));
        }
        n = 0;
        for (const UserMessage &message : std::as_const(messages.shown)) {
            DiaInf box(message);
            save(box, QStringLiteral("disk-message-%1").arg(++n));
        }
        qInfo() << "asked:" << messages.asked.size() << "shown:" << messages.shown.size();
    }

    // The demo firm as the program makes it, with every kind of row the screens write, passes the
    // restore's value checks whole and comes back row for row.
    void anArchiveOfTheDemoFirmIsTaken()
    {
        ZAREK_SCRATCH_DB(scratch);
        QTemporaryDir dir;
        QSqlDatabase db = scratch.db();
        DemoOptions options;
        options.courses = 400;
        options.today = QDate(2026, 11, 22);
        const auto summary = fillDemoDatabase(db, options);
        QVERIFY2(summary.ok(), summary.ok() ? "" : qPrintable(summary.message().text));
        const QStringList before = dumpDatabase(db);
        const QString path = dir.filePath(QStringLiteral("demo.abd"));
        QVERIFY(writeArchive(db, path));
        PreparedArchive prepared;
        const auto refusal = prepared.prepare(path, dir.path());
        QVERIFY2(!refusal, qPrintable(refusal ? refusal->text : QString()));
        QVERIFY(restoreArchive(db, prepared, dir.path(), QDateTime(QDate(2026, 11, 22), QTime(8, 0))));
        COMPARE_DUMPS(dumpDatabase(db), before);
    }

private:
    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_data;
    QString m_chosen;
    QList<ArchiveDialog> m_dialogs;
};

QTEST_MAIN(DiskCommandsTest)
#include "tst_diskcommands.moc"
