#include "kurs.h"

#include "ui_kurs.h"

#include "clients/clientstore.h"
#include "core/formats.h"
#include "core/valueformat.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "core/version.h"
#include "forms/waitcursor.h"
#include "courses/coursestore.h"
#include "forms/dateentry.h"
#include "forms/recordform.h"
#include "courses/searchlists.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>

namespace zarek {

namespace {

RecordFormConfig formConfig()
{
    RecordFormConfig config;
    config.statusText = QStringLiteral("Курс № ");
    config.newText = QStringLiteral("Нов курс");
    config.editText = QStringLiteral("Корекция");
    config.pagedRows = true;  // NewKurs browses every course of the firm: only the rows shown are read
    config.numberColumns = {QStringLiteral("km"), QStringLiteral("ton")};
    config.dateColumns = {QStringLiteral("data")};
    config.presets = [](QVariantMap &values) {
        values.insert(QStringLiteral("plat"), false);
        values.insert(QStringLiteral("Fakt"), false);
        values.insert(QStringLiteral("km"), 0.0);
        values.insert(QStringLiteral("NomFakt"), QStringLiteral("0000000000"));
    };
    return config;
}

std::unique_ptr<RecordStore> courseRows(QSqlDatabase db, CourseMode mode, const QString &kola, const Period &period)
{
    if (mode == CourseMode::NewKurs)
        return std::make_unique<RecordStore>(db, QStringLiteral("tabl"), courseeditor::columns(), QStringLiteral("kod"));
    return std::make_unique<RecordStore>(db, QStringLiteral("tabl"), courseeditor::columns(), QStringLiteral("data"),
                                         QStringLiteral("kola = ? AND data BETWEEN ? AND ?"),
                                         QVariantList{kola, period.from, period.to});
}

}

Kurs::Kurs(QSqlDatabase db, QWidget *parent) : Kurs(CourseMode::NewKurs, std::move(db), QString(), Period(), parent) {}

Kurs::Kurs(QSqlDatabase db, const QString &kola, const Period &period, QWidget *parent)
    : Kurs(CourseMode::EditKurs, std::move(db), kola, period, parent)
{
}

std::unique_ptr<Kurs> Kurs::forCourse(QSqlDatabase db, qint64 id, QWidget *parent)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT kola, data FROM tabl WHERE id = ?"));
    query.addBindValue(id);
    if (!query.exec() || !query.next())
        return nullptr;
    const QString kola = query.value(0).toString();
    const QDate date = query.value(1).metaType().id() == QMetaType::QDate
                           ? query.value(1).toDate()
                           : QDate::fromString(query.value(1).toString().left(10), Qt::ISODate);
    auto screen = std::unique_ptr<Kurs>(new Kurs(CourseMode::EditKurs, db, kola, Period{date, date}, parent));
    if (!screen->m_form->moveToId(id))
        return nullptr;
    screen->m_form->edit();
    return screen;
}

Kurs::Kurs(CourseMode mode, QSqlDatabase db, const QString &kola, const Period &period, QWidget *parent)
    : QDialog(parent), m_mode(mode), m_db(std::move(db)), m_books(commandDay()), m_ui(std::make_unique<Ui::Kurs>())
{
    m_ui->setupUi(this);
    setObjectName(QStringLiteral("Kurs"));
    RecordFormConfig config = formConfig();
    config.validate = [this](QVariantMap &entry) { return check(entry); };
    config.write = [this](const RecordRow &row, bool) { return write(row); };
    config.remove = [this](const RecordRow &row) { return remove(row); };
    config.changedOutside = [this] { return typedOutside() != m_outsideAtStart; };
    config.rereadAfterAdding = mode == CourseMode::NewKurs;  // other workstations' courses too
    m_form = new RecordForm(courseRows(m_db, mode, kola, period), config, this);
    buildScreen();
    loadLists();
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor() +
                   (mode == CourseMode::NewKurs ? QStringLiteral(" - Нов курс") : QStringLiteral(" - Корекция курс")));

    connect(m_form, &RecordForm::closeRequested, this, &QDialog::reject);
    connect(m_form, &RecordForm::stateChanged, this, &Kurs::onStateChanged);
    connect(m_form, &RecordForm::added, this, &Kurs::onAdded);
    connect(m_form, &RecordForm::editStarted, this, &Kurs::onEditStarted);
    connect(m_form, &RecordForm::saved, this, &Kurs::onSaved);
    connect(m_form, &RecordForm::moved, this, &Kurs::showDerived);
    connect(m_form, &RecordForm::removed, this, &Kurs::showDerived);
    connect(m_form, &RecordForm::cancelled, this, [this] {
        showDerived();
        if (m_mode == CourseMode::NewKurs)
            reject();  // cancelling a new course closes the editor
    });
    open();
}

