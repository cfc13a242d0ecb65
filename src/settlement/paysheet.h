#pragma once

#include "core/money.h"

#include <QList>
#include <QString>
#include <QtGlobal>

// The rules of a driver's pay: his percent of a course's gross sum, less a fifth of it for every
// whole tonne loaded above the truck's rated load.
namespace zarek {

// A pay figure kept exact below the stotinka: whole cents and a remainder in parts of a cent.
// A course's pay has up to ten decimals of a lev (cents × hundredths of a percent × fifths), so it
// is added up without loss and rounded once, half to even.
class ExactPay {
public:
    static constexpr qint64 partsPerCent = 100'000'000;

    constexpr ExactPay() = default;
    // cents + parts / partsPerCent; parts may be negative or larger than a cent.
    static ExactPay fromParts(qint64 cents, qint64 parts);

    // Rounded half to even to the stotinka.
    Money rounded() const;
    // For comparisons in tests and for figures printed as they stand.
    double toDouble() const;

    ExactPay operator+(ExactPay other) const { return fromParts(m_cents + other.m_cents, m_parts + other.m_parts); }
    ExactPay &operator+=(ExactPay other) { return *this = *this + other; }
    bool operator==(const ExactPay &) const = default;

private:
    qint64 m_cents = 0;
    qint64 m_parts = 0;  // 0 <= parts < partsPerCent
};

// Whole tonnes above the rated load; loads are compared to the kilogram, as tonnes are kept to
// three decimals, so 21,100 t on a truck of 20,100 t is one whole tonne over.
int overloadTonnes(double ton, double ratedTon);

// A course's pay: bruto × percent / 100, less 20 % of that for each whole tonne of overload. Not
// limited below: five tonnes over pay nothing, six pay a fifth of the base back.
ExactPay coursePay(double bruto, double percent, double ton, double ratedTon);

// A truck's row of Config: its number, the driver's percent and the rated load.
struct PayTruck {
    QString kola;
    double percent = 0;
    double ratedTon = 0;
};

// The percent and rated load of a truck by its trimmed number; of two rows for one truck the later
// one counts. A truck that is not there has percent 0.
PayTruck payTruckFor(const QList<PayTruck> &trucks, const QString &kola);

}
