#pragma once

#include "data/archive.h"

// "Нова година": the year's archive, then the courses deleted.
namespace zarek {

// The year a close archives: the year that holds most courses (the later one on a tie), or today's
// when there are none. Courses typed early in the new year do not rename the old year's archive.
int closingYear(QSqlDatabase db, const QDate &today);
// "2026.arh" in folder.
QString yearArchivePath(const QString &folder, int year);

struct YearCloseOutcome {
    QString archive;        // the year-end archive
    QString previous;       // the earlier archive of that year, kept under this name; empty if none
    qint64 deletedCourses = 0;
};

// The year close: a checked archive of the whole database at yearArchivePath(folder, year), then
// every course deleted, in one transaction that holds the courses locked from the archive to the
// delete, so no course saved meanwhile is deleted unarchived. An archive of that year already
// there is refused unless replaceExisting; when replaced it is kept under another name, never
// lost. On any failure no course is deleted.
Checked<YearCloseOutcome> closeYear(QSqlDatabase db, const QString &folder, int year, bool replaceExisting,
                                    const QDateTime &now, const ArchiveProgress &progress = {});

}
