#pragma once

#include "core/currency.h"
#include "core/money.h"
#include "core/usermessage.h"
#include "forms/resultgridcolumn.h"
#include "forms/resultgridmodel.h"
#include "data/tableexport.h"

#include <QDialog>
#include <QPointer>
#include <QSqlDatabase>
#include <functional>
#include <optional>

class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;
class QHBoxLayout;

namespace zarek {

// What a result grid screen is: its names and texts, its column table, and how it marks rows.
struct ResultGridConfig {
    QString formName;                       // the screen's objectName: "Faktura", "EditKM", ...
    QString caption;                        // window title
    QString text1;                          // the line above the grid
    QList<ResultGridColumn> columns;
    QString flagField;                      // the yes/no column Space inverts; empty: no marking
    QString amountField;                    // what a mark adds to the running total
    QString sumCaption;                     // e.g. "Сума за плащане:"; empty: no sum shown
    QString sumCaptionName = QStringLiteral("Label1");
    QString sumLabelName = QStringLiteral("Label4");
    QList<QPair<QString, QString>> legend;  // key legend labels: objectName, text
    bool editSwitchKeys = false;            // F4 allows edits; PageUp, PageDown, End, Home, Delete forbid them
    bool recordFormKeys = false;            // the record form's keys: Home/End first/last row, Up/PageUp and
                                            // Down/PageDown one row (with Ctrl first/last), a beep at either end
    bool printable = true;                  // shows cmdPrint "Печат"
    QString emptyMessage;                   // shown under "ВНИМАНИЕ!" when there is no row
    ResultGridModel::RowHighlight highlightRow;  // rows drawn red on white by their values
    ResultGridModel::RowColors rowColors;        // rows drawn in colours of their own by their values
    // The row's date: its amounts are in the currency of that day. Where the rows come in both
    // currencies, the amount columns show each row's unit and the running total converts.
    QString dateField;
};

// Rows a grid reads from the database a block at a time, as it scrolls to them: a screen over many
// rows opens on the first block, and what it totals the database works out.
struct ResultGridBlocks {
    int rowCount = 0;                      // how many rows there are, by the database's count
    ResultGridModel::BlockReader read;     // the rows at offset .. offset + limit - 1 of the grid's order
    int blockSize = 200;
    // The first and the last day of the rows (the config's dateField), by the database: which
    // currencies they are in without reading them. None: the rows are read to tell.
    std::function<Checked<std::pair<QDate, QDate>>()> dateRange;
    // The marked rows' amounts as the screen opens, by the database, in the currency given: each
    // amount of the other currency converted on its own (CurrencyTotal). None: the rows are read
    // to add them up.
    std::function<Checked<CurrencyTotal>(Currency totals)> markedTotal;
};

// The blocks of a query's rows: its count, then "select LIMIT ? OFFSET ?" for each block. The
// query's ORDER BY must give one order (end it with a unique column, such as id); the values are
// bound in order; a failure is told under errorTitle.
ResultGridBlocks queryBlocks(QSqlDatabase db, const QString &select, const QVariantList &values,
                             const QString &errorTitle);

// The screen every grid of results is built on: the grid over the rows a search selected, the
// line that says what is shown, the bottom strip with the key legend, the running total,
// "Печат" and "Затвори". A screen is its configuration (names, columns, texts) and a subclass
// that overrides the virtual methods below for what it does: every screen holds state of its own
// (its store, its conditions), so overriding keeps that state and its behaviour in one class.
// Closing the window is the moment its work is settled (onClose() runs exactly once, however the
// window is closed).
class ResultGridScreen : public QDialog {
    Q_OBJECT
public:
    explicit ResultGridScreen(ResultGridConfig config, QWidget *parent = nullptr);

    const ResultGridConfig &config() const { return m_config; }
    // The changeover and today of the command that opened the screen.
    const BooksDay &books() const { return m_books; }

    // Puts the rows in the grid; with none, tells the screen's message and stays open.
    void setRows(RowSet rows);
    // The same over rows read a block at a time as the grid scrolls to them; whatever needs every
    // row (an export, reading the rows anew, taking one out) reads the rest first.
    void setRows(ResultGridBlocks blocks);
    ResultGridModel *model() const { return m_model; }
    QTableView *grid() const { return m_grid; }
    int currentRow() const;

