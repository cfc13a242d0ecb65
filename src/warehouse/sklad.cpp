#include "sklad.h"
#include "ui_sklad.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/valueformat.h"
#include "core/version.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "forms/recordform.h"
#include "forms/recordset.h"
#include "warehouse/issuecost.h"

#include <QApplication>
#include <QCompleter>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>

namespace zarek {

namespace {

const QStringList columns = {QStringLiteral("Data"), QStringLiteral("DocVid"), QStringLiteral("DocNom"),
                             QStringLiteral("Name"), QStringLiteral("Kol"), QStringLiteral("Edin"),
                             QStringLiteral("Suma"), QStringLiteral("Lipsa"), QStringLiteral("Ostat"),
                             QStringLiteral("VidKol")};

StockMovement movementOf(const RecordRow &row)
{
    const QVariantMap &v = row.values;
    StockMovement m;
    m.id = row.id;
    m.rowVersion = row.rowVersion;
    m.data = v.value(QStringLiteral("Data")).toDate();
    m.docVid = v.value(QStringLiteral("DocVid")).toString();
    m.docNom = v.value(QStringLiteral("DocNom")).toString();
    m.name = v.value(QStringLiteral("Name")).toString();
    m.kol = v.value(QStringLiteral("Kol")).toDouble();
    m.edin = v.value(QStringLiteral("Edin")).toDouble();
    m.suma = Money::fromAmount(v.value(QStringLiteral("Suma")).toDouble());
    m.vidKol = v.value(QStringLiteral("VidKol")).toString();
    if (!v.value(QStringLiteral("Ostat")).isNull())
        m.ostat = v.value(QStringLiteral("Ostat")).toDouble();
    m.lipsa = v.value(QStringLiteral("Lipsa")).toBool();
    return m;
}

RecordRow rowOf(const StockMovement &m)
{
    return {m.id,
            m.rowVersion,
            {{QStringLiteral("Data"), m.data},
             {QStringLiteral("DocVid"), m.docVid},
             {QStringLiteral("DocNom"), m.docNom},
             {QStringLiteral("Name"), m.name},
             {QStringLiteral("Kol"), m.kol},
             {QStringLiteral("Edin"), m.edin},
             {QStringLiteral("Suma"), m.suma.toDouble()},
             {QStringLiteral("Lipsa"), m.lipsa},
             {QStringLiteral("Ostat"), m.ostat ? QVariant(*m.ostat) : QVariant(QMetaType::fromType<double>())},
             {QStringLiteral("VidKol"), m.vidKol}}};
}

// A list that completes what is typed from anywhere in its items, as the search dialogs do.
void completeFromAnywhere(QComboBox *combo)
{
    combo->setInsertPolicy(QComboBox::NoInsert);
    if (QCompleter *completer = combo->completer()) {
        completer->setFilterMode(Qt::MatchContains);
        completer->setCaseSensitivity(Qt::CaseInsensitive);
        completer->setCompletionMode(QCompleter::PopupCompletion);
    }
}

void addSorted(QComboBox *combo, const QString &text)
{
    if (text.trimmed().isEmpty() || combo->findText(text) >= 0)
        return;
    int at = 0;
    while (at < combo->count() && nameLess(combo->itemText(at), text))
        ++at;
    const QString typed = combo->currentText();
    combo->insertItem(at, text);
    combo->setEditText(typed);
}

QString quantityText(double quantity)
{
    return bulgarianLocale().toString(quantity, 'g', 15);
}

}

Sklad::Sklad(const QString &vidKol, QSqlDatabase db, QWidget *parent, WarehouseStore::Clock clock)
    : QWidget(parent, Qt::Window), m_ui(std::make_unique<Ui::Sklad>()), m_vidKol(vidKol), m_db(db), m_store(db, clock),
      m_books(commandDay())
{
    m_ui->setupUi(this);
    const bool issues = isIssues();
    setObjectName(issues ? QStringLiteral("Sklad_R") : QStringLiteral("Sklad"));
    setWindowTitle(QStringLiteral("Зарек ") + version::majorMinor()
                   + (issues ? QStringLiteral(" - Склад - Разход") : QStringLiteral(" - Склад - Приход")));
    m_ui->Frame3->setTitle(issues ? QStringLiteral("Разход") : QStringLiteral("Приход"));
    m_ui->Frame4->setVisible(issues);
    m_ui->txtFields_7->setText(vidKol);

    RecordFormConfig config;
    config.numberColumns = {QStringLiteral("Kol"), QStringLiteral("Edin")};
    config.dateColumns = {QStringLiteral("Data")};
    config.lockedWhileEditing = {QStringLiteral("DocVid"), QStringLiteral("Name")};
    if (issues)
        config.lockedWhileEditing.append(QStringLiteral("Edin"));  // an issue's price is what it cost
    config.lazyRows = true;
    config.validate = [vidKol](const QVariantMap &typed) { return checkMovement(typed, vidKol); };
    WarehouseStore::Clock today = clock ? clock : WarehouseStore::Clock([] { return QDateTime::currentDateTime(); });
    config.presets = [today](QVariantMap &values) { values.insert(QStringLiteral("Data"), today().date()); };
    config.write = [this](const RecordRow &row, bool adding) { return write(row, adding); };
    config.remove = [this](const RecordRow &row) { return remove(row); };
    m_form = new RecordForm(std::make_unique<RecordStore>(db, QStringLiteral("Sklad"), columns, QStringLiteral("Data"),
                                                          QStringLiteral("VidKol = ?"), QVariantList{vidKol}),
                            config, this);
    m_ui->layout->addWidget(m_form);

    // The boxes of sklad.ui name their columns, in the order of entry: the document, then the
    // article, then quantity and price; the two lists cover the kind and the article.
    m_form->bindColumns(this);
    completeFromAnywhere(m_ui->Combo1);
    completeFromAnywhere(m_ui->Combo2);
    m_ui->chkFields->setEnabled(false);
    setTabOrder(m_ui->Combo1, m_ui->txtFields_2);
    setTabOrder(m_ui->txtFields_2, m_ui->txtFields_0);
    setTabOrder(m_ui->txtFields_0, m_ui->Combo2);
    setTabOrder(m_ui->Combo2, m_ui->txtFields_4);
    setTabOrder(m_ui->txtFields_4, m_ui->txtFields_5);

    // The lists: the document kinds of this kind of movement, the names of all movements; each
    // shows its first entry.
    m_ui->Combo1->addItems(m_store.documentKinds(vidKol));
    m_ui->Combo2->addItems(m_store.articleNames());
    connect(m_ui->Combo1->lineEdit(), &QLineEdit::editingFinished, this, &Sklad::documentKindLeft);
    connect(m_ui->Combo2->lineEdit(), &QLineEdit::editingFinished, this, &Sklad::nameLeft);

    auto *lots = m_ui->grdLots;
    lots->setColumnCount(5);
    lots->setHorizontalHeaderLabels({QStringLiteral("Дата"), QStringLiteral("Доставка"), QStringLiteral("Кол."),
                                     QStringLiteral("Ед.цена"), QStringLiteral("Сума")});
    lots->verticalHeader()->setVisible(false);
    lots->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    lots->setColumnWidth(0, 90);
    lots->setColumnWidth(2, 80);
    lots->setColumnWidth(3, 110);
    lots->setColumnWidth(4, 100);

    connect(m_form->rows(), &RecordSet::currentChanged, this, [this] {
        showRow();
    });
    connect(m_form, &RecordForm::saved, this, [this] {
        if (const RecordRow *row = m_form->currentRow())
            learn(*row);
        showRow();
        emit stockChanged();
    });
    connect(m_form, &RecordForm::added, this, [this] {
        showRow();
    });
    connect(m_form, &RecordForm::cancelled, this, [this] {
        showRow();
    });
    connect(m_form, &RecordForm::editStarted, this, &Sklad::editStarted);
    connect(m_form, &RecordForm::closeRequested, this, &QWidget::close);
    connect(m_ui->txtFields_4, &QLineEdit::textChanged, this, &Sklad::showAmount);
    connect(m_ui->txtFields_5, &QLineEdit::textChanged, this, &Sklad::showAmount);
    for (QWidget *box : {static_cast<QWidget *>(m_ui->Combo1), static_cast<QWidget *>(m_ui->txtFields_2),
                         static_cast<QWidget *>(m_ui->txtFields_0), static_cast<QWidget *>(m_ui->Combo2),
                         static_cast<QWidget *>(m_ui->txtFields_4), static_cast<QWidget *>(m_ui->txtFields_5)})
        box->installEventFilter(this);

    resize(720, issues ? 520 : 330);
    if (m_form->open() && m_form->rowCount() == 0)
        m_form->add();  // nothing to show: a new movement at once
    showRow();
}

Sklad::~Sklad() = default;

void Sklad::showRow()
{
    // An issue's price is the average cost of what it took: shown formatted, not as a long fraction.
    if (isIssues() && m_form->state() == RecordForm::State::Browsing) {
        if (const RecordRow *row = m_form->currentRow())
            m_ui->txtFields_5->setText(issuePriceText(row->values.value(QStringLiteral("Edin")).toDouble()));
    }
    showAmount();
    showStockLine();
    showLots();
}

void Sklad::refresh()
{
    if (m_form->state() == RecordForm::State::Browsing)
        m_form->reload();
}

Checked<RecordRow> Sklad::write(const RecordRow &row, bool adding)
{
    StockMovement typed = movementOf(row);
    typed.vidKol = m_vidKol;
    Checked<StockMovement> written = typed;
    if (adding) {
        written = isIssues() ? m_store.addIssue(typed) : m_store.addReceipt(typed);
    } else {
        const StockMovement read = movementOf(*m_form->currentRow());
        written = isIssues() ? m_store.correctIssue(read, typed) : m_store.correctReceipt(read, typed);
    }
    if (!written)
        return written.message();
    return rowOf(written.value());
}

std::optional<UserMessage> Sklad::remove(const RecordRow &row)
{
    const StockMovement read = movementOf(row);
    std::optional<UserMessage> failure = isIssues() ? m_store.removeIssue(read) : m_store.removeReceipt(read);
    if (!failure)
        emit stockChanged();
    return failure;
}

// Leaving the document kind: more than 15 characters are cut to the first 15.
void Sklad::documentKindLeft()
{
    const QString typed = m_ui->Combo1->currentText();
    const QString kept = cutDocumentKind(typed);
    if (kept != typed.trimmed())
        m_ui->Combo1->setEditText(kept);
}

// Leaving the name of an issue: a repair is one piece, so its quantity box is locked at 1.
void Sklad::nameLeft()
{
    if (!isIssues() || m_form->state() != RecordForm::State::Adding)
        return;
    const QString name = m_ui->Combo2->currentText();
    const bool repair = isRepair(name);
    if (repair)
        m_ui->txtFields_4->setText(QStringLiteral("1"));
    m_form->setFieldLocked(QStringLiteral("Kol"), repair);
    showAmount();
    showStockOf(name);
}

void Sklad::editStarted()
{
    const RecordRow *row = m_form->currentRow();
    if (!row || isIssues())
        return;
    const Checked<bool> drawn = m_store.isDrawnOn(row->id);
    if (drawn && drawn.value()) {
        m_form->setFieldLocked(QStringLiteral("Kol"), true);
        m_form->setFieldLocked(QStringLiteral("Edin"), true);
        MessageService::instance().inform(receiptDrawnOnNotice());
    }
}

// The amount of the row shown, or while typing the quantity times the price.
void Sklad::showAmount()
{
    QString text;
    QDate date;
    if (m_form->state() == RecordForm::State::Browsing) {
        if (const RecordRow *row = m_form->currentRow()) {
            text = formatAmount(row->values.value(QStringLiteral("Suma")).toDouble());
            date = dateOfValue(row->values.value(QStringLiteral("Data")));
        }
    } else if (isIssues() && !isRepair(m_ui->Combo2->currentText())) {
        text = issueAmountText();
        date = parseDate(m_ui->txtFields_0->text()).value_or(QDate());
    } else {
        const std::optional<double> kol = parseNumber(m_ui->txtFields_4->text());
        const std::optional<double> edin = parseNumber(m_ui->txtFields_5->text());
        if (kol && edin)
            text = formatAmount(*kol * *edin);
        date = parseDate(m_ui->txtFields_0->text()).value_or(QDate());
    }
    // Once the books have both currencies, the amount says which one it is in.
    if (!text.isEmpty() && m_books.changedOver())
        text += QLatin1Char(' ') + amountUnit(m_books.currencyOn(date));
    m_ui->txtFields_6->setText(text);
}

QString Sklad::issueAmountText() const
{
    const std::optional<double> kol = parseNumber(m_ui->txtFields_4->text());
    const std::optional<double> edin = parseNumber(m_ui->txtFields_5->text());
    const std::optional<QDate> date = parseDate(m_ui->txtFields_0->text());
    if (!kol || !edin || !date || m_ui->Combo2->currentText().trimmed().isEmpty())
        return {};
    const RecordRow *current = m_form->currentRow();
    const bool correcting = m_form->state() == RecordForm::State::Editing && current;
    StockMovement typed = correcting ? movementOf(*current) : StockMovement{};
    typed.vidKol = m_vidKol;
    typed.data = *date;
    typed.docVid = m_ui->Combo1->currentText();
    typed.docNom = m_ui->txtFields_2->text();
    typed.kol = *kol;
    if (!correcting) {
        typed.name = m_ui->Combo2->currentText();
        typed.edin = *edin;
    }
    const StockMovement read = correcting ? movementOf(*current) : StockMovement{};
    const Checked<StockMovement> costed = issueCostNow(m_store, m_db, typed, correcting ? &read : nullptr);
    return costed ? formatAmount(costed.value().suma) : QString();
}

// Under the quantity: what a receipt shown still holds; while an issue is entered, the stock of its name.
void Sklad::showStockLine()
{
    m_ui->lblStock->clear();
    const RecordRow *row = m_form->currentRow();
    switch (m_form->state()) {
    case RecordForm::State::Browsing:
        if (row && !isIssues() && !row->values.value(QStringLiteral("Ostat")).isNull())
            m_ui->lblStock->setText(QStringLiteral("Неизписано от доставката: ")
                                    + quantityText(row->values.value(QStringLiteral("Ostat")).toDouble()));
        break;
    case RecordForm::State::Adding:
        if (isIssues())
            showStockOf(m_ui->Combo2->currentText());
        break;
    case RecordForm::State::Editing:
        break;
    }
}

// An issue's lots: which receipts it took from, how much and at what price.
void Sklad::showLots()
{
    if (!isIssues())
        return;
    auto *grid = m_ui->grdLots;
    grid->setRowCount(0);
    m_ui->lblLots->clear();
    const RecordRow *row = m_form->currentRow();
    if (m_form->state() == RecordForm::State::Adding || !row)
        return;
    const Checked<QList<IssueLotRow>> lots = m_store.lotsOf(row->id);
    if (!lots) {
        m_ui->lblLots->setText(lots.message().text);
        return;
    }
    if (lots.value().isEmpty()) {
        m_ui->lblLots->setText(QStringLiteral("Разход без изписване от склада."));
        return;
    }
    grid->setRowCount(static_cast<int>(lots.value().size()));
    double quantity = 0;
    Money total;
    int r = 0;
    for (const IssueLotRow &lot : lots.value()) {
        const QStringList cells = {lot.receiptDate.isValid() ? formatDate(lot.receiptDate) : QString(),
                                   (lot.docVid + QLatin1Char(' ') + lot.docNom).trimmed(), quantityText(lot.kol),
                                   formatAmount(lot.edin), formatAmount(lot.suma)};
        for (int c = 0; c < cells.size(); ++c) {
            auto *item = new QTableWidgetItem(cells.at(c));
            if (c >= 2)
                item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            grid->setItem(r, c, item);
        }
        quantity += lot.kol;
        total += lot.suma;
        ++r;
    }
    // The lots are priced in the currency of the issue's day.
    m_ui->lblLots->setText(QStringLiteral("От %1 доставки: %2 за %3")
                               .arg(lots.value().size())
                               .arg(quantityText(quantity),
                                    amountText(total, m_books.currencyOn(dateOfValue(row->values.value(QStringLiteral("Data")))))));
}

// While an issue is entered: what the name holds and the price to type, the latest receipt's.
void Sklad::showStockOf(const QString &name)
{
    m_ui->lblStock->clear();
    if (name.trimmed().isEmpty() || isRepair(name))
        return;
    const auto stock = m_store.onHand(name);
    if (!stock)
        return;
    if (!stock.value()) {
        m_ui->lblStock->setText(QStringLiteral("Няма наличност от този артикул."));
        return;
    }
    m_ui->lblStock->setText(QStringLiteral("Наличност: %1, цена на последната доставка: %2")
                                .arg(quantityText(quantityValue(stock.value()->broi)),
                                     amountText(stock.value()->edin, m_books.priceCurrency())));
}

void Sklad::learn(const RecordRow &row)
{
    addSorted(m_ui->Combo1, row.values.value(QStringLiteral("DocVid")).toString());
    addSorted(m_ui->Combo2, row.values.value(QStringLiteral("Name")).toString());
}

// Enter goes on to the next box like Tab; on the price it saves.
bool Sklad::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress && m_form->state() != RecordForm::State::Browsing) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && key->modifiers() == Qt::NoModifier) {
            if (watched == m_ui->txtFields_5) {
                m_form->update();
            } else {
                focusNextPrevChild(true);
                // The next box may be locked (a repair's quantity): pass over it.
                if (QApplication::focusWidget() == m_ui->txtFields_4 && m_ui->txtFields_4->isReadOnly())
                    focusNextPrevChild(true);
            }
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

}
