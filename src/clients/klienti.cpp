#include "klienti.h"
#include "ui_klienti.h"

#include "clients/clientrules.h"
#include "clients/clientstore.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"

#include <QComboBox>
#include <QCompleter>
#include <QLineEdit>

namespace zarek::clients {

Klienti::Klienti(QSqlDatabase db, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::Klienti>()), m_db(std::move(db))
{
    m_ui->setupUi(this);
    setObjectName(QStringLiteral("Klienti"));
    setProperty("helpTopic", 310);
    setUpForm();
    m_ui->ComboFind->setInsertPolicy(QComboBox::NoInsert);
    m_ui->ComboFind->completer()->setFilterMode(Qt::MatchContains);
    m_ui->ComboFind->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    m_ui->ComboFind->completer()->setCompletionMode(QCompleter::PopupCompletion);
    connect(m_ui->ComboFind, &QComboBox::activated, this, [this] { findClient(m_ui->ComboFind->currentText()); });
    connect(m_ui->ComboFind->lineEdit(), &QLineEdit::returnPressed, this,
            [this] { findClient(m_ui->ComboFind->currentText()); });
    m_form->open();
    loadNames();
    field(0)->setMinimumWidth(360);
    field(9)->setMaximumWidth(60);
    resize(560, 420);
}

Klienti::~Klienti() = default;

QLineEdit *Klienti::field(int index) const
{
    return findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(index));
}

QComboBox *Klienti::findCombo() const
{
    return m_ui->ComboFind;
}

void Klienti::setUpForm()
{
    RecordFormConfig config;
    config.statusText = QStringLiteral("Клиент № ");
    config.newText = QStringLiteral("Нов клиент");
    config.editText = QStringLiteral("Корекция на клиент");
    config.numberColumns = {QStringLiteral("SrokDni")};
    // A client's courses keep their name: deleting the client only takes it off the register.
    config.deleteQuestion = UserMessage::twoLines(QStringLiteral("Изтриване на запис"),
                                                  QStringLiteral("Клиентът ще бъде изваден от регистъра; курсовете му остават."),
                                                  QStringLiteral("Наистина ли искате да го изтриете?"), UserMessage::Icon::Question);
    config.presets = [](QVariantMap &values) { values.insert(QStringLiteral("SrokDni"), 0); };
    config.validate = [this](QVariantMap &entry) {
        m_faultColumn.clear();
        return checkClient(entry, &m_faultColumn);
    };
    config.faultColumn = [this] { return m_faultColumn; };
    config.write = [this](const RecordRow &row, bool adding) {
        return ClientStore(m_db).save(row, adding, QStringLiteral("ГРЕШКА при запис!"));
    };
    m_form = new RecordForm(ClientStore(m_db).rows(), config, this);
    m_form->bindColumns(this);  // the boxes of klienti.ui name their columns
    m_ui->mainLayout->addWidget(m_form);
    connect(m_form, &RecordForm::closeRequested, this, &QDialog::close);
    connect(m_form, &RecordForm::saved, this, &Klienti::loadNames);
    connect(m_form, &RecordForm::removed, this, &Klienti::loadNames);
}

void Klienti::loadNames()
{
    const Checked<QStringList> names = ClientStore(m_db).names();
    if (!names)
        return;
    m_ui->ComboFind->clear();
    m_ui->ComboFind->addItems(names.value());
    m_ui->ComboFind->setEditText(QString());
}

bool Klienti::showClient(qint64 id)
{
    if (m_form->state() != RecordForm::State::Browsing)
        return false;
    if (!m_form->moveToId(id)) {
        m_form->reload();  // written since the screen opened
        loadNames();
        if (!m_form->moveToId(id))
            return false;
    }
    return true;
}

bool Klienti::editClient(qint64 id)
{
    if (!showClient(id))
        return false;
    m_form->edit();
    field(1)->setFocus();
    return true;
}

bool Klienti::findClient(const QString &text)
{
    const QString wanted = text.trimmed();
    if (wanted.isEmpty() || m_form->state() != RecordForm::State::Browsing)
        return false;
    const Checked<qint64> exact = ClientStore(m_db).idOf(wanted);
    if (exact && exact.value() > 0)
        return showClient(exact.value());
    for (int i = 0; i < m_ui->ComboFind->count(); ++i) {
        if (m_ui->ComboFind->itemText(i).contains(wanted, Qt::CaseInsensitive)) {
            const Checked<qint64> id = ClientStore(m_db).idOf(m_ui->ComboFind->itemText(i));
            return id && id.value() > 0 && showClient(id.value());
        }
    }
    MessageService::instance().beep();
    return false;
}

}
