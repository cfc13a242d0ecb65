#include "diaseek.h"

#include "forms/messageservice.h"
#include "forms/dateentry.h"
#include "courses/searchlists.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLineEdit>
#include <QVBoxLayout>

namespace zarek {

DiaSeek::DiaSeek(SearchMode mode, QSqlDatabase db, QWidget *parent) : SearchDialog(mode, db, parent)
{
    setObjectName(QStringLiteral("DiaSeek"));
    m_frame = new QGroupBox(QStringLiteral("Клиент"), this);
    m_frame->setObjectName(QStringLiteral("Frame2"));
    m_frame->setToolTip(QStringLiteral("Избор на номер на кола (19-31 )"));
    m_combo = makeCombo(QStringLiteral("Combo1"), m_frame);
    m_combo->setToolTip(QStringLiteral("Допълнително условия за търсене."));
    m_article = new QLineEdit(m_frame);
    m_article->setObjectName(QStringLiteral("Text2"));
    auto *layout = new QVBoxLayout(m_frame);
    layout->addWidget(m_combo);
    layout->addWidget(m_article);
    body()->addWidget(m_frame);

    QStringList items;
    bool listMode = true;
    switch (mode) {
    case SearchMode::Kola:
        m_frame->setTitle(QStringLiteral("Кола №"));
        items = searchlists::trucks(db);
        break;
    case SearchMode::EditFakt:
        m_frame->setTitle(QStringLiteral("Фактура № "));
        items = searchlists::invoiceNumbers(db);
        setPeriodEnabled(false);
        break;
    case SearchMode::Klients:
        m_frame->setTitle(QStringLiteral("Клиент"));
        items = searchlists::clients(db);
        break;
    case SearchMode::Driver:
        m_frame->setTitle(QStringLiteral("Шофьор"));
        items = searchlists::drivers(db);
        break;
    case SearchMode::NalichSK:
    case SearchMode::SkladPR:
        m_frame->setTitle(QStringLiteral("Артикул"));
        m_combo->setEnabled(false);
        m_combo->hide();
        setPeriodEnabled(mode != SearchMode::NalichSK);
        listMode = false;
        break;
    default:  // All and the modes that ask only a period
        m_frame->setTitle(QString());
        m_combo->setEnabled(false);
        listMode = false;
        break;
    }
    const bool articleEntry = mode == SearchMode::NalichSK || mode == SearchMode::SkladPR;
    m_article->setVisible(articleEntry);
    m_article->setEnabled(articleEntry);
    if (listMode && !fillCombo(m_combo, items, true))
        MessageService::instance().inform(emptyListMessage());

    setEntryOrder({m_combo, m_article});
    if (fromBox()->isEnabled())
        fromBox()->setFocus();
    else if (m_combo->isEnabled())
        m_combo->setFocus();
    else
        m_article->setFocus();
}

void DiaSeek::offerEveryTruck()
{
    if (mode() != SearchMode::Kola || m_combo->findText(everyTruckText()) >= 0)
        return;
    const QString shown = m_combo->currentText();
    m_combo->insertItem(0, everyTruckText());
    m_combo->setEditText(shown.isEmpty() ? everyTruckText() : shown);
    m_combo->setToolTip(QStringLiteral("0 - всички коли"));
}

Checked<SearchConditions> DiaSeek::check() const
{
    return checkSeek(mode(), fromBox()->text(), toBox()->text(), m_combo->currentText(), m_article->text(),
                     itemsOf(m_combo));
}

}
