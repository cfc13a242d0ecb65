// libFuzzer target: the number, date, document-number and database-address parsers, and what a
// parsed number becomes (money, a course's price), must never crash, overflow or misbehave.
#include "core/currency.h"
#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "core/money.h"
#include "core/sharedroutines.h"
#include "core/textcheck.h"
#include "core/valueformat.h"
#include "courses/coursecheck.h"
#include "courses/coursepricing.h"
#include "data/databaseconfig.h"

#include <QString>

#include <cstddef>
#include <cstdint>

using namespace zarek;

namespace {

void number(const QString &text)
{
    const auto value = parseNumber(text);
    const double leading = leadingNumber(text);
    for (const double amount : {value.value_or(0.0), leading}) {
        const Money money = Money::fromAmount(amount);
        if (money.isValid() && (money.cents() > Money::maxCents || money.cents() < -Money::maxCents))
            __builtin_trap();
        (void)money.share(3, 100);
        (void)(money + money - money);
        (void)formatAmount(money);
        (void)formatFixed(amount, 3);
        // Converted between the currencies, an amount stays in range and keeps its sign.
        const Money euro = levaToEuro(money);
        if (money.isValid() && (!euro.isValid() || (money.cents() > 0 && euro.cents() < 0)))
            __builtin_trap();
        if (money.isValid() && wagesToEuro(money) < euro)  // pay rounds up, never below the half-up amount
            __builtin_trap();
        (void)euroToLeva(euro);
        (void)formatRate(convertRate(amount, Currency::Leva, Currency::Euro));
        (void)convertPrice(amount, Currency::Euro, Currency::Leva);
    }
    // Any text as a number format of a report or grid.
    (void)formatReportValue(QVariant(1234.5678), text);
    if (value) {
        const CourseMoney price = priceCourse(*value, *value, *value);
        if (price.bruto.isValid() != price.neto.isValid())
            __builtin_trap();
        (void)checkCourseNumbers(*value, *value, *value);
    }
}

void date(const QString &text)
{
    const QDate today(2026, 11, 22);
    if (const auto parsed = parseDate(text, today); parsed && !parsed->isValid())
        __builtin_trap();
    (void)BadMonth(text);
    (void)LenCheck(text, 10);
    (void)checkPeriodTexts(text, text.left(text.size() / 2), today);
}

void documentNumber(const QString &text)
{
    const Checked<QString> padded = padDocumentNumber(text);
    if (padded && padded.value().size() != documentNumberLength)
        __builtin_trap();
}

void databaseAddress(const QString &text)
{
    if (const auto config = DatabaseConfig::fromText(text))
        (void)config->describe();
    const QString shown = DatabaseConfig::redacted(text);
    (void)hasControlCharacter(shown);
}

}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString utf8 = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    const QString utf16 = QString::fromUtf16(reinterpret_cast<const char16_t *>(data), static_cast<qsizetype>(size / 2));
    for (const QString &text : {utf8, utf16}) {
        number(text);
        date(text);
        documentNumber(text);
        databaseAddress(text);
    }
    return 0;
}
