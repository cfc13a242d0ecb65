#include "core/docnumber.h"
#include "data/database.h"
#include "data/dialect.h"
#include "data/yearclose.h"
#include "invoicing/invoicestore.h"
#include "invoicing/taxinvoicestore.h"
#include "invoiceracers.h"
#include "invoicingfixture.h"
#include "queryrows.h"
#include "subsystemfixtures.h"
#include "testdatabase.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>

using namespace zarek;
using namespace zarek::test;

namespace {

const QDateTime stamp(QDate(2006, 4, 2), QTime(14, 35, 12));

InvoiceCourse course(qint64 id, const QDate &date, qint64 cents)
{
    InvoiceCourse c;
    c.id = id;
    c.date = date;
    c.marsh = QStringLiteral("София - Перник");
    c.tovar = QStringLiteral("Пясък");
    c.kola = QStringLiteral("СА 1234 ВК");
    c.km = 25;
    c.ton = 10;
    c.tarifa = 0.125;
    c.amount = Money::fromCents(cents);
    return c;
}

// The courses of these ids read back from tabl, as the screen would hand them on.
QList<InvoiceCourse> coursesOf(QSqlDatabase db, const QList<qint64> &ids)
{
    QList<InvoiceCourse> out;
    for (const qint64 id : ids) {
        QSqlQuery q(db);
        q.prepare(QStringLiteral("SELECT data, bruto FROM tabl WHERE id = ?"));
        q.addBindValue(id);
        if (q.exec() && q.next())
            out.append(course(id, QDate::fromString(q.value(0).toString().left(10), Qt::ISODate),
                              Money::fromAmount(q.value(1).toDouble()).cents()));
    }
    return out;
}

Checked<TaxDocument> draft(const QList<InvoiceCourse> &courses, InvoiceLines lines = InvoiceLines::PerCourse,
                           int percent = vatPercent, const QString &ground = {})
{
    InvoiceDraftInput input;
    input.issued = stamp.date();
    input.courses = courses;
    input.choices.lines = lines;
    input.choices.vatPercent = percent;
    input.choices.zeroVatGround = ground;
    input.firm = taxFirm();
    input.recipient.name = dargos;
    input.termDays = 10;
    return draftInvoice(input);
}

// Issues the courses as one tax invoice under the number (empty: the sequence's next).
SettleOutcome issueTax(QSqlDatabase db, const QList<qint64> &ids, QString number = {},
                       InvoiceLines lines = InvoiceLines::PerCourse, const QString &klient = dargos)
{
    if (number.isEmpty())
        number = TaxInvoiceStore(db).nextNumber().value();
    QList<CourseWrite> writes;
    for (const qint64 id : ids)
        writes.append({id, scalar(db, QStringLiteral("SELECT row_version FROM tabl WHERE id = ?"), {id}).toLongLong(),
                       true, number});
    InvoiceRecord record = InvoiceRecord::issue(number, klient, false);
    InvoiceDraftInput input;
    input.issued = stamp.date();
    input.courses = coursesOf(db, ids);
    input.choices.lines = lines;
    input.firm = taxFirm();
    input.recipient.name = klient;
    // The client as the register has it, as the screen takes it.
    const auto client = TaxInvoiceStore(db).client(klient);
    if (client && client.value()) {
        input.recipient = client.value()->party;
        input.clientId = client.value()->id;
        input.termDays = client.value()->termDays;
    }
    Checked<TaxDocument> doc = draftInvoice(input);
    if (!doc) {
        SettleOutcome refused;
        refused.kind = SettleOutcome::Kind::Refused;
        return refused;
    }
    record.taxInvoice = doc.value();
    return InvoiceStore(db).settle(writes, stamp, record);
}

// Workstations issuing tax invoices at once: each a copy of this program in its racer mode.
constexpr int racers = 8;
constexpr int invoicesEach = 5;
const char racerMode[] = "--tax-racer";
const char killMode[] = "--tax-victim";

// A racer takes the number the dialog offers, and the next offer whenever another workstation
// took it meanwhile.
int taxRacer(const QStringList &args)
{
    return test::runRacer(args, invoicesEach, [](QSqlDatabase db, const QString &client, int, const RowSet &courses) {
        return issueTax(db, {courses.value(0, QStringLiteral("id")).toLongLong()}, {}, InvoiceLines::PerCourse, client);
    });
}

// A victim: issues invoices of many courses, one after another, until it is killed.
int runVictim(const QStringList &args)
{
    QSqlDatabase db = connectTo(args.at(0), args.at(1), QStringLiteral("victim"));
    if (!db.isOpen())
        return 3;
    QTextStream out(stdout);
    out << "READY" << Qt::endl;
    InvoiceStore store(db);
    for (;;) {
        const Checked<RowSet> rows = store.courses({FakturaMode::FaktNew, dargos, march2006, {}, {}, {}, {}});
        if (!rows || rows.value().rowCount() == 0)
            return 0;
        QList<qint64> ids;
        for (int row = 0; row < rows.value().rowCount() && row < 1000; ++row)
            ids.append(rows.value().value(row, QStringLiteral("id")).toLongLong());
        if (issueTax(db, ids).kind != SettleOutcome::Kind::Written)
            return 2;
    }
}

}

