#pragma once

#include "core/usermessage.h"
#include "forms/recordstore.h"
#include "international/triprules.h"

#include <QSqlDatabase>
#include <QStringList>
#include <memory>

namespace zarek {

// The SQL of the international trips (ExternalKurs) and of their firms address book (Firms).
// Every value is a bound parameter; a trip and the firms it adds are written together or not at all.
class TripStore {
public:
    explicit TripStore(QSqlDatabase db);

    // The trips for the editor, by CMR number, then in the order they were entered.
    std::unique_ptr<RecordStore> trips() const;

    // Whether a trip other than exceptId (0: none) carries this number already.
    Checked<bool> numberTaken(const QString &number, qint64 exceptId = 0) const;

    // Adds the firm, its parts trimmed, unless a row with the same four parts is there already.
    std::optional<UserMessage> addFirm(const FirmAddress &firm, const QString &errorTitle) const;

    // Writes a trip (a new one has id 0) with its sender and receiver added to the address book,
    // in one transaction; a number another trip carries is refused. The row as written.
    Checked<RecordRow> save(const RecordRow &row, bool adding, const QString &errorTitle) const;

    // The address book, by name.
    Checked<QList<FirmAddress>> firms() const;

    // What the lists of the editor offer: drivers' names, tractors (the fleet) and the trailers
    // of earlier trips; sorted, blanks left out.
    QStringList driverNames() const;
    QStringList tractors() const;
    QStringList trailers() const;

private:
    QStringList column(const QString &sql) const;

    QSqlDatabase m_db;
};

}
