#pragma once

#include "core/usermessage.h"

#include <QSqlDatabase>
#include <QStringList>
#include <optional>

namespace zarek {

// What the attestation takes from a driver's row of shof.
struct AttestedDriver {
    QString name;
    QString egn;
    QString card;
};

// The names of the drivers in the order of their codes.
Checked<QStringList> attestationDriverNames(QSqlDatabase db);

// The driver of this name (the first by code when two share it); none when no row has it.
Checked<std::optional<AttestedDriver>> findAttestationDriver(QSqlDatabase db, const QString &name);

}
