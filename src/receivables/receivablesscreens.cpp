#include "receivables/receivablesscreens.h"

#include "core/dates.h"
#include "core/formats.h"
#include "core/version.h"
#include "forms/commandday.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "reports/reportpreview.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace zarek::receivables {

namespace {

const QString amountFormat = QStringLiteral("###0.00");

QVariant amountValue(Money amount)
{
    return amount == Money() ? QVariant() : QVariant(amount.toDouble());
}

QString periodText(const QDate &from, const QDate &to)
{
    return QStringLiteral("от %1 до %2").arg(formatDate(from), formatDate(to));
}

}

ResultGridConfig ReceivablesScreen::config(const QDate &on)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("Vzemania");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Вземания");
    config.text1 = QStringLiteral("Вземания към ") + formatDate(on);
    config.columns = {{QStringLiteral("Klient"), QStringLiteral("Клиент"), 3600, {}}};
    for (int bucket = 0; bucket < ageBucketCount; ++bucket)
        config.columns.append({QStringLiteral("B%1").arg(bucket), ageBucketName(bucket), bucket == 0 ? 2000 : 1500,
                               amountFormat, Qt::AlignRight});
    config.columns.append({QStringLiteral("Kredit"), QStringLiteral("Надплатено"), 1400, amountFormat, Qt::AlignRight});
    config.columns.append({QStringLiteral("Obshto"), QStringLiteral("Общо"), 1500, amountFormat, Qt::AlignRight});
    config.legend = {{QStringLiteral("Label2"), QStringLiteral("Enter")},
                     {QStringLiteral("Label3"), QStringLiteral("- извлечение по сметка на клиента")}};
    config.emptyMessage = QStringLiteral("Няма неплатени документи към тази дата.");
    config.printable = false;
    config.rowColors = [](const RowSet &rows, int row) {
        if (rows.value(row, QStringLiteral("Klient")).toString() == QStringLiteral("Общо"))
            return std::pair{QColor(0xE8, 0xE8, 0xE8), QColor(0, 0, 0)};
        if (rows.value(row, QStringLiteral("Prosrocheno")).toBool())
            return std::pair{QColor(0xFF, 0xC8, 0xC8), QColor(0x90, 0x00, 0x00)};
        return std::pair{QColor(0xFF, 0xFF, 0xFF), QColor(0, 0, 0)};
    };
    return config;
}

ReceivablesScreen::ReceivablesScreen(QSqlDatabase db, const QDate &on, QWidget *parent)
    : ResultGridScreen(config(on), parent), m_db(std::move(db))
{
    setProperty("helpTopic", 381);
    resize(1080, 520);
    QPushButton *date = addButton(QStringLiteral("cmdData"), QStringLiteral("Към &дата..."));
    connect(date, &QPushButton::clicked, this, [this] {
        bool ok = false;
        const QString text = QInputDialog::getText(this, QStringLiteral("Вземания"), QStringLiteral("Към дата:"),
                                                   QLineEdit::Normal, formatDate(m_on), &ok);
        if (!ok)
            return;
        if (const auto day = parseDate(text, books().today))
            setDate(*day);
        else
            MessageService::instance().inform(UserMessage::twoLines(QStringLiteral("Вземания"), QStringLiteral("Невалидна дата!"),
                                                                    QStringLiteral("Въведете дата като 31.03.2026.")));
    });
    connect(grid(), &QTableView::doubleClicked, this, [this] { openCurrent(); });
    setDate(on);
}

