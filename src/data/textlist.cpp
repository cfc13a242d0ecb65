#include "data/textlist.h"

#include "data/query.h"
#include <QVariant>

namespace zarek {

QString distinctValuesQuery(const QString &table, const QString &column)
{
    return QStringLiteral("WITH RECURSIVE distinct_values(v) AS (SELECT MIN(%2) FROM %1 UNION ALL "
                          "SELECT (SELECT MIN(%2) FROM %1 WHERE %2 > distinct_values.v) FROM distinct_values "
                          "WHERE distinct_values.v IS NOT NULL) "
                          "SELECT v FROM distinct_values WHERE v IS NOT NULL")
        .arg(table, column);
}

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
