#include "scratchtables.h"

#include <QStringList>

namespace zarek {

namespace {

using Type = ScratchColumn::Type;

ScratchColumn integer(const char *name) { return {QString::fromLatin1(name), Type::Integer, 0}; }
ScratchColumn real(const char *name) { return {QString::fromLatin1(name), Type::Double, 0}; }
ScratchColumn date(const char *name) { return {QString::fromLatin1(name), Type::Date, 0}; }
ScratchColumn text(const char *name, int width) { return {QString::fromLatin1(name), Type::Text, width}; }

QList<ScratchTable> buildTables()
{
    return {
        {QStringLiteral("TempNal"), {integer("Red"), text("Name", 25), real("Cena"), real("Kol"), real("Suma")}},
        {QStringLiteral("TempRowdList"),
         {text("Red", 5), text("NomData", 30), text("KolaID", 12), text("Marsh", 30), text("KM", 12), text("Ton", 12),
          text("RazhN", 12), text("Proc", 2)}},
        {QStringLiteral("TempSKladPR"),
         {integer("Red"), text("DocVid", 25), text("NomData", 25), text("Name", 25), text("Broi", 8), text("Edin", 10),
          text("Suma", 12)}},
        {QStringLiteral("TempSKlad"),
         {integer("Red"), text("Name", 25), text("Cena", 10), text("Prihod", 8), text("SumaP", 12), text("Razhod", 8),
          text("SumaR", 12), text("Ostatak", 8), text("SumaO", 12)}},
        // Kola as wide as a truck number anywhere else (12), so every truck gets its balance row.
        {QStringLiteral("TempBalans"),
         {integer("Red"), text("Kola", 12), text("Prihod", 15), text("Razhod", 15), text("Ostatak", 15)}},
        {QStringLiteral("TempKlients"),
         {date("Data"), text("Marsh", 25), text("VidTovar", 25), text("Kola", 12), integer("KM"), real("Ton"),
          real("Tarifa"), real("Suma")}},
        {QStringLiteral("TempKlientsNew"),
         {date("Data"), text("Marsh", 25), text("VidTovar", 25), text("Kola", 12), text("KM", 5), text("Ton", 10),
          text("Tarifa", 10), text("Suma", 15)}},
        {QStringLiteral("TempZaplati"),
         {date("Data"), text("Kola", 12), text("Name", 25), real("Ton"), integer("KM"), real("Suma"), text("Marsh", 25),
          text("Klient", 25), text("VidTovar", 25), real("Zaplata")}},
        {QStringLiteral("TempZaplata"),
         {integer("Red"), date("Data"), text("KolaID", 12), real("Ton"), integer("KM"), real("Suma"), text("Marsh", 25),
          text("VidTovar", 25), real("Zaplata"), real("Nadnik")}},
        {QStringLiteral("TempPlaten"),
         {integer("Red"), date("Data"), text("Marsh", 25), text("VidTovar", 25), text("KolaID", 12), text("KM", 5),
          text("Ton", 10), text("Tarifa", 10), text("Suma", 15)}},
    };
}

}

const QList<ScratchTable> &scratchTables()
{
    static const QList<ScratchTable> tables = buildTables();
    return tables;
}

std::optional<ScratchTable> scratchTable(const QString &name)
{
    for (const ScratchTable &table : scratchTables()) {
        if (table.name.compare(name, Qt::CaseInsensitive) == 0)
            return table;
    }
    return std::nullopt;
}

QString scratchTableDdl(const ScratchTable &table)
{
    QStringList columns;
    for (const ScratchColumn &column : table.columns) {
        QString type;
        switch (column.type) {
        case Type::Integer: type = QStringLiteral("INTEGER"); break;
        case Type::Double: type = QStringLiteral("DOUBLE PRECISION"); break;
        case Type::Date: type = QStringLiteral("TEXT"); break;
        case Type::Text: type = QStringLiteral("TEXT"); break;
        }
        columns.append(column.name + QLatin1Char(' ') + type);
    }
    return QStringLiteral("CREATE TABLE %1 (%2)").arg(table.name, columns.join(QStringLiteral(", ")));
}

}
