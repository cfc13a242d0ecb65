#pragma once

#include "core/firmprofile.h"

namespace zarek::test {

// The firm on the papers the tests lay out: every field of the report headers filled.
inline FirmProfile exampleFirm()
{
    FirmProfile firm;
    firm.UserName = QStringLiteral("Транспорт Петров ЕООД");
    firm.UserCity = QStringLiteral("София");
    firm.UserAdres = QStringLiteral("ул. Искър 12");
    firm.UserTel = QStringLiteral("02 987 65 43");
    firm.UserGSM = QStringLiteral("0888 123 456");
    firm.UserEmail = QStringLiteral("office@petrov.bg");
    firm.UserURL = QStringLiteral("www.petrov.bg");
    return firm;
}

// The same firm as the attestation asks it: with its country and the person who signs for it.
inline FirmProfile exampleAttestingFirm()
{
    FirmProfile firm = exampleFirm();
    firm.UserCountry = QStringLiteral("България");
    firm.UserMOL = QStringLiteral("Петър Петров");
    return firm;
}

}
