#pragma once

#include "core/currency.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "receivables/receivablesrules.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>

#include <array>
#include <optional>

// Payments received from clients and what they settle, credit notes settling their invoices, and
// what each client owes on a date or over a period. Each write is one transaction that locks the
// documents it settles first, so two workstations never settle one invoice twice.
namespace zarek::receivables {

// A document the user picked for a payment, with the version it was read at and the amount put
// against it in the document's currency.
struct PickedDocument {
    qint64 documentId = 0;
    qint64 version = 0;
    Money amount;
};

struct PaymentEntry {
    QDate date;
    qint64 clientId = 0;  // the register's row; 0 when the client is not in it
    QString client;
    Money amount;
    Currency currency = Currency::Leva;
    QChar way = QLatin1Char('B');  // B bank, C cash
    QString reference;
    // The documents it settles; none: spread over the client's open documents oldest first.
    QList<PickedDocument> picked;
};

struct RecordedPayment {
    qint64 id = 0;
    QList<Settlement> settlements;
    Money unused;  // kept as the client's credit, in the payment's currency
};

// Records the payment and its settlements in one transaction. A picked document changed by
// someone else since it was read is the conflict box and nothing is written.
Checked<RecordedPayment> recordPayment(QSqlDatabase db, const PaymentEntry &entry);

// Deletes the payment and gives back to each document what it settled.
std::optional<UserMessage> deletePayment(QSqlDatabase db, qint64 paymentId, qint64 version);

// Settles a credit note against its invoice: what is open of the invoice, up to the note's
// total. What the invoice no longer owes stays with the client as credit. Settling a note twice
// adds nothing.
Checked<Money> settleCreditNote(QSqlDatabase db, qint64 creditNoteId);

// Puts what the client's payments left unused against the client's open documents, oldest
// payments and oldest documents first, dated on (not before a document or a payment).
Checked<QList<Settlement>> spreadCredit(QSqlDatabase db, const QString &client, const QDate &on);

// The client's invoices and debit notes with something open, oldest first.
Checked<QList<OpenDocument>> openDocuments(QSqlDatabase db, const QString &client);

// What the client's payments left unused, in the currency given (each payment's rest converted).
Checked<Money> clientCredit(QSqlDatabase db, const QString &client, Currency currency);

// The latest payments, newest first: id, row_version, Data, Klient, Suma (cents), Valuta,
// Nachin, Referencia.
struct PaymentRow {
    qint64 id = 0;
    qint64 version = 0;
    QDate date;
    QString client;
    Money amount;
    Currency currency = Currency::Leva;
    QChar way;
    QString reference;
};
Checked<QList<PaymentRow>> latestPayments(QSqlDatabase db, int count);

// The names of clients: the register and the names on issued documents, sorted.
Checked<QStringList> clientNames(QSqlDatabase db);

// A payment's settlements: document number, amount and the document's currency code.
struct PaymentSettlement {
    qint64 documentId = 0;
    QString number;
    Currency currency = Currency::Leva;
    Money amount;
};
Checked<QList<PaymentSettlement>> paymentSettlements(QSqlDatabase db, qint64 paymentId);

// What one client owes on a date: the open amounts by age, less the credit (unused payments and
// credit notes), in the currency of that date.
struct ClientReceivable {
    QString client;
    std::array<Money, ageBucketCount> buckets{};
    Money credit;
    Money total;  // buckets − credit
    Money overdue() const { return buckets[1] + buckets[2] + buckets[3] + buckets[4]; }
};

struct Receivables {
    QDate on;
    Currency currency = Currency::Leva;
    bool converted = false;  // some amount was in the other currency
    QList<ClientReceivable> clients;  // by name
    ClientReceivable totals;
};

Checked<Receivables> receivablesOn(QSqlDatabase db, const QDate &on, const BooksDay &booksDay);

// For the main window: the open and the overdue total on a date and the five clients owing the
// most past their due dates.
struct ReceivablesSummary {
    Currency currency = Currency::Leva;
    Money open;
    Money overdue;
    QList<ClientReceivable> largestOverdue;
};
Checked<ReceivablesSummary> receivablesSummary(QSqlDatabase db, const QDate &on, const BooksDay &booksDay);

// A client's account over a period: every invoice, note and payment in date order.
struct AccountLine {
    QDate date;
    QChar kind;  // F, K, D, or P for a payment
    QString number;  // a document's number, a payment's reference
    QDate due;
    Currency currency = Currency::Leva;
    Money debit;   // what the client owes more (invoice, debit note), in its own currency
    Money credit;  // what the client owes less (credit note, payment)
    Money balance;  // running, in the account's currency
};

struct ClientAccount {
    QString client;
    QDate from;
    QDate to;
    Currency currency = Currency::Leva;
    bool converted = false;
    Money opening;
    QList<AccountLine> lines;
    Money closing;
};

Checked<ClientAccount> clientAccount(QSqlDatabase db, const QString &client, const QDate &from, const QDate &to,
                                     const BooksDay &booksDay);

}
