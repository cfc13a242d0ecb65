#pragma once

#include "core/firmprofile.h"

#include <array>

namespace zarek {

// The eleven boxes of the firm's data, in screen order: object name, label, profile field.
struct FirmField {
    const char *objectName;
    const char *label;
    QString FirmProfile::*member;
};

inline const std::array<FirmField, 11> &firmFields()
{
    static const std::array<FirmField, 11> fields = {{
        {"txtFirmaName", "Име:", &FirmProfile::UserName},
        {"txtFirmaAdres", "Адрес:", &FirmProfile::UserAdres},
        {"txtFirmaCity", "Град:", &FirmProfile::UserCity},
        {"txtFirmaTel", "Телефон:", &FirmProfile::UserTel},
        {"txtFirmaFax", "GSM:", &FirmProfile::UserGSM},
        {"txtFirmaMOL", "МОЛ:", &FirmProfile::UserMOL},
        {"txtFirmaBULSTAT", "БУЛСТАТ:", &FirmProfile::UserBULSTAT},
        {"txtFirmaDanN", "Дан.№:", &FirmProfile::UserDanN},
        {"txtFirmaEmail", "E-mail:", &FirmProfile::UserEmail},
        {"txtFirmaCountry", "Държава:", &FirmProfile::UserCountry},
        {"txtFirmaURL", "URL:", &FirmProfile::UserURL},
    }};
    return fields;
}

// The five boxes of what an invoice needs of the firm beside its address, under the eleven.
inline const std::array<FirmField, 5> &invoiceFirmFields()
{
    static const std::array<FirmField, 5> fields = {{
        {"txtFirmaIBAN", "IBAN:", &FirmProfile::UserIBAN},
        {"txtFirmaBank", "Банка:", &FirmProfile::UserBank},
        {"txtFirmaBIC", "BIC:", &FirmProfile::UserBIC},
        {"txtFirmaMiasto", "Място на издаване:", &FirmProfile::UserMiasto},
        {"txtFirmaSastavil", "Съставил:", &FirmProfile::UserSastavil},
    }};
    return fields;
}

}
