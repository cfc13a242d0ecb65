#pragma once

#include "invoicing/taxinvoicestore.h"

#include <QDialog>
#include <QSqlDatabase>
#include <functional>

class QLineEdit;
class QPushButton;

namespace zarek {

// "Дебитно известие": raises an issued invoice's amount by one typed line. The invoice by its
// number, the line's text, its amount without VAT in the invoice's currency and the reason; OK
// issues the note under the next number of the one sequence, "Отказ" (Esc) issues nothing.
class DebitNoteDialog : public QDialog {
    Q_OBJECT
public:
    DebitNoteDialog(QSqlDatabase db, QWidget *parent = nullptr);

    // The note issued; 0 while none was.
    qint64 issuedDocument() const { return m_issued; }
    std::function<QDate()> today = [] { return QDate::currentDate(); };

    QLineEdit *numberEdit() const { return m_number; }
    QLineEdit *textEdit() const { return m_text; }
    QLineEdit *amountEdit() const { return m_amount; }
    QLineEdit *reasonEdit() const { return m_reason; }
    QPushButton *okButton() const { return m_ok; }

    void accept() override;

private:
    QSqlDatabase m_db;
    qint64 m_issued = 0;
    QLineEdit *m_number = nullptr;
    QLineEdit *m_text = nullptr;
    QLineEdit *m_amount = nullptr;
    QLineEdit *m_reason = nullptr;
    QPushButton *m_ok = nullptr;
};

}
