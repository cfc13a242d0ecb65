#include "personal.h"

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
    return profile;
}

void Personal::confirm()
{
    if (const auto refused = checkTextBoxes(this, QStringLiteral("   ВНИМАНИЕ!"))) {
        MessageService::instance().inform(*refused);
        return;
    }
    const FirmProfile typed = this->typed();
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
