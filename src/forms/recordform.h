#pragma once

#include "forms/recordbinder.h"
#include "forms/recordgridmodel.h"
#include "forms/recordset.h"
#include "forms/recordstore.h"

#include <QHash>
#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableView;

namespace zarek {

// The title of the error box of each handler.
struct RecordFormCaptions {
    QString add = QStringLiteral("ГРЕШКА при добавяне!");
    QString edit = QStringLiteral("ГРЕШКА при корекция!");
    QString save = QStringLiteral("ГРЕШКА при запис!");
    QString remove = QStringLiteral("ГРЕШКА при изтриване!");
    QString move = QStringLiteral("ГРЕШКА при преместване!");
};

// What a screen may vary on the record form: names, texts, the delete question, the error boxes,
// how the boxes behave, and hooks around add, save, delete and move.
struct RecordFormConfig {
    QString suffix;                                   // added to every control name when two strips share a window
    QString statusText = QStringLiteral("Запис №: ");  // browsing: followed by the row's position
    QString newText = QStringLiteral("Нов запис");
    QString editText = QStringLiteral("Корекция");
    // Captions of the action buttons by name ("cmdAdd" -> "Нов"); otherwise the usual ones, each with
    // its underlined letter (Alt+Д adds, Alt+З saves) so a row goes in without the mouse.
    QHash<QString, QString> buttonCaptions;
    bool closeInStrip = true;                         // the close button belongs to the action strip
    bool keyboardNavigation = true;                   // Esc, Home, End, arrows and pages move and close
    bool clickStartsEditing = false;                  // a click in a field acts as "Поправи"
    // The rows are read by id at opening and their values a page at a time (large tables).
    bool lazyRows = false;
    // Nothing is read at opening but the rows shown, a page at a time by their place in the
    // order (tables too large to read even their ids); a row written takes its place in the order.
    bool pagedRows = false;
    // A row added is shown among the rows read again (other users' rows too), found in their order
    // once, instead of set in among the rows held and read again after.
    bool rereadAfterAdding = false;

    // Before a delete: two questions ("Наистна ли…", then "Ще загубите…"), or the one Yes/No
    // question given here, or none at all.
    bool confirmDelete = true;
    std::optional<UserMessage> deleteQuestion;
    // A Yes/No question of the row's own before it is deleted (telling what goes with it, say), in
    // place of the usual ones; none: the usual ones.
    std::function<std::optional<UserMessage>(const RecordRow &row)> deleteQuestionFor;

    RecordFormCaptions errorCaptions;
    bool errorDescriptionOnly = false;                // error boxes show the description without its number

    QStringList numberColumns;                        // typed with comma or point, stored as numbers; blank is none
    QStringList dateColumns;                          // typed the Bulgarian way, stored as dates; blank is none
    QStringList lockedWhileEditing;                   // grey and read-only while a row is corrected
    QStringList readOnlyColumns;                      // grey, never typed into: the screen fills them
    // Columns never shown (passwords): the box starts empty; left empty it keeps the stored value,
    // otherwise what was typed is stored through secretValue (e.g. a salted hash).
    QStringList secretColumns;
    std::function<QVariant(const QString &typed)> secretValue;

    // The screen's checks over the entry: what was typed, a text per column (true/false for a
    // check box). The message to show, or none. Empty: no checks. A check may put a column's text
    // right (a number padded, a blank made "0"): what it leaves in the entry stands in the boxes,
    // whether the checks pass or not, and is what is saved.
    std::function<std::optional<UserMessage>(QVariantMap &entry)> validate;
    // Values a new row starts with, before they are shown.
    std::function<void(QVariantMap &values)> presets;
    // Writes the row instead of the store (a new row has id 0): the row as written, or why not.
    std::function<Checked<RecordRow>(const RecordRow &row, bool adding)> write;
    // Deletes the row instead of the store (with what belongs to it, say).
    std::function<std::optional<UserMessage>(const RecordRow &row)> remove;
    // After each of the four moves, e.g. to refresh what is derived from the row.
    std::function<std::optional<UserMessage>()> afterMove;
    // The column whose box the last failed check of validate is about: the cursor goes there
    // (empty: it stays where it is).
    std::function<QString()> faultColumn;
    // Whether typing stands in boxes the form does not bind (a rate or an expense, say): closing
    // the window then asks too.
    std::function<bool()> changedOutside;
};

// The action strip (picButtons), the navigation strip (picStatBox with lblStatus) and the state
// of a window that edits the rows of one table one at a time. The screen lays out its own boxes
// (in a .ui file) and each box names its column; the form finds them (bindColumns). The rows are
// read once and held in memory while it is open.
// Closing the window while a row holds typing not yet written asks first (UnsavedWorkGuard).
class RecordForm : public QWidget {
    Q_OBJECT
public:
    using State = RecordFormState;

