#include "recordbinder.h"

#include "core/textcheck.h"
#include "forms/recordgridmodel.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

namespace zarek {

namespace {

// The grey of a box that must not change while its row is corrected.
const QColor lockedBackground(0xC0, 0xC0, 0xC0);

// Selects a box's whole text once the click or the focus has placed the cursor.
bool selectsWholeText(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::MouseButtonRelease && event->type() != QEvent::FocusIn)
        return false;
    auto *field = qobject_cast<QLineEdit *>(watched);
    if (!field)
        return false;
    QTimer::singleShot(0, field, &QLineEdit::selectAll);
    return event->type() == QEvent::MouseButtonRelease;
}

class WholeTextSelector : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        selectsWholeText(watched, event);
        return QObject::eventFilter(watched, event);
    }
};

void paintLocked(QWidget *widget, bool locked)
{
    QPalette palette = widget->parentWidget() ? widget->parentWidget()->palette() : widget->palette();
    if (locked)
        palette.setColor(QPalette::Base, lockedBackground);
    widget->setPalette(palette);
}

}

RecordBinder::RecordBinder(QObject *parent) : QObject(parent) {}

void RecordBinder::bind(QLineEdit *field, const QString &column, FieldOptions options)
{
    m_bindings.append({field, nullptr, nullptr, column, options});
    field->installEventFilter(this);
    field->setReadOnly(true);
    if (options.readOnly) {
        field->setFocusPolicy(Qt::NoFocus);
        paintLocked(field, true);
    }
}

void RecordBinder::bind(RecordGridModel *grid)
{
    m_grids.append(grid);
}

void RecordBinder::bind(QCheckBox *field, const QString &column, FieldOptions options)
{
    m_bindings.append({nullptr, field, nullptr, column, options});
    field->setEnabled(false);
}

void RecordBinder::cover(QLineEdit *bound, QComboBox *combo)
{
    for (Binding &binding : m_bindings) {
        if (binding.text == bound) {
            binding.combo = combo;
            combo->setEditable(true);
            combo->setVisible(false);
            return;
        }
    }
}

QWidget *RecordBinder::widgetOf(const Binding &binding) const
{
    return binding.text ? static_cast<QWidget *>(binding.text) : static_cast<QWidget *>(binding.check);
}

void RecordBinder::show(const QVariantMap &values)
{
    for (const Binding &binding : std::as_const(m_bindings)) {
        const QVariant value = values.value(binding.column);
        if (binding.check)
            binding.check->setChecked(value.toBool());
        else if (binding.options.secret)
            binding.text->clear();
        else
            binding.text->setText(recordFieldText(value, binding.options.kind));
    }
    for (RecordGridModel *grid : std::as_const(m_grids))
        grid->setPendingValues(values);
}

void RecordBinder::setState(RecordFormState state)
{
    m_state = state;
    const bool pending = state != RecordFormState::Browsing;
    for (const Binding &binding : std::as_const(m_bindings)) {
        const bool locked = state == RecordFormState::Editing && binding.options.lockedWhileEditing;
        if (binding.check) {
            binding.check->setEnabled(pending && !locked);
            continue;
        }
        binding.text->setReadOnly(!pending || locked || binding.options.readOnly);
        paintLocked(binding.text, locked || binding.options.readOnly);
        if (binding.combo) {
            binding.combo->setVisible(pending);
            binding.text->setVisible(!pending);
            binding.combo->setEnabled(!locked);
        }
    }
    for (RecordGridModel *grid : std::as_const(m_grids))
        grid->setState(state);
}

void RecordBinder::setLocked(const QString &column, bool locked)
{
    const bool pending = m_state != RecordFormState::Browsing;
    for (const Binding &binding : std::as_const(m_bindings)) {
        if (binding.column != column)
            continue;
        if (binding.check) {
            binding.check->setEnabled(pending && !locked);
            continue;
        }
        binding.text->setReadOnly(!pending || locked || binding.options.readOnly);
        paintLocked(binding.text, locked || binding.options.readOnly);
        if (binding.combo)
            binding.combo->setEnabled(!locked);
    }
}

void RecordBinder::loadCovers()
{
    for (const Binding &binding : std::as_const(m_bindings)) {
        if (binding.combo)
            binding.combo->setEditText(binding.text->text());
    }
}

void RecordBinder::commitCovers()
{
    for (const Binding &binding : std::as_const(m_bindings)) {
        if (binding.combo)
            binding.text->setText(binding.combo->currentText().trimmed());
    }
}

QVariantMap RecordBinder::typed() const
{
    QVariantMap typed;
    for (const Binding &binding : m_bindings) {
        if (binding.check)
            typed.insert(binding.column, binding.check->isChecked());
        else
            typed.insert(binding.column, binding.text->text());
    }
    for (RecordGridModel *grid : m_grids)
        typed.insert(grid->pendingTexts());
    return typed;
}

