#pragma once

#include "international/triprules.h"

#include <QDialog>
#include <QSqlDatabase>
#include <optional>

class QTableView;

namespace zarek {

// The firms address book as a picker ("Данни на фирми"): every firm by name; a double click or
// Enter on a row picks it and closes the list, Esc closes it without a pick.
class SendResive : public QDialog {
    Q_OBJECT
public:
    explicit SendResive(QSqlDatabase db, QWidget *parent = nullptr);

    // The firm picked; none when the list was closed without a pick.
    const std::optional<FirmAddress> &pickedFirm() const { return m_picked; }
    QTableView *grid() const { return m_grid; }

private:
    void pick(int row);

    QList<FirmAddress> m_firms;
    std::optional<FirmAddress> m_picked;
    QTableView *m_grid = nullptr;
};

}
