#pragma once

#include <QList>
#include <QString>

namespace zarek {

// One entry of the main window's menu bar: a top menu, an item or a separator.
struct MenuEntry {
    enum class Kind { TopMenu, Item, Separator };
    Kind kind;
    QString name;      // the entry's object name, e.g. mnuSprKola
    QString caption;
    QString shortcut;  // portable text, e.g. "Ctrl+N"; empty for none
    int help = 0;      // help topic number; 0 for none
};

// The whole menu tree, in order; items follow their top menu.
const QList<MenuEntry> &menuTree();

// The entries an ordinary user (kind other than "A" and "B") does not see.
const QStringList &restrictedMenuEntries();
bool seesAllMenus(const QString &userVid);

// The toolbar: key, tool tip and the menu item it runs.
struct ToolbarKey {
    QString key;
    QString toolTip;
    QString menuItem;
};
const QList<ToolbarKey> &toolbarKeys();

// The weekday name shown in the status bar; Qt's day of week, Monday = 1.
QString weekdayName(int dayOfWeek);

}
