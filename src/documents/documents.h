#pragma once

#include "documents/documentrules.h"
#include "forms/commandday.h"
#include "forms/recordstore.h"

#include <QDate>
#include <QDialog>
#include <QSqlDatabase>
#include <memory>
#include <optional>

class QComboBox;
class QLineEdit;

namespace Ui {
class Documents;
}

namespace zarek {
class RecordForm;
}

namespace zarek::documents {

// "Документи": the documents of trucks and drivers, one at a time on the record form, with the
// scanned copy and the history of the kind beside it. "Поднови" begins the next document from the
// current one; the current one stays as history.
class Documents : public QDialog {
    Q_OBJECT
public:
    explicit Documents(QSqlDatabase db, QWidget *parent = nullptr);
    ~Documents() override;

    RecordForm *recordForm() const { return m_form; }
    // txtFields by index, 0 to 6 (documentColumns()).
    QLineEdit *field(int index) const;
    QComboBox *kindCombo() const;
    QComboBox *holderCombo() const;

    // The day the screen judges validity by; today unless a test sets another.
    void setToday(const QDate &today);

    // Goes to the document of that id (from the due list); false when it is not there.
    bool showDocument(qint64 id);
    // "Поднови": a new document of the current one's kind and holder, issued today, valid for the
    // kind's period; written, it marks the current one renewed.
    void renew();
    // Keeps the file as the current document's scanned copy; a file over 10 MB is refused with a
    // message and nothing is written.
    bool attachScanFile(const QString &path);
    void removeScan();
    void openScan();

signals:
    // "Изтичащи..." asks for the due list.
    void dueListRequested();

private:
    void setUpForm();
    void setUpScreen();
    void loadKinds();
    std::optional<DocumentKind> kindOf(const QString &name) const;
    void kindChosen(const QString &name);
    void fillHolders(Holder holder);
    void showHolderName();
    void proposeValidity();
    void showCurrent();
    void showScan();
    void showHistory();
    void showState();
    void setButtons();
    void chooseScanFile();
    void editKinds();

    std::unique_ptr<Ui::Documents> m_ui;
    QSqlDatabase m_db;
    RecordForm *m_form = nullptr;
    QList<QLineEdit *> m_fields;
    QList<DocumentKind> m_kinds;
    QList<QPair<QString, QString>> m_drivers;
    std::optional<RecordRow> m_renewing;
    QDate m_today = commandToday();
};

}
