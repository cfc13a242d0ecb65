#include "fleet/balanschart.h"

#include "core/formats.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QBuffer>
#include <QChart>
#include <QChartView>
#include <QGraphicsScene>
#include <QImage>
#include <QPainter>
#include <QValueAxis>
#include <algorithm>

namespace zarek {

QString balanceChartTitle(BalansMode mode)
{
    return mode == BalansMode::Profit ? QStringLiteral("Приходи, разходи и остатък по коли")
                                      : QStringLiteral("Нормативен разход и заредена нафта по коли");
}

QChart *balanceChart(BalansMode mode, const QList<TruckBalance> &balances, Currency currency)
{
    const bool money = mode == BalansMode::Profit;
    const double unit = money ? 100.0 : 10.0;  // cents or tenths of a litre
    auto *income = new QBarSet(money ? QStringLiteral("Приход") : QStringLiteral("Изч.разх."));
    auto *cost = new QBarSet(money ? QStringLiteral("Разход") : QStringLiteral("Заредено"));
    auto *rest = money ? new QBarSet(QStringLiteral("Остатък")) : nullptr;
    income->setColor(QColor(0x2e, 0x6d, 0xb4));
    cost->setColor(QColor(0xc0, 0x6a, 0x14));
    if (rest)
        rest->setColor(QColor(0x2f, 0x8f, 0x4e));
    QStringList trucks;
    double low = 0, high = 0;
    for (const TruckBalance &b : balances) {
        trucks.append(b.kola);
        *income << b.prihod / unit;
        *cost << b.razhod / unit;
        if (rest)
            *rest << b.ostatak() / unit;
        for (const qint64 value : {b.prihod, b.razhod, money ? b.ostatak() : 0})
            low = std::min(low, value / unit), high = std::max(high, value / unit);
    }
    auto *series = new QBarSeries;
    series->append(income);
    series->append(cost);
    if (rest)
        series->append(rest);
    auto *chart = new QChart;
    chart->setTitle(balanceChartTitle(mode));
    chart->addSeries(series);
    chart->legend()->setAlignment(Qt::AlignBottom);
    auto *axisX = new QBarCategoryAxis;
    axisX->append(trucks);
    if (trucks.size() > 6)
        axisX->setLabelsAngle(-90);
    axisX->setTruncateLabels(false);
    chart->addAxis(axisX, Qt::AlignBottom);
    series->attachAxis(axisX);
    auto *axisY = new QValueAxis;
    axisY->setRange(low < 0 ? low * 1.1 : 0, high > 0 ? high * 1.1 : 1);
    axisY->setLabelFormat(QStringLiteral("%.0f"));
    axisY->applyNiceNumbers();
    axisY->setTitleText(money ? amountUnit(currency) : QStringLiteral("л"));
    chart->addAxis(axisY, Qt::AlignLeft);
    series->attachAxis(axisY);
    return chart;
}

QByteArray balanceChartPng(BalansMode mode, const QList<TruckBalance> &balances, Currency currency, QSize size)
{
    QChartView view(balanceChart(mode, balances, currency));
    view.setRenderHint(QPainter::Antialiasing);
    view.resize(size);
    view.chart()->resize(size);
    view.grab();  // lays the chart out; a view never shown has not done it yet
    // Drawn at twice the size, so the picture stays sharp on paper.
    QImage picture(size * 2, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::white);
    {
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setRenderHint(QPainter::TextAntialiasing);
        view.scene()->render(&painter, QRectF(QPointF(0, 0), picture.size()), view.chart()->geometry());
    }
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "PNG");
    return png;
}

}
