#pragma once

#include "invoicing/taxinvoicestore.h"

#include <QDialog>
#include <QSqlDatabase>
#include <QStringList>

class QCheckBox;
class QComboBox;
class QDateEdit;
class QPushButton;

namespace zarek {

// "Номер на фактурата": the free invoice numbers, the one after the highest used shown, the
// numbers left free below it listed after it. OK, the default button (Enter), takes a number only
// when it is a number of up to ten digits that no invoice has yet; "Отказ" or Esc takes none.
// Once tax documents are issued, invoices and notes run in one sequence without gaps: the dialog
// offers its next number only and takes no other. Below the number stand the invoice's choices:
// the date of the tax event (the last course's by default), one line a course or one summary line
// (remembered), the VAT rate and, at 0 %, its legal ground.
class DiaFakt : public QDialog {
    Q_OBJECT
public:
    DiaFakt(QSqlDatabase db, QWidget *parent = nullptr);
    DiaFakt(QStringList usedNumbers, QWidget *parent = nullptr);
    // The numbers in use, and the sequence's next number when only that one is given.
    DiaFakt(QStringList usedNumbers, std::optional<QString> onlyNumber, QWidget *parent = nullptr);

    // The accepted number, ten characters; "0000000000" while none was accepted.
    QString NomFakt() const { return m_number; }
    bool FaktChosen() const { return m_chosen; }

    QComboBox *combo() const { return m_combo; }
    QPushButton *okButton() const { return m_ok; }
    QPushButton *cancelButton() const { return m_cancel; }
    QCheckBox *lastCourseBox() const { return m_lastCourse; }
    QDateEdit *taxEventEdit() const { return m_taxEvent; }
    QComboBox *linesCombo() const { return m_lines; }
    QComboBox *vatCombo() const { return m_vat; }
    QComboBox *groundCombo() const { return m_ground; }

    // What was chosen for the invoice beside its number.
    IssueChoices choices() const;

    void accept() override;  // OK: the checks, then the number
    void reject() override;  // "Отказ", Esc or the close box: no number

private:
    void updateChoices();

    QStringList m_used;
    std::optional<QString> m_only;
    QString m_number;
    bool m_chosen = false;
    QComboBox *m_combo = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
    QCheckBox *m_lastCourse = nullptr;
    QDateEdit *m_taxEvent = nullptr;
    QComboBox *m_lines = nullptr;
    QComboBox *m_vat = nullptr;
    QComboBox *m_ground = nullptr;
};

}
