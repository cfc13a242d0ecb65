#include "recordfield.h"

#include "core/dates.h"
#include "core/formats.h"

namespace zarek {

QString recordFieldText(const QVariant &value, RecordFieldKind kind)
{
    if (value.isNull())
        return {};
    switch (kind) {
    case RecordFieldKind::Number: {
        bool ok = false;
        const double number = value.toDouble(&ok);
        if (!ok)
            return value.toString();
        return QString::number(number, 'f', QLocale::FloatingPointShortest).replace(QLatin1Char('.'), QLatin1Char(','));
    }
    case RecordFieldKind::Date: {
        const QDate date = value.toDate();
        return date.isValid() ? formatDate(date) : value.toString();
    }
    case RecordFieldKind::Text: break;
    }
    return value.toString();
}

Checked<QVariant> recordFieldValue(const QString &text, RecordFieldKind kind, const QString &caption,
                                   const QString &title, QDate today)
{
    if (kind == RecordFieldKind::Text)
        return QVariant(text);
    const QString typed = text.trimmed();
    if (kind == RecordFieldKind::Number) {
        if (typed.isEmpty())
            return QVariant(QMetaType::fromType<double>());
        if (const auto number = parseNumber(typed))
            return QVariant(*number);
        return UserMessage::twoLines(title, QStringLiteral("\"%1\" не е число!").arg(typed),
                                     QStringLiteral("Моля, въведете число в поле \"%1\".").arg(caption),
                                     UserMessage::Icon::Exclamation);
    }
    if (typed.isEmpty())
        return QVariant(QMetaType::fromType<QDate>());
    if (const auto date = parseDate(typed, today))
        return QVariant(*date);
    return UserMessage::twoLines(title, QStringLiteral("\"%1\" не е дата!").arg(typed),
                                 QStringLiteral("Моля, въведете дата в поле \"%1\" (дд.мм.гггг).").arg(caption),
                                 UserMessage::Icon::Exclamation);
}

}