void RecordBinder::retype(const QVariantMap &entry)
{
    for (const Binding &binding : std::as_const(m_bindings)) {
        if (!binding.text || !entry.contains(binding.column))
            continue;
        const QString text = entry.value(binding.column).toString();
        if (binding.text->text() != text)
            binding.text->setText(text);
    }
}

QVariantMap RecordBinder::onScreen() const
{
    QVariantMap shown = typed();
    for (const Binding &binding : m_bindings) {
        if (binding.combo && m_state != RecordFormState::Browsing)
            shown.insert(binding.column, binding.combo->currentText());
    }
    return shown;
}

void RecordBinder::markUntouched()
{
    m_untouched = onScreen();
}

bool RecordBinder::touched() const
{
    return onScreen() != m_untouched;
}

std::optional<UserMessage> RecordBinder::checkTexts(const QString &errorTitle) const
{
    QStringList texts;
    for (const Binding &binding : m_bindings) {
        if (binding.text)
            texts.append(binding.text->text());
        if (binding.combo)
            texts.append(binding.combo->currentText());
    }
    for (RecordGridModel *grid : m_grids) {  // a line typed in a grid is typed text too
        const QVariantMap cells = grid->pendingTexts();
        for (auto it = cells.cbegin(); it != cells.cend(); ++it)
            texts.append(it.value().toString());
    }
    return checkTypedTexts(texts, errorTitle);
}

Checked<QVariantMap> RecordBinder::values(const QString &errorTitle) const
{
    m_faultColumn.clear();
    if (auto refused = checkTexts(errorTitle))
        return *refused;
    QVariantMap values;
    for (const Binding &binding : m_bindings) {
        if (binding.check) {
            values.insert(binding.column, binding.check->isChecked());
            continue;
        }
        if (binding.options.secret) {
            values.insert(binding.column, binding.text->text());
            continue;
        }
        const Checked<QVariant> value =
            recordFieldValue(binding.text->text(), binding.options.kind, captionOf(binding.text), errorTitle);
        if (!value) {
            m_faultColumn = binding.column;
            return value.message();
        }
        values.insert(binding.column, value.value());
    }
    for (RecordGridModel *grid : m_grids) {
        const QVariantMap texts = grid->pendingTexts();
        for (int i = 0; i < grid->columnCount(); ++i) {
            const RecordGridColumn &column = grid->gridColumns().at(i);
            const Checked<QVariant> value =
                recordFieldValue(texts.value(column.column).toString(), grid->kind(i), column.caption, errorTitle);
            if (!value)
                return value.message();
            values.insert(column.column, value.value());
        }
    }
    return values;
}

bool RecordBinder::isSecret(const QString &column) const
{
    for (const Binding &binding : m_bindings) {
        if (binding.column == column)
            return binding.options.secret;
    }
    return false;
}

QWidget *RecordBinder::firstField() const
{
    for (const Binding &binding : m_bindings) {
        QWidget *widget = binding.combo && m_state != RecordFormState::Browsing ? binding.combo : widgetOf(binding);
        if (widget->isEnabled() && !widget->isHidden() && !binding.options.readOnly)
            return widget;
    }
    return nullptr;
}

QWidget *RecordBinder::typingBoxOf(QWidget *widget) const
{
    for (const Binding &binding : m_bindings) {
        if (!binding.text)
            continue;
        if (widget == binding.text || (binding.combo && (widget == binding.combo || binding.combo->isAncestorOf(widget))))
            return binding.combo ? static_cast<QWidget *>(binding.combo) : static_cast<QWidget *>(binding.text);
    }
    return nullptr;
}

QWidget *RecordBinder::typingBoxOfColumn(const QString &column) const
{
    for (const Binding &binding : m_bindings) {
        if (binding.column == column)
            return binding.combo && m_state != RecordFormState::Browsing ? binding.combo : widgetOf(binding);
    }
    return nullptr;
}

QWidget *RecordBinder::lastField() const
{
    return m_bindings.isEmpty() ? nullptr : widgetOf(m_bindings.last());
}

QString RecordBinder::captionOf(QWidget *field)
{
    if (QWidget *window = field->window()) {
        const auto labels = window->findChildren<QLabel *>();
        for (QLabel *label : labels) {
            if (label->buddy() == field) {
                QString caption = label->text();
                caption.remove(QLatin1Char('&'));
                if (caption.endsWith(QLatin1Char(':')))
                    caption.chop(1);
                return caption.trimmed();
            }
        }
    }
    return field->accessibleName().isEmpty() ? field->objectName() : field->accessibleName();
}

void RecordBinder::selectWholeTextOnClick(QLineEdit *field)
{
    field->installEventFilter(new WholeTextSelector(field));
}

bool RecordBinder::eventFilter(QObject *watched, QEvent *event)
{
    if (selectsWholeText(watched, event))
        emit fieldClicked();
    return QObject::eventFilter(watched, event);
}

}
