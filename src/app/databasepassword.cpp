#include "databasepassword.h"

#include "data/database.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

DatabasePasswordDialog::DatabasePasswordDialog(const DatabaseConfig &config, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("DatabasePassword"));
    setWindowTitle(QStringLiteral("Зарек - парола за базата данни"));
    auto *intro = new QLabel(QStringLiteral("Сървърът на базата данни иска парола.\n%1").arg(config.describe()), this);
    intro->setObjectName(QStringLiteral("lblDatabase"));
    m_password = new QLineEdit(this);
    m_password->setObjectName(QStringLiteral("txtPassword"));
    m_password->setEchoMode(QLineEdit::Password);
    m_password->setToolTip(QStringLiteral("Паролата на потребителя на базата данни"));
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Парола на %1:").arg(config.user.isEmpty() ? QStringLiteral("потребителя") : config.user),
                 m_password);
    auto *hint = new QLabel(QStringLiteral("За да не се пита всеки път: запишете паролата във файла ~/.pgpass\n"
                                           "(с права 0600) или в променливата PGPASSWORD."),
                            this);
    hint->setObjectName(QStringLiteral("lblHint"));
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    QPushButton *cancel = buttons->addButton(QStringLiteral("Изход"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(intro);
    layout->addLayout(form);
    layout->addWidget(hint);
    layout->addWidget(buttons);
    setMinimumWidth(420);
    m_password->setFocus();
}

QString DatabasePasswordDialog::password() const
{
    return m_password->text();
}

std::optional<QString> DatabasePasswordDialog::ask(const DatabaseConfig &config)
{
    DatabasePasswordDialog dialog(config);
    if (dialog.exec() != QDialog::Accepted || dialog.password().isEmpty())
        return std::nullopt;
    return dialog.password();
}

Checked<QSqlDatabase> connectAsking(const DatabaseConfig &config, const QString &connectionName,
                                    const PasswordPrompt &ask, const Connector &connect)
{
    Checked<QSqlDatabase> db = connect(config, connectionName);
    if (db || config.engine != DatabaseConfig::Engine::PostgreSQL || !config.password.isEmpty()
        || !needsPassword(db.message().text))
        return db;
    const std::optional<QString> password = ask(config);
    if (!password)
        return db;
    DatabaseConfig withPassword = config;
    withPassword.password = *password;
    return connect(withPassword, connectionName);
}

}
