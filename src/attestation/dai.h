#pragma once

#include "attestation/attestation.h"
#include "attestation/attestationstore.h"
#include "core/firmprofile.h"
#include "forms/commandday.h"
#include "reports/report.h"

#include <QDate>
#include <QDialog>
#include <QSqlDatabase>
#include <memory>
#include <optional>

class QCheckBox;
class QLabel;
class QLineEdit;

namespace Ui {
class DAI;
}

namespace zarek {

// The attestation of a driver's activities ("Удостоверение ДАИ"): the sheet on screen as it prints,
// the firm's items from its profile, a driver picked from the list, the period typed, one reason
// ticked; "Печат" previews it in the form chosen (the program's, or the one in use since 2010).
class DAI : public QDialog {
    Q_OBJECT
public:
    DAI(QSqlDatabase db, FirmProfile firm, QWidget *parent = nullptr, QDate today = commandToday());
    ~DAI() override;

    AttestationForm form() const;
    void setForm(AttestationForm form);

    // What the sheet on screen states; the print takes exactly this.
    AttestationSheet sheet() const;
    Checked<Report> attestationReport() const;

public slots:
    // Previews the attestation, modally, for print.
    void print();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void showFirm();
    void loadDrivers();
    void pickDriver(const QString &name, bool leavePicker);
    void showDriverPicker();
    void leavePeriodBox(int index);
    void showPeriodBox(int index);
    void applyFormTexts();
    void fitToSheet();
    void setTabOrder();
    QList<QCheckBox *> reasonBoxes() const;
    AttestationReason reasonOf(const QCheckBox *box) const;
    QLineEdit *periodBox(int index) const;
    QLabel *periodLabel(int index) const;
    QLineEdit *hourBox(int index) const;
    QList<QWidget *> periodBoxes(int index) const;  // hour, "на", day

    std::unique_ptr<Ui::DAI> m_ui;
    QSqlDatabase m_db;
    FirmProfile m_firm;
    QDate m_today;
    std::optional<AttestedDriver> m_driver;  // none until a driver is picked
    QString m_birthDate;
    bool m_pickingByKey = false;  // arrows in the closed list: the pick shows, the list stays
};

}
