#include "tariffstore.h"

#include "app/formats.h"
#include "courses/coursestore.h"
#include "data/schema.h"
#include "data/sqlerror.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

std::optional<TariffRow> readTariffRow(QSqlDatabase db)
{
    QStringList columns;
    for (const QString &column : tariffColumns())
        columns.append(column);
    QSqlQuery query(db);
    if (!query.exec(QStringLiteral("SELECT id, row_version, %1 FROM Tarifi ORDER BY id").arg(columns.join(QStringLiteral(", "))))
        || !query.next())
        return std::nullopt;
    TariffRow row{query.value(0).toLongLong(), query.value(1).toInt(), {}};
    for (int i = 0; i < 6; ++i)
        row.rates[static_cast<size_t>(i)] = query.value(i + 2).toDouble();
    return row;
}

UserMessage invalidTariffTextMessage()
{
    return UserMessage::twoLines(QStringLiteral("ГРЕШКА при въвеждане!"), QStringLiteral("Въведения символ е невалиден!"),
                                 QStringLiteral("Моля, въведете друг."), UserMessage::Icon::Exclamation);
}

Checked<TariffRow> saveTariffRow(QSqlDatabase db, const std::optional<TariffRow> &read, const QStringList &texts,
                                 const QDateTime &now)
{
    const QString title = QStringLiteral("ГРЕШКА при запис!");
    TariffRow row = read.value_or(TariffRow{});
    for (int i = 0; i < 6; ++i) {
        const auto rate = parseNumber(texts.value(i));
        if (!rate)
            return UserMessage::error(title, QStringLiteral("13"),
                                      QStringLiteral("Несъвместим тип: \"%1\" не е число").arg(texts.value(i).trimmed()));
        row.rates[static_cast<size_t>(i)] = *rate;
    }
    QStringList sets;
    QStringList columns;
    for (const QString &column : tariffColumns()) {
        sets.append(column + QStringLiteral(" = ?"));
        columns.append(column);
    }
    QSqlQuery query(db);
    if (read) {
        query.prepare(QStringLiteral("UPDATE Tarifi SET %1, DateMod = ?, TimeMod = ?, row_version = row_version + 1 "
                                     "WHERE id = ? AND row_version = ?").arg(sets.join(QStringLiteral(", "))));
    } else {
        query.prepare(QStringLiteral("INSERT INTO Tarifi (%1, DateMod, TimeMod) VALUES (?, ?, ?, ?, ?, ?, ?, ?) "
                                     "RETURNING id, row_version").arg(columns.join(QStringLiteral(", "))));
    }
    for (double rate : row.rates)
        query.addBindValue(rate);
    query.addBindValue(now.date());
    query.addBindValue(now.time());
    if (read) {
        query.addBindValue(row.id);
        query.addBindValue(row.rowVersion);
    }
    if (!query.exec())
        return sqlErrorMessage(title, query.lastError());
    if (read) {
        if (query.numRowsAffected() != 1)
            return CourseStore::conflictMessage(title);
        ++row.rowVersion;
    } else {
        if (!query.next())
            return sqlErrorMessage(title, query.lastError());
        row.id = query.value(0).toLongLong();
        row.rowVersion = query.value(1).toInt();
        query.finish();
    }
    return row;
}

}