Kurs::~Kurs() = default;

// The boxes come from kurs.ui, each bound one naming its column; the lists of earlier values
// cover the boxes of their columns while a course is entered or corrected.
void Kurs::buildScreen()
{
    m_form->bindColumns(this);
    m_valueCombos = {m_ui->Combo1, m_ui->Combo2, m_ui->Combo3, m_ui->Combo4};
    m_sums = {m_ui->lblLabels_15, m_ui->lblLabels_16, m_ui->lblLabels_17};
    m_units = {m_ui->lblLabels_2, m_ui->lblLabels_9, m_ui->lblLabels_14, m_ui->lblLabels_19};
    for (QLabel *unit : std::as_const(m_units))
        unit->setText(amountUnit(Currency::Leva));  // each unit follows its number
    // A driver is found by any part of "kod,ime": the code or the name typed.
    m_ui->Combo5->completer()->setFilterMode(Qt::MatchContains);
    m_ui->Combo5->completer()->setCompletionMode(QCompleter::PopupCompletion);
    connect(m_ui->txtTarifa, &QLineEdit::textEdited, this, [this] {
        m_rateByHand = true;
        m_rateCurrency = courseCurrency();
        m_kmAtRate = m_ui->txtFields_4->text();
    });
    // Leaving a box and Enter in it are the editor's own; the expense box is left alone.
    for (QWidget *widget : findChildren<QWidget *>()) {
        if (widget != m_ui->txtRazhod
            && (qobject_cast<QLineEdit *>(widget) || qobject_cast<QComboBox *>(widget) || qobject_cast<QCheckBox *>(widget))
            && !m_form->isAncestorOf(widget) && widget->parentWidget() == this)
            widget->installEventFilter(this);
    }
    m_ui->layout->addWidget(m_form);
    for (QWidget *widget : m_form->findChildren<QPushButton *>())
        widget->installEventFilter(this);
}

