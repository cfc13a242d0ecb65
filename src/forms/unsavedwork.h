#pragma once

#include "core/usermessage.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <functional>

class QWidget;

namespace zarek {

// Nothing typed is lost without a question: a window whose parts hold unsaved typing asks before
// it closes, however it is closed (its close box, Esc, its close button, the end of the program).
// "Да" drops the typing and the window closes; "Не" leaves it open with the typing as it was.
class UnsavedWorkGuard : public QObject {
    Q_OBJECT
public:
    // One part of a window that may hold typing not yet written (a record strip, a form of boxes).
    struct Part {
        std::function<bool()> hasChanges;  // typing that closing now would lose
        std::function<void()> discard;     // drops what is pending as the window closes; may be empty
    };

    // The guard of a window (the top-level widget), made on first use; it lives as long as the window.
    static UnsavedWorkGuard *of(QWidget *window);

    // Watches a part of the window until owner is destroyed.
    void watch(QObject *owner, Part part);

    // True when the window may close now: nothing typed would be lost, or the user chose "Да" (the
    // typing is then dropped). False when the user chose "Не".
    bool mayClose();
    bool hasChanges() const;

    // "Въведените данни не са записани!", then the question whether to drop them.
    static UserMessage question();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    explicit UnsavedWorkGuard(QWidget *window);

    struct Watched {
        QPointer<QObject> owner;
        Part part;
    };
    QWidget *m_window = nullptr;
    QList<Watched> m_parts;
    bool m_asking = false;
};

}
