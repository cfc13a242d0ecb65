#pragma once

#include "core/usermessage.h"

#include <QString>
#include <QStringList>

class QApplication;

namespace zarek {

struct StartOptions {
    QString database;       // --database: a SQLite file or postgresql://…
    int demoCourses = 6000; // --demo-courses: size of the demo database, when the first start asks for it
};

StartOptions parseStartOptions(const QStringList &arguments);

// The refusal of a database text that names no database; a password in it shows as ***.
UserMessage badDatabaseTextMessage(const QString &text);

// From the command line to the main window's event loop; returns the process exit code.
int runZarek(QApplication &app);

}
