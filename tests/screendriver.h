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
#include <QStringList>
#include <QtTest>

namespace zarek::test {

// The child of w named name, or nullptr.
template <typename T = QWidget>
T *child(const QWidget &w, const QString &name)
{
    return w.findChild<T *>(name);
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
