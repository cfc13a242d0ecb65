#include "recordform.h"

#include "forms/datachanges.h"
#include "forms/messageservice.h"
#include "forms/recordgriddelegate.h"
#include "forms/repeatprevious.h"
#include "forms/unsavedwork.h"
#include "forms/waitcursor.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyle>
#include <QTableView>
#include <QTimer>

namespace zarek {

namespace {

UserMessage noCurrentRow(const QString &caption)
{
    return UserMessage::error(caption, QStringLiteral("3021"), QStringLiteral("Няма текущ запис."));
}

RecordBinder::FieldOptions fieldOptions(const RecordFormConfig &config, const QString &column)
{
    RecordBinder::FieldOptions options;
    if (config.numberColumns.contains(column))
        options.kind = RecordFieldKind::Number;
    else if (config.dateColumns.contains(column))
        options.kind = RecordFieldKind::Date;
    options.lockedWhileEditing = config.lockedWhileEditing.contains(column);
    options.secret = config.secretColumns.contains(column);
    options.readOnly = config.readOnlyColumns.contains(column);
    return options;
}

}

RecordForm::RecordForm(std::unique_ptr<RecordStore> store, RecordFormConfig config, QWidget *parent)
    : QWidget(parent), m_store(std::move(store)), m_config(std::move(config))
{
    setObjectName(QStringLiteral("RecordForm") + m_config.suffix);
    QStringList columns;
    for (const QString &column : m_store->columns())
        columns.append(RecordStore::valueName(column));
    m_rows = new RecordSet(columns, this);
    m_binder = new RecordBinder(this);
    connect(m_binder, &RecordBinder::fieldClicked, this, [this] {
        if (m_config.clickStartsEditing && m_state == State::Browsing)
            edit();
    });

    m_actions = new QWidget(this);
    m_actions->setObjectName(QStringLiteral("picButtons") + m_config.suffix);
    auto *actions = new QHBoxLayout(m_actions);
    actions->setContentsMargins(0, 0, 0, 0);
    m_add = makeButton(QStringLiteral("cmdAdd"), QStringLiteral("&Добави"), m_actions);
    m_edit = makeButton(QStringLiteral("cmdEdit"), QStringLiteral("&Поправи"), m_actions);
    m_delete = makeButton(QStringLiteral("cmdDelete"), QStringLiteral("&Изтрий"), m_actions);
    m_update = makeButton(QStringLiteral("cmdUpdate"), QStringLiteral("&Запиши"), m_actions);
    m_cancel = makeButton(QStringLiteral("cmdCancel"), QStringLiteral("&Отказ"), m_actions);
    actions->addStretch();
    for (QPushButton *b : {m_add, m_edit, m_delete, m_update, m_cancel})
        actions->addWidget(b);
    if (m_config.closeInStrip) {
        m_close = makeButton(QStringLiteral("cmdClose"), QStringLiteral("За&твори"), m_actions);
        actions->addWidget(m_close);
        connect(m_close, &QPushButton::clicked, this, &RecordForm::closeRequested);
    }
    actions->addStretch();

    m_navigation = new QWidget(this);
    m_navigation->setObjectName(QStringLiteral("picStatBox") + m_config.suffix);
    auto *navigation = new QHBoxLayout(m_navigation);
    navigation->setContentsMargins(0, 0, 0, 0);
    navigation->setSpacing(2);
    const struct {
        QPushButton **button;
        const char *name;
        QStyle::StandardPixmap icon;
        const char *tip;
    } moves[] = {
        {&m_first, "cmdFirst", QStyle::SP_MediaSkipBackward, "Първи запис (Home)"},
        {&m_previous, "cmdPrevious", QStyle::SP_MediaSeekBackward, "Предишен запис (↑)"},
        {&m_next, "cmdNext", QStyle::SP_MediaSeekForward, "Следващ запис (↓)"},
        {&m_last, "cmdLast", QStyle::SP_MediaSkipForward, "Последен запис (End)"},
    };
    for (const auto &move : moves) {
        *move.button = makeButton(QString::fromLatin1(move.name), QString(), m_navigation);
        (*move.button)->setIcon(style()->standardIcon(move.icon));
        (*move.button)->setToolTip(QString::fromUtf8(move.tip));
        (*move.button)->setAccessibleName(QString::fromUtf8(move.tip));
    }
    m_status = new QLabel(m_navigation);
    m_status->setObjectName(QStringLiteral("lblStatus") + m_config.suffix);
    m_status->setAlignment(Qt::AlignCenter);
    m_status->setFrameStyle(QFrame::StyledPanel | QFrame::Sunken);
    m_status->setMinimumWidth(180);
    navigation->addWidget(m_first);
    navigation->addWidget(m_previous);
    navigation->addWidget(m_status, 1);
    navigation->addWidget(m_next);
    navigation->addWidget(m_last);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_actions);
    layout->addWidget(m_navigation);

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
    // The form sees every key of its window first, as the legacy key preview did.
    qApp->installEventFilter(this);
}

