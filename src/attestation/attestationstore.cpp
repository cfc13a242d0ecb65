#include "attestationstore.h"

#include "data/sqlerror.h"

#include <QSqlQuery>
#include <QVariant>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

}

Checked<QStringList> attestationDriverNames(QSqlDatabase db)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    if (!query.exec(QStringLiteral("SELECT ime FROM shof ORDER BY kod, id")))
        return sqlErrorMessage(readTitle, query.lastError());
    QStringList names;
    while (query.next())
        names.append(query.value(0).toString());
    return names;
}

Checked<std::optional<AttestedDriver>> findAttestationDriver(QSqlDatabase db, const QString &name)
{
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT ime, EGN, LKarta FROM shof WHERE ime = ? ORDER BY kod, id"));
    query.addBindValue(name);
    if (!query.exec())
        return sqlErrorMessage(readTitle, query.lastError());
    if (!query.next())
        return std::optional<AttestedDriver>();
    return std::optional<AttestedDriver>(
        AttestedDriver{query.value(0).toString(), query.value(1).toString(), query.value(2).toString()});
}

}
