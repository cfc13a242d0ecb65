#include "forms/commands.h"

#include <QDialog>
#include <QWidget>

namespace zarek {

void CommandRegistry::add(const QString &menuItem, Handler handler)
{
    if (!m_handlers.contains(menuItem))
        m_order.append(menuItem);
    m_handlers.insert(menuItem, std::move(handler));
}

bool CommandRegistry::runTarget(const QString &menuItem, const std::any &conditions) const
{
    const Target target = m_targets.value(menuItem);
    if (!target)
        return false;
    target(conditions);
    return true;
}

void CommandRegistry::runModal(QDialog &screen, int helpTopic)
{
    if (helpTopic > 0)
        screen.setProperty("helpTopic", helpTopic);
    screen.exec();
}

QWidget *CommandRegistry::showOnce(const QString &key, const std::function<QWidget *()> &make, int helpTopic)
{
    QWidget *window = m_windows.value(key);
    if (window && !window->isVisible()) {
        window->deleteLater();  // closed, and about to go
        window = nullptr;
    }
    if (!window) {
        window = make();
        if (!window)
            return nullptr;
        window->setAttribute(Qt::WA_DeleteOnClose);
        if (helpTopic > 0)
            window->setProperty("helpTopic", helpTopic);
        m_windows.insert(key, window);
    }
    window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
    window->show();
    window->raise();
    window->activateWindow();
    return window;
}

QWidget *CommandRegistry::showReplacing(const QString &key, const std::function<QWidget *()> &make, int helpTopic)
{
    if (QWidget *open = m_windows.value(key)) {
        if (!open->close()) {
            open->raise();
            open->activateWindow();
            return nullptr;
        }
        m_windows.remove(key);
    }
    return showOnce(key, make, helpTopic);
}

QWidget *CommandRegistry::openWindow(const QString &key) const
{
    return m_windows.value(key);
}

bool CommandRegistry::closeWindows()
{
    for (auto it = m_windows.begin(); it != m_windows.end();) {
        QWidget *window = it->data();
        if (window && window->isVisible() && !window->close()) {
            window->raise();
            window->activateWindow();
            return false;
        }
        it = m_windows.erase(it);
    }
    return true;
}

}
