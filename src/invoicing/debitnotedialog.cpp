#include "debitnotedialog.h"

#include "core/docnumber.h"
#include "core/formats.h"
#include "forms/messageservice.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>
#include <cmath>

namespace zarek {

DebitNoteDialog::DebitNoteDialog(QSqlDatabase db, QWidget *parent) : QDialog(parent), m_db(std::move(db))
{
    setObjectName(QStringLiteral("DiaDebit"));
    setWindowTitle(QStringLiteral("Дебитно известие"));
    setModal(true);
    m_number = new QLineEdit(this);
    m_number->setObjectName(QStringLiteral("txtNomFakt"));
    m_number->setMaxLength(20);
    m_text = new QLineEdit(this);
    m_text->setObjectName(QStringLiteral("txtOpisanie"));
    m_text->setMaxLength(200);
    m_amount = new QLineEdit(this);
    m_amount->setObjectName(QStringLiteral("txtSuma"));
    m_amount->setMaxLength(20);
    m_reason = new QLineEdit(this);
    m_reason->setObjectName(QStringLiteral("txtPrichina"));
    m_reason->setMaxLength(200);
    m_ok = new QPushButton(QStringLiteral("OK"), this);
    m_ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Отказ"), this);
    cancel->setAutoDefault(false);
    connect(m_ok, &QPushButton::clicked, this, &DebitNoteDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &DebitNoteDialog::reject);

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Към фактура №"), m_number);
    form->addRow(QStringLiteral("Текст на реда"), m_text);
    form->addRow(QStringLiteral("Сума без ДДС"), m_amount);
    form->addRow(QStringLiteral("Основание"), m_reason);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addLayout(buttons);
    setMinimumWidth(420);
}

void DebitNoteDialog::accept()
{
    const auto refuse = [this](QLineEdit *box, const QString &fault, const QString &request) {
        MessageService::instance().inform(
            UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), fault, request, UserMessage::Icon::Exclamation));
        box->setFocus();
        box->selectAll();
    };
    const QString typed = m_number->text().trimmed();
    bool digits = !typed.isEmpty() && typed.size() <= documentNumberLength;
    for (const QChar c : typed)
        digits = digits && c.isDigit();
    if (!digits)
        return refuse(m_number, QStringLiteral("Номерът на фактурата трябва да е до 10 цифри!"),
                      QStringLiteral("Моля, поправете го и опитайте отново."));
    const QString number = typed.rightJustified(documentNumberLength, QLatin1Char('0'));
    TaxInvoiceStore store(m_db);
    const Checked<qint64> invoice = store.invoiceId(number);
    if (!invoice) {
        MessageService::instance().inform(invoice.message());
        return;
    }
    if (invoice.value() == 0)
        return refuse(m_number, QStringLiteral("Няма издадена данъчна фактура с номер %1!").arg(number),
                      QStringLiteral("Моля, проверете номера и опитайте отново."));
    const std::optional<double> amount = parseNumber(m_amount->text());
    const Money money = amount && std::isfinite(*amount) ? Money::fromAmount(*amount) : Money::invalid();
    if (!money.isValid() || money <= Money() || std::abs(money.toDouble() - *amount) > 1e-9)
        return refuse(m_amount, QStringLiteral("Сумата трябва да е число над нула, до стотинка!"),
                      QStringLiteral("Моля, поправете я и опитайте отново."));
    if (m_reason->text().trimmed().isEmpty())
        return refuse(m_reason, QStringLiteral("Няма основание за известието!"),
                      QStringLiteral("Моля, въведете причината и опитайте отново."));
    const RecordOutcome outcome =
        store.issueDebit(invoice.value(), m_text->text(), money, today(), m_reason->text());
    if (!outcome) {
        MessageService::instance().inform(outcome.message.value_or(
            UserMessage{QStringLiteral("ГРЕШКА при запис!"), QStringLiteral("Известието не е издадено.")}));
        return;
    }
    m_issued = outcome.id;
    QDialog::accept();
}

}
