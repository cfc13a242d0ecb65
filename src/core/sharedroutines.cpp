#include "sharedroutines.h"

#include "core/formats.h"

namespace zarek {

bool IsBlank(const QString &text)
{
    return text.trimmed().isEmpty();
}

int LenCheck(const QString &text, int limit)
{
    const qsizetype length = text.trimmed().size();
    if (length > limit)
        return 1;
    if (length < limit)
        return -1;
    return 0;
}

bool BadMonth(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return true;
    const double month = leadingNumber(trimmed.mid(3, 2));
    return month > 12 || month < 0;
}

int FindInArray(const QString &text, const QStringList &list)
{
    return list.contains(text) ? 0 : -1;
}

bool matchesPrefix(const QString &value, const QString &prefix)
{
    const QString wanted = prefix.trimmed();
    return wanted.isEmpty() || value.trimmed().startsWith(wanted, Qt::CaseInsensitive);
}

}
