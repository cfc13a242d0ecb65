#pragma once

#include <QProgressDialog>

namespace zarek {

// The progress box of long work: caption "Зарек 2.3 - Обработка", what is being done in Label1,
// the bar ProgBar, and OKButton "Затвори", disabled while the work runs. Shown without waiting;
// it appears by itself when the work lasts.
class ProgDialog : public QProgressDialog {
    Q_OBJECT
public:
    ProgDialog(const QString &label, int maximum, QWidget *parent = nullptr);

    // The public field: the user closed the box with "Затвори" (once the caller enabled it).
    bool closedByUser() const { return wasCanceled(); }
    // Lets the user close the box, e.g. when the work is done and the box stays to be read.
    void setCloseEnabled(bool enabled);
};

}
