#pragma once

#include <QDialog>
#include <QSqlDatabase>
#include <memory>

class QComboBox;
class QLineEdit;

namespace Ui {
class Klienti;
}

namespace zarek {
class RecordForm;
}

namespace zarek::clients {

// "Клиенти": the client register, one client at a time on the record form: name, ЕИК/БУЛСТАТ,
// VAT number, address, town, country, МОЛ, telephone, e-mail and payment term. A client's courses
// name it by its name.
class Klienti : public QDialog {
    Q_OBJECT
public:
    explicit Klienti(QSqlDatabase db, QWidget *parent = nullptr);
    ~Klienti() override;

    RecordForm *recordForm() const { return m_form; }
    // txtFields by index, in the order of clientColumns().
    QLineEdit *field(int index) const;
    QComboBox *findCombo() const;

    // Goes to the client of that id (reading the rows again when it is new); false when it is not there.
    bool showClient(qint64 id);
    // Goes to the client of that id and opens it for correction: the course editor's new client,
    // whose ЕИК and address are still to be typed.
    bool editClient(qint64 id);
    // Goes to the first client whose name holds the text; false when none does.
    bool findClient(const QString &text);

private:
    void setUpForm();
    void loadNames();

    std::unique_ptr<Ui::Klienti> m_ui;
    QSqlDatabase m_db;
    RecordForm *m_form = nullptr;
    QString m_faultColumn;
};

}
