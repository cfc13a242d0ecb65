#include "password.h"

#include "app/passwordhash.h"
#include "app/users.h"
#include "forms/recordform.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace zarek {

PassWord::PassWord(QSqlDatabase db, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("PassWord"));
    setWindowTitle(QStringLiteral("Пароли"));
    RecordFormConfig config;
    config.statusText = QStringLiteral(" Потребител №:");
    config.newText = QStringLiteral(" Нов потребител");
    config.editText = QStringLiteral(" Корекция на потребител");
    config.confirmDelete = false;
    config.clickStartsEditing = true;
    config.secretColumns = {QStringLiteral("Password")};
    config.secretValue = [](const QString &typed) { return QVariant(hashPassword(typed)); };
    config.errorDescriptionOnly = true;
    // A user needs a name and a password; left empty while correcting, the stored password stays.
    config.validate = [this](const QVariantMap &typed) -> std::optional<UserMessage> {
        const RecordRow *row = m_form->state() == RecordForm::State::Editing ? m_form->currentRow() : nullptr;
        const bool storedPassword = row && !row->values.value(QStringLiteral("Password")).toString().isEmpty();
        return checkUserFields(typed.value(QStringLiteral("Ime")).toString(),
                               typed.value(QStringLiteral("Password")).toString(), storedPassword);
    };
    m_form = new RecordForm(std::make_unique<RecordStore>(db, QStringLiteral("Users"),
                                                          QStringList{QStringLiteral("Ime"), QStringLiteral("Password"),
                                                                      QStringLiteral("Vid")},
                                                          QStringLiteral("Vid"), QStringLiteral("Vid <> ?"),
                                                          QVariantList{QStringLiteral("A")}),
                            config, this);
    connect(m_form, &RecordForm::closeRequested, this, &QDialog::reject);

    auto *frame = new QGroupBox(QStringLiteral("Потребители "), this);
    auto *form = new QFormLayout(frame);
    const char *labels[] = {"Име:", "Парола:", "Вид достъп:"};
    const char *columns[] = {"Ime", "Password", "Vid"};
    for (int i = 0; i < 3; ++i) {
        auto *edit = new QLineEdit(frame);
        edit->setObjectName(QStringLiteral("txtFields_%1").arg(i));
        if (i == 1) {
            edit->setEchoMode(QLineEdit::Password);
            edit->setPlaceholderText(QStringLiteral("нова парола; празно - без промяна"));
        }
        form->addRow(QString::fromUtf8(labels[i]), edit);
        edit->setProperty(RecordForm::columnProperty, QString::fromLatin1(columns[i]));
    }
    m_form->bindColumns(frame);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addWidget(m_form);
    setMinimumWidth(460);
    m_form->open();
}

}
