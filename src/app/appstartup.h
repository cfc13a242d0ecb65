#pragma once

#include <QString>
#include <QStringList>

class QApplication;

namespace zarek {

struct StartOptions {
    QString database;       // --database: a SQLite file or postgresql://…
    bool empty = false;     // --empty: a new database gets only its tables, no demo data
    int demoCourses = 6000; // --demo-courses: size of the demo database made on first start
};

StartOptions parseStartOptions(const QStringList &arguments);

// From the command line to the main window's event loop; returns the process exit code.
int runZarek(QApplication &app);

}
