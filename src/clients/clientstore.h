#pragma once

#include "core/usermessage.h"
#include "forms/recordstore.h"

#include <QSqlDatabase>
#include <QStringList>
#include <memory>
#include <optional>

namespace zarek::clients {

// The SQL of the client register (Klienti). Every value is a bound parameter; the store refuses
// what the register's form refuses, and a name is written once (a unique index guards it too).
class ClientStore {
public:
    explicit ClientStore(QSqlDatabase db);

    // The clients for the record form, by name.
    std::unique_ptr<RecordStore> rows() const;
    // Writes a client (a new one has id 0) after the checks of checkClient and the unique name,
    // at the version read. The row as written; nothing is written when it is refused.
    Checked<RecordRow> save(const RecordRow &row, bool adding, const QString &errorTitle) const;
    // A new client with only its name (the course editor's new client): its id.
    Checked<qint64> addName(const QString &name, const QString &errorTitle) const;
    // The id of the client of that name (trimmed), or 0 when the register has none.
    Checked<qint64> idOf(const QString &name) const;
    // The names of the register, in order.
    Checked<QStringList> names() const;

private:
    QSqlDatabase m_db;
};

}
