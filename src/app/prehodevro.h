#pragma once

#include "data/changeoverstore.h"

#include <QDateTime>
#include <QDialog>
#include <QSqlDatabase>
#include <functional>
#include <optional>

class QLabel;
class QPushButton;
class QTableWidget;
class QTabWidget;

namespace zarek {

class DateEntry;

// "Преминаване към евро": the administrator picks the changeover date, reviews every open value
// as it stands in leva and as it will stand in euro (the tariff bands, the prices on hand and the
// prices of the receipts still open), and only then converts them, once, in one transaction.
// Cancelling at any point writes nothing.
class PrehodEvro : public QDialog {
    Q_OBJECT
public:
    PrehodEvro(QSqlDatabase db, QWidget *parent = nullptr);

    // Reads the values the changeover on the typed date would convert and shows them.
    bool review();
    // "Премини към евро": asks once more, then converts and records the changeover.
    void accept() override;

    const std::optional<ChangeoverReview> &reviewed() const { return m_review; }
    bool done() const { return m_done; }

    // The moment written with the changeover (tests set their own).
    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); };
    // For tests: passed to the changeover's writes.
    std::function<std::optional<UserMessage>(int)> beforeWrite;

private:
    void showReview();
    void forgetReview();

    QSqlDatabase m_db;
    DateEntry *m_date = nullptr;
    QPushButton *m_show = nullptr;
    QPushButton *m_ok = nullptr;
    QTabWidget *m_tabs = nullptr;
    QTableWidget *m_tariffs = nullptr;
    QTableWidget *m_stock = nullptr;
    QTableWidget *m_receipts = nullptr;
    QLabel *m_summary = nullptr;
    QLabel *m_warning = nullptr;
    std::optional<ChangeoverReview> m_review;
    bool m_done = false;
};

}