class TaxInvoiceTest : public QObject, test::DatabaseFixture {
    Q_OBJECT
    QList<qint64> ids;

    qint64 count(const QString &sql, const QList<QVariant> &values = {}) { return countWhere(db, sql, values); }

    // Every invoice holds a line for each course that carries its number, and no other; numbers
    // run from the first without a gap, and the counter stands at the last.
    void checkWholeDocuments()
    {
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok d WHERE Vid = 'F' AND (SELECT COUNT(*) FROM "
                                      "FaktRed r WHERE r.DokID = d.id) <> (SELECT COUNT(*) FROM tabl t WHERE "
                                      "t.NomFakt = d.Nomer)")),
                 0);
        // (0000000120 is the invoice of fillMarch() from before tax invoices.)
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl t WHERE t.Fakt = ? AND t.NomFakt <> '0000000120' "
                                      "AND NOT EXISTS (SELECT 1 FROM FaktDok d WHERE d.Nomer = t.NomFakt)"),
                       {true}),
                 0);
        const qint64 documents = count(QStringLiteral("SELECT COUNT(*) FROM FaktDok"));
        if (documents == 0)
            return;
        const qint64 first = scalar(db, QStringLiteral("SELECT MIN(Nomer) FROM FaktDok")).toString().toLongLong();
        const qint64 last = scalar(db, QStringLiteral("SELECT MAX(Nomer) FROM FaktDok")).toString().toLongLong();
        QCOMPARE(last - first + 1, documents);
        QCOMPARE(scalar(db, QStringLiteral("SELECT Posleden FROM Nomerator WHERE Ime = 'fakturi'")).toLongLong(), last);
    }

