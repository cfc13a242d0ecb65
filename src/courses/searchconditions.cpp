#include "searchconditions.h"

#include "core/sharedroutines.h"

namespace zarek {

namespace {

UserMessage twoLines(const char *fault, const char *request)
{
    return searchMessage(QString::fromUtf8(fault) + QLatin1Char('\n') + QString::fromUtf8(request));
}

// The period check shared by the three dialogs; fills the conditions' dates.
std::optional<UserMessage> readPeriod(const QString &from, const QString &to, QDate today, SearchConditions &out)
{
    if (const auto message = checkPeriodTexts(from, to, today))
        return searchMessage(message->text);
    out.period = {*parseDate(from, today), *parseDate(to, today)};
    return std::nullopt;
}

UserMessage noDriverMessage()
{
    return twoLines("Няма избран шофьор!", "Моля, изберете шофьор от списъка.");
}

UserMessage driverWithoutCommaMessage()
{
    return twoLines("Грешно име на шофьор!", "Моля, изберете име от списъка!");
}

}

UserMessage searchMessage(const QString &text)
{
    return {QStringLiteral("Информация"), text, UserMessage::Icon::Information};
}

UserMessage searchCancelledMessage()
{
    return searchMessage(QStringLiteral("Няма избрани ограничения за търсене!"));
}

UserMessage emptyListMessage()
{
    return searchMessage(QStringLiteral("Липсват данните за списъка!"));
}

UserMessage noCoursesMessage()
{
    return searchMessage(QStringLiteral("Няма въведени курсове в компютъра!"));
}

bool splitDriver(const QString &text, QString *kod, QString *ime)
{
    const QString trimmed = text.trimmed();
    const qsizetype comma = trimmed.indexOf(QLatin1Char(','));
    if (comma < 0)
        return false;
    *kod = trimmed.left(comma).trimmed();
    *ime = trimmed.mid(comma + 1).trimmed();
    return true;
}

// A text typed into a list that is none of its items would search for nothing.
static bool notListed(const QString &value, const QStringList &listed)
{
    for (const QString &item : listed) {
        if (item.trimmed() == value)
            return false;
    }
    return true;
}

Checked<SearchConditions> checkSeek(SearchMode mode, const QString &from, const QString &to, const QString &combo,
                                    const QString &article, const QStringList &listed, QDate today)
{
    SearchConditions out;
    out.SeekFrom = from.trimmed();
    out.SeekTo = to.trimmed();
    if (mode != SearchMode::EditFakt && mode != SearchMode::NalichSK) {
        if (const auto message = readPeriod(out.SeekFrom, out.SeekTo, today, out))
            return *message;
    }

    const QString value = combo.trimmed();
    switch (mode) {
    case SearchMode::Kola:
        if (value.isEmpty())
            return twoLines("Няма избрана кола!", "Моля, изберете кола от списъка.");
        if (notListed(value, listed))
            return twoLines("Въведения номер няма курсове!", "Моля, изберете номер от списъка и опитайте отново.");
        out.SeekKola = value;
        break;
    case SearchMode::EditFakt:
        if (value.isEmpty())
            return twoLines("Няма избран номер на фактура!", "Моля, изберете номер на фактура от списъка.");
        if (notListed(value, listed))
            return twoLines("Няма фактура с този номер!", "Моля, изберете номер на фактура от списъка.");
        out.SeekNomFakt = value;
        break;
    case SearchMode::Klients:
        if (value.isEmpty())
            return twoLines("Няма избран клиент!", "Моля, изберете клиент от списъка.");
        if (notListed(value, listed))
            return twoLines("Въведеното име не е Ваш клиент!", "Моля, изберете клиент от списъка и опитайте отново.");
        out.SeekKlient = value;
        break;
    case SearchMode::Driver:
        if (value.isEmpty())
            return noDriverMessage();
        if (!splitDriver(value, &out.SeekDriverKod, &out.SeekDriverIme) || notListed(value, listed))
            return driverWithoutCommaMessage();
        break;
    case SearchMode::NalichSK:
    case SearchMode::SkladPR:
        out.SeekArtikul = article.trimmed();
        break;
    default:
        break;
    }
    return out;
}

Checked<SearchConditions> checkSeekAlt(SearchMode mode, const QString &from, const QString &to, const QString &combo,
                                       SearchChoice choice, QDate today)
{
    SearchConditions out;
    out.SeekFrom = from.trimmed();
    out.SeekTo = to.trimmed();
    if (const auto message = readPeriod(out.SeekFrom, out.SeekTo, today, out))
        return *message;
    out.SeekChoice = choice == SearchChoice::All ? QStringLiteral("All")
                   : choice == SearchChoice::Yes ? QStringLiteral("Yes")
                                                 : QStringLiteral("No");
    if (mode == SearchMode::Driver) {
        if (IsBlank(combo))
            return noDriverMessage();
        if (!splitDriver(combo, &out.SeekDriverKod, &out.SeekDriverIme))
            return driverWithoutCommaMessage();
    }
    return out;
}

Checked<SearchConditions> checkSeekAll(SearchMode mode, const SeekAllInput &input, const QStringList &klientList,
                                       const QStringList &kolaList, QDate today)
{
    SearchConditions out;
    out.SeekFrom = input.from;
    out.SeekTo = input.to;
    if (const auto message = readPeriod(input.from, input.to, today, out))
        return *message;

    if (mode != SearchMode::SkladPRN) {
        if (IsBlank(input.klient))
            return twoLines("Няма зададен клиент!", "Въведете клиент и опитайте отново.");
        out.SeekKlient = input.klient.trimmed();
        if (FindInArray(out.SeekKlient, klientList) != 0)
            return twoLines("Въведеното име не е Ваш клиент!", "Моля, изберете клиент от списъка и опитайте отново.");
        if (!IsBlank(input.kola)) {
            out.SeekKola = input.kola.trimmed();
            if (FindInArray(out.SeekKola, kolaList) != 0)
                return twoLines("Въведения номер няма курсове!", "Моля, изберете номер от списъка и опитайте отново.");
        }
    } else {
        out.SeekKola = input.kola.trimmed();
    }
    // A blank route or cargo is no condition: nothing of an earlier search stays in force.
    out.SeekTovar = input.tovar.trimmed();
    out.SeekMarsh = input.marsh.trimmed();
    return out;
}

}
