#pragma once

#include "core/firmprofile.h"
#include "data/rowset.h"
#include "forms/commandday.h"
#include "forms/resultgridscreen.h"
#include "reports/report.h"

#include <QDate>
#include <QSqlDatabase>

namespace zarek::documents {

// The paper of the due list (rptDokumenti): the firm, the day, the rows as the screen shows them.
Checked<Report> dueDocumentsReport(const RowSet &rows, const FirmProfile &firm, const QDate &today);

// "Изтичащи документи": every document expired or due, the soonest deadline first, expired ones
// red and due ones amber. Enter (or a double click) opens the document; "Печат" prints the list,
// "Експорт..." writes it for a spreadsheet.
class DueDocuments : public ResultGridScreen {
    Q_OBJECT
public:
    DueDocuments(QSqlDatabase db, FirmProfile firm, QWidget *parent = nullptr, QDate today = commandToday());

    static ResultGridConfig config(const QDate &today);
    // Reads the list again (after a document was renewed, say).
    void refresh();

signals:
    void openDocument(qint64 id);

protected:
    void onPrint() override;
    bool onKey(QKeyEvent *key) override;

private:
    void openCurrent();

    QSqlDatabase m_db;
    FirmProfile m_firm;
    QDate m_today;
};

}
