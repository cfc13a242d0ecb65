#include "amountwords.h"

#include <QStringList>

namespace zarek {

namespace {

const char *const teens[] = {"десет", "единадесет", "дванадесет", "тринадесет", "четиринадесет",
                             "петнадесет", "шестнадесет", "седемнадесет", "осемнадесет", "деветнадесет"};
const char *const tens[] = {"", "", "двадесет", "тридесет", "четиридесет",
                            "петдесет", "шестдесет", "седемдесет", "осемдесет", "деветдесет"};
const char *const hundreds[] = {"", "сто", "двеста", "триста", "четиристотин",
                                "петстотин", "шестстотин", "седемстотин", "осемстотин", "деветстотин"};
const char *const units[] = {"", "", "", "три", "четири", "пет", "шест", "седем", "осем", "девет"};

QString unitWord(int digit, WordGender gender)
{
    if (digit == 1)
        return gender == WordGender::Masculine ? QStringLiteral("един")
               : gender == WordGender::Feminine ? QStringLiteral("една")
                                                : QStringLiteral("едно");
    if (digit == 2)
        return gender == WordGender::Masculine ? QStringLiteral("два") : QStringLiteral("две");
    return QString::fromUtf8(units[digit]);
}

// The words of a group of three digits (1..999), without "и".
QStringList groupWords(int group, WordGender gender)
{
    QStringList words;
    if (group / 100 > 0)
        words.append(QString::fromUtf8(hundreds[group / 100]));
    const int rest = group % 100;
    if (rest >= 10 && rest < 20) {
        words.append(QString::fromUtf8(teens[rest - 10]));
    } else {
        if (rest >= 20)
            words.append(QString::fromUtf8(tens[rest / 10]));
        if (rest % 10 > 0)
            words.append(unitWord(rest % 10, gender));
    }
    return words;
}

// "и" before the group's last word when it has more than one.
QString joinGroup(QStringList words)
{
    if (words.size() > 1)
        words.insert(words.size() - 1, QStringLiteral("и"));
    return words.join(QLatin1Char(' '));
}

struct Scale {
    qint64 size;
    const char *one;    // "хиляда", "един милион"
    const char *many;   // after a number: "хиляди", "милиона"
    WordGender gender;  // of the number before it
};

const Scale scales[] = {
    {1000000000000LL, "един трилион", "трилиона", WordGender::Masculine},
    {1000000000LL, "един милиард", "милиарда", WordGender::Masculine},
    {1000000LL, "един милион", "милиона", WordGender::Masculine},
    {1000LL, "хиляда", "хиляди", WordGender::Feminine},
};

}

QString numberInWords(qint64 number, WordGender gender)
{
    if (number < 0)
        return QStringLiteral("минус ") + numberInWords(-number, gender);
    if (number == 0)
        return QStringLiteral("нула");
    // Each group's phrase, and whether it is a single number word (it then takes "и" when last).
    QStringList phrases;
    bool lastIsOneWord = false;
    qint64 rest = number;
    for (const Scale &scale : scales) {
        const int group = static_cast<int>(rest / scale.size);
        rest %= scale.size;
        if (group == 0)
            continue;
        if (group >= 1000) {  // beyond the largest scale: the groups above it in words of their own
            phrases.append(numberInWords(group, scale.gender) + QLatin1Char(' ') + QString::fromUtf8(scale.many));
            lastIsOneWord = false;
            continue;
        }
        const QStringList words = groupWords(group, scale.gender);
        if (group == 1)
            phrases.append(QString::fromUtf8(scale.one));
        else
            phrases.append(joinGroup(words) + QLatin1Char(' ') + QString::fromUtf8(scale.many));
        lastIsOneWord = group == 1 || words.size() == 1;
    }
    if (rest > 0) {
        const QStringList words = groupWords(static_cast<int>(rest), gender);
        phrases.append(joinGroup(words));
        lastIsOneWord = words.size() == 1;
    }
    if (phrases.size() > 1 && lastIsOneWord)
        phrases.insert(phrases.size() - 1, QStringLiteral("и"));
    return phrases.join(QLatin1Char(' '));
}

QString amountInWords(Money amount, Currency currency)
{
    if (!amount.isValid())
        return {};
    const bool negative = amount.cents() < 0;
    const qint64 cents = negative ? -amount.cents() : amount.cents();
    const qint64 whole = cents / 100;
    const int fraction = static_cast<int>(cents % 100);

    const bool euro = currency == Currency::Euro;
    QString text = numberInWords(whole, euro ? WordGender::Neuter : WordGender::Masculine) + QLatin1Char(' ');
    if (euro)
        text += QStringLiteral("евро");
    else
        text += whole == 1 ? QStringLiteral("лев") : QStringLiteral("лева");
    if (fraction > 0) {
        text += QStringLiteral(" и ")
                + numberInWords(fraction, euro ? WordGender::Masculine : WordGender::Feminine) + QLatin1Char(' ');
        if (euro)
            text += fraction == 1 ? QStringLiteral("евроцент") : QStringLiteral("евроцента");
        else
            text += fraction == 1 ? QStringLiteral("стотинка") : QStringLiteral("стотинки");
    }
    return negative ? QStringLiteral("минус ") + text : text;
}

}
