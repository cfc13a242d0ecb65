#pragma once

#include "core/firmprofile.h"
#include "forms/resultgridscreen.h"
#include "receivables/receivablesstore.h"
#include "reports/report.h"

#include <QSqlDatabase>

namespace zarek::receivables {

// The paper of a client's account: the design rptIzvlechenie filled with the account's lines.
Checked<Report> clientAccountReport(const ClientAccount &account, const FirmProfile &firm);

// "Вземания": what each client owes on a date, by age. Enter opens the client's account.
class ReceivablesScreen : public ResultGridScreen {
    Q_OBJECT
public:
    ReceivablesScreen(QSqlDatabase db, const QDate &on, QWidget *parent = nullptr);
    static ResultGridConfig config(const QDate &on);
    void setDate(const QDate &on);
    QDate date() const { return m_on; }
signals:
    void accountRequested(const QString &client, const QDate &from, const QDate &to);

protected:
    bool onKey(QKeyEvent *key) override;

private:
    void openCurrent();
    QSqlDatabase m_db;
    QDate m_on;
};

// "Извлечение по сметка": a client's invoices, notes and payments over a period with the
// running balance; printed through the report engine, exported for a spreadsheet.
class ClientAccountScreen : public ResultGridScreen {
    Q_OBJECT
public:
    ClientAccountScreen(QSqlDatabase db, FirmProfile firm, const QString &client, const QDate &from, const QDate &to,
                        QWidget *parent = nullptr);
    static ResultGridConfig config();
    const ClientAccount &account() const { return m_account; }

protected:
    void onPrint() override;

private:
    QSqlDatabase m_db;
    FirmProfile m_firm;
    ClientAccount m_account;
};

// Asks for a client and a period; false when the user gave up.
bool askAccountConditions(QSqlDatabase db, const QDate &today, QWidget *parent, QString &client, QDate &from, QDate &to);

}
