#include "waybillrules.h"

namespace zarek::waybills {

namespace {
const QString attention = QStringLiteral("   ВНИМАНИЕ!");

bool blank(const QString &text) { return text.trimmed().isEmpty(); }
}

UserMessage criticalBox(const QString &title, const QString &first, const QString &second)
{
    return {title, first + QStringLiteral("\n\n") + second, UserMessage::Icon::Critical};
}

UserMessage attentionBox(const QString &first, const QString &second)
{
    return criticalBox(attention, first, second);
}

std::optional<UserMessage> checkHeader(const HeaderTexts &texts)
{
    if (blank(texts.date))
        return attentionBox(QStringLiteral("Няма въведена дата на пътния лист!"),
                            QStringLiteral("Моля, въведете датата на пътния лист."));
    if (blank(texts.number))
        return noNumberMessage();
    if (blank(texts.kola))
        return noTruckMessage();
    if (blank(texts.driver))
        return attentionBox(QStringLiteral("Няма въведено име на шофьор!"),
                            QStringLiteral("Моля, въведете името на шофьора."));
    if (blank(texts.sumKm) && blank(texts.sumFuel))
        return attentionBox(QStringLiteral("Няма въведени маршрути към пътния лист!"),
                            QStringLiteral("Моля, въведете маршрутите за движение на колата."));
    return std::nullopt;
}

UserMessage noTruckMessage()
{
    return attentionBox(QStringLiteral("Няма въведен номер на кола в пътния лист!"),
                        QStringLiteral("Моля, въведете номера на колата."));
}

UserMessage noNumberMessage()
{
    return attentionBox(QStringLiteral("Няма въведен номер на пътния лист!"),
                        QStringLiteral("Моля, въведете номера на пътния лист."));
}

UserMessage duplicateNumberMessage()
{
    return criticalBox(QStringLiteral("   ГРЕШКА!"), QStringLiteral("Съществува пътен лист със същия номер!"),
                       QStringLiteral("Моля, променете номера и опитайте отново."));
}

UserMessage noNormMessage()
{
    return attentionBox(QStringLiteral("Колата няма въведена разходната норма!"),
                        QStringLiteral("Моля, въведете разходната норма на колата."));
}

UserMessage deleteQuestion()
{
    return attentionBox(QStringLiteral("Изтривате информацията за пътния лист!"),
                        QStringLiteral("Потвърдете изтриването на пътния лист!"));
}

QString headerSaveCaption()
{
    return QStringLiteral("ГРЕШКА при записа на пътния лист!");
}

}
