#pragma once

#include "data/databaseconfig.h"

#include <QDialog>

namespace zarek {

// The program's name, version and maker; "Система..." tells what it runs on.
class About : public QDialog {
    Q_OBJECT
public:
    explicit About(const DatabaseConfig &database, QWidget *parent = nullptr);

    // Program version, Qt version, operating system and the database in use.
    static QString systemInformation(const DatabaseConfig &database);
};

// The window shown for the moment before sign-in.
class Splash : public QWidget {
    Q_OBJECT
public:
    explicit Splash(QWidget *parent = nullptr);
};

QString signedInSystemUser();

}
