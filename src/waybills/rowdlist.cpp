#include "rowdlist.h"

#include "ui_rowdlist.h"

#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "core/version.h"
#include "forms/commandday.h"
#include "forms/boxfocus.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "forms/waitcursor.h"
#include "waybills/fuelnorm.h"
#include "waybills/waybillrules.h"

#include <QApplication>
#include <QComboBox>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>

namespace zarek {

namespace {

// Boxes that must be filled stand out: light yellow with dark blue text.
const QColor requiredBackground(0xFF, 0xFF, 0x80);
const QColor requiredText(0x00, 0x00, 0xC0);

std::optional<double> numberOf(const QVariant &value)
{
    if (value.isNull() || !value.isValid())
        return std::nullopt;
    return value.toDouble();
}

void inform(const UserMessage &message)
{
    MessageService::instance().inform(message);
}

}

RowdList::RowdList(QSqlDatabase db, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::RowdList>()), m_db(db), m_store(db)
{
    m_ui->setupUi(this);
    setWindowTitle(QStringLiteral("Зарек ") + version::text() + QStringLiteral(" - Пътни листи"));
    buildHeader();
    buildRoutes();
    connect(m_ui->tbsOptions, &QTabWidget::currentChanged, this, &RowdList::onTabChanged);
    connect(m_ui->cmdCloseForm, &QPushButton::clicked, this, &RowdList::reject);
    m_ui->cmdCloseForm->installEventFilter(this);
    open();
}

RowdList::~RowdList() = default;

QTabWidget *RowdList::tabs() const { return m_ui->tbsOptions; }
QTableView *RowdList::grid() const { return m_ui->grdMarsh; }
QComboBox *RowdList::driverCombo() const { return m_ui->ComboNameShof; }
QComboBox *RowdList::truckCombo() const { return m_ui->ComboKola; }

QLineEdit *RowdList::field(int index) const
{
    return findChild<QLineEdit *>(QStringLiteral("txtFields_%1").arg(index));
}

void RowdList::buildHeader()
{
    RecordFormConfig config;
    config.suffix = QStringLiteral("Rowd");
    config.statusText = QStringLiteral("Запис № ");
    config.newText = QStringLiteral("Нов запис");
    config.editText = QStringLiteral("Корекция на запис");
    config.closeInStrip = false;  // "Затвори" stands outside the tabs
    config.deleteQuestion = waybills::deleteQuestion();
    config.errorCaptions.save = waybills::headerSaveCaption();
    config.lazyRows = true;  // years of waybills open at once
    config.numberColumns = {QStringLiteral("SumKM"), QStringLiteral("SumRazhN"), QStringLiteral("EndKM"),
                            QStringLiteral("ZarN"),  QStringLiteral("ZarM"),     QStringLiteral("CenaN"),
                            QStringLiteral("CenaM")};
    config.dateColumns = {QStringLiteral("Data")};
    config.readOnlyColumns = {QStringLiteral("SumKM"), QStringLiteral("SumRazhN")};  // written by "Изчисли"
    config.validate = [this](QVariantMap &entry) { return checkHeader(entry); };
    config.write = [this](const RecordRow &row, bool adding) { return writeHeader(row, adding); };
    config.remove = [this](const RecordRow &row) { return removeHeader(row); };
    m_rowd = new RecordForm(std::make_unique<RecordStore>(m_db, QStringLiteral("RowdList"),
                                                          WaybillStore::headerColumns(), QStringLiteral("ListID")),
                            config, m_ui->picRowsList_0);
    m_ui->stripRowd->addWidget(m_rowd);

    // The boxes of rowdlist.ui name their columns; the two lists cover the driver's and the
    // truck's boxes. The date box comes first, so that a correction starts there: leaving the
    // number box tells a corrected waybill that its own number is taken.
    m_rowd->bindColumns(m_ui->picRowsList_0);
    for (QLineEdit *box : m_ui->picRowsList_0->findChildren<QLineEdit *>()) {
        if (!box->property(RecordForm::columnProperty).toString().isEmpty())
            box->installEventFilter(this);
    }
    for (QComboBox *combo : {driverCombo(), truckCombo()}) {
        combo->setInsertPolicy(QComboBox::NoInsert);
        // A name or a number is found by any part of it.
        combo->completer()->setFilterMode(Qt::MatchContains);
        combo->completer()->setCompletionMode(QCompleter::PopupCompletion);
        combo->installEventFilter(this);
    }

    connect(m_rowd, &RecordForm::closeRequested, this, &RowdList::reject);
    connect(m_rowd, &RecordForm::stateChanged, this, &RowdList::onHeaderStateChanged);
    connect(m_rowd, &RecordForm::added, this, &RowdList::onHeaderAdded);
    connect(m_rowd, &RecordForm::editStarted, this, &RowdList::onHeaderEditStarted);
    connect(m_rowd, &RecordForm::saved, this, &RowdList::onHeaderSaved);
    connect(m_rowd, &RecordForm::cancelled, this, &RowdList::onHeaderCancelled);
    for (QPushButton *button : m_rowd->findChildren<QPushButton *>())
        button->installEventFilter(this);
    // Once the books hold both currencies, the prices say theirs: that of the waybill's day.
    m_priceCaptions = {m_ui->lblLabels_9->text(), m_ui->lblLabels_10->text()};
    connect(m_ui->txtFields_0, &QLineEdit::textChanged, this, &RowdList::showPriceUnits);
    showPriceUnits();
}

void RowdList::showPriceUnits()
{
    QString unit;
    const BooksDay &books = commandDay();
    if (books.changedOver())
        unit = QStringLiteral(", ") + amountUnit(books.currencyOn(parseDate(m_ui->txtFields_0->text()).value_or(QDate())));
    m_ui->lblLabels_9->setText(m_priceCaptions.value(0) + unit);
    m_ui->lblLabels_10->setText(m_priceCaptions.value(1) + unit);
}

void RowdList::buildRoutes()
{
    RecordFormConfig config;
    config.suffix = QStringLiteral("Marsh");
    config.statusText = QStringLiteral("Запис № ");
    config.newText = QStringLiteral("Нов запис");
    config.editText = QStringLiteral("Корекция...");
    config.closeInStrip = false;
    config.deleteQuestion = waybills::deleteQuestion();  // the waybill's own words, although one line goes
    config.numberColumns = {QStringLiteral("KM"), QStringLiteral("Ton"), QStringLiteral("Koef"), QStringLiteral("RazhN")};
    config.presets = [](QVariantMap &values) {
        values.insert(QStringLiteral("Ton"), 0.0);
        values.insert(QStringLiteral("Koef"), 0.0);
    };
    config.write = [this](const RecordRow &row, bool adding) { return writeLine(row, adding); };
    config.remove = [this](const RecordRow &row) { return removeLine(row); };
    // No lines until the route tab names a waybill.
    m_marsh = new RecordForm(std::make_unique<RecordStore>(m_db, QStringLiteral("Marsh"), WaybillStore::lineColumns(),
                                                           QString(), QStringLiteral("MarshID = ?"),
                                                           QVariantList{QVariant(QMetaType::fromType<QString>())}),
                             config, m_ui->picRowsList_1);
    m_ui->stripMarsh->addWidget(m_marsh);
    m_marsh->bindGrid(m_ui->grdMarsh, {{QStringLiteral("Marshrut"), QStringLiteral("Маршрут"), 0},
                                       {QStringLiteral("KM"), QStringLiteral("КМ"), 90},
                                       {QStringLiteral("Ton"), QStringLiteral("Тонаж"), 90},
                                       {QStringLiteral("Koef"), QStringLiteral("Коеф."), 80}});

    m_calculate = new QPushButton(QStringLiteral("Изчисли"), m_marsh->actionStrip());
    m_calculate->setObjectName(QStringLiteral("cmdCloseMarsh"));
    m_calculate->setAutoDefault(false);
    m_calculate->setToolTip(QStringLiteral("Сумира километрите и разхода по норма на записаните маршрути"));
    auto *strip = static_cast<QHBoxLayout *>(m_marsh->actionStrip()->layout());
    strip->insertWidget(strip->indexOf(m_marsh->button(QStringLiteral("cmdDelete"))) + 1, m_calculate);
    connect(m_calculate, &QPushButton::clicked, this, &RowdList::calculate);
    // The route buttons show once the tab has named a waybill; their room stays, so nothing jumps.
    QSizePolicy keepRoom = m_marsh->actionStrip()->sizePolicy();
    keepRoom.setRetainSizeWhenHidden(true);
    m_marsh->actionStrip()->setSizePolicy(keepRoom);
    m_marsh->actionStrip()->setVisible(false);
    m_marsh->actionStrip()->setEnabled(false);

    // Esc among the routes closes the window only when no waybill is being typed either.
    connect(m_marsh, &RecordForm::closeRequested, this, [this] {
        if (m_rowd->state() == RecordFormState::Browsing)
            reject();
    });
    connect(m_marsh, &RecordForm::stateChanged, this, [this](RecordFormState state) {
        const bool browsing = state == RecordFormState::Browsing;
        m_calculate->setVisible(browsing);
        // A line half typed is saved or dropped before the header is seen again.
        m_ui->tbsOptions->setTabEnabled(0, browsing);
    });
    connect(m_marsh, &RecordForm::saved, this, [this] { m_marsh->button(QStringLiteral("cmdAdd"))->setFocus(); });
    for (QPushButton *button : m_marsh->findChildren<QPushButton *>())
        button->installEventFilter(this);
}

// Number, date, driver, truck, diesel, odometer, then the rest, then the strip.
void RowdList::setTabOrder()
{
    QList<QWidget *> order = {m_ui->txtFields_4, m_ui->txtFields_0, driverCombo(), truckCombo(), m_ui->txtFields_8, m_ui->txtFields_5,
                              m_ui->txtFields_7, m_ui->txtFields_9, m_ui->txtFields_10};
    for (const char *name : {"cmdAdd", "cmdEdit", "cmdDelete", "cmdUpdate", "cmdCancel"})
        order.append(m_rowd->button(QString::fromLatin1(name)));
    order.append(m_ui->cmdCloseForm);
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void RowdList::open()
{
    if (!m_rowd->open())
        return;
    setTabOrder();
    markRequired(false);
    if (m_rowd->rowCount() == 0)
        m_rowd->add();  // an empty register is ready for its first waybill
    else
        m_rowd->last();  // the newest number first
}

void RowdList::markRequired(bool on)
{
    for (QWidget *widget : std::initializer_list<QWidget *>{m_ui->txtFields_4, m_ui->txtFields_0, truckCombo(), driverCombo()}) {
        QPalette palette = QApplication::palette(widget);
        if (on) {
            palette.setColor(QPalette::Base, requiredBackground);
            palette.setColor(QPalette::Text, requiredText);
        }
        widget->setPalette(palette);
    }
}

// The lists are added to, not replaced, at each new waybill and correction.
void RowdList::fillCombos()
{
    WaitCursor wait;
    const auto fill = [](QComboBox *combo, const Checked<QStringList> &items) {
        if (!items) {
            inform(items.message());
            return;
        }
        if (items.value().isEmpty()) {
            inform({QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Списъка е празен\nЩе се създаде нов!"),
                    UserMessage::Icon::Exclamation});
            return;
        }
        combo->addItems(items.value());
    };
    fill(driverCombo(), m_store.driverNames());
    fill(truckCombo(), m_store.truckNumbers());
}

void RowdList::onHeaderStateChanged()
{
    const bool browsing = m_rowd->state() == RecordFormState::Browsing;
    if (browsing) {
        markRequired(false);
        m_rowd->button(QStringLiteral("cmdUpdate"))->setEnabled(true);
    }
}

void RowdList::onHeaderAdded()
{
    fillCombos();
    driverCombo()->setEditText(QString());
    truckCombo()->setEditText(QString());
    markRequired(true);
    // A new waybill is saved only after its route tab has been opened.
    m_rowd->button(QStringLiteral("cmdUpdate"))->setEnabled(false);
    m_addingHeader = true;
    m_newLines.clear();
    m_listIdCur = m_ui->txtFields_4->text();
    m_ui->txtFields_4->setFocus();  // a new waybill begins with its number
}

void RowdList::onHeaderEditStarted()
{
    fillCombos();
    driverCombo()->setEditText(m_ui->txtFields_2->text());
    truckCombo()->setEditText(m_ui->txtFields_3->text());
    markRequired(true);
    m_ui->txtFields_0->setFocus();
}

void RowdList::onHeaderSaved()
{
    m_addingHeader = false;
    m_newLines.clear();
}

// A new waybill that is not kept takes the lines saved for it along: they would otherwise be
// found by the next waybill given that number.
void RowdList::onHeaderCancelled()
{
    if (m_addingHeader) {
        if (auto failure = m_store.deleteLines(m_newLines, m_rowd->config().errorCaptions.remove))
            inform(*failure);
    }
    m_addingHeader = false;
    m_newLines.clear();
}

std::optional<UserMessage> RowdList::checkHeader(QVariantMap &entry)
{
    const auto text = [&entry](const char *column) { return entry.value(QString::fromLatin1(column)).toString(); };
    const waybills::HeaderTexts texts{text("Data"), text("ListID"), text("Kola"),
                                      text("NameDriver"), text("SumKM"), text("SumRazhN")};
    if (auto refusal = waybills::checkHeader(texts))
        return refusal;
    const Checked<QString> number = padDocumentNumber(text("ListID"));
    if (!number)
        return number.message();
    entry.insert(QStringLiteral("ListID"), number.value());
    // Two waybills of one number would share their route lines.
    const RecordRow *current = m_rowd->currentRow();
    const qint64 own = m_rowd->state() == RecordFormState::Editing && current ? current->id : 0;
    const Checked<bool> taken = m_store.numberTaken(number.value(), own);
    if (!taken)
        return taken.message();
    if (taken.value())
        return waybills::duplicateNumberMessage();
    for (const char *column : {"EndKM", "ZarM", "ZarN", "CenaN", "CenaM"}) {
        if (text(column).trimmed().isEmpty())
            entry.insert(QString::fromLatin1(column), QStringLiteral("0"));
    }
    return std::nullopt;
}

Checked<RecordRow> RowdList::writeHeader(const RecordRow &row, bool adding)
{
    const RecordRow *current = m_rowd->currentRow();
    const QString linesNumber = adding || !current ? m_listIdCur
                                                   : current->values.value(QStringLiteral("ListID")).toString();
    return m_store.saveHeader(row, adding, linesNumber, adding ? m_newLines : QList<qint64>());
}

std::optional<UserMessage> RowdList::removeHeader(const RecordRow &row)
{
    return m_store.deleteWaybill(row, m_rowd->config().errorCaptions.remove);
}

void RowdList::onTabChanged(int index)
{
    if (index != 1 || openRoutes())
        return;
    const QSignalBlocker blocker(m_ui->tbsOptions);
    m_ui->tbsOptions->setCurrentIndex(0);  // the page stays as it was
}

bool RowdList::openRoutes()
{
    const RecordFormState state = m_rowd->state();
    m_kolaCur = state != RecordFormState::Browsing ? truckCombo()->currentText() : m_ui->txtFields_3->text().trimmed();
    if (m_kolaCur.trimmed().isEmpty()) {
        inform(waybills::noTruckMessage());
        return false;
    }
    QString number;
    if (state == RecordFormState::Adding) {
        // The lines of a new waybill go under its number: a number, its own, no longer than ten.
        if (m_ui->txtFields_4->text().trimmed().isEmpty()) {
            inform(waybills::noNumberMessage());
            return false;
        }
        const Checked<QString> padded = padDocumentNumber(m_ui->txtFields_4->text());
        if (!padded) {
            inform(padded.message());
            return false;
        }
        const Checked<bool> taken = m_store.numberTaken(padded.value());
        if (!taken) {
            inform(taken.message());
            return false;
        }
        if (taken.value()) {
            tellNumberTaken(padded.value());
            return false;
        }
        m_ui->txtFields_4->setText(padded.value());
        linesFollow(padded.value());
        number = padded.value();
    } else if (const RecordRow *row = m_rowd->currentRow()) {
        number = row->values.value(QStringLiteral("ListID")).toString();
    }
    m_listIdCur = number;
    m_marsh->store()->setWhere(QStringLiteral("MarshID = ?"), {number});
    const bool read = m_routesRead ? m_marsh->reload() : m_marsh->open();
    m_routesRead = true;
    if (!read)
        return false;
    m_marsh->actionStrip()->setEnabled(true);
    m_marsh->actionStrip()->setVisible(true);
    if (m_marsh->rowCount() == 0) {
        // A waybill without lines starts its first line at once; its norm is that of the truck list.
        m_marsh->add();
        m_marsh->statusLabel()->setText(QStringLiteral("Корекция..."));
        m_kolaCur = truckCombo()->currentText();
    }
    m_rowd->button(QStringLiteral("cmdUpdate"))->setEnabled(true);
    return true;
}

// Leaving the number box: the number padded to ten characters, and a number already used told.
void RowdList::onNumberLeft()
{
    const RecordFormState state = m_rowd->state();
    if (state == RecordFormState::Browsing || m_ui->txtFields_4->text().trimmed().isEmpty())
        return;
    QLineEdit *box = m_ui->txtFields_4;
    const Checked<QString> number = padDocumentNumber(box->text());
    if (!number) {
        inform(number.message());
        returnToBox(box);
        return;
    }
    const Checked<bool> taken = m_store.numberTaken(number.value());
    if (!taken) {
        inform(taken.message());
        return;
    }
    if (taken.value()) {
        tellNumberTaken(number.value());
        // A corrected waybill finds its own number too; that is told, but it may be kept.
        const RecordRow *current = m_rowd->currentRow();
        const bool own = state == RecordFormState::Editing && current
                         && current->values.value(QStringLiteral("ListID")).toString() == number.value()
                         && !m_store.numberTaken(number.value(), current->id).value();
        if (!own)
            returnToBox(box);
    } else if (state == RecordFormState::Adding) {
        linesFollow(number.value());
    }
    box->setText(number.value());
}

// Opening the route tab takes the focus from the number box, and both check the number: one step
// of the user's tells a taken number once.
void RowdList::tellNumberTaken(const QString &number)
{
    if (m_takenTold == number)
        return;
    inform(waybills::duplicateNumberMessage());
    // Set after the box is answered: its own event loop would run the clearing before.
    m_takenTold = number;
    QTimer::singleShot(0, this, [this] { m_takenTold.clear(); });
}

// The lines saved for a new waybill move with its number.
void RowdList::linesFollow(const QString &number)
{
    if (!m_newLines.isEmpty() && number != m_listIdCur) {
        if (auto failure = m_store.moveLines(m_newLines, number, m_rowd->config().errorCaptions.save)) {
            inform(*failure);
            return;
        }
    }
    m_listIdCur = number;
}

// "Изчисли": the stored lines totalled into the header; the route buttons rest until the tab
// is opened again.
void RowdList::calculate()
{
    const Checked<WaybillStore::Sums> sums = m_store.lineSums(m_listIdCur);
    if (!sums) {
        inform(sums.message());
        return;
    }
    const auto text = [](std::optional<double> value) {
        return value ? recordFieldText(*value, RecordFieldKind::Number) : QString();
    };
    if (m_rowd->state() != RecordFormState::Browsing) {
        m_ui->txtFields_1->setText(text(sums.value().km));
        m_ui->txtFields_6->setText(text(sums.value().fuel));
    } else if (const RecordRow *row = m_rowd->currentRow()) {
        // No correction is open to carry them: a browsed waybill takes its sums at once.
        const Checked<RecordRow> stored = m_store.storeSums(*row, sums.value(), m_rowd->config().errorCaptions.save);
        if (!stored) {
            inform(stored.message());
            return;
        }
        m_rowd->rows()->replaceCurrent(stored.value());
        m_ui->txtFields_1->setText(recordFieldText(stored.value().values.value(QStringLiteral("SumKM")), RecordFieldKind::Number));
        m_ui->txtFields_6->setText(
            recordFieldText(stored.value().values.value(QStringLiteral("SumRazhN")), RecordFieldKind::Number));
    }
    m_marsh->actionStrip()->setEnabled(false);
    m_marsh->actionStrip()->setVisible(false);
}

Checked<RecordRow> RowdList::writeLine(const RecordRow &row, bool adding)
{
    const QString caption = m_marsh->config().errorCaptions.save;
    RecordRow line = row;
    line.values.insert(QStringLiteral("MarshID"), m_listIdCur);
    const Checked<std::optional<double>> norm = m_store.truckNorm(m_kolaCur.trimmed());
    if (!norm)
        return norm.message();
    if (!norm.value())
        return waybills::noNormMessage();
    const Checked<int> km = fuelnorm::normKilometres(numberOf(line.values.value(QStringLiteral("KM"))), caption);
    if (!km)
        return km.message();
    // A blank tonnage or surcharge is none.
    const double ton = numberOf(line.values.value(QStringLiteral("Ton"))).value_or(0);
    const double koef = numberOf(line.values.value(QStringLiteral("Koef"))).value_or(0);
    line.values.insert(QStringLiteral("Ton"), ton);
    line.values.insert(QStringLiteral("Koef"), koef);
    line.values.insert(QStringLiteral("RazhN"), fuelnorm::normFuel(*norm.value(), ton, km.value(), koef));
    const Checked<WaybillStore::SavedLine> saved = m_store.saveLine(*m_marsh->store(), line, adding, caption);
    if (!saved)
        return saved.message();
    if (adding && m_addingHeader)
        m_newLines.append(saved.value().line.id);
    showSums(saved.value().sums);
    return saved.value().line;
}

std::optional<UserMessage> RowdList::removeLine(const RecordRow &row)
{
    const Checked<WaybillStore::Sums> sums =
        m_store.removeLine(*m_marsh->store(), row, m_marsh->config().errorCaptions.remove);
    if (!sums)
        return sums.message();
    m_newLines.removeAll(row.id);
    showSums(sums.value());
    return std::nullopt;
}

// The header's totals as the store keeps them after a line was saved or deleted: in its boxes,
// and in the row read (a correction of the header only overlays what was typed on it).
void RowdList::showSums(const WaybillStore::Sums &sums)
{
    const QVariant km = sums.km.value_or(0.0);
    const QVariant fuel = sums.fuel.value_or(0.0);
    if (m_rowd->state() != RecordFormState::Adding) {
        if (const RecordRow *current = m_rowd->currentRow();
            current && current->values.value(QStringLiteral("ListID")).toString() == m_listIdCur) {
            RecordRow row = *current;
            row.values.insert(QStringLiteral("SumKM"), km);
            row.values.insert(QStringLiteral("SumRazhN"), fuel);
            m_rowd->rows()->replaceCurrent(row);
        }
    }
    m_ui->txtFields_1->setText(recordFieldText(km, RecordFieldKind::Number));
    m_ui->txtFields_6->setText(recordFieldText(fuel, RecordFieldKind::Number));
}

void RowdList::reject()
{
    if (m_marsh->state() != RecordFormState::Browsing)
        m_marsh->cancel();
    if (m_rowd->state() != RecordFormState::Browsing)
        m_rowd->cancel();
    QDialog::reject();
}

bool RowdList::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::FocusOut && watched == m_ui->txtFields_4) {
        const auto reason = static_cast<QFocusEvent *>(event)->reason();
        // Only the user leaving the box counts, not a list or a message popping up over it.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason)
            onNumberLeft();
    }
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (auto *button = qobject_cast<QPushButton *>(watched)) {
                button->click();
                return true;
            }
            if (m_rowd->state() != RecordFormState::Browsing) {
                if (key->modifiers() & Qt::ControlModifier)
                    m_rowd->update();  // Ctrl+Enter saves
                else
                    focusNextChild();  // Enter goes on to the next box, as Tab does
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

}
