#include "tariffbands.h"

#include "core/formats.h"
#include "data/query.h"
#include "data/schema.h"


namespace zarek {

int TariffBands::bandOf(double km)
{
    if (km <= 20)
        return 0;
    if (km <= 30)
        return 1;
    if (km <= 50)
        return 2;
    if (km <= 100)
        return 3;
    if (km <= 200)
        return 4;
    return 5;
}

Checked<double> TariffBands::rateForText(const QString &kmText) const
{
    const auto km = parseNumber(kmText);
    if (!km)
        return UserMessage::twoLines(QStringLiteral("ГРЕШКА при въвеждане!"),
                                     QStringLiteral("Километрите не са число!"),
                                     QStringLiteral("Моля, въведете километрите на курса"),
                                     UserMessage::Icon::Exclamation);
    return rateFor(*km);
}

TariffBands loadTariffBands(QSqlDatabase &db)
{
    TariffBands bands;
    const auto &columns = tariffColumns();
    QString sql = QStringLiteral("SELECT ");
    for (size_t i = 0; i < columns.size(); ++i)
        sql += (i ? QStringLiteral(", ") : QString()) + columns[i];
    sql += QStringLiteral(" FROM Tarifi ORDER BY id");
    Query query(db, sql);
    if (!query.run(QString()) && query.next()) {
        for (int i = 0; i < 6; ++i)
            bands.rates[static_cast<size_t>(i)] = query.value(i).toDouble();
    }
    return bands;
}

}
