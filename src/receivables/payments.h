#pragma once

#include "core/currency.h"
#include "receivables/receivablesrules.h"

#include <QDialog>
#include <QSqlDatabase>

#include <memory>

namespace Ui {
class Payments;
}

namespace zarek::receivables {

// "Плащания от клиенти": the payments recorded and a new one with the documents it settles. A
// payment is recorded or deleted whole, never corrected: its settlements follow it.
class Payments : public QDialog {
    Q_OBJECT
public:
    Payments(QSqlDatabase db, const BooksDay &books, QWidget *parent = nullptr);
    ~Payments() override;

    // Shows the client's open documents and credit.
    void setClient(const QString &client);
    bool save();
    void removeCurrent();
    void spreadClientCredit();

private:
    void loadPayments();
    void loadDocuments();
    Ui::Payments *ui() const { return m_ui.get(); }

    std::unique_ptr<Ui::Payments> m_ui;
    QSqlDatabase m_db;
    BooksDay m_books;
    QList<OpenDocument> m_documents;
};

}
