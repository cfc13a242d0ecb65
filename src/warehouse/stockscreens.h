#pragma once

#include "core/dates.h"
#include "core/firmprofile.h"
#include "forms/resultgridscreen.h"
#include "warehouse/stocklists.h"

#include <QSqlDatabase>

namespace zarek {

// Stock on hand of the names that begin with a text, with its value; names priced under 1 in red.
// "Печат" prints rptNalich.
class NalichSK : public ResultGridScreen {
    Q_OBJECT
public:
    NalichSK(const QString &articlePrefix, QSqlDatabase db, FirmProfile firm, QWidget *parent, QDate today);

    static ResultGridConfig config(QDate today);
    const StockList &list() const { return m_list; }

protected:
    void onPrint() override;
    // The list's own currency.
    Currency totalsCurrencyOf(bool) const override { return m_list.currency; }

private:
    StockList m_list;
    FirmProfile m_firm;
    QDate m_today;
};

// The audit of a period: receipts and issues of every name, the remainder under 1 in red.
// "Печат" prints rptSklad. It stands beside the main window.
class SkladSK : public ResultGridScreen {
    Q_OBJECT
public:
    SkladSK(const Period &period, QSqlDatabase db, FirmProfile firm, QWidget *parent, QDate today);

    static ResultGridConfig config(QDate today);
    const StockList &list() const { return m_list; }

protected:
    void onPrint() override;
    Currency totalsCurrencyOf(bool) const override { return m_list.currency; }

private:
    StockList m_list;
    FirmProfile m_firm;
    QDate m_today;
};

}
