#include "birthdate.h"

#include <QDate>

namespace zarek {

namespace {

UserMessage wrongEgn()
{
    return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Грешно ЕГН на шофьора!"),
                                 QStringLiteral("Датата на раждане остава празна. Моля, поправете ЕГН в "
                                                "\"Шофьори\"!"),
                                 UserMessage::Icon::Exclamation);
}

}

Checked<QString> birthDateFromEgn(const QString &egn)
{
    const QString digits = egn.trimmed();
    if (digits.size() < 6)
        return wrongEgn();
    for (const QChar c : digits) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return wrongEgn();
    }
    const QString year = digits.mid(0, 2);
    const QString month = digits.mid(2, 2);
    const QString day = digits.mid(4, 2);
    const int monthNumber = month.toInt();
    const bool thisCentury = monthNumber >= 41;
    const int realMonth = thisCentury ? monthNumber - 40 : monthNumber;
    if (!QDate((thisCentury ? 2000 : 1900) + year.toInt(), realMonth, day.toInt()).isValid())
        return wrongEgn();
    if (thisCentury)
        return day + QLatin1Char('.') + QString::number(realMonth) + QStringLiteral(".20") + year;
    return day + QLatin1Char('.') + month + QStringLiteral(".19") + year;
}

}
