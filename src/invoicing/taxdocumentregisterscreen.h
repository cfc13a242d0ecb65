#pragma once

#include "forms/resultgridscreen.h"
#include "invoicing/taxdocumentregister.h"

#include <QSqlDatabase>

namespace zarek {

// "Фактури": the register of issued invoices and notes of a period, with what is paid of each and
// where it stands, overdue ones red. Enter (or a double click) prints the document again as a copy;
// "Експорт..." writes the rows for the sales ledger.
class TaxDocumentRegisterScreen : public ResultGridScreen {
    Q_OBJECT
public:
    TaxDocumentRegisterScreen(QSqlDatabase db, TaxRegisterConditions conditions, QWidget *parent = nullptr);

    static ResultGridConfig config(const TaxRegisterConditions &conditions);
    // Reads the register again.
    void refresh();

signals:
    // The current row's document, to be printed again (the command shows its copy).
    void reprint(qint64 documentId);

protected:
    bool onKey(QKeyEvent *key) override;

private:
    void reprintCurrent();

    QSqlDatabase m_db;
    TaxRegisterConditions m_conditions;
};

}
