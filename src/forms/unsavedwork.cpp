#include "unsavedwork.h"

#include "forms/messageservice.h"

#include <QApplication>
#include <QCloseEvent>
#include <QWidget>

namespace zarek {

UnsavedWorkGuard::UnsavedWorkGuard(QWidget *window) : QObject(window), m_window(window)
{
    setObjectName(QStringLiteral("UnsavedWorkGuard"));
    // Seen before the window's own handlers and filters: a dialog closing by reject() or accept()
    // sends its close event through the application's filters only.
    qApp->installEventFilter(this);
}

UnsavedWorkGuard *UnsavedWorkGuard::of(QWidget *window)
{
    Q_ASSERT(window);
    window = window->window();
    if (auto *guard = window->findChild<UnsavedWorkGuard *>(QStringLiteral("UnsavedWorkGuard"),
                                                            Qt::FindDirectChildrenOnly))
        return guard;
    return new UnsavedWorkGuard(window);
}

void UnsavedWorkGuard::watch(QObject *owner, Part part)
{
    m_parts.append({owner, std::move(part)});
}

UserMessage UnsavedWorkGuard::question()
{
    return UserMessage::twoLines(QStringLiteral("Затваряне на прозореца"), QStringLiteral("Въведените данни не са записани!"),
                                 QStringLiteral("Да се откажа ли от промените?"), UserMessage::Icon::Question);
}

bool UnsavedWorkGuard::hasChanges() const
{
    for (const Watched &watched : m_parts) {
        if (watched.owner && watched.part.hasChanges && watched.part.hasChanges())
            return true;
    }
    return false;
}

bool UnsavedWorkGuard::mayClose()
{
    if (m_asking)
        return false;  // the question is already open
    if (hasChanges()) {
        // The window the question is about comes to the front first (the program may be ending).
        if (!m_window->isActiveWindow()) {
            m_window->raise();
            m_window->activateWindow();
        }
        m_asking = true;
        const bool drop = MessageService::instance().askYesNo(question());
        m_asking = false;
        if (!drop)
            return false;
    }
    for (const Watched &watched : std::as_const(m_parts)) {
        if (watched.owner && watched.part.discard)
            watched.part.discard();
    }
    return true;
}

bool UnsavedWorkGuard::eventFilter(QObject *watched, QEvent *event)
{
    // A window never shown or already hidden holds nothing the user could go back to.
    if (event->type() == QEvent::Close && watched == m_window && m_window->isVisible() && !mayClose()) {
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

}
