#pragma once

#include <QDialog>
#include <QSqlDatabase>

namespace zarek {

class RecordForm;

// The drivers: one row of shof at a time, on the record form.
class Driver : public QDialog {
    Q_OBJECT
public:
    explicit Driver(QSqlDatabase db, QWidget *parent = nullptr);
    RecordForm *recordForm() const { return m_form; }

private:
    RecordForm *m_form = nullptr;
};

}
