#pragma once

#include <QString>
#include <QStringList>

// The small text routines every screen shares. Texts are trimmed before they are measured.
namespace zarek {

// True when the trimmed text is empty.
bool IsBlank(const QString &text);

// 1 when the trimmed text is longer than limit, -1 when shorter, 0 when exactly as long.
int LenCheck(const QString &text, int limit);

// True when the text is empty or the number read from its 4th and 5th characters is above 12
// or below 0. Only the month field of dd.mm.yyyy is looked at; "00" and non-digits pass.
bool BadMonth(const QString &text);

// 0 when the text stands in the list, -1 when it does not (a yes-or-no code, not a position).
int FindInArray(const QString &text, const QStringList &list);

// A search's prefix of a route, cargo, truck or name: a blank prefix matches everything; the rest
// compares trimmed and without regard to case, the same on every engine.
bool matchesPrefix(const QString &value, const QString &prefix);

}
