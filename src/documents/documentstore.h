#pragma once

#include "core/usermessage.h"
#include "data/rowset.h"
#include "documents/documentrules.h"
#include "forms/recordstore.h"

#include <QByteArray>
#include <QDate>
#include <QList>
#include <QPair>
#include <QSqlDatabase>
#include <QStringList>
#include <memory>
#include <optional>

namespace zarek::documents {

// A scanned copy as listed: its file name and size (the bytes are read only when opened).
struct ScanInfo {
    QString name;
    qint64 size = 0;
    bool operator==(const ScanInfo &) const = default;
};

// The SQL of the documents (Dokumenti), their kinds (DokVid) and scanned copies (DokScan).
// Every value is a bound parameter; writes that belong together are one transaction whose first
// statement writes, so that on SQLite the write lock is taken before anything is read.
class DocumentStore {
public:
    explicit DocumentStore(QSqlDatabase db);

    // The kinds, by holder then name.
    Checked<QList<DocumentKind>> kinds() const;
    // The kinds for their record form; a kind's name is its key and is not changed once written.
    std::unique_ptr<RecordStore> kindRows() const;
    // A kind is deleted only while no document is of it.
    std::optional<UserMessage> removeKind(const RecordRow &row, const QString &errorTitle) const;

    // The documents for the record form: by holder, kind and validity; renewed ones too (history).
    std::unique_ptr<RecordStore> documents() const;

    // Writes a document (a new one has id 0) with its holder's kind of the kind's; the store
    // refuses what the form refuses. A renewal also marks the document it renews (at the version
    // read) as renewed, in the same transaction. The row as written.
    Checked<RecordRow> save(const RecordRow &row, bool adding, const QList<DocumentKind> &kinds, const QDate &today,
                            const std::optional<RecordRow> &renewed, const QString &errorTitle) const;
    // Deletes a document with its scanned copy, at the version read.
    std::optional<UserMessage> remove(const RecordRow &row, const QString &errorTitle) const;

    // The documents of one kind and holder, newest first: the history a renewal keeps.
    Checked<QList<RecordRow>> history(const QString &kind, Holder holder, const QString &key) const;

    // The scanned copy of a document, if any.
    Checked<std::optional<ScanInfo>> scanInfo(qint64 documentId) const;
    Checked<QByteArray> scanData(qint64 documentId) const;
    // Keeps the file as the document's scanned copy, replacing the one it had; a file over
    // maxScanBytes is refused and nothing is written.
    std::optional<UserMessage> attachScan(qint64 documentId, const QString &fileName, const QByteArray &data) const;
    std::optional<UserMessage> removeScan(qint64 documentId) const;

    // Every document expired or due on that day, the soonest deadline first: id, Sastoianie
    // (text), Iztekal (yes/no), Vid, Za, Kod, Pritejatel, Nomer, Valid, DoKoga (the day to act),
    // Ostavat (days left to it, negative when past).
    Checked<RowSet> dueList(const QDate &today) const;
    // How many there are, and how many of them expired.
    Checked<QPair<int, int>> dueCount(const QDate &today) const;

    // What the holder boxes offer: the trucks' numbers, the drivers' codes and names.
    QStringList trucks() const;
    QList<QPair<QString, QString>> drivers() const;

    // Documents held by a truck or a driver.
    Checked<int> holderDocumentCount(Holder holder, const QString &key) const;
    // Deletes a truck (Config) or a driver (shof) row at the version read, with the documents and
    // scanned copies it holds, in one transaction.
    std::optional<UserMessage> removeHolder(Holder holder, const RecordRow &row, const QString &errorTitle) const;

private:
    QSqlDatabase m_db;
};

// The question before deleting a truck (Config row) or driver (shof row) that holds documents,
// with their count; none when it holds none (the usual questions then). A count that cannot be
// read asks too, without the number.
std::optional<UserMessage> holderDeleteQuestionFor(QSqlDatabase db, Holder holder, const RecordRow &row);

}
