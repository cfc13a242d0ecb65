#pragma once

#include "core/currency.h"
#include "forms/recordstore.h"
#include "warehouse/warehousestore.h"

#include <QSqlDatabase>
#include <QWidget>
#include <memory>

namespace Ui {
class Sklad;
}

namespace zarek {

class RecordForm;

// The record form of stock receipts ("Sklad", kind "P") or issues ("Sklad_R", kind "R"), one
// movement at a time. Saves and deletes go through the warehouse store, so the stock on hand, the
// receipts an issue takes from and the lots it records always agree. An issue's screen lists the
// lots of the issue shown. The window stands beside the main window.
class Sklad : public QWidget {
    Q_OBJECT
public:
    Sklad(const QString &vidKol, QSqlDatabase db, QWidget *parent = nullptr, WarehouseStore::Clock clock = {});
    ~Sklad() override;

    RecordForm *recordForm() const { return m_form; }
    WarehouseStore &store() { return m_store; }
    bool isIssues() const { return m_vidKol == StockMovement::issueKind(); }

    // Reads the movements again (the stock changed elsewhere), unless a row is being entered.
    void refresh();

signals:
    // A movement was saved or deleted: the stock changed.
    void stockChanged();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Checked<RecordRow> write(const RecordRow &row, bool adding);
    std::optional<UserMessage> remove(const RecordRow &row);
    void documentKindLeft();
    void nameLeft();
    void editStarted();
    void showRow();
    void showAmount();
    // While an issue is typed: what it would cost, by the store's own issue; empty when refused.
    QString issueAmountText() const;
    void showStockLine();
    void showLots();
    void showStockOf(const QString &name);
    void learn(const RecordRow &row);

    std::unique_ptr<Ui::Sklad> m_ui;
    QString m_vidKol;
    QSqlDatabase m_db;
    WarehouseStore m_store;
    BooksDay m_books;  // of the command that opened the window
    RecordForm *m_form = nullptr;
};

}
