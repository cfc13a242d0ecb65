#include "desktopconventions.h"

#include "core/windowtitle.h"
#include "forms/commonbox.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QIcon>
#include <QIconEngine>
#include <QKeyEvent>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTimer>
#include <QToolButton>
#include <cstdio>

namespace zarek {

namespace {

// Message boxes keep the caption their message gives them ("ГРЕШКА при запис!").
bool keepsItsCaption(const QWidget *window)
{
    return qobject_cast<const CommonBox *>(window) || qobject_cast<const QMessageBox *>(window)
           || window->windowType() == Qt::SplashScreen || window->windowType() == Qt::ToolTip
           || window->windowType() == Qt::Popup;
}

// The program's icon in its four sizes. A QIcon given files reads their pictures at once, and loads
// the image plugins (some 2 ms of every start); this one tells its sizes at once and reads the
// pictures when a window or the platform first asks for one.
class ProgramIconEngine : public QIconEngine {
public:
    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override
    {
        QList<QSize> sizes;
        if (mode == QIcon::Normal && state == QIcon::Off)
            for (const int size : iconSizes)
                sizes.append(QSize(size, size));
        return sizes;
    }
    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().actualSize(size, mode, state);
    }
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return icon().pixmap(size, mode, state);
    }
    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        return icon().pixmap(size, scale, mode, state);
    }
    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        icon().paint(painter, rect, Qt::AlignCenter, mode, state);
    }
    QIconEngine *clone() const override { return new ProgramIconEngine; }
    QString key() const override { return QStringLiteral("ProgramIconEngine"); }

private:
    static constexpr int iconSizes[] = {48, 64, 128, 256};
    const QIcon &icon()
    {
        if (m_icon.isNull())
            for (const int size : iconSizes)
                m_icon.addFile(QStringLiteral(":/icons/%1x%1/%2.png").arg(size).arg(QString::fromLatin1(desktopApplicationId)),
                               QSize(size, size));
        return m_icon;
    }
    QIcon m_icon;
};

}

void applyDesktopIdentity(QGuiApplication &app)
{
    QGuiApplication::setDesktopFileName(QString::fromLatin1(desktopApplicationId));
    QApplication::setWindowIcon(QIcon(new ProgramIconEngine));
}

DesktopConventions::DesktopConventions(QObject *parent) : QObject(parent) {}

void DesktopConventions::install(QApplication &app)
{
    app.installEventFilter(new DesktopConventions(&app));
}

void DesktopConventions::titleWindow(QWidget *window)
{
    if (!window || !window->isWindow() || keepsItsCaption(window))
        return;
    const QString title = screenTitle(window->windowTitle());
    if (title != window->windowTitle())
        window->setWindowTitle(title);
}

void DesktopConventions::fitIntoScreen(QWidget *window)
{
    if (!window || !window->isWindow() || window->windowType() == Qt::Popup || window->windowType() == Qt::ToolTip
        || (window->windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)))
        return;
    const QScreen *screen = window->screen();
    if (!screen)
        return;
    const QRect room = screen->availableGeometry();
    // The frame around the window, as far as the platform tells it (the title bar above all).
    const QMargins frame(window->geometry().left() - window->frameGeometry().left(),
                         window->geometry().top() - window->frameGeometry().top(),
                         window->frameGeometry().right() - window->geometry().right(),
                         window->frameGeometry().bottom() - window->geometry().bottom());
    const QSize most = room.size().shrunkBy(frame);
    if (window->width() > most.width() || window->height() > most.height())
        window->resize(window->size().boundedTo(most));
    QRect placed = window->frameGeometry();
    if (placed.right() > room.right())
        placed.moveRight(room.right());
    if (placed.bottom() > room.bottom())
        placed.moveBottom(room.bottom());
    if (placed.left() < room.left())
        placed.moveLeft(room.left());
    if (placed.top() < room.top())
        placed.moveTop(room.top());
    if (placed.topLeft() != window->frameGeometry().topLeft())
        window->move(placed.topLeft());
}

bool DesktopConventions::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show:
        if (auto *window = qobject_cast<QWidget *>(watched); window && window->isWindow()) {
            titleWindow(window);
            fitIntoScreen(window);
        }
        break;
    case QEvent::WindowTitleChange:
        if (auto *window = qobject_cast<QWidget *>(watched); window && window->isWindow())
            titleWindow(window);
        break;
    case QEvent::KeyPress: {
        // Enter on a focused button presses it. A dialog's own buttons do so already (and a button
        // that is not the default would otherwise pass Enter to the default one).
        const auto *key = static_cast<QKeyEvent *>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter)
            && (key->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
            auto *button = qobject_cast<QAbstractButton *>(watched);
            if (button && (qobject_cast<QPushButton *>(button) || qobject_cast<QToolButton *>(button))
                && button->hasFocus() && button->isEnabled() && button->isVisible()) {
                button->animateClick();
                return true;
            }
        }
        break;
    }
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

namespace {

class FirstWindowCloser : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *window = qobject_cast<QWidget *>(watched);
        if (event->type() == QEvent::Show && window && window->isWindow() && window->windowType() != Qt::SplashScreen
            && window->windowType() != Qt::ToolTip && window->windowType() != Qt::Popup) {
            qApp->removeEventFilter(this);
            const QByteArray line = (window->objectName() + QStringLiteral(": ") + window->windowTitle() + QLatin1Char('\n')).toUtf8();
            std::fwrite(line.constData(), 1, size_t(line.size()), stdout);
            std::fflush(stdout);
            QPointer<QWidget> target(window);
            QTimer::singleShot(0, qApp, [target] {
                if (!target)
                    return;
                if (auto *dialog = qobject_cast<QDialog *>(target.data()))
                    dialog->reject();
                else
                    target->close();
            });
            deleteLater();
        }
        return QObject::eventFilter(watched, event);
    }
};

}

void closeFirstWindowShown(QApplication &app)
{
    app.installEventFilter(new FirstWindowCloser(&app));
}

}
