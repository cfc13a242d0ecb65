#pragma once

#include "core/currency.h"
#include "core/money.h"

#include <QDate>
#include <QList>
#include <QString>

// What a client owes: the rules of settling invoices with payments and credit notes, and of the
// age of what is still due. No database and no widgets here.
namespace zarek::receivables {

// An invoice or a debit note with what its settlements covered so far, in its own currency.
struct OpenDocument {
    qint64 id = 0;
    qint64 version = 0;  // row_version as read: a settlement raises it
    QString number;
    QChar kind = QLatin1Char('F');
    QDate issued;
    QDate due;
    Currency currency = Currency::Leva;
    Money total;
    Money settled;
    Money open() const { return total - settled; }
};

// Part of a payment (or of a credit note) put against one document, in that document's currency.
struct Settlement {
    qint64 documentId = 0;
    Money amount;
    bool operator==(const Settlement &) const = default;
};

// The order payments settle documents in: the oldest due date first, then the lower number.
void sortOldestFirst(QList<OpenDocument> &documents);

// What is left of a payment of amount in its currency after settlements that came to sameCurrency
// in its own currency and otherCurrency in the other one (converted as one sum); never below zero.
Money unusedAmount(Money amount, Currency currency, Money sameCurrency, Money otherCurrency);

// A payment of amount in currency spread over documents in the order given (each up to what is
// open of it, converted to the document's currency when it is in the other one); what is left
// over is the client's credit. Documents with nothing open are passed over.
QList<Settlement> spread(Money amount, Currency currency, const QList<OpenDocument> &documents);

// The age of what is due on a date: 0 not due yet (the due date itself included), 1 for 1–30
// days past the due date, 2 for 31–60, 3 for 61–90, 4 for over 90.
int ageBucket(const QDate &due, const QDate &on);
inline constexpr int ageBucketCount = 5;
// "Ненастъпил падеж", "1–30 дни", ...
QString ageBucketName(int bucket);

// "Фактура", "Кредитно известие", "Дебитно известие" by kind code, "Плащане" for 'P'.
QString entryKindName(QChar kind);

}
