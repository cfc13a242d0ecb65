#pragma once

#include "courses/searchdialog.h"

#include <QStringList>

class QComboBox;
class QLabel;
class QLineEdit;

namespace zarek {

// The invoicing search: a period, a client, optionally a truck, and route and cargo prefixes.
class DiaSeekAll : public SearchDialog {
    Q_OBJECT
public:
    DiaSeekAll(SearchMode mode, QSqlDatabase db, QWidget *parent = nullptr);

    const QStringList &KlientList() const { return m_klientList; }
    const QStringList &KolaList() const { return m_kolaList; }

protected:
    Checked<SearchConditions> check() const override;

private:
    QComboBox *m_klient = nullptr;
    QComboBox *m_kola = nullptr;
    QLineEdit *m_marsh = nullptr;
    QLineEdit *m_tovar = nullptr;
    QStringList m_klientList;
    QStringList m_kolaList;
};

}
