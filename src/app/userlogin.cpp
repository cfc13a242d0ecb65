#include "userlogin.h"

#include "forms/messageservice.h"
#include "app/users.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace zarek {

UserLogin::UserLogin(QSqlDatabase db, QWidget *parent) : QDialog(parent), m_db(std::move(db))
{
    setObjectName(QStringLiteral("UserLogin"));
    setWindowTitle(QStringLiteral("Парола"));

    m_combo = new QComboBox(this);
    m_combo->setObjectName(QStringLiteral("Combo"));
    m_combo->setEditable(true);
    m_combo->setInsertPolicy(QComboBox::NoInsert);
    m_combo->addItems(ordinaryUserNames(m_db));
    m_combo->setCurrentIndex(-1);
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("txtUserName"));
    m_name->setToolTip(QStringLiteral("Въведи име на потребител"));
    m_password = new QLineEdit(this);
    m_password->setObjectName(QStringLiteral("txtPassword"));
    m_password->setToolTip(QStringLiteral("Въведи код за достъп"));
    m_password->setEchoMode(QLineEdit::Password);

    // Whatever the list holds, picked or typed, is the name that is checked.
    connect(m_combo, &QComboBox::currentTextChanged, m_name, &QLineEdit::setText);
    connect(m_combo, &QComboBox::activated, this, [this] {
        m_combo->hide();
        m_password->setFocus();
    });

    auto *form = new QFormLayout;
    form->addRow(QString(), m_combo);
    form->addRow(QStringLiteral("Потребител"), m_name);
    form->addRow(QStringLiteral("Парола"), m_password);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setToolTip(QStringLiteral("Потвърждение на въведените данни"));
    ok->setDefault(true);
    m_ok = ok;
    QPushButton *cancel = buttons->addButton(QStringLiteral("Изход"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    cancel->setToolTip(QStringLiteral("Отказ от въведените данни"));
    connect(ok, &QPushButton::clicked, this, &UserLogin::confirm);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
    setMinimumWidth(340);
    m_combo->setFocus();
}

void UserLogin::confirm()
{
    if (!m_ok->isEnabled())
        return;  // still waiting after a failed try
    const UserCheck check = CheckUser(m_db, m_password->text(), m_name->text());
    if (check.message)
        MessageService::instance().inform(*check.message);
    if (check.LoginOk) {
        m_vid = check.vid;
        m_user = m_name->text().trimmed();
        m_succeeded = true;
        accept();
        return;
    }
    // Each failed try makes the next one wait longer, so names and passwords cannot be tried fast.
    m_ok->setEnabled(false);
    QTimer::singleShot(signInDelayMs(++m_failures), this, [this] { m_ok->setEnabled(true); });
    MessageService::instance().inform(invalidPasswordMessage());
    m_name->setFocus();
    m_name->selectAll();
}

}
