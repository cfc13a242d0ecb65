#pragma once

#include "usermessage.h"

#include <QSqlDatabase>
#include <QString>
#include <optional>

namespace zarek {

// The firm's own data, printed on every report and shown in the main window's title.
struct FirmProfile {
    QString UserName;
    QString UserAdres;
    QString UserTel;
    QString UserGSM;
    QString UserCity;
    QString UserMOL;
    QString UserBULSTAT;
    QString UserDanN;
    QString UserEmail;
    QString UserCountry;
    QString UserURL;
    bool operator==(const FirmProfile &) const = default;
};

// The outcome of reading the firm's row: the profile, or the message on which the program stops.
struct FirmProfileLoad {
    std::optional<FirmProfile> profile;
    std::optional<UserMessage> stopMessage;
};

// Reads the first row of ZarekCfg. Required fields are trimmed; optional ones are trimmed, or a
// single blank when empty, so reports never meet an empty value. No row: "Липсват данни!".
FirmProfileLoad LoadFirmProfile(QSqlDatabase &db);

// "Зарек 2.3.4 - " and the firm's name.
QString mainWindowTitle(const FirmProfile &profile);

}
