#pragma once

#include <QString>

// The program's version, defined once; titles and the about box read it from here.
namespace zarek::version {
inline constexpr int major = 2;
inline constexpr int minor = 3;
inline constexpr int revision = 4;

inline QString text() { return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(revision); }
// The program's home page, opened by "Интернет-страница".
inline QString homePage() { return QStringLiteral("https://www.zarek.bg/"); }
inline QString majorMinor() { return QStringLiteral("%1.%2").arg(major).arg(minor); }
}
