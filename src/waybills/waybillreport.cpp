#include "waybillreport.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/rounding.h"
#include "data/query.h"
#include "data/scratchdatabase.h"
#include "forms/recordfield.h"

#include <QHash>
#include <QVariant>
#include <cmath>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

struct Line {
    QString route;
    QVariant km;
    QVariant ton;
    QVariant koef;
    QVariant fuel;
};

// A figure as the program writes a number into a text: no more decimals than it has, a decimal comma.
QString plain(const QVariant &value)
{
    return recordFieldText(value.isNull() ? QVariant(0.0) : value, RecordFieldKind::Number);
}

QString fixed(const QVariant &value, int decimals)
{
    return value.isNull() ? QString() : formatFixed(value.toDouble(), decimals);
}

// Totals kept in hundredths, so adding many sums never drifts.
qint64 hundredths(const QVariant &value)
{
    return value.isNull() ? 0 : std::llround(roundHalfEven(value.toDouble(), 2) * 100.0);
}

}

Checked<Report> RowdReport(const SearchConditions &conditions, QSqlDatabase db, ScratchDatabase &scratch,
                           const FirmProfile &firm)
{
    const Period &period = conditions.period;
    if (!period.from.isValid() || !period.to.isValid())
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма избран период за търсене!"),
                                     QStringLiteral("Проверете си датите!"));
    const QString truck = conditions.SeekKola.trimmed();
    QString where = QStringLiteral("Data BETWEEN ? AND ?");
    QVariantList values{period.from, period.to};
    if (truck != allTrucks()) {
        where = QStringLiteral("Kola = ? AND ") + where;
        values.prepend(truck);
    }

    Query waybills(db, QStringLiteral("SELECT ListID, Data, Kola, SumKM, SumRazhN, EndKM, ZarN FROM RowdList "
                                      "WHERE %1 ORDER BY Data, ListID, id").arg(where));
    if (auto failure = waybills.run(readTitle, values))
        return *failure;
    struct Head {
        QString listId;
        QDate date;
        QString kola;
        QVariant sumKm, sumFuel, endKm, zarN;
    };
    QList<Head> heads;
    while (waybills.next())
        heads.append({waybills.value(0).toString(), waybills.value(1).toDate(), waybills.value(2).toString(),
                      waybills.value(3), waybills.value(4), waybills.value(5), waybills.value(6)});
    if (heads.isEmpty())
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"),
                                     QStringLiteral("Няма въведени пътни листи при тези условия!"),
                                     QStringLiteral("Моля, изберете други."), UserMessage::Icon::Exclamation);

    // The route lines of all those waybills at once, each number's in the order they were typed.
    Query routes(db, QStringLiteral("SELECT MarshID, Marshrut, KM, Ton, Koef, RazhN FROM Marsh WHERE MarshID IN "
                                    "(SELECT ListID FROM RowdList WHERE %1) ORDER BY MarshID, id").arg(where));
    if (auto failure = routes.run(readTitle, values))
        return *failure;
    QHash<QString, QList<Line>> lines;
    while (routes.next())
        lines[routes.value(0).toString()].append(
            {routes.value(1).toString(), routes.value(2), routes.value(3), routes.value(4), routes.value(5)});

    // The scratch table is emptied, then filled: what is printed is exactly these rows.
    QList<QVariantList> sheet;
    const QString blank = QStringLiteral(" ");
    int red = 0;
    for (const Head &head : std::as_const(heads)) {
        const QString fuel = head.zarN.toDouble() > 0
                                 ? plain(head.zarN) + QStringLiteral("л. - ") + plain(head.endKm) + QStringLiteral("км")
                                 : QStringLiteral(" - ");
        sheet.append({QString::number(++red) + QLatin1Char('.'), head.listId + QStringLiteral(" / ") + formatDate(head.date),
                      head.kola, fuel, fixed(head.sumKm, 2), blank, fixed(head.sumFuel, 2), blank});
        for (const Line &line : lines.value(head.listId))
            sheet.append({blank, blank, blank, line.route, fixed(line.km, 2), fixed(line.ton, 3), fixed(line.fuel, 2),
                          plain(line.koef)});
    }
    if (auto failure = fillScratchTable(scratch.db(), readTitle, QStringLiteral("TempRowdList"),
                                        {QStringLiteral("Red"), QStringLiteral("NomData"), QStringLiteral("KolaID"),
                                         QStringLiteral("Marsh"), QStringLiteral("KM"), QStringLiteral("Ton"),
                                         QStringLiteral("RazhN"), QStringLiteral("Proc")},
                                        sheet))
        return *failure;
    const Checked<RowSet> rows = readRows(scratch.db(), readTitle,
                                          QStringLiteral("SELECT Red, NomData, KolaID, Marsh, KM, Ton, RazhN, Proc, "
                                                         "CASE WHEN Red = ' ' THEN 0 ELSE 1 END AS Head FROM TempRowdList "
                                                         "ORDER BY rowid"));
    if (!rows)
        return rows.message();

    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptRowdList"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(rows.value());
    // A waybill's head line stands out from its routes, light grey by its Head column: the design says so.
    report.setFirm(firm);
    report.setPeriod(period);

    qint64 totalKm = 0, totalZarN = 0, totalFuel = 0;
    for (const Head &head : std::as_const(heads)) {
        totalKm += hundredths(head.sumKm);
        totalZarN += hundredths(head.zarN);
        totalFuel += hundredths(head.sumFuel);
    }
    report.setValue(QStringLiteral("totalKm"), formatFixed(totalKm / 100.0, 0));
    report.setValue(QStringLiteral("totalZarN"), formatFixed(totalZarN / 100.0, 0));
    report.setValue(QStringLiteral("totalFuel"), formatFixed(totalFuel / 100.0, 1));
    return report;
}

}
