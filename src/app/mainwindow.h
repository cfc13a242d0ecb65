#pragma once

#include "app/firmprofile.h"
#include "data/databaseconfig.h"

#include <QMainWindow>

namespace zarek {

// The program's main window: title by the firm's name, the commands in its menus.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    MainWindow(const FirmProfile &profile, const DatabaseConfig &database, QWidget *parent = nullptr);

    const FirmProfile &firmProfile() const { return m_profile; }

private:
    FirmProfile m_profile;
};

}
