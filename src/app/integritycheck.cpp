#include "integritycheck.h"

#include "data/sqlitefile.h"
#include "forms/messageservice.h"

#include <QPointer>
#include <QThread>

namespace zarek {

BackgroundIntegrityCheck::BackgroundIntegrityCheck(QString filePath, QObject *parent)
    : QObject(parent), m_filePath(std::move(filePath))
{
}

BackgroundIntegrityCheck::~BackgroundIntegrityCheck()
{
    if (m_thread) {
        m_thread->wait();
        delete m_thread;
    }
}

void BackgroundIntegrityCheck::start()
{
    if (m_thread)
        return;
    QPointer<BackgroundIntegrityCheck> self(this);
    const QString path = m_filePath;
    m_thread = QThread::create([self, path] {
        const std::optional<UserMessage> damage = checkDatabaseIntegrity(path);
        // Told on the window's thread, where the message service lives.
        QMetaObject::invokeMethod(
            self.data(),
            [self, damage] {
                if (!self)
                    return;
                if (damage)
                    MessageService::instance().inform(*damage);
                emit self->finished(!damage);
            },
            Qt::QueuedConnection);
    });
    m_thread->setObjectName(QStringLiteral("integrity check"));
    m_thread->start(QThread::LowPriority);
}

}
