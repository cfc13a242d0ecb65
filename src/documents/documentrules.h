#pragma once

#include "core/usermessage.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <optional>

// The rules of the documents of trucks and drivers: what each kind is valid for, when a document
// is due, what its renewal proposes, and what a document must have to be written.
namespace zarek::documents {

// Who holds a document: a truck (its number in Config) or a driver (his code in shof).
enum class Holder { Truck, Driver };
QString holderCode(Holder holder);                       // "K", "S": the column Za
std::optional<Holder> holderOfCode(const QString &code);
QString holderName(Holder holder);                       // "Кола", "Шофьор"

// A kind of document (a row of DokVid): its usual validity in months and days (both 0: it does
// not expire), how many days before the deadline to warn, and for a renewal that must be
// requested ahead (the driver card) how many working days before expiry the request is due.
struct DocumentKind {
    qint64 id = 0;
    QString name;
    Holder holder = Holder::Truck;
    int months = 0;
    int days = 0;
    int warnDays = 30;
    int requestWorkDays = 0;
    bool remind = true;

    bool expires() const { return months > 0 || days > 0; }
    bool operator==(const DocumentKind &) const = default;
};

// The kinds a Bulgarian haulier keeps, with their usual validity, as a new database starts.
const QList<DocumentKind> &standardKinds();

// The validity a document of that kind issued (or done, for a download) on that day is proposed:
// a period of months ends the day before the same date, a period of days on the day it reaches.
// No date for a kind that does not expire.
QDate proposedValidUntil(const DocumentKind &kind, const QDate &issuedOn);

// The last day to act on a document: its expiry, or for a renewal requested ahead the day that
// many working days before it.
QDate actByDate(const DocumentKind &kind, const QDate &validUntil);
// The first day it is warned of: warnDays before the day to act.
QDate warningDate(const DocumentKind &kind, const QDate &validUntil);

enum class DueState { NotDue, Due, Expired };
// Expired the day after its expiry; due from the warning day to the expiry; a kind that does not
// remind, or a document with no expiry, is never due.
DueState dueState(const DocumentKind &kind, const QDate &validUntil, const QDate &today);
// How the due list says it: "Изтекъл", "Изтича".
QString dueStateText(DueState state);

// The columns of Dokumenti the form binds, in the order of its boxes.
const QStringList &documentColumns();
QStringList documentDateColumns();

// The checks of a save over the typed texts, in box order: kind, holder, dates, validity not
// before the issue, a kind that expires needs its validity. The first fault stops the save.
std::optional<UserMessage> checkDocument(const QVariantMap &typed, const std::optional<DocumentKind> &kind,
                                         const QDate &today);

// A scanned copy is kept in the database up to this size.
inline constexpr qint64 maxScanBytes = 10 * 1024 * 1024;
// A copy over the size, refused with its size told; nothing is written.
std::optional<UserMessage> checkScanSize(qint64 bytes);
// "1,5 MB", "820 KB"
QString sizeText(qint64 bytes);

// The question before a truck or a driver holding documents is deleted (default "Не").
UserMessage holderDeleteQuestion(Holder holder, const QString &key, int documents);

}
