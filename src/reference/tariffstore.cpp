#include "tariffstore.h"

#include "core/formats.h"
#include "data/schema.h"
#include "forms/recordstore.h"

namespace zarek {

namespace {

// The first row of Tarifi counts; the six bands by their quoted names, then the time of writing.
RecordStore tariffStore(QSqlDatabase db)
{
    QStringList columns(tariffColumns().begin(), tariffColumns().end());
    columns << QStringLiteral("DateMod") << QStringLiteral("TimeMod");
    return RecordStore(std::move(db), QStringLiteral("Tarifi"), columns, QString());
}

QString band(int i)
{
    return RecordStore::valueName(tariffColumns()[static_cast<size_t>(i)]);
}

}

std::optional<TariffRow> readTariffRow(QSqlDatabase db)
{
    const auto rows = tariffStore(std::move(db)).load();
    if (!rows || rows.value().isEmpty())
        return std::nullopt;
    const RecordRow &first = rows.value().first();
    TariffRow row{first.id, first.rowVersion, {}};
    for (int i = 0; i < 6; ++i)
        row.rates[static_cast<size_t>(i)] = first.values.value(band(i)).toDouble();
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
    TariffRow tariffs = read.value_or(TariffRow{});
    RecordRow row{tariffs.id, tariffs.rowVersion, {}};
    for (int i = 0; i < 6; ++i) {
        const auto rate = parseNumber(texts.value(i));
        if (!rate)
            return UserMessage::error(title, QStringLiteral("13"),
                                      QStringLiteral("Несъвместим тип: \"%1\" не е число").arg(texts.value(i).trimmed()));
        tariffs.rates[static_cast<size_t>(i)] = *rate;
        row.values.insert(band(i), *rate);
    }
    row.values.insert(QStringLiteral("DateMod"), now.date());
    row.values.insert(QStringLiteral("TimeMod"), now.time());
    // A table without a row gets its row now instead of failing.
    const RecordStore store = tariffStore(std::move(db));
    if (const auto failure = read ? store.update(row, title) : store.insert(row, title))
        return *failure;
    tariffs.id = row.id;
    tariffs.rowVersion = row.rowVersion;
    return tariffs;
}

}
