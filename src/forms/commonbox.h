#pragma once

#include "core/usermessage.h"

#include <QDialog>

class QDialogButtonBox;
class QLabel;
class QPushButton;

namespace zarek {

// What the information and question boxes share: the caption (a default when the message has
// none), the icon, the text in Label1 beside it, a row of buttons, and a beep when it shows.
// Two-line messages (fault, then request) stand on two lines.
class CommonBox : public QDialog {
    Q_OBJECT
public:
    QString text() const;

protected:
    CommonBox(const UserMessage &message, const QString &defaultCaption, UserMessage::Icon defaultIcon,
              const QString &iconName, QWidget *parent);

    QPushButton *addButton(const QString &objectName, const QString &caption);
    void showEvent(QShowEvent *event) override;

private:
    QLabel *m_text = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
};

}
