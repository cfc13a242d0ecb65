#pragma once

#include "core/usermessage.h"
#include "data/rowset.h"

#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <functional>
#include <memory>
#include <optional>

class QLockFile;

namespace zarek {

// The scratch database: a private SQLite file for one running copy of Zarek, where reports and
// result screens lay out their rows. Each copy takes a file of its own (process id and a counter
// in the name, held by a lock file), so two copies never share one; the files of a copy that
// died are removed when the next copy opens its own.
class ScratchDatabase {
public:
    explicit ScratchDatabase(QString folder = defaultFolder());
    ~ScratchDatabase();  // closes and removes the file
    ScratchDatabase(const ScratchDatabase &) = delete;
    ScratchDatabase &operator=(const ScratchDatabase &) = delete;

    // Removes stale files of dead copies, then makes and opens this copy's file.
    std::optional<UserMessage> open();
    bool isOpen() const;
    QString filePath() const { return m_path; }
    QString folder() const { return m_folder; }
    QSqlDatabase db() const;

    // Empties the database and creates the named table with its columns (TempKlients brings
    // TempKlientsNew with it). Whatever an earlier rebuild made is gone.
    std::optional<UserMessage> RebuildScratchTable(const QString &name);

    // A scratch sheet: the named table made anew (as RebuildScratchTable), filled with rows and read
    // back by readBack, a SELECT on it.
    Checked<RowSet> layOut(const QString &table, const QStringList &columns, const QList<QVariantList> &rows,
                           const QString &readBack);

    // Closes the connection; the file is removed when asked (as at the program's end).
    void close(bool removeFile = true);

    // The per-user folder of scratch files.
    static QString defaultFolder();
    // Removes the scratch files in the folder whose copy of Zarek is no longer running.
    static int removeStaleFiles(const QString &folder);

private:
    QString m_folder;
    QString m_path;
    QString m_connection;
    std::unique_ptr<QLockFile> m_lock;
};

// The rows of a scratch table replaced by rows (each holding the columns' values in order), in
// one transaction, many rows to a statement; a failure is the error box titled title. progress is
// told the rows written as they go.
std::optional<UserMessage> fillScratchTable(QSqlDatabase scratch, const QString &title, const QString &table,
                                            const QStringList &columns, const QList<QVariantList> &rows,
                                            const std::function<void(int)> &progress = {});

}
