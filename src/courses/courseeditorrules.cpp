#include "courseeditorrules.h"

#include "core/valueformat.h"

namespace zarek::courseeditor {

QStringList columns()
{
    return {QStringLiteral("data"),  QStringLiteral("kod"),     QStringLiteral("kola"),   QStringLiteral("Klient"),
            QStringLiteral("Marsh"), QStringLiteral("Tovar"),   QStringLiteral("km"),     QStringLiteral("ton"),
            QStringLiteral("Tarifa"), QStringLiteral("bruto"),  QStringLiteral("procent"), QStringLiteral("neto"),
            QStringLiteral("Fakt"),  QStringLiteral("NomFakt"), QStringLiteral("plat"),   QStringLiteral("Doc")};
}

RecordRow rowOf(const Course &course)
{
    return {course.id,
            course.rowVersion,
            {{QStringLiteral("data"), course.data},
             {QStringLiteral("kod"), course.kod},
             {QStringLiteral("kola"), course.kola},
             {QStringLiteral("Klient"), course.Klient},
             {QStringLiteral("Marsh"), course.Marsh},
             {QStringLiteral("Tovar"), course.Tovar},
             {QStringLiteral("km"), course.km},
             {QStringLiteral("ton"), course.ton},
             {QStringLiteral("Tarifa"), course.Tarifa},
             {QStringLiteral("bruto"), course.bruto.toDouble()},
             {QStringLiteral("procent"), course.procent.toDouble()},
             {QStringLiteral("neto"), course.neto.toDouble()},
             {QStringLiteral("Fakt"), course.Fakt},
             {QStringLiteral("NomFakt"), course.NomFakt},
             {QStringLiteral("plat"), course.plat},
             {QStringLiteral("Doc"), course.Doc}}};
}

Course keyOf(const RecordRow &row)
{
    Course course;
    course.id = row.id;
    course.rowVersion = row.rowVersion;
    return course;
}

Course courseOf(const RecordRow &row)
{
    const QVariantMap &v = row.values;
    Course course = keyOf(row);
    course.data = dateOfValue(v.value(QStringLiteral("data")));
    course.kod = v.value(QStringLiteral("kod")).toString();
    course.kola = v.value(QStringLiteral("kola")).toString();
    course.Klient = v.value(QStringLiteral("Klient")).toString();
    course.Marsh = v.value(QStringLiteral("Marsh")).toString();
    course.Tovar = v.value(QStringLiteral("Tovar")).toString();
    course.km = v.value(QStringLiteral("km")).toDouble();
    course.ton = v.value(QStringLiteral("ton")).toDouble();
    course.Tarifa = v.value(QStringLiteral("Tarifa")).toDouble();
    course.bruto = Money::fromAmount(v.value(QStringLiteral("bruto")).toDouble());
    course.procent = Money::fromAmount(v.value(QStringLiteral("procent")).toDouble());
    course.neto = Money::fromAmount(v.value(QStringLiteral("neto")).toDouble());
    course.Fakt = v.value(QStringLiteral("Fakt")).toBool();
    course.NomFakt = v.value(QStringLiteral("NomFakt")).toString();
    course.plat = v.value(QStringLiteral("plat")).toBool();
    course.Doc = v.value(QStringLiteral("Doc")).toBool();
    return course;
}

std::optional<QString> resolveDriver(const QStringList &kodIme, const QString &typed)
{
    const QString text = typed.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    for (const QString &entry : kodIme) {
        const qsizetype comma = entry.indexOf(QLatin1Char(','));
        if (entry.compare(text, Qt::CaseInsensitive) == 0 || (comma >= 0 && entry.left(comma) == text)
            || (comma >= 0 && entry.mid(comma + 1).compare(text, Qt::CaseInsensitive) == 0))
            return entry;
    }
    std::optional<QString> found;
    for (const QString &entry : kodIme) {
        if (!entry.contains(text, Qt::CaseInsensitive))
            continue;
        if (found)
            return std::nullopt;  // more than one: the user chooses
        found = entry;
    }
    return found;
}

std::optional<QString> driverName(const QStringList &kodIme, const QString &code)
{
    for (const QString &entry : kodIme) {
        const qsizetype comma = entry.indexOf(QLatin1Char(','));
        if (comma >= 0 && entry.left(comma) == code)
            return entry.mid(comma + 1);
    }
    return std::nullopt;
}

bool listLearns(const QStringList &items, const QString &text)
{
    const QString wanted = text.trimmed();
    for (qsizetype i = 1; i < items.size(); ++i) {
        if (items.at(i).trimmed() == wanted)
            return false;
    }
    return true;
}

}
