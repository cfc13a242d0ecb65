#pragma once

#include "courses/searchconditions.h"

#include <QDialog>
#include <QSqlDatabase>

class QComboBox;
class QGroupBox;
class QPushButton;
class QVBoxLayout;

namespace zarek {

class DateEntry;

// What the three search dialogs share: the period frame, "Търси" and "Отказ", the checks on
// confirming, and the conditions handed to the caller as a value.
class SearchDialog : public QDialog {
    Q_OBJECT
public:
    SearchMode mode() const { return m_mode; }
    // Valid once the dialog was confirmed and every check passed.
    bool SeekOk() const { return m_seekOk; }
    const SearchConditions &conditions() const { return m_conditions; }

    void accept() override;  // "Търси": checks, then closes with the conditions
    void reject() override;  // "Отказ", Esc or the close box: told as no conditions

protected:
    SearchDialog(SearchMode mode, QSqlDatabase db, QWidget *parent);

    // The dialog's own checks; the message to show when they fail.
    virtual Checked<SearchConditions> check() const = 0;

    QVBoxLayout *body() const { return m_body; }
    QSqlDatabase database() const { return m_db; }
    DateEntry *fromBox() const { return m_from; }
    DateEntry *toBox() const { return m_to; }
    void setPeriodEnabled(bool enabled);
    // Tab goes through the boxes top to bottom: the two dates, then these, then "Търси" and "Отказ".
    void setEntryOrder(const QList<QWidget *> &boxes);
    // The texts of a combo's items (what a typed text is checked against).
    static QStringList itemsOf(const QComboBox *combo);
    // An editable combo box that completes what is typed from anywhere in its items.
    static QComboBox *makeCombo(const QString &objectName, QWidget *parent);
    // Fills a combo; false when the list had no items.
    static bool fillCombo(QComboBox *combo, const QStringList &items, bool showFirst);

private:
    SearchMode m_mode;
    QSqlDatabase m_db;
    QVBoxLayout *m_body = nullptr;
    QGroupBox *m_periodFrame = nullptr;
    DateEntry *m_from = nullptr;
    DateEntry *m_to = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
    bool m_seekOk = false;
    SearchConditions m_conditions;
};

}
