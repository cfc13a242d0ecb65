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

// The firm of the balance and statement papers, in Перник; one object, for screens that keep a
// reference to the firm they print.
inline const FirmProfile &pernikFirm()
{
    static const FirmProfile profile = [] {
        FirmProfile f;
        f.UserName = QStringLiteral("Транспорт Петров ЕООД");
        f.UserCity = QStringLiteral("Перник");
        f.UserAdres = QStringLiteral("ул. Индустриална 14");
        f.UserTel = QStringLiteral("076 60 11 22");
        f.UserGSM = QStringLiteral("0888 11 22 33");
        f.UserEmail = QStringLiteral("office@petrov.bg");
        f.UserURL = QStringLiteral("www.petrov.bg");
        return f;
    }();
    return profile;
}

// The same firm as the attestation asks it: with its country and the person who signs for it.
inline FirmProfile exampleAttestingFirm()
{
    FirmProfile firm = exampleFirm();
    firm.UserCountry = QStringLiteral("България");
    firm.UserMOL = QStringLiteral("Петър Петров");
    return firm;
}

// A firm with the fields the first start asks for, the rest left empty.
inline FirmProfile firmOf(const QString &name, const QString &address, const QString &city, const QString &telephone,
                          const QString &gsm)
{
    FirmProfile firm;
    firm.UserName = name;
    firm.UserAdres = address;
    firm.UserCity = city;
    firm.UserTel = telephone;
    firm.UserGSM = gsm;
    return firm;
}

}
