#include "core/formats.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "receivables/payments.h"
#include "receivables/receivablesscreens.h"
#include "receivables/receivablesstore.h"
#include "receivablesfixture.h"
#include "reports/laidoutreport.h"
#include "reports/reportlayout.h"
#include "reports/reportrenderer.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QLineEdit>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTemporaryDir>

using namespace zarek;
using namespace zarek::receivables;

namespace {

const QString client = QStringLiteral("Транс ООД");
const BooksDay books{Changeover{QDate(2026, 1, 1)}, QDate(2026, 3, 31)};

void issueSome(QSqlDatabase db)
{
    test::issueDocument(db, "0000000001", 'F', client, QDate(2025, 11, 20), QDate(2025, 12, 20), 195583);
    test::issueDocument(db, "0000000002", 'F', client, QDate(2026, 1, 10), QDate(2026, 2, 9), 120000, "EUR");
    test::issueDocument(db, "0000000003", 'F', client, QDate(2026, 3, 10), QDate(2026, 4, 9), 30000, "EUR");
    test::issueDocument(db, "0000000004", 'F', QStringLiteral("Бета ЕООД"), QDate(2025, 12, 1), QDate(2025, 12, 31), 50000);
}

}

class ReceivablesScreensTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // The form records a payment over the oldest documents and shows what is left open.
    void thePaymentFormRecordsAPayment()
    {
        ZAREK_SCRATCH_DB(scratch);
        issueSome(scratch.db());
        RecordingMessageService messages;
        Payments form(scratch.db(), books);
        form.resize(900, 640);
        form.setClient(client);
        auto *documents = form.findChild<QTableWidget *>(QStringLiteral("grdDok"));
        QCOMPARE(documents->rowCount(), 3);
        QCOMPARE(documents->item(0, 0)->text(), QStringLiteral("0000000001"));
        form.findChild<QLineEdit *>(QStringLiteral("txtData"))->setText(QStringLiteral("15.03.2026"));
        form.findChild<QLineEdit *>(QStringLiteral("txtSuma"))->setText(QStringLiteral("1200,00"));
        form.findChild<QLineEdit *>(QStringLiteral("txtReferencia"))->setText(QStringLiteral("ПН 4711"));
        QVERIFY(form.save());
        QCOMPARE(messages.shown.size(), 0);
        // 1200,00 € settle the leva invoice (1000,00 €) and 200,00 € of the next.
        QCOMPARE(documents->rowCount(), 2);
        QCOMPARE(documents->item(0, 4)->text(), amountText(Money::fromCents(100000), Currency::Euro));
        QCOMPARE(form.findChild<QTableWidget *>(QStringLiteral("grdPlashtania"))->rowCount(), 1);
        test::saveScreenshot(form, QStringLiteral("payments"));
        // Deleting asks, "Не" keeps it; "Да" gives the documents back.
        form.findChild<QTableWidget *>(QStringLiteral("grdPlashtania"))->selectRow(0);
        messages.answers = {false};
        form.removeCurrent();
        QCOMPARE(documents->rowCount(), 2);
        messages.answers = {true};
        form.removeCurrent();
        QCOMPARE(documents->rowCount(), 3);
    }

    // "Вземания" shows each client by age with a total; Enter asks for the client's account.
    void receivablesByAgeOpenTheAccount()
    {
        ZAREK_SCRATCH_DB(scratch);
        issueSome(scratch.db());
        ScopedCommandDay day(books);
        ReceivablesScreen screen(scratch.db(), QDate(2026, 3, 31));
        QCOMPARE(screen.model()->rows().rowCount(), 3);
        QCOMPARE(screen.model()->rows().value(0, QStringLiteral("Klient")).toString(), QStringLiteral("Бета ЕООД"));
        QCOMPARE(screen.model()->rows().value(0, QStringLiteral("B3")).toDouble(), 255.65);  // 500,00 лв., 90 days late
        QCOMPARE(screen.model()->rows().value(2, QStringLiteral("Obshto")).toDouble(), 255.65 + 1000 + 1200 + 300);
        test::saveScreenshot(screen, QStringLiteral("receivables"));
        QSignalSpy asked(&screen, &ReceivablesScreen::accountRequested);
        screen.grid()->setCurrentIndex(screen.model()->index(1, 0));
        QTest::keyClick(screen.grid(), Qt::Key_Return);
        QCOMPARE(asked.size(), 1);
        QCOMPARE(asked.first().at(0).toString(), client);
        QCOMPARE(asked.first().at(1).toDate(), QDate(2026, 1, 1));
    }

    // The client's account on screen, on paper and in a spreadsheet.
    void theClientsAccount()
    {
        ZAREK_SCRATCH_DB(scratch);
        issueSome(scratch.db());
        PaymentEntry entry;
        entry.date = QDate(2025, 12, 30);
        entry.client = client;
        entry.amount = Money::fromCents(100000);
        QVERIFY(recordPayment(scratch.db(), entry));
        ScopedCommandDay day(books);
        ClientAccountScreen screen(scratch.db(), FirmProfile(), client, QDate(2025, 12, 1), QDate(2026, 3, 31));
        // opening, the payment, two invoices, closing (the November invoice is before the period)
        QCOMPARE(screen.model()->rows().rowCount(), 5);
        // Opening 1955,83 лв. = 1000,00 €; closing with the payment and the two invoices.
        QCOMPARE((QList<qint64>{screen.account().opening.cents(), screen.account().closing.cents()}),
                 (QList<qint64>{100000, 100000 - 51129 + 120000 + 30000}));
        test::saveScreenshot(screen, QStringLiteral("account"));
        QTemporaryDir dir;
        QVERIFY(screen.exportTo(dir.filePath(QStringLiteral("извлечение.csv"))));
        QFile csv(dir.filePath(QStringLiteral("извлечение.csv")));
        QVERIFY(csv.open(QIODevice::ReadOnly));
        QVERIFY(QString::fromUtf8(csv.readAll()).contains(QStringLiteral("Крайно салдо")));
        auto report = clientAccountReport(screen.account(), FirmProfile());
        QVERIFY2(report, qPrintable(report ? QString() : report.message().text));
        const LaidOutReport laid = layoutReport(report.value());
        const QString text = laid.textLines().join(QLatin1Char('\n'));
        QVERIFY2(text.contains(QStringLiteral("Извлечение по сметка")), qPrintable(text));
        QVERIFY(text.contains(QStringLiteral("Крайно салдо: 1988,71 евро")));
        QVERIFY(text.contains(QStringLiteral("0000000002")));
        const QString folder = qEnvironmentVariable("ZAREK_SHOTS");
        if (!folder.isEmpty())
            QVERIFY(exportReportPdf(laid, folder + QStringLiteral("/account.pdf")));
    }
};

QTEST_MAIN(ReceivablesScreensTest)
#include "tst_receivablesscreens.moc"
