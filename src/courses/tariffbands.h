#pragma once

#include "core/usermessage.h"

#include <QSqlDatabase>
#include <array>

namespace zarek {

// The six rates of the first row of Tarifi: up to 20 km, to 30, to 50, to 100, to 200, above 200.
struct TariffBands {
    std::array<double, 6> rates{};  // all 0 when Tarifi has no row

    // The band of the given kilometres; each band includes its upper edge.
    static int bandOf(double km);
    double rateFor(double km) const { return rates[static_cast<size_t>(bandOf(km))]; }

    // The rate picked on leaving the kilometres box; a text that is no number gets a message.
    Checked<double> rateForText(const QString &kmText) const;
};

TariffBands loadTariffBands(QSqlDatabase &db);

}
