#pragma once

#include "core/usermessage.h"

#include <QString>
#include <QStringList>

#include <future>

class QApplication;

namespace zarek {

struct StartOptions {
    QString database;       // --database: a SQLite file or postgresql://…
    int demoCourses = 6000; // --demo-courses: size of the demo database, when the first start asks for it
    // --probe-start (not in the help): the first window that shows is named on the standard output
    // and closed, which ends the run; the package check starts the installed program so.
    bool probeStart = false;
    // --help, --version or a wrong argument: the text to print instead of starting, and the exit code.
    QString answer;
    int answerExitCode = 0;
    bool answers() const { return !answer.isEmpty(); }
};

StartOptions parseStartOptions(const QStringList &arguments);

// What "zarek --help" prints.
QString commandLineHelp();

// The refusal of a database text that names no database; a password in it shows as ***.
UserMessage badDatabaseTextMessage(const QString &text);

// Reads the fonts (fontconfig's files, the longest step of any first window) on a thread of its
// own, from the moment the application exists, while the start does its other work; the first
// window waits for them only if they are late.
std::future<void> startReadingFonts();

// From the command line to the main window's event loop; returns the process exit code.
int runZarek(QApplication &app, const StartOptions &options, std::future<void> fonts);

}
