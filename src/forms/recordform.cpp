#include "recordform.h"

#include "app/formats.h"
#include "app/messageservice.h"
#include "app/waitcursor.h"

#include <QApplication>
#include <QCheckBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QTimer>

namespace zarek {

namespace {

const QString addError = QStringLiteral("ГРЕШКА при добавяне!");
const QString editError = QStringLiteral("ГРЕШКА при корекция!");
const QString saveError = QStringLiteral("ГРЕШКА при запис!");
const QString deleteError = QStringLiteral("ГРЕШКА при изтриване!");

}

RecordForm::RecordForm(std::unique_ptr<RecordStore> store, RecordFormConfig config, QWidget *parent)
    : QWidget(parent), m_store(std::move(store)), m_config(std::move(config))
{
    const QString &s = m_config.suffix;
    m_actions = new QWidget(this);
    m_actions->setObjectName(QStringLiteral("picButtons") + s);
    auto *actions = new QHBoxLayout(m_actions);
    actions->setContentsMargins(0, 0, 0, 0);
    m_add = button(QStringLiteral("cmdAdd"), QStringLiteral("&Добави"), m_actions);
    m_edit = button(QStringLiteral("cmdEdit"), QStringLiteral("&Поправи"), m_actions);
    m_delete = button(QStringLiteral("cmdDelete"), QStringLiteral("&Изтрий"), m_actions);
    m_update = button(QStringLiteral("cmdUpdate"), QStringLiteral("&Запиши"), m_actions);
    m_cancel = button(QStringLiteral("cmdCancel"), QStringLiteral("&Отказ"), m_actions);
    for (QPushButton *b : {m_add, m_edit, m_delete, m_update, m_cancel})
        actions->addWidget(b);
    if (m_config.closeInStrip) {
        m_close = button(QStringLiteral("cmdClose"), QStringLiteral("З&атвори"), m_actions);
        actions->addWidget(m_close);
        connect(m_close, &QPushButton::clicked, this, &RecordForm::closeRequested);
    }

    m_navigation = new QWidget(this);
    m_navigation->setObjectName(QStringLiteral("picStatBox") + s);
    auto *navigation = new QHBoxLayout(m_navigation);
    navigation->setContentsMargins(0, 0, 0, 0);
    m_first = button(QStringLiteral("cmdFirst"), QString(), m_navigation);
    m_previous = button(QStringLiteral("cmdPrevious"), QString(), m_navigation);
    m_status = new QLabel(m_navigation);
    m_status->setObjectName(QStringLiteral("lblStatus") + s);
    m_status->setAlignment(Qt::AlignCenter);
    m_status->setMinimumWidth(160);
    m_next = button(QStringLiteral("cmdNext"), QString(), m_navigation);
    m_last = button(QStringLiteral("cmdLast"), QString(), m_navigation);
    m_first->setIcon(style()->standardIcon(QStyle::SP_MediaSkipBackward));
    m_previous->setIcon(style()->standardIcon(QStyle::SP_MediaSeekBackward));
    m_next->setIcon(style()->standardIcon(QStyle::SP_MediaSeekForward));
    m_last->setIcon(style()->standardIcon(QStyle::SP_MediaSkipForward));
    m_first->setToolTip(QStringLiteral("Първи запис (Home)"));
    m_previous->setToolTip(QStringLiteral("Предишен запис (↑)"));
    m_next->setToolTip(QStringLiteral("Следващ запис (↓)"));
    m_last->setToolTip(QStringLiteral("Последен запис (End)"));
    for (QWidget *w : {static_cast<QWidget *>(m_first), static_cast<QWidget *>(m_previous), static_cast<QWidget *>(m_status),
                       static_cast<QWidget *>(m_next), static_cast<QWidget *>(m_last)})
        navigation->addWidget(w);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_navigation);
    layout->addWidget(m_actions);

    connect(m_add, &QPushButton::clicked, this, &RecordForm::add);
    connect(m_edit, &QPushButton::clicked, this, &RecordForm::edit);
    connect(m_update, &QPushButton::clicked, this, &RecordForm::update);
    connect(m_cancel, &QPushButton::clicked, this, &RecordForm::cancel);
    connect(m_delete, &QPushButton::clicked, this, &RecordForm::remove);
    connect(m_first, &QPushButton::clicked, this, &RecordForm::first);
    connect(m_previous, &QPushButton::clicked, this, &RecordForm::previous);
    connect(m_next, &QPushButton::clicked, this, &RecordForm::next);
    connect(m_last, &QPushButton::clicked, this, &RecordForm::last);
    setButtons(true);
}