RecordForm::~RecordForm() = default;

QPushButton *RecordForm::makeButton(const QString &name, const QString &caption, QWidget *parent)
{
    auto *b = new QPushButton(m_config.buttonCaptions.value(name, caption), parent);
    b->setObjectName(name + m_config.suffix);
    b->setAutoDefault(false);  // Enter in a box never presses a strip button
    return b;
}

QPushButton *RecordForm::button(const QString &name) const
{
    return findChild<QPushButton *>(name + m_config.suffix);
}

void RecordForm::bind(QLineEdit *field, const QString &column)
{
    m_binder->bind(field, column, fieldOptions(m_config, column));
}

void RecordForm::bind(QCheckBox *field, const QString &column)
{
    m_binder->bind(field, column, fieldOptions(m_config, column));
}

void RecordForm::cover(QLineEdit *bound, QComboBox *combo)
{
    m_binder->cover(bound, combo);
}

bool RecordForm::bindColumns(QWidget *container)
{
    const auto named = [](QWidget *widget) { return widget->property(columnProperty).toString(); };
    const QStringList known = m_rows->columns();
    QHash<QString, QLineEdit *> boxes;
    QList<QComboBox *> covers;
    bool bound = true;
    const auto refuse = [this, &bound](QWidget *widget, const QString &why) {
        m_refusedBindings.append(widget->objectName() + QLatin1Char(' ') + why);
        bound = false;
    };
    const QList<QWidget *> widgets = container->findChildren<QWidget *>();
    for (QWidget *widget : widgets) {
        const QString column = named(widget);
        if (column.isEmpty())
            continue;
        if (!known.contains(column)) {
            refuse(widget, QStringLiteral("-> %1: няма такава колона").arg(column));
        } else if (auto *combo = qobject_cast<QComboBox *>(widget)) {
            covers.append(combo);
        } else if (auto *box = qobject_cast<QLineEdit *>(widget)) {
            bind(box, column);
            boxes.insert(column, box);
        } else if (auto *check = qobject_cast<QCheckBox *>(widget)) {
            bind(check, column);
        } else {
            refuse(widget, QStringLiteral("-> %1: не може да показва колона").arg(column));
        }
    }
    for (QComboBox *combo : std::as_const(covers)) {
        if (QLineEdit *box = boxes.value(named(combo)))
            cover(box, combo);
        else
            refuse(combo, QStringLiteral("-> %1: няма поле, което да покрива").arg(named(combo)));
    }
    return bound;
}

QWidget *RecordForm::boxOf(const QString &column) const
{
    return m_binder->typingBoxOfColumn(column);
}

