#pragma once

#include "core/usermessage.h"

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
    // What an invoice needs beside the address: the account paid into, the place of issue and the
    // person who draws invoices up. Trimmed; empty when not given.
    QString UserIBAN;
    QString UserBank;
    QString UserBIC;
    QString UserMiasto;
    QString UserSastavil;
    bool operator==(const FirmProfile &) const = default;
};

// The message for the required field of this position: name, address, town, telephone, GSM.
UserMessage requiredFirmFieldMessage(int position);

// The required fields of the firm, in their order, with the firm profile screen's messages.
std::optional<UserMessage> checkRequiredFirmFields(const FirmProfile &firm);

// "Зарек 2.3.4 - " and the firm's name.
QString mainWindowTitle(const FirmProfile &profile);

}
