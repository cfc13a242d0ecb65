#pragma once

#include "core/currency.h"
#include "core/dates.h"
#include "courses/course.h"
#include "courses/coursecheck.h"
#include "courses/courseeditorrules.h"
#include "courses/tariffbands.h"

#include <QDialog>
#include <QSqlDatabase>
#include <memory>

class QComboBox;
class QLabel;
class QLineEdit;

namespace Ui {
class Kurs;
}

namespace zarek {

class RecordForm;

// The course editor: new courses one after another (NewKurs), or the courses of one truck in a
// period corrected (EditKurs). Checks, prices and writes through the course store.
class Kurs : public QDialog {
    Q_OBJECT
public:
    // NewKurs: every course, a new one started at once.
    Kurs(QSqlDatabase db, QWidget *parent = nullptr);
    // EditKurs: the courses of the truck in the period, by date.
    Kurs(QSqlDatabase db, const QString &kola, const Period &period, QWidget *parent = nullptr);

    // EditKurs on the one course of that id, opened for correction (the course journal's Enter).
    static std::unique_ptr<Kurs> forCourse(QSqlDatabase db, qint64 id, QWidget *parent = nullptr);
    ~Kurs() override;

    CourseMode mode() const { return m_mode; }
    RecordForm *recordForm() const { return m_form; }

signals:
    // A client the register did not have was added to it after its course was saved (its name only).
    void newClientAdded(qint64 id);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    Kurs(CourseMode mode, QSqlDatabase db, const QString &kola, const Period &period, QWidget *parent);

    void buildScreen();
    void loadLists();
    void setTabOrder();
    void open();

    void showSums(bool ofRow);
    Currency courseCurrency() const;
    void showUnits();
    void showDriverName(const QString &code);
    void showRate();
    void pickRate();
    void settleRateCurrency();
    void resolveDriver();
    QWidget *boxOf(const QString &column) const;
    void setFieldsEnabled(bool on);
    void onStateChanged();
    void onAdded();
    void onEditStarted();
    void onSaved();
    void offerNewClient();
    void showDerived();
    QStringList typedOutside() const;

    CourseEntry entryOf(const QVariantMap &typed) const;
    std::optional<UserMessage> check(QVariantMap &entry);
    Checked<RecordRow> write(const RecordRow &row);
    std::optional<UserMessage> remove(const RecordRow &row);
    void learnValues(const RecordRow &row);

    CourseMode m_mode;
    QSqlDatabase m_db;
    BooksDay m_books;  // of the command that opened the editor
    TariffBands m_tariffBands;
    QStringList m_drivers;  // "kod,ime" of each driver
    double m_currentTariff = 0;
    // What the rate box holds: the currency it is in (none while empty), whether it was typed by
    // hand, and the kilometres it was set for.
    std::optional<Currency> m_rateCurrency;
    bool m_rateByHand = false;
    QString m_kmAtRate;
    CourseCheckResult m_checked;  // the checked course between the checks and the write of a save
    QStringList m_outsideAtStart;  // the unbound boxes as a course's entry or correction began

    std::unique_ptr<Ui::Kurs> m_ui;
    RecordForm *m_form = nullptr;
    QList<QComboBox *> m_valueCombos;  // the lists of earlier values: truck, route, client, cargo
    QList<QLabel *> m_sums;   // gross, percent, net
    QList<QLabel *> m_units;  // after the three sums and the expense
};

}
