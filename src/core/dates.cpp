#include "dates.h"

#include <QRegularExpression>

namespace zarek {

namespace {

int fullYear(const QString &digits, QDate today)
{
    if (digits.isEmpty())
        return (today.isValid() ? today : QDate::currentDate()).year();
    const int year = digits.toInt();
    return digits.size() <= 2 ? 2000 + year : year;
}

// A date of a four-digit year written digit by digit: Qt's own formatting parses its pattern
// or prints through printf for every date, which a list of thousands of rows feels.
QString writtenDate(const QDate &date, bool dayFirst)
{
    int year = 0, month = 0, day = 0;
    date.getDate(&year, &month, &day);
    QString text(10, Qt::Uninitialized);
    QChar *at = text.data();
    const auto put = [&at](int value, int digits) {
        for (int i = digits - 1; i >= 0; --i, value /= 10)
            at[i] = QChar(u'0' + value % 10);
        at += digits;
    };
    const QChar separator = dayFirst ? QLatin1Char('.') : QLatin1Char('-');
    put(dayFirst ? day : year, dayFirst ? 2 : 4);
    *at++ = separator;
    put(month, 2);
    *at++ = separator;
    put(dayFirst ? year : day, dayFirst ? 4 : 2);
    return text;
}

bool hasFourDigitYear(const QDate &date)
{
    return date.isValid() && date.year() >= 1 && date.year() <= 9999;
}

}

std::optional<QDate> parseDate(const QString &text, QDate today)
{
    static const QRegularExpression separated(
        QStringLiteral("^(\\d{1,2})[./-](\\d{1,2})(?:[./-](\\d{2}|\\d{4}))?[./-]?(?:\\s*г\\.?)?$"));
    static const QRegularExpression compact(QStringLiteral("^(\\d{2})(\\d{2})(\\d{2}|\\d{4})$"));

    const QString trimmed = text.trimmed();
    QRegularExpressionMatch match = separated.match(trimmed);
    if (!match.hasMatch())
        match = compact.match(trimmed);
    if (!match.hasMatch())
        return std::nullopt;

    const QDate date(fullYear(match.captured(3), today), match.captured(2).toInt(), match.captured(1).toInt());
    if (!date.isValid())
        return std::nullopt;
    return date;
}

QString formatDate(const QDate &date)
{
    return hasFourDigitYear(date) ? writtenDate(date, true) : date.toString(QStringLiteral("dd.MM.yyyy"));
}

QString isoDateText(const QDate &date)
{
    return hasFourDigitYear(date) ? writtenDate(date, false) : date.toString(Qt::ISODate);
}

std::optional<UserMessage> checkPeriodTexts(const QString &fromText, const QString &toText, QDate today)
{
    const QString title = QStringLiteral("ВНИМАНИЕ!");
    if (fromText.trimmed().isEmpty() || toText.trimmed().isEmpty())
        return UserMessage::twoLines(title, QStringLiteral("Няма избран период за търсене!"),
                                     QStringLiteral("Проверете си датите!"), UserMessage::Icon::Exclamation);
    const auto from = parseDate(fromText, today);
    const auto to = parseDate(toText, today);
    if (!from || !to)
        return UserMessage::twoLines(title, QStringLiteral("Неверен формат на датата!"),
                                     QStringLiteral("Проверете си датите!"), UserMessage::Icon::Exclamation);
    if (!Period{*from, *to}.isValid())
        return UserMessage{title,
                           QStringLiteral("Грешно зададен период!\n(начална дата е след крайната дата)\n"
                                          "Проверете си датите!"),
                           UserMessage::Icon::Exclamation};
    return std::nullopt;
}

}