RecordGridModel *RecordForm::bindGrid(QTableView *grid, const QList<RecordGridColumn> &columns)
{
    QList<RecordFieldKind> kinds;
    for (const RecordGridColumn &column : columns)
        kinds.append(fieldOptions(m_config, column.column).kind);
    auto *model = new RecordGridModel(m_rows, columns, kinds, grid);
    auto *delegate = new RecordGridDelegate(grid);
    m_grid = grid;
    grid->setModel(model);
    grid->setItemDelegate(delegate);
    grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    grid->setSelectionMode(QAbstractItemView::SingleSelection);
    grid->setEditTriggers(QAbstractItemView::AllEditTriggers);  // only the pending line is editable
    for (int i = 0; i < columns.size(); ++i) {
        if (columns[i].width > 0) {
            grid->horizontalHeader()->setSectionResizeMode(i, QHeaderView::Interactive);
            grid->horizontalHeader()->resizeSection(i, columns[i].width);
        } else {
            grid->horizontalHeader()->setSectionResizeMode(i, QHeaderView::Stretch);
        }
    }
    m_binder->bind(model);

    // The grid's cursor stands on the pending line, or else on the current row.
    const auto showCurrent = [this, grid, model] {
        const int row = model->pendingRow() >= 0 ? model->pendingRow() : m_rows->position();
        if (row < 0 || grid->currentIndex().row() == row)
            return;
        const int column = std::max(grid->currentIndex().column(), 0);
        grid->setCurrentIndex(model->index(row, column));
    };
    connect(m_rows, &RecordSet::currentChanged, grid, showCurrent);
    // While the lines are laid out afresh the view puts its cursor on the first line by itself:
    // that is no move of the user's.
    const auto resetting = std::make_shared<bool>(false);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, grid, [resetting] { *resetting = true; });
    connect(model, &QAbstractItemModel::modelReset, grid, [resetting, showCurrent] {
        *resetting = false;
        showCurrent();
    });
    connect(grid->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this, grid, model, showCurrent, resetting](const QModelIndex &current) {
                if (!current.isValid() || *resetting)
                    return;
                if (m_state == State::Browsing) {
                    if (current.row() != m_rows->position())
                        navigate([this, row = current.row()] { m_rows->moveTo(row); });
                } else if (current.row() != model->pendingRow()) {
                    QTimer::singleShot(0, grid, showCurrent);  // no other line while one is typed
                }
            });
    // A line added or corrected is typed at once, from its first cell.
    connect(this, &RecordForm::stateChanged, grid, [grid, model](State state) {
        if (state == State::Browsing)
            return;
        const QModelIndex first = model->index(model->pendingRow(), 0);
        grid->setCurrentIndex(first);
        grid->setFocus();
        grid->edit(first);
    });
    // Queued: the editor that asked is gone once the line is saved.
    connect(delegate, &RecordGridDelegate::submitRequested, this, [this] { update(); }, Qt::QueuedConnection);
    connect(delegate, &RecordGridDelegate::leaveRequested, grid, [grid](bool forward) {
        QWidget *next = grid;
        do {
            next = forward ? next->nextInFocusChain() : next->previousInFocusChain();
        } while (next != grid && (grid->isAncestorOf(next) || !(next->focusPolicy() & Qt::TabFocus)
                                  || !next->isVisible() || !next->isEnabled()));
        if (next != grid)
            next->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    });
    return model;
}

void RecordForm::setFieldLocked(const QString &column, bool locked)
{
    m_binder->setLocked(column, locked);
}

std::optional<UserMessage> RecordForm::readRows()
{
    WaitCursor wait;
    if (m_config.pagedRows) {
        const RecordStore *store = m_store.get();
        RecordSet::Pager pager;
        pager.page = [store](int offset, int limit, bool fromEnd) { return store->page(offset, limit, fromEnd); };
        pager.count = [store] { return store->count(); };
        pager.positionOf = [store](qint64 id) { return store->positionOf(id); };
        pager.pageAt = [store](qint64 id, int limit, bool backwards) { return store->pageAt(id, limit, backwards); };
        m_rows->setPagedRows(std::move(pager));
        return m_rows->takeFetchFailure();
    }
    if (!m_config.lazyRows) {
        const auto rows = m_store->load();
        if (!rows)
            return rows.message();
        m_rows->setRows(rows.value());
        return std::nullopt;
    }
    const auto keys = m_store->loadKeys();
    if (!keys)
        return keys.message();
    const RecordStore *store = m_store.get();
    m_rows->setLazyRows(keys.value(), [store](const QList<qint64> &ids) { return store->fetch(ids); });
    return m_rows->takeFetchFailure();
}

