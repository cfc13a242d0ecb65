#pragma once

#include "app/firststart.h"

#include <QDialog>
#include <QSqlDatabase>

class QCheckBox;
class QLineEdit;

namespace zarek {

// The installation step of a new database: the firm's row and the first administrator, or a
// demo firm to try the program on. A database with a firm row but no user is asked only for the
// administrator; one that holds any data is not offered the demo.
class FirstStartDialog : public QDialog {
    Q_OBJECT
public:
    FirstStartDialog(QSqlDatabase db, const StartState &state, QWidget *parent = nullptr);

    bool demoWanted() const { return m_demo; }

private:
    void create();

    QSqlDatabase m_db;
    StartState m_state;
    QLineEdit *m_fields[11] = {};
    QLineEdit *m_admin = nullptr;
    QLineEdit *m_password = nullptr;
    QLineEdit *m_repeat = nullptr;
    QCheckBox *m_euro = nullptr;
    bool m_demo = false;
};

}
