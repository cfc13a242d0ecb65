#include "attestationstore.h"

#include "data/query.h"
#include "data/sqlerror.h"

#include <QVariant>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

}

Checked<QStringList> attestationDriverNames(QSqlDatabase db)
{
    Query query(db, QStringLiteral("SELECT ime FROM shof ORDER BY kod, id"));
    if (auto failure = query.run(readTitle))
        return *failure;
    QStringList names;
    while (query.next())
        names.append(query.value(0).toString());
    return names;
}

Checked<std::optional<AttestedDriver>> findAttestationDriver(QSqlDatabase db, const QString &name)
{
    Query query(db, QStringLiteral("SELECT ime, EGN, LKarta FROM shof WHERE ime = ? ORDER BY kod, id"));
    if (auto failure = query.run(readTitle, {name}))
        return *failure;
    if (!query.next())
        return std::optional<AttestedDriver>();
    return std::optional<AttestedDriver>(
        AttestedDriver{query.value(0).toString(), query.value(1).toString(), query.value(2).toString()});
}

}
