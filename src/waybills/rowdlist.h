#pragma once

#include "waybills/waybillstore.h"

#include <QDialog>
#include <QSqlDatabase>
#include <memory>

class QComboBox;
class QLineEdit;
class QPushButton;
class QTabWidget;
class QTableView;

namespace Ui {
class RowdList;
}

namespace zarek {

class RecordForm;

// The waybill editor: the header of a waybill on the tab "Обща част" (a record form over
// RowdList), its route lines typed straight into the grid on "Маршрути" (a record form over
// Marsh). Each line gets its norm fuel when it is saved; "Изчисли" totals the stored lines into
// the header. A new waybill and the lines saved for it are kept or dropped together.
class RowdList : public QDialog {
    Q_OBJECT
public:
    explicit RowdList(QSqlDatabase db, QWidget *parent = nullptr);
    ~RowdList() override;

    RecordForm *header() const { return m_rowd; }
    RecordForm *routes() const { return m_marsh; }
    QTabWidget *tabs() const;
    QTableView *grid() const;
    QLineEdit *field(int index) const;  // the box named txtFields(index), for tests and people
    QComboBox *driverCombo() const;
    QComboBox *truckCombo() const;
    QPushButton *calculateButton() const { return m_calculate; }
    // The number the route lines are saved under, and the truck whose norm they take.
    QString currentListId() const { return m_listIdCur; }
    QString currentKola() const { return m_kolaCur; }

    // "Затвори", Esc or the close box: a line or a waybill being typed is dropped first, a new
    // waybill with the lines saved for it.
    void reject() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildHeader();
    void buildRoutes();
    void setTabOrder();
    void open();

    void onTabChanged(int index);
    bool openRoutes();
    void onNumberLeft();
    void tellNumberTaken(const QString &number);
    void linesFollow(const QString &number);
    void markRequired(bool on);
    void fillCombos();
    void calculate();
    void showPriceUnits();

    void onHeaderStateChanged();
    void onHeaderAdded();
    void onHeaderEditStarted();
    void onHeaderSaved();
    void onHeaderCancelled();
    std::optional<UserMessage> checkHeader(QVariantMap &entry);
    Checked<RecordRow> writeHeader(const RecordRow &row, bool adding);
    std::optional<UserMessage> removeHeader(const RecordRow &row);

    Checked<RecordRow> writeLine(const RecordRow &row, bool adding);
    std::optional<UserMessage> removeLine(const RecordRow &row);
    void showSums(const WaybillStore::Sums &sums);

    std::unique_ptr<Ui::RowdList> m_ui;
    QSqlDatabase m_db;
    WaybillStore m_store;
    RecordForm *m_rowd = nullptr;
    RecordForm *m_marsh = nullptr;
    QPushButton *m_calculate = nullptr;
    QString m_listIdCur;
    QString m_kolaCur;
    bool m_routesRead = false;      // the route rows were read once (open), later ones reload
    QString m_takenTold;            // a taken number just told, not to be told again by the same step
    bool m_addingHeader = false;    // a new waybill is being typed
    QList<qint64> m_newLines;       // lines saved for that new waybill in this opening
    QStringList m_priceCaptions;    // the two price captions without a unit
};

}
