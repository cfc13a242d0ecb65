#include "documentkinds.h"

#include "core/formats.h"
#include "documents/documentstore.h"
#include "forms/recordform.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <cmath>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace zarek::documents {

namespace {

const QString saveTitle = QStringLiteral("ГРЕШКА при запис!");

std::optional<UserMessage> checkKind(const QVariantMap &typed)
{
    const auto fault = [](const QString &text, const QString &request) {
        return UserMessage::twoLines(saveTitle, text, request, UserMessage::Icon::Exclamation);
    };
    if (typed.value(QStringLiteral("Ime")).toString().trimmed().isEmpty())
        return fault(QStringLiteral("Не е въведено име на вида!"), QStringLiteral("Моля, въведете име!"));
    if (!holderOfCode(typed.value(QStringLiteral("Za")).toString().trimmed()))
        return fault(QStringLiteral("Не е избрано чий е документът!"), QStringLiteral("Моля, изберете K (кола) или S (шофьор)!"));
    struct Limit {
        const char *column;
        const char *caption;
        int most;
    };
    for (const Limit &limit : {Limit{"Meseci", "Месеци", 240}, Limit{"Dni", "Дни", 3660}, Limit{"Predi", "Напомня дни преди", 365},
                               Limit{"RabDni", "Заявява се работни дни преди", 60}}) {
        const QString text = typed.value(QString::fromLatin1(limit.column)).toString().trimmed();
        const auto number = text.isEmpty() ? std::optional<double>(0) : parseNumber(text);
        if (!number || *number != std::floor(*number) || *number < 0 || *number > limit.most)
            return fault(QStringLiteral("\"%1\" трябва да е цяло число от 0 до %2!").arg(QString::fromUtf8(limit.caption)).arg(limit.most),
                         QStringLiteral("Моля, поправете числото!"));
    }
    return std::nullopt;
}

}

DocumentKinds::DocumentKinds(QSqlDatabase db, QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("DocumentKinds"));
    setWindowTitle(QStringLiteral("Зарек - Видове документи"));
    setProperty("helpTopic", 300);

    RecordFormConfig config;
    config.statusText = QStringLiteral("Вид № ");
    config.numberColumns = {QStringLiteral("Meseci"), QStringLiteral("Dni"), QStringLiteral("Predi"), QStringLiteral("RabDni")};
    config.lockedWhileEditing = {QStringLiteral("Ime")};  // the documents name their kind
    config.validate = checkKind;
    config.presets = [](QVariantMap &values) {
        values.insert(QStringLiteral("Za"), QStringLiteral("K"));
        values.insert(QStringLiteral("Meseci"), 12);
        values.insert(QStringLiteral("Dni"), 0);
        values.insert(QStringLiteral("Predi"), 30);
        values.insert(QStringLiteral("RabDni"), 0);
        values.insert(QStringLiteral("Napomnia"), true);
    };
    const DocumentStore store(db);
    config.remove = [store](const RecordRow &row) { return store.removeKind(row, QStringLiteral("ГРЕШКА при изтриване!")); };
    m_form = new RecordForm(store.kindRows(), config, this);
    connect(m_form, &RecordForm::closeRequested, this, &QDialog::reject);

    auto *form = new QFormLayout;
    struct Field {
        const char *label;
        const char *column;
        int width;
    };
    int index = 0;
    for (const Field &f : {Field{"Вид документ", "Ime", 0}, Field{"Чий е (K - кола, S - шофьор)", "Za", 60},
                           Field{"Валиден месеци", "Meseci", 80}, Field{"и дни", "Dni", 80},
                           Field{"Напомня дни преди срока", "Predi", 80},
                           Field{"Заявява се работни дни преди изтичане", "RabDni", 80}}) {
        auto *edit = new QLineEdit(this);
        edit->setObjectName(QStringLiteral("txtFields_%1").arg(index++));
        if (f.width > 0)
            edit->setMaximumWidth(f.width);
        edit->setProperty(RecordForm::columnProperty, QString::fromLatin1(f.column));
        if (QLatin1String(f.column) != QLatin1String("Za")) {
            form->addRow(QString::fromUtf8(f.label), edit);
            continue;
        }
        // The holder is picked from the two codes while a kind is added or corrected.
        auto *holderCombo = new QComboBox(this);
        holderCombo->setObjectName(QStringLiteral("ComboZa"));
        holderCombo->addItems({QStringLiteral("K"), QStringLiteral("S")});
        holderCombo->setMaximumWidth(60);
        auto *holderRow = new QHBoxLayout;
        holderRow->addWidget(edit);
        holderRow->addWidget(holderCombo);
        holderRow->addStretch();
        form->addRow(QString::fromUtf8(f.label), holderRow);
        holderCombo->setProperty(RecordForm::columnProperty, QString::fromLatin1(f.column));  // it covers the box
    }
    auto *remind = new QCheckBox(QStringLiteral("Напомня се"), this);
    remind->setObjectName(QStringLiteral("chkNapomnia"));
    form->addRow(QString(), remind);
    remind->setProperty(RecordForm::columnProperty, QStringLiteral("Napomnia"));
    m_form->bindColumns(this);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    auto *note = new QLabel(QStringLiteral("Месеци и дни 0: документът не изтича. Вид, по който има документи, не се "
                                           "преименува и не се изтрива."),
                            this);
    note->setWordWrap(true);
    note->setEnabled(false);
    layout->addWidget(note);
    layout->addWidget(m_form);
    setMinimumWidth(560);
    m_form->open();
}

}
