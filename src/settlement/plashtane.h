#pragma once

#include "core/firmprofile.h"
#include "courses/searchconditions.h"
#include "forms/resultgridscreen.h"
#include "reports/laidoutreport.h"
#include "settlement/paymentstore.h"

#include <QDate>
#include <QSqlDatabase>

namespace zarek {

class ScratchDatabase;

// Paying a driver: his unpaid courses of a period, marked paid one by one with Space while the sum
// due runs below, and "Печат" for the statement of the marked courses with the receipt he signs.
// Each mark is written at once, only if nobody changed the course since it was read. The sum due
// and the receipt's sum are the driver's pay of the marked courses, by the pay sheet's own rule.
class Plashtane : public ResultGridScreen {
    Q_OBJECT
public:
    Plashtane(const SearchConditions &conditions, QSqlDatabase db, ScratchDatabase &scratch, FirmProfile firm,
              QWidget *parent, QDate today);

    static ResultGridConfig config(const QString &driverName, QDate today);

protected:
    // Each mark is written at once.
    std::optional<UserMessage> onMark(int row, bool paid) override;
    bool onKey(QKeyEvent *key) override;
    // The driver is paid today, in today's currency.
    Currency totalsCurrencyOf(bool anyEuro) const override;
    // The sum due: the driver's pay of the marked courses (pricePaySheet), not their sums.
    Money marksTotal() const override;
    void onPrint() override { print(); }

private:
    // The courses of these rows as the pay sheet reads them.
    PaySheet sheetOf(const QList<int> &rows) const;
    QList<int> markedRows() const;
    // The driver's pay of the marked courses, in the screen's currency, or why there is none.
    Checked<Money> markedPay() const;
    // Space: a course is marked only when its pay can be worked out; the sum due shown again.
    bool spacePressed();
    void showPay();
    // After a refused mark: the row as it is stored now, or out of the grid when it is no longer
    // an unpaid course of this driver and period.
    void showStoredState(int row);
    // The statement of the marked courses laid out, or nothing after telling why.
    std::optional<LaidOutReport> statement();
    void print();

    SearchConditions m_conditions;
    QSqlDatabase m_db;
    PaymentStore m_store;
    QList<PayTruck> m_trucks;  // the percent and rated load of each truck, read once
    ScratchDatabase &m_scratch;
    FirmProfile m_firm;
    QDate m_today;
};

}
