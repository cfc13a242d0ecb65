#pragma once

#include "core/usermessage.h"

#include <QString>
#include <QStringList>
#include <optional>

// What a typed text may hold. No one types a control character (NUL, the other C0 characters
// with tab and line breaks, DEL, the C1 range); they come in by paste and break the stored text:
// SQLite keeps "AB\0CD" whole while PostgreSQL refuses it, so both engines are spared them alike.
namespace zarek {

bool hasControlCharacter(const QString &text);

// "Текстът съдържа непозволен знак!" / "Моля, изтрийте управляващите знаци от текста!"
UserMessage controlCharacterMessage(const QString &title);

// The message when any of the texts holds a control character.
std::optional<UserMessage> checkTypedTexts(const QStringList &texts, const QString &title);

}
