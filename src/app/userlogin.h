#pragma once

#include <QDialog>
#include <QSqlDatabase>

class QComboBox;
class QLineEdit;

namespace zarek {

// The sign-in: ordinary users pick their name, kinds "A" and "B" type theirs; any number of tries.
class UserLogin : public QDialog {
    Q_OBJECT
public:
    explicit UserLogin(QSqlDatabase db, QWidget *parent = nullptr);

    bool LoginSucceeded() const { return m_succeeded; }
    QString UserVid() const { return m_vid; }

private:
    void confirm();

    QSqlDatabase m_db;
    QComboBox *m_combo = nullptr;
    QLineEdit *m_name = nullptr;
    QLineEdit *m_password = nullptr;
    bool m_succeeded = false;
    QString m_vid;
};

}
