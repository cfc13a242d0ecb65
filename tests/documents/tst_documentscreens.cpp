#include "app/frmmain.h"
#include "documents/documents.h"
#include "documents/documentstore.h"
#include "documents/duedocuments.h"
#include "documents/duenotice.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "reference/driver.h"
#include "reports/laidoutreport.h"
#include "reports/reportlayout.h"
#include "reports/reportrenderer.h"
#include "documents/documentkinds.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QSignalSpy>
#include <QTemporaryDir>

using namespace zarek;
using zarek::test::button;
using zarek::test::onlyOne;
using zarek::test::onlyText;
using zarek::test::onlyTitle;
using namespace zarek::documents;

namespace {

const QDate today(2026, 6, 1);
const QString title = QStringLiteral("ГРЕШКА при запис!");

RecordRow document(const QString &kind, const QString &holder, const QDate &issued, const QDate &valid, const QString &number)
{
    RecordRow row;
    row.values = {{"Vid", kind},      {"Kod", holder},         {"Nomer", number}, {"Izdaden", issued},
                  {"Valid", valid},   {"Izdatel", "ЗД Бул Инс АД"}, {"Belejka", ""}};
    return row;
}

// A truck, a driver and four documents: one expired, two due, one valid for long.
QList<RecordRow> prepare(test::ScratchDatabase &scratch)
{
    [&] {
        QVERIFY(scratch.exec("INSERT INTO shof (kod, ime) VALUES ('001', 'Иван Петров Иванов')"));
        QVERIFY(scratch.exec("INSERT INTO Config (kola) VALUES ('РВ 1234 ВК')"));
    }();
    const DocumentStore store(scratch.db());
    const auto kinds = store.kinds().value();
    QList<RecordRow> saved;
    for (const RecordRow &row : {document("Застраховка CMR", "РВ 1234 ВК", QDate(2025, 5, 29), QDate(2026, 5, 28), "CMR-77"),
                                 document("Гражданска отговорност", "РВ 1234 ВК", QDate(2025, 6, 20), QDate(2026, 6, 19), "ГО-12"),
                                 document("Карта на водача", "001", QDate(2021, 7, 1), QDate(2026, 6, 30), "BG0000123"),
                                 document("Технически преглед", "РВ 1234 ВК", QDate(2026, 3, 2), QDate(2027, 3, 1), "ГТП-5")}) {
        const auto written = store.save(row, true, kinds, today, std::nullopt, title);
        if (written)
            saved.append(written.value());
    }
    return saved;
}

// Shows the document screen of the test's day on the document given.
void showOn(Documents &screen, const RecordRow &document)
{
    screen.setToday(today);
    screen.show();
    QVERIFY(screen.showDocument(document.id));
}

}

// A fresh database of the current engine with prepare()'s rows (saved: the documents), and the
// messages recorded.
#define DOCUMENTS_PREPARED()                  \
    ZAREK_SCRATCH_DB(scratch);                \
    const auto saved = prepare(scratch);      \
    RecordingMessageService messages

class DocumentScreensTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // "Поднови" proposes the kind's period from today; written, the old one is history.
    void renewingProposesTheNextPeriodAndKeepsTheOld()
    {
        DOCUMENTS_PREPARED();
        QCOMPARE(saved.size(), 4);
        Documents screen(scratch.db());
        showOn(screen, saved[0]);
        QCOMPARE(screen.field(2)->text(), QStringLiteral("CMR-77"));
        QVERIFY(screen.findChild<QLabel *>("lblState")->text().startsWith(QStringLiteral("Изтекъл на 28.05.2026")));
        screen.renew();
        QCOMPARE(screen.recordForm()->state(), RecordForm::State::Adding);
        QCOMPARE((QStringList{screen.kindCombo()->currentText(), screen.holderCombo()->currentText(), screen.field(3)->text(),
                              screen.field(4)->text()}),
                 (QStringList{"Застраховка CMR", "РВ 1234 ВК", "01.06.2026", "31.05.2027"}));
        screen.field(2)->setText(QStringLiteral("CMR-78"));
        QVERIFY(screen.recordForm()->update());
        QVERIFY2(messages.shown.isEmpty(), messages.shown.isEmpty() ? "" : qPrintable(messages.shown.first().text));
        QCOMPARE(test::rowsText(scratch.db(), "SELECT (SELECT Smenen FROM Dokumenti WHERE Nomer = 'CMR-77'), "
                                              "(SELECT PredID FROM Dokumenti WHERE Nomer = 'CMR-78')"),
                 QStringLiteral("1|%1").arg(saved[0].id));
        const auto *history = screen.findChild<QListWidget *>("lstHistory");
        QCOMPARE(history->count(), 1);
        QVERIFY(history->item(0)->text().contains(QStringLiteral("CMR-77")));
        QVERIFY(history->item(0)->text().contains(QStringLiteral("(подновен)")));
    }

    // A scan over 10 MB is refused with a message and nothing is written; a picture is shown.
    void aBigScanIsRefusedAndAPictureShown()
    {
        DOCUMENTS_PREPARED();
        QTemporaryDir dir;
        const QString big = dir.filePath(QStringLiteral("голям.pdf"));
        {
            QFile file(big);
            QVERIFY(file.open(QIODevice::WriteOnly));
            QVERIFY(file.resize(maxScanBytes + 1));
        }
        const QString picture = dir.filePath(QStringLiteral("полица.png"));
        {
            QImage page(420, 594, QImage::Format_RGB32);
            page.fill(Qt::white);
            QPainter painter(&page);
            painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 16, QFont::Bold));
            painter.drawText(QRect(0, 30, 420, 40), Qt::AlignCenter, QStringLiteral("ЗАСТРАХОВАТЕЛНА ПОЛИЦА"));
            painter.setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
            for (int line = 0; line < 18; ++line)
                painter.drawText(40, 110 + line * 24, QStringLiteral("CMR-77   РВ 1234 ВК   ред %1 ..........").arg(line + 1));
            painter.end();
            QVERIFY(page.save(picture));
        }
        Documents screen(scratch.db());
        showOn(screen, saved[0]);
        QVERIFY(!screen.attachScanFile(big));
        QCOMPARE(onlyTitle(messages.shown), QStringLiteral("ВНИМАНИЕ!"));
        QVERIFY(messages.shown.first().text.contains(QStringLiteral("10,0 MB")));
        QCOMPARE(test::scalar(scratch.db(), "SELECT COUNT(*) FROM DokScan").toInt(), 0);

        QVERIFY(screen.attachScanFile(picture));
        QCOMPARE(test::scalar(scratch.db(), "SELECT COUNT(*) FROM DokScan").toInt(), 1);
        QVERIFY(!screen.findChild<QLabel *>("picScan")->pixmap().isNull());
        QVERIFY(screen.findChild<QLabel *>("lblScan")->text().startsWith(QStringLiteral("полица.png")));
        QVERIFY(button(screen, "cmdScanOpen")->isEnabled());
        test::saveScreenshot(screen, QStringLiteral("documents"));
    }

    // Expired rows red, due ones amber, soonest first; Enter opens the document of the row.
    void theDueListColoursItsRowsAndOpensTheDocument()
    {
        DOCUMENTS_PREPARED();
        DueDocuments screen(scratch.db(), FirmProfile{}, nullptr, today);
        screen.show();
        const ResultGridModel *model = screen.model();
        // The driver's card: its request is due on 9 June.
        QCOMPARE(test::gridRows(model, QStringLiteral("|"), {1}),
                 (QStringList{"Застраховка CMR", "Карта на водача", "Гражданска отговорност"}));
        const QColor expired = model->data(model->index(0, 0), Qt::BackgroundRole).value<QColor>();
        const QColor due = model->data(model->index(1, 0), Qt::BackgroundRole).value<QColor>();
        QVERIFY(expired.red() > expired.green() + 40);
        QVERIFY(due.red() > due.blue() + 60 && due.green() > due.blue() + 40);
        QCOMPARE(model->data(model->index(2, 0), Qt::BackgroundRole).value<QColor>(), due);
        QSignalSpy opened(&screen, &DueDocuments::openDocument);
        screen.grid()->setCurrentIndex(model->index(1, 0));
        QTest::keyClick(screen.grid(), Qt::Key_Return);
        QCOMPARE(opened.size(), 1);
        QCOMPARE(opened.first().first().toLongLong(), saved[2].id);
        test::saveScreenshot(screen, QStringLiteral("duelist"));

        // Printed: one line a document; exported: the same rows.
        const auto report = dueDocumentsReport(model->rows(), FirmProfile{}, today);
        QVERIFY(report);
        const QString text = layoutReport(report.value()).textLines().join(QLatin1Char('\n'));
        QVERIFY(text.contains(QStringLiteral("CMR-77")));
        QVERIFY(text.contains(QStringLiteral("Всичко: 3 документа")));
        if (!qEnvironmentVariable("ZAREK_SCREENSHOT_DIR").isEmpty())
            renderReportPageImage(layoutReport(report.value()), 0, 72)
                .save(qEnvironmentVariable("ZAREK_SCREENSHOT_DIR") + QStringLiteral("/duepaper.png"));
        QTemporaryDir dir;
        QVERIFY(screen.exportTo(dir.filePath(QStringLiteral("документи.csv"))));
        QFile csv(dir.filePath(QStringLiteral("документи.csv")));
        QVERIFY(csv.open(QIODevice::ReadOnly));
        QVERIFY(QString::fromUtf8(csv.readAll()).contains(QStringLiteral("Гражданска отговорност")));
    }

    // The kinds: the standard ones, the name locked while a kind is corrected.
    void theKindsFormShowsTheStandardKinds()
    {
        ZAREK_SCRATCH_DB_TELLING(scratch);
        DocumentKinds screen(scratch.db());
        screen.show();
        QCOMPARE(screen.recordForm()->rowCount(), standardKinds().size());
        screen.recordForm()->edit();
        QVERIFY(screen.findChild<QLineEdit *>("txtFields_0")->isReadOnly());
        screen.recordForm()->cancel();
        test::saveScreenshot(screen, QStringLiteral("kinds"));
    }

    // Deleting a driver who holds documents asks once, with the count; "Не" keeps everything.
    void deletingADriverWithDocumentsAsksWithTheCount()
    {
        DOCUMENTS_PREPARED();
        Driver screen(scratch.db());
        messages.answers = {false};
        screen.recordForm()->remove();
        QCOMPARE(messages.asked.size(), 1);
        QCOMPARE(messages.asked.first().text.section('\n', 0, 0),
                 QStringLiteral("Шофьорът 001 има 1 документ. С него ще бъдат изтрити и документите."));
        QCOMPARE(test::scalar(scratch.db(), "SELECT COUNT(*) FROM shof").toInt(), 1);
        messages.answers = {true};
        screen.recordForm()->remove();
        QCOMPARE(test::rowsText(scratch.db(), "SELECT (SELECT COUNT(*) FROM shof), (SELECT COUNT(*) FROM Dokumenti WHERE Za = 'S'), "
                                              "(SELECT COUNT(*) FROM Dokumenti WHERE Za = 'K')"),
                 QStringLiteral("0|0|3"));
    }

    // At sign-in a notice tells how many are due; switched off, it stays away for that user only.
    void theSignInNoticeTellsAndCanBeSwitchedOff()
    {
        DOCUMENTS_PREPARED();
        QTemporaryDir dir;
        FrmMain::setSettingsFile(dir.filePath(QStringLiteral("zarek.ini")));
        FrmMain window(FirmProfile{}, scratch.config(), scratch.db(), QStringLiteral("A"));
        window.resize(900, 600);
        window.show();
        QVERIFY(window.showDueNotice(QStringLiteral("admin"), today));
        auto *notice = window.findChild<DueNotice *>();
        QVERIFY(notice);
        QVERIFY(notice->isVisible());
        QCOMPARE(notice->text(), QStringLiteral("3 документа изтичат или са изтекли, от тях изтекли 1."));
        test::saveScreenshot(window, QStringLiteral("notice"));
        notice->switchOff()->setChecked(true);
        notice->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!window.showDueNotice(QStringLiteral("admin"), today));
        QVERIFY(window.showDueNotice(QStringLiteral("иван"), today));
        FrmMain::setSettingsFile(QString());
    }
};

QTEST_MAIN(DocumentScreensTest)
#include "tst_documentscreens.moc"
