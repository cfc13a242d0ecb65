#pragma once

#include "core/firmprofile.h"
#include "core/usermessage.h"

#include <QSqlDatabase>
#include <optional>

namespace zarek {

// The outcome of reading the firm's row: the profile, or the message on which the program stops.
struct FirmProfileLoad {
    std::optional<FirmProfile> profile;
    std::optional<UserMessage> stopMessage;
};

// Reads the first row of ZarekCfg. Required fields are trimmed; optional ones are trimmed, or a
// single blank when empty, so reports never meet an empty value. No row: "Липсват данни!".
FirmProfileLoad LoadFirmProfile(QSqlDatabase &db);

// The firm's row as the profile screen holds it: its values and the version it was read at.
struct FirmRow {
    qint64 id = 0;
    int rowVersion = 0;
    FirmProfile profile;
};

// The first row of ZarekCfg, read as LoadFirmProfile reads it; none when the table is empty.
std::optional<FirmRow> readFirmRow(QSqlDatabase db);

// Writes all eleven columns in one statement, unless another user changed the row meanwhile.
std::optional<UserMessage> writeFirmRow(QSqlDatabase db, const FirmRow &row);

// The OK of the profile screen: required fields in order, each stored into the profile as soon as
// it passes; then the optional ones, a single blank when empty. The message of the first empty one.
std::optional<UserMessage> acceptFirmFields(const FirmProfile &typed, FirmProfile &profile);

}
