#pragma once

#include <QApplication>
#include <QCursor>

namespace zarek {

// The hourglass for the length of a scope; restored on every way out, errors included.
class WaitCursor {
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

}