private slots:
    void initTestCase_data() { addEngineRows(); }
    void init()
    {
        ZAREK_DATABASE_FIXTURE();
    }
    void cleanup()
    {
        ids.clear();
        tearDown();
    }

    // The base is the sum of the lines, the VAT is worked out once on the base, the total is both.
    void vatAndTotalFollowTheLines_data()
    {
        QTest::addColumn<QList<qint64>>("cents");
        QTest::addColumn<int>("percent");
        QTest::addColumn<qint64>("vat");
        QTest::newRow("one course") << QList<qint64>{10000} << 20 << qint64(2000);
        QTest::newRow("33,33: VAT 6,67 on the base") << QList<qint64>{3333} << 20 << qint64(667);
        // Three times 0,05: 0,01 each rounded would make 0,03; on the base 0,15 it is 0,03 too,
        // while three times 0,025 half to even on their own would be 0,06.
        QTest::newRow("three small lines") << QList<qint64>{5, 5, 5} << 20 << qint64(3);
        QTest::newRow("half a cent to even, down") << QList<qint64>{1, 1} << 25 << qint64(0);
        QTest::newRow("half a cent to even, up") << QList<qint64>{3, 3} << 25 << qint64(2);
        QTest::newRow("zero rate") << QList<qint64>{12345, 1} << 0 << qint64(0);
    }
    void vatAndTotalFollowTheLines()
    {
        QFETCH(QList<qint64>, cents);
        QFETCH(int, percent);
        QFETCH(qint64, vat);
        QList<InvoiceCourse> courses;
        qint64 sum = 0;
        for (qsizetype i = 0; i < cents.size(); ++i) {
            courses.append(course(i + 1, QDate(2006, 3, 1 + int(i)), cents[i]));
            sum += cents[i];
        }
        for (const InvoiceLines lines : {InvoiceLines::PerCourse, InvoiceLines::Summary}) {
            const Checked<TaxDocument> doc = draft(courses, lines, percent, QStringLiteral("чл. 28 от ЗДДС"));
            QVERIFY2(doc, qPrintable(doc ? QString() : doc.message().text));
            Money lineSum;
            for (const TaxLine &line : doc.value().lines)
                lineSum += line.amount;
            QCOMPARE(doc.value().lines.size(), lines == InvoiceLines::Summary ? 1 : cents.size());
            QCOMPARE(lineSum.cents(), sum);
            QCOMPARE(sums(doc.value()), QStringLiteral("%1+%2=%3").arg(sum).arg(vat).arg(sum + vat));
            QCOMPARE(doc.value().taxEvent, QDate(2006, 3, int(cents.size())));  // the last course's day
            QCOMPARE(doc.value().due, stamp.date().addDays(10));
        }
    }

    void anInvoiceThatCannotBeIssuedIsRefused_data()
    {
        QTest::addColumn<int>("percent");
        QTest::addColumn<QString>("ground");
        QTest::addColumn<bool>("noCourse");
        QTest::addColumn<bool>("lateTaxEvent");
        QTest::newRow("0 % without a ground") << 0 << "" << false << false;
        QTest::newRow("0 % with blanks only") << 0 << "  " << false << false;
        QTest::newRow("no course") << 20 << "" << true << false;
        QTest::newRow("a tax event after the issue") << 20 << "" << false << true;
    }
    void anInvoiceThatCannotBeIssuedIsRefused()
    {
        QFETCH(int, percent);
        QFETCH(QString, ground);
        QFETCH(bool, noCourse);
        QFETCH(bool, lateTaxEvent);
        InvoiceDraftInput input;
        input.issued = stamp.date();
        if (!noCourse)
            input.courses = {course(1, QDate(2006, 3, 1), 100)};
        input.choices.vatPercent = percent;
        input.choices.zeroVatGround = ground;
        if (lateTaxEvent)
            input.choices.taxEvent = stamp.date().addDays(1);
        input.recipient.name = dargos;
        QVERIFY(!draftInvoice(input));
    }

    // Issued with its courses in one transaction: the frozen document names each course.
    void theInvoiceIsRecordedWithItsCourses_data()
    {
        QTest::addColumn<bool>("summary");
        QTest::newRow("a line a course") << false;
        QTest::newRow("one summary line") << true;
    }
    void theInvoiceIsRecordedWithItsCourses()
    {
        QFETCH(bool, summary);
        ids = fillMarch(db);
        QVERIFY(database->exec(QStringLiteral("INSERT INTO Klienti (Ime, EIK, DDSNomer, Grad, SrokDni) VALUES "
                                             "('Д''Аргос ООД', '831641791', 'BG831641791', 'София', 15)")));
        const SettleOutcome outcome = issueTax(db, {ids[0], ids[1], ids[2]}, QStringLiteral("0000000300"),
                                               summary ? InvoiceLines::Summary : InvoiceLines::PerCourse);
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Written));
        QCOMPARE(outcome.documentNumber, QStringLiteral("0000000300"));  // the first one continues the old series
        const Checked<TaxDocument> doc = loadTaxDocument(db, outcome.documentId);
        QVERIFY(doc);
        QCOMPARE((QStringList{doc.value().number, sums(doc.value()), doc.value().supplier.eik, doc.value().supplierIban}),
                 (QStringList{"0000000300", "18125+3625=21750", "123456786", "BG80BNBG96611020345678"}));
        QCOMPARE(doc.value().lines.size(), summary ? 1 : 3);
        if (summary)
            QCOMPARE(doc.value().lines.first().description,
                     QStringLiteral("Транспортни услуги по справка към фактура № 0000000300"));
        else
            QCOMPARE(doc.value().lines.at(1).description,
                     QStringLiteral("Превоз 05.03.2006, София - Перник, Пясък, СА 1234 ВК, 10,000 т, 25 км"));
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = '0000000300'")), 3);
        QCOMPARE(TaxInvoiceStore(db).nextNumber().value(), QStringLiteral("0000000301"));
        // After the first tax document, only the next number is given.
        QCOMPARE(int(issueTax(db, {ids[3]}, QStringLiteral("0000000305")).kind), int(SettleOutcome::Kind::NumberTaken));
        QCOMPARE(int(issueTax(db, {ids[3]}, QStringLiteral("0000000301")).kind), int(SettleOutcome::Kind::Written));
    }

    // An issued invoice reads back the same after its client and a course change.
    void anIssuedInvoiceDoesNotFollowItsClientOrCourses()
    {
        ids = fillMarch(db);
        QVERIFY(database->exec(QStringLiteral("INSERT INTO Klienti (Ime, EIK, Adres, SrokDni) VALUES "
                                             "('Д''Аргос ООД', '831641791', 'ул. Първа 1', 30)")));
        const SettleOutcome outcome = issueTax(db, {ids[0], ids[1]});
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Written));
        const Checked<TaxDocument> before = loadTaxDocument(db, outcome.documentId);
        QVERIFY(before);
        QCOMPARE(before.value().recipient.eik, QStringLiteral("831641791"));
        QVERIFY(database->exec(QStringLiteral("UPDATE Klienti SET EIK = '000000000', Adres = 'ул. Втора 2', SrokDni = 5")));
        QVERIFY(database->exec(QStringLiteral("UPDATE tabl SET bruto = 999, Marsh = 'Другаде' WHERE id = %1").arg(ids[0])));
        const Checked<TaxDocument> after = loadTaxDocument(db, outcome.documentId);
        QVERIFY(after);
        QVERIFY(after.value() == before.value());
    }

    // Courses taken off an issued invoice are credited; the invoice itself stays as issued.
    void takingCoursesOffIssuesACreditNote_data()
    {
        QTest::addColumn<QList<int>>("takenOff");
        QTest::addColumn<qint64>("base");
        QTest::addColumn<qint64>("vat");
        QTest::newRow("a part") << QList<int>{1} << qint64(5000) << qint64(1000);
        QTest::newRow("two of three") << QList<int>{0, 2} << qint64(13125) << qint64(2625);
        QTest::newRow("all of it") << QList<int>{0, 1, 2} << qint64(18125) << qint64(3625);
    }
    void takingCoursesOffIssuesACreditNote()
    {
        QFETCH(QList<int>, takenOff);
        QFETCH(qint64, base);
        QFETCH(qint64, vat);
        ids = fillMarch(db);
        const QList<qint64> invoiced{ids[0], ids[1], ids[2]};
        const SettleOutcome issued = issueTax(db, invoiced);
        QCOMPARE(int(issued.kind), int(SettleOutcome::Kind::Written));
        const Checked<TaxDocument> invoiceBefore = loadTaxDocument(db, issued.documentId);
        const QString number = issued.documentNumber;

        InvoiceRecord record = InvoiceRecord::correct(number);
        record.taxInvoiceId = issued.documentId;
        record.reason = QStringLiteral("Отказ от услуга");
        record.noteDate = QDate(2006, 4, 10);
        QList<CourseWrite> writes;
        QList<qint64> off;
        for (int i = 0; i < invoiced.size(); ++i) {
            const bool away = takenOff.contains(i);
            writes.append({invoiced[i], 2, !away, away ? noDocumentNumber() : number});
            if (away)
                off.append(invoiced[i]);
        }
        record.takenOff = coursesOf(db, off);
        const SettleOutcome corrected = InvoiceStore(db).settle(writes, QDateTime(QDate(2006, 4, 10), QTime(9, 0)), record);
        QCOMPARE(int(corrected.kind), int(SettleOutcome::Kind::Written));
        QCOMPARE(corrected.documentNumber, QString::number(issued.documentNumber.toLongLong() + 1).rightJustified(10, '0'));
        const Checked<TaxDocument> note = loadTaxDocument(db, corrected.documentId);
        QVERIFY(note);
        QCOMPARE(note.value().kind, TaxDocumentKind::CreditNote);
        QCOMPARE((QStringList{note.value().invoiceNumber, note.value().invoiceDate.toString(Qt::ISODate), note.value().reason,
                              sums(note.value())}),
                 (QStringList{number, "2006-04-02", "Отказ от услуга", QStringLiteral("%1+%2=%3").arg(base).arg(vat).arg(base + vat)}));
        QCOMPARE(note.value().lines.size(), takenOff.size());
        QCOMPARE(note.value().currency, invoiceBefore.value().currency);
        QCOMPARE(note.value().vatPercent, invoiceBefore.value().vatPercent);
        // The invoice unchanged, its number still taken, the courses off it free again.
        QVERIFY(loadTaxDocument(db, issued.documentId).value() == invoiceBefore.value());
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM Fakturi WHERE NomFakt = ?"), {number}), 1);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM tabl WHERE NomFakt = ?"), {number}),
                 invoiced.size() - takenOff.size());
        // Nothing more than what stands of the invoice can be credited.
        const NoteTotals totals = TaxInvoiceStore(db).noteTotals(issued.documentId).value();
        QCOMPARE(totals.creditedBase.cents(), base);
        QVERIFY(!draftNote(TaxDocumentKind::CreditNote, invoiceBefore.value(), totals,
                           {{1, 0, {}, QStringLiteral("още"), 1, {}, 0.01, Money::fromCents(18125 - base + 1)}},
                           QDate(2006, 4, 11), QStringLiteral("грешка")));
    }

    // Credit notes in parts take off the invoice's VAT to the cent when the last part is taken.
    void creditsInPartsAddUpToTheInvoice()
    {
        TaxDocument invoice = draft({course(1, QDate(2006, 3, 1), 3333), course(2, QDate(2006, 3, 2), 3333),
                                     course(3, QDate(2006, 3, 3), 3334)})
                                  .value();
        invoice.id = 7;
        invoice.number = QStringLiteral("0000000007");
        QCOMPARE(invoice.vat.cents(), qint64(2000));
        NoteTotals totals;
        Money vat;
        for (int i = 0; i < 3; ++i) {
            const TaxLine line = invoice.lines.at(i);
            const Checked<TaxDocument> note =
                draftNote(TaxDocumentKind::CreditNote, invoice, totals, {line}, QDate(2006, 4, 5), QStringLiteral("x"));
            QVERIFY(note);
            totals.creditedBase += note.value().base;
            totals.creditedVat += note.value().vat;
            vat += note.value().vat;
        }
        QCOMPARE(totals.creditedBase, invoice.base);
        QCOMPARE(vat, invoice.vat);  // 6,67 + 6,67 + 6,66
    }

    void aDebitNoteRaisesTheInvoice()
    {
        ids = fillMarch(db);
        const SettleOutcome issued = issueTax(db, {ids[0]});
        QCOMPARE(int(issued.kind), int(SettleOutcome::Kind::Written));
        TaxInvoiceStore store(db);
        QCOMPARE(int(store.issueDebit(issued.documentId, QString(), Money::fromCents(100), stamp.date(), QStringLiteral("x")).kind),
                 int(RecordOutcome::Kind::Refused));
        QCOMPARE(int(store.issueDebit(issued.documentId, QStringLiteral("Престой"), Money::fromCents(0), stamp.date(),
                                      QStringLiteral("x")).kind),
                 int(RecordOutcome::Kind::Refused));
        const RecordOutcome debit = store.issueDebit(issued.documentId, QStringLiteral("Престой 2 часа"),
                                                     Money::fromCents(4999), stamp.date(), QStringLiteral("Престой"));
        QVERIFY(debit);
        const TaxDocument note = loadTaxDocument(db, debit.id).value();
        QCOMPARE(note.kind, TaxDocumentKind::DebitNote);
        QCOMPARE(note.number, QString::number(issued.documentNumber.toLongLong() + 1).rightJustified(10, '0'));
        QCOMPARE(sums(note), QStringLiteral("4999+1000=5999"));
        QCOMPARE(note.invoiceId, issued.documentId);
        // Then the whole can be credited: the invoice and the debit.
        const NoteTotals totals = store.noteTotals(issued.documentId).value();
        QCOMPARE(totals.debitedBase.cents(), qint64(4999));
        checkWholeDocuments();
    }

    // A failure in the middle of recording gives back the number and writes nothing.
    void aFailureWhileRecordingLeavesNothing()
    {
        for (int i = 0; i < 250; ++i)
            ids.append(insertCourse(db, {QDate(2006, 3, 1).addDays(i % 30), dargos, QStringLiteral("Маршрут")}));
        QVERIFY(issueTax(db, {ids[0]}).kind == SettleOutcome::Kind::Written);
        // The lines' second statement fails.
        forceFailure(*database, "INSERT ON FaktRed", "NEW.Red = 150");
        const QStringList before = invoiceState(db);
        const SettleOutcome outcome = issueTax(db, ids.mid(1));
        QCOMPARE(int(outcome.kind), int(SettleOutcome::Kind::Failed));
        QCOMPARE(invoiceState(db), before);
        QCOMPARE(rowsText(db, "SELECT (SELECT COUNT(*) FROM FaktDok), (SELECT COUNT(*) FROM FaktRed)"), QStringLiteral("1|1"));
        QCOMPARE(TaxInvoiceStore(db).nextNumber().value(), QStringLiteral("0000000002"));
        checkWholeDocuments();
    }

    // A workstation killed while it issues leaves each invoice whole or absent.
    void aKilledIssuerLeavesWholeInvoicesOnly()
    {
        QFETCH_GLOBAL(QString, engine);
        for (int i = 0; i < 3000; ++i)
            insertCourse(db, {QDate(2006, 3, 1).addDays(i % 30), dargos, QStringLiteral("Маршрут")});
        const QString target = engine == QLatin1String("postgresql") ? database->config().databaseName
                                                                      : database->config().sqlitePath;
        QProcess victim;
        victim.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(killMode), engine, target});
        QVERIFY(victim.waitForStarted());
        QVERIFY(victim.waitForReadyRead(10000));
        QTest::qWait(50 + QRandomGenerator::global()->bounded(400));
        const bool killed = victim.state() != QProcess::NotRunning;
        if (killed) {
            victim.kill();
            QVERIFY(victim.waitForFinished(10000));
        }
        // A fresh connection, as the next start of the program would have.
        db = database->openSecondConnection();
        checkWholeDocuments();
        qInfo("%lld invoices recorded, %s", count(QStringLiteral("SELECT COUNT(*) FROM FaktDok")),
              killed ? "then killed" : "all before the kill");
    }

    void workstationsIssuingAtOnceTakeEveryNumberOnce()
    {
        QStringList outputs;
        race(*database, racerMode, racers, invoicesEach, outputs);
        if (QTest::currentTestFailed())
            return;
        const int invoices = racers * invoicesEach;
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok")), invoices);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(DISTINCT Nomer) FROM FaktDok")), invoices);
        // Each number 1..40 exactly once, on the client's own course.
        for (int n = 1; n <= invoices; ++n) {
            const QString number = QString::number(n).rightJustified(10, QLatin1Char('0'));
            QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok WHERE Nomer = ?"), {number}), 1);
            QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok d JOIN tabl t ON t.NomFakt = d.Nomer AND "
                                          "t.Klient = d.Klient WHERE d.Nomer = ?"),
                           {number}),
                     1);
        }
        checkWholeDocuments();
    }

    // The year close keeps the documents and the numbering goes on.
    void theYearCloseKeepsTheDocuments()
    {
        ids = fillMarch(db);
        QVERIFY(issueTax(db, {ids[0], ids[1]}).kind == SettleOutcome::Kind::Written);
        QTemporaryDir folder;
        const auto closed = closeYear(db, folder.path(), 2006, false, stamp);
        QVERIFY2(closed, qPrintable(closed ? QString() : closed.message().text));
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktDok")), 1);
        QCOMPARE(count(QStringLiteral("SELECT COUNT(*) FROM FaktRed")), 2);
        QCOMPARE(TaxInvoiceStore(db).nextNumber().value(), QStringLiteral("0000000122"));  // after 0000000121
    }
};

int main(int argc, char *argv[])
{
    return racingMain<TaxInvoiceTest>(argc, argv, {{racerMode, taxRacer}, {killMode, runVictim}});
}
#include "tst_taxinvoice.moc"
