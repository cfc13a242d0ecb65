#pragma once

#include <QString>

namespace zarek {

// What a caption names, without the program's name, version and dash it may begin with:
// "Зарек 2.3 - Шофьори" and "Зарек – Шофьори" both name "Шофьори"; "Зарек 2.3.4" names nothing.
QString screenOfCaption(const QString &caption);

// The title of a window of the program: "Зарек – <screen>", or "Зарек" for a caption that names nothing.
QString screenTitle(const QString &caption);

// A file name made of a text: characters no file system takes become a dash, spaces are simplified.
QString fileNameOf(const QString &text);

}
