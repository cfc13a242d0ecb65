#include "diafakt.h"

#include "core/docnumber.h"
#include "forms/messageservice.h"
#include "invoicing/invoicenumber.h"
#include "invoicing/invoicestore.h"
#include "invoicing/taxdocumentreport.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QSettings>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

namespace {

// Once a tax document is issued, only the sequence's next number.
std::optional<QString> onlyNumberOf(QSqlDatabase db)
{
    TaxInvoiceStore store(std::move(db));
    const Checked<bool> issued = store.anyIssued();
    if (!issued || !issued.value())
        return std::nullopt;
    const Checked<QString> next = store.nextNumber();
    return next ? std::optional<QString>(next.value()) : std::nullopt;
}

const QString linesSetting = QStringLiteral("Settings/InvoiceLines");

QSettings settings()
{
    return QSettings(QStringLiteral("Zarek"), QStringLiteral("Zarek"));
}

}

DiaFakt::DiaFakt(QSqlDatabase db, QWidget *parent)
    : DiaFakt(InvoiceStore(db).usedNumbers(), onlyNumberOf(db), parent)
{
}

DiaFakt::DiaFakt(QStringList usedNumbers, QWidget *parent) : DiaFakt(std::move(usedNumbers), std::nullopt, parent) {}

DiaFakt::DiaFakt(QStringList usedNumbers, std::optional<QString> onlyNumber, QWidget *parent)
    : QDialog(parent), m_used(std::move(usedNumbers)), m_only(std::move(onlyNumber)), m_number(noDocumentNumber())
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
    m_combo->addItems(m_only ? QStringList{*m_only} : offeredInvoiceNumbers(m_used));
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

    // The invoice's choices beside its number.
    m_lastCourse = new QCheckBox(QStringLiteral("датата на последния курс"), this);
    m_lastCourse->setObjectName(QStringLiteral("chkLastCourse"));
    m_lastCourse->setChecked(true);
    m_taxEvent = new QDateEdit(QDate::currentDate(), this);
    m_taxEvent->setObjectName(QStringLiteral("txtDataDan"));
    m_taxEvent->setDisplayFormat(QStringLiteral("dd.MM.yyyy"));
    m_taxEvent->setCalendarPopup(true);
    auto *taxEvent = new QHBoxLayout;
    taxEvent->addWidget(m_lastCourse);
    taxEvent->addWidget(m_taxEvent, 1);
    m_lines = new QComboBox(this);
    m_lines->setObjectName(QStringLiteral("ComboRedove"));
    m_lines->addItems({QStringLiteral("по един ред за курс"), QStringLiteral("един ред по справката")});
    m_lines->setCurrentIndex(settings().value(linesSetting, 0).toInt() == 1 ? 1 : 0);
    m_vat = new QComboBox(this);
    m_vat->setObjectName(QStringLiteral("ComboDDS"));
    m_vat->addItem(QStringLiteral("%1 %").arg(zarek::vatPercent), zarek::vatPercent);
    m_vat->addItem(QStringLiteral("0 %"), 0);
    m_ground = new QComboBox(this);
    m_ground->setObjectName(QStringLiteral("ComboOsnovanie"));
    m_ground->setEditable(true);
    m_ground->setInsertPolicy(QComboBox::NoInsert);
    m_ground->setCompleter(nullptr);
    // The usual grounds of a haulier; any other is typed.
    m_ground->addItems(zeroVatGrounds());
    m_ground->setCurrentIndex(-1);
    connect(m_lastCourse, &QCheckBox::toggled, this, &DiaFakt::updateChoices);
    connect(m_vat, &QComboBox::currentIndexChanged, this, &DiaFakt::updateChoices);
    updateChoices();

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("Фактура №"), m_combo);
    if (!m_only) {
        auto *first = new QLabel(QStringLiteral("Първата данъчна фактура: номерът може да продължи досегашната "
                                                "ви поредица. След нея номерата вървят подред."),
                                 this);
        first->setWordWrap(true);
        form->addRow(first);
    }
    form->addRow(QStringLiteral("Данъчно събитие"), taxEvent);
    form->addRow(QStringLiteral("Редове"), m_lines);
    form->addRow(QStringLiteral("ДДС"), m_vat);
    form->addRow(QStringLiteral("Основание за 0 %"), m_ground);
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

void DiaFakt::updateChoices()
{
    m_taxEvent->setEnabled(!m_lastCourse->isChecked());
    m_ground->setEnabled(m_vat->currentData().toInt() == 0);
}

IssueChoices DiaFakt::choices() const
{
    IssueChoices choices;
    if (!m_lastCourse->isChecked())
        choices.taxEvent = m_taxEvent->date();
    choices.lines = m_lines->currentIndex() == 1 ? InvoiceLines::Summary : InvoiceLines::PerCourse;
    choices.vatPercent = m_vat->currentData().toInt();
    if (choices.vatPercent == 0)
        choices.zeroVatGround = m_ground->currentText().trimmed();
    return choices;
}

void DiaFakt::accept()
{
    if (m_vat->currentData().toInt() == 0 && m_ground->currentText().trimmed().isEmpty()) {
        MessageService::instance().inform(UserMessage::twoLines(
            QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("При ставка 0 % се посочва основанието за неначисляване на ДДС!"),
            QStringLiteral("Моля, изберете или въведете основанието и опитайте отново."), UserMessage::Icon::Exclamation));
        m_ground->setFocus();
        return;
    }
    const Checked<QString> number = checkInvoiceNumber(m_combo->currentText(), m_used, m_only);
    if (!number) {
        MessageService::instance().inform(number.message());
        m_combo->setFocus();
        m_combo->lineEdit()->selectAll();
        return;
    }
    m_number = number.value();
    m_chosen = true;
    settings().setValue(linesSetting, m_lines->currentIndex());
    QDialog::accept();
}

void DiaFakt::reject()
{
    m_chosen = false;
    m_number = noDocumentNumber();
    QDialog::reject();
}

}
