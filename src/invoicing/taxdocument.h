#pragma once

#include "core/currency.h"
#include "core/money.h"
#include "core/usermessage.h"

#include <QDate>
#include <QList>
#include <QSqlDatabase>
#include <QString>

// An issued tax document as it was printed: an invoice, a credit note or a debit note. Once
// recorded it never changes; the register, the reprint and what a client owes read it as it is.
namespace zarek {

enum class TaxDocumentKind { Invoice, CreditNote, DebitNote };

// 'F', 'K', 'D' as stored; kindFromCode gives Invoice for any other text.
QChar kindCode(TaxDocumentKind kind);
TaxDocumentKind kindFromCode(const QString &code);
// "Фактура", "Кредитно известие", "Дебитно известие".
QString kindName(TaxDocumentKind kind);

// A party of the document as it stood on the day of issue.
struct TaxParty {
    QString name;
    QString eik;        // ЕИК / БУЛСТАТ
    QString vatNumber;  // ИН по ДДС; blank when not registered for VAT
    QString address;
    QString town;
    QString country;
    QString mol;
    bool operator==(const TaxParty &) const = default;
};

// A line as printed: a course's line names the course (courseId > 0).
struct TaxLine {
    int position = 0;
    qint64 courseId = 0;
    QDate courseDate;
    QString description;
    double quantity = 1;
    QString unit;
    double unitPrice = 0;
    Money amount;
    bool operator==(const TaxLine &) const = default;
};

struct TaxDocument {
    qint64 id = 0;
    QString number;  // ten digits
    TaxDocumentKind kind = TaxDocumentKind::Invoice;
    QDate issued;
    QDate taxEvent;
    // A note: the invoice it corrects, and why.
    qint64 invoiceId = 0;
    QString invoiceNumber;
    QDate invoiceDate;
    QString reason;

    TaxParty supplier;
    QString supplierIban;
    QString supplierBank;
    QString supplierBic;
    QString place;   // place of issue
    QString issuer;  // the person who drew it up

    qint64 clientId = 0;  // the register's row; 0 when the client was not in it
    TaxParty recipient;

    Currency currency = Currency::Leva;
    int vatPercent = 0;
    Money base;
    Money vat;
    Money total;
    QString zeroVatGround;  // the legal ground of a 0 % document
    QString paymentMethod;
    int termDays = 0;
    QDate due;

    QList<TaxLine> lines;
    bool operator==(const TaxDocument &) const = default;
};

// "BGN" / "EUR" as stored, and back (anything else is leva).
QString currencyCode(Currency currency);
Currency currencyFromCode(const QString &code);

// The document with its lines, as recorded.
Checked<TaxDocument> loadTaxDocument(QSqlDatabase db, qint64 id);

}
