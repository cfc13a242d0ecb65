#include "eik.h"

#include <QRegularExpression>
#include <QStringList>
#include <array>

namespace zarek {

namespace {

const QString title = QStringLiteral("ВНИМАНИЕ!");

bool allDigits(const QString &text)
{
    for (const QChar c : text) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return false;
    }
    return !text.isEmpty();
}

int digitAt(const QString &text, int index)
{
    return text.at(index).unicode() - '0';
}

// The weighted sum of the digits from first on, modulo 11; a remainder of 10 takes the second
// weights, and 10 again gives 0 (the register's rule for both lengths).
template <size_t N>
int controlDigit(const QString &digits, int first, const std::array<int, N> &weights, const std::array<int, N> &again)
{
    int sum = 0;
    for (size_t i = 0; i < N; ++i)
        sum += digitAt(digits, first + static_cast<int>(i)) * weights[i];
    int remainder = sum % 11;
    if (remainder != 10)
        return remainder;
    sum = 0;
    for (size_t i = 0; i < N; ++i)
        sum += digitAt(digits, first + static_cast<int>(i)) * again[i];
    remainder = sum % 11;
    return remainder == 10 ? 0 : remainder;
}

// The EU states' prefixes of VAT numbers (Greece is EL, Northern Ireland XI).
const QStringList &euPrefixes()
{
    static const QStringList prefixes = {
        QStringLiteral("AT"), QStringLiteral("BE"), QStringLiteral("BG"), QStringLiteral("CY"), QStringLiteral("CZ"),
        QStringLiteral("DE"), QStringLiteral("DK"), QStringLiteral("EE"), QStringLiteral("EL"), QStringLiteral("ES"),
        QStringLiteral("FI"), QStringLiteral("FR"), QStringLiteral("HR"), QStringLiteral("HU"), QStringLiteral("IE"),
        QStringLiteral("IT"), QStringLiteral("LT"), QStringLiteral("LU"), QStringLiteral("LV"), QStringLiteral("MT"),
        QStringLiteral("NL"), QStringLiteral("PL"), QStringLiteral("PT"), QStringLiteral("RO"), QStringLiteral("SE"),
        QStringLiteral("SI"), QStringLiteral("SK"), QStringLiteral("XI")};
    return prefixes;
}

UserMessage vatShapeMessage(const QString &vat)
{
    return UserMessage::twoLines(title, QStringLiteral("ИН по ДДС „%1“ е невалиден!").arg(vat),
                                 QStringLiteral("ИН по ДДС е кодът на държавата и номерът, напр. BG123456789."),
                                 UserMessage::Icon::Exclamation);
}

}

QString compactIdentifier(const QString &typed)
{
    QString compact;
    for (const QChar c : typed) {
        if (!c.isSpace())
            compact.append(c.toUpper());
    }
    return compact;
}

int eikNinthDigit(const QString &digits)
{
    if (digits.size() < 8 || !allDigits(digits.left(8)))
        return -1;
    return controlDigit<8>(digits, 0, {1, 2, 3, 4, 5, 6, 7, 8}, {3, 4, 5, 6, 7, 8, 9, 10});
}

int eikThirteenthDigit(const QString &digits)
{
    if (digits.size() < 12 || !allDigits(digits.left(12)))
        return -1;
    return controlDigit<4>(digits, 8, {2, 7, 3, 5}, {4, 9, 5, 7});
}

bool isValidEik(const QString &typed)
{
    const QString eik = compactIdentifier(typed);
    if (!allDigits(eik) || (eik.size() != 9 && eik.size() != 13))
        return false;
    if (eikNinthDigit(eik) != digitAt(eik, 8))
        return false;
    return eik.size() == 9 || eikThirteenthDigit(eik) == digitAt(eik, 12);
}