bool RecordForm::reload()
{
    if (!rereadAt(m_rows->bookmark()))
        return false;
    showCurrent();
    return true;
}

bool RecordForm::rereadAt(qint64 bookmark)
{
    if (const auto failure = readRows()) {
        MessageService::instance().inform(*failure);
        return false;
    }
    m_rows->moveToBookmark(bookmark);
    return true;
}

bool RecordForm::open()
{
    if (!m_refusedBindings.isEmpty()) {
        // A fault of the screen's layout, found before any row is shown under a wrong caption.
        MessageService::instance().inform({QStringLiteral("ГРЕШКА при зареждане!"),
                                           m_refusedBindings.join(QLatin1Char('\n')), UserMessage::Icon::Critical});
        return false;
    }
    if (const auto failure = readRows()) {
        MessageService::instance().inform(*failure);
        return false;
    }
    // Tab goes through the boxes first, then the strips.
    QWidget *previous = m_binder->lastField();
    for (QPushButton *b : {m_add, m_edit, m_delete, m_update, m_cancel, m_close, m_first, m_previous, m_next, m_last}) {
        if (b && previous) {
            setTabOrder(previous, b);
            previous = b;
        }
    }
    setState(State::Browsing);
    showCurrent();
    if (QWidget *field = m_binder->firstField())
        field->setFocus();  // the window opens in its first box
    if (!m_guarded) {
        m_guarded = true;
        UnsavedWorkGuard::of(window())->watch(this, {[this] { return hasUnsavedChanges(); },
                                                     [this] { dropPending(); }});
        RepeatPrevious::of(window());  // Ctrl+' in the window's boxes
    }
    return true;
}

bool RecordForm::hasUnsavedChanges() const
{
    if (m_state == State::Browsing)
        return false;
    return m_binder->touched() || (m_config.changedOutside && m_config.changedOutside());
}

const RecordRow *RecordForm::currentRow() const
{
    return m_rows->hasCurrent() ? &m_rows->current() : nullptr;
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
    setButtons(state == State::Browsing);
    m_binder->setState(state);
    showStatus();
    emit stateChanged(state);
}

void RecordForm::showStatus()
{
    if (m_state == State::Adding)
        m_status->setText(m_config.newText);
    else if (m_state == State::Editing)
        m_status->setText(m_config.editText);
    else
        m_status->setText(m_rows->hasCurrent() ? m_config.statusText + QString::number(m_rows->position() + 1)
                                               : QString());
}

void RecordForm::showCurrent()
{
    m_binder->show(m_rows->hasCurrent() ? m_rows->current().values : QVariantMap());
    showStatus();
}

// The error trap of a handler: the box under the handler's caption; the form stays as it was.
void RecordForm::fail(const QString &caption, UserMessage message) const
{
    if (message.title.isEmpty())
        message.title = caption;
    // Only an error box's "number:" goes; a validation message keeps its text whole.
    static const QRegularExpression errorNumber(QStringLiteral("^-?\\d+:"));
    if (m_config.errorDescriptionOnly && message.icon == UserMessage::Icon::Critical)
        message.text.remove(errorNumber);
    MessageService::instance().inform(message);
}

void RecordForm::add()
{
    if (m_state != State::Browsing)
        return;
    // On an empty table the bookmark stays as it was; "Отказ" then goes to the first row.
    if (m_rows->hasCurrent())
        m_savedBookmark = m_rows->bookmark();
    QVariantMap values;
    if (m_config.presets)
        m_config.presets(values);
    m_binder->show(values);
    setState(State::Adding);
    m_binder->markUntouched();
    if (QWidget *field = m_binder->firstField())
        field->setFocus();
    emit added();
}

