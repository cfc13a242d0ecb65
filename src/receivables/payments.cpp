#include "receivables/payments.h"
#include "ui_payments.h"

#include "core/dates.h"
#include "core/formats.h"
#include "forms/messageservice.h"
#include "receivables/receivablesstore.h"

#include <QHeaderView>
#include <QTableWidgetItem>

namespace zarek::receivables {

namespace {

const QString title = QStringLiteral("Плащания от клиенти");

QTableWidgetItem *cell(const QString &text, Qt::Alignment alignment = Qt::AlignLeft)
{
    auto *item = new QTableWidgetItem(text);
    item->setTextAlignment(alignment | Qt::AlignVCenter);
    item->setFlags(item->flags() & ~Qt::ItemIsEditable);
    return item;
}

}

Payments::Payments(QSqlDatabase db, const BooksDay &books, QWidget *parent)
    : QDialog(parent), m_ui(std::make_unique<Ui::Payments>()), m_db(std::move(db)), m_books(books)
{
    m_ui->setupUi(this);
    setProperty("helpTopic", 380);
    ui()->cboNachin->addItem(QStringLiteral("Банка"), QStringLiteral("B"));
    ui()->cboNachin->addItem(QStringLiteral("В брой"), QStringLiteral("C"));
    ui()->cboValuta->addItem(amountUnit(Currency::Leva), int(Currency::Leva));
    ui()->cboValuta->addItem(amountUnit(Currency::Euro), int(Currency::Euro));
    ui()->cboValuta->setCurrentIndex(m_books.currencyOn(m_books.today) == Currency::Euro ? 1 : 0);
    ui()->txtData->setText(formatDate(m_books.today));
    ui()->grdPlashtania->setColumnCount(6);
    ui()->grdPlashtania->setHorizontalHeaderLabels({QStringLiteral("Дата"), QStringLiteral("Клиент"), QStringLiteral("Сума"),
                                                    QStringLiteral("Начин"), QStringLiteral("Основание"), QString()});
    ui()->grdPlashtania->setColumnHidden(5, true);
    ui()->grdPlashtania->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    ui()->grdDok->setColumnCount(6);
    ui()->grdDok->setHorizontalHeaderLabels({QStringLiteral("Номер"), QStringLiteral("Вид"), QStringLiteral("Дата"),
                                             QStringLiteral("Падеж"), QStringLiteral("Неплатено"), QStringLiteral("Погасява")});
    ui()->grdDok->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);
    if (auto names = clientNames(m_db))
        ui()->cboKlient->addItems(names.value());
    ui()->cboKlient->setCurrentIndex(-1);
    connect(ui()->cboKlient, &QComboBox::currentTextChanged, this, &Payments::setClient);
    connect(ui()->cmdSave, &QPushButton::clicked, this, &Payments::save);
    connect(ui()->cmdDelete, &QPushButton::clicked, this, &Payments::removeCurrent);
    connect(ui()->cmdCredit, &QPushButton::clicked, this, &Payments::spreadClientCredit);
    connect(ui()->cmdClose, &QPushButton::clicked, this, &QDialog::close);
    loadPayments();
    loadDocuments();
}

Payments::~Payments() = default;

void Payments::setClient(const QString &client)
{
    if (ui()->cboKlient->currentText() != client)
        ui()->cboKlient->setCurrentText(client);
    loadDocuments();
}

void Payments::loadPayments()
{
    auto payments = latestPayments(m_db, 500);
    if (!payments) {
        MessageService::instance().inform(payments.message());
        return;
    }
    QTableWidget *grid = ui()->grdPlashtania;
    grid->setRowCount(0);
    grid->setRowCount(int(payments.value().size()));
    int row = 0;
    for (const PaymentRow &payment : payments.value()) {
        grid->setItem(row, 0, cell(formatDate(payment.date)));
        grid->setItem(row, 1, cell(payment.client));
        grid->setItem(row, 2, cell(amountText(payment.amount, payment.currency), Qt::AlignRight));
        grid->setItem(row, 3, cell(payment.way == QLatin1Char('C') ? QStringLiteral("В брой") : QStringLiteral("Банка")));
        grid->setItem(row, 4, cell(payment.reference));
        auto *key = cell(QString::number(payment.id));
        key->setData(Qt::UserRole, payment.version);
        grid->setItem(row, 5, key);
        ++row;
    }
    grid->resizeColumnsToContents();
    ui()->cmdDelete->setEnabled(row > 0);
}