void ReceivablesScreen::setDate(const QDate &on)
{
    m_on = on;
    Checked<Receivables> receivables = Receivables();
    {
        WaitCursor wait;
        receivables = receivablesOn(m_db, on, books());
    }
    if (!receivables) {
        MessageService::instance().inform(receivables.message());
        return;
    }
    RowSet rows({QStringLiteral("Klient"), QStringLiteral("B0"), QStringLiteral("B1"), QStringLiteral("B2"),
                 QStringLiteral("B3"), QStringLiteral("B4"), QStringLiteral("Kredit"), QStringLiteral("Obshto"),
                 QStringLiteral("Prosrocheno")});
    auto append = [&rows](const ClientReceivable &row) {
        rows.appendRow({row.client, amountValue(row.buckets[0]), amountValue(row.buckets[1]), amountValue(row.buckets[2]),
                        amountValue(row.buckets[3]), amountValue(row.buckets[4]), amountValue(row.credit),
                        row.total.toDouble(), row.overdue() > Money()});
    };
    for (const ClientReceivable &row : receivables.value().clients)
        append(row);
    if (!receivables.value().clients.isEmpty())
        append(receivables.value().totals);
    setText1(QStringLiteral("Вземания към %1 в %2: общо %3, от тях просрочени %4")
                 .arg(formatDate(on), amountUnit(receivables.value().currency),
                      amountText(receivables.value().totals.total, receivables.value().currency),
                      amountText(receivables.value().totals.overdue(), receivables.value().currency)));
    setAmountNote(receivables.value().converted ? conversionNote(books().changeover, receivables.value().currency)
                                                : QString());
    setRows(rows);
}

bool ReceivablesScreen::onKey(QKeyEvent *key)
{
    if (key->key() != Qt::Key_Return && key->key() != Qt::Key_Enter)
        return false;
    openCurrent();
    return true;
}

void ReceivablesScreen::openCurrent()
{
    const int row = currentRow();
    if (row < 0 || row >= model()->rows().rowCount())
        return;
    const QString client = model()->rows().value(row, QStringLiteral("Klient")).toString();
    if (client == QStringLiteral("Общо"))
        return;
    emit accountRequested(client, QDate(m_on.year(), 1, 1), m_on);
}

ResultGridConfig ClientAccountScreen::config()
{
    ResultGridConfig config;
    config.formName = QStringLiteral("Izvlechenie");
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Извлечение по сметка");
    config.columns = {
        {QStringLiteral("Data"), QStringLiteral("Дата"), 1300, {}},
        {QStringLiteral("Dokument"), QStringLiteral("Документ"), 2400, {}},
        {QStringLiteral("Nomer"), QStringLiteral("Номер / основание"), 2000, {}},
        {QStringLiteral("Padej"), QStringLiteral("Падеж"), 1300, {}},
        {QStringLiteral("Dalg"), QStringLiteral("Дълг"), 1700, QString(), Qt::AlignRight},
        {QStringLiteral("Plateno"), QStringLiteral("Платено"), 1700, QString(), Qt::AlignRight},
        {QStringLiteral("Saldo"), QStringLiteral("Салдо"), 1600, QString(), Qt::AlignRight},
    };
    config.emptyMessage = QStringLiteral("Няма документи и плащания на клиента за периода.");
    return config;
}

ClientAccountScreen::ClientAccountScreen(QSqlDatabase db, FirmProfile firm, const QString &client, const QDate &from,
                                         const QDate &to, QWidget *parent)
    : ResultGridScreen(config(), parent), m_db(std::move(db)), m_firm(std::move(firm))
{
    setProperty("helpTopic", 382);
    resize(1000, 560);
    Checked<ClientAccount> account = ClientAccount();
    {
        WaitCursor wait;
        account = clientAccount(m_db, client, from, to, books());
    }
    if (!account) {
        MessageService::instance().inform(account.message());
        return;
    }
    m_account = account.value();
    const Currency currency = m_account.currency;
    RowSet rows({QStringLiteral("Data"), QStringLiteral("Dokument"), QStringLiteral("Nomer"), QStringLiteral("Padej"),
                 QStringLiteral("Dalg"), QStringLiteral("Plateno"), QStringLiteral("Saldo")});
    rows.appendRow({from, QStringLiteral("Начално салдо"), QVariant(), QVariant(), QVariant(), QVariant(),
                    amountText(m_account.opening, currency)});
    for (const AccountLine &line : m_account.lines)
        rows.appendRow({line.date, entryKindName(line.kind), line.number, line.due.isValid() ? QVariant(line.due) : QVariant(),
                        line.debit > Money() ? amountText(line.debit, line.currency) : QString(),
                        line.credit > Money() ? amountText(line.credit, line.currency) : QString(),
                        amountText(line.balance, currency)});
    rows.appendRow({to, QStringLiteral("Крайно салдо"), QVariant(), QVariant(), QVariant(), QVariant(),
                    amountText(m_account.closing, currency)});
    setText1(QStringLiteral("%1, %2: начално салдо %3, крайно салдо %4")
                 .arg(m_account.client, periodText(from, to), amountText(m_account.opening, currency),
                      amountText(m_account.closing, currency)));
    setAmountNote(m_account.converted ? conversionNote(books().changeover, currency) : QString());
    setRows(rows);
}

