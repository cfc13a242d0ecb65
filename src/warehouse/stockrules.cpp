#include "stockrules.h"

#include "core/formats.h"
#include "core/sharedroutines.h"

#include <cmath>

namespace zarek {

namespace {

const QString errorTitle = QStringLiteral("ГРЕШКА!");
const QString attentionTitle = QStringLiteral("ВНИМАНИЕ!");

UserMessage attention(const QString &text)
{
    return {attentionTitle, text, UserMessage::Icon::Exclamation};
}

// A number box: blank, not a number, or out of its range gives the two-line message.
std::optional<UserMessage> checkNumber(const QVariant &typed, const QString &caption, bool quantity)
{
    const QString text = typed.toString().trimmed();
    if (text.isEmpty())
        return UserMessage::twoLines(errorTitle, QStringLiteral("Няма въведено %1!").arg(caption),
                                     QStringLiteral("Моля, въведете %1.").arg(caption), UserMessage::Icon::Exclamation);
    const std::optional<double> number = parseNumber(text);
    if (!number)
        return UserMessage::twoLines(errorTitle, QStringLiteral("\"%1\" не е число!").arg(text),
                                     QStringLiteral("Моля, въведете %1 с цифри.").arg(caption),
                                     UserMessage::Icon::Exclamation);
    if (quantity)
        return checkQuantity(*number);
    return checkPrice(*number);
}

}

std::optional<UserMessage> checkQuantity(double quantity)
{
    if (!std::isfinite(quantity))
        return UserMessage::twoLines(errorTitle, QStringLiteral("Количеството не е число!"),
                                     QStringLiteral("Моля, въведете количество."), UserMessage::Icon::Exclamation);
    if (quantity > maxStockQuantity)
        return UserMessage::twoLines(errorTitle,
                                     QStringLiteral("Количеството е над %1!").arg(formatFixed(maxStockQuantity, 3)),
                                     QStringLiteral("Моля, въведете по-малко количество."), UserMessage::Icon::Exclamation);
    if (quantity <= 0)
        return UserMessage::twoLines(errorTitle, QStringLiteral("Количеството трябва да е по-голямо от нула!"),
                                     QStringLiteral("Моля, въведете количество."), UserMessage::Icon::Exclamation);
    if (!toQuantity(quantity))
        return UserMessage::twoLines(errorTitle, QStringLiteral("Количеството е с повече от три знака след запетаята!"),
                                     QStringLiteral("Моля, въведете до три знака след запетаята."),
                                     UserMessage::Icon::Exclamation);
    return std::nullopt;
}

std::optional<UserMessage> checkPrice(double price)
{
    if (!std::isfinite(price))
        return UserMessage::twoLines(errorTitle, QStringLiteral("Цената не е число!"), QStringLiteral("Моля, въведете цена."),
                                     UserMessage::Icon::Exclamation);
    if (price < 0)
        return UserMessage::twoLines(errorTitle, QStringLiteral("Цената не може да е отрицателна!"),
                                     QStringLiteral("Моля, въведете цена."), UserMessage::Icon::Exclamation);
    if (price > maxStockPrice)
        return UserMessage::twoLines(errorTitle, QStringLiteral("Цената е над %1!").arg(formatFixed(maxStockPrice, 2)),
                                     QStringLiteral("Моля, въведете по-малка цена."), UserMessage::Icon::Exclamation);
    return std::nullopt;
}

UserMessage repairIsNoReceiptMessage()
{
    return UserMessage::twoLines(errorTitle, QStringLiteral("\"Ремонт\" е разход без наличност!"),
                                 QStringLiteral("Въведете ремонта в \"Разход\"."), UserMessage::Icon::Exclamation);
}

QString repairName()
{
    return QStringLiteral("Ремонт");
}

bool isRepair(const QString &name)
{
    return name.trimmed() == repairName();
}

QString courseExpenseName()
{
    return QStringLiteral("Разходи за курс");
}

QString cutDocumentKind(const QString &text)
{
    return text.trimmed().left(documentKindLength);
}

std::optional<UserMessage> checkMovement(const QVariantMap &typed, const QString &vidKol)
{
    if (IsBlank(typed.value(QStringLiteral("DocVid")).toString()))
        return UserMessage{errorTitle, QStringLiteral("Въведете данни за вида на документа.")};
    const QString name = typed.value(QStringLiteral("Name")).toString();
    if (IsBlank(name))
        return UserMessage{errorTitle, QStringLiteral("Въведете име на артикула.")};
    // A repair has no stock: a receipt of it could never be issued and would stand in stock for ever.
    if (vidKol == StockMovement::receiptKind() && isRepair(name))
        return repairIsNoReceiptMessage();
    // A repair issue is one piece, whatever stands in the quantity box.
    const bool repair = vidKol == StockMovement::issueKind() && isRepair(name);
    if (!repair) {
        if (auto failure = checkNumber(typed.value(QStringLiteral("Kol")), QStringLiteral("количество"), true))
            return failure;
    }
    if (auto failure = checkNumber(typed.value(QStringLiteral("Edin")), QStringLiteral("единична цена"), false))
        return failure;
    // A movement without a date would stand outside every period and first in every issue.
    if (IsBlank(typed.value(QStringLiteral("Data")).toString()))
        return UserMessage::twoLines(errorTitle, QStringLiteral("Няма въведена дата!"),
                                     QStringLiteral("Моля, въведете датата на документа."),
                                     UserMessage::Icon::Exclamation);
    return std::nullopt;
}

bool samePrice(double a, double b)
{
    return std::fabs(a - b) <= 1e-9 * std::max(1.0, std::max(std::fabs(a), std::fabs(b)));
}

std::optional<UserMessage> checkStockIssue(const std::optional<StockOnHand> &onHand, double typedPrice,
                                           Quantity quantity)
{
    if (!onHand)
        return attention(QStringLiteral("В склада нямате артикул с това име!"));
    if (!samePrice(onHand->edin, typedPrice))
        return attention(QStringLiteral("В склада нямате артикул с такава цена!"));
    if (onHand->broi < quantity)
        return attention(QStringLiteral("В склада нямате такова количество!"));
    return std::nullopt;
}

UserMessage stockOutOfStepMessage(const QString &name)
{
    return UserMessage::twoLines(attentionTitle,
                                 QStringLiteral("Наличността на \"%1\" не отговаря на доставките му!").arg(name),
                                 QStringLiteral("Нищо не е изписано. Проверете доставките на артикула."),
                                 UserMessage::Icon::Exclamation);
}

UserMessage receiptDrawnOnMessage()
{
    return UserMessage::twoLines(attentionTitle, QStringLiteral("От тази доставка вече е изписвано!"),
                                 QStringLiteral("Количеството и цената й не могат да се променят."),
                                 UserMessage::Icon::Exclamation);
}

UserMessage receiptDrawnOnDeleteMessage()
{
    return UserMessage::twoLines(attentionTitle, QStringLiteral("От тази доставка вече е изписвано!"),
                                 QStringLiteral("Изтрийте първо разходите, изписани от нея."),
                                 UserMessage::Icon::Exclamation);
}

UserMessage receiptDrawnOnNotice()
{
    return UserMessage::twoLines(attentionTitle, QStringLiteral("От тази доставка вече е изписвано!"),
                                 QStringLiteral("Можете да поправите датата и номера на документа; количеството и "
                                                "цената остават."),
                                 UserMessage::Icon::Information);
}

}
