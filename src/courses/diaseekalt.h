#pragma once

#include "courses/searchdialog.h"

class QComboBox;
class QRadioButton;

namespace zarek {

// The search with a three-way choice: all courses (invoiced or not) or a driver's (paid or not).
class DiaSeekAlt : public SearchDialog {
    Q_OBJECT
public:
    DiaSeekAlt(SearchMode mode, QSqlDatabase db, QWidget *parent = nullptr);

protected:
    Checked<SearchConditions> check() const override;

private:
    QComboBox *m_combo = nullptr;
    QRadioButton *m_all = nullptr;
    QRadioButton *m_yes = nullptr;
    QRadioButton *m_no = nullptr;
};

}
