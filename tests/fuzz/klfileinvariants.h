#pragma once

// What a statement file (.kl) that the loader accepted may hold, checked apart from the loader's
// own code: the statement screen's limits, value by value. Shared by the bounded fuzz run of the
// test command and the libFuzzer target.

#include "core/textcheck.h"
#include "settlement/klfile.h"

#include <QDate>
#include <QMetaType>
#include <QString>
#include <QVariant>
#include <cmath>

namespace zarek::klcheck {

inline bool finiteIn(const QVariant &value, double low, double high)
{
    const int type = value.typeId();
    if (type != QMetaType::Double && type != QMetaType::LongLong && type != QMetaType::Int)
        return false;
    const double number = value.toDouble();
    return std::isfinite(number) && number >= low && number <= high;
}

inline bool textFits(const QVariant &value, int length)
{
    if (value.isNull())
        return true;
    if (value.typeId() != QMetaType::QString)
        return false;
    const QString text = value.toString();
    return text.trimmed().size() <= length && !hasControlCharacter(text);
}

// The first broken rule of an accepted file, or an empty text.
inline QString brokenRule(const StatementFile &file)
{
    const StatementHeading &heading = file.heading;
    if (heading.klient.trimmed().isEmpty() || heading.klient.trimmed().size() > 25 || hasControlCharacter(heading.klient))
        return QStringLiteral("client \"%1\"").arg(heading.klient);
    if (!heading.period.from.isValid() || !heading.period.to.isValid() || heading.period.to <= heading.period.from)
        return QStringLiteral("period");
    const RowSet &rows = file.rows.klients;
    if (rows.rowCount() > maxStatementFileRows)
        return QStringLiteral("row count");
    if (file.rows.klientsNew.rowCount() != 0)
        return QStringLiteral("a printed copy taken from the file");
    for (int row = 0; row < rows.rowCount(); ++row) {
        const QString where = QStringLiteral("row %1: ").arg(row + 1);
        const QVariant data = rows.value(row, QStringLiteral("Data"));
        if (data.typeId() != QMetaType::QDate || !heading.period.contains(data.toDate()))
            return where + QStringLiteral("date ") + data.toString();
        if (!textFits(rows.value(row, QStringLiteral("Marsh")), 25) || !textFits(rows.value(row, QStringLiteral("VidTovar")), 25)
            || !textFits(rows.value(row, QStringLiteral("Kola")), 12))
            return where + QStringLiteral("text");
        const QVariant km = rows.value(row, QStringLiteral("KM"));
        if (!finiteIn(km, 0, 32767) || km.toDouble() != std::floor(km.toDouble()))
            return where + QStringLiteral("km ") + km.toString();
        if (!finiteIn(rows.value(row, QStringLiteral("Ton")), 0, 100))
            return where + QStringLiteral("tonnes");
        if (!finiteIn(rows.value(row, QStringLiteral("Tarifa")), 0, 100))
            return where + QStringLiteral("rate");
        if (!finiteIn(rows.value(row, QStringLiteral("Suma")), 0, 100.0 * 2000.0 * 100.0))
            return where + QStringLiteral("sum");
    }
    return {};
}

}
