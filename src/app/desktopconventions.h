#pragma once

#include <QObject>
#include <QString>

class QApplication;
class QGuiApplication;
class QWidget;

namespace zarek {

// The name under which the desktop knows the program: its menu entry, icon and AppStream data.
inline constexpr const char *desktopApplicationId = "bg.zarek.Zarek";

// The desktop entry's name and the program's icon on every window.
void applyDesktopIdentity(QGuiApplication &app);

// What every window of the program does the way desktop programs do, in one place for all screens:
// a title "Зарек – <screen>" (screenTitle; message boxes keep their captions), and Enter on a focused button
// presses it, as Space does; a window larger than its screen's free area is made to fit it (as far
// as its least size allows) and placed on it.
class DesktopConventions : public QObject {
    Q_OBJECT
public:
    explicit DesktopConventions(QObject *parent = nullptr);
    // Installed on the application: every window, also those opened later.
    static void install(QApplication &app);
    // Applies the title rule to one window now.
    static void titleWindow(QWidget *window);
    // Makes a window fit the free area of its screen and places it there.
    static void fitIntoScreen(QWidget *window);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
};

// The first window that shows is named on the standard output ("<object name>: <title>") and
// closed; the package check starts the installed program so, with no one at the keyboard.
void closeFirstWindowShown(QApplication &app);

}