void RecordForm::edit()
{
    if (m_state != State::Browsing)
        return;
    if (!m_rows->hasCurrent()) {
        fail(m_config.errorCaptions.edit, noCurrentRow(m_config.errorCaptions.edit));
        return;
    }
    m_savedBookmark = m_rows->bookmark();  // "Отказ" comes back to the row being corrected
    setState(State::Editing);
    m_binder->loadCovers();
    m_binder->markUntouched();
    if (QWidget *field = m_binder->firstField())
        field->setFocus();
    emit editStarted();
}

bool RecordForm::update()
{
    if (m_state == State::Browsing)
        return false;
    const QString &caption = m_config.errorCaptions.save;
    m_binder->commitCovers();
    // A text with a control character is refused before the screen's own checks see it.
    if (const auto refused = m_binder->checkTexts(caption)) {
        fail(caption, *refused);
        return false;
    }
    // All checks run; the message kept is that of the last one that failed. What was typed stays.
    if (m_config.validate) {
        QVariantMap entry = m_binder->typed();
        const auto failure = m_config.validate(entry);
        m_binder->retype(entry);  // what the checks put right stands in the boxes
        if (failure) {
            if (m_config.faultColumn)
                focusColumn(m_config.faultColumn());
            fail(caption, *failure);
            return false;
        }
    }
    const Checked<QVariantMap> values = m_binder->values(caption);
    if (!values) {
        focusColumn(m_binder->faultColumn());
        fail(caption, values.message());
        return false;
    }
    const bool adding = m_state == State::Adding;
    RecordRow row = adding ? RecordRow{} : m_rows->current();
    for (auto it = values.value().cbegin(); it != values.value().cend(); ++it) {
        if (m_binder->isSecret(it.key())) {
            const QString typed = it.value().toString();
            if (typed.isEmpty() && !adding)
                continue;  // left empty: the stored one stays
            row.values.insert(it.key(), m_config.secretValue ? m_config.secretValue(typed) : QVariant(typed));
            continue;
        }
        row.values.insert(it.key(), it.value());
    }

    Checked<RecordRow> written = row;
    {
        WaitCursor wait;
        if (m_config.write) {
            written = m_config.write(row, adding);
        } else {
            const auto failure = adding ? m_store->insert(row, caption) : m_store->update(row, caption);
            if (failure)
                written = *failure;
            else
                written = row;
        }
    }
    if (!written) {
        fail(caption, written.message());
        return false;  // still adding or editing, with what was typed
    }
    if (adding && m_config.rereadAfterAdding)
        rereadAt(written.value().id);
    else if (adding)
        m_rows->append(written.value());  // a new row stands last until the form is opened again
    else
        m_rows->replaceCurrent(written.value());
    setState(State::Browsing);
    showCurrent();
    // What the boxes held as the row was written, before the screen moves on from it.
    RepeatPrevious::of(window())->remember();
    focusAfterSave();
    DataChanges::instance().notify();
    emit saved();
    return true;
}

// The message about a box closes onto that box, its text selected to be typed over.
void RecordForm::focusColumn(const QString &column)
{
    QWidget *box = column.isEmpty() ? nullptr : m_binder->typingBoxOfColumn(column);
    if (!box || !box->isVisible() || !box->isEnabled())
        return;
    box->setFocus(Qt::OtherFocusReason);
    if (auto *line = qobject_cast<QLineEdit *>(box))
        line->selectAll();
    else if (auto *combo = qobject_cast<QComboBox *>(box); combo && combo->lineEdit())
        combo->lineEdit()->selectAll();
}

// The strip changes under the cursor as a row is written: "Запиши" goes, and the focus would
// pass to whatever comes next, "Затвори" say, where Enter or Space closes the window. It goes to
// the list of rows, or to "Добави" (Enter there starts a new row in its first box), or "Поправи".
void RecordForm::focusAfterSave()
{
    QWidget *next = nullptr;
    if (m_grid && m_grid->isVisible() && m_grid->isEnabled())
        next = m_grid;
    else if (m_add->isVisible() && m_add->isEnabled())
        next = m_add;
    else if (m_edit->isVisible() && m_edit->isEnabled())
        next = m_edit;
    if (next)
        next->setFocus(Qt::OtherFocusReason);
}

