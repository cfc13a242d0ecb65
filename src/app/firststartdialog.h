#pragma once

#include <QDialog>
#include <QSqlDatabase>

class QLineEdit;

namespace zarek {

// The installation step of a new database: the firm's row and the first administrator, or a
// demo firm to try the program on.
class FirstStartDialog : public QDialog {
    Q_OBJECT
public:
    explicit FirstStartDialog(QSqlDatabase db, QWidget *parent = nullptr);

    bool demoWanted() const { return m_demo; }

private:
    void create();

    QSqlDatabase m_db;
    QLineEdit *m_fields[11] = {};
    QLineEdit *m_admin = nullptr;
    QLineEdit *m_password = nullptr;
    QLineEdit *m_repeat = nullptr;
    bool m_demo = false;
};

}
