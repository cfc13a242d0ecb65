#pragma once

#include <QDialog>
#include <QSqlDatabase>

namespace zarek {
class RecordForm;
}

namespace zarek::documents {

// "Видове документи": the kinds the firm keeps, their usual validity and warning, on the record form.
class DocumentKinds : public QDialog {
    Q_OBJECT
public:
    explicit DocumentKinds(QSqlDatabase db, QWidget *parent = nullptr);
    RecordForm *recordForm() const { return m_form; }

private:
    RecordForm *m_form = nullptr;
};

}
