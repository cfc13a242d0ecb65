#include "searchdialog.h"

#include "forms/messageservice.h"
#include "forms/dateentry.h"
#include "forms/textboxcheck.h"

#include <QComboBox>
#include <QCompleter>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace zarek {

SearchDialog::SearchDialog(SearchMode mode, QSqlDatabase db, QWidget *parent)
    : QDialog(parent), m_mode(mode), m_db(std::move(db))
{
    setWindowTitle(QStringLiteral("Условия за търсене"));
    setModal(true);

    m_periodFrame = new QGroupBox(QStringLiteral("Избор на начална и крайна дата ( дд.мм.гггг )"), this);
    m_periodFrame->setObjectName(QStringLiteral("Frame1"));
    m_from = new DateEntry(m_periodFrame);
    m_from->setObjectName(QStringLiteral("Text1_0"));
    m_to = new DateEntry(m_periodFrame);
    m_to->setObjectName(QStringLiteral("Text1_1"));
    auto *period = new QFormLayout(m_periodFrame);
    period->addRow(QStringLiteral("от дата"), m_from);
    period->addRow(QStringLiteral("до дата"), m_to);

    auto *buttons = new QDialogButtonBox(this);
    m_ok = buttons->addButton(QStringLiteral("Търси"), QDialogButtonBox::AcceptRole);
    m_ok->setObjectName(QStringLiteral("OKButton"));
    m_ok->setToolTip(QStringLiteral("Стартира търсенето"));
    m_ok->setDefault(true);
    m_cancel = buttons->addButton(QStringLiteral("Отказ"), QDialogButtonBox::RejectRole);
    m_cancel->setObjectName(QStringLiteral("CancelButton"));
    m_cancel->setToolTip(QStringLiteral("Затваря прозореца"));
    connect(buttons, &QDialogButtonBox::accepted, this, &SearchDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &SearchDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_periodFrame);
    m_body = new QVBoxLayout;
    layout->addLayout(m_body);
    layout->addStretch();
    layout->addWidget(buttons);
    setMinimumWidth(420);
}

void SearchDialog::setPeriodEnabled(bool enabled)
{
    m_from->setEnabled(enabled);
    m_to->setEnabled(enabled);
}

void SearchDialog::setEntryOrder(const QList<QWidget *> &boxes)
{
    QList<QWidget *> order = {m_from, m_to};
    order.append(boxes);
    order.append({m_ok, m_cancel});
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
}

QStringList SearchDialog::itemsOf(const QComboBox *combo)
{
    QStringList items;
    for (int i = 0; i < combo->count(); ++i)
        items.append(combo->itemText(i));
    return items;
}

QComboBox *SearchDialog::makeCombo(const QString &objectName, QWidget *parent)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(objectName);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setMaxVisibleItems(20);
    combo->completer()->setFilterMode(Qt::MatchContains);
    combo->completer()->setCaseSensitivity(Qt::CaseInsensitive);
    combo->completer()->setCompletionMode(QCompleter::PopupCompletion);
    return combo;
}

bool SearchDialog::fillCombo(QComboBox *combo, const QStringList &items, bool showFirst)
{
    combo->addItems(items);
    combo->setCurrentIndex(showFirst && !items.isEmpty() ? 0 : -1);
    if (!showFirst)
        combo->setEditText(combo->currentText());
    return !items.isEmpty();
}

void SearchDialog::accept()
{
    if (const auto refused = checkTextBoxes(this, searchMessage(QString()).title)) {
        MessageService::instance().inform(*refused);
        return;
    }
    const Checked<SearchConditions> result = check();
    if (!result) {
        MessageService::instance().inform(result.message());
        return;
    }
    m_conditions = result.value();
    m_seekOk = true;
    QDialog::accept();
}

void SearchDialog::reject()
{
    MessageService::instance().inform(searchCancelledMessage());
    m_seekOk = false;
    QDialog::reject();
}

}
