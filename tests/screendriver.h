#pragma once

// Driving a screen as the keyboard and mouse would, and reading what it told the user: the helpers
// the screen tests share. Widgets are found by their objectName; keys and text go where the focus
// is, as a keyboard's would. Messages are those of the recording service a test installs
// (RecordingMessageService, forms/messageservice.h).

#include "forms/messageservice.h"

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QStringList>
#include <QtTest>

namespace zarek::test {

// The child of w named name, or nullptr (and a warning naming it).
template <typename T = QWidget>
T *child(const QWidget &w, const QString &name)
{
    T *found = w.findChild<T *>(name);
    if (!found)
        qWarning("no widget %s", qPrintable(name));
    return found;
}

inline QPushButton *button(const QWidget &w, const QString &name) { return child<QPushButton>(w, name); }
inline QLineEdit *lineEdit(const QWidget &w, const QString &name) { return child<QLineEdit>(w, name); }
inline QComboBox *comboBox(const QWidget &w, const QString &name) { return child<QComboBox>(w, name); }

// Clicks the button named name (a test failure when there is none).
inline void click(const QWidget &w, const QString &name)
{
    QPushButton *b = button(w, name);
    QVERIFY2(b, qPrintable(QStringLiteral("no button ") + name));
    b->click();
}

// The visible top-level window named name, or nullptr.
inline QWidget *visibleWindow(const QString &name)
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->objectName() == name && window->isVisible())
            return window;
    }
    return nullptr;
}

// Shows the screen and waits until it is the active window.
inline void showActive(QWidget &screen)
{
    screen.show();
    QVERIFY(QTest::qWaitForWindowActive(&screen));
}

// Shows the screen and waits until it is on the screen (not necessarily active).
inline void showExposed(QWidget &screen)
{
    screen.show();
    QVERIFY(QTest::qWaitForWindowExposed(&screen));
}

// Types into the widget that has the focus, as the keyboard would (Cyrillic included).
inline void type(const QString &text)
{
    for (const QChar c : text)
        QTest::sendKeyEvent(QTest::Click, QApplication::focusWidget(), Qt::Key_unknown, QString(c), Qt::NoModifier);
}

// Puts the focus in box and types text there.
inline void typeInto(QWidget *box, const QString &text)
{
    QVERIFY(box);
    box->setFocus();
    type(text);
}

// A key to an open list first, else to the widget with the focus; then the events it posts.
inline void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWidget *popup = QApplication::activePopupWidget();
    QTest::keyClick(popup ? popup : QApplication::focusWidget(), key, modifiers);
    QCoreApplication::processEvents();  // the whole text of a box entered is selected a moment later
}

// The texts of a list's items, in order.
inline QStringList items(const QComboBox *box)
{
    QStringList list;
    for (int i = 0; i < box->count(); ++i)
        list.append(box->itemText(i));
    return list;
}

// Hands the modal dialog of type T open when the event loop next turns to handle (look, answer,
// close); none, or one of another type, is left alone. Arm it, then do what opens the dialog.
template <typename T = QDialog, typename F>
void onNextModal(F handle)
{
    QTimer::singleShot(0, [handle]() mutable {
        if (auto *dialog = qobject_cast<T *>(QApplication::activeModalWidget()))
            handle(*dialog);
    });
}

// Types the period into a search dialog's two date boxes and presses its OK button.
inline void enterPeriod(QWidget &dialog, const QString &from, const QString &to)
{
    child<QLineEdit>(dialog, QStringLiteral("Text1_0"))->setText(from);
    child<QLineEdit>(dialog, QStringLiteral("Text1_1"))->setText(to);
    button(dialog, QStringLiteral("OKButton"))->click();
}

// With ZAREK_SCREENSHOT_DIR set, the widget as a picture for a person to look at.
inline void saveScreenshot(QWidget &widget, const QString &name)
{
    const QString dir = qEnvironmentVariable("ZAREK_SCREENSHOT_DIR");
    if (dir.isEmpty())
        return;
    QTest::qWait(50);  // the layout settles first
    widget.grab().save(dir + QLatin1Char('/') + name + QStringLiteral(".png"));
}

// "title|text" of each message.
inline QStringList titled(const QList<UserMessage> &messages)
{
    QStringList list;
    for (const UserMessage &m : messages)
        list.append(m.title + QLatin1Char('|') + m.text);
    return list;
}

// "title|text" of the one message given; when there are none or several, a description of them
// that no expected "title|text" equals. QCOMPARE(onlyOne(messages.shown), "Title|Text") checks
// that exactly one message was shown, with this title and this text.
inline QString onlyOne(const QList<UserMessage> &messages)
{
    if (messages.size() == 1)
        return titled(messages).constFirst();
    return QStringLiteral("<%1 messages: %2>").arg(messages.size()).arg(titled(messages).join(QStringLiteral(" ; ")));
}

// The text, or the title, of the one message given; as onlyOne() when there are none or several.
inline QString onlyText(const QList<UserMessage> &messages)
{
    return messages.size() == 1 ? messages.constFirst().text : onlyOne(messages);
}
inline QString onlyTitle(const QList<UserMessage> &messages)
{
    return messages.size() == 1 ? messages.constFirst().title : onlyOne(messages);
}

}

// A fresh database of the current engine (var; see testdatabase.h) and the messages recorded.
#define ZAREK_SCRATCH_DB_TELLING(var)                         \
    ZAREK_SCRATCH_DB(var);                                    \
    RecordingMessageService messages
