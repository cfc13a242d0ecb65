#include "receivables/receivablesrules.h"

#include <algorithm>

namespace zarek::receivables {

void sortOldestFirst(QList<OpenDocument> &documents)
{
    std::stable_sort(documents.begin(), documents.end(), [](const OpenDocument &a, const OpenDocument &b) {
        if (a.due != b.due)
            return a.due < b.due;
        return a.number < b.number;
    });
}

static Currency otherOf(Currency currency)
{
    return currency == Currency::Leva ? Currency::Euro : Currency::Leva;
}

Money unusedAmount(Money amount, Currency currency, Money sameCurrency, Money otherCurrency)
{
    const Money left = amount - sameCurrency - convertAmount(otherCurrency, otherOf(currency), currency);
    if (!left.isValid())
        return Money::invalid();
    return left > Money() ? left : Money();
}

QList<Settlement> spread(Money amount, Currency currency, const QList<OpenDocument> &documents)
{
    QList<Settlement> settlements;
    Money same;
    Money other;
    for (const OpenDocument &document : documents) {
        const Money left = unusedAmount(amount, currency, same, other);
        if (!left.isValid() || left <= Money())
            break;
        const Money open = document.open();
        if (!open.isValid() || open <= Money())
            continue;
        const Money available = convertAmount(left, currency, document.currency);
        const Money take = std::min(available, open);
        if (take <= Money())
            break;
        settlements.append({document.id, take});
        (document.currency == currency ? same : other) += take;
    }
    return settlements;
}

int ageBucket(const QDate &due, const QDate &on)
{
    const qint64 late = due.daysTo(on);
    if (late <= 0)
        return 0;
    if (late <= 30)
        return 1;
    if (late <= 60)
        return 2;
    if (late <= 90)
        return 3;
    return 4;
}

QString ageBucketName(int bucket)
{
    switch (bucket) {
    case 1:
        return QStringLiteral("1–30 дни");
    case 2:
        return QStringLiteral("31–60 дни");
    case 3:
        return QStringLiteral("61–90 дни");
    case 4:
        return QStringLiteral("Над 90 дни");
    default:
        return QStringLiteral("Ненастъпил падеж");
    }
}

QString entryKindName(QChar kind)
{
    switch (kind.unicode()) {
    case 'K':
        return QStringLiteral("Кредитно известие");
    case 'D':
        return QStringLiteral("Дебитно известие");
    case 'P':
        return QStringLiteral("Плащане");
    default:
        return QStringLiteral("Фактура");
    }
}

}
