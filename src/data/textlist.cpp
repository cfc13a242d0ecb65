#include "data/textlist.h"

#include "data/query.h"
#include <QVariant>

namespace zarek {

QStringList nonBlankTexts(QSqlDatabase db, const QString &sql)
{
    QStringList values;
    Query query(db, sql);
    if (query.run(QString()))
        return values;
    while (query.next()) {
        const QString value = query.value(0).toString();
        if (!value.trimmed().isEmpty())
            values.append(value);
    }
    return values;
}

}
