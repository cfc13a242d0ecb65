#pragma once

#include "data/firmstore.h"

#include <QDialog>
#include <QSqlDatabase>

class QLineEdit;

namespace zarek {

// The firm's own data. Saving refreshes the profile in memory too, so reports show a change at
// once; the main window's title keeps the old name until the next start.
class Personal : public QDialog {
    Q_OBJECT
public:
    Personal(QSqlDatabase db, FirmProfile &profile, QWidget *parent = nullptr);
    bool hasRow() const { return m_row.has_value(); }

private:
    void confirm();
    FirmProfile typed() const;

    QSqlDatabase m_db;
    FirmProfile &m_profile;
    std::optional<FirmRow> m_row;
    FirmProfile m_shown;  // what the boxes showed when opened or last saved
    QLineEdit *m_fields[11] = {};
    QLineEdit *m_invoiceFields[5] = {};  // bank account, place of issue, issuer
};

}
