#include "textcheck.h"

namespace zarek {

bool hasControlCharacter(const QString &text)
{
    for (const QChar c : text) {
        if (c.category() == QChar::Other_Control)
            return true;
    }
    return false;
}

UserMessage controlCharacterMessage(const QString &title)
{
    return UserMessage::twoLines(title, QStringLiteral("Текстът съдържа непозволен знак!"),
                                 QStringLiteral("Моля, изтрийте управляващите знаци от текста!"),
                                 UserMessage::Icon::Exclamation);
}

std::optional<UserMessage> checkTypedTexts(const QStringList &texts, const QString &title)
{
    for (const QString &text : texts) {
        if (hasControlCharacter(text))
            return controlCharacterMessage(title);
    }
    return std::nullopt;
}

}