void Payments::loadDocuments()
{
    const QString client = ui()->cboKlient->currentText().trimmed();
    QTableWidget *grid = ui()->grdDok;
    grid->setRowCount(0);
    m_documents.clear();
    ui()->lblKredit->clear();
    ui()->cmdCredit->setEnabled(false);
    if (client.isEmpty())
        return;
    auto documents = openDocuments(m_db, client);
    if (!documents) {
        MessageService::instance().inform(documents.message());
        return;
    }
    m_documents = documents.value();
    grid->setRowCount(int(m_documents.size()));
    for (int row = 0; row < m_documents.size(); ++row) {
        const OpenDocument &document = m_documents.at(row);
        auto *number = cell(document.number);
        number->setFlags(number->flags() | Qt::ItemIsUserCheckable);
        number->setCheckState(Qt::Unchecked);
        grid->setItem(row, 0, number);
        grid->setItem(row, 1, cell(entryKindName(document.kind)));
        grid->setItem(row, 2, cell(formatDate(document.issued)));
        grid->setItem(row, 3, cell(formatDate(document.due)));
        grid->setItem(row, 4, cell(amountText(document.open(), document.currency), Qt::AlignRight));
        auto *amount = new QTableWidgetItem(formatAmount(document.open()));
        amount->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        grid->setItem(row, 5, amount);
        if (document.due < m_books.today)
            for (int column = 0; column < 5; ++column)
                grid->item(row, column)->setForeground(QColor(0xC0, 0x00, 0x00));
    }
    grid->resizeColumnsToContents();
    const Currency currency = Currency(ui()->cboValuta->currentData().toInt());
    auto credit = clientCredit(m_db, client, currency);
    if (credit && credit.value() > Money()) {
        ui()->lblKredit->setText(QStringLiteral("Надплатено от клиента: %1").arg(amountText(credit.value(), currency)));
        ui()->cmdCredit->setEnabled(!m_documents.isEmpty());
    }
}

bool Payments::save()
{
    PaymentEntry entry;
    const auto date = parseDate(ui()->txtData->text(), m_books.today);
    entry.date = date.value_or(QDate());
    entry.client = ui()->cboKlient->currentText().trimmed();
    const auto amount = parseNumber(ui()->txtSuma->text());
    entry.amount = amount ? Money::fromAmount(*amount) : Money::invalid();
    entry.currency = Currency(ui()->cboValuta->currentData().toInt());
    entry.way = ui()->cboNachin->currentData().toString().at(0);
    entry.reference = ui()->txtReferencia->text();
    for (int row = 0; row < m_documents.size(); ++row) {
        if (ui()->grdDok->item(row, 0)->checkState() != Qt::Checked)
            continue;
        const auto picked = parseNumber(ui()->grdDok->item(row, 5)->text());
        entry.picked.append({m_documents.at(row).id, m_documents.at(row).version,
                             picked ? Money::fromAmount(*picked) : Money::invalid()});
    }
    auto recorded = recordPayment(m_db, entry);
    if (!recorded) {
        MessageService::instance().inform(recorded.message());
        loadDocuments();  // another workstation's settlement shows
        return false;
    }
    if (recorded.value().unused > Money())
        MessageService::instance().inform(
            {title,
             QStringLiteral("Плащането надхвърля неплатеното с %1.\nОстава като надплатено за следващите фактури.")
                 .arg(amountText(recorded.value().unused, entry.currency)),
             UserMessage::Icon::Information});
    ui()->txtSuma->clear();
    ui()->txtReferencia->clear();
    loadPayments();
    loadDocuments();
    return true;
}

void Payments::removeCurrent()
{
    QTableWidget *grid = ui()->grdPlashtania;
    const int row = grid->currentRow();
    if (row < 0)
        return;
    const QString text = QStringLiteral("Наистина ли да изтрия плащането от %1 на %2 за %3?\n"
                                        "Погасените с него документи отново стават неплатени.")
                             .arg(grid->item(row, 0)->text(), grid->item(row, 1)->text(), grid->item(row, 2)->text());
    if (!MessageService::instance().askYesNo({title, text, UserMessage::Icon::Question}))
        return;
    if (auto message = deletePayment(m_db, grid->item(row, 5)->text().toLongLong(), grid->item(row, 5)->data(Qt::UserRole).toLongLong()))
        MessageService::instance().inform(*message);
    loadPayments();
    loadDocuments();
}

void Payments::spreadClientCredit()
{
    auto spread = spreadCredit(m_db, ui()->cboKlient->currentText(), m_books.today);
    if (!spread)
        MessageService::instance().inform(spread.message());
    loadDocuments();
}

}