RecordForm::~RecordForm() = default;

QPushButton *RecordForm::button(const QString &name, const QString &caption, QWidget *parent)
{
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(name + m_config.suffix);
    b->setAutoDefault(false);
    return b;
}

void RecordForm::bind(QLineEdit *field, const QString &column)
{
    m_texts.append({field, column});
    field->installEventFilter(this);
    field->setReadOnly(true);
}

void RecordForm::bind(QCheckBox *field, const QString &column)
{
    m_checks.append({field, column});
    field->installEventFilter(this);
    field->setEnabled(false);
}

bool RecordForm::open()
{
    if (window())
        window()->installEventFilter(this);
    const auto rows = [this] {
        WaitCursor wait;
        return m_store->load();
    }();
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return false;
    }
    m_rows = rows.value();
    show(m_rows.isEmpty() ? -1 : 0);
    return true;
}

void RecordForm::setButtons(bool browsing)
{
    for (QPushButton *b : {m_add, m_edit, m_delete})
        b->setVisible(browsing);
    if (m_close)
        m_close->setVisible(browsing);
    m_update->setVisible(!browsing);
    m_cancel->setVisible(!browsing);
    for (QPushButton *b : {m_first, m_previous, m_next, m_last})
        b->setEnabled(browsing);
}

void RecordForm::setState(State state)
{
    m_state = state;
    const bool browsing = state == State::Browsing;
    setButtons(browsing);
    // Fields take typing only while a row is being added or corrected, so nothing changes unseen.
    for (const auto &[field, column] : std::as_const(m_texts))
        field->setReadOnly(browsing);
    for (const auto &[field, column] : std::as_const(m_checks))
        field->setEnabled(!browsing);
    showStatus();
}

void RecordForm::showStatus()
{
    if (m_state == State::Adding)
        m_status->setText(m_config.newText);
    else if (m_state == State::Editing)
        m_status->setText(m_config.editText);
    else
        m_status->setText(m_current >= 0 ? m_config.statusText + QString::number(m_current + 1) : QString());
}

void RecordForm::showValues(const QVariantMap &values)
{
    for (const auto &[field, column] : std::as_const(m_texts)) {
        if (m_config.secretColumns.contains(column)) {
            field->clear();
            continue;
        }
        const QVariant value = values.value(column);
        field->setText(value.typeId() == QMetaType::Double ? QString::number(value.toDouble()).replace(u'.', u',')
                                                           : value.toString());
    }
    for (const auto &[field, column] : std::as_const(m_checks))
        field->setChecked(values.value(column).toBool());
}

QVariantMap RecordForm::typedValues() const
{
    QVariantMap values;
    for (const auto &[field, column] : m_texts)
        values.insert(column, field->text());
    for (const auto &[field, column] : m_checks)
        values.insert(column, field->isChecked());
    return values;
}

void RecordForm::show(int index)
{
    m_current = index;
    showValues(index >= 0 ? m_rows[index].values : QVariantMap());
    showStatus();
}

void RecordForm::add()
{
    m_savedBookmark = m_current;  // kept for "Отказ"
    QVariantMap values;
    if (m_config.presets)
        m_config.presets(values);
    showValues(values);
    setState(State::Adding);
    if (!m_texts.isEmpty())
        m_texts.first().first->setFocus();
}

void RecordForm::edit()
{
    if (m_current < 0) {
        MessageService::instance().inform(UserMessage::error(editError, QStringLiteral("3021"),
                                                             QStringLiteral("Няма текущ запис.")));
        return;
    }
    setState(State::Editing);
}

