#include "editkm.h"

#include "forms/messageservice.h"
#include "core/version.h"
#include "courses/kmcorrectionstore.h"

namespace zarek {

ResultGridConfig EditKM::config(const QString &kola)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("EditKM");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor()
                     + QStringLiteral(" - Корекция КМ на курсовете на кола ") + kola;
    config.text1 = QStringLiteral("Корекция КМ на курсовете на кола ") + kola;
    config.columns = {
        {QStringLiteral("Data"), QStringLiteral("Дата"), 1200, {}, Qt::AlignLeft},
        {QStringLiteral("Marsh"), QStringLiteral("Маршрут"), 2600, {}, Qt::AlignLeft},
        {QStringLiteral("Tovar"), QStringLiteral("Товар"), 2500, {}, Qt::AlignLeft},
        {QStringLiteral("Kola"), QStringLiteral("Кола"), 1200, {}, Qt::AlignHCenter},
        {QStringLiteral("KM"), QStringLiteral("Км"), 750, {}, Qt::AlignRight, true},
        {QStringLiteral("Ton"), QStringLiteral("Тонаж"), 900, QStringLiteral("###0.000"), Qt::AlignRight},
        {QStringLiteral("Tarifa"), QStringLiteral("Тар."), 750, QStringLiteral("###0.000#####"), Qt::AlignRight, true},
        {QStringLiteral("Bruto"), QStringLiteral("Сума"), 1100, QStringLiteral("###0.00"), Qt::AlignRight, false, false,
         false, false, true},
    };
    config.dateField = QStringLiteral("Data");
    config.legend = {{QStringLiteral("Label5"), QStringLiteral("F4")},
                     {QStringLiteral("Label6"), QStringLiteral("- Корекция")}};
    config.editSwitchKeys = true;
    config.printable = false;
    return config;
}

EditKM::EditKM(const QString &kola, const Period &period, QSqlDatabase db, QWidget *parent)
    : ResultGridScreen(config(kola), parent), m_db(std::move(db)), m_bands(loadTariffBands(m_db))
{
    model()->setEditHook(
        [this](int row, const QString &field, const QVariant &value) { return write(row, field, value); });
    KmCorrectionStore store(m_db);
    Checked<RowSet> rows = store.placeholders(kola, period);
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return;
    }
    // No course of 1 km gives an empty grid, and no message.
    setRows(rows.value());
}

std::optional<UserMessage> EditKM::write(int row, const QString &field, const QVariant &value)
{
    RowSet &rows = model()->rows();
    const bool kmChanged = field.compare(QLatin1String("KM"), Qt::CaseInsensitive) == 0;
    const double km = kmChanged ? value.toDouble() : rows.value(row, QStringLiteral("KM")).toDouble();
    double rate = rows.value(row, QStringLiteral("Tarifa")).toDouble();
    if (!kmChanged)
        rate = value.toDouble();
    else if (!m_rateTyped.contains(row))
        // The placeholder's rate was that of 1 km; the bands stand in euro once the firm has changed
        // over, and a course of a leva day takes its band's rate back in leva.
        rate = convertRate(m_bands.rateFor(km), books().priceCurrency(), rowCurrency(row));
    const double ton = rows.value(row, QStringLiteral("Ton")).toDouble();
    KmCorrectionStore store(m_db);
    const Checked<KmCorrection> written = store.correct(rows.value(row, QStringLiteral("id")).toLongLong(),
                                                        rows.value(row, QStringLiteral("row_version")).toInt(), km,
                                                        ton, rate);
    if (!written)
        return written.message();
    if (!kmChanged)
        m_rateTyped.insert(row);
    rows.setValue(row, rows.column(QStringLiteral("row_version")), written.value().rowVersion);
    rows.setValue(row, rows.column(QStringLiteral("Tarifa")), rate);
    rows.setValue(row, rows.column(QStringLiteral("Bruto")), written.value().money.bruto.toDouble());
    return std::nullopt;
}

}
