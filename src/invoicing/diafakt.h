#pragma once

#include <QDialog>
#include <QSqlDatabase>
#include <QStringList>

class QComboBox;
class QPushButton;

namespace zarek {

// "Номер на фактурата": the free invoice numbers, the one after the highest used shown, the
// numbers left free below it listed after it. OK, the default button (Enter), takes a number only
// when it is a number of up to ten digits that no invoice has yet; "Отказ" or Esc takes none.
class DiaFakt : public QDialog {
    Q_OBJECT
public:
    DiaFakt(QSqlDatabase db, QWidget *parent = nullptr);
    DiaFakt(QStringList usedNumbers, QWidget *parent = nullptr);

    // The accepted number, ten characters; "0000000000" while none was accepted.
    QString NomFakt() const { return m_number; }
    bool FaktChosen() const { return m_chosen; }

    QComboBox *combo() const { return m_combo; }
    QPushButton *okButton() const { return m_ok; }
    QPushButton *cancelButton() const { return m_cancel; }

    void accept() override;  // OK: the checks, then the number
    void reject() override;  // "Отказ", Esc or the close box: no number

private:
    QStringList m_used;
    QString m_number;
    bool m_chosen = false;
    QComboBox *m_combo = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
};

}
