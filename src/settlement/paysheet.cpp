#include "paysheet.h"

#include <cmath>
#include <optional>

namespace zarek {

ExactPay ExactPay::fromParts(qint64 cents, qint64 parts)
{
    ExactPay pay;
    // Floor division keeps the remainder between 0 and a cent whatever the signs.
    qint64 carry = parts / partsPerCent;
    qint64 rest = parts % partsPerCent;
    if (rest < 0) {
        rest += partsPerCent;
        --carry;
    }
    pay.m_cents = cents + carry;
    pay.m_parts = rest;
    return pay;
}

Money ExactPay::rounded() const
{
    qint64 cents = m_cents;
    const qint64 twice = 2 * m_parts;
    if (twice > partsPerCent || (twice == partsPerCent && cents % 2 != 0))
        ++cents;
    return Money::fromCents(cents);
}

double ExactPay::toDouble() const
{
    return (static_cast<double>(m_cents) + static_cast<double>(m_parts) / partsPerCent) / 100.0;
}

int overloadTonnes(double ton, double ratedTon)
{
    const qint64 over = std::llround(ton * 1000.0) - std::llround(ratedTon * 1000.0);
    return over > 0 ? static_cast<int>(over / 1000) : 0;
}

ExactPay coursePay(double bruto, double percent, double ton, double ratedTon)
{
    // bruto in cents × percent in ten-thousandths × (100 − 20 × overload) percent of the base:
    // cents × 10^-4 / 100 (the percent) / 100 (the reduction) = 10^-8 cents, one part.
    const qint64 cents = std::llround(bruto * 100.0);
    const qint64 percentParts = std::llround(percent * 10000.0);
    const qint64 kept = 100 - 20 * static_cast<qint64>(overloadTonnes(ton, ratedTon));
    return ExactPay::fromParts(0, cents * percentParts * kept);
}

bool PaySheet::mixed() const
{
    for (const PaySheetLine &line : lines) {
        if (line.currency != currency)
            return true;
    }
    return false;
}

Money PaySheet::printedTotal() const
{
    const Money other = otherTotal.rounded();
    const Money converted = currency == Currency::Euro ? wagesToEuro(other) : euroToLeva(other);
    return total.rounded() + converted;
}

UserMessage noPercentMessage(const QString &kola)
{
    return UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма зададен процент за кола № ") + kola
                                                       + QStringLiteral(" !")};
}

std::optional<UserMessage> pricePaySheet(PaySheet &sheet, const QList<PayTruck> &trucks, const BooksDay &books,
                                         std::optional<Currency> currency, const WorkProgress &progress)
{
    bool anyEuro = false;
    for (const PaySheetLine &line : std::as_const(sheet.lines))
        anyEuro = anyEuro || books.currencyOn(line.data) == Currency::Euro;
    sheet.currency = currency ? *currency : totalsCurrency(anyEuro, books.currencyOn(books.today));
    sheet.changeover = books.changeover;
    sheet.total = {};
    sheet.otherTotal = {};
    const int count = static_cast<int>(sheet.lines.size());
    // A driver's courses run mostly on one truck: its terms are looked up again only when it changes.
    PayTruck truck;
    std::optional<QString> truckOf;
    for (int row = 0; row < count; ++row) {
        if (progress && (row % 256 == 0 || row + 1 == count))
            progress(row + 1, count);
        PaySheetLine &line = sheet.lines[row];
        if (truckOf != line.kola) {
            truck = payTruckFor(trucks, line.kola);
            truckOf = line.kola;
        }
        if (truck.percent == 0.0)
            return noPercentMessage(line.kola);
        line.pay = coursePay(line.bruto, truck.percent, line.ton, truck.ratedTon);
        line.currency = books.currencyOn(line.data);
        (line.currency == sheet.currency ? sheet.total : sheet.otherTotal) += line.pay;
    }
    return std::nullopt;
}

PayTruck payTruckFor(const QList<PayTruck> &trucks, const QString &kola)
{
    PayTruck found;
    found.kola = kola.trimmed();
    for (const PayTruck &truck : trucks) {
        if (truck.kola == found.kola) {
            found.percent = truck.percent;
            found.ratedTon = truck.ratedTon;
        }
    }
    return found;
}

}
