#include "invoicenumber.h"

#include "core/docnumber.h"
#include "core/sharedroutines.h"

#include <QRegularExpression>
#include <algorithm>
#include <set>

namespace zarek {

namespace {

UserMessage refusal(const QString &fault, const QString &request)
{
    return UserMessage::twoLines(QStringLiteral("Информация"), fault, request, UserMessage::Icon::Information);
}

}

UserMessage invoiceNumberUsedMessage()
{
    return refusal(QStringLiteral("Имате издадена фактура под този номер!"),
                   QStringLiteral("Моля, сменете номера и опитайте отново."));
}

Checked<QString> checkInvoiceNumber(const QString &typed, const QStringList &usedNumbers,
                                    const std::optional<QString> &onlyNumber)
{
    static const QRegularExpression digits(QStringLiteral("^[0-9]*$"));
    const QString trimmed = typed.trimmed();
    if (!digits.match(trimmed).hasMatch())
        return refusal(QStringLiteral("Номерът на фактурата трябва да е число!"),
                       QStringLiteral("Моля, въведете до 10 цифри и опитайте отново."));
    if (trimmed.size() > documentNumberLength)
        return refusal(QStringLiteral("Номерът на фактурата е по-дълъг от 10 цифри!"),
                       QStringLiteral("Моля, въведете до 10 цифри и опитайте отново."));
    const QString number = trimmed.rightJustified(documentNumberLength, QLatin1Char('0'));
    if (number == noDocumentNumber())
        return refusal(QStringLiteral("Няма въведен номер на фактура!"),
                       QStringLiteral("Моля, въведете номер и опитайте отново."));
    QStringList used;
    used.reserve(usedNumbers.size());
    for (const QString &n : usedNumbers)
        used.append(n.trimmed());
    if (FindInArray(number, used) == 0)
        return invoiceNumberUsedMessage();
    if (onlyNumber && number != *onlyNumber)
        return refusal(QStringLiteral("Следващият номер на фактура е %1!").arg(*onlyNumber),
                       QStringLiteral("Фактурите и известията се номерират подред, без пропуски: моля, приемете "
                                      "предложения номер."));
    return number;
}

QStringList offeredInvoiceNumbers(const QStringList &usedNumbers, int gaps)
{
    constexpr qint64 highestNumber = 9'999'999'999LL;
    std::set<qint64> used;
    for (const QString &text : usedNumbers) {
        const QString trimmed = text.trimmed();
        bool number = false;
        const qint64 value = trimmed.toLongLong(&number);
        if (number && trimmed.size() <= documentNumberLength && value > 0 && !trimmed.startsWith(QLatin1Char('-'))
            && !trimmed.startsWith(QLatin1Char('+')))
            used.insert(value);
    }
    const auto padded = [](qint64 value) {
        return QString::number(value).rightJustified(documentNumberLength, QLatin1Char('0'));
    };
    QStringList offered;
    if (used.empty())
        return {padded(1)};
    const qint64 highest = *used.rbegin();
    if (highest < highestNumber)
        offered.append(padded(highest + 1));
    // Down from the highest: each step passes a used number or finds a free one, so this ends
    // after at most gaps steps beyond the used numbers.
    const qint64 lowest = *used.begin();
    int found = 0;
    for (qint64 n = highest - 1; n > lowest && found < gaps; --n) {
        if (!used.count(n)) {
            offered.append(padded(n));
            ++found;
        }
    }
    return offered;
}

}
