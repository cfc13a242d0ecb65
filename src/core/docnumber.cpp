#include "docnumber.h"

namespace zarek {

QString noDocumentNumber()
{
    return QString(documentNumberLength, QLatin1Char('0'));
}

Checked<QString> padDocumentNumber(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.size() > documentNumberLength)
        return UserMessage::twoLines(QStringLiteral("ГРЕШКА при въвеждане!"),
                                     QStringLiteral("Номера на документа е по-дълъг от разрешения!"),
                                     QStringLiteral("Моля, въведете до 10 символа за номер на документа!"),
                                     UserMessage::Icon::Exclamation);
    return trimmed.rightJustified(documentNumberLength, QLatin1Char('0'));
}

}
