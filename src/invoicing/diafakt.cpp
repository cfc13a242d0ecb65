#include "diafakt.h"

#include "core/docnumber.h"
#include "forms/messageservice.h"
#include "invoicing/invoicenumber.h"
#include "invoicing/invoicestore.h"

#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

DiaFakt::DiaFakt(QSqlDatabase db, QWidget *parent) : DiaFakt(InvoiceStore(std::move(db)).usedNumbers(), parent) {}

DiaFakt::DiaFakt(QStringList usedNumbers, QWidget *parent)
    : QDialog(parent), m_used(std::move(usedNumbers)), m_number(noDocumentNumber())
{
    setObjectName(QStringLiteral("DiaFakt"));
    setWindowTitle(QStringLiteral("Номер на фактурата"));
    setModal(true);
    setProperty("helpTopic", 200);

    m_combo = new QComboBox(this);
    m_combo->setObjectName(QStringLiteral("Combo1"));
    m_combo->setEditable(true);
    m_combo->setInsertPolicy(QComboBox::NoInsert);
    // No inline completion: with the number shown selected it would take Enter for itself.
    m_combo->setCompleter(nullptr);
    m_combo->setMaxVisibleItems(15);
    m_combo->lineEdit()->setMaxLength(20);  // longer texts are refused with a message, not cut unseen
    // The free numbers, the next one shown: a used number would only be refused.
    m_combo->addItems(offeredInvoiceNumbers(m_used));
    m_combo->setCurrentIndex(0);
    m_combo->setMinimumWidth(200);

    m_ok = new QPushButton(QStringLiteral("OK"), this);
    m_ok->setObjectName(QStringLiteral("OKButton"));
    m_ok->setDefault(true);  // Enter takes the number shown or typed; Esc is "Отказ"
    m_cancel = new QPushButton(QStringLiteral("Отказ"), this);
    m_cancel->setObjectName(QStringLiteral("CancelButton"));
    m_cancel->setAutoDefault(false);
    connect(m_ok, &QPushButton::clicked, this, &DiaFakt::accept);
    connect(m_cancel, &QPushButton::clicked, this, &DiaFakt::reject);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Фактура №"), m_combo);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);

    m_combo->setFocus();
    m_combo->lineEdit()->selectAll();
}

void DiaFakt::accept()
{
    const Checked<QString> number = checkInvoiceNumber(m_combo->currentText(), m_used);
    if (!number) {
        MessageService::instance().inform(number.message());
        m_combo->setFocus();
        m_combo->lineEdit()->selectAll();
        return;
    }
    m_number = number.value();
    m_chosen = true;
    QDialog::accept();
}

void DiaFakt::reject()
{
    m_chosen = false;
    m_number = noDocumentNumber();
    QDialog::reject();
}

}
