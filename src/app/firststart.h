#pragma once

#include "core/firmprofile.h"
#include "core/usermessage.h"
#include "forms/commandday.h"

#include <QDate>
#include <QSqlDatabase>
#include <optional>

namespace zarek {

// What a database holds, for the start-up to decide what it is.
struct StartState {
    bool hasFirm = false;  // a row in ZarekCfg
    bool hasUser = false;  // a row in Users
    bool hasData = false;  // a row in any of the main tables

    // New for Zarek: no firm row or no user. The first-start dialog asks for what is missing.
    bool needsFirstStart() const { return !hasFirm || !hasUser; }
};

StartState readStartState(QSqlDatabase db);
bool needsFirstStart(QSqlDatabase db);

// Brings the schema up to date and reads what the database holds, both under one write lock, so
// that of two copies starting at once each sees what the other has finished; a database already
// at this program's schema is read in one statement without the lock.
Checked<StartState> prepareDatabase(QSqlDatabase db);

// Writes what a new database lacks, the firm's row and the first administrator (kind "A"), in one
// transaction under the write lock, after reading again what is there: a firm row that another
// copy wrote meanwhile is kept (and its fields are not asked for), and when a user exists by now
// nothing is written and the message says so. The name and the password are required. A new firm
// may keep its books in euro from the start: its changeover is recorded with it (from the day the
// euro came, or from today if that is earlier), and there is nothing to convert.
std::optional<UserMessage> createFirmAndAdministrator(QSqlDatabase db, const FirmProfile &firm,
                                                       const QString &adminName, const QString &password,
                                                       bool euroFromStart = false,
                                                       const QDate &today = commandToday());

// The refusals of the first start.
UserMessage administratorExistsMessage();
UserMessage databaseHoldsDataMessage();

}
