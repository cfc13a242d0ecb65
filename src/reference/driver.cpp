#include "driver.h"

#include "core/version.h"
#include "documents/documentstore.h"
#include "reference/driverrules.h"
#include "forms/recordform.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace zarek {

Driver::Driver(QSqlDatabase db, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("Driver"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Шофьори"));

    RecordFormConfig config;
    config.validate = checkDriver;
    // A driver holding documents: one question that tells how many go with him; they go in one transaction.
    config.deleteQuestionFor = [db](const RecordRow &row) {
        return documents::holderDeleteQuestionFor(db, documents::Holder::Driver, row);
    };
    config.remove = [db](const RecordRow &row) {
        return documents::DocumentStore(db).removeHolder(documents::Holder::Driver, row, QStringLiteral("ГРЕШКА при изтриване!"));
    };
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
        int boxWidth;  // 0: as wide as the frame
    };
    QList<QLabel *> labels;
    const auto frame = [this, &labels](const char *name, const char *title, std::initializer_list<Field> fields) {
        auto *box = new QGroupBox(QString::fromUtf8(title), this);
        box->setObjectName(QString::fromLatin1(name));
        auto *form = new QFormLayout(box);
        for (const Field &f : fields) {
            auto *edit = new QLineEdit(box);
            edit->setObjectName(QStringLiteral("txtFields_%1").arg(f.index));
            edit->setMaxLength(f.maxLength);
            if (f.boxWidth > 0)
                edit->setMaximumWidth(f.boxWidth);
            auto *label = new QLabel(QString::fromUtf8(f.label), box);
            label->setBuddy(edit);
            labels.append(label);
            form->addRow(label, edit);
            edit->setProperty(RecordForm::columnProperty, QString::fromLatin1(f.column));
        }
        return box;
    };
    // Lengths a little above the limits, so the checks, not the boxes, tell what is too long.
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame("Frame1", "Шофьор", {{2, "Имена", "ime", 80, 0}, {3, "Код", "kod", 10, 70}}));
    layout->addWidget(frame("Frame2", "Адрес и телефони",
                            {{0, "Адрес", "adres", 90, 0}, {6, "Тел.", "tel", 20, 160}, {5, "GSM", "mob", 20, 160}}));
    layout->addWidget(frame("Frame3", "Документи", {{1, "ЕГН", "EGN", 20, 160}, {4, "Л.карта", "LKarta", 20, 160}}));
    layout->addWidget(m_form);
    m_form->bindColumns(this);
    // One column of captions through the three frames.
    int widest = 0;
    for (QLabel *label : std::as_const(labels))
        widest = std::max(widest, label->sizeHint().width());
    for (QLabel *label : std::as_const(labels))
        label->setMinimumWidth(widest);
    setMinimumWidth(520);
    m_form->open();
}

}
