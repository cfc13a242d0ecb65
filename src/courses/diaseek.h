#pragma once

#include "courses/searchdialog.h"

class QComboBox;
class QGroupBox;
class QLineEdit;

namespace zarek {

// The general search: a period and, by mode, a truck, an invoice, a client, a driver or an article.
// The truck text that stands for every truck.
inline QString everyTruckText() { return QStringLiteral("0"); }

class DiaSeek : public SearchDialog {
    Q_OBJECT
public:
    DiaSeek(SearchMode mode, QSqlDatabase db, QWidget *parent = nullptr);

    // The truck list begins with "0", which stands for every truck and passes the check.
    void offerEveryTruck();

protected:
    Checked<SearchConditions> check() const override;

private:
    QGroupBox *m_frame = nullptr;
    QComboBox *m_combo = nullptr;
    QLineEdit *m_article = nullptr;
};

}
