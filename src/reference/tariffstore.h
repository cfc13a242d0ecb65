#pragma once

#include "core/usermessage.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QStringList>
#include <array>
#include <optional>

namespace zarek {

// The single row of tariffs as the settings screen holds it.
struct TariffRow {
    qint64 id = 0;
    int rowVersion = 0;
    std::array<double, 6> rates{};
};

std::optional<TariffRow> readTariffRow(QSqlDatabase db);

// Writes the six typed rates with the time of writing: the row read (version checked), or a new
// row when the table has none. A text that is no number writes nothing.
Checked<TariffRow> saveTariffRow(QSqlDatabase db, const std::optional<TariffRow> &read, const QStringList &texts,
                                 const QDateTime &now = QDateTime::currentDateTime());

// The message of a tariff box whose text is not a number.
UserMessage invalidTariffTextMessage();

}
