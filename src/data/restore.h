#pragma once

#include "data/archive.h"
#include "data/archivesupport.h"

#include <memory>

// "Зареждане": an archive checked, then loaded in place of the data after a safety copy of it.
namespace zarek {

// An archive chosen for a restore, checked and ready: a working copy of a file whose schema is
// exactly the program's own at its versions (the file itself is only read, and one holding any
// object the program does not make is refused), brought up to this program's schema when it is
// older, and checked value by value against the screens' rules. The copy goes with it.
class PreparedArchive {
public:
    PreparedArchive() = default;
    ~PreparedArchive();
    PreparedArchive(const PreparedArchive &) = delete;
    PreparedArchive &operator=(const PreparedArchive &) = delete;

    // Checks archivePath and makes the working copy in workFolder; the refusal otherwise, with
    // nothing left behind.
    std::optional<UserMessage> prepare(const QString &archivePath, const QString &workFolder);

    bool isReady() const { return m_work != nullptr; }
    QString archivePath() const { return m_archive; }
    QString workingCopy() const;
    const RowCounts &counts() const { return m_counts; }

private:
    void discard();

    QString m_archive;
    std::unique_ptr<archiving::WorkFile> m_work;
    RowCounts m_counts;
};

struct RestoreOutcome {
    QString safetyCopy;  // the archive of the data as it stood before
    RowCounts counts;
};

// Replaces the data of db with a prepared archive: first a checked safety copy of the data as it
// stands, named by now, in safetyFolder; then every table emptied and filled from the archive in
// one transaction under the write lock. Restored rows get a row_version above any the table had,
// so a screen still holding a row read before the restore cannot overwrite it. On any failure the
// data stays as it was.
Checked<RestoreOutcome> restoreArchive(QSqlDatabase db, const PreparedArchive &archive, const QString &safetyFolder,
                                       const QDateTime &now, const ArchiveProgress &progress = {});

}