// Drops what was typed and goes back to the row being corrected, or to the row that was current
// when "Добави" was pressed, or to the first row when there is no such row.
void RecordForm::cancel()
{
    if (dropPending())
        emit cancelled();
}

// What "Отказ" does, told to nobody: also what closing the window does to a pending row.
bool RecordForm::dropPending()
{
    if (m_state == State::Browsing)
        return false;
    setState(State::Browsing);
    if (!m_rows->moveToBookmark(m_savedBookmark))
        m_rows->moveFirst();
    showCurrent();
    return true;
}

bool RecordForm::confirmDelete(const RecordRow &row) const
{
    if (!m_config.confirmDelete)
        return true;
    MessageService &messages = MessageService::instance();
    if (m_config.deleteQuestionFor) {
        if (const auto question = m_config.deleteQuestionFor(row))
            return messages.askYesNo(*question);
    }
    if (m_config.deleteQuestion)
        return messages.askYesNo(*m_config.deleteQuestion);
    const QString title = QStringLiteral("Изтриване на запис");
    return messages.askDestructive(
               {title, QStringLiteral("Наистна ли искате да изтриете записа?"), UserMessage::Icon::Question})
           && messages.askDestructive({title, QStringLiteral("Ще загубите данните окончателно"), UserMessage::Icon::Question});
}

void RecordForm::remove()
{
    if (m_state != State::Browsing)
        return;
    const QString &caption = m_config.errorCaptions.remove;
    if (!m_rows->hasCurrent()) {
        fail(caption, noCurrentRow(caption));
        return;
    }
    const RecordRow row = m_rows->current();
    if (!confirmDelete(row))
        return;
    std::optional<UserMessage> failure;
    {
        WaitCursor wait;
        failure = m_config.remove ? m_config.remove(row) : m_store->remove(row, caption);
    }
    if (failure) {
        fail(caption, *failure);
        return;
    }
    m_rows->removeCurrent();
    showCurrent();
    DataChanges::instance().notify();
    emit removed();
}

template <typename Move>
void RecordForm::navigate(Move move)
{
    if (m_state != State::Browsing || m_rows->isEmpty())
        return;
    move();
    showCurrent();
    if (const auto failure = m_rows->takeFetchFailure())
        fail(m_config.errorCaptions.move, *failure);
    if (m_config.afterMove) {
        if (const auto failure = m_config.afterMove())
            fail(m_config.errorCaptions.move, *failure);
    }
    emit moved();
}

void RecordForm::first()
{
    navigate([this] { m_rows->moveFirst(); });
}

void RecordForm::last()
{
    navigate([this] { m_rows->moveLast(); });
}

bool RecordForm::moveToId(qint64 id)
{
    navigate([this, id] { m_rows->moveToBookmark(id); });
    return m_rows->bookmark() == id;
}

// Past the last row: a beep, and the last row stays.
void RecordForm::next()
{
    navigate([this] {
        if (m_rows->atLast())
            MessageService::instance().beep();
        m_rows->moveTo(m_rows->position() + 1);
    });
}

void RecordForm::previous()
{
    navigate([this] {
        if (m_rows->atFirst())
            MessageService::instance().beep();
        m_rows->moveTo(m_rows->position() - 1);
    });
}

// Keys of the window: dead while a row is added or corrected, except Esc, which closes the window
// after the question about what was typed. Ctrl counts only alone: Ctrl with Shift is a plain key.
bool RecordForm::handleKey(QKeyEvent *key)
{
    switch (key->key()) {
    case Qt::Key_Escape:
    case Qt::Key_End:
    case Qt::Key_Home:
    case Qt::Key_Up:
    case Qt::Key_PageUp:
    case Qt::Key_Down:
    case Qt::Key_PageDown: break;
    default: return false;
    }
    if (m_state != State::Browsing) {
        if (key->key() != Qt::Key_Escape)
            return false;
        emit closeRequested();
        return true;
    }
    const Qt::KeyboardModifiers held = key->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier);
    const bool ctrl = held == Qt::ControlModifier;
    switch (key->key()) {
    case Qt::Key_Escape: emit closeRequested(); break;
    case Qt::Key_End: last(); break;
    case Qt::Key_Home: first(); break;
    case Qt::Key_Up:
    case Qt::Key_PageUp: ctrl ? first() : previous(); break;
    default: ctrl ? last() : next(); break;
    }
    return true;
}

