#include "clientrules.h"

#include "core/eik.h"

#include <cmath>

namespace zarek::clients {

namespace {

const QString title = QStringLiteral("ВНИМАНИЕ!");

QString text(const QVariantMap &entry, const char *column)
{
    return entry.value(QString::fromLatin1(column)).toString().trimmed();
}

std::optional<UserMessage> refuse(QString *faultColumn, const char *column, UserMessage message)
{
    if (faultColumn)
        *faultColumn = QString::fromLatin1(column);
    return message;
}

}

const QStringList &clientColumns()
{
    static const QStringList columns = {QStringLiteral("Ime"),   QStringLiteral("EIK"),      QStringLiteral("DDSNomer"),
                                        QStringLiteral("Adres"), QStringLiteral("Grad"),     QStringLiteral("Darzhava"),
                                        QStringLiteral("MOL"),   QStringLiteral("Tel"),      QStringLiteral("Email"),
                                        QStringLiteral("SrokDni")};
    return columns;
}

std::optional<UserMessage> checkClient(QVariantMap &entry, QString *faultColumn)
{
    for (const QString &column : clientColumns()) {
        if (column != QLatin1String("SrokDni"))
            entry.insert(column, entry.value(column).toString().trimmed());
    }
    const QString eik = compactIdentifier(text(entry, "EIK"));
    const QString vat = compactIdentifier(text(entry, "DDSNomer"));
    entry.insert(QStringLiteral("EIK"), eik);
    entry.insert(QStringLiteral("DDSNomer"), vat);

    const QVariant termValue = entry.value(QStringLiteral("SrokDni"));
    QString termText = termValue.isNull() ? QString() : termValue.toString().trimmed();
    if (termText.isEmpty())
        termText = QStringLiteral("0");
    bool whole = false;
    const double term = termText.toDouble(&whole);
    entry.insert(QStringLiteral("SrokDni"), termText);

    if (text(entry, "Ime").isEmpty())
        return refuse(faultColumn, "Ime",
                      UserMessage::twoLines(title, QStringLiteral("Името на клиента не е въведено!"),
                                            QStringLiteral("Моля, въведете името на клиента!"),
                                            UserMessage::Icon::Exclamation));
    if (!eik.isEmpty()) {
        if (auto bad = checkEik(eik))
            return refuse(faultColumn, "EIK", *bad);
    }
    if (!vat.isEmpty()) {
        if (auto bad = checkVatNumber(vat, eik))
            return refuse(faultColumn, "DDSNomer", *bad);
    }
    if (!whole || !std::isfinite(term) || term < 0 || term > maxTermDays || term != std::floor(term))
        return refuse(faultColumn, "SrokDni",
                      UserMessage::twoLines(title, QStringLiteral("Срокът за плащане „%1“ е невалиден!").arg(termText),
                                            QStringLiteral("Моля, въведете цял брой дни от 0 до %1!").arg(maxTermDays),
                                            UserMessage::Icon::Exclamation));
    entry.insert(QStringLiteral("SrokDni"), QString::number(static_cast<int>(term)));
    return std::nullopt;
}

}