bool isValidEgn(const QString &typed)
{
    const QString egn = compactIdentifier(typed);
    if (egn.size() != 10 || !allDigits(egn))
        return false;
    static const std::array<int, 9> weights = {2, 4, 8, 5, 10, 9, 7, 3, 6};
    int sum = 0;
    for (int i = 0; i < 9; ++i)
        sum += digitAt(egn, i) * weights[static_cast<size_t>(i)];
    const int remainder = sum % 11;
    return (remainder == 10 ? 0 : remainder) == digitAt(egn, 9);
}

std::optional<UserMessage> checkEik(const QString &typed)
{
    const QString eik = compactIdentifier(typed);
    if (!allDigits(eik) || (eik.size() != 9 && eik.size() != 13))
        return UserMessage::twoLines(title, QStringLiteral("ЕИК/БУЛСТАТ „%1“ не е от 9 или 13 цифри!").arg(eik),
                                     QStringLiteral("Моля, въведете ЕИК/БУЛСТАТ от 9 или 13 цифри."),
                                     UserMessage::Icon::Exclamation);
    if (!isValidEik(eik))
        return UserMessage::twoLines(title, QStringLiteral("Контролната цифра на ЕИК/БУЛСТАТ %1 не е вярна!").arg(eik),
                                     QStringLiteral("Моля, проверете ЕИК/БУЛСТАТ."), UserMessage::Icon::Exclamation);
    return std::nullopt;
}

std::optional<UserMessage> checkVatNumber(const QString &typed, const QString &eik)
{
    const QString vat = compactIdentifier(typed);
    const QString prefix = vat.left(2);
    const QString number = vat.mid(2);
    if (!euPrefixes().contains(prefix))
        return vatShapeMessage(vat);
    if (prefix != QLatin1String("BG")) {
        static const QRegularExpression shape(QStringLiteral("^[0-9A-Z+*]{2,12}$"));
        static const QRegularExpression digit(QStringLiteral("[0-9]"));
        if (!shape.match(number).hasMatch() || !digit.match(number).hasMatch())
            return vatShapeMessage(vat);
        return std::nullopt;
    }
    const bool firm = number.size() == 9 && isValidEik(number);
    const bool person = number.size() == 10 && isValidEgn(number);
    if (!firm && !person)
        return UserMessage::twoLines(title, QStringLiteral("ИН по ДДС %1 е невалиден!").arg(vat),
                                     QStringLiteral("Българският ИН по ДДС е BG и ЕИК от 9 цифри (на лице – ЕГН)."),
                                     UserMessage::Icon::Exclamation);
    const QString firmEik = compactIdentifier(eik);
    if (firm && !firmEik.isEmpty() && firmEik.left(9) != number)
        return UserMessage::twoLines(title, QStringLiteral("ИН по ДДС %1 не отговаря на ЕИК %2!").arg(vat, firmEik),
                                     QStringLiteral("ИН по ДДС на българска фирма е BG и нейния ЕИК."),
                                     UserMessage::Icon::Exclamation);
    return std::nullopt;
}

bool isValidIban(const QString &typed)
{
    const QString iban = compactIdentifier(typed);
    static const QRegularExpression shape(QStringLiteral("^[A-Z]{2}[0-9]{2}[0-9A-Z]{11,30}$"));
    if (!shape.match(iban).hasMatch())
        return false;
    if (iban.startsWith(QLatin1String("BG")) && iban.size() != 22)
        return false;
    // The first four characters go to the end, letters become 10 to 35; the number modulo 97 is 1.
    const QString moved = iban.mid(4) + iban.left(4);
    int remainder = 0;
    for (const QChar c : moved) {
        const int value = c.isDigit() ? c.unicode() - '0' : c.unicode() - 'A' + 10;
        remainder = (remainder * (value < 10 ? 10 : 100) + value) % 97;
    }
    return remainder == 1;
}

std::optional<UserMessage> checkIban(const QString &typed)
{
    if (isValidIban(typed))
        return std::nullopt;
    return UserMessage::twoLines(title, QStringLiteral("IBAN %1 е невалиден!").arg(compactIdentifier(typed)),
                                 QStringLiteral("Моля, проверете номера на сметката и контролните му цифри."),
                                 UserMessage::Icon::Exclamation);
}

}