void ClientAccountScreen::onPrint()
{
    showReport(clientAccountReport(m_account, m_firm), this);
}

Checked<Report> clientAccountReport(const ClientAccount &account, const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptIzvlechenie"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setSuggestedFileName(QStringLiteral("Извлечение ") + account.client + QLatin1Char(' ') + formatDate(account.to));
    RowSet rows({QStringLiteral("Data"), QStringLiteral("Dokument"), QStringLiteral("Nomer"), QStringLiteral("Padej"),
                 QStringLiteral("Dalg"), QStringLiteral("Plateno"), QStringLiteral("Saldo")});
    for (const AccountLine &line : account.lines)
        rows.appendRow({line.date, entryKindName(line.kind), line.number, line.due.isValid() ? QVariant(line.due) : QVariant(),
                        line.debit > Money() ? amountText(line.debit, line.currency) : QString(),
                        line.credit > Money() ? amountText(line.credit, line.currency) : QString(),
                        amountText(line.balance, account.currency)});
    report.setDataSource(rows);
    report.setFirm(firm);
    report.setValue(QStringLiteral("client"), account.client);
    report.setValue(QStringLiteral("period"), periodText(account.from, account.to));
    report.setValue(QStringLiteral("opening"), amountText(account.opening, account.currency));
    report.setValue(QStringLiteral("closing"), amountText(account.closing, account.currency));
    report.setValue(QStringLiteral("note"), account.converted ? conversionNote(commandDay().changeover, account.currency)
                                                              : QString());
    return report;
}

bool askAccountConditions(QSqlDatabase db, const QDate &today, QWidget *parent, QString &client, QDate &from, QDate &to)
{
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("IzvlechenieUslovia"));
    dialog.setWindowTitle(QStringLiteral("Извлечение по сметка"));
    auto *layout = new QFormLayout(&dialog);
    auto *clients = new QComboBox(&dialog);
    clients->setObjectName(QStringLiteral("cboKlient"));
    clients->setEditable(true);
    if (auto names = clientNames(db))
        clients->addItems(names.value());
    auto *fromBox = new QLineEdit(formatDate(QDate(today.year(), 1, 1)), &dialog);
    fromBox->setObjectName(QStringLiteral("txtOt"));
    auto *toBox = new QLineEdit(formatDate(today), &dialog);
    toBox->setObjectName(QStringLiteral("txtDo"));
    layout->addRow(QStringLiteral("Клиент:"), clients);
    layout->addRow(QStringLiteral("От дата:"), fromBox);
    layout->addRow(QStringLiteral("До дата:"), toBox);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
    layout->addRow(buttons);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    while (dialog.exec() == QDialog::Accepted) {
        const auto start = parseDate(fromBox->text(), today);
        const auto end = parseDate(toBox->text(), today);
        if (clients->currentText().trimmed().isEmpty() || !start || !end || *start > *end) {
            MessageService::instance().inform(UserMessage::twoLines(QStringLiteral("Извлечение по сметка"),
                                                                    QStringLiteral("Невалиден клиент или период!"),
                                                                    QStringLiteral("Изберете клиента и въведете датите.")));
            continue;
        }
        client = clients->currentText().trimmed();
        from = *start;
        to = *end;
        return true;
    }
    return false;
}

}