// Kilometres come before the rate: leaving them fills it. The rate and the hidden boxes take no tab.
// A new course's invoice number and mark are overwritten at the save, so entry passes them by.
void Kurs::setTabOrder()
{
    QList<QWidget *> order = {m_ui->Combo5, m_valueCombos[0], m_ui->txtFields_1, m_ui->txtFields_12, m_ui->txtFields_4,
                              m_valueCombos[1], m_valueCombos[2], m_valueCombos[3], m_ui->chkFields};
    if (m_mode == CourseMode::NewKurs) {
        order.append(m_ui->txtRazhod);
        m_ui->txtFields_2->setFocusPolicy(Qt::ClickFocus);
        m_ui->Check1->setFocusPolicy(Qt::ClickFocus);
    } else {
        order.append({m_ui->txtFields_2, m_ui->Check1});
    }
    for (const char *name : {"cmdAdd", "cmdEdit", "cmdDelete", "cmdUpdate", "cmdCancel", "cmdClose"})
        order.append(m_form->button(QString::fromLatin1(name)));
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void Kurs::loadLists()
{
    WaitCursor wait;
    m_tariffBands = loadTariffBands(m_db);
    m_drivers = searchlists::drivers(m_db);
    m_ui->Combo5->addItems(m_drivers);
    m_ui->Combo5->setEditText(QString());
    // What earlier courses used: the trucks, routes, clients and cargoes have no table of their own.
    m_valueCombos[0]->addItems(searchlists::trucks(m_db));
    m_valueCombos[1]->addItems(searchlists::routes(m_db));
    m_valueCombos[2]->addItems(searchlists::clients(m_db));
    m_valueCombos[3]->addItems(searchlists::cargoes(m_db));
    bool anyEmpty = false;
    for (QComboBox *combo : std::as_const(m_valueCombos)) {
        anyEmpty = anyEmpty || combo->count() == 0;
        combo->setEditText(QString());
    }
    // One word for all the lists: on a new database every list is empty, and four boxes in a row
    // told nothing more than one.
    if (anyEmpty)
        MessageService::instance().inform({QStringLiteral("ВНИМАНИЕ!"),
                                           QStringLiteral("Списъка е празен\nЩе се създаде нов!"),
                                           UserMessage::Icon::Exclamation});
}

void Kurs::open()
{
    if (!m_form->open())
        return;
    setTabOrder();
    showDerived();  // the first course shown has its sums, driver and rate at once
    if (m_form->rows()->isEmpty())
        m_form->add();  // also in EditKurs, where "Добави" itself is off
    if (m_mode == CourseMode::EditKurs) {
        m_form->button(QStringLiteral("cmdAdd"))->setEnabled(false);
        setFieldsEnabled(m_form->state() != RecordForm::State::Browsing);
    } else {
        m_form->add();
    }
}

void Kurs::setFieldsEnabled(bool on)
{
    for (QWidget *widget : std::initializer_list<QWidget *>{
             m_ui->txtFields_1, m_ui->txtFields_12, m_ui->txtFields_4, m_ui->txtTarifa, m_ui->txtFields_6,
             m_ui->txtFields_7, m_ui->txtFields_3, m_ui->txtFields_2, m_ui->txtFields_13, m_ui->Check1, m_ui->chkFields})
        widget->setEnabled(on);
}

void Kurs::onStateChanged()
{
    const RecordForm::State state = m_form->state();
    const bool pending = state != RecordForm::State::Browsing;
    m_ui->Combo5->setVisible(pending);
    // A course keeps its driver while it is corrected: the list shows the code and cannot change it.
    m_ui->Combo5->setEnabled(state != RecordForm::State::Editing);
    m_ui->txtFields_100->setVisible(!pending);
    m_ui->txtTarifa->setReadOnly(!pending);
    if (m_mode == CourseMode::EditKurs)
        setFieldsEnabled(pending);
}

// A new course has no rate until its kilometres are left: the last course's rate is not offered.
void Kurs::onAdded()
{
    showSums(false);
    m_ui->txtTarifa->clear();
    m_rateCurrency.reset();
    m_rateByHand = false;
    m_outsideAtStart = typedOutside();
    m_ui->Combo5->setFocus();
}

void Kurs::onEditStarted()
{
    m_ui->Combo5->setEditText(m_ui->txtFields_5->text());
    showSums(false);
    // The stored rate is in the currency of the course's day; one other than its band's was typed.
    m_rateCurrency = courseCurrency();
    m_kmAtRate = m_ui->txtFields_4->text();
    const Checked<double> band = m_tariffBands.rateForText(m_kmAtRate);
    m_rateByHand = !band
                   || formatRate(convertRate(band.value(), m_books.priceCurrency(), *m_rateCurrency))
                          != m_ui->txtTarifa->text();
    m_outsideAtStart = typedOutside();
    m_valueCombos[0]->setFocus();
}

// What the boxes the record form does not bind hold: the driver picked, the rate, the expense.
QStringList Kurs::typedOutside() const
{
    return {m_ui->Combo5->currentText(), m_ui->txtTarifa->text(), m_ui->txtRazhod->text()};
}

void Kurs::onSaved()
{
    // The expense belongs to the course just written; the next course starts without one.
    m_ui->txtRazhod->clear();
    showDerived();
    // Enter then starts the next course (or corrects again), never closes the editor by accident.
    m_form->button(m_mode == CourseMode::NewKurs ? QStringLiteral("cmdAdd") : QStringLiteral("cmdEdit"))->setFocus();
    offerNewClient();
}

// A course saved with a client the register lacks keeps it as typed; the register is offered it.
// "Не" (Enter) adds nothing, and the next course of that client asks again.
void Kurs::offerNewClient()
{
    const RecordRow *row = m_form->currentRow();
    const QString name = row ? row->values.value(QStringLiteral("Klient")).toString().trimmed() : QString();
    if (name.isEmpty())
        return;
    const clients::ClientStore store(m_db);
    const Checked<qint64> known = store.idOf(name);
    if (!known || known.value() > 0)
        return;
    if (!MessageService::instance().askYesNo(UserMessage::twoLines(
            QStringLiteral("Клиенти"), QStringLiteral("Клиентът „%1“ не е в регистъра.").arg(name),
            QStringLiteral("Нов клиент: да го добавя ли в регистъра?"), UserMessage::Icon::Question)))
        return;
    const Checked<qint64> added = store.addName(name, QStringLiteral("ГРЕШКА при запис!"));
    if (!added) {
        MessageService::instance().inform(added.message());
        return;
    }
    emit newClientAdded(added.value());
}

// What is not bound: the sums, the driver's name and (while correcting) the rate of the course.
void Kurs::showDerived()
{
    showSums(true);
    const RecordRow *row = m_form->currentRow();
    showDriverName(row ? row->values.value(QStringLiteral("kod")).toString() : QString());
    showRate();
}

void Kurs::showSums(bool ofRow)
{
    const RecordRow *row = ofRow ? m_form->currentRow() : nullptr;
    const char *columns[3] = {"bruto", "procent", "neto"};
    for (int i = 0; i < 3; ++i) {
        m_sums[i]->setText(row ? formatAmount(row->values.value(QString::fromLatin1(columns[i])).toDouble())
                               : QStringLiteral("0 "));
    }
    showUnits();
}

// The course's money is in the currency of its day: the day shown, or typed while it is entered.
Currency Kurs::courseCurrency() const
{
    if (m_form->state() == RecordForm::State::Browsing) {
        const RecordRow *row = m_form->currentRow();
        return m_books.currencyOn(row ? dateOfValue(row->values.value(QStringLiteral("data"))) : QDate());
    }
    return m_books.currencyOn(parseDate(m_ui->txtFields_1->text()).value_or(QDate()));
}

void Kurs::showUnits()
{
    const QString unit = amountUnit(courseCurrency());
    for (QLabel *label : m_units)
        label->setText(unit);
}

// A driver no longer in the list shows by the code the course holds.
void Kurs::showDriverName(const QString &code)
{
    m_ui->txtFields_100->setText(courseeditor::driverName(m_drivers, code).value_or(code));
}

// A browsed course shows its own rate, and no expense: that was written with the course.
void Kurs::showRate()
{
    if (m_form->state() != RecordForm::State::Browsing)
        return;
    const RecordRow *row = m_form->currentRow();
    m_ui->txtTarifa->setText(row ? formatRate(row->values.value(QStringLiteral("Tarifa")).toDouble()) : QString());
    m_ui->txtRazhod->clear();
}

void Kurs::pickRate()
{
    const Checked<double> rate = m_tariffBands.rateForText(m_ui->txtFields_4->text());
    if (!rate) {
        MessageService::instance().inform(rate.message());  // no rate is picked
        return;
    }
    // The bands stand in euro once the firm has changed over; a course of a day in leva (one
    // corrected after the changeover, say) takes the band's rate back in leva.
    m_rateCurrency = courseCurrency();
    m_currentTariff = convertRate(rate.value(), m_books.priceCurrency(), *m_rateCurrency);
    m_ui->txtTarifa->setText(formatRate(m_currentTariff));
    m_rateByHand = false;
    m_kmAtRate = m_ui->txtFields_4->text();
}

// The rate box holds a rate of the currency of the date shown: a date moved across the firm's
// changeover takes its band's rate in the new currency. A rate typed by hand is replaced only
// when the user says so; kept, it counts as the new currency's.
void Kurs::settleRateCurrency()
{
    if (m_form->state() == RecordForm::State::Browsing || !m_rateCurrency || m_ui->txtTarifa->text().trimmed().isEmpty())
        return;
    const Currency now = courseCurrency();
    if (now == *m_rateCurrency)
        return;
    if (m_rateByHand) {
        const auto words = [](Currency c) { return c == Currency::Euro ? QStringLiteral("евро") : QStringLiteral("лева"); };
        const Checked<double> band = m_tariffBands.rateForText(m_ui->txtFields_4->text());
        const QString offered =
            band ? QStringLiteral(" %1").arg(formatRate(convertRate(band.value(), m_books.priceCurrency(), now)))
                 : QString();
        const UserMessage question = UserMessage::twoLines(
            QStringLiteral("Тарифа на курса"),
            QStringLiteral("Тарифата %1 е въведена ръчно за курс в %2, а курсът от %3 е в %4!")
                .arg(m_ui->txtTarifa->text().trimmed(), words(*m_rateCurrency), m_ui->txtFields_1->text().trimmed(), words(now)),
            QStringLiteral("Да се вземе ли тарифата в %1%2?").arg(words(now), offered), UserMessage::Icon::Question);
        if (!MessageService::instance().askYesNo(question)) {
            m_rateCurrency = now;  // the user's rate, for the course's currency
            return;
        }
    }
    pickRate();
}

// A driver typed by his code ("001"), his name or a part of "kod,ime" found once is the list's entry.
void Kurs::resolveDriver()
{
    if (m_form->state() != RecordForm::State::Adding)
        return;
    const QString typed = m_ui->Combo5->currentText();
    if (const auto entry = courseeditor::resolveDriver(m_drivers, typed); entry && *entry != typed)
        m_ui->Combo5->setEditText(*entry);
}

// The box the user types a column's value into while a course is entered or corrected.
QWidget *Kurs::boxOf(const QString &column) const
{
    if (column == QLatin1String("kod"))
        return m_ui->Combo5->isEnabled() ? m_ui->Combo5 : nullptr;
    if (column == QLatin1String("Tarifa"))
        return m_ui->txtTarifa;
    if (column == QLatin1String("razhod"))
        return m_ui->txtRazhod->isEnabled() ? m_ui->txtRazhod : nullptr;
    return m_form->boxOf(column);
}

// The course as typed: the bound boxes by their columns, and what the form does not bind (the
// driver picked, the rate, the expense).
CourseEntry Kurs::entryOf(const QVariantMap &typed) const
{
    const auto text = [&typed](const char *column) { return typed.value(QString::fromLatin1(column)).toString(); };
    CourseEntry entry;
    entry.driver = m_ui->Combo5->currentText();
    entry.driverCode = text("kod");
    entry.kola = text("kola");
    entry.date = text("data");
    entry.ton = text("ton");
    entry.km = text("km");
    entry.tarifa = m_ui->txtTarifa->text();
    entry.marsh = text("Marsh");
    entry.klient = text("Klient");
    entry.tovar = text("Tovar");
    entry.nomFakt = text("NomFakt");
    entry.razhod = m_ui->txtRazhod->text();
    entry.fakt = typed.value(QStringLiteral("Fakt")).toBool();
    entry.plat = typed.value(QStringLiteral("plat")).toBool();
    return entry;
}

// The checks of the save, in their order; a month out of range only warns and the save goes on.
std::optional<UserMessage> Kurs::check(QVariantMap &entry)
{
    const bool adding = m_form->state() == RecordForm::State::Adding;
    // Saved straight from a box (Ctrl+Enter): what leaving the boxes would have done.
    resolveDriver();
    settleRateCurrency();
    CourseSaveContext context{m_mode, adding, {}};
    if (!adding && m_form->currentRow())
        context.original = courseeditor::courseOf(*m_form->currentRow());
    m_checked = checkCourse(entryOf(entry), context, m_books);
    const auto focusDate = [this] {
        m_ui->txtFields_1->setFocus();
        m_ui->txtFields_1->selectAll();
    };
    if (m_checked.refusal) {
        if (m_checked.focusDate) {
            focusDate();
        } else if (QWidget *box = boxOf(m_checked.faultField)) {
            box->setFocus(Qt::OtherFocusReason);  // the message closes onto the box at fault
            if (auto *edit = qobject_cast<QLineEdit *>(box))
                edit->selectAll();
            else if (auto *combo = qobject_cast<QComboBox *>(box); combo && combo->lineEdit())
                combo->lineEdit()->selectAll();
        }
        return m_checked.refusal;
    }
    if (m_checked.dateWarning) {
        MessageService::instance().inform(*m_checked.dateWarning);
        focusDate();
    }
    if (adding)
        entry.insert(QStringLiteral("kod"), m_checked.course.kod);
    return std::nullopt;
}

// Each list of earlier values learns the value the course was saved with.
void Kurs::learnValues(const RecordRow &row)
{
    for (QComboBox *combo : std::as_const(m_valueCombos)) {
        QStringList items;
        for (int item = 0; item < combo->count(); ++item)
            items.append(combo->itemText(item));
        const QString text = row.values.value(combo->property(RecordForm::columnProperty).toString()).toString();
        if (courseeditor::listLearns(items, text)) {
            const QString typed = combo->currentText();
            combo->addItem(text.trimmed());
            combo->setEditText(typed);
        }
    }
}

Checked<RecordRow> Kurs::write(const RecordRow &row)
{
    learnValues(row);
    const Checked<Course> written = CourseStore(m_db).write(m_checked.course, m_checked.expense);
    if (!written)
        return written.message();
    return courseeditor::rowOf(written.value());
}

std::optional<UserMessage> Kurs::remove(const RecordRow &row)
{
    return CourseStore(m_db).remove(courseeditor::keyOf(row));  // the expense rows stay in the warehouse
}

bool Kurs::eventFilter(QObject *watched, QEvent *event)
{
    const bool pending = m_form && m_form->state() != RecordForm::State::Browsing;
    const auto reason = event->type() == QEvent::FocusOut ? static_cast<QFocusEvent *>(event)->reason()
                                                          : Qt::OtherFocusReason;
    // Only the user leaving a box counts, not a box or a list popping up over it.
    if (event->type() == QEvent::FocusOut && reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
        if (watched == m_ui->txtFields_4 && pending) {
            // A rate typed by hand stays while the kilometres it was typed for stay.
            if (!m_rateByHand || m_ui->txtFields_4->text() != m_kmAtRate || m_ui->txtTarifa->text().trimmed().isEmpty())
                pickRate();
        } else if (watched == m_ui->txtFields_1 && pending) {
            showUnits();
            settleRateCurrency();
        } else if (watched == m_ui->Combo5 && pending) {
            resolveDriver();
        }
        else if (watched == m_valueCombos.value(0) && m_mode == CourseMode::NewKurs &&
                 !m_valueCombos[0]->currentText().trimmed().isEmpty())
            m_ui->txtRazhod->setEnabled(true);  // an expense is typed once a truck is named
    }
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (auto *button = qobject_cast<QPushButton *>(watched)) {
                button->click();
                return true;
            }
            if (pending && (key->modifiers() & Qt::ControlModifier)) {
                m_form->update();
                return true;
            }
            if (pending) {
                focusNextChild();  // Enter goes on to the next box, as Tab does
                return true;
            }
        }
    }
    return QDialog::eventFilter(watched, event);
}

}
