#include "courseeditorrules.h"

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
