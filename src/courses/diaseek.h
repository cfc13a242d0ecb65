#pragma once

#include "courses/searchdialog.h"

class QComboBox;
class QGroupBox;
class QLineEdit;

namespace zarek {

// The general search: a period and, by mode, a truck, an invoice, a client, a driver or an article.
class DiaSeek : public SearchDialog {
    Q_OBJECT
public:
    DiaSeek(SearchMode mode, QSqlDatabase db, QWidget *parent = nullptr);

protected:
    Checked<SearchConditions> check() const override;

private:
    QGroupBox *m_frame = nullptr;
    QComboBox *m_combo = nullptr;
    QLineEdit *m_article = nullptr;
};

}
