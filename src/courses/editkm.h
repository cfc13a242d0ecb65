#pragma once

#include "core/dates.h"
#include "courses/tariffbands.h"
#include "forms/resultgridscreen.h"

#include <QSet>
#include <QSqlDatabase>

namespace zarek {

// Kilometre correction: a truck's courses of exactly 1 km in a period, whose kilometres and rate
// are corrected in the grid after F4. Each corrected cell is written at once, with the course's
// money priced again. New kilometres take the rate of their tariff band, as in the course editor,
// unless a rate was typed in that row; a corrected row stays in the grid until it is opened again.
class EditKM : public ResultGridScreen {
    Q_OBJECT
public:
    EditKM(const QString &kola, const Period &period, QSqlDatabase db, QWidget *parent = nullptr);

    static ResultGridConfig config(const QString &kola);

private:
    std::optional<UserMessage> write(int row, const QString &field, const QVariant &value);

    QSqlDatabase m_db;
    TariffBands m_bands;
    QSet<int> m_rateTyped;  // rows whose rate the user typed here
};

}
