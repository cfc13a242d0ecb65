#include "documentrules.h"

#include "core/dates.h"
#include "documents/workingdays.h"

#include <QLocale>

namespace zarek::documents {

namespace {

const QString saveTitle = QStringLiteral("ГРЕШКА при запис!");

UserMessage fault(const QString &text, const QString &request)
{
    return UserMessage::twoLines(saveTitle, text, request, UserMessage::Icon::Exclamation);
}

}

QString holderCode(Holder holder)
{
    return holder == Holder::Truck ? QStringLiteral("K") : QStringLiteral("S");
}

std::optional<Holder> holderOfCode(const QString &code)
{
    if (code == QLatin1String("K"))
        return Holder::Truck;
    if (code == QLatin1String("S"))
        return Holder::Driver;
    return std::nullopt;
}

QString holderName(Holder holder)
{
    return holder == Holder::Truck ? QStringLiteral("Кола") : QStringLiteral("Шофьор");
}

const QList<DocumentKind> &standardKinds()
{
    // name, holder, months, days, warn days, working days to request ahead, remind
    static const QList<DocumentKind> kinds = {
        {0, QStringLiteral("Технически преглед"), Holder::Truck, 12, 0, 30, 0, true},
        {0, QStringLiteral("Технически преглед (над 10 г.)"), Holder::Truck, 6, 0, 30, 0, true},
        {0, QStringLiteral("Тахограф - периодична проверка"), Holder::Truck, 24, 0, 30, 0, true},
        {0, QStringLiteral("Гражданска отговорност"), Holder::Truck, 12, 0, 30, 0, true},
        {0, QStringLiteral("Застраховка CMR"), Holder::Truck, 12, 0, 30, 0, true},
        {0, QStringLiteral("Сваляне на данни от тахографа"), Holder::Truck, 0, 90, 14, 0, true},
        {0, QStringLiteral("Карта на водача"), Holder::Driver, 60, 0, 30, 15, true},
        {0, QStringLiteral("Свидетелство за управление C/CE"), Holder::Driver, 60, 0, 60, 0, true},
        {0, QStringLiteral("Карта за квалификация (код 95)"), Holder::Driver, 60, 0, 60, 0, true},
        {0, QStringLiteral("ADR свидетелство"), Holder::Driver, 60, 0, 60, 0, true},
        {0, QStringLiteral("Психологическа годност"), Holder::Driver, 0, 0, 0, 0, false},
        {0, QStringLiteral("Сваляне на данни от картата на водача"), Holder::Driver, 0, 28, 7, 0, true},
    };
    return kinds;
}

QDate proposedValidUntil(const DocumentKind &kind, const QDate &issuedOn)
{
    if (!issuedOn.isValid() || !kind.expires())
        return {};
    QDate until = issuedOn;
    if (kind.months > 0)
        until = until.addMonths(kind.months).addDays(-1);
    return until.addDays(kind.days);
}

QDate actByDate(const DocumentKind &kind, const QDate &validUntil)
{
    if (!validUntil.isValid())
        return {};
    return kind.requestWorkDays > 0 ? workingDaysBefore(validUntil, kind.requestWorkDays) : validUntil;
}

QDate warningDate(const DocumentKind &kind, const QDate &validUntil)
{
    const QDate actBy = actByDate(kind, validUntil);
    return actBy.isValid() ? actBy.addDays(-kind.warnDays) : QDate();
}

DueState dueState(const DocumentKind &kind, const QDate &validUntil, const QDate &today)
{
    if (!kind.remind || !validUntil.isValid())
        return DueState::NotDue;
    if (today > validUntil)
        return DueState::Expired;
    return today >= warningDate(kind, validUntil) ? DueState::Due : DueState::NotDue;
}

QString dueStateText(DueState state)
{
    switch (state) {
    case DueState::Expired: return QStringLiteral("Изтекъл");
    case DueState::Due: return QStringLiteral("Изтича");
    case DueState::NotDue: break;
    }
    return QStringLiteral("Валиден");
}

const QStringList &documentColumns()
{
    static const QStringList columns = {QStringLiteral("Vid"),     QStringLiteral("Kod"),    QStringLiteral("Nomer"),
                                        QStringLiteral("Izdaden"), QStringLiteral("Valid"),  QStringLiteral("Izdatel"),
                                        QStringLiteral("Belejka")};
    return columns;
}

QStringList documentDateColumns()
{
    return {QStringLiteral("Izdaden"), QStringLiteral("Valid")};
}

std::optional<UserMessage> checkDocument(const QVariantMap &typed, const std::optional<DocumentKind> &kind,
                                         const QDate &today)
{
    const auto text = [&typed](const char *column) { return typed.value(QString::fromLatin1(column)).toString().trimmed(); };
    if (text("Vid").isEmpty())
        return fault(QStringLiteral("Не е избран вид на документа!"), QStringLiteral("Моля, изберете вид от списъка!"));
    if (!kind)
        return fault(QStringLiteral("Няма такъв вид документ!"), QStringLiteral("Моля, изберете вид от списъка!"));
    if (text("Kod").isEmpty())
        return fault(kind->holder == Holder::Truck ? QStringLiteral("Не е избрана кола!") : QStringLiteral("Не е избран шофьор!"),
                     QStringLiteral("Моля, изберете притежателя на документа!"));
    std::optional<QDate> issued;
    if (!text("Izdaden").isEmpty()) {
        issued = parseDate(text("Izdaden"), today);
        if (!issued)
            return fault(QStringLiteral("Датата на издаване не е вярна!"), QStringLiteral("Моля, въведете дата като 15.03.2026!"));
    }
    std::optional<QDate> valid;
    if (!text("Valid").isEmpty()) {
        valid = parseDate(text("Valid"), today);
        if (!valid)
            return fault(QStringLiteral("Датата \"Валиден до\" не е вярна!"), QStringLiteral("Моля, въведете дата като 15.03.2026!"));
    }
    if (issued && valid && *valid < *issued)
        return fault(QStringLiteral("\"Валиден до\" е преди датата на издаване!"), QStringLiteral("Моля, поправете датите!"));
    if (kind->expires() && !valid)
        return fault(QStringLiteral("Не е въведено до кога е валиден документът!"),
                     QStringLiteral("Моля, въведете дата \"Валиден до\"!"));
    return std::nullopt;
}

QString sizeText(qint64 bytes)
{
    const QLocale bulgarian(QLocale::Bulgarian, QLocale::Bulgaria);
    if (bytes >= 1024 * 1024)
        return bulgarian.toString(double(bytes) / (1024.0 * 1024.0), 'f', 1) + QStringLiteral(" MB");
    return bulgarian.toString((bytes + 1023) / 1024) + QStringLiteral(" KB");
}

std::optional<UserMessage> checkScanSize(qint64 bytes)
{
    if (bytes <= maxScanBytes)
        return std::nullopt;
    return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"),
                                 QStringLiteral("Файлът е %1, а сканираното копие може да бъде до %2!")
                                     .arg(sizeText(bytes), sizeText(maxScanBytes)),
                                 QStringLiteral("Моля, сканирайте с по-ниска разделителна способност. Нищо не е записано."),
                                 UserMessage::Icon::Exclamation);
}

UserMessage holderDeleteQuestion(Holder holder, const QString &key, int documents)
{
    const bool truck = holder == Holder::Truck;
    const QString count = documents == 1 ? QStringLiteral("1 документ") : QStringLiteral("%1 документа").arg(documents);
    return UserMessage::twoLines(QStringLiteral("Изтриване на запис"),
                                 QStringLiteral("%1 %2 има %3. С %4 ще бъдат изтрити и документите.")
                                     .arg(truck ? QStringLiteral("Колата") : QStringLiteral("Шофьорът"), key, count,
                                          truck ? QStringLiteral("нея") : QStringLiteral("него")),
                                 QStringLiteral("Наистина ли искате да изтриете записа?"), UserMessage::Icon::Question);
}

}
