#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class QShortcut;
class QWidget;

namespace zarek {

// Less retyping: Ctrl+' fills the box that has the focus with what that box held when the last
// row was saved in this opening of the window (a date, a driver, a truck). Before any save in the
// opening it does nothing; boxes still start as their screen says. One per window, shared by every
// record strip in it; password boxes are never remembered.
class RepeatPrevious : public QObject {
    Q_OBJECT
public:
    // The helper of a window (the top-level widget), made on first use; it lives as long as the window.
    static RepeatPrevious *of(QWidget *window);

    // Takes note of what every box of the window holds now (called once a row is saved).
    void remember();
    // Fills the box (a text box or an editable list, or the text box inside one) with what it held
    // at the last save; false when there is nothing to repeat.
    bool repeatInto(QWidget *box);
    bool hasRemembered() const { return !m_texts.isEmpty(); }

    // The line every box's tool tip ends with.
    static QString hint();

private:
    explicit RepeatPrevious(QWidget *window);
    void addHints();

    QWidget *m_window = nullptr;
    QShortcut *m_shortcut = nullptr;
    QHash<QString, QString> m_texts;  // by the box's objectName
};

}
