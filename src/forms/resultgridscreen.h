#pragma once

#include "core/money.h"
#include "core/usermessage.h"
#include "forms/resultgridcolumn.h"
#include "forms/resultgridmodel.h"

#include <QDialog>
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
    bool printable = true;                  // shows cmdPrint "Печат"
    QString emptyMessage;                   // shown under "ВНИМАНИЕ!" when there is no row
    bool focusGridOnOpen = true;            // else the focus goes to cmdClose
    ResultGridModel::RowHighlight highlightRow;  // rows drawn red on white by their values
};

// The screen every grid of results is built on: the grid over the rows a search selected, the
// line that says what is shown, the bottom strip with the key legend, the running total,
// "Печат" and "Затвори". A screen is a configuration plus hooks; closing the window is the moment
// its work is settled (the close hook runs exactly once, however the window is closed).
class ResultGridScreen : public QDialog {
    Q_OBJECT
public:
    explicit ResultGridScreen(ResultGridConfig config, QWidget *parent = nullptr);

    const ResultGridConfig &config() const { return m_config; }

    // Puts the rows in the grid; with none, tells the screen's message and stays open.
    void setRows(RowSet rows);
    ResultGridModel *model() const { return m_model; }
    QTableView *grid() const { return m_grid; }
    int currentRow() const;

    // Space: the current row's flag inverted, the total grown or shrunk by its amount.
    void markCurrentRow();
    bool changed() const { return m_changed; }
    Money runningTotal() const { return m_total; }
    void setRunningTotal(Money total, bool show);

    bool editingAllowed() const;
    void setEditingAllowed(bool allowed);

    void setText1(const QString &text);
    // A further button of the screen, placed before "Печат".
    QPushButton *addButton(const QString &objectName, const QString &text);
    QPushButton *printButton() const { return m_print; }
    QPushButton *closeButton() const { return m_close; }

    // Hooks. onMark may refuse a mark with a message; onKey may take a key first (true: taken).
    std::function<void(ResultGridScreen &)> onPrint;
    std::function<void(ResultGridScreen &)> onClose;
    std::function<std::optional<UserMessage>(int row, bool marked)> onMark;
    std::function<bool(QKeyEvent *)> onKey;

public slots:
    void done(int result) override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void showTotal();
    void commitOpenEditor();
    void focusFirstRow();

    ResultGridConfig m_config;
    ResultGridModel *m_model = nullptr;
    QTableView *m_grid = nullptr;
    QLineEdit *m_text1 = nullptr;
    QLabel *m_sumLabel = nullptr;
    QHBoxLayout *m_buttons = nullptr;
    QPushButton *m_print = nullptr;
    QPushButton *m_close = nullptr;
    Money m_total;
    bool m_changed = false;
    bool m_settled = false;
    bool m_opened = false;
};

}
