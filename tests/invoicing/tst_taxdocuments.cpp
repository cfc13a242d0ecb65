#include "app/demodata.h"
#include "core/formats.h"
#include "forms/messageservice.h"
#include "invoicing/taxdocumentpaper.h"
#include "invoicing/taxdocumentregister.h"
#include "invoicing/taxdocumentregisterscreen.h"
#include "invoicing/taxdocumentreport.h"
#include "queryrows.h"
#include "testdatabase.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

using namespace zarek;

// The issued tax documents as paper and as the register "Фактури": what was recorded is what is
// printed and listed, to the cent, whatever changes later.
namespace {

const BooksDay books{Changeover{QDate(2026, 1, 1)}, QDate(2026, 3, 20)};

TaxParty supplier()
{
    return {QStringLiteral("Зарек Транс ЕООД"), QStringLiteral("204518736"), QStringLiteral("BG204518736"),
            QStringLiteral("ул. Индустриална 12"), QStringLiteral("Пловдив"), QStringLiteral("България"),
            QStringLiteral("Стоян Георгиев Колев")};
}

TaxParty bulgarianClient()
{
    return {QStringLiteral("Булмел ЕООД"), QStringLiteral("121627362"), QStringLiteral("BG121627362"),
            QStringLiteral("бул. Марица 5"), QStringLiteral("Пловдив"), QStringLiteral("България"),
            QStringLiteral("Иван Петров")};
}

TaxParty foreignClient()
{
    return {QStringLiteral("Transalp Spedition GmbH"), QStringLiteral("FN 214873k"), QStringLiteral("ATU63482917"),
            QStringLiteral("Industriestraße 21"), QStringLiteral("4020 Linz"), QStringLiteral("Австрия"),
            QStringLiteral("Markus Huber")};
}

TaxLine line(int position, const QString &text, qint64 cents)
{
    return {position, 0, QDate(2026, 2, 10), text, 1, QStringLiteral("курс"), cents / 100.0, Money::fromCents(cents)};
}

// An invoice of two lines at the rate given, in euro, issued on the day given.
TaxDocument invoice(const QString &number, int percent, const QDate &issued, const TaxParty &client)
{
    TaxDocument doc;
    doc.number = number;
    doc.issued = issued;
    doc.taxEvent = issued.addDays(-3);
    doc.supplier = supplier();
    doc.supplierIban = QStringLiteral("BG80BNBG96611020345678");
    doc.supplierBank = QStringLiteral("Българска народна банка");
    doc.supplierBic = QStringLiteral("BNBGBGSD");
    doc.place = QStringLiteral("Пловдив");
    doc.issuer = QStringLiteral("Мария Колева");
    doc.recipient = client;
    doc.currency = Currency::Euro;
    doc.vatPercent = percent;
    doc.lines = {line(1, QStringLiteral("Превоз на пясък, Пловдив - Бургас"), 61728),
                 line(2, QStringLiteral("Превоз на чакъл, Пловдив - Варна"), 50506)};
    doc.base = Money::fromCents(112234);
    doc.vat = Money::fromCents(112234 * percent / 100);
    doc.total = doc.base + doc.vat;
    doc.zeroVatGround = percent == 0 ? zeroVatGrounds().first() : QString();
    doc.paymentMethod = QStringLiteral("по банков път");
    doc.termDays = 30;
    doc.due = issued.addDays(30);
    return doc;
}

TaxDocument creditNote(const QString &number, const TaxDocument &of, const QDate &issued)
{
    TaxDocument doc = of;
    doc.number = number;
    doc.kind = TaxDocumentKind::CreditNote;
    doc.issued = issued;
    doc.taxEvent = issued;
    doc.invoiceId = of.id;
    doc.invoiceNumber = of.number;
    doc.invoiceDate = of.issued;
    doc.reason = QStringLiteral("Курсът е фактуриран погрешно");
    doc.lines = {of.lines.last()};
    doc.lines.first().position = 1;
    doc.base = doc.lines.first().amount;
    doc.vat = Money::fromCents(doc.base.cents() * doc.vatPercent / 100);
    doc.total = doc.base + doc.vat;
    doc.due = issued;
    return doc;
}

bool write(QSqlDatabase db, TaxDocument &doc)
{
    if (auto failure = writeTaxDocument(db, doc)) {
        qWarning() << failure->text;
        return false;
    }
    return true;
}

QString registerText(const RowSet &rows)
{
    return test::rowTexts(rows, {"Nomer", "Vid", "Data", "Klient", "EIK", "Osnova", "DDS", "Obshto", "Valuta", "Plateno",
                                 "Ostatak", "Sastoianie", "Prosrochena"})
        .join(QLatin1Char('\n'));
}

class AnswerAll : public MessageService {
public:
    void inform(const UserMessage &message) override { told.append(message.text); }
    QStringList told;
};

}

class TaxDocumentsTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // The paper carries every item the VAT Act asks of an invoice or a note, each where a reader
    // looks for it, and the amounts the document recorded.
    void thePaperReadsAsRecorded_data()
    {
        QTest::addColumn<int>("kind");  // 0 invoice at 20 %, 1 invoice at 0 %, 2 credit note
        QTest::addColumn<QStringList>("expected");
        QTest::addColumn<QStringList>("absent");
        const QStringList common = {
            QStringLiteral("Зарек Транс ЕООД | Булмел ЕООД"),
            QStringLiteral("МОЛ: Стоян Георгиев Колев | МОЛ: Иван Петров"),
            QStringLiteral("IBAN: BG80BNBG96611020345678     BIC: BNBGBGSD     Банка: Българска народна банка"),
            QStringLiteral("Място на издаване: Пловдив"),
            QStringLiteral("Съставил: Мария Колева | Получил: ................................")};
        QTest::newRow("invoice at 20 %")
            << 0
            << common + QStringList{QStringLiteral("ФАКТУРА"), QStringLiteral("№ 0000000123"), QStringLiteral("Оригинал"),
                                    QStringLiteral("Дата на издаване: 15.02.2026     Дата на данъчното събитие: 12.02.2026"),
                                    QStringLiteral("ЕИК: 204518736 | ЕИК: 121627362"),
                                    QStringLiteral("ИН по ДДС: BG204518736 | ИН по ДДС: BG121627362"),
                                    QStringLiteral("1 | Превоз на пясък, Пловдив - Бургас | курс | 1 | 617,28 | 617,28"),
                                    QStringLiteral("Данъчна основа: | 1122,34 евро"),
                                    QStringLiteral("ДДС 20 %: | 224,46 евро"),
                                    QStringLiteral("Сума за плащане: | 1346,80 евро"),
                                    QStringLiteral("Словом: хиляда триста четиридесет и шест евро и осемдесет евроцента"),
                                    QStringLiteral("Срок за плащане: 17.03.2026")}
            << QStringList{QStringLiteral("Основание за неначисляване"), QStringLiteral("към фактура")};
        QTest::newRow("invoice at 0 %")
            << 1
            << QStringList{QStringLiteral("ФАКТУРА"), QStringLiteral("ДДС 0 %: | 0,00 евро"),
                           QStringLiteral("Сума за плащане: | 1122,34 евро"),
                           QStringLiteral("Основание за неначисляване на ДДС: чл. 21, ал. 2 от ЗДДС — обратно начисляване"),
                           QStringLiteral("ИН по ДДС: BG204518736 | ИН по ДДС: ATU63482917"),
                           QStringLiteral("Словом: хиляда сто двадесет и две евро и тридесет и четири евроцента")}
            << QStringList{};
        QTest::newRow("credit note")
            << 2
            << QStringList{QStringLiteral("КРЕДИТНО ИЗВЕСТИЕ"), QStringLiteral("№ 0000000124"),
                           QStringLiteral("към фактура № 0000000123 от 15.02.2026"),
                           QStringLiteral("Основание за издаване: Курсът е фактуриран погрешно"),
                           QStringLiteral("1 | Превоз на чакъл, Пловдив - Варна | курс | 1 | 505,06 | 505,06"),
                           QStringLiteral("Данъчна основа: | 505,06 евро"), QStringLiteral("ДДС 20 %: | 101,01 евро"),
                           QStringLiteral("Обща сума: | 606,07 евро"),
                           QStringLiteral("Словом: шестстотин и шест евро и седем евроцента")}
            << QStringList{QStringLiteral("Срок за плащане"), QStringLiteral("Превоз на пясък")};
    }
    void thePaperReadsAsRecorded()
    {
        QFETCH(int, kind);
        QFETCH(QStringList, expected);
        QFETCH(QStringList, absent);
        ZAREK_SCRATCH_DB(database);
        TaxDocument first = invoice(QStringLiteral("0000000123"), 20, QDate(2026, 2, 15), bulgarianClient());
        QVERIFY(write(database.db(), first));
        TaxDocument document = first;
        if (kind == 1) {
            document = invoice(QStringLiteral("0000000125"), 0, QDate(2026, 2, 15), foreignClient());
            QVERIFY(write(database.db(), document));
        } else if (kind == 2) {
            document = creditNote(QStringLiteral("0000000124"), first, QDate(2026, 2, 20));
            QVERIFY(write(database.db(), document));
        }
        const Checked<LaidOutReport> paper = taxDocumentPaper(database.db(), document.id, PaperCopy::Original, books);
        QVERIFY(paper);
        const QStringList lines = paper.value().textLines();
        for (const QString &line : expected) {
            if (!lines.contains(line))
                qWarning().noquote() << lines.join(QLatin1Char('\n'));
            QVERIFY2(lines.contains(line), qPrintable(line));
        }
        for (const QString &text : absent)
            QVERIFY2(!lines.join(QLatin1Char('\n')).contains(text), qPrintable(text));
        QCOMPARE(paper.value().pageCount(), 1);  // no courses: no annex

        // A reprint says so; the PDF is named by the kind, the number and the client.
        const Checked<LaidOutReport> copy = taxDocumentPaper(database.db(), document.id, PaperCopy::Copy, books);
        QVERIFY(copy);
        QVERIFY(copy.value().textLines().contains(QStringLiteral("Копие")));
        QCOMPARE(copy.value().suggestedFileName,
                 QStringList({kindName(document.kind), document.number, document.recipient.name}).join(QLatin1Char(' ')));
    }

    // The paper's base is the sum of its lines, the VAT and the total those the document holds.
    void thePaperTotalsAreTheLines()
    {
        ZAREK_SCRATCH_DB(database);
        TaxDocument doc = invoice(QStringLiteral("0000000200"), 20, QDate(2026, 3, 1), bulgarianClient());
        QVERIFY(write(database.db(), doc));
        const Checked<TaxDocument> loaded = loadTaxDocument(database.db(), doc.id);
        QVERIFY(loaded);
        Money sum;
        for (const TaxLine &l : loaded.value().lines)
            sum += l.amount;
        QCOMPARE(sum, loaded.value().base);
        QCOMPARE(loaded.value().base + loaded.value().vat, loaded.value().total);
        const Checked<Report> report = ReportTaxDocument(loaded.value(), PaperCopy::Original);
        QVERIFY(report);
        QCOMPARE(report.value().value(QStringLiteral("base")), amountText(sum, Currency::Euro));
    }

    // The register lists what was recorded in the period and for the client asked, with what is
    // paid and left: a credit note lowers its invoice's remainder, an overdue one is marked.
    void theRegisterListsWhatWasRecorded_data()
    {
        QTest::addColumn<QDate>("from");
        QTest::addColumn<QDate>("to");
        QTest::addColumn<QString>("prefix");
        QTest::addColumn<QString>("expected");
        const QString first = QStringLiteral(
            "0000000123|Фактура|2026-01-15|Булмел ЕООД|121627362|1122.34|224.46|1346.8|EUR|500|240.73|просрочена|true");
        const QString credit = QStringLiteral(
            "0000000124|Кредитно известие|2026-01-20|Булмел ЕООД|121627362|-505.06|-101.01|-606.07|EUR||||false");
        const QString abroad = QStringLiteral(
            "0000000125|Фактура|2026-03-10|Transalp Spedition GmbH|FN 214873k|1122.34|0|1122.34|EUR|0|1122.34|неплатена|false");
        QTest::newRow("the whole quarter") << QDate(2026, 1, 1) << QDate(2026, 3, 31) << QString()
                                           << QStringList{first, credit, abroad}.join(QLatin1Char('\n'));
        QTest::newRow("a client's first letters, any case") << QDate(2026, 1, 1) << QDate(2026, 3, 31)
                                                            << QStringLiteral("бул") << QStringList{first, credit}.join(QLatin1Char('\n'));
        QTest::newRow("a period of one document") << QDate(2026, 3, 1) << QDate(2026, 3, 31) << QString() << abroad;
        QTest::newRow("a client with none") << QDate(2026, 1, 1) << QDate(2026, 3, 31) << QStringLiteral("Хемус")
                                            << QString();
    }
    void theRegisterListsWhatWasRecorded()
    {
        QFETCH(QDate, from);
        QFETCH(QDate, to);
        QFETCH(QString, prefix);
        QFETCH(QString, expected);
        ZAREK_SCRATCH_DB_AS(database, db);
        TaxDocument first = invoice(QStringLiteral("0000000123"), 20, QDate(2026, 1, 15), bulgarianClient());
        QVERIFY(write(db, first));
        TaxDocument credit = creditNote(QStringLiteral("0000000124"), first, QDate(2026, 1, 20));
        QVERIFY(write(db, credit));
        TaxDocument abroad = invoice(QStringLiteral("0000000125"), 0, QDate(2026, 3, 10), foreignClient());
        QVERIFY(write(db, abroad));
        // 500,00 paid of the first; its credit note is not recorded as a settlement and still counts.
        QVERIFY(database.exec(QStringLiteral("INSERT INTO Plashtania (Data, Klient, Suma, Valuta, Nachin) "
                                             "VALUES ('2026-02-01', 'Булмел ЕООД', 50000, 'EUR', 'B')")));
        QVERIFY(database.exec(QStringLiteral("INSERT INTO Pogasiavania (DokID, PlashtaneID, Data, Suma) "
                                             "SELECT %1, MAX(id), '2026-02-01', 50000 FROM Plashtania")
                                  .arg(first.id)));
        const TaxRegisterConditions conditions{{from, to}, prefix, QDate(2026, 3, 20)};
        const Checked<RowSet> rows = taxDocumentRegister(db, conditions);
        QVERIFY(rows);
        QCOMPARE(registerText(rows.value()), expected);

        // A settlement of the credit note against its invoice is counted once, not twice.
        QVERIFY(database.exec(QStringLiteral("INSERT INTO Pogasiavania (DokID, KreditID, Data, Suma) "
                                             "VALUES (%1, %2, '2026-01-20', 60607)")
                                  .arg(first.id)
                                  .arg(credit.id)));
        const Checked<RowSet> again = taxDocumentRegister(db, conditions);
        QVERIFY(again);
        QCOMPARE(registerText(again.value()), expected);
    }

    // The register shows what was printed: a client's register row and the courses changing later
    // change nothing of it; the export writes the same figures.
    void theRegisterStaysAsRecordedAndExportsIt()
    {
        ZAREK_SCRATCH_DB_AS(database, db);
        TaxDocument doc = invoice(QStringLiteral("0000000300"), 20, QDate(2026, 2, 2), bulgarianClient());
        QVERIFY(write(db, doc));
        const TaxRegisterConditions conditions{{QDate(2026, 2, 1), QDate(2026, 2, 28)}, QString(), QDate(2026, 2, 10)};
        const Checked<RowSet> before = taxDocumentRegister(db, conditions);
        QVERIFY(before);
        QVERIFY(database.exec(QStringLiteral("INSERT INTO Klienti (Ime, EIK, DDSNomer, Adres) "
                                             "VALUES ('Булмел ЕООД', '999999999', 'BG999999999', 'друг адрес')")));
        QVERIFY(database.exec(QStringLiteral("UPDATE Klienti SET EIK = '111111111', Ime = 'Булмел Груп ЕООД'")));
        const Checked<RowSet> after = taxDocumentRegister(db, conditions);
        QVERIFY(after);
        QCOMPARE(registerText(after.value()), registerText(before.value()));
        QCOMPARE(registerText(after.value()),
                 QStringLiteral("0000000300|Фактура|2026-02-02|Булмел ЕООД|121627362|1122.34|224.46|1346.8|EUR|0|1346.8|неплатена|false"));

        TaxDocumentRegisterScreen screen(db, conditions);
        QCOMPARE(screen.model()->rows().rowCount(), 1);
        QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("фактури.csv"));
        QVERIFY(screen.exportTo(file));
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        const QString text = QString::fromUtf8(written.readAll());
        for (const QString &figure : {QStringLiteral("0000000300"), QStringLiteral("1122,34"), QStringLiteral("224,46"),
                                      QStringLiteral("1346,80"), QStringLiteral("121627362")})
            QVERIFY2(text.contains(figure), qPrintable(figure + QStringLiteral(" in ") + text));
    }


    // Benchmark: the register of a year of 20,000 documents opens at once.
    void theRegisterOpensOnTwentyThousandDocuments()
    {
        ZAREK_SCRATCH_DB_AS(database, db);
        QVERIFY(db.transaction());
        TaxDocument doc = invoice(QString(), 20, QDate(2025, 1, 1), bulgarianClient());
        doc.lines = {doc.lines.first()};
        doc.base = doc.lines.first().amount;
        doc.vat = Money::fromCents(doc.base.cents() / 5);
        doc.total = doc.base + doc.vat;
        const int count = 20000;
        for (int i = 0; i < count; ++i) {
            doc.id = 0;
            doc.number = QStringLiteral("%1").arg(i + 1, 10, 10, QLatin1Char('0'));
            doc.issued = QDate(2025, 1, 1).addDays(i % 365);
            doc.taxEvent = doc.issued;
            doc.due = doc.issued.addDays(30);
            doc.recipient.name = QStringLiteral("Клиент %1").arg(i % 300);
            QVERIFY(write(db, doc));
        }
        QVERIFY(db.commit());
        QElapsedTimer timer;
        timer.start();
        const Checked<RowSet> rows =
            taxDocumentRegister(db, {{QDate(2025, 1, 1), QDate(2025, 12, 31)}, QString(), QDate(2026, 1, 15)});
        const qint64 read = timer.elapsed();
        QVERIFY(rows);
        QCOMPARE(rows.value().rowCount(), count);
        timer.restart();
        TaxDocumentRegisterScreen screen(db, {{QDate(2025, 1, 1), QDate(2025, 12, 31)}, QString(), QDate(2026, 1, 15)});
        const qint64 opened = timer.elapsed();
        qInfo().noquote() << QStringLiteral("%1: register of %2 documents read in %3 ms, screen opened in %4 ms")
                                 .arg(engine)
                                 .arg(count)
                                 .arg(read)
                                 .arg(opened);
        QCOMPARE(screen.model()->rows().rowCount(), count);
    }
};

QTEST_MAIN(TaxDocumentsTest)
#include "tst_taxdocuments.moc"