    RecordForm(std::unique_ptr<RecordStore> store, RecordFormConfig config, QWidget *parent = nullptr);
    ~RecordForm() override;

    // The name of the dynamic property by which a widget names its column (set in the .ui file).
    static constexpr const char *columnProperty = "column";
    // Binds every widget under the container that names its column, in the order they were made:
    // a text box or a check box shows its column; a combo box naming the column of a text box
    // covers it while a row is added or corrected. A column the rows do not have, or a widget of
    // another kind, is refused: false, and open() then tells it and reads no rows.
    bool bindColumns(QWidget *container);
    void bind(QLineEdit *field, const QString &column);
    void bind(QCheckBox *field, const QString &column);
    // A combo box that stands in for a bound box while a row is added or corrected.
    void cover(QLineEdit *bound, QComboBox *combo);
    // The box a column's value is typed into now (the list where one covers it); none when unbound.
    QWidget *boxOf(const QString &column) const;
    // The rows as lines of a grid, the pending row typed straight into its cells: a row clicked
    // becomes current, the grid follows every move, Enter in the pending line saves it.
    RecordGridModel *bindGrid(QTableView *grid, const QList<RecordGridColumn> &columns);
    // Locks the box of a column (grey, read-only) while the row is added or corrected, or frees
    // it; the next change of state undoes it. For rules that depend on the row or on what is typed.
    void setFieldLocked(const QString &column, bool locked);
    // Reads the rows and shows the first; call once the fields are bound. False (after the
    // message) when the rows could not be read.
    bool open();
    // Reads the rows again (other users' rows too) and stays on the current row where it still is.
    bool reload();

    State state() const { return m_state; }
    // A row is added or corrected and something was typed or picked since it began.
    bool hasUnsavedChanges() const;
    int rowCount() const { return m_rows->count(); }
    int currentIndex() const { return m_rows->position(); }
    // The current row as stored; nullptr when there is none.
    const RecordRow *currentRow() const;
    RecordSet *rows() const { return m_rows; }
    RecordStore *store() const { return m_store.get(); }
    const RecordFormConfig &config() const { return m_config; }

    QWidget *actionStrip() const { return m_actions; }
    QWidget *navigationStrip() const { return m_navigation; }
    QLabel *statusLabel() const { return m_status; }
    // A strip button by its name without the suffix: "cmdAdd", "cmdNext", ...
    QPushButton *button(const QString &name) const;

public slots:
    void add();
    void edit();
    bool update();
    void cancel();
    void remove();
    void first();
    void previous();
    void next();
    void last();
    // Moves to the row of that id, as a move of the user's; false when it is not among the rows.
    bool moveToId(qint64 id);

signals:
    void stateChanged(zarek::RecordFormState state);
    void added();         // a new row is shown, presets in place
    void editStarted();   // the current row is open for correction
    void saved();         // the row is written and shown
    void cancelled();
    void moved();         // one of the four moves is done
    void removed();       // the row is deleted and the next one shown
    void closeRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPushButton *makeButton(const QString &name, const QString &caption, QWidget *parent);
    void setButtons(bool browsing);
    void setState(State state);
    void showCurrent();
    void showStatus();
    void fail(const QString &caption, UserMessage message) const;
    bool confirmDelete(const RecordRow &row) const;
    template <typename Move>
    void navigate(Move move);
    bool handleKey(QKeyEvent *key);
    bool handleTyping(QWidget *target, QKeyEvent *key);
    void typeLater(QWidget *box, QKeyEvent *key);
    void focusAfterSave();
    void focusColumn(const QString &column);
    bool dropPending();
    std::optional<UserMessage> readRows();
    // Reads the rows again and makes the row of this bookmark current, where it still is; false
    // (after the message) when they could not be read.
    bool rereadAt(qint64 bookmark);

    std::unique_ptr<RecordStore> m_store;
    RecordFormConfig m_config;
    RecordSet *m_rows = nullptr;
    RecordBinder *m_binder = nullptr;
    qint64 m_savedBookmark = 0;
    State m_state = State::Browsing;
    bool m_guarded = false;
    QWidget *m_actions = nullptr;
    QWidget *m_navigation = nullptr;
    QPushButton *m_add = nullptr, *m_edit = nullptr, *m_delete = nullptr, *m_close = nullptr;
    QPushButton *m_update = nullptr, *m_cancel = nullptr;
    QPushButton *m_first = nullptr, *m_previous = nullptr, *m_next = nullptr, *m_last = nullptr;
    QLabel *m_status = nullptr;
    QWidget *m_grid = nullptr;  // the rows as a list, when the screen shows them so
    QStringList m_refusedBindings;  // widgets that name a column the form cannot show
    struct KeyToType {
        QPointer<QWidget> box;
        int key;
        Qt::KeyboardModifiers modifiers;
        QString text;
    };
    QList<KeyToType> m_keysToType;  // keys that started a correction, on their way into the box
};

}
