#pragma once

// Query results and shown messages as text, so one comparison states a whole expected outcome.

#include "data/rowset.h"
#include "forms/messageservice.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QStringList>
#include <QVariant>

namespace zarek::test {

// Each row of a query with bound values as "value|value|…": numbers shortest ("450", "40.8"),
// booleans 1/0 on both engines, dates ISO, NULL empty; {"<the error>"} when it fails.
inline QStringList rows(QSqlDatabase db, const QString &sql, const QVariantList &values = {})
{
    QSqlQuery query(db);
    query.prepare(sql);
    for (const QVariant &value : values)
        query.addBindValue(value);
    if (!query.exec())
        return {QStringLiteral("<%1>").arg(query.lastError().text())};
    QStringList result;
    while (query.next()) {
        QStringList cells;
        for (int i = 0; i < query.record().count(); ++i) {
            const QVariant v = query.value(i);
            if (v.isNull())
                cells.append(QString());
            else if (v.typeId() == QMetaType::Bool)
                cells.append(v.toBool() ? QStringLiteral("1") : QStringLiteral("0"));
            else if (v.typeId() == QMetaType::Double)
                cells.append(QString::number(v.toDouble(), 'g', 12));
            else
                cells.append(v.toString());
        }
        result.append(cells.join(QLatin1Char('|')));
    }
    return result;
}

// The one row of a query (see rows()), or "<none>" / the error.
inline QString row(QSqlDatabase db, const QString &sql, const QVariantList &values = {})
{
    const QStringList all = rows(db, sql, values);
    return all.isEmpty() ? QStringLiteral("<none>") : all.join(QLatin1Char('\n'));
}

// The columns named of each row of a result, as "value|value|…".
inline QStringList rowTexts(const RowSet &rows, const QStringList &columns)
{
    QStringList lines;
    for (int row = 0; row < rows.rowCount(); ++row) {
        QStringList cells;
        for (const QString &column : columns)
            cells.append(rows.value(row, column).toString());
        lines.append(cells.join(QLatin1Char('|')));
    }
    return lines;
}

// Every message shown, as "title: text" with the text's lines joined by " / ".
inline QStringList shown(const RecordingMessageService &messages)
{
    QStringList list;
    for (const UserMessage &m : messages.shown)
        list.append(m.title + QStringLiteral(": ") + m.text.split(QLatin1Char('\n'), Qt::SkipEmptyParts).join(QStringLiteral(" / ")));
    return list;
}

// The first line of each message shown.
inline QStringList firstLines(const QList<UserMessage> &messages)
{
    QStringList list;
    for (const UserMessage &m : messages)
        list.append(m.text.section(QLatin1Char('\n'), 0, 0));
    return list;
}

}
