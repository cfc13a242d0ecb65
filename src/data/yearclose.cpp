#include "yearclose.h"

#include "data/archivesnapshot.h"
#include "data/query.h"

#include <QDir>
#include <QFileInfo>
#include <QMap>
#include <QVariant>

namespace zarek {

using namespace archiving;

int closingYear(QSqlDatabase db, const QDate &today)
{
    QMap<int, qint64> perYear;
    Query query(db, QStringLiteral("SELECT data, COUNT(*) FROM tabl GROUP BY data"));
    if (!query.run(QString())) {
        while (query.next()) {
            const QVariant value = query.value(0);
            const QDate date = value.typeId() == QMetaType::QDate ? value.toDate()
                                                                  : QDate::fromString(value.toString().left(10), Qt::ISODate);
            if (date.isValid())
                perYear[date.year()] += query.value(1).toLongLong();
        }
    }
    int year = today.year();
    qint64 most = 0;
    for (auto it = perYear.cbegin(); it != perYear.cend(); ++it) {
        if (it.value() >= most) {
            most = it.value();
            year = it.key();
        }
    }
    return year;
}

QString yearArchivePath(const QString &folder, int year)
{
    return QDir(folder).filePath(QStringLiteral("%1.arh").arg(year));
}

Checked<YearCloseOutcome> closeYear(QSqlDatabase db, const QString &folder, int year, bool replaceExisting,
                                    const QDateTime &now, const ArchiveProgress &progress)
{
    const QString kept = QStringLiteral("Курсовете не са изтрити.");
    const auto refusal = [&](const QString &fault, const QString &request) {
        return UserMessage::twoLines(yearCloseErrorTitle(), fault, request, UserMessage::Icon::Critical);
    };
    if (auto fault = ensureFolder(folder))
        return refusal(QStringLiteral("Папката %1 не може да бъде подготвена: %2").arg(shown(folder), fault->text),
                       QStringLiteral("Моля, проверете правата за запис! ") + kept);
    const QString path = yearArchivePath(folder, year);
    const bool exists = QFileInfo::exists(path);
    if (exists && !replaceExisting)
        return refusal(QStringLiteral("Архивът на %1 година вече е записан: %2").arg(year).arg(shown(path)),
                       QStringLiteral("Той не е заменен. ") + kept);

    Steps steps(progress, int(schemaTables().size()) + 3);
    Snapshot snapshot(db, true);
    std::optional<Fault> fault = snapshot.begin();
    steps.done();
    WorkFile file(path);
    if (!fault)
        fault = writeChecked(snapshot, file, steps);
    if (fault) {
        if (fault->busy)
            return busyMessage(yearCloseErrorTitle(), QStringLiteral("Моля, опитайте отново след малко! ") + kept);
        return refusal(QStringLiteral("Архивът на годината %1 не може да бъде записан: %2").arg(shown(path), fault->text),
                       QStringLiteral("Моля, проверете мястото на диска и правата за запис! ") + kept);
    }

    // An earlier archive of the year steps aside under a name of its own, and comes back if the
    // new one cannot take its place.
    YearCloseOutcome outcome;
    outcome.archive = path;
    if (exists) {
        outcome.previous = freeName(folder,
                                    QStringLiteral("%1 предишен %2").arg(year).arg(now.toString(QStringLiteral("yyyy-MM-dd hh-mm-ss"))),
                                    QStringLiteral(".arh"));
        if (auto moved = moveInto(path, outcome.previous))
            return refusal(QStringLiteral("Досегашният архив %1 не може да бъде преименуван: %2").arg(shown(path), moved->text),
                           kept);
    }
    if (auto moved = moveInto(file.path(), path)) {
        if (exists)
            moveInto(outcome.previous, path);
        return refusal(QStringLiteral("Архивът на годината %1 не може да бъде записан: %2").arg(shown(path), moved->text),
                       QStringLiteral("Моля, проверете правата за запис! ") + kept);
    }
    file.keep();
    syncToDisk(folder);

    fault = snapshot.deleteCourses(&outcome.deletedCourses);
    if (!fault)
        fault = snapshot.commit();
    if (fault)
        return refusal(QStringLiteral("Курсовете не могат да бъдат изтрити: %1").arg(fault->text),
                       QStringLiteral("Всички курсове са запазени, архивът на годината е записан. Моля, опитайте отново!"));
    steps.finish();
    return outcome;
}

}
