#include "resultgridscreen.h"

#include "forms/commandday.h"
#include "data/query.h"

#include "core/formats.h"
#include "core/valueformat.h"
#include "forms/exportservice.h"
#include "forms/messageservice.h"
#include "forms/resultgridcheckdelegate.h"
#include "forms/resultgridtextdelegate.h"
#include "forms/waitcursor.h"

#include <QApplication>
#include <QFrame>
#include <QHash>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>
#include <QFontMetrics>
#include <algorithm>

namespace zarek {

ResultGridBlocks queryBlocks(QSqlDatabase db, const QString &select, const QVariantList &values,
                             const QString &errorTitle)
{
    ResultGridBlocks blocks;
    const Checked<QVariant> count =
        scalar(db, errorTitle, QStringLiteral("SELECT COUNT(*) FROM (") + select + QStringLiteral(") counted"), values);
    if (!count) {
        MessageService::instance().inform(count.message());
        return blocks;
    }
    blocks.rowCount = count.value().toInt();
    blocks.read = [db, sql = select + QStringLiteral(" LIMIT ? OFFSET ?"), values, errorTitle](int offset, int limit) {
        return readRows(db, errorTitle, sql, values + QVariantList{limit, offset});
    };
    return blocks;
}

ResultGridScreen::ResultGridScreen(ResultGridConfig config, QWidget *parent)
    : QDialog(parent), m_config(std::move(config)), m_books(commandDay())
{
    setObjectName(m_config.formName);
    setWindowTitle(m_config.caption);
    setWindowFlag(Qt::WindowMaximizeButtonHint, true);

    m_text1 = new QLineEdit(m_config.text1, this);
    m_text1->setObjectName(QStringLiteral("Text1"));
    m_text1->setReadOnly(true);
    m_text1->setFocusPolicy(Qt::NoFocus);
    QFont bold = m_text1->font();
    bold.setBold(true);
    m_text1->setFont(bold);

    m_model = new ResultGridModel(this);
    m_model->setFlagField(m_config.flagField);
    m_model->setHighlight(m_config.highlightRow);
    m_model->setRowColors(m_config.rowColors);
    m_model->setColumns(m_config.columns);

    m_grid = new QTableView(this);
    m_grid->setObjectName(QStringLiteral("GridEX1"));
    m_grid->setModel(m_model);
    m_grid->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_grid->setSelectionMode(QAbstractItemView::SingleSelection);
    m_grid->setEditTriggers(QAbstractItemView::AnyKeyPressed | QAbstractItemView::DoubleClicked
                            | QAbstractItemView::EditKeyPressed);
    m_grid->setTabKeyNavigation(false);
    m_grid->setWordWrap(false);
    m_grid->setAlternatingRowColors(false);
    m_grid->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    m_grid->verticalHeader()->setDefaultSectionSize(m_grid->fontMetrics().height() + 6);
    m_grid->verticalHeader()->setFixedWidth(14);  // the row selector strip
    m_grid->horizontalHeader()->setHighlightSections(false);
    m_grid->horizontalHeader()->setStretchLastSection(false);
    m_grid->installEventFilter(this);
    m_grid->setItemDelegate(new ResultGridTextDelegate(m_grid));
    auto *checkDelegate = new ResultGridCheckDelegate(m_grid);
    int gridWidth = 0;
    for (int i = 0; i < m_config.columns.size(); ++i) {
        const ResultGridColumn &column = m_config.columns.at(i);
        m_grid->setColumnHidden(i, column.hidden);
        m_grid->setColumnWidth(i, column.widthPixels());
        if (column.checkBox)
            m_grid->setItemDelegateForColumn(i, checkDelegate);
        if (!column.hidden)
            gridWidth += column.widthPixels();
    }

    auto *strip = new QFrame(this);
    strip->setObjectName(QStringLiteral("Picture1"));
    strip->setFrameShape(QFrame::StyledPanel);
    auto *stripLayout = new QHBoxLayout(strip);
    m_strip = stripLayout;
    stripLayout->setContentsMargins(8, 4, 8, 4);
    // The legend comes in pairs: the key in bold, then what it does.
    for (qsizetype i = 0; i < m_config.legend.size(); ++i) {
        auto *label = new QLabel(m_config.legend.at(i).second, strip);
        label->setObjectName(m_config.legend.at(i).first);
        if (i % 2 == 0) {
            label->setFont(bold);
            if (i > 0)
                stripLayout->addSpacing(12);
        }
        stripLayout->addWidget(label);
    }
    stripLayout->addStretch(1);
    if (!m_config.sumCaption.isEmpty()) {
        auto *caption = new QLabel(m_config.sumCaption, strip);
        caption->setObjectName(m_config.sumCaptionName);
        m_sumLabel = new QLabel(strip);
        m_sumLabel->setObjectName(m_config.sumLabelName);
        m_sumLabel->setMinimumWidth(110);
        m_sumLabel->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_sumLabel->setFont(bold);
        stripLayout->addWidget(caption);
        stripLayout->addWidget(m_sumLabel);
        stripLayout->addSpacing(16);
    }
    m_buttons = new QHBoxLayout;
    m_buttons->setSpacing(6);
    m_print = new QPushButton(QStringLiteral("Печат"), strip);
    m_print->setObjectName(QStringLiteral("cmdPrint"));
    m_print->setVisible(m_config.printable);
    m_print->setAutoDefault(false);
    m_close = new QPushButton(QStringLiteral("Затвори"), strip);
    m_close->setObjectName(QStringLiteral("cmdClose"));
    m_close->setAutoDefault(false);
    m_export = new QPushButton(QStringLiteral("Експорт..."), strip);
    m_export->setObjectName(QStringLiteral("cmdExport"));
    m_export->setToolTip(QStringLiteral("Записва редовете за Excel (.xlsx) или като .csv"));
    m_export->setAutoDefault(false);
    m_buttons->addWidget(m_export);
    m_buttons->addWidget(m_print);
    m_buttons->addWidget(m_close);
    stripLayout->addLayout(m_buttons);

    m_note = new QLabel(this);
    m_note->setObjectName(QStringLiteral("lblCurrencyNote"));
    m_note->setVisible(false);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(m_text1);
    m_gridRow = new QHBoxLayout;
    m_gridRow->addWidget(m_grid, 1);
    layout->addLayout(m_gridRow, 1);
    layout->addWidget(strip);
    layout->addWidget(m_note);

    connect(m_print, &QPushButton::clicked, this, [this] { onPrint(); });
    connect(m_close, &QPushButton::clicked, this, &QDialog::close);
    connect(m_export, &QPushButton::clicked, this, &ResultGridScreen::chooseExportFile);

    // A reset from elsewhere fits at once; setRows fits once it knows the rows' currencies.
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] {
        if (!m_settingRows)
            fitColumns();
    });

    setTabOrder(m_grid, m_export);
    setTabOrder(m_export, m_print);
    setTabOrder(m_print, m_close);
    resize(std::max(640, gridWidth + 14 + 40), 520);
}

