#pragma once

#include <QFrame>
#include <QSettings>
#include <QString>

class QCheckBox;
class QLabel;

namespace zarek::documents {

// Whether a user is told at sign-in of the documents due: on unless he switched it off. Kept in
// the settings store per user name.
bool dueNoticeWanted(QSettings &settings, const QString &user);
void setDueNoticeWanted(QSettings &settings, const QString &user, bool wanted);

// The short notice after sign-in: how many documents are due and how many expired, a link that
// opens the list, and a box that switches the notice off for this user. It does not block the
// main window and closes itself after a while.
class DueNotice : public QFrame {
    Q_OBJECT
public:
    DueNotice(int due, int expired, QWidget *parent = nullptr);

    // What the notice says.
    QString text() const;
    QCheckBox *switchOff() const { return m_switchOff; }

    // Shows it in the lower right corner of its parent for a quarter of a minute.
    void showInCorner(int milliseconds = 15000);

signals:
    void listRequested();
    void switchedOff(bool off);

private:
    QLabel *m_text = nullptr;
    QCheckBox *m_switchOff = nullptr;
};

}
