#pragma once

#include <QDialog>
#include <QSqlDatabase>

class QComboBox;
class QLineEdit;
class QPushButton;

namespace zarek {

// The sign-in: ordinary users pick their name, kinds "A" and "B" type theirs; any number of tries,
// but after each failed one "OK" waits a growing delay (signInDelayMs) before it takes the next.
class UserLogin : public QDialog {
    Q_OBJECT
public:
    explicit UserLogin(QSqlDatabase db, QWidget *parent = nullptr);

    bool LoginSucceeded() const { return m_succeeded; }
    QString UserVid() const { return m_vid; }
    // The name signed in with.
    QString UserName() const { return m_user; }

private:
    void confirm();

    QSqlDatabase m_db;
    QComboBox *m_combo = nullptr;
    QLineEdit *m_name = nullptr;
    QLineEdit *m_password = nullptr;
    QPushButton *m_ok = nullptr;
    int m_failures = 0;
    bool m_succeeded = false;
    QString m_vid;
    QString m_user;
};

}
