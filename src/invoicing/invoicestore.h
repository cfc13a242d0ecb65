#pragma once

#include "core/sharedroutines.h"

#include "core/dates.h"
#include "core/usermessage.h"
#include "data/rowset.h"
#include "invoicing/invoiceclosing.h"
#include "invoicing/taxinvoicestore.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QStringList>

namespace zarek {

// Which courses the invoicing screen shows. FaktNew: a client's uninvoiced courses of a period,
// narrowed by truck, route and cargo when they are given (each a prefix, in any case; a blank is
// no condition). EditFakt: the courses of one invoice.
struct FakturaSelection {
    FakturaMode mode = FakturaMode::FaktNew;
    QString klient;
    Period period;
    QString kola;
    QString marsh;
    QString tovar;
    QString number;  // EditFakt
};

// How the closing write ended.
struct SettleOutcome {
    enum class Kind {
        Written,      // every course written, in one transaction
        Conflict,     // some course was changed by another user: nothing written
        NumberTaken,  // another user issued an invoice under this number meanwhile: nothing written
        Failed,       // the database refused: nothing written
        Refused,      // the tax document is not valid: message says why, nothing written
    };
    Kind kind = Kind::Written;
    int written = 0;
    QList<qint64> changed;              // Conflict: the courses changed or deleted since they were read
    std::optional<UserMessage> message;  // Failed, Refused: the error box
    // The tax document recorded with the write: the invoice issued or the credit note; 0 when none.
    qint64 documentId = 0;
    QString documentNumber;
};

// What closing records of the invoice itself, beside the writes of its courses.
struct InvoiceRecord {
    enum class Kind {
        None,
        Issue,    // a new invoice: its number recorded as issued to the client, with its currency
        Correct,  // an issued invoice corrected: emptied of every course, its number is free again
    };
    Kind kind = Kind::None;
    QString number;
    QString klient;     // Issue: the client invoiced
    bool euro = false;  // Issue: the statement was handed out in euro (else in leva)

    // Issue: the tax invoice, recorded under the number in the same transaction (none: the number
    // only, as before tax invoices were issued).
    std::optional<TaxDocument> taxInvoice;
    // Correct, of a tax invoice: it stays as issued, and the courses taken off it get a credit
    // note of the reason given, issued on the day given.
    qint64 taxInvoiceId = 0;
    QList<InvoiceCourse> takenOff;
    QString reason;
    QDate noteDate;

    static InvoiceRecord issue(QString number, QString klient, bool euro)
    {
        InvoiceRecord record;
        record.kind = Kind::Issue;
        record.number = std::move(number);
        record.klient = std::move(klient);
        record.euro = euro;
        return record;
    }
    static InvoiceRecord correct(QString number)
    {
        InvoiceRecord record;
        record.kind = Kind::Correct;
        record.number = std::move(number);
        return record;
    }
};

// The invoicing store: the courses of the screen, the used numbers and the closing write.
class InvoiceStore {
public:
    explicit InvoiceStore(QSqlDatabase db);

    // id, row_version, Data, Marsh, Tovar, kola, KM, Ton, Tarifa, bruto, Fakt, NomFakt, Klient,
    // by date and entry.
    Checked<RowSet> courses(const FakturaSelection &selection);

    // The invoice numbers in use, highest first: those issued (Fakturi, kept through the year
    // close) and those on courses ("0000000000" is none and not listed).
    QStringList usedNumbers();

    // Writes the outcome of closing in one transaction: each course only if it is still at the
    // version it was read at, stamped with DateMod and TimeMod. An issued invoice's number is
    // recorded in Fakturi, whose unique index refuses a number another workstation issued even
    // at the same moment (NumberTaken, as for a number found on other courses), and its currency
    // in EvroFakt (listed when in euro). A corrected invoice left without courses frees its number.
    // Any failure leaves everything as it was.
    SettleOutcome settle(const QList<CourseWrite> &writes, const QDateTime &stamp, const InvoiceRecord &invoice = {});

    // Writes are sent in groups of at most this many courses per statement.
    static constexpr int batchSize = 400;

private:
    // The writes in one transaction, rolled back unless every course was written.
    SettleOutcome writeAll(const QList<CourseWrite> &writes, const QDateTime &stamp, const InvoiceRecord &invoice);
    QList<qint64> changedSince(const QList<CourseWrite> &writes);

    QSqlDatabase m_db;
};


}
