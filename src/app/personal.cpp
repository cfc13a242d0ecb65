#include "personal.h"

#include "app/messageservice.h"

#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

namespace {

const char *const fieldNames[11][2] = {
    {"txtFirmaName", "Име:"},       {"txtFirmaAdres", "Адрес:"},     {"txtFirmaCity", "Град:"},
    {"txtFirmaTel", "Телефон:"},    {"txtFirmaFax", "GSM:"},         {"txtFirmaMOL", "МОЛ:"},
    {"txtFirmaBULSTAT", "БУЛСТАТ:"}, {"txtFirmaDanN", "Дан.№:"},      {"txtFirmaEmail", "E-mail:"},
    {"txtFirmaCountry", "Държава:"}, {"txtFirmaURL", "URL:"},
};

QString *profileField(FirmProfile &p, int i)
{
    QString *fields[] = {&p.UserName, &p.UserAdres,   &p.UserCity, &p.UserTel,   &p.UserGSM,   &p.UserMOL,
                         &p.UserBULSTAT, &p.UserDanN, &p.UserEmail, &p.UserCountry, &p.UserURL};
    return fields[i];
}

}

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
        m_fields[i]->setObjectName(QString::fromLatin1(fieldNames[i][0]));
        m_fields[i]->setMinimumWidth(320);
        form->addRow(QString::fromUtf8(fieldNames[i][1]), m_fields[i]);
        if (m_row)
            m_fields[i]->setText(*profileField(m_row->profile, i));
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

    if (!m_row) {
        MessageService::instance().inform(UserMessage::twoLines(
            QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Липсват данни!"), QStringLiteral("Излизам от програмата!"),
            UserMessage::Icon::Exclamation));
        ok->setEnabled(false);
    }
}

void Personal::confirm()
{
    FirmProfile typed;
    for (int i = 0; i < 11; ++i)
        *profileField(typed, i) = m_fields[i]->text();
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
    accept();
}

}
