#pragma once

#include "core/usermessage.h"
#include "forms/recordfield.h"

#include <QObject>
#include <QVariantMap>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QWidget;

namespace zarek {

class RecordGridModel;

// The three states of a record form.
enum class RecordFormState { Browsing, Adding, Editing };

// The bound boxes of a record form: which box shows which column and how, what each box allows
// in each state, and how typed texts become values again.
class RecordBinder : public QObject {
    Q_OBJECT
public:
    struct FieldOptions {
        RecordFieldKind kind = RecordFieldKind::Text;
        bool lockedWhileEditing = false;  // grey and read-only while a row is corrected
        bool secret = false;              // never shown: the box starts empty
        bool readOnly = false;            // shown and stored, filled by the screen, never typed into
    };

    explicit RecordBinder(QObject *parent = nullptr);

    void bind(QLineEdit *field, const QString &column, FieldOptions options);
    void bind(QCheckBox *field, const QString &column, FieldOptions options);
    // A combo box standing in for a bound text box while a row is added or corrected.
    void cover(QLineEdit *bound, QComboBox *combo);
    // A grid whose pending line is typed like the boxes: its cells count among the typed values.
    void bind(RecordGridModel *grid);

    // Shows the values of a row (no row: empty boxes).
    void show(const QVariantMap &values);
    // Boxes take typing only while a row is added or corrected.
    void setState(RecordFormState state);
    // Locks one box (grey, read-only, its combo disabled) or frees it again, until the state
    // changes: a screen's own rule on the row being added or corrected.
    void setLocked(const QString &column, bool locked);
    // "Поправи": each combo takes the text of the box it covers.
    void loadCovers();
    // Before a save: each box takes the trimmed text of its combo.
    void commitCovers();

    // What stands in the boxes: texts of the text boxes, true/false of the check boxes.
    QVariantMap typed() const;
    // Puts the texts of an entry (typed() as a check left it) into their text boxes where they differ.
    void retype(const QVariantMap &entry);
    // Keeps what the boxes show now (a list's text where it covers its box), to tell typing later.
    void markUntouched();
    // Whether anything was typed or picked since markUntouched().
    bool touched() const;
    // The message when a text box holds a control character (core/textcheck.h), before any check.
    std::optional<UserMessage> checkTexts(const QString &errorTitle) const;
    // The typed values as the columns take them (numbers, dates); secret columns as typed text.
    // When one cannot be taken, faultColumn() tells whose box it is.
    Checked<QVariantMap> values(const QString &errorTitle) const;
    QString faultColumn() const { return m_faultColumn; }
    // The box a column's value is typed into now (its list where one covers it); none when unbound.
    QWidget *typingBoxOfColumn(const QString &column) const;
    bool isSecret(const QString &column) const;

    QWidget *firstField() const;
    QWidget *lastField() const;
    // For a bound text box (or the list covering it): the box a value of its column is typed
    // into while a row is added or corrected (the list where one covers it); none for any other widget.
    QWidget *typingBoxOf(QWidget *widget) const;
    // The caption a box carries on screen (its label), for messages.
    static QString captionOf(QWidget *field);
    // A click in the box, or coming into it, selects its whole text (for boxes not bound here).
    static void selectWholeTextOnClick(QLineEdit *field);

signals:
    // A click in a text box, after its whole text was selected.
    void fieldClicked();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Binding {
        QLineEdit *text = nullptr;
        QCheckBox *check = nullptr;
        QComboBox *combo = nullptr;
        QString column;
        FieldOptions options;
    };
    QWidget *widgetOf(const Binding &binding) const;
    QVariantMap onScreen() const;

    QList<Binding> m_bindings;
    QList<RecordGridModel *> m_grids;
    RecordFormState m_state = RecordFormState::Browsing;
    QVariantMap m_untouched;
    mutable QString m_faultColumn;
};

}
