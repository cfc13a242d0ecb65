#pragma once

#include "core/usermessage.h"

#include <QHash>
#include <QList>
#include <QString>
#include <optional>

// The attestation of a driver's activities (ДАИ): what the firm declares about a driver for a
// period in which the tachograph recorded nothing. Nothing of it is stored.
namespace zarek {

// The two published forms: the one of Decision 2007/230/EC (18 items, three reasons), the
// program's own since its first version, and the one in use since 2010, Decision 2009/959/EU
// (22 items, six reasons).
enum class AttestationForm { Decision2007, Decision2009 };

// Why the driver has no records for the period. An attestation states one reason.
enum class AttestationReason { None, SickLeave, AnnualLeave, LeaveOrRest, ExemptVehicle, OtherWork, Available };

// The reasons a form offers, in the order of its items.
QList<AttestationReason> attestationReasons(AttestationForm form);

// What the sheet states, as the screen shows it.
struct AttestationSheet {
    AttestationForm form = AttestationForm::Decision2007;
    QString driverName;  // empty until a driver is picked
    QString birthDate;   // "02.01.1975"; empty when the personal number gives none
    QString card;        // identity card number
    QString periodFrom;  // as typed
    QString periodTo;
    QString hourFrom = QStringLiteral("00:00");  // the hour the period begins on its first day
    QString hourTo = QStringLiteral("24:00");    // and ends on its last: the whole last day by default
    QString startedOn;   // the day the driver started at the firm (the 2009 form only), as typed
    AttestationReason reason = AttestationReason::None;
};

// hour + " на " + the typed day + " г.": a bound of the period as the sheet writes it.
QString attestationPeriodText(const QString &hour, const QString &typed);

// A typed hour as the sheet writes it, "HH:MM" from 00:00 to 24:00 ("8" and "8.30" are 08:00 and
// 08:30); none for anything else.
std::optional<QString> attestationHour(const QString &typed);

// Why the sheet may not be printed: no reason ticked, no item 11 (the day the driver started at
// the firm on the form of 2009, the period's first day on that of 2007), or an hour of the
// period that is not one. The first such fault, as the message that says what to fill in.
std::optional<UserMessage> attestationRefusal(const AttestationSheet &sheet);

// The texts of the screen for a form, by the name of the label or check box that shows them.
const QHash<QString, QString> &attestationScreenTexts(AttestationForm form);

}
