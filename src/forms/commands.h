#pragma once

#include "core/firmprofile.h"
#include "core/searchmode.h"

#include <QHash>
#include <QPointer>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <any>
#include <functional>

class QDialog;
class QWidget;

namespace zarek {

class ScratchDatabase;

// What every command of the main window works with: the database, the firm's data as it is now,
// this copy's scratch database and the main window that screens open over.
struct CommandContext {
    QSqlDatabase db;
    ScratchDatabase *scratch = nullptr;
    QWidget *window = nullptr;
    std::function<const FirmProfile &()> firm;
    // Text of the status bar's first panel.
    std::function<void(const QString &)> setPanel;
    std::function<QString()> panel;
    // The help topic of a menu command (0 for none).
    std::function<int(const QString &menuItem)> helpTopic;
    // Another command's profile change (firm profile screen) told to the main window.
    std::function<void(const FirmProfile &)> firmChanged;
    // The task of the last command that asked for it (the screens and dialogs after it read it).
    SearchMode searchMode = SearchMode::NewKurs;
};

// The commands of the menu bar and toolbar, by menu item name. Each subsystem adds its commands
// in its own register function; a command that is not added stays in the menu, disabled.
class CommandRegistry {
public:
    using Handler = std::function<void()>;

    explicit CommandRegistry(CommandContext context) : m_context(std::move(context)) {}

    CommandContext &context() { return m_context; }

    void add(const QString &menuItem, Handler handler);
    bool has(const QString &menuItem) const { return m_handlers.contains(menuItem); }
    Handler handler(const QString &menuItem) const { return m_handlers.value(menuItem); }
    QStringList menuItems() const { return m_order; }

    // What a command that asks its conditions first does once it has them: another screen that
    // knows the conditions already (the dashboard's tiles) runs it without the dialog. The
    // conditions are the value the command's dialog would hand over.
    using Target = std::function<void(const std::any &conditions)>;
    void addTarget(const QString &menuItem, Target target) { m_targets.insert(menuItem, std::move(target)); }
    bool hasTarget(const QString &menuItem) const { return m_targets.contains(menuItem); }
    // False, and nothing done, when the command has no such target.
    bool runTarget(const QString &menuItem, const std::any &conditions) const;

    // A modal screen run to its end with the help topic of its command.
    void runModal(QDialog &screen, int helpTopic);
    // A window that lives beside the main window: one instance per key; the command brings an
    // open one to the front instead of opening a second.
    QWidget *showOnce(const QString &key, const std::function<QWidget *()> &make, int helpTopic);
    // The same for a window opened for new conditions: an open one of that key is closed first and a
    // new one made. The open one may refuse to close (to keep work not yet saved); it then comes
    // to the front and nothing new opens (nullptr).
    QWidget *showReplacing(const QString &key, const std::function<QWidget *()> &make, int helpTopic);
    // The open instance of that key, if any.
    QWidget *openWindow(const QString &key) const;
    // Closes every window opened beside the main window, as the user would (commands that replace
    // the data under them run after this). False when one refuses, to keep work not yet saved: it
    // comes to the front and stays open.
    bool closeWindows();

private:
    CommandContext m_context;
    QHash<QString, Handler> m_handlers;
    QHash<QString, Target> m_targets;
    QStringList m_order;
    QHash<QString, QPointer<QWidget>> m_windows;
};

}
