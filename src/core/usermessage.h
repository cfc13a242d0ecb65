#pragma once

#include <QString>
#include <optional>
#include <utility>
#include <variant>

namespace zarek {

// A message the user is to see, produced by rules and stores and shown by the screens.
struct UserMessage {
    enum class Icon { None, Information, Exclamation, Critical, Question };

    QString title;
    QString text;
    Icon icon = Icon::None;

    // The system's validation messages are two lines: the fault, then the request.
    static UserMessage twoLines(const QString &title, const QString &fault, const QString &request,
                                Icon icon = Icon::None)
    {
        return {title, fault + QLatin1Char('\n') + request, icon};
    }
    // Error boxes read "number:description".
    static UserMessage error(const QString &title, const QString &code, const QString &description)
    {
        return {title, code + QLatin1Char(':') + description, Icon::Critical};
    }
    bool operator==(const UserMessage &) const = default;
};

// A value, or the message that says why there is none.
template <typename T>
class Checked {
public:
    Checked(T value) : m_state(std::move(value)) {}
    Checked(UserMessage message) : m_state(std::move(message)) {}

    bool ok() const { return std::holds_alternative<T>(m_state); }
    explicit operator bool() const { return ok(); }
    const T &value() const { return std::get<T>(m_state); }
    const T &operator*() const { return value(); }
    const UserMessage &message() const { return std::get<UserMessage>(m_state); }

private:
    std::variant<T, UserMessage> m_state;
};

}
