#pragma once

#include <QDialog>
#include <QSqlDatabase>

namespace zarek {

class RecordForm;

// The users other than the administrators of kind "A". A password is set here and never shown:
// left empty while correcting, the old one stays.
class PassWord : public QDialog {
    Q_OBJECT
public:
    explicit PassWord(QSqlDatabase db, QWidget *parent = nullptr);
    RecordForm *recordForm() const { return m_form; }

private:
    RecordForm *m_form = nullptr;
};

}
