#include "diaseekalt.h"

#include "forms/messageservice.h"
#include "forms/dateentry.h"
#include "courses/searchlists.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QRadioButton>
#include <QVBoxLayout>

namespace zarek {

DiaSeekAlt::DiaSeekAlt(SearchMode mode, QSqlDatabase db, QWidget *parent) : SearchDialog(mode, db, parent)
{
    setObjectName(QStringLiteral("DiaSeekAlt"));
    const bool driver = mode == SearchMode::Driver;

    auto *frame2 = new QGroupBox(driver ? QStringLiteral("Шофьор") : QString(), this);
    frame2->setObjectName(QStringLiteral("Frame2"));
    m_combo = makeCombo(QStringLiteral("Combo1"), frame2);
    (new QVBoxLayout(frame2))->addWidget(m_combo);

    auto *frame3 = new QGroupBox(this);
    frame3->setObjectName(QStringLiteral("Frame3"));
    m_all = new QRadioButton(QStringLiteral("Всички"), frame3);
    m_all->setObjectName(QStringLiteral("Option1"));
    m_yes = new QRadioButton(driver ? QStringLiteral("Платени") : QStringLiteral("Фактурирани"), frame3);
    m_yes->setObjectName(QStringLiteral("Option2"));
    m_no = new QRadioButton(driver ? QStringLiteral("Неплатени") : QStringLiteral("Нефактурирани"), frame3);
    m_no->setObjectName(QStringLiteral("Option3"));
    m_all->setChecked(true);
    auto *options = new QHBoxLayout(frame3);
    options->addWidget(m_all);
    options->addWidget(m_yes);
    options->addWidget(m_no);

    body()->addWidget(frame2);
    body()->addWidget(frame3);

    if (driver) {
        if (!fillCombo(m_combo, searchlists::drivers(db), true))
            MessageService::instance().inform(emptyListMessage());
    } else {
        m_combo->setEnabled(false);
    }
    setEntryOrder({m_combo, m_all, m_yes, m_no});
    fromBox()->setFocus();
}

Checked<SearchConditions> DiaSeekAlt::check() const
{
    const SearchChoice choice = m_yes->isChecked() ? SearchChoice::Yes
                              : m_no->isChecked()  ? SearchChoice::No
                                                   : SearchChoice::All;
    return checkSeekAlt(mode(), fromBox()->text(), toBox()->text(), m_combo->currentText(), choice);
}

}
