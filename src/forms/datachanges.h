#pragma once

#include <QObject>

namespace zarek {

// Told whenever the register may hold other figures than before: a record form wrote or deleted a
// row, a command of the main window ended. Whatever shows figures of the register (the main
// window's dashboard) listens and reads them again. One per process.
class DataChanges : public QObject {
    Q_OBJECT
public:
    static DataChanges &instance();
    void notify() { emit changed(); }

signals:
    void changed();

private:
    DataChanges() = default;
};

}
