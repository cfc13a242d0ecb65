// Prints how long issuing takes among 100,000 courses and 20,000 tax documents already issued:
// a tax invoice of 2,000 courses recorded with the closing write of its courses (numbered from the
// one sequence, frozen with its lines), and a credit note for 1,000 of them taken off again.
// SQLite always; PostgreSQL when ZAREK_TEST_PG names a server. Not a test: figures only.
// Run: bench_taxinvoice [courses] [documents] (default 100000 20000).

#include "benchdata.h"
#include "invoicing/invoicestore.h"
#include "invoicing/taxinvoicestore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlQuery>
#include <cstdio>

using namespace zarek;
using zarek::bench::ms;

namespace {

const QString client = QStringLiteral("Д'Аргос ООД");
constexpr int invoiceCourses = 2000;

// The documents issued before: one invoice a number with one line, numbers 1..documents.
bool fillDocuments(QSqlDatabase db, int documents)
{
    if (!db.transaction())
        return false;
    QSqlQuery doc(db);
    doc.prepare(QStringLiteral("INSERT INTO FaktDok (Nomer, Vid, Data, DataDan, Klient, Valuta, DDSProcent, Osnova, DDS, "
                               "Obshto, DataPadej) VALUES (?, 'F', ?, ?, ?, 'BGN', 20, 10000, 2000, 12000, ?)"));
    QSqlQuery line(db);
    line.prepare(QStringLiteral("INSERT INTO FaktRed (DokID, Red, Opisanie, Kol, Cena, Suma) VALUES (?, 1, 'Превоз', 1, 100, 10000)"));
    QSqlQuery number(db);
    number.prepare(QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient, Data) VALUES (?, ?, ?)"));
    for (int n = 1; n <= documents; ++n) {
        const QString nomer = QString::number(n).rightJustified(10, QLatin1Char('0'));
        const QDate day = QDate(2022, 1, 1).addDays(n % 700);
        for (const QVariant &v : QVariantList{nomer, day, day, client, day})
            doc.addBindValue(v);
        if (!doc.exec())
            return false;
        line.addBindValue(doc.lastInsertId());
        number.addBindValue(nomer);
        number.addBindValue(client);
        number.addBindValue(day);
        if (!line.exec() || !number.exec())
            return false;
    }
    QSqlQuery counter(db);
    counter.prepare(QStringLiteral("UPDATE Nomerator SET Posleden = ? WHERE Ime = 'fakturi'"));
    counter.addBindValue(documents);
    return counter.exec() && db.commit();
}

void run(const QString &engine, QSqlDatabase db, int count, int documents)
{
    QString error;
    if (!db.isOpen() || !migrateSchema(db, &error)) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(engine), qPrintable(error));
        return;
    }
    QElapsedTimer fill;
    fill.start();
    if (!bench::fillCourses(db, count) || !fillDocuments(db, documents)) {
        std::fprintf(stderr, "%s: filling failed\n", qPrintable(engine));
        return;
    }
    std::printf("%-10s filled %d courses and %d documents in %.0f ms\n", qPrintable(engine), count, documents, ms(fill));

    FakturaSelection selection{FakturaMode::FaktNew, client, {QDate(2000, 1, 1), QDate(2030, 12, 31)}, {}, {}, {}, {}};
    QElapsedTimer step;
    step.start();
    const Checked<RowSet> rows = InvoiceStore(db).courses(selection);
    if (!rows || rows.value().rowCount() < invoiceCourses) {
        std::fprintf(stderr, "%s: too few uninvoiced courses\n", qPrintable(engine));
        return;
    }
    const double read = ms(step);

    step.restart();
    TaxInvoiceStore store(db);
    const QString number = store.nextNumber().value();
    const double offered = ms(step);

    step.restart();
    const RowSet &r = rows.value();
    QList<CourseWrite> writes;
    InvoiceDraftInput input;
    input.issued = QDate(2024, 1, 5);
    input.recipient.name = client;
    input.firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    for (int row = 0; row < invoiceCourses; ++row) {
        InvoiceCourse c;
        c.id = r.value(row, QStringLiteral("id")).toLongLong();
        c.date = QDate::fromString(r.value(row, QStringLiteral("Data")).toString().left(10), Qt::ISODate);
        c.marsh = r.value(row, QStringLiteral("Marsh")).toString();
        c.tovar = r.value(row, QStringLiteral("Tovar")).toString();
        c.kola = r.value(row, QStringLiteral("kola")).toString();
        c.km = r.value(row, QStringLiteral("KM")).toDouble();
        c.ton = r.value(row, QStringLiteral("Ton")).toDouble();
        c.amount = Money::fromAmount(r.value(row, QStringLiteral("bruto")).toDouble());
        input.courses.append(c);
        writes.append({c.id, r.value(row, QStringLiteral("row_version")).toLongLong(), true, number});
    }
    InvoiceRecord record = InvoiceRecord::issue(number, client, false);
    const Checked<TaxDocument> draft = draftInvoice(input);
    if (!draft) {
        std::fprintf(stderr, "%s: %s\n", qPrintable(engine), qPrintable(draft.message().text));
        return;
    }
    record.taxInvoice = draft.value();
    const double drafted = ms(step);

    step.restart();
    const SettleOutcome issued = InvoiceStore(db).settle(writes, QDateTime(input.issued, QTime(10, 0)), record);
    const double issuing = ms(step);
    if (issued.kind != SettleOutcome::Kind::Written) {
        std::fprintf(stderr, "%s: issuing failed %s\n", qPrintable(engine),
                     qPrintable(issued.message ? issued.message->text : QString()));
        return;
    }

    step.restart();
    const Checked<TaxDocument> loaded = loadTaxDocument(db, issued.documentId);
    const double reading = ms(step);

    // Half of it taken off again: the credit note with the write-back.
    step.restart();
    InvoiceRecord correction = InvoiceRecord::correct(number);
    correction.taxInvoiceId = issued.documentId;
    correction.reason = QStringLiteral("Отказ");
    correction.noteDate = input.issued;
    QList<CourseWrite> off;
    for (int i = 0; i < invoiceCourses / 2; ++i) {
        correction.takenOff.append(input.courses.at(i));
        off.append({input.courses.at(i).id, writes.at(i).rowVersion + 1, false, QStringLiteral("0000000000")});
    }
    const SettleOutcome credited = InvoiceStore(db).settle(off, QDateTime(input.issued, QTime(11, 0)), correction);
    const double crediting = ms(step);

    std::printf("%-10s %d courses, %d documents: courses read %6.1f ms | next number %5.1f ms | draft of %d lines "
                "%5.1f ms | issued with the write-back %6.1f ms (No %s, %lld lines) | read back %5.1f ms | credit "
                "note of %d courses %6.1f ms (%s)\n",
                qPrintable(engine), count, documents, read, offered, invoiceCourses, drafted, issuing,
                qPrintable(issued.documentNumber), loaded ? qint64(loaded.value().lines.size()) : -1LL, reading,
                invoiceCourses / 2, crediting,
                credited.kind == SettleOutcome::Kind::Written ? qPrintable(credited.documentNumber) : "failed");
}

}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int count = argc > 1 ? QString::fromLatin1(argv[1]).toInt() : 100000;
    const int documents = argc > 2 ? QString::fromLatin1(argv[2]).toInt() : 20000;
    bench::runOnEngines([count, documents](const QString &engine, QSqlDatabase db) { run(engine, db, count, documents); });
    return 0;
}
