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

// The captions of one menu (or of the menu bar) with an Alt mnemonic each ("&Справки"): the first
// letter of a word that no caption before it in the menu took, else the first free letter of the
// caption. The captions themselves stay as they are.
QStringList withMnemonics(const QStringList &captions);

// The keys of the program, made from the menu tree's shortcuts and the keys every window knows:
// rows of key and what it does, in menu order.
struct KeyRow {
    QString keys;
    QString action;
};
QList<KeyRow> keyboardShortcuts();

// The weekday name shown in the status bar; Qt's day of week, Monday = 1.
QString weekdayName(int dayOfWeek);

}
