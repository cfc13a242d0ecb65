#pragma once

#include "reference/tariffstore.h"

#include <QDialog>
#include <QSqlDatabase>

class QLineEdit;
class QTabWidget;

namespace zarek {

class RecordForm;

// The trucks with their norms and pay percents, and the tariffs by distance.
class Options : public QDialog {
    Q_OBJECT
public:
    explicit Options(QSqlDatabase db, QWidget *parent = nullptr);
    RecordForm *trucks() const { return m_trucks; }
    QTabWidget *tabs() const { return m_tabs; }

    void saveTariffs();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    QStringList typedRates() const;

    QSqlDatabase m_db;
    QTabWidget *m_tabs = nullptr;
    RecordForm *m_trucks = nullptr;
    QLineEdit *m_rates[6] = {};
    std::optional<TariffRow> m_tariffs;
    QStringList m_savedRates;  // the rates as shown when read or last saved
};

}
