#pragma once

#include "core/firmprofile.h"
#include "courses/searchconditions.h"
#include "forms/resultgridscreen.h"
#include "settlement/klientsstore.h"

#include <QSqlDatabase>
#include <functional>
#include <memory>

class QLabel;

namespace zarek {

class ReportPreview;
class ScratchDatabase;

// The client statement: a client's courses of a period copied into a working list, where
// kilometres and rates are corrected after F4 and rows deleted with Delete, saved to or loaded
// from a .kl file, and printed with the tax summary. The working list lives in a scratch database
// of the statement's own; nothing here writes the register.
class Klients : public ResultGridScreen {
    Q_OBJECT
public:
    Klients(const SearchConditions &conditions, QSqlDatabase db, std::unique_ptr<ScratchDatabase> scratch,
            std::function<const FirmProfile &()> firm, QWidget *parent = nullptr);
    ~Klients() override;

    static ResultGridConfig config(const QString &klient);

    bool printed() const { return m_printed; }
    bool dirty() const { return m_dirty; }
    bool fileSaved() const { return m_fileSaved; }
    bool fileLoaded() const { return m_fileLoaded; }
    QString openPath() const { return m_openPath; }
    QString savePath() const { return m_savePath; }
    // The statement's scratch database with the working list and the last print's copy in it,
    // written now if nothing has needed them yet.
    ScratchDatabase *scratch();
    // Whether the courses read are in the working list yet (a correction, a save, a print or a file
    // puts them there).
    bool listWritten() const { return m_listWritten; }
    // The client and period the screen stands for: those of the search, or of the file loaded.
    const SearchConditions &conditions() const { return m_conditions; }

    // The file dialogs; a test puts its own answers here. An empty name means the dialog was dismissed.
    std::function<QString(QWidget *parent)> chooseFileToOpen;
    std::function<QString(QWidget *parent)> chooseFileToSave;

    // "Зареди файл", "Запис файл" and "Печат". Printing returns the preview it opened, if any.
    void openFile();
    void saveFile();
    ReportPreview *print();

protected:
    void onPrint() override { print(); }
    bool onKey(QKeyEvent *key) override { return keyPressed(key); }
    // Corrections not saved to a file are given up only when the dispatcher says so.
    bool onSettle() override { return mayClose(); }

private:
    void load(QSqlDatabase db);
    // Writes the courses read into the working list, the first time a correction, a save, a print
    // or a file needs it; until then the screen shows the rows as read.
    std::optional<UserMessage> writeWorkingList();
    // Writes the printed copy of the last print, which only a saved file needs.
    std::optional<UserMessage> writePrintCopy();
    bool keyPressed(QKeyEvent *key);
    void touch();
    void deleteCurrentRow();
    std::optional<UserMessage> writeCell(int row, const QString &field, const QVariant &value);
    bool mayClose();
    void rebind(const RowSet &rows);
    void showSums(const RowSet &rows, const QString &dateColumn, const QString &kmColumn, const QString &tonColumn,
                  const QString &moneyColumn);

    SearchConditions m_conditions;
    std::unique_ptr<ScratchDatabase> m_scratch;
    RowSet m_unwritten;  // the courses read, while the working list is not yet written
    bool m_listWritten = false;
    std::optional<RowSet> m_unwrittenCopy;  // the printed copy of the last print, while not yet written
    std::function<const FirmProfile &()> m_firm;
    QPushButton *m_openFile = nullptr;
    QPushButton *m_saveFile = nullptr;
    QLabel *m_sumKmLabel = nullptr;
    QLabel *m_sumTonLabel = nullptr;
    double m_sumKm = 0;
    double m_sumTon = 0;
    Money m_sumBruto;
    QString m_openPath;
    QString m_savePath;
    bool m_printed = false;
    bool m_dirty = false;
    bool m_fileSaved = false;
    bool m_fileLoaded = false;
};

}