void ResultGridScreen::setRows(RowSet rows)
{
    m_blocks = {};
    m_settingRows = true;
    m_model->setRows(std::move(rows));
    m_settingRows = false;
    updateCurrencies();
    fitColumns();
    m_marked = markedTotal();
    rowsSet();
}

void ResultGridScreen::setRows(ResultGridBlocks blocks)
{
    m_blocks = std::move(blocks);
    m_settingRows = true;
    const auto failure = m_model->setRows(m_blocks.rowCount, m_blocks.read, m_blocks.blockSize);
    m_settingRows = false;
    if (failure)
        MessageService::instance().inform(*failure);
    updateCurrencies();
    fitColumns();
    std::optional<CurrencyTotal> marked;
    if (m_blocks.markedTotal && !m_model->allRead()) {
        const Checked<CurrencyTotal> total = m_blocks.markedTotal(m_totals);
        if (total)
            marked = total.value();
    }
    m_marked = marked ? *marked : markedTotal();
    rowsSet();
}

void ResultGridScreen::rowsSet()
{
    if (m_model->totalRowCount() == 0 && !m_config.emptyMessage.isEmpty())
        MessageService::instance().inform(UserMessage{QStringLiteral("ВНИМАНИЕ!"), m_config.emptyMessage});
    if (m_opened)
        focusFirstRow();
}

