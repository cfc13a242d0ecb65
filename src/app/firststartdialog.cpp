#include "firststartdialog.h"

#include "core/firmfields.h"
#include "app/firststart.h"
#include "forms/messageservice.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

FirstStartDialog::FirstStartDialog(QSqlDatabase db, QWidget *parent) : QDialog(parent), m_db(std::move(db))
{
    setObjectName(QStringLiteral("FirstStart"));
    setWindowTitle(QStringLiteral("Зарек - първоначално въвеждане"));

    auto *intro = new QLabel(QStringLiteral("Базата данни е нова. Въведете данните на фирмата и администратора,\n"
                                            "или създайте демонстрационна фирма, за да разгледате програмата."), this);
    auto *firm = new QGroupBox(QStringLiteral("Данни за фирмата "), this);
    auto *firmForm = new QFormLayout(firm);
    for (int i = 0; i < 11; ++i) {
        m_fields[i] = new QLineEdit(firm);
        const FirmField &field = firmFields()[static_cast<size_t>(i)];
        m_fields[i]->setObjectName(QString::fromLatin1(field.objectName));
        firmForm->addRow(QString::fromUtf8(field.label), m_fields[i]);
    }
    m_fields[9]->setText(QStringLiteral("България"));

    auto *admin = new QGroupBox(QStringLiteral("Администратор"), this);
    auto *adminForm = new QFormLayout(admin);
    m_admin = new QLineEdit(admin);
    m_admin->setObjectName(QStringLiteral("txtAdminName"));
    m_password = new QLineEdit(admin);
    m_password->setObjectName(QStringLiteral("txtAdminPassword"));
    m_password->setEchoMode(QLineEdit::Password);
    m_repeat = new QLineEdit(admin);
    m_repeat->setObjectName(QStringLiteral("txtAdminRepeat"));
    m_repeat->setEchoMode(QLineEdit::Password);
    adminForm->addRow(QStringLiteral("Потребител:"), m_admin);
    adminForm->addRow(QStringLiteral("Парола:"), m_password);
    adminForm->addRow(QStringLiteral("Повторете паролата:"), m_repeat);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *create = buttons->addButton(QStringLiteral("Създай"), QDialogButtonBox::AcceptRole);
    create->setObjectName(QStringLiteral("cmdCreate"));
    create->setDefault(true);
    QPushButton *demo = buttons->addButton(QStringLiteral("Демонстрационна фирма"), QDialogButtonBox::ActionRole);
    demo->setObjectName(QStringLiteral("cmdDemo"));
    QPushButton *cancel = buttons->addButton(QStringLiteral("Изход"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(create, &QPushButton::clicked, this, &FirstStartDialog::create);
    connect(demo, &QPushButton::clicked, this, [this] {
        m_demo = true;
        accept();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(firm);
    layout->addWidget(admin);
    layout->addWidget(buttons);
    m_fields[0]->setFocus();
}

void FirstStartDialog::create()
{
    FirmProfile firm;
    for (int i = 0; i < 11; ++i)
        firm.*firmFields()[static_cast<size_t>(i)].member = m_fields[i]->text();
    if (m_password->text() != m_repeat->text()) {
        MessageService::instance().inform(UserMessage::twoLines(
            QStringLiteral("   ВНИМАНИЕ!"), QStringLiteral("Паролите не съвпадат!"),
            QStringLiteral("Моля, въведете паролата отново!"), UserMessage::Icon::Critical));
        m_password->setFocus();
        return;
    }
    if (const auto failure = createFirmAndAdministrator(m_db, firm, m_admin->text(), m_password->text())) {
        MessageService::instance().inform(*failure);
        return;
    }
    accept();
}

}
