#pragma once

#include "international/triprules.h"

#include <QDialog>
#include <QSqlDatabase>
#include <memory>

class QComboBox;
class QLineEdit;

namespace Ui {
class InsideKurs;
}

namespace zarek {

class RecordForm;

// The register of international trips: one CMR consignment note a row of ExternalKurs, kept on
// the record form (controls with the suffix "Razh"). Saving a trip adds its sender and receiver
// to the firms address book, which a right click (or F4) on either panel offers back.
class InsideKurs : public QDialog {
    Q_OBJECT
public:
    enum class Panel { Send, Resiv };

    explicit InsideKurs(QSqlDatabase db, QWidget *parent = nullptr);
    ~InsideKurs() override;

    RecordForm *recordForm() const { return m_form; }
    // txtFields by index, 0 to 22.
    QLineEdit *field(int index) const;

    // Shows the address book; the firm picked goes into the panel. Only while a trip is added or
    // corrected: a browsed trip is not changed by a pick.
    void pickFirm(Panel panel);
    // The four boxes of the panel take the firm.
    void fillPanel(Panel panel, const FirmAddress &firm);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void setUpForm();
    void setUpScreen();
    void setTabOrder();
    void fillTripCombo(QComboBox *combo, const QStringList &items);
    void fillCombos();
    void markTripRequired(bool on);
    void onStateChanged();
    void showUnits();
    void onAdded();
    void onEditStarted();
    void numberLeft(QWidget *nextFocus);
    bool isPending() const;
    std::optional<Panel> panelOf(QObject *watched) const;

    std::unique_ptr<Ui::InsideKurs> m_ui;
    QSqlDatabase m_db;
    RecordForm *m_form = nullptr;
    QList<QLineEdit *> m_fields;
    QList<QComboBox *> m_combos;  // driver, tractor, trailer
    QStringList m_sumCaptions;    // the sums' captions before their unit
};

}
