#pragma once

#include "core/currency.h"
#include "core/dates.h"
#include "core/firmprofile.h"
#include "fleet/truckbalance.h"
#include "forms/resultgridscreen.h"
#include "reports/report.h"

#include <QSqlDatabase>
#include <functional>

class QLabel;

namespace zarek {

class ReportPreview;
class ScratchDatabase;

// The truck balance: every truck of the fleet with what came in, what went out and what remains
// in a period. In profit mode income from courses against warehouse issues, in money; in fuel
// mode the waybills' norm fuel against the fuel loaded, in litres, where Enter on a truck shows
// its waybills. Opened beside the main window; writes nothing to the register.
class Balans : public ResultGridScreen {
    Q_OBJECT
public:
    Balans(BalansMode mode, const Period &period, QSqlDatabase db, ScratchDatabase *scratch,
           std::function<const FirmProfile &()> firm, QWidget *parent = nullptr);

    static ResultGridConfig config(BalansMode mode, const Period &period);

    BalansMode mode() const { return m_mode; }
    const Period &period() const { return m_period; }
    // The figures behind the rows, in cents or tenths of a litre, for whatever shows them beside the grid.
    const QList<TruckBalance> &balances() const { return m_balances; }
    qint64 sumTotal() const { return m_sumTotal; }

    // rptBalans over the rows; "Печат" shows it and waits.
    Checked<Report> report() const;
    // rptKolaN of the truck in that row (fuel mode); Enter or a double click shows it.
    Checked<Report> waybillReport(int row) const;
    ReportPreview *showWaybills(int row);

protected:
    void onPrint() override { print(); }
    // Fuel mode: Enter shows the truck's waybills.
    bool onKey(QKeyEvent *key) override;
    // The chart goes with the rows to a workbook.
    QList<QPair<QString, QByteArray>> exportPictures() const override;

private:
    void load();
    void print();
    void showChart();

    BalansMode m_mode;
    Period m_period;
    QSqlDatabase m_db;
    ScratchDatabase *m_scratch;
    std::function<const FirmProfile &()> m_firm;
    QLabel *m_total = nullptr;
    QList<TruckBalance> m_balances;
    qint64 m_sumTotal = 0;
    Currency m_currency = Currency::Leva;  // of the sums shown, by the period
};

}
