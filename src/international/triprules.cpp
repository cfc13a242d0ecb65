#include "triprules.h"

#include "core/formats.h"
#include "core/valueformat.h"

#include <cmath>

namespace zarek {

namespace {

QString text(const QVariantMap &values, const char *column)
{
    return values.value(QString::fromLatin1(column)).toString();
}

// The system's critical boxes of this screen: a fault, a blank line, a request.
UserMessage critical(const QString &title, const char *fault, const char *request)
{
    return {title, QString::fromUtf8(fault) + QStringLiteral("\n\n") + QString::fromUtf8(request),
            UserMessage::Icon::Critical};
}

}

FirmAddress FirmAddress::trimmed() const
{
    return {name.trimmed(), adres.trimmed(), city.trimmed(), country.trimmed()};
}

const QStringList &tripColumns()
{
    static const QStringList columns = {
        QStringLiteral("KursID"),     QStringLiteral("Data"),         QStringLiteral("DriverName"),
        QStringLiteral("TruckV"),     QStringLiteral("TruckR"),       QStringLiteral("TovarName"),
        QStringLiteral("TovarTon"),   QStringLiteral("TotalFuel"),    QStringLiteral("TotalKM"),
        QStringLiteral("SendName"),   QStringLiteral("SendAdres"),    QStringLiteral("SendCity"),
        QStringLiteral("SendCountry"), QStringLiteral("ResivName"),   QStringLiteral("ResivAdres"),
        QStringLiteral("ResivCity"),  QStringLiteral("ResivCountry"), QStringLiteral("SendCityP"),
        QStringLiteral("SendCountryP"), QStringLiteral("ResivCityP"), QStringLiteral("ResivCountryP"),
        QStringLiteral("TotalP"),     QStringLiteral("TotalR")};
    return columns;
}

QStringList tripNumberColumns()
{
    return {QStringLiteral("TovarTon"), QStringLiteral("TotalFuel"), QStringLiteral("TotalKM"),
            QStringLiteral("TotalP"), QStringLiteral("TotalR")};
}

QStringList tripDateColumns()
{
    return {QStringLiteral("Data")};
}

FirmAddress tripSender(const QVariantMap &values)
{
    return {text(values, "SendName"), text(values, "SendAdres"), text(values, "SendCity"), text(values, "SendCountry")};
}

FirmAddress tripReceiver(const QVariantMap &values)
{
    return {text(values, "ResivName"), text(values, "ResivAdres"), text(values, "ResivCity"),
            text(values, "ResivCountry")};
}

std::optional<UserMessage> checkTrip(const QVariantMap &typed)
{
    static const struct {
        const char *column;
        const char *fault;
        const char *request;
    } checks[] = {
        {"KursID", "Няма въведен номер на ЧМР!", "Моля, въведете номер на ЧМР."},
        {"Data", "Няма въведена дата на ЧМР!", "Моля, въведете датата на ЧМР."},
        {"DriverName", "Няма въведено име на шофьор!", "Моля, въведете името на шофьора."},
        {"TruckV", "Няма въведен номер на влекач!", "Моля, въведете номера на влекача."},
        {"TruckR", "Няма въведен номер на ремарке!", "Моля, въведете номера на ремаркето."},
    };
    for (const auto &check : checks) {
        if (text(typed, check.column).trimmed().isEmpty())
            return critical(QStringLiteral("   ВНИМАНИЕ!"), check.fault, check.request);
    }
    return checkTripFigures(typed);
}

const QList<TripFigureLimit> &tripFigureLimits()
{
    static const QList<TripFigureLimit> limits = {
        {"TovarTon", "Тонаж", 100.0},
        {"TotalFuel", "Total Fuel", 100000.0},
        {"TotalKM", "Total KM", 100000.0},
        {"TotalP", "Приход", 99999999.99},
        {"TotalR", "Общ разход", 99999999.99},
    };
    return limits;
}

std::optional<UserMessage> checkTripFigures(const QVariantMap &values)
{
    for (const TripFigureLimit &figure : tripFigureLimits()) {
        const QVariant value = values.value(QString::fromLatin1(figure.column));
        if (value.isNull())
            continue;
        std::optional<double> number;
        if (value.typeId() == QMetaType::QString) {
            if (value.toString().trimmed().isEmpty())
                continue;
            number = parseNumber(value.toString());
        } else {
            bool ok = false;
            const double read = value.toDouble(&ok);
            if (ok)
                number = read;
        }
        if (!number || !std::isfinite(*number) || *number < 0 || *number > figure.limit) {
            const QString shown = value.typeId() == QMetaType::QString
                                      ? value.toString().trimmed()
                                      : QString::number(value.toDouble(), 'g', 12).replace(QLatin1Char('.'), QLatin1Char(','));
            return UserMessage{QStringLiteral("   ГРЕШКА!"),
                               QStringLiteral("\"%1\" в поле \"%2\": нужно е число от 0 до %3!")
                                       .arg(shown, QString::fromUtf8(figure.caption), formatNumber(figure.limit, 0, 2))
                                   + QStringLiteral("\n\nМоля, поправете стойността."),
                               UserMessage::Icon::Critical};
        }
    }
    return std::nullopt;
}

UserMessage tripNumberTakenMessage()
{
    return critical(QStringLiteral("   ГРЕШКА!"), "Съществува ЧМР със същия номер!",
                    "Моля, променете номера и опитайте отново.");
}

UserMessage tripDeleteQuestion()
{
    return critical(QStringLiteral("   ВНИМАНИЕ!"), "Изтривате информацията за ЧМР!", "Потвърдете изтриването на ЧМР!");
}

}
