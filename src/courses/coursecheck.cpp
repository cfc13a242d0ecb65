#include "coursecheck.h"

#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "core/sharedroutines.h"
#include "core/textcheck.h"
#include "courses/coursepricing.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

namespace zarek {

namespace {

constexpr double maxCourseExpense = 1'000'000.0;

struct Rule {
    std::function<bool()> fails;
    const char *fault;
    const char *request;
    const char *field;  // the column of the box at fault
};

std::optional<UserMessage> firstFailure(const std::vector<Rule> &rules, QString &faultField)
{
    for (const Rule &rule : rules) {
        if (rule.fails()) {
            faultField = QString::fromLatin1(rule.field);
            return UserMessage::twoLines(saveErrorTitle(), QString::fromUtf8(rule.fault),
                                         QString::fromUtf8(rule.request), UserMessage::Icon::Exclamation);
        }
    }
    return std::nullopt;
}

bool sameFigure(double a, double b)
{
    return std::fabs(a - b) <= 1e-9 * std::max(1.0, std::fabs(a));
}

UserMessage dateMessage()
{
    // The box's title is not set for this message, so it keeps its design caption.
    return UserMessage::twoLines(QStringLiteral("Информация"), QStringLiteral("Неверен формат на датата!"),
                                 QStringLiteral("Проверете въведената дата и опитайте отново."),
                                 UserMessage::Icon::Exclamation);
}

UserMessage saveRefusal(const char *fault, const char *request)
{
    return UserMessage::twoLines(saveErrorTitle(), QString::fromUtf8(fault), QString::fromUtf8(request),
                                 UserMessage::Icon::Exclamation);
}

}

std::optional<UserMessage> checkCourseNumbers(double ton, double km, double rate)
{
    // Written so that a NaN fails too.
    const auto outside = [](double value, double limit) { return !(value >= 0.0 && value <= limit); };
    if (outside(ton, maxCourseTonnes))
        return saveRefusal("Тонажа е извън разрешените граници!", "Моля, въведете тонаж от 0 до 100!");
    if (outside(km, maxCourseKm))
        return saveRefusal("Километрите са извън разрешените граници!", "Моля, въведете от 0 до 2000 километра!");
    if (outside(rate, maxCourseRate))
        return saveRefusal("Тарифата е извън разрешените граници!", "Моля, въведете тарифа от 0 до 100!");
    return std::nullopt;
}

QString driverCodeOf(const QString &driverText)
{
    const QString trimmed = driverText.trimmed();
    const qsizetype comma = trimmed.indexOf(QLatin1Char(','));
    if (comma < 0)
        return {};
    return trimmed.left(comma).trimmed();
}

CourseCheckResult checkCourse(const CourseEntry &entry, const CourseSaveContext &context, const BooksDay &books)
{
    CourseCheckResult result;
    const QString kola = entry.kola.trimmed();
    const QString marsh = entry.marsh.trimmed();
    const QString klient = entry.klient.trimmed();
    const QString tovar = entry.tovar.trimmed();

    result.refusal = checkTypedTexts({entry.driver, entry.driverCode, entry.kola, entry.date, entry.ton, entry.km,
                                      entry.tarifa, entry.marsh, entry.klient, entry.tovar, entry.nomFakt,
                                      entry.razhod},
                                     saveErrorTitle());
    if (result.refusal)
        return result;

    result.refusal = firstFailure({
        {[&] { return IsBlank(entry.driver); }, "Няма име на шофьора!", "Моля, изберете името на шофьора!", "kod"},
        {[&] { return IsBlank(kola); }, "Няма номер на кола!", "Моля, въведете номера на колата!", "kola"},
        {[&] { return IsBlank(entry.date); }, "Няма въведена дата!", "Моля, въведете датата на курса!", "data"},
        {[&] { return IsBlank(entry.ton); }, "Няма въведен тонаж!", "Моля, въведете тонажа на курса", "ton"},
        {[&] { return IsBlank(entry.km); }, "Няма въведени километри!", "Моля, въведете километрите на курса", "km"},
        {[&] { return IsBlank(entry.tarifa); }, "Няма въведена тарифа!", "Моля, въведете тарифата на курса", "Tarifa"},
        {[&] { return IsBlank(marsh); }, "Няма въведен маршрут!", "Моля, изберете маршрута на курса", "Marsh"},
        {[&] { return IsBlank(klient); }, "Няма въведен клиент!", "Моля, изберете клиента на курса!", "Klient"},
        {[&] { return IsBlank(tovar); }, "Няма въведен товар!", "Моля, изберете товара на курса!", "Tovar"},
        {[&] { return IsBlank(entry.nomFakt); }, "Няма въведена фактура!", "Моля, въведете номер на фактурата!", "NomFakt"},
        {[&] { return LenCheck(entry.nomFakt, documentNumberLength) != 0; }, "Грешен номер на фактура!",
         "Моля, въведете 10 цифри за номер на фактурата!", "NomFakt"},
    }, result.faultField);
    if (result.refusal)
        return result;

    // A new course takes its driver from the combo; a corrected one keeps its driver.
    const QString kod = context.adding ? driverCodeOf(entry.driver) : entry.driverCode.trimmed();

    result.refusal = firstFailure({
        {[&] { return IsBlank(kod); }, "Грешно име на шофьор!", "Моля, изберете име от списъка!", "kod"},
        {[&] { return LenCheck(kola, 12) == 1; }, "Номера на колата е по-дълъг от разрешения!",
         "Моля, въведете до 12 символа за номер на колата!", "kola"},
        {[&] { return LenCheck(tovar, 25) == 1; }, "Вида на товара е по-дълъг от разрешения!",
         "Моля, въведете до 25 символа за вида на товара!", "Tovar"},
        {[&] { return LenCheck(entry.nomFakt, documentNumberLength) != 0; }, "Номера на фактурата е недействителен!",
         "Моля, въведете 10 символа за номер на фактура!", "NomFakt"},
        {[&] { return LenCheck(klient, 25) == 1; }, "Името на клиента е по-дълъго от разрешеното!",
         "Моля, въведете до 25 символа за име на клиента!", "Klient"},
        {[&] { return LenCheck(marsh, 25) == 1; }, "Маршрута е по-дълъг от разрешения!",
         "Моля, въведете до 25 символа за маршрут!", "Marsh"},
    }, result.faultField);
    if (result.refusal)
        return result;

    // The month check only warns; a date that cannot be read at all is never stored.
    const auto date = parseDate(entry.date, books.today);
    if (BadMonth(entry.date) || !date)
        result.focusDate = true;
    if (!date) {
        result.refusal = dateMessage();
        result.faultField = QStringLiteral("data");
        return result;
    }
    if (BadMonth(entry.date))
        result.dateWarning = dateMessage();

    const auto ton = parseNumber(entry.ton);
    if (!ton) {
        result.refusal = saveRefusal("Тонажа не е число!", "Моля, въведете тонажа на курса");
        result.faultField = QStringLiteral("ton");
        return result;
    }
    const auto km = parseNumber(entry.km);
    if (!km) {
        result.refusal = saveRefusal("Километрите не са число!", "Моля, въведете километрите на курса");
        result.faultField = QStringLiteral("km");
        return result;
    }
    const auto rate = parseNumber(entry.tarifa);
    if (!rate) {
        result.refusal = UserMessage::error(saveErrorTitle(), QStringLiteral("13"),
                                            QStringLiteral("Несъвместим тип: тарифата \"%1\" не е число")
                                                .arg(entry.tarifa.trimmed()));
        result.faultField = QStringLiteral("Tarifa");
        return result;
    }
    if ((result.refusal = checkCourseNumbers(*ton, *km, *rate))) {
        result.faultField = !(*ton >= 0.0 && *ton <= maxCourseTonnes) ? QStringLiteral("ton")
                            : !(*km >= 0.0 && *km <= maxCourseKm)   ? QStringLiteral("km")
                                                                     : QStringLiteral("Tarifa");
        return result;
    }
    const auto expense = IsBlank(entry.razhod) ? std::optional<double>(0.0) : parseNumber(entry.razhod);
    if (!expense) {
        // The expense is in the currency of the course's day.
        result.refusal = UserMessage::twoLines(saveErrorTitle(), QStringLiteral("Разхода не е число!"),
                                               QStringLiteral("Моля, въведете разхода на курса в ")
                                                   + amountUnit(books.currencyOn(*date)),
                                               UserMessage::Icon::Exclamation);
        result.faultField = QStringLiteral("razhod");
        return result;
    }
    result.expense = Money::fromAmount(*expense);
    if (!result.expense.isValid() || std::fabs(*expense) > maxCourseExpense) {
        result.refusal = saveRefusal("Разхода е извън разрешените граници!", "Моля, въведете разход до 1000000!");
        result.faultField = QStringLiteral("razhod");
        return result;
    }

    Course &course = result.course;
    course.id = context.original.id;
    course.rowVersion = context.original.rowVersion;
    course.data = *date;
    course.kod = kod;
    course.kola = kola;
    course.Klient = klient;
    course.Marsh = marsh;
    course.Tovar = tovar;
    course.ton = *ton;
    course.km = *km;
    course.Tarifa = *rate;
    const CourseMoney money = priceCourse(course.ton, course.km, course.Tarifa);
    course.bruto = money.bruto;
    course.procent = money.procent;
    course.neto = money.neto;
    course.Doc = false;
    course.plat = entry.plat;
    // A new course is never invoiced; a corrected one keeps its invoice, whichever task corrects it.
    if (context.mode == CourseMode::NewKurs && context.adding) {
        course.NomFakt = noDocumentNumber();
        course.Fakt = false;
    } else {
        course.NomFakt = entry.nomFakt.trimmed();
        course.Fakt = entry.fakt;
    }
    // An invoice handed to the client states the course's figures: they stay as the invoice has
    // them, to the cent, whatever else is corrected (the route, the cargo).
    const Course &stored = context.original;
    if (!context.adding && carriesInvoice(stored)) {
        if (changesInvoicedFigures(stored, course)) {
            result.refusal = invoicedCourseRefusal(stored.NomFakt);
            result.faultField = !sameFigure(course.ton, stored.ton) ? QStringLiteral("ton")
                                : !sameFigure(course.km, stored.km) ? QStringLiteral("km")
                                : course.Klient != stored.Klient.trimmed() ? QStringLiteral("Klient")
                                                                           : QStringLiteral("Tarifa");
            return result;
        }
        course.Tarifa = stored.Tarifa;
        course.bruto = stored.bruto;
        course.procent = stored.procent;
        course.neto = stored.neto;
    }
    return result;
}

bool carriesInvoice(const Course &course)
{
    const QString number = course.NomFakt.trimmed();
    return !number.isEmpty() && number != noDocumentNumber();
}

// The rate compares as the editor shows it: a stored rate with more decimals than the box shows
// is the same rate when it shows the same. The money follows from these and is kept as stored.
bool changesInvoicedFigures(const Course &stored, const Course &corrected)
{
    return !sameFigure(corrected.ton, stored.ton) || !sameFigure(corrected.km, stored.km)
           || formatRate(corrected.Tarifa) != formatRate(stored.Tarifa)
           || corrected.Klient.trimmed() != stored.Klient.trimmed();
}

UserMessage invoicedCourseRefusal(const QString &nomFakt)
{
    return UserMessage::twoLines(
        saveErrorTitle(),
        QStringLiteral("Курсът е по фактура № %1: тонаж, километри, тарифа, сума и клиент не се променят!")
            .arg(nomFakt.trimmed()),
        QStringLiteral("Моля, първо махнете курса от фактурата с \"Корекция фактури\"! Маршрут и товар може да се поправят."),
        UserMessage::Icon::Exclamation);
}

}
