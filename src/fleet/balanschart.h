#pragma once

#include "core/currency.h"
#include "fleet/truckbalance.h"

#include <QByteArray>
#include <QSize>
#include <QString>

class QChart;

namespace zarek {

// The balance as bars per truck: income, cost and remainder in money, or norm fuel against fuel
// loaded in litres. A new chart, owned by whoever shows it.
QChart *balanceChart(BalansMode mode, const QList<TruckBalance> &balances, Currency currency);

// The chart's title, as it heads its page on paper.
QString balanceChartTitle(BalansMode mode);

// The chart drawn into a PNG picture of the given size, for print and export.
QByteArray balanceChartPng(BalansMode mode, const QList<TruckBalance> &balances, Currency currency,
                            QSize size = {900, 560});

}
