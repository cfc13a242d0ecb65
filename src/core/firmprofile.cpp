#include "firmprofile.h"

#include "core/version.h"

namespace zarek {

UserMessage requiredFirmFieldMessage(int position)
{
    static const char *const lines[][2] = {
        {"Името на фирмата не е въведено!", "Моля, въведете името на фирмата!"},
        {"Адреса на фирмата не е въведен!", "Моля, въведете адреса на фирмата!"},
        {"Населеното място на фирмата не е въведено", "Моля, въведете населеното място на фирмата!"},
        {"Телефона на фирмата не е въведен!", "Моля, въведете телефона на фирмата!"},
        {"Номера на факса на фирмата не е въведен!", "Моля, въведете номера на факса на фирмата!"},
    };
    return UserMessage::twoLines(QStringLiteral("   ВНИМАНИЕ!"), QString::fromUtf8(lines[position][0]),
                                 QString::fromUtf8(lines[position][1]), UserMessage::Icon::Critical);
}

std::optional<UserMessage> checkRequiredFirmFields(const FirmProfile &firm)
{
    const QString *required[] = {&firm.UserName, &firm.UserAdres, &firm.UserCity, &firm.UserTel, &firm.UserGSM};
    for (int i = 0; i < 5; ++i) {
        if (required[i]->trimmed().isEmpty())
            return requiredFirmFieldMessage(i);
    }
    return std::nullopt;
}

QString mainWindowTitle(const FirmProfile &profile)
{
    return QStringLiteral("Зарек ") + version::text() + QStringLiteral(" - ") + profile.UserName;
}

}
