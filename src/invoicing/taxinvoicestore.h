#pragma once

#include "core/currency.h"
#include "core/firmprofile.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "core/vat.h"
#include "invoicing/taxdocument.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <optional>

// Issuing tax documents: the invoice recorded at the close of invoicing, the credit note for the
// courses taken off an issued invoice, the debit note that raises one. Invoices and notes share
// one number sequence; a document takes its number inside the transaction that records it, so a
// failure gives the number back and two workstations never take the same one. A document once
// recorded is never updated.
namespace zarek {

// A course as it goes on an invoice: its amount in the invoice's currency.
struct InvoiceCourse {
    qint64 id = 0;
    QDate date;
    QString marsh;
    QString tovar;
    QString kola;
    double km = 0;
    double ton = 0;
    double tarifa = 0;
    Money amount;
};

// One line for each course, or one line for them all that names the statement.
enum class InvoiceLines { PerCourse, Summary };

// What the user chose for an invoice at closing.
struct IssueChoices {
    std::optional<QDate> taxEvent;  // none: the date of the last course
    InvoiceLines lines = InvoiceLines::PerCourse;
    int vatPercent = zarek::vatPercent;
    QString zeroVatGround;  // required at 0 %
};

// The VAT of a base: the base's share at the rate, rounded half to even to the cent.
Money vatOn(Money base, int percent);

// "Превоз 02.03.2006, София - Перник, Пясък, СА 1234 ВК, 10,000 т, 25 км".
QString courseLineText(const InvoiceCourse &course);
// "Транспортни услуги по справка към фактура № 0000000131".
QString summaryLineText(const QString &number);

// An invoice before its number: lines, base (the sum of the lines), VAT computed once on the base,
// total, currency, dates and parties. Refused: no course, an amount that is no amount, a rate out
// of 0..100, 0 % without its legal ground, a tax event after the day of issue.
struct InvoiceDraftInput {
    QDate issued;
    Currency currency = Currency::Leva;
    QList<InvoiceCourse> courses;
    IssueChoices choices;
    FirmProfile firm;
    TaxParty recipient;  // the name at least
    qint64 clientId = 0;
    int termDays = 0;
};
Checked<TaxDocument> draftInvoice(const InvoiceDraftInput &input);

// What the notes already issued on an invoice amount to.
struct NoteTotals {
    Money creditedBase;
    Money creditedVat;
    Money debitedBase;
    Money debitedVat;
};

// A credit or debit note on an invoice: the invoice's parties, currency and rate, the lines given,
// the base their sum and the VAT on it. A credit note that takes off all that stands of the
// invoice takes off its VAT to the cent as well; one that takes off more is refused.
Checked<TaxDocument> draftNote(TaxDocumentKind kind, const TaxDocument &invoice, const NoteTotals &already,
                               QList<TaxLine> lines, const QDate &issued, const QString &reason);

// A client of the register as an invoice names it.
struct RegisterClient {
    qint64 id = 0;
    TaxParty party;
    int termDays = 0;
};

// How recording a document ended.
struct RecordOutcome {
    enum class Kind {
        Recorded,
        NumberTaken,  // the number wanted is not the sequence's next one (or is in use)
        Refused,      // the document is not valid: message says why
        Failed,       // the database refused: message
    };
    Kind kind = Kind::Recorded;
    qint64 id = 0;
    QString number;
    std::optional<UserMessage> message;
    explicit operator bool() const { return kind == Kind::Recorded; }
};

class TaxInvoiceStore {
public:
    explicit TaxInvoiceStore(QSqlDatabase db);

    // The number the sequence gives next, as it stands now (an offer: the number is taken only
    // when the document is recorded).
    Checked<QString> nextNumber();
    // Whether any tax document was recorded yet. Until then the first number may be any free
    // one, so that a firm continues the series of its old invoices.
    Checked<bool> anyIssued();
    // The register's client of this name (trimmed), or none.
    Checked<std::optional<RegisterClient>> client(const QString &name);
    // The invoice issued under this number, or 0 when there is none.
    Checked<qint64> invoiceId(const QString &number);
    Checked<NoteTotals> noteTotals(qint64 invoiceId);

    // Records the document in the transaction open on the connection (the caller's): takes its
    // number from the sequence and writes FaktDok, FaktRed and the number into Fakturi. A number
    // set on the document must be the sequence's next one (or, before the first tax document, a
    // free one); an empty number takes the next. The document gets its id and number.
    RecordOutcome record(TaxDocument &document);

    // The credit note for courses taken off the invoice, in the caller's transaction: each course's
    // line of the invoice when it has one, else its amount as given.
    RecordOutcome recordCredit(qint64 invoiceId, const QList<InvoiceCourse> &courses, const QDate &issued,
                               const QString &reason);

    // A debit note of one typed line on the invoice, in a transaction of its own.
    RecordOutcome issueDebit(qint64 invoiceId, const QString &description, Money amount, const QDate &issued,
                             const QString &reason);

    // Writes the lines in groups of at most this many a statement.
    static constexpr int linesPerStatement = 100;

private:
    RecordOutcome takeNumber(const QString &wanted);
    RecordOutcome write(TaxDocument &document);

    QSqlDatabase m_db;
};

}
