#include "firststartdialog.h"

#include "app/demodata.h"
#include "core/currency.h"
#include "core/firmfields.h"
#include "forms/messageservice.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

FirstStartDialog::FirstStartDialog(QSqlDatabase db, const StartState &state, QWidget *parent)
    : QDialog(parent), m_db(std::move(db)), m_state(state)
{
    setObjectName(QStringLiteral("FirstStart"));
    setWindowTitle(QStringLiteral("Зарек - първоначално въвеждане"));
    const bool askFirm = !state.hasFirm;
    const bool offerDemo = !state.hasData;

    auto *intro = new QLabel(this);
    intro->setObjectName(QStringLiteral("lblIntro"));
    if (!askFirm)
        intro->setText(QStringLiteral("Данните на фирмата са въведени, но няма потребител.\n"
                                      "Въведете първия администратор."));
    else if (offerDemo)
        intro->setText(QStringLiteral("Базата данни е нова. Въведете данните на фирмата и администратора,\n"
                                      "или създайте демонстрационна фирма, за да разгледате програмата."));
    else
        intro->setText(QStringLiteral("В базата данни няма данни за фирмата.\n"
                                      "Въведете данните на фирмата и администратора."));

    auto *firm = new QGroupBox(QStringLiteral("Данни за фирмата "), this);
    firm->setObjectName(QStringLiteral("fraFirm"));
    auto *firmForm = new QFormLayout(firm);
    for (int i = 0; i < 11; ++i) {
        m_fields[i] = new QLineEdit(firm);
        const FirmField &field = firmFields()[static_cast<size_t>(i)];
        m_fields[i]->setObjectName(QString::fromLatin1(field.objectName));
        firmForm->addRow(QString::fromUtf8(field.label), m_fields[i]);
    }
    m_fields[9]->setText(QStringLiteral("България"));
    // A firm that starts after the euro came keeps its books in euro from the start.
    m_euro = new QCheckBox(QStringLiteral("Сметките се водят в &евро от самото начало"), firm);
    m_euro->setObjectName(QStringLiteral("chkEvro"));
    m_euro->setToolTip(QStringLiteral("Без отметка фирмата започва в лева и минава към евро по-късно от "
                                      "\"Служебна\" - \"Преминаване към евро\"."));
    m_euro->setChecked(QDate::currentDate() >= euroAdoptionDate());
    firmForm->addRow(QString(), m_euro);
    firm->setVisible(askFirm);

    auto *admin = new QGroupBox(QStringLiteral("Администратор"), this);
    admin->setObjectName(QStringLiteral("fraAdmin"));
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
    QPushButton *create = buttons->addButton(QStringLiteral("&Създай"), QDialogButtonBox::AcceptRole);
    create->setObjectName(QStringLiteral("cmdCreate"));
    create->setDefault(true);
    if (offerDemo) {
        QPushButton *demo = buttons->addButton(QStringLiteral("&Демонстрационна фирма"), QDialogButtonBox::ActionRole);
        demo->setObjectName(QStringLiteral("cmdDemo"));
        demo->setToolTip(QStringLiteral("Фирма с примерни данни за две години"));
        connect(demo, &QPushButton::clicked, this, [this] {
            m_demo = true;
            accept();
        });
    }
    QPushButton *cancel = buttons->addButton(QStringLiteral("&Изход"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(create, &QPushButton::clicked, this, &FirstStartDialog::create);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addWidget(firm);
    layout->addWidget(admin);
    if (offerDemo) {
        auto *demoNote = new QLabel(QStringLiteral("В демонстрационната фирма се влиза с потребител \"%1\" и парола \"%2\".")
                                        .arg(QString::fromLatin1(demoAdministratorName),
                                             QString::fromLatin1(demoAdministratorPassword)),
                                    this);
        demoNote->setObjectName(QStringLiteral("lblDemo"));
        layout->addWidget(demoNote);
    }
    layout->addWidget(buttons);
    if (askFirm)
        m_fields[0]->setFocus();
    else
        m_admin->setFocus();
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
    const bool euro = !m_state.hasFirm && m_euro->isChecked();
    if (const auto failure = createFirmAndAdministrator(m_db, firm, m_admin->text(), m_password->text(), euro)) {
        MessageService::instance().inform(*failure);
        // Another copy may have made the database meanwhile: then there is nothing left to ask.
        if (!needsFirstStart(m_db))
            accept();
        return;
    }
    accept();
}

}
