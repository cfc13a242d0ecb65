#pragma once

#include "core/usermessage.h"

#include <QString>
#include <QStringList>
#include <optional>

// The number of a new invoice: the user takes the free number offered or types another; it becomes
// ten characters padded with zeros and must not be in use.
namespace zarek {

// The typed text, trimmed and padded to ten digits ("125" -> "0000000125"), or the message that
// refuses it: a number already used (also when typed without its zeros), a text that is no
// number or longer than ten digits, and no number at all ("0000000000" means "no invoice").
// usedNumbers holds the numbers of tabl as stored.
// With onlyNumber (the sequence's next number, once tax documents are issued) any other number is
// refused too: invoices and notes then run without a gap.
Checked<QString> checkInvoiceNumber(const QString &typed, const QStringList &usedNumbers,
                                    const std::optional<QString> &onlyNumber = std::nullopt);

// The numbers offered for a new invoice, each ten characters: first the one after the highest
// used, then the free numbers below it and above the lowest used (numbers of invoices emptied or
// skipped), the latest first, at most gaps of them. "0000000001" when none is used. Used texts
// that are no number are passed over.
QStringList offeredInvoiceNumbers(const QStringList &usedNumbers, int gaps = 20);

// "Имате издадена фактура под този номер!" with its request.
UserMessage invoiceNumberUsedMessage();

}
