#include "core/docnumber.h"
#include "data/scratchdatabase.h"
#include "forms/messageservice.h"
#include "invoicing/debitnotedialog.h"
#include "invoicing/diafakt.h"
#include "invoicing/faktura.h"
#include "invoicing/invoicestore.h"
#include "invoicing/taxinvoicestore.h"
#include "invoicingfixture.h"
#include "invoicingscreens.h"
#include "queryrows.h"
#include "screendriver.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QApplication>
#include <memory>

using namespace zarek;
using namespace zarek::test;

class TaxInvoiceScreensTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    std::unique_ptr<Sheet> sheet;
    QList<qint64> ids;

    std::unique_ptr<Faktura> open(FakturaMode mode, const QString &number = {})
    {
        SearchConditions c;
        c.SeekKlient = dargos;
        c.SeekFrom = QStringLiteral("01.03.2006");
        c.SeekTo = QStringLiteral("31.03.2006");
        c.period = march2006;
        c.SeekNomFakt = number;
        auto screen = std::make_unique<Faktura>(mode, c, db, sheet->db.db(), taxFirm());
        screen->showStatement = [](const Report &) {};
        screen->clock = [] { return closingTime; };
        screen->show();
        return screen;
    }
    qint64 count(const QString &sql, const QList<QVariant> &values = {}) { return countWhere(db, sql, values); }

    // Courses 0, 1 and 2 of fillMarch() issued as a tax invoice from the screen; its id.
    qint64 issueFromTheScreen(InvoiceLines lines = InvoiceLines::PerCourse, const QString &number = QStringLiteral("500"))
    {
        auto screen = open(FakturaMode::FaktNew);
        mark(*screen, {0, 1, 2});
        const bool taken = chooseNumber(*screen, number, [lines](DiaFakt &dialog) {
            dialog.linesCombo()->setCurrentIndex(lines == InvoiceLines::Summary ? 1 : 0);
            dialog.lastCourseBox()->setChecked(false);
            dialog.taxEventEdit()->setDate(QDate(2006, 3, 31));
        });
        if (!taken)
            return 0;
        screen->printButton()->click();
        screen->close();
        return screen->isVisible() ? 0 : screen->issuedDocument();
    }

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
        sheet.reset();
        tearDown();
    }

    // Closing the screen issues the tax invoice with the choices of "Фактура №".
    void closingIssuesTheTaxInvoice_data()
    {
        QTest::addColumn<bool>("summary");
        QTest::newRow("a line a course") << false;
        QTest::newRow("one summary line") << true;
    }
    void closingIssuesTheTaxInvoice()
    {
        QFETCH(bool, summary);
        const qint64 id = issueFromTheScreen(summary ? InvoiceLines::Summary : InvoiceLines::PerCourse);
        QVERIFY2(id > 0, qPrintable(test::shown(*messages).join('\n')));
        const TaxDocument doc = loadTaxDocument(db, id).value();
        QCOMPARE(QStringList({doc.number, doc.taxEvent.toString(Qt::ISODate), doc.issued.toString(Qt::ISODate),
                              doc.recipient.name, sums(doc)}),
                 (QStringList{"0000000500", "2006-03-31", "2006-04-02", dargos, "18125+3625=21750"}));
        QCOMPARE(doc.lines.size(), summary ? 1 : 3);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = '0000000500'")), 3);
    }

    // Once a tax document exists, "Фактура №" offers the next number only and takes no other.
    void theNumberDialogOffersOnlyTheNextNumber_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<bool>("taken");
        QTest::newRow("the next, offered") << "" << true;
        QTest::newRow("the next, typed short") << "501" << true;
        QTest::newRow("a gap above") << "505" << false;
        QTest::newRow("a free one below") << "499" << false;
        QTest::newRow("the last one") << "500" << false;
    }
    void theNumberDialogOffersOnlyTheNextNumber()
    {
        QFETCH(QString, typed);
        QFETCH(bool, taken);
        QVERIFY(issueFromTheScreen() > 0);
        messages->shown.clear();
        DiaFakt dialog(db);
        QCOMPARE(dialog.combo()->count(), 1);
        QCOMPARE(dialog.combo()->currentText(), QStringLiteral("0000000501"));
        if (typed.isEmpty()) {
            dialog.show();
            test::saveScreenshot(dialog, QStringLiteral("diafakt"));
        }
        if (!typed.isEmpty())
            dialog.combo()->setEditText(typed);
        dialog.show();
        dialog.okButton()->click();
        QCOMPARE(dialog.FaktChosen(), taken);
        QCOMPARE(messages->shown.size(), taken ? 0 : 1);
    }

    // 0 % needs its ground in the dialog before the number is taken.
    void zeroVatWantsItsGround()
    {
        DiaFakt dialog(QStringList{});
        dialog.vatCombo()->setCurrentIndex(1);
        QVERIFY(dialog.groundCombo()->isEnabled());
        dialog.show();
        dialog.okButton()->click();
        QVERIFY(!dialog.FaktChosen());
        QCOMPARE(messages->shown.size(), 1);
        dialog.groundCombo()->setEditText(QStringLiteral("чл. 28 от ЗДДС"));
        dialog.okButton()->click();
        QVERIFY(dialog.FaktChosen());
        QCOMPARE(dialog.choices().vatPercent, 0);
        QCOMPARE(dialog.choices().zeroVatGround, QStringLiteral("чл. 28 от ЗДДС"));
    }

    // A course taken off an issued tax invoice is credited with the reason asked; cancelling the
    // question keeps the screen open with nothing written.
    void takingACourseOffCreditsIt()
    {
        const qint64 invoice = issueFromTheScreen();
        QVERIFY(invoice > 0);
        const TaxDocument before = loadTaxDocument(db, invoice).value();
        auto screen = open(FakturaMode::EditFakt, QStringLiteral("0000000500"));
        QCOMPARE(screen->taxInvoiceId(), invoice);
        mark(*screen, {1});
        screen->askReason = [] { return std::optional<QString>(); };
        screen->close();
        QVERIFY(screen->isVisible());
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok")), 1);
        screen->askReason = [] { return std::optional<QString>(QStringLiteral("Курсът не е извършен")); };
        screen->close();
        QVERIFY(!screen->isVisible());
        const TaxDocument note = loadTaxDocument(db, screen->issuedDocument()).value();
        QCOMPARE(note.kind, TaxDocumentKind::CreditNote);
        QCOMPARE((QStringList{note.number, note.invoiceNumber, note.reason, sums(note)}),
                 (QStringList{"0000000501", "0000000500", "Курсът не е извършен", "5000+1000=6000"}));
        QVERIFY(loadTaxDocument(db, invoice).value() == before);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = '0000000500'")), 2);
    }

    // A debit note of a typed line: refused until every box holds what it must, then issued
    // under the next number with the invoice's rate.
    void aDebitNoteFromItsDialog_data()
    {
        QTest::addColumn<QString>("number");
        QTest::addColumn<QString>("amount");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<bool>("issued");
        QTest::newRow("issued") << "500" << "49,99" << "Престой" << true;
        QTest::newRow("no such invoice") << "499" << "49,99" << "Престой" << false;
        QTest::newRow("not a number") << "5a0" << "49,99" << "Престой" << false;
        QTest::newRow("below a cent") << "500" << "12,345" << "Престой" << false;
        QTest::newRow("nil") << "500" << "0" << "Престой" << false;
        QTest::newRow("no amount") << "500" << "" << "Престой" << false;
        QTest::newRow("no reason") << "500" << "49,99" << " " << false;
    }
    void aDebitNoteFromItsDialog()
    {
        QFETCH(QString, number);
        QFETCH(QString, amount);
        QFETCH(QString, reason);
        QFETCH(bool, issued);
        QVERIFY(issueFromTheScreen() > 0);
        messages->shown.clear();
        DebitNoteDialog dialog(db);
        dialog.today = [] { return QDate(2006, 4, 20); };
        dialog.numberEdit()->setText(number);
        dialog.textEdit()->setText(QStringLiteral("Престой 2 часа"));
        dialog.amountEdit()->setText(amount);
        dialog.reasonEdit()->setText(reason);
        dialog.show();
        dialog.okButton()->click();
        QCOMPARE(dialog.issuedDocument() > 0, issued);
        QCOMPARE(messages->shown.size(), issued ? 0 : 1);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok WHERE Vid = 'D'")), issued ? 1 : 0);
        if (issued) {
            const TaxDocument note = loadTaxDocument(db, dialog.issuedDocument()).value();
            QCOMPARE((QStringList{note.number, note.invoiceNumber, sums(note)}),
                     (QStringList{"0000000501", "0000000500", "4999+1000=5999"}));
        }
    }
};

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    app.setAttribute(Qt::AA_Use96Dpi, true);
    TaxInvoiceScreensTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "tst_taxinvoicescreens.moc"
