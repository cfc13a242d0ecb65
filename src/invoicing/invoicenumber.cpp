#include "invoicenumber.h"

#include "core/docnumber.h"
#include "core/sharedroutines.h"

#include <QRegularExpression>

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

Checked<QString> checkInvoiceNumber(const QString &typed, const QStringList &usedNumbers)
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
    return number;
}

}