void ResultGridScreen::fitColumns()
{
    constexpr int rowsMeasured = 2000;  // enough to find the widest of values that repeat
    const QFontMetrics metrics(m_grid->font());
    // Where the font's digits are all of one width, as in the usual faces, a figure is as wide as
    // its shape: 12,50 and 98,40 are measured once.
    bool evenDigits = true;
    for (char digit = '1'; digit <= '9' && evenDigits; ++digit)
        evenDigits = metrics.horizontalAdvance(QLatin1Char(digit)) == metrics.horizontalAdvance(QLatin1Char('0'));
    QHash<QString, int> measured;
    const auto widthOf = [&](QString text) {
        if (evenDigits) {
            for (QChar &c : text) {
                if (c >= QLatin1Char('1') && c <= QLatin1Char('9'))
                    c = QLatin1Char('0');
            }
        }
        auto found = measured.constFind(text);
        if (found == measured.constEnd())
            found = measured.insert(text, metrics.horizontalAdvance(text));
        return *found;
    };
    const int rows = std::min(m_model->rowCount(), rowsMeasured);
    for (int column = 0; column < m_config.columns.size(); ++column) {
        const ResultGridColumn &config = m_config.columns.at(column);
        // Amounts that carry their unit, and rates with the decimals of the euro, take the room they need.
        const auto number = numberFormat(config.format);
        const bool grows = config.fitContent || config.amount || (number && number->maxDecimals > number->minDecimals);
        if (!grows || config.hidden)
            continue;
        int width = config.widthPixels();
        for (int row = 0; row < rows; ++row)
            width = std::max(width, widthOf(m_model->index(row, column).data().toString()) + 12);
        m_grid->setColumnWidth(column, width);
    }
}

