#pragma once

#include "core/currency.h"
#include "core/dates.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "settlement/progress.h"

#include <QDate>
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

// One course on a driver's pay sheet.
struct PaySheetLine {
    int red = 0;  // running number from 1
    QDate data;
    QString kola;
    double ton = 0;
    double km = 0;
    double bruto = 0;
    QString marsh;
    QString tovar;
    ExactPay pay;  // as computed, before rounding
    Currency currency = Currency::Leva;  // of the course's day: its sum and pay

    Money zaplata() const { return pay.rounded(); }
};

// What a driver earned on his courses, and what his receipt names him by.
struct PaySheet {
    QString kod;
    QString name;
    QString egn;
    QString lKarta;
    Period period;
    QList<PaySheetLine> lines;
    // The pay is paid today: in today's currency, and in euro also when any course is.
    Currency currency = Currency::Leva;
    ExactPay total;       // the pay of the lines in the sheet's currency added up unrounded: printed,
                          // it may differ from the printed lines' sum
    ExactPay otherTotal;  // the pay of the lines in the other currency, added up the same way
    Changeover changeover;  // the books it was priced by

    // Lines of both currencies: each amount shows its unit, and a note stands under the total.
    bool mixed() const;
    // The total paid: pay earned in leva and paid in euro is converted once for the driver and
    // rounded up to the cent.
    Money printedTotal() const;
};

// The pay of the sheet's lines (data, kola, ton and bruto given) by their trucks' percent and rated
// load, added up by currency. The sheet is paid on the day today, in its currency, or in the
// currency given (a screen that already shows its sum in one). Every figure a driver is paid by
// comes from here: the pay sheet and the running sum of the payment screen. Refused at the first
// line of a truck without a percent, with "Няма зададен процент за кола № … !". Progress is told
// line by line, of all the sheet's lines.
std::optional<UserMessage> pricePaySheet(PaySheet &sheet, const QList<PayTruck> &trucks, const BooksDay &books,
                                         std::optional<Currency> currency = std::nullopt,
                                         const WorkProgress &progress = {});

// "Няма зададен процент за кола № " + number + " !" under "ВНИМАНИЕ!"
UserMessage noPercentMessage(const QString &kola);

}
