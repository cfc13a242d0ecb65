#pragma once

#include "courses/coursejournalmodel.h"
#include "courses/coursejournalstore.h"
#include "data/tableexport.h"

#include <QWidget>
#include <functional>

class QChartView;
class QComboBox;
class QLabel;
class QLineEdit;
class QTableView;
class QTimer;

namespace zarek {

class DateEntry;

// "Журнал на курсовете": every course in a grid to sort and filter, the totals of what passes the
// conditions, the gross of each month as a chart, and the list out to a spreadsheet. Enter or a
// double click opens the course for correction; the journal reads again after it.
class CourseJournal : public QWidget {
    Q_OBJECT
public:
    CourseJournal(QSqlDatabase db, QWidget *parent = nullptr);

    // Opens a course for correction; true when it may have changed. Set by the command.
    std::function<bool(qint64 id)> openCourse;

    CourseJournalModel *model() const { return m_model; }
    QTableView *grid() const { return m_grid; }
    const JournalTotals &totals() const { return m_totals; }
    const QList<QPair<QString, double>> &months() const { return m_months; }
    // The list as it stands (conditions and order), as a table for a spreadsheet.
    Checked<ExportTable> exportTable() const;
    // Writes the list to an .xlsx or .csv file; tells the user what went wrong.
    bool exportTo(const QString &fileName);
    // Applies what is typed in the conditions now, without waiting for the pause in typing.
    void applyFilter();
    // Reads the totals and the months of the rows shown (done by itself just after the rows show).
    void refreshSummary();
    // Opens the current course, then reads the journal again, staying on that course.
    void openCurrent();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildScreen();
    JournalFilter filterOnScreen() const;
    void showTotals();
    void showChart();
    void chooseExportFile();

    BooksDay m_books;
    CourseJournalStore m_store;
    CourseJournalModel *m_model = nullptr;
    QTableView *m_grid = nullptr;
    DateEntry *m_from = nullptr;
    DateEntry *m_to = nullptr;
    QLineEdit *m_truck = nullptr;
    QLineEdit *m_driver = nullptr;
    QLineEdit *m_client = nullptr;
    QLineEdit *m_text = nullptr;
    QComboBox *m_invoiced = nullptr;
    QComboBox *m_paid = nullptr;
    QLabel *m_totalsLabel = nullptr;
    QChartView *m_chart = nullptr;
    QTimer *m_typing = nullptr;
    QTimer *m_summaryTimer = nullptr;
    JournalTotals m_totals;
    QList<QPair<QString, double>> m_months;
};

}
