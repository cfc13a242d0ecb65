#pragma once

#include <QProgressDialog>

namespace zarek {

// The progress box of long work: caption "Зарек 2.3 - Обработка", what is being done, and a
// "Затвори" button that stays disabled while the work runs.
class ProgDialog : public QProgressDialog {
    Q_OBJECT
public:
    ProgDialog(const QString &label, int maximum, QWidget *parent = nullptr);
};

}