// Typing while a row is only shown: a key in one of the boxes starts "Поправи" on that row and
// goes into the box; a key on a strip button (where it would do nothing) says in the status line
// how to start. A key never vanishes without a word.
// The box selects its whole text once the focus has come (a moment later): the key goes in after
// that, typing over as in any box entered, and the keys that follow it keep their order.
void RecordForm::typeLater(QWidget *box, QKeyEvent *key)
{
    m_keysToType.append({box, key->key(), key->modifiers(), key->text()});
    if (m_keysToType.size() > 1)
        return;
    QTimer::singleShot(0, this, [this] {
        const QList<KeyToType> keys = std::exchange(m_keysToType, {});
        for (const KeyToType &k : keys) {
            if (!k.box)
                continue;
            QKeyEvent press(QEvent::KeyPress, k.key, k.modifiers, k.text);
            QCoreApplication::sendEvent(k.box, &press);
        }
    });
}

bool RecordForm::handleTyping(QWidget *target, QKeyEvent *key)
{
    if (!m_keysToType.isEmpty() && target == QApplication::focusWidget() && target == m_keysToType.last().box
        && !key->text().isEmpty()) {
        typeLater(target, key);  // typed on before the first key is in
        return true;
    }
    if (m_state != State::Browsing || target != QApplication::focusWidget())
        return false;
    const QString text = key->text();
    if (text.isEmpty() || !text.at(0).isPrint() || text.at(0).isSpace()
        || (key->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
        return false;
    const auto caption = [](QPushButton *b) { return b->text().remove(QLatin1Char('&')); };
    if (QWidget *box = m_binder->typingBoxOf(target)) {
        if (!m_rows->hasCurrent() || !m_edit->isVisible() || !m_edit->isEnabled())
            return false;
        edit();
        if (m_state != State::Editing)
            return true;
        auto *line = qobject_cast<QLineEdit *>(box);
        if (!box->isVisible() || !box->isEnabled() || (line && line->isReadOnly()))
            return true;  // a box that is not corrected here: the correction has begun elsewhere
        box->setFocus(Qt::OtherFocusReason);
        typeLater(box, key);
        return true;
    }
    if (!m_actions->isAncestorOf(target) && !m_navigation->isAncestorOf(target))
        return false;
    QString hint;
    if (m_edit->isVisible() && m_edit->isEnabled() && m_rows->hasCurrent())
        hint = QStringLiteral("За корекция натиснете \"%1\"").arg(caption(m_edit));
    if (m_add->isVisible() && m_add->isEnabled())
        hint = hint.isEmpty() ? QStringLiteral("За нов запис натиснете \"%1\"").arg(caption(m_add))
                              : hint + QStringLiteral(", за нов запис \"%1\"").arg(caption(m_add));
    if (hint.isEmpty())
        return false;
    m_status->setText(hint);
    MessageService::instance().beep();
    return true;
}

bool RecordForm::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !isVisible())
        return QWidget::eventFilter(watched, event);
    auto *widget = qobject_cast<QWidget *>(watched);
    if (!widget || widget->window() != window())
        return QWidget::eventFilter(watched, event);
    auto *key = static_cast<QKeyEvent *>(event);
    if (m_config.keyboardNavigation && handleKey(key))
        return true;
    // Enter on a button of the strips presses it, as Space does.
    if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && key->modifiers() == Qt::NoModifier) {
        auto *button = qobject_cast<QPushButton *>(widget);
        if (button && (m_actions->isAncestorOf(button) || m_navigation->isAncestorOf(button)) && button->isEnabled()) {
            button->click();
            return true;
        }
    }
    return handleTyping(widget, key) || QWidget::eventFilter(watched, event);
}

}