int ResultGridScreen::currentRow() const
{
    const QModelIndex current = m_grid->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void ResultGridScreen::markCurrentRow()
{
    const int row = currentRow();
    if (row < 0 || m_config.flagField.isEmpty())
        return;
    const bool marked = !m_model->isMarked(row);
    if (const std::optional<UserMessage> refusal = onMark(row, marked)) {
        MessageService::instance().inform(*refusal);
        return;
    }
    m_changed = true;
    m_model->setMarked(row, marked);
    const Money amount = Money::fromAmount(m_model->value(row, m_config.amountField).toDouble());
    if (marked)
        m_marked.add(amount, rowCurrency(row));
    else
        m_marked.remove(amount, rowCurrency(row));
    m_total = marksTotal();
    showTotal();
}

std::optional<UserMessage> ResultGridScreen::onMark(int, bool)
{
    return std::nullopt;
}

bool ResultGridScreen::onKey(QKeyEvent *)
{
    return false;
}

Currency ResultGridScreen::totalsCurrencyOf(bool anyEuro) const
{
    return zarek::totalsCurrency(anyEuro);
}

Money ResultGridScreen::marksTotal() const
{
    return m_marked.total();
}

void ResultGridScreen::setRunningTotal(Money total, bool show)
{
    m_total = total;
    if (show)
        showTotal();
}

void ResultGridScreen::reloadRows(RowSet rows, const QString &keyField, const QString &versionField)
{
    // The marks held now, by row key, with the version of the row they were made on.
    struct Held {
        qint64 version;
        bool marked;
    };
    QHash<qint64, Held> held;
    const RowSet &old = m_model->rows();
    const int oldKey = old.column(keyField);
    const int oldVersion = old.column(versionField);
    if (oldKey >= 0) {
        for (int row = 0; row < old.rowCount(); ++row)
            held.insert(old.value(row, oldKey).toLongLong(),
                        {oldVersion >= 0 ? old.value(row, oldVersion).toLongLong() : 0, m_model->isMarked(row)});
    }
    const int key = rows.column(keyField);
    const int version = rows.column(versionField);
    const int flag = m_config.flagField.isEmpty() ? -1 : rows.column(m_config.flagField);
    for (int row = 0; row < rows.rowCount(); ++row) {
        if (flag >= 0 && key >= 0) {
            const auto found = held.constFind(rows.value(row, key).toLongLong());
            const bool unchanged = found != held.constEnd()
                                   && (version < 0 || found->version == rows.value(row, version).toLongLong());
            if (unchanged)
                rows.setValue(row, flag, found->marked);
        }
    }
    setRows(std::move(rows));
    recountTotal();
}

// The marked rows' amounts in the currency of the running total, those of the other currency
// each converted on its own.
CurrencyTotal ResultGridScreen::markedTotal() const
{
    CurrencyTotal total(m_totals);
    if (m_config.flagField.isEmpty())
        return total;  // nothing is marked
    m_model->rows();  // every row read
    for (int row = 0; row < m_model->rowCount(); ++row) {
        if (m_model->isMarked(row))
            total.add(Money::fromAmount(m_model->value(row, m_config.amountField).toDouble()), rowCurrency(row));
    }
    return total;
}

void ResultGridScreen::recountTotal()
{
    m_marked = markedTotal();
    setRunningTotal(marksTotal(), true);
}

void ResultGridScreen::showTotal()
{
    if (m_sumLabel)
        m_sumLabel->setText(amountText(m_total, m_totals));
}

Currency ResultGridScreen::rowCurrency(int row) const
{
    if (m_config.dateField.isEmpty())
        return m_totals;
    return m_books.currencyOn(dateOfValue(m_model->value(row, m_config.dateField)));
}

// The currency of the total and, where rows of the other currency stand beside it, each row's
// unit and the note under the strip.
void ResultGridScreen::updateCurrencies()
{
    if (m_config.dateField.isEmpty()) {
        // Without a date column the rows are in the books' price currency.
        m_totals = totalsCurrencyOf(m_books.priceCurrency() == Currency::Euro);
        return;
    }
    // Leva up to the changeover, euro from it: the first and the last day tell every row's currency.
    if (m_blocks.dateRange && !m_model->allRead()) {
        if (const Checked<std::pair<QDate, QDate>> range = m_blocks.dateRange(); range) {
            const auto [first, last] = range.value();
            const bool anyEuro = last.isValid() && m_books.currencyOn(last) == Currency::Euro;
            m_totals = totalsCurrencyOf(anyEuro);
            const bool mixed = first.isValid()
                               && (m_books.currencyOn(first) != m_totals || m_books.currencyOn(last) != m_totals);
            if (mixed) {
                m_model->setRowUnit([this](int row) { return amountUnit(rowCurrency(row)); });
                setAmountNote(conversionNote(m_books.changeover, m_totals));
            } else {
                m_model->setRowUnit({});
                setAmountNote({});
            }
            return;
        }
    }
    const RowSet &rows = m_model->rows();
    const int date = rows.column(m_config.dateField);
    const auto currencyOf = [&](int row) {
        return m_books.currencyOn(date >= 0 ? dateOfValue(rows.value(row, date)) : QDate());
    };
    bool anyEuro = false;
    for (int row = 0; date >= 0 && row < m_model->rowCount() && !anyEuro; ++row)
        anyEuro = currencyOf(row) == Currency::Euro;
    m_totals = totalsCurrencyOf(anyEuro);
    bool mixed = false;
    for (int row = 0; row < m_model->rowCount() && !mixed; ++row)
        mixed = currencyOf(row) != m_totals;
    if (mixed) {
        m_model->setRowUnit([this](int row) { return amountUnit(rowCurrency(row)); });
        setAmountNote(conversionNote(m_books.changeover, m_totals));
    } else {
        m_model->setRowUnit({});
        setAmountNote({});
    }
}

void ResultGridScreen::setAmountNote(const QString &note)
{
    m_note->setText(note);
    m_note->setVisible(!note.isEmpty());
}

bool ResultGridScreen::editingAllowed() const
{
    return m_model->editingAllowed();
}

void ResultGridScreen::setEditingAllowed(bool allowed)
{
    m_model->setEditingAllowed(allowed);
}

void ResultGridScreen::setText1(const QString &text)
{
    m_text1->setText(text);
}

QPushButton *ResultGridScreen::addButton(const QString &objectName, const QString &text)
{
    auto *button = new QPushButton(text, m_print->parentWidget());
    button->setObjectName(objectName);
    button->setAutoDefault(false);
    m_buttons->insertWidget(m_buttons->indexOf(m_print), button);
    setTabOrder(m_grid, button);
    setTabOrder(button, m_print);
    return button;
}

QLabel *ResultGridScreen::addTotalLabel(const QString &objectName, const QString &text, bool bold)
{
    auto *label = new QLabel(text, m_print->parentWidget());
    label->setObjectName(objectName);
    label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    QFont font = label->font();
    font.setBold(bold);
    label->setFont(font);
    const int before = m_sumLabel ? m_strip->indexOf(m_sumLabel) : m_strip->indexOf(m_buttons);
    m_strip->insertWidget(before, label);
    m_totalLabels.append(label);
    return label;
}

void ResultGridScreen::setBesideGrid(QWidget *widget)
{
    while (m_gridRow->count() > 1) {
        QLayoutItem *item = m_gridRow->takeAt(1);
        delete item->widget();
        delete item;
    }
    if (widget)
        m_gridRow->addWidget(widget);
}

void ResultGridScreen::moveToRow(int row)
{
    QModelIndex current = m_grid->currentIndex();
    int column = current.isValid() ? current.column() : 0;
    while (column < m_model->columnCount() - 1 && m_grid->isColumnHidden(column))
        ++column;
    m_grid->setCurrentIndex(m_model->index(row, column));
}

bool ResultGridScreen::recordFormKey(QKeyEvent *key)
{
    int rows = m_model->rowCount();
    const int row = currentRow();
    // Ctrl alone: Ctrl with Shift counts as no Ctrl.
    const bool ctrl = (key->modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier;
    int target = row;
    switch (key->key()) {
    case Qt::Key_Home: target = 0; break;
    case Qt::Key_End: target = m_model->totalRowCount() - 1; break;
    case Qt::Key_Up:
    case Qt::Key_PageUp: target = ctrl ? 0 : row - 1; break;
    case Qt::Key_Down:
    case Qt::Key_PageDown: target = ctrl ? m_model->totalRowCount() - 1 : row + 1; break;
    default: return false;
    }
    if (rows == 0)
        return true;
    // A row not read yet is read with the rows before it.
    while (target >= m_model->rowCount() && m_model->canFetchMore({}))
        m_model->fetchMore({});
    rows = m_model->rowCount();
    if (target < 0 || target >= rows) {
        // Past either end: a beep, and the end row stays.
        MessageService::instance().beep();
        target = std::clamp(target, 0, rows - 1);
    }
    moveToRow(target);
    return true;
}

bool ResultGridScreen::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_grid && event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (onKey(key))
            return true;
        if (m_config.recordFormKeys && recordFormKey(key))
            return true;
        if (m_config.editSwitchKeys) {
            switch (key->key()) {
            case Qt::Key_F4:
                setEditingAllowed(true);
                return true;
            case Qt::Key_PageUp:
            case Qt::Key_PageDown:
            case Qt::Key_End:
            case Qt::Key_Home:
            case Qt::Key_Delete:
                setEditingAllowed(false);
                break;  // the key still moves the grid
            default:
                break;
            }
        }
        if (key->key() == Qt::Key_Space && key->modifiers() == Qt::NoModifier && !m_config.flagField.isEmpty()) {
            markCurrentRow();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void ResultGridScreen::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_opened)
        return;
    m_opened = true;
    // As the screen opens: the focus in the grid with the first row chosen, so keys work at once.
    // Every such screen: its legend's keys (Space, F4) would press "Затвори" otherwise.
    QTimer::singleShot(0, this, [this] { focusFirstRow(); });
}

void ResultGridScreen::focusFirstRow()
{
    m_grid->setFocus(Qt::ActiveWindowFocusReason);
    if (m_model->rowCount() > 0 && !m_grid->currentIndex().isValid()) {
        int firstColumn = 0;
        while (firstColumn < m_model->columnCount() && m_grid->isColumnHidden(firstColumn))
            ++firstColumn;
        m_grid->setCurrentIndex(m_model->index(0, firstColumn));
    }
}

void ResultGridScreen::commitOpenEditor()
{
    QWidget *focused = QApplication::focusWidget();
    // An open cell editor is a child of the viewport holding the focus.
    if (focused && m_grid->viewport()->isAncestorOf(focused))
        emit m_grid->itemDelegateForIndex(m_grid->currentIndex())->commitData(focused);
}

void ResultGridScreen::done(int result)
{
    if (!m_settled) {
        commitOpenEditor();
        if (!onSettle())
            return;  // nothing settled: the screen stays open
        m_settled = true;
        onClose();
    }
    QDialog::done(result);
}

ExportTable ResultGridScreen::exportTable() const
{
    ExportTable table;
    for (const QString &line : {windowTitle(), m_text1->text()}) {
        if (!line.trimmed().isEmpty())
            table.titleLines.append(line.trimmed());
    }
    QStringList fields;
    for (const ResultGridColumn &column : m_config.columns) {
        if (column.hidden)
            continue;
        ExportColumn out = exportColumnOf(column.caption, column.format);
        if (column.checkBox)
            out.kind = ExportColumn::Kind::YesNo;
        table.columns.append(out);
        fields.append(column.field);
    }
    const RowSet rows = m_model->rows();
    QList<int> sources;
    for (const QString &field : std::as_const(fields))
        sources.append(rows.column(field));
    // A column without a format that holds dates (the grid shows them dd.MM.yyyy) goes out as dates.
    for (int c = 0; c < table.columns.size(); ++c) {
        if (table.columns[c].kind != ExportColumn::Kind::Text || sources.at(c) < 0)
            continue;
        bool dates = false;
        for (int r = 0; r < std::min(rows.rowCount(), 20); ++r) {
            const QVariant &value = rows.value(r, sources.at(c));
            if (value.isNull())
                continue;
            dates = dateOfValue(value).isValid()
                    && (value.metaType().id() == QMetaType::QDate || value.metaType().id() == QMetaType::QDateTime
                        || value.toString().size() == 10 || value.toString().contains(QLatin1Char('T')));
            if (!dates)
                break;
        }
        if (dates)
            table.columns[c].kind = ExportColumn::Kind::Date;
    }
    table.rowCount = rows.rowCount();
    table.cell = [rows, sources](int row, int column) {
        const int source = sources.at(column);
        return source >= 0 ? rows.value(row, source) : QVariant();
    };
    // The totals as the screen shows them, under the rows.
    const auto labelText = [this](const QString &name) {
        const auto *label = findChild<QLabel *>(name);
        return label ? label->text().trimmed() : QString();
    };
    if (m_sumLabel && !m_sumLabel->isHidden() && !m_sumLabel->text().isEmpty())
        table.noteLines.append(labelText(m_config.sumCaptionName) + QLatin1Char(' ') + m_sumLabel->text());
    for (const QLabel *label : m_totalLabels) {
        if (label && !label->text().trimmed().isEmpty())
            table.noteLines.append(label->text().trimmed());
    }
    table.pictures = exportPictures();
    return table;
}

bool ResultGridScreen::exportTo(const QString &fileName)
{
    return exportservice::write(exportTable(), fileName);
}

void ResultGridScreen::chooseExportFile()
{
    const QString subject = m_text1->text().trimmed().isEmpty() ? windowTitle() : m_text1->text();
    exportservice::chooseAndWrite(this, QStringLiteral("Запис на редовете"), subject,
                                  [this]() -> Checked<ExportTable> { return exportTable(); });
}

}