    // Space: the current row's flag inverted, the total grown or shrunk by its amount.
    void markCurrentRow();
    bool changed() const { return m_changed; }
    Money runningTotal() const { return m_total; }
    void setRunningTotal(Money total, bool show);
    // Puts fresh rows in the grid (another user changed some), keeping the marks of the rows
    // that are still there unchanged; keyField is a row's integer id, versionField its version.
    // The running total becomes the sum of the marks, shown. Keeps the changed state.
    void reloadRows(RowSet rows, const QString &keyField, const QString &versionField);
    // The running total made again from the marks on screen (after rows were read anew or taken
    // out), and shown.
    void recountTotal();

    // The currency of the running total (totalsCurrencyOf).
    Currency totalsCurrency() const { return m_totals; }
    // The currency of a row's amounts.
    Currency rowCurrency(int row) const;
    // The line under the bottom strip that tells how totals of both currencies were made (empty:
    // none). The screen puts it there itself when its rows come in both currencies.
    void setAmountNote(const QString &note);

    bool editingAllowed() const;
    void setEditingAllowed(bool allowed);

    void setText1(const QString &text);
    // A further button of the screen, placed before "Печат".
    QPushButton *addButton(const QString &objectName, const QString &text);
    // A further label of the bottom strip, placed before the running total (or before the buttons).
    QLabel *addTotalLabel(const QString &objectName, const QString &text = {}, bool bold = true);

    // The rows as a table for a spreadsheet: the caption and the line above the grid, the columns
    // shown with their formats, the rows, and the screen's totals under them.
    ExportTable exportTable() const;
    // Writes it to an .xlsx or .csv file; what went wrong is told. "Експорт..." asks for the file.
    bool exportTo(const QString &fileName);
    void chooseExportFile();
    QPushButton *exportButton() const { return m_export; }
    // A widget beside the grid, on its right (a chart of the rows, for instance).
    void setBesideGrid(QWidget *widget);
    QPushButton *printButton() const { return m_print; }
    QPushButton *closeButton() const { return m_close; }

public slots:
    void done(int result) override;

protected:
    // What a screen does, by overriding. "Печат":
    virtual void onPrint() {}
    // Writes the screen's work as it closes; false keeps the screen open with nothing settled (a
    // write that failed or met another user's change), and a later close tries again.
    virtual bool onSettle() { return true; }
    // Once, after the work is settled.
    virtual void onClose() {}
    // A mark (or its removal) refused with a message, before the row changes; none: it is made.
    virtual std::optional<UserMessage> onMark(int row, bool marked);
    // A key of the grid taken first (true: taken).
    virtual bool onKey(QKeyEvent *key);
    // The currency of the running total given whether any row is in euro: by default euro when
    // any row is. A paper handed out today totals in today's currency; an invoice keeps the
    // currency it was issued in.
    virtual Currency totalsCurrencyOf(bool anyEuro) const;
    // The running total of the marked rows in totalsCurrency(): the subsystem's rule (pay, an
    // invoice's sum). By default each marked amount converted on its own and added.
    virtual Money marksTotal() const;
    // Pictures (a chart) that go with the rows to a workbook.
    virtual QList<QPair<QString, QByteArray>> exportPictures() const { return {}; }

    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void showTotal();
    void commitOpenEditor();
    void focusFirstRow();
    void fitColumns();
    bool recordFormKey(QKeyEvent *key);
    void moveToRow(int row);
    void updateCurrencies();
    CurrencyTotal markedTotal() const;
    void rowsSet();

    ResultGridConfig m_config;
    ResultGridBlocks m_blocks;  // how the rows are read, when they are read a block at a time
    BooksDay m_books;
    ResultGridModel *m_model = nullptr;
    QTableView *m_grid = nullptr;
    QLineEdit *m_text1 = nullptr;
    QLabel *m_sumLabel = nullptr;
    QPushButton *m_export = nullptr;
    QList<QPointer<QLabel>> m_totalLabels;
    QLabel *m_note = nullptr;
    QHBoxLayout *m_buttons = nullptr;
    QHBoxLayout *m_strip = nullptr;
    QHBoxLayout *m_gridRow = nullptr;
    QPushButton *m_print = nullptr;
    QPushButton *m_close = nullptr;
    Money m_total;
    Currency m_totals = Currency::Leva;
    CurrencyTotal m_marked;  // the marked rows' amounts, kept as each Space adds or takes one
    bool m_changed = false;
    bool m_settled = false;
    bool m_opened = false;
    bool m_settingRows = false;  // setRows fits the columns itself, once its currencies are known
};

}
