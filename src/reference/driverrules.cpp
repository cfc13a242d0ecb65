#include "driverrules.h"

#include "core/sharedroutines.h"

namespace zarek {

std::optional<UserMessage> checkDriver(const QVariantMap &values)
{
    const auto text = [&values](const char *column) { return values.value(QString::fromLatin1(column)).toString(); };
    const struct {
        bool fails;
        const char *fault;
        const char *request;
    } checks[] = {
        {IsBlank(text("ime")), "Няма въведено име на шофьора!", "Моля, въведете до 50 символа за име на шофьора!"},
        {LenCheck(text("ime"), 50) == 1, "Въведеното име е по дълго от разрешеното!",
         "Моля, въведете до 50 символа за име на шофьора!"},
        {LenCheck(text("mob"), 12) == 1, "Въведения номер на GSM е по дълъг от разрешения!",
         "Моля, въведете до 12 символа за GSM на шофьора!"},
        {LenCheck(text("tel"), 10) == 1, "Въведения тел.номер е по дълъг от разрешения!",
         "Моля, въведете до 10 символа за тел.номер на шофьора!"},
        {LenCheck(text("adres"), 60) == 1, "Въведения адрес е по дълъг от разрешения!",
         "Моля, въведете до 60 символа за адрес на шофьора!"},
        {LenCheck(text("EGN"), 10) != 0, "Грешно ЕГН на шофьора!", "Моля, въведете 10 числа за ЕГН на шофьора!"},
        {LenCheck(text("kod"), 3) != 0, "Няма въведени данни за кода!", "Моля, въведете 3 символа за код на шофьора!"},
        {LenCheck(text("LKarta"), 9) != 0, "Няма въведен № на лична карта на шофьора!",
         "Моля, въведете 9 символа за № за лична карта на шофьора!"},
    };
    std::optional<UserMessage> kept;
    for (const auto &check : checks) {
        if (check.fails)
            kept = UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"), QString::fromUtf8(check.fault),
                                         QString::fromUtf8(check.request), UserMessage::Icon::Exclamation);
    }
    return kept;
}

}
