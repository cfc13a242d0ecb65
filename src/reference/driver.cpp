#include "driver.h"

#include "app/version.h"
#include "driverrules.h"
#include "forms/recordform.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace zarek {

Driver::Driver(QSqlDatabase db, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("Driver"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Шофьори"));

    RecordFormConfig config;
    config.validate = checkDriver;
    m_form = new RecordForm(std::make_unique<RecordStore>(db, QStringLiteral("shof"),
                                                          QStringList{QStringLiteral("kod"), QStringLiteral("ime"),
                                                                      QStringLiteral("adres"), QStringLiteral("tel"),
                                                                      QStringLiteral("mob"), QStringLiteral("EGN"),
                                                                      QStringLiteral("LKarta")},
                                                          QStringLiteral("kod")),
                            config, this);
    connect(m_form, &RecordForm::closeRequested, this, &QDialog::reject);

    struct Field {
        int index;
        const char *label;
        const char *column;
        int maxLength;
    };
    const auto frame = [this](const char *name, const char *title, std::initializer_list<Field> fields) {
        auto *box = new QGroupBox(QString::fromUtf8(title), this);
        box->setObjectName(QString::fromLatin1(name));
        auto *form = new QFormLayout(box);
        for (const Field &f : fields) {
            auto *edit = new QLineEdit(box);
            edit->setObjectName(QStringLiteral("txtFields_%1").arg(f.index));
            edit->setMaxLength(f.maxLength);
            form->addRow(QString::fromUtf8(f.label), edit);
            m_form->bind(edit, QString::fromLatin1(f.column));
        }
        return box;
    };
    // Lengths a little above the limits, so the checks, not the boxes, tell what is too long.
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame("Frame1", "Шофьор", {{2, "Имена", "ime", 80}, {3, "Код", "kod", 10}}));
    layout->addWidget(frame("Frame2", "Адрес и телефони", {{0, "Адрес", "adres", 90}, {6, "Тел.", "tel", 20}, {5, "GSM", "mob", 20}}));
    layout->addWidget(frame("Frame3", "Документи", {{1, "ЕГН", "EGN", 20}, {4, "Л.карта", "LKarta", 20}}));
    layout->addWidget(m_form);
    setMinimumWidth(520);
    m_form->open();
}

}