bool RecordForm::update()
{
    const QVariantMap typed = typedValues();
    if (m_config.validate) {
        if (const auto failure = m_config.validate(typed)) {
            MessageService::instance().inform({saveError, failure->text, failure->icon});
            return false;
        }
    }
    RecordRow row = m_state == State::Adding ? RecordRow{} : m_rows[m_current];
    for (auto it = typed.begin(); it != typed.end(); ++it) {
        QVariant value = it.value();
        if (m_config.secretColumns.contains(it.key())) {
            const bool keep = value.toString().isEmpty() && m_state == State::Editing;
            if (!keep)
                row.values.insert(it.key(), m_config.secretValue ? m_config.secretValue(value.toString()) : value);
            continue;
        }
        if (m_config.numberColumns.contains(it.key())) {
            const QString text = value.toString();
            const auto number = parseNumber(text);
            if (!number && !text.trimmed().isEmpty()) {
                MessageService::instance().inform(UserMessage::twoLines(
                    saveError, QStringLiteral("Въведеното \"%1\" не е число!").arg(text.trimmed()),
                    QStringLiteral("Моля, въведете число със запетая или точка."), UserMessage::Icon::Exclamation));
                return false;
            }
            value = number ? QVariant(*number) : QVariant();
        }
        row.values.insert(it.key(), value);
    }
    const auto failure = m_state == State::Adding ? m_store->insert(row, saveError) : m_store->update(row, saveError);
    if (failure) {
        MessageService::instance().inform(*failure);
        return false;  // still adding or editing, with what was typed
    }
    if (m_state == State::Adding) {
        m_rows.append(row);
        m_current = int(m_rows.size()) - 1;
    } else {
        m_rows[m_current] = row;
    }
    setState(State::Browsing);
    show(m_current);
    return true;
}

void RecordForm::cancel()
{
    const bool wasAdding = m_state == State::Adding;
    setState(State::Browsing);
    int back = wasAdding ? m_savedBookmark : m_current;
    if (back < 0 || back >= m_rows.size())
        back = m_rows.isEmpty() ? -1 : 0;
    m_savedBookmark = -1;
    show(back);
}

void RecordForm::remove()
{
    if (m_current < 0)
        return;
    if (m_config.confirmDelete) {
        MessageService &messages = MessageService::instance();
        const QString title = QStringLiteral("Изтриване на запис");
        if (!messages.ask({title, QStringLiteral("Наистна ли искате да изтриете записа?"), UserMessage::Icon::Question})
            || !messages.ask({title, QStringLiteral("Ще загубите данните окончателно"), UserMessage::Icon::Question}))
            return;
    }
    if (const auto failure = m_store->remove(m_rows[m_current], deleteError)) {
        MessageService::instance().inform(*failure);
        return;
    }
    m_rows.removeAt(m_current);
    show(m_rows.isEmpty() ? -1 : std::min(m_current, int(m_rows.size()) - 1));
}

void RecordForm::moveTo(int index)
{
    if (m_rows.isEmpty())
        return;
    show(std::clamp(index, 0, int(m_rows.size()) - 1));
}

void RecordForm::first() { moveTo(0); }
void RecordForm::last() { moveTo(int(m_rows.size()) - 1); }

void RecordForm::next()
{
    if (m_rows.isEmpty())
        return;
    if (m_current + 1 >= m_rows.size())
        MessageService::instance().beep();
    moveTo(m_current + 1);
}

void RecordForm::previous()
{
    if (m_rows.isEmpty())
        return;
    if (m_current <= 0)
        MessageService::instance().beep();
    moveTo(m_current - 1);
}

bool RecordForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease || event->type() == QEvent::FocusIn) {
        if (auto *field = qobject_cast<QLineEdit *>(watched)) {
            if (event->type() == QEvent::MouseButtonRelease && m_config.clickStartsEditing && m_state == State::Browsing)
                edit();
            QTimer::singleShot(0, field, &QLineEdit::selectAll);
        }
    }
    if (event->type() != QEvent::KeyPress || !m_config.keyboardNavigation)
        return QWidget::eventFilter(watched, event);
    const auto *key = static_cast<QKeyEvent *>(event);
    if (m_state != State::Browsing)  // keyboard navigation is dead while adding or editing; so is Esc
        return key->key() == Qt::Key_Escape || QWidget::eventFilter(watched, event);
    const bool ctrl = (key->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier;
    switch (key->key()) {
    case Qt::Key_Escape: emit closeRequested(); return true;
    case Qt::Key_End: last(); return true;
    case Qt::Key_Home: first(); return true;
    case Qt::Key_Up:
    case Qt::Key_PageUp: ctrl ? first() : previous(); return true;
    case Qt::Key_Down:
    case Qt::Key_PageDown: ctrl ? last() : next(); return true;
    default: return QWidget::eventFilter(watched, event);
    }
}

}
