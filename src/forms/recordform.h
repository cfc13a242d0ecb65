#pragma once

#include "forms/recordstore.h"

#include <QWidget>
#include <functional>
#include <memory>

class QAbstractButton;
class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace zarek {

// What a screen may vary on the record form.
struct RecordFormConfig {
    QString suffix;                                   // added to every control name when two strips share a window
    QString statusText = QStringLiteral("Запис №: ");
    QString newText = QStringLiteral("Нов запис");
    QString editText = QStringLiteral("Корекция");
    bool confirmDelete = true;                        // two questions before a delete, or none
    bool closeInStrip = true;                         // the close button belongs to the action strip
    bool clickStartsEditing = false;                  // a click in a field acts as "Поправи"
    bool keyboardNavigation = true;                   // Esc, Home, End, arrows and pages move and close
    QStringList numberColumns;                        // typed with comma or point, stored as numbers; blank is none
    // Columns never shown (passwords): the box starts empty; left empty it keeps the stored value,
    // otherwise what was typed is stored through secretValue (e.g. a salted hash).
    QStringList secretColumns;
    std::function<QVariant(const QString &typed)> secretValue;
    // The screen's checks: the message to show, or none. Empty means no validation.
    std::function<std::optional<UserMessage>(const QVariantMap &values)> validate;
    // Presets after "Добави".
    std::function<void(QVariantMap &values)> presets;
};

// The action strip, the navigation strip and the state of a window that edits the rows of one
// table one at a time. The screen lays out its own fields and binds them here by column.
class RecordForm : public QWidget {
    Q_OBJECT
public:
    enum class State { Browsing, Adding, Editing };

    RecordForm(std::unique_ptr<RecordStore> store, RecordFormConfig config, QWidget *parent = nullptr);
    ~RecordForm() override;

    void bind(QLineEdit *field, const QString &column);
    void bind(QCheckBox *field, const QString &column);
    // Reads the rows and shows the first; call once the fields are bound.
    bool open();

    State state() const { return m_state; }
    int rowCount() const { return int(m_rows.size()); }
    int currentIndex() const { return m_current; }
    QWidget *actionStrip() const { return m_actions; }
    QWidget *navigationStrip() const { return m_navigation; }

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

signals:
    void closeRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QPushButton *button(const QString &name, const QString &caption, QWidget *parent);
    void setButtons(bool browsing);
    void setState(State state);
    void show(int index);
    QVariantMap typedValues() const;
    void showValues(const QVariantMap &values);
    void showStatus();
    void moveTo(int index);

    std::unique_ptr<RecordStore> m_store;
    RecordFormConfig m_config;
    QList<RecordRow> m_rows;
    int m_current = -1;
    int m_savedBookmark = -1;
    State m_state = State::Browsing;
    QList<std::pair<QLineEdit *, QString>> m_texts;
    QList<std::pair<QCheckBox *, QString>> m_checks;
    QWidget *m_actions = nullptr;
    QWidget *m_navigation = nullptr;
    QPushButton *m_add = nullptr, *m_edit = nullptr, *m_delete = nullptr, *m_close = nullptr;
    QPushButton *m_update = nullptr, *m_cancel = nullptr;
    QPushButton *m_first = nullptr, *m_previous = nullptr, *m_next = nullptr, *m_last = nullptr;
    QLabel *m_status = nullptr;
};

}
