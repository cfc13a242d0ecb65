#pragma once

#include <QObject>
#include <QString>

class QThread;

namespace zarek {

// Reads the whole SQLite file on a thread of its own once the user has signed in, so that a start
// takes the same time on any size; damage found is told through the message service, and nothing
// is said when the file is whole. The window that owns it waits for the reading to end on closing.
class BackgroundIntegrityCheck : public QObject {
    Q_OBJECT
public:
    explicit BackgroundIntegrityCheck(QString filePath, QObject *parent = nullptr);
    ~BackgroundIntegrityCheck() override;

    void start();

signals:
    // The check is over: whole or not (after the message).
    void finished(bool whole);

private:
    QString m_filePath;
    QThread *m_thread = nullptr;
};

}
