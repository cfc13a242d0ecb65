#include "attestation.h"

#include <QRegularExpression>

namespace zarek {

QList<AttestationReason> attestationReasons(AttestationForm form)
{
    if (form == AttestationForm::Decision2007)
        return {AttestationReason::SickLeave, AttestationReason::AnnualLeave, AttestationReason::ExemptVehicle};
    return {AttestationReason::SickLeave,     AttestationReason::AnnualLeave, AttestationReason::LeaveOrRest,
            AttestationReason::ExemptVehicle, AttestationReason::OtherWork,   AttestationReason::Available};
}

QString attestationPeriodText(const QString &hour, const QString &typed)
{
    return hour + QStringLiteral(" на ") + typed + QStringLiteral(" г.");
}

std::optional<QString> attestationHour(const QString &typed)
{
    static const QRegularExpression hourPattern(QStringLiteral("^(\\d{1,2})(?:[:.](\\d{2}))?$"));
    const QRegularExpressionMatch match = hourPattern.match(typed.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    const int hours = match.captured(1).toInt();
    const int minutes = match.captured(2).isEmpty() ? 0 : match.captured(2).toInt();
    if (minutes > 59 || hours > 24 || (hours == 24 && minutes > 0))
        return std::nullopt;
    return QStringLiteral("%1:%2").arg(hours, 2, 10, QLatin1Char('0')).arg(minutes, 2, 10, QLatin1Char('0'));
}

std::optional<UserMessage> attestationRefusal(const AttestationSheet &sheet)
{
    const auto attention = [](const QString &fault, const QString &request) {
        return UserMessage{QStringLiteral("ВНИМАНИЕ!"), fault + QLatin1Char('\n') + request,
                           UserMessage::Icon::Exclamation};
    };
    if (sheet.reason == AttestationReason::None || !attestationReasons(sheet.form).contains(sheet.reason))
        return attention(QStringLiteral("Не е отбелязана причина за удостоверението!"),
                         QStringLiteral("Моля, отбележете една от клетките."));
    if (sheet.form == AttestationForm::Decision2009 && sheet.startedOn.trimmed().isEmpty())
        return attention(QStringLiteral("Няма въведена дата на започване на работа (точка 11)!"),
                         QStringLiteral("Моля, въведете от кога водачът работи във фирмата."));
    if (sheet.form == AttestationForm::Decision2007 && sheet.periodFrom.trimmed().isEmpty())
        return attention(QStringLiteral("Няма въведено начало на периода (точка 11)!"),
                         QStringLiteral("Моля, въведете от кога започва периодът."));
    if (!attestationHour(sheet.hourFrom) || !attestationHour(sheet.hourTo))
        return attention(QStringLiteral("Грешен час на периода!"),
                         QStringLiteral("Моля, въведете часа като ЧЧ:ММ, от 00:00 до 24:00."));
    return std::nullopt;
}

const QHash<QString, QString> &attestationScreenTexts(AttestationForm form)
{
    static const QHash<QString, QString> form2007 = {
        {QStringLiteral("lblTitle"), QStringLiteral("УДОСТОВЕРЕНИЕ")},
        {QStringLiteral("lblSubtitle"),
         QStringLiteral("ЗА ДЕЙНОСТИ, ПОПАДАЩИ В ОБХВАТА НА РЕГЛАМЕНТ (ЕО) №561/2006 ИЛИ НА ЕВРОПЕЙСКОТО СПОРАЗУМЕНИЕ ЗА "
                        "РАБОТА НА ЕКИПАЖИТЕ НА ПРЕВОЗНИТЕ СРЕДСТВА, ИЗВЪРШВАЩИ МЕЖДУНАРОДНИ АВТОМОБИЛНИ ПРЕВОЗИ (AETR)")},
        {QStringLiteral("lblNotes"),
         QStringLiteral("Попълва се на машина и се подписва преди пътуване. Прилага се към оригиналните тахографски "
                        "листове, когато те са задължителни. Подправени удостоверения представляват нарушение.")},
        {QStringLiteral("lblItem1"), QStringLiteral("1. Име на фирмата:")},
        {QStringLiteral("lblItem2"), QStringLiteral("2. Адрес, пощенски код, град, държава;")},
        {QStringLiteral("lblItem3"), QStringLiteral("3. Телефонен номер:")},
        {QStringLiteral("lblItem4"), QStringLiteral("4. Номер на факс:")},
        {QStringLiteral("lblItem5"), QStringLiteral("5. Адрес на електронната поща:")},
        {QStringLiteral("lblUndersigned"), QStringLiteral("Аз, долуподписаният:")},
        {QStringLiteral("lblItem6"), QStringLiteral("6. Име:")},
        {QStringLiteral("lblItem7"), QStringLiteral("7. Длъжност в предприятието/фирмата:")},
        {QStringLiteral("lblDeclare"), QStringLiteral("декларирам, че водачът:")},
        {QStringLiteral("lblItem8"), QStringLiteral("8. Име:")},
        {QStringLiteral("lblItem9"), QStringLiteral("9. Дата на раждане:")},
        {QStringLiteral("lblItem10"), QStringLiteral("10. Номер на лична карта:")},
        {QStringLiteral("lblPeriod"), QStringLiteral("за периода:")},
        {QStringLiteral("lblItemFrom"), QStringLiteral("11. от:")},
        {QStringLiteral("lblItemTo"), QStringLiteral("12. до:")},
        {QStringLiteral("lblItemSick"), QStringLiteral("13.")},
        {QStringLiteral("Check1"), QStringLiteral("е бил в отпуск по болест")},
        {QStringLiteral("lblItemAnnual"), QStringLiteral("14.")},
        {QStringLiteral("Check2"), QStringLiteral("е бил в годишен отпуск")},
        {QStringLiteral("lblItemExempt"), QStringLiteral("15.")},
        {QStringLiteral("Check3"),
         QStringLiteral("е управлявал превозно средство, попадащо извън обхвата на Регламент (ЕО) №561/2006 или AETR")},
        {QStringLiteral("lblItem16"), QStringLiteral("16. За предприятието/фирмата място:")},
        {QStringLiteral("lblT17"),
         QStringLiteral("17. Аз, водач на превозно средство, потвърждавам, че по време на горепосочения период не съм "
                        "управлявал превозно средство,\n       попадащо в Регламент (ЕО) №561/2006 или AETR")},
        {QStringLiteral("lblItem18"), QStringLiteral("18. Място")},
    };
    static const QHash<QString, QString> form2009 = {
        {QStringLiteral("lblTitle"), QStringLiteral("УДОСТОВЕРЕНИЕ ЗА ДЕЙНОСТИ")},
        {QStringLiteral("lblSubtitle"), QStringLiteral("(РЕГЛАМЕНТ (ЕО) № 561/2006 ИЛИ AETR (1))")},
        {QStringLiteral("lblNotes"),
         QStringLiteral("Да се попълни на машина и да се подпише преди пътуване. Да се съхранява заедно с оригиналните "
                        "записи от записващото устройство, когато те трябва да се съхраняват. Фалшифицираните "
                        "удостоверения представляват нарушение.")},
        {QStringLiteral("lblFirmPart"), QStringLiteral("Част, която се попълва от предприятието/фирмата")},
        {QStringLiteral("lblItem1"), QStringLiteral("1. Име на предприятието/фирмата:")},
        {QStringLiteral("lblItem2"), QStringLiteral("2. Улица, номер, пощенски код, град, държава:")},
        {QStringLiteral("lblItem3"), QStringLiteral("3. Телефонен номер (включително международния код):")},
        {QStringLiteral("lblItem4"), QStringLiteral("4. Номер на факс (включително международния код):")},
        {QStringLiteral("lblItem5"), QStringLiteral("5. Адрес на електронна поща:")},
        {QStringLiteral("lblUndersigned"), QStringLiteral("Аз, долуподписаният:")},
        {QStringLiteral("lblItem6"), QStringLiteral("6. Име и фамилия:")},
        {QStringLiteral("lblItem7"), QStringLiteral("7. Длъжност в предприятието/фирмата:")},
        {QStringLiteral("lblDeclare"), QStringLiteral("декларирам, че водачът:")},
        {QStringLiteral("lblItem8"), QStringLiteral("8. Име и фамилия:")},
        {QStringLiteral("lblItem9"), QStringLiteral("9. Дата на раждане (ден/месец/година):")},
        {QStringLiteral("lblItem10"),
         QStringLiteral("10. Номер на свидетелството за управление, на личната карта или на паспорта:")},
        {QStringLiteral("lblItemStarted"),
         QStringLiteral("11. който е започнал работа в предприятието/фирмата на (ден/месец/година):")},
        {QStringLiteral("lblPeriod"), QStringLiteral("за периода:")},
        {QStringLiteral("lblItemFrom"), QStringLiteral("12. от (час/ден/месец/година):")},
        {QStringLiteral("lblItemTo"), QStringLiteral("13. до (час/ден/месец/година):")},
        {QStringLiteral("lblItemSick"), QStringLiteral("14.")},
        {QStringLiteral("Check1"), QStringLiteral("е бил в отпуск по болест (**)")},
        {QStringLiteral("lblItemAnnual"), QStringLiteral("15.")},
        {QStringLiteral("Check2"), QStringLiteral("е бил в годишен отпуск (**)")},
        {QStringLiteral("lblItemLeave"), QStringLiteral("16.")},
        {QStringLiteral("Check4"), QStringLiteral("е бил в отпуск или почивка (**)")},
        {QStringLiteral("lblItemExempt"), QStringLiteral("17.")},
        {QStringLiteral("Check3"),
         QStringLiteral("е управлявал превозно средство, изключено от обхвата на Регламент (ЕО) № 561/2006 или AETR (**)")},
        {QStringLiteral("lblItemOther"), QStringLiteral("18.")},
        {QStringLiteral("Check5"),
         QStringLiteral("е извършвал друга работа, различна от управлението на превозно средство (**)")},
        {QStringLiteral("lblItemAvailable"), QStringLiteral("19.")},
        {QStringLiteral("Check6"), QStringLiteral("е бил на разположение (**)")},
        {QStringLiteral("lblItem16"), QStringLiteral("20. За предприятието/фирмата място:")},
        {QStringLiteral("lblT17"),
         QStringLiteral("21. Аз, в качеството си на водач, потвърждавам, че през горепосочения период не съм "
                        "управлявал превозно средство, попадащо в обхвата на Регламент (ЕО) № 561/2006 или AETR.")},
        {QStringLiteral("lblItem18"), QStringLiteral("22. Място")},
        {QStringLiteral("lblChooseOne"), QStringLiteral("(**) Изберете само една от клетките.")},
        {QStringLiteral("lblFootnote"),
         QStringLiteral("(1) Европейско споразумение за работата на екипажите на превозните средства, извършващи "
                        "международни автомобилни превози.")},
    };
    return form == AttestationForm::Decision2007 ? form2007 : form2009;
}

}
