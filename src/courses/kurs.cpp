#include "kurs.h"

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
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlQuery>
#include <QVBoxLayout>

namespace zarek {

namespace {

RecordFormConfig formConfig()
{
    RecordFormConfig config;
    config.statusText = QStringLiteral("Курс № ");
    config.newText = QStringLiteral("Нов курс");
    config.editText = QStringLiteral("Корекция");
    config.lazyRows = true;  // NewKurs browses every course of the firm
    config.numberColumns = {QStringLiteral("km"), QStringLiteral("ton")};
    config.dateColumns = {QStringLiteral("data")};
    // Alt plus the underlined letter: a course goes in, is saved and the next begins without the mouse.
    config.buttonCaptions = {{QStringLiteral("cmdAdd"), QStringLiteral("&Добави")},
                             {QStringLiteral("cmdEdit"), QStringLiteral("&Поправи")},
                             {QStringLiteral("cmdDelete"), QStringLiteral("&Изтрий")},
                             {QStringLiteral("cmdClose"), QStringLiteral("За&твори")},
                             {QStringLiteral("cmdUpdate"), QStringLiteral("&Запиши")},
                             {QStringLiteral("cmdCancel"), QStringLiteral("&Отказ")}};
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

QLabel *caption(int index, const QString &text, QWidget *buddy, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(QStringLiteral("lblLabels_%1").arg(index));
    label->setBuddy(buddy);
    return label;
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
    : QDialog(parent), m_mode(mode), m_db(std::move(db)), m_books(commandDay())
{
    setObjectName(QStringLiteral("Kurs"));
    RecordFormConfig config = formConfig();
    config.validate = [this](const QVariantMap &) { return check(); };
    config.write = [this](const RecordRow &, bool) { return write(); };
    config.remove = [this](const RecordRow &row) { return remove(row); };
    config.changedOutside = [this] { return typedOutside() != m_outsideAtStart; };
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

QLineEdit *Kurs::makeField(int index, const QString &column, int maxLength)
{
    QLineEdit *field = nullptr;
    if (index == 1)
        field = m_date = new DateEntry(this);
    else
        field = new QLineEdit(this);
    field->setObjectName(QStringLiteral("txtFields_%1").arg(index));
    if (maxLength > 0)
        field->setMaxLength(maxLength);
    m_fields.insert(index, field);
    if (!column.isEmpty())
        m_form->bind(field, column);
    field->installEventFilter(this);
    return field;
}

QComboBox *Kurs::makeCombo(const QString &name, QLineEdit *covered)
{
    auto *combo = new QComboBox(this);
    combo->setObjectName(name);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);  // a list learns at the save, not on Enter
    combo->setMaxVisibleItems(20);
    combo->installEventFilter(this);
    if (covered) {
        m_form->cover(covered, combo);
        m_valueCombos.append(combo);
        m_coveredFields.append(covered);
    }
    return combo;
}

void Kurs::buildScreen()
{
    // The sums are kept in the row but shown by the labels of the frame.
    const int sumIndexes[3] = {0, 10, 8};
    const char *sumColumns[3] = {"bruto", "procent", "neto"};
    for (int i = 0; i < 3; ++i)
        makeField(sumIndexes[i], QString::fromLatin1(sumColumns[i]), 0);
    // Lengths a little above the limits, so the checks, not the boxes, tell what is too long.
    QLineEdit *kod = makeField(5, QStringLiteral("kod"), 20);
    QLineEdit *driverName = makeField(100, QString(), 0);
    driverName->setReadOnly(true);
    driverName->setFocusPolicy(Qt::NoFocus);
    m_driverCombo = makeCombo(QStringLiteral("Combo5"), nullptr);
    m_driverCombo->setMinimumWidth(260);
    // A driver is found by any part of "kod,ime": the code or the name typed.
    m_driverCombo->completer()->setFilterMode(Qt::MatchContains);
    m_driverCombo->completer()->setCompletionMode(QCompleter::PopupCompletion);
    QLineEdit *kola = makeField(6, QStringLiteral("kola"), 20);
    QComboBox *kolaCombo = makeCombo(QStringLiteral("Combo1"), kola);
    QLineEdit *date = makeField(1, QStringLiteral("data"), 12);
    QLineEdit *ton = makeField(12, QStringLiteral("ton"), 12);
    QLineEdit *km = makeField(4, QStringLiteral("km"), 12);
    m_tarifa = new QLineEdit(this);
    m_tarifa->setObjectName(QStringLiteral("txtTarifa"));
    m_tarifa->setMaxLength(12);
    m_tarifa->installEventFilter(this);
    connect(m_tarifa, &QLineEdit::textEdited, this, [this] {
        m_rateByHand = true;
        m_rateCurrency = courseCurrency();
        m_kmAtRate = m_fields.value(4)->text();
    });
    QLineEdit *marsh = makeField(7, QStringLiteral("Marsh"), 40);
    QComboBox *marshCombo = makeCombo(QStringLiteral("Combo2"), marsh);
    QLineEdit *klient = makeField(3, QStringLiteral("Klient"), 40);
    QComboBox *klientCombo = makeCombo(QStringLiteral("Combo3"), klient);
    QLineEdit *tovar = makeField(13, QStringLiteral("Tovar"), 40);
    QComboBox *tovarCombo = makeCombo(QStringLiteral("Combo4"), tovar);
    QLineEdit *nomFakt = makeField(2, QStringLiteral("NomFakt"), 14);
    m_invoiced = new QCheckBox(QStringLiteral("Фактур."), this);
    m_invoiced->setObjectName(QStringLiteral("Check1"));
    m_form->bind(m_invoiced, QStringLiteral("Fakt"));
    m_paid = new QCheckBox(QStringLiteral("Платен"), this);
    m_paid->setObjectName(QStringLiteral("chkFields"));
    m_form->bind(m_paid, QStringLiteral("plat"));
    m_invoiced->installEventFilter(this);
    m_paid->installEventFilter(this);
    for (QLineEdit *field : {kod, m_fields.value(0), m_fields.value(10), m_fields.value(8)}) {
        field->setFocusPolicy(Qt::NoFocus);
        field->setVisible(false);
    }
    m_tarifa->setFocusPolicy(Qt::ClickFocus);  // filled from the kilometres; Alt+А or a click to type over it
    for (QLineEdit *field : {ton, km, m_tarifa, nomFakt})
        field->setMaximumWidth(110);
    date->setMaximumWidth(130);

    auto *grid = new QGridLayout;
    grid->setHorizontalSpacing(10);
    auto *driverRow = new QHBoxLayout;
    driverRow->addWidget(m_driverCombo, 1);
    driverRow->addWidget(driverName, 1);
    grid->addWidget(caption(5, QStringLiteral("Шофьор"), m_driverCombo, this), 0, 0);
    grid->addLayout(driverRow, 0, 1, 1, 5);
    auto *kolaRow = new QHBoxLayout;
    kolaRow->addWidget(kolaCombo, 1);
    kolaRow->addWidget(kola, 1);
    grid->addWidget(caption(6, QStringLiteral("№ кола"), kolaCombo, this), 1, 0);
    grid->addLayout(kolaRow, 1, 1, 1, 3);
    grid->addWidget(caption(1, QStringLiteral("Дата"), date, this), 1, 4);
    grid->addWidget(date, 1, 5);
    grid->addWidget(caption(12, QStringLiteral("Тон"), ton, this), 2, 0);
    grid->addWidget(ton, 2, 1);
    grid->addWidget(caption(4, QStringLiteral("Км"), km, this), 2, 2);
    grid->addWidget(km, 2, 3);
    grid->addWidget(caption(11, QStringLiteral("Т&арифа"), m_tarifa, this), 2, 4);
    grid->addWidget(m_tarifa, 2, 5);
    const struct {
        int label;
        const char *text;
        QComboBox *combo;
        QLineEdit *field;
    } lists[] = {{7, "Маршрут", marshCombo, marsh}, {3, "Клиент", klientCombo, klient}, {13, "Товар", tovarCombo, tovar}};
    int row = 3;
    for (const auto &list : lists) {
        auto *line = new QHBoxLayout;
        line->addWidget(list.combo, 1);
        line->addWidget(list.field, 1);
        grid->addWidget(caption(list.label, QString::fromUtf8(list.text), list.combo, this), row, 0);
        grid->addLayout(line, row++, 1, 1, 5);
    }
    grid->addWidget(caption(18, QStringLiteral("Факт.№"), nomFakt, this), row, 0);
    grid->addWidget(nomFakt, row, 1, 1, 2);
    grid->addWidget(m_invoiced, row, 3);
    grid->addWidget(m_paid, row, 4);
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(3, 1);
    grid->setColumnStretch(5, 1);

    auto *sums = new QGroupBox(QStringLiteral("Суми от курса"), this);
    sums->setObjectName(QStringLiteral("Frame1"));
    auto *sumsRow = new QHBoxLayout(sums);
    const struct {
        int caption, value, unit;
        const char *text;
    } sumLabels[] = {{0, 15, 2, "Бруто"}, {10, 16, 9, "Процент"}, {8, 17, 14, "Нето"}};
    for (int i = 0; i < 3; ++i) {
        sumsRow->addWidget(caption(sumLabels[i].caption, QString::fromUtf8(sumLabels[i].text), nullptr, sums));
        m_sums[i] = caption(sumLabels[i].value, QString(), nullptr, sums);
        m_sums[i]->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_sums[i]->setMinimumWidth(70);
        QFont bold = m_sums[i]->font();
        bold.setBold(true);
        m_sums[i]->setFont(bold);
        sumsRow->addWidget(m_sums[i]);
        m_units[i] = caption(sumLabels[i].unit, amountUnit(Currency::Leva), nullptr, sums);
        sumsRow->addWidget(m_units[i]);  // each unit follows its number
        sumsRow->addSpacing(16);
    }
    sumsRow->addStretch();

    m_razhod = new QLineEdit(this);
    m_razhod->setObjectName(QStringLiteral("txtRazhod"));
    m_razhod->setMaxLength(14);
    m_razhod->setMaximumWidth(110);
    m_razhod->setEnabled(false);
    auto *expenseRow = new QHBoxLayout;
    expenseRow->addWidget(caption(20, QStringLiteral("Разход"), m_razhod, this));
    expenseRow->addWidget(m_razhod);
    m_units[3] = caption(19, amountUnit(Currency::Leva), nullptr, this);
    expenseRow->addWidget(m_units[3]);
    expenseRow->addStretch();

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addWidget(sums);
    layout->addLayout(expenseRow);
    layout->addWidget(m_form);
    for (QWidget *widget : m_form->findChildren<QPushButton *>())
        widget->installEventFilter(this);
    setMinimumWidth(620);
}

// Kilometres come before the rate: leaving them fills it. The rate and the hidden boxes take no tab.
// A new course's invoice number and mark are overwritten at the save, so entry passes them by.
void Kurs::setTabOrder()
{
    QList<QWidget *> order = {m_driverCombo, m_valueCombos[0], m_date, m_fields.value(12), m_fields.value(4),
                              m_valueCombos[1], m_valueCombos[2], m_valueCombos[3], m_paid};
    if (m_mode == CourseMode::NewKurs) {
        order.append(m_razhod);
        m_fields.value(2)->setFocusPolicy(Qt::ClickFocus);
        m_invoiced->setFocusPolicy(Qt::ClickFocus);
    } else {
        order.append({m_fields.value(2), m_invoiced});
    }
    for (const char *name : {"cmdAdd", "cmdEdit", "cmdDelete", "cmdUpdate", "cmdCancel", "cmdClose"})
        order.append(m_form->button(QString::fromLatin1(name)));
    for (qsizetype i = 1; i < order.size(); ++i)
        QWidget::setTabOrder(order[i - 1], order[i]);
}

void Kurs::fillCombo(QComboBox *combo, const QStringList &items)
{
    combo->addItems(items);
}

void Kurs::loadLists()
{
    WaitCursor wait;
    m_tariffBands = loadTariffBands(m_db);
    m_drivers = searchlists::drivers(m_db);
    m_driverCombo->addItems(m_drivers);
    m_driverCombo->setEditText(QString());
    // What earlier courses used: the trucks, routes, clients and cargoes have no table of their own.
    fillCombo(m_valueCombos[0], searchlists::trucks(m_db));
    fillCombo(m_valueCombos[1], searchlists::routes(m_db));
    fillCombo(m_valueCombos[2], searchlists::clients(m_db));
    fillCombo(m_valueCombos[3], searchlists::cargoes(m_db));
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
    if (m_form->rowCount() == 0)
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
    for (int index : {1, 12, 4, 6, 7, 3, 2, 13})
        m_fields.value(index)->setEnabled(on);
    for (QWidget *widget : std::initializer_list<QWidget *>{m_tarifa, m_invoiced, m_paid})
        widget->setEnabled(on);
}

void Kurs::onStateChanged()
{
    const RecordForm::State state = m_form->state();
    const bool pending = state != RecordForm::State::Browsing;
    m_driverCombo->setVisible(pending);
    // A course keeps its driver while it is corrected: the list shows the code and cannot change it.
    m_driverCombo->setEnabled(state != RecordForm::State::Editing);
    m_fields.value(100)->setVisible(!pending);
    m_tarifa->setReadOnly(!pending);
    if (m_mode == CourseMode::EditKurs)
        setFieldsEnabled(pending);
}

// A new course has no rate until its kilometres are left: the last course's rate is not offered.
void Kurs::onAdded()
{
    showSums(false);
    m_tarifa->clear();
    m_rateCurrency.reset();
    m_rateByHand = false;
    m_outsideAtStart = typedOutside();
    m_driverCombo->setFocus();
}

void Kurs::onEditStarted()
{
    m_driverCombo->setEditText(m_fields.value(5)->text());
    showSums(false);
    // The stored rate is in the currency of the course's day; one other than its band's was typed.
    m_rateCurrency = courseCurrency();
    m_kmAtRate = m_fields.value(4)->text();
    const Checked<double> band = m_tariffBands.rateForText(m_kmAtRate);
    m_rateByHand = !band
                   || formatRate(convertRate(band.value(), m_books.priceCurrency(), *m_rateCurrency))
                          != m_tarifa->text();
    m_outsideAtStart = typedOutside();
    m_valueCombos[0]->setFocus();
}

// What the boxes the record form does not bind hold: the driver picked, the rate, the expense.
QStringList Kurs::typedOutside() const
{
    return {m_driverCombo->currentText(), m_tarifa->text(), m_razhod->text()};
}

void Kurs::onSaved()
{
    // The expense belongs to the course just written; the next course starts without one.
    m_razhod->clear();
    if (m_mode == CourseMode::NewKurs)
        m_form->reload();  // other workstations' courses too; the saved one stays current
    showDerived();
    // Enter then starts the next course (or corrects again), never closes the editor by accident.
    m_form->button(m_mode == CourseMode::NewKurs ? QStringLiteral("cmdAdd") : QStringLiteral("cmdEdit"))->setFocus();
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
    return m_books.currencyOn(parseDate(m_date->text()).value_or(QDate()));
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
    m_fields.value(100)->setText(courseeditor::driverName(m_drivers, code).value_or(code));
}

// A browsed course shows its own rate, and no expense: that was written with the course.
void Kurs::showRate()
{
    if (m_form->state() != RecordForm::State::Browsing)
        return;
    const RecordRow *row = m_form->currentRow();
    m_tarifa->setText(row ? formatRate(row->values.value(QStringLiteral("Tarifa")).toDouble()) : QString());
    m_razhod->clear();
}

void Kurs::pickRate()
{
    const Checked<double> rate = m_tariffBands.rateForText(m_fields.value(4)->text());
    if (!rate) {
        MessageService::instance().inform(rate.message());  // no rate is picked
        return;
    }
    // The bands stand in euro once the firm has changed over; a course of a day in leva (one
    // corrected after the changeover, say) takes the band's rate back in leva.
    m_rateCurrency = courseCurrency();
    m_currentTariff = convertRate(rate.value(), m_books.priceCurrency(), *m_rateCurrency);
    m_tarifa->setText(formatRate(m_currentTariff));
    m_rateByHand = false;
    m_kmAtRate = m_fields.value(4)->text();
}

// The rate box holds a rate of the currency of the date shown: a date moved across the firm's
// changeover takes its band's rate in the new currency. A rate typed by hand is replaced only
// when the user says so; kept, it counts as the new currency's.
void Kurs::settleRateCurrency()
{
    if (m_form->state() == RecordForm::State::Browsing || !m_rateCurrency || m_tarifa->text().trimmed().isEmpty())
        return;
    const Currency now = courseCurrency();
    if (now == *m_rateCurrency)
        return;
    if (m_rateByHand) {
        const auto words = [](Currency c) { return c == Currency::Euro ? QStringLiteral("евро") : QStringLiteral("лева"); };
        const Checked<double> band = m_tariffBands.rateForText(m_fields.value(4)->text());
        const QString offered =
            band ? QStringLiteral(" %1").arg(formatRate(convertRate(band.value(), m_books.priceCurrency(), now)))
                 : QString();
        const UserMessage question = UserMessage::twoLines(
            QStringLiteral("Тарифа на курса"),
            QStringLiteral("Тарифата %1 е въведена ръчно за курс в %2, а курсът от %3 е в %4!")
                .arg(m_tarifa->text().trimmed(), words(*m_rateCurrency), m_date->text().trimmed(), words(now)),
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
    const QString typed = m_driverCombo->currentText();
    if (const auto entry = courseeditor::resolveDriver(m_drivers, typed); entry && *entry != typed)
        m_driverCombo->setEditText(*entry);
}

// The box the user types a column's value into while a course is entered or corrected.
QWidget *Kurs::boxOf(const QString &column) const
{
    static const QHash<QString, int> fieldIndex = {{QStringLiteral("data"), 1},  {QStringLiteral("ton"), 12},
                                                   {QStringLiteral("km"), 4},    {QStringLiteral("NomFakt"), 2}};
    static const QHash<QString, int> comboIndex = {{QStringLiteral("kola"), 0}, {QStringLiteral("Marsh"), 1},
                                                   {QStringLiteral("Klient"), 2}, {QStringLiteral("Tovar"), 3}};
    if (column == QLatin1String("kod"))
        return m_driverCombo->isEnabled() ? m_driverCombo : nullptr;
    if (column == QLatin1String("Tarifa"))
        return m_tarifa;
    if (column == QLatin1String("razhod"))
        return m_razhod->isEnabled() ? m_razhod : nullptr;
    if (fieldIndex.contains(column))
        return m_fields.value(fieldIndex.value(column));
    if (comboIndex.contains(column))
        return m_valueCombos.value(comboIndex.value(column));
    return nullptr;
}

CourseEntry Kurs::entryOnScreen() const
{
    CourseEntry entry;
    entry.driver = m_driverCombo->currentText();
    entry.driverCode = m_fields.value(5)->text();
    entry.kola = m_fields.value(6)->text();
    entry.date = m_fields.value(1)->text();
    entry.ton = m_fields.value(12)->text();
    entry.km = m_fields.value(4)->text();
    entry.tarifa = m_tarifa->text();
    entry.marsh = m_fields.value(7)->text();
    entry.klient = m_fields.value(3)->text();
    entry.tovar = m_fields.value(13)->text();
    entry.nomFakt = m_fields.value(2)->text();
    entry.razhod = m_razhod->text();
    entry.fakt = m_invoiced->isChecked();
    entry.plat = m_paid->isChecked();
    return entry;
}

// The checks of the save, in their order; a month out of range only warns and the save goes on.
std::optional<UserMessage> Kurs::check()
{
    const bool adding = m_form->state() == RecordForm::State::Adding;
    // Saved straight from a box (Ctrl+Enter): what leaving the boxes would have done.
    resolveDriver();
    settleRateCurrency();
    CourseSaveContext context{m_mode, adding, {}};
    if (!adding && m_form->currentRow())
        context.original = courseeditor::courseOf(*m_form->currentRow());
    m_checked = checkCourse(entryOnScreen(), context, m_books);
    const auto focusDate = [this] {
        m_date->setFocus();
        m_date->selectAll();
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
        m_fields.value(5)->setText(m_checked.course.kod);
    return std::nullopt;
}

void Kurs::learnValues()
{
    for (qsizetype i = 0; i < m_valueCombos.size(); ++i) {
        QComboBox *combo = m_valueCombos[i];
        QStringList items;
        for (int item = 0; item < combo->count(); ++item)
            items.append(combo->itemText(item));
        const QString text = m_coveredFields[i]->text();
        if (courseeditor::listLearns(items, text)) {
            const QString typed = combo->currentText();
            combo->addItem(text.trimmed());
            combo->setEditText(typed);
        }
    }
}

Checked<RecordRow> Kurs::write()
{
    learnValues();
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
        if (watched == m_fields.value(4) && pending) {
            // A rate typed by hand stays while the kilometres it was typed for stay.
            if (!m_rateByHand || m_fields.value(4)->text() != m_kmAtRate || m_tarifa->text().trimmed().isEmpty())
                pickRate();
        } else if (watched == m_date && pending) {
            showUnits();
            settleRateCurrency();
        } else if (watched == m_driverCombo && pending) {
            resolveDriver();
        }
        else if (watched == m_valueCombos.value(0) && m_mode == CourseMode::NewKurs &&
                 !m_valueCombos[0]->currentText().trimmed().isEmpty())
            m_razhod->setEnabled(true);  // an expense is typed once a truck is named
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
