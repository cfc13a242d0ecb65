#include "diaseekall.h"

#include "forms/messageservice.h"
#include "forms/dateentry.h"
#include "courses/searchlists.h"

#include <QComboBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>

namespace zarek {

DiaSeekAll::DiaSeekAll(SearchMode mode, QSqlDatabase db, QWidget *parent) : SearchDialog(mode, db, parent)
{
    setObjectName(QStringLiteral("DiaSeekAll"));
    auto *frame = new QGroupBox(QStringLiteral("Допълнителни условия"), this);
    frame->setObjectName(QStringLiteral("Frame2"));
    m_klient = makeCombo(QStringLiteral("Combo1"), frame);
    m_klient->setToolTip(QStringLiteral("Избор на клиента на курса"));
    m_kola = makeCombo(QStringLiteral("Combo2"), frame);
    m_kola->setToolTip(QStringLiteral("Избор на колата на курса"));
    m_marsh = new QLineEdit(frame);
    m_marsh->setObjectName(QStringLiteral("Text3"));
    m_marsh->setToolTip(QStringLiteral("Избор на маршрута на курса"));
    m_tovar = new QLineEdit(frame);
    m_tovar->setObjectName(QStringLiteral("Text2"));
    m_tovar->setToolTip(QStringLiteral("Избор на вида товар на курса"));

    auto *klientLabel = new QLabel(QStringLiteral("Клиент"), frame);
    auto *kolaLabel = new QLabel(QStringLiteral("Кола №"), frame);
    auto *marshLabel = new QLabel(QStringLiteral("Маршрут"), frame);
    auto *tovarLabel = new QLabel(QStringLiteral("Вид товар"), frame);
    marshLabel->setObjectName(QStringLiteral("lblText3"));
    auto *form = new QFormLayout(frame);
    form->addRow(klientLabel, m_klient);
    form->addRow(kolaLabel, m_kola);
    form->addRow(marshLabel, m_marsh);
    form->addRow(tovarLabel, m_tovar);
    body()->addWidget(frame);

    m_klientList = searchlists::clients(db);
    if (!fillCombo(m_klient, m_klientList, true))
        MessageService::instance().inform(noCoursesMessage());
    for (QString &klient : m_klientList)
        klient = klient.trimmed();
    m_kolaList = searchlists::trucks(db);
    fillCombo(m_kola, m_kolaList, false);
    for (QString &kola : m_kolaList)
        kola = kola.trimmed();
    m_kola->setEditText(QStringLiteral("ааа"));  // the design text, until the user picks or clears it

    if (mode == SearchMode::SkladPRN) {
        for (QWidget *off : {static_cast<QWidget *>(m_klient), static_cast<QWidget *>(m_tovar)})
            off->setEnabled(false);
        klientLabel->setEnabled(false);
        tovarLabel->setEnabled(false);
        marshLabel->setText(QStringLiteral("Артикул"));
        m_marsh->setToolTip(QStringLiteral("Избор на артикул"));
        m_kola->setToolTip(QStringLiteral("Избор на номер на кола"));
        m_kola->setEditText(QString());  // no truck: the issues of all trucks
    }
    setEntryOrder({m_klient, m_kola, m_marsh, m_tovar});
    fromBox()->setFocus();
}

Checked<SearchConditions> DiaSeekAll::check() const
{
    const SeekAllInput input{fromBox()->text(), toBox()->text(), m_klient->currentText(),
                             m_kola->currentText(), m_marsh->text(), m_tovar->text()};
    return checkSeekAll(mode(), input, m_klientList, m_kolaList);
}

}
