#include "personal.h"

#include "core/eik.h"
#include "core/firmfields.h"
#include "forms/messageservice.h"
#include "forms/textboxcheck.h"
#include "forms/unsavedwork.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

Personal::Personal(QSqlDatabase db, FirmProfile &profile, QWidget *parent)
    : QDialog(parent), m_db(std::move(db)), m_profile(profile), m_row(readFirmRow(m_db))
{
    setObjectName(QStringLiteral("Personal"));
    setWindowTitle(QStringLiteral(" Инициализация"));
    auto *frame = new QGroupBox(QStringLiteral("Данни за фирмата "), this);
    frame->setObjectName(QStringLiteral("Frame1"));
    auto *form = new QFormLayout(frame);
    for (int i = 0; i < 11; ++i) {
        m_fields[i] = new QLineEdit(frame);
        const FirmField &field = firmFields()[static_cast<size_t>(i)];
        m_fields[i]->setObjectName(QString::fromLatin1(field.objectName));
        m_fields[i]->setMinimumWidth(320);
        form->addRow(QString::fromUtf8(field.label), m_fields[i]);
        if (m_row)
            m_fields[i]->setText(m_row->profile.*field.member);
    }
    // What an invoice needs of the firm beside its address.
    auto *invoiceFrame = new QGroupBox(QStringLiteral("За фактурите"), this);
    invoiceFrame->setObjectName(QStringLiteral("Frame2"));
    auto *invoiceForm = new QFormLayout(invoiceFrame);
    for (int i = 0; i < 5; ++i) {
        const FirmField &field = invoiceFirmFields()[static_cast<size_t>(i)];
        m_invoiceFields[i] = new QLineEdit(invoiceFrame);
        m_invoiceFields[i]->setObjectName(QString::fromLatin1(field.objectName));
        m_invoiceFields[i]->setMinimumWidth(320);
        invoiceForm->addRow(QString::fromUtf8(field.label), m_invoiceFields[i]);
        if (m_row)
            m_invoiceFields[i]->setText(m_row->profile.*field.member);
    }
    m_invoiceFields[0]->setMaxLength(42);
    m_invoiceFields[0]->setToolTip(QStringLiteral("Сметката, по която се плащат фактурите; проверяват се контролните ѝ цифри"));
    m_invoiceFields[2]->setMaxLength(11);
    m_invoiceFields[3]->setToolTip(QStringLiteral("Населеното място, в което се издават фактурите"));
    m_invoiceFields[4]->setToolTip(QStringLiteral("Кой съставя фактурите"));
    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("OKButton"));
    ok->setDefault(true);
    QPushButton *cancel = buttons->addButton(QStringLiteral("Отказ"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cmdCancel"));
    connect(ok, &QPushButton::clicked, this, &Personal::confirm);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addWidget(invoiceFrame);
    layout->addWidget(buttons);

    m_shown = typed();
    // Closing with changed data not written asks first.
    UnsavedWorkGuard::of(this)->watch(this, {[this] { return !(typed() == m_shown); }, {}});

    if (!m_row) {
        MessageService::instance().inform(UserMessage::twoLines(
            QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Липсват данни!"), QStringLiteral("Излизам от програмата!"),
            UserMessage::Icon::Exclamation));
        ok->setEnabled(false);
    }
}

FirmProfile Personal::typed() const
{
    FirmProfile profile;
    for (int i = 0; i < 11; ++i)
        profile.*firmFields()[static_cast<size_t>(i)].member = m_fields[i]->text();
    for (int i = 0; i < 5; ++i)
        profile.*invoiceFirmFields()[static_cast<size_t>(i)].member = m_invoiceFields[i]->text();
    return profile;
}

void Personal::confirm()
{
    if (const auto refused = checkTextBoxes(this, QStringLiteral("   ВНИМАНИЕ!"))) {
        MessageService::instance().inform(*refused);
        return;
    }
    FirmProfile typed = this->typed();
    // The account is kept without spaces, in capitals, and only with its check digits right.
    typed.UserIBAN = compactIdentifier(typed.UserIBAN);
    typed.UserBIC = compactIdentifier(typed.UserBIC);
    if (!typed.UserIBAN.isEmpty()) {
        if (const auto bad = checkIban(typed.UserIBAN)) {
            MessageService::instance().inform(*bad);
            m_invoiceFields[0]->setFocus();
            m_invoiceFields[0]->selectAll();
            return;
        }
    }
    if (const auto missing = acceptFirmFields(typed, m_profile)) {
        MessageService::instance().inform(*missing);
        return;
    }
    FirmRow row = *m_row;
    row.profile = m_profile;
    if (const auto failure = writeFirmRow(m_db, row)) {
        MessageService::instance().inform(*failure);
        return;
    }
    m_shown = typed;
    accept();
}

}
