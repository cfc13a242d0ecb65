#pragma once

#include "core/usermessage.h"

#include <QString>
#include <optional>

namespace zarek {

// The identifiers an invoice carries: the ЕИК/БУЛСТАТ of a Bulgarian firm, the VAT number, the
// bank account. Each check takes the text as typed (spaces and case do not matter) and tells what
// is wrong, or nothing when the text is right. A blank text is not checked here: whether one is
// needed is the caller's rule.

// The text without spaces, in capitals: how an identifier is kept.
QString compactIdentifier(const QString &typed);

// The control digit of a 9-digit ЕИК from its first eight digits, and the 13th digit of a
// 13-digit one from its 9th to 12th; -1 when the digits are not there.
int eikNinthDigit(const QString &digits);
int eikThirteenthDigit(const QString &digits);
// 9 or 13 digits whose control digits are right (a 13-digit one starts with a valid 9-digit one).
bool isValidEik(const QString &typed);
// The ЕГН of a person (10 digits, a VAT number of a registered person): its control digit.
bool isValidEgn(const QString &typed);

// The ЕИК/БУЛСТАТ: 9 or 13 digits with their control digits.
std::optional<UserMessage> checkEik(const QString &typed);
// The VAT number: "BG" and the 9 digits of the firm's ЕИК (the first nine of a 13-digit one; a
// person's 10-digit ЕГН); another EU state's prefix with 2 to 12 letters and digits, checked for
// its shape only. eik is the client's ЕИК, blank when none is known.
std::optional<UserMessage> checkVatNumber(const QString &typed, const QString &eik);
// The account: an IBAN whose mod-97 check digits are right (BG: 22 characters).
bool isValidIban(const QString &typed);
std::optional<UserMessage> checkIban(const QString &typed);

}
