#pragma once

#include <QDate>

#include "core/firmprofile.h"
#include "core/searchmode.h"
#include "data/databaseconfig.h"
#include "forms/commandday.h"

#include <QHash>
#include <QMainWindow>
#include <QPointer>
#include <QSqlDatabase>
#include <any>
#include <functional>
#include <memory>

class QAction;
class QLabel;
class QSettings;
class QTimer;
class QToolBar;

namespace zarek {

class CommandRegistry;
class ScratchDatabase;
namespace dashboard {
class Tablo;
}

// The one window from sign-in to the end of the run: menu bar, toolbar and status bar; every
// screen opens as a window of its own from its commands.
class FrmMain : public QMainWindow {
    Q_OBJECT
public:
    FrmMain(const FirmProfile &profile, const DatabaseConfig &database, QSqlDatabase db, const QString &userVid,
            QWidget *parent = nullptr);
    ~FrmMain() override;

    QAction *menuAction(const QString &name) const { return m_actions.value(name); }
    QString panelText(int panel) const;
    SearchMode searchMode() const;
    const FirmProfile &firmProfile() const { return m_profile; }

    // The settings store of the window; tests point it at a file of their own.
    static void setSettingsFile(const QString &path);

    // The help topic shown now, 0 when the help is closed.
    int shownHelpTopic() const;

    // "Табло", the client area: the month's figures, read again after every change of the register.
    dashboard::Tablo *tablo() const { return m_tablo; }

    // After sign-in: the short notice of the documents due, unless the user switched it off.
    bool showDueNotice(const QString &user, const QDate &today = commandToday());

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildMenus();
    void buildToolbar();
    void buildStatusBar();
    void restoreSettings();
    void storeSettings();
    void applyRights(const QString &userVid);
    void refreshChangeover();
    void route();
    void setPanel(const QString &text);
    void showHelp(int topic);

    void registerShellCommands();
    void buildDashboard();
    // A command's target run with conditions another screen gives (a tile of the dashboard);
    // nothing when the command has none.
    bool runTarget(const QString &menuItem, const std::any &conditions);

    std::unique_ptr<QSettings> settings() const;

    FirmProfile m_profile;
    DatabaseConfig m_database;
    QSqlDatabase m_db;
    std::unique_ptr<CommandRegistry> m_commands;
    QHash<QString, QAction *> m_actions;
    QToolBar *m_toolBar = nullptr;
    QList<QLabel *> m_panels;
    std::unique_ptr<ScratchDatabase> m_scratch;
    QPointer<QWidget> m_help;
    dashboard::Tablo *m_tablo = nullptr;
    QTimer *m_dashboardRefresh = nullptr;
};

}
