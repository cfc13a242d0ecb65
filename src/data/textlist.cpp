#include "data/textlist.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

QStringList nonBlankTexts(QSqlDatabase db, const QString &sql)
{
    QStringList values;
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(sql))
        return values;
    while (query.next()) {
        const QString value = query.value(0).toString();
        if (!value.trimmed().isEmpty())
            values.append(value);
    }
    return values;
}

}
