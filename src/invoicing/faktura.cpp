#include "faktura.h"

#include "core/docnumber.h"
#include "data/changeoverstore.h"
#include "core/version.h"
#include "core/valueformat.h"
#include "forms/messageservice.h"
#include "forms/waitcursor.h"
#include "invoicing/diafakt.h"
#include "invoicing/invoicenumber.h"
#include "invoicing/invoicestatement.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"

#include <QHash>
#include <QInputDialog>
#include <QLineEdit>
#include <algorithm>
#include <QPushButton>

namespace zarek {

using namespace invoicing;  // the invoice statement

namespace {

// The "a" of "зa" on this line is a Latin letter, as on the firm's screens for years.
QString coursesFor(const QString &klient)
{
    return QStringLiteral("Курсове з") + QLatin1Char('a') + QLatin1Char(' ') + klient;
}

QString invoiceCoursesText(const QString &number)
{
    return QStringLiteral("Курсове във фактурира № ") + number;
}

FakturaSelection selectionOf(FakturaMode mode, const SearchConditions &c)
{
    return {mode, c.SeekKlient, c.period, c.SeekKola, c.SeekMarsh, c.SeekTovar, c.SeekNomFakt};
}

}

ResultGridConfig Faktura::config(FakturaMode mode, const SearchConditions &c)
{
    ResultGridConfig config;
    config.formName = QStringLiteral("Faktura");
    const QString subject = mode == FakturaMode::FaktNew ? QStringLiteral("Курсове за ") + c.SeekKlient
                                                         : invoiceCoursesText(c.SeekNomFakt);
    config.caption = QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - ") + subject;
    config.text1 = mode == FakturaMode::FaktNew ? coursesFor(c.SeekKlient) + QStringLiteral(" от ")
                                                      + formatDate(c.period.from) + QStringLiteral(" до ")
                                                      + formatDate(c.period.to)
                                                : invoiceCoursesText(c.SeekNomFakt);
    config.columns = {
        {QStringLiteral("Data"), QStringLiteral("Дата"), 1200, {}, Qt::AlignLeft},
        {QStringLiteral("Marsh"), QStringLiteral("Маршрут"), 2600, {}, Qt::AlignLeft},
        {QStringLiteral("Tovar"), QStringLiteral("Товар"), 2050, {}, Qt::AlignLeft},
        {QStringLiteral("kola"), QStringLiteral("Кола"), 1200, {}, Qt::AlignHCenter},
        {QStringLiteral("KM"), QStringLiteral("Км"), 750, QStringLiteral("###0"), Qt::AlignRight},
        {QStringLiteral("Ton"), QStringLiteral("Тонаж"), 900, QStringLiteral("###0.000"), Qt::AlignRight},
        {QStringLiteral("Tarifa"), QStringLiteral("Тар."), 750, QStringLiteral("###0.000#####"), Qt::AlignRight},
        {QStringLiteral("bruto"), QStringLiteral("Сума"), 900, QStringLiteral("###0.00"), Qt::AlignRight, false, false,
         false, false, true},
        {QStringLiteral("Fakt"), QStringLiteral("Факт."), 650, {}, Qt::AlignHCenter, true, false, true},
        {QStringLiteral("NomFakt"), {}, 0, {}, Qt::AlignLeft, false, true},
    };
    config.flagField = QStringLiteral("Fakt");
    config.amountField = QStringLiteral("bruto");
    config.dateField = QStringLiteral("Data");
    config.sumCaption = QStringLiteral("Сума за плащане:");
    config.legend = {{QStringLiteral("Label7"), QStringLiteral("Space")},
                     {QStringLiteral("Label8"), QStringLiteral("- Маркира плащане")}};
    config.emptyMessage = mode == FakturaMode::FaktNew ? QStringLiteral("Няма курсове за фактуриране!")
                                                       : QStringLiteral("В избраната фактура няма курсове!");
    return config;
}

QString Faktura::panelText(FakturaMode mode, const SearchConditions &conditions)
{
    return mode == FakturaMode::FaktNew ? QStringLiteral("Курсове за фактуриране...")
                                        : invoiceCoursesText(conditions.SeekNomFakt);
}

Faktura::Faktura(FakturaMode mode, const SearchConditions &conditions, QSqlDatabase db, QSqlDatabase scratch,
                 FirmProfile firm, QWidget *parent)
    : ResultGridScreen(config(mode, conditions), parent), m_mode(mode), m_conditions(conditions),
      m_selection(selectionOf(mode, conditions)), m_db(std::move(db)), m_scratch(std::move(scratch)),
      m_firm(std::move(firm)), m_number(mode == FakturaMode::EditFakt ? conditions.SeekNomFakt : noDocumentNumber())
{
    m_fakt = addButton(QStringLiteral("cmdFakt"), QStringLiteral("Фактура №"));
    connect(m_fakt, &QPushButton::clicked, this, &Faktura::chooseNumber);
    showStatement = [this](const Report &report) {
        ReportPreview preview(layoutReport(report), this);
        preview.exec();
    };
    if (m_mode == FakturaMode::FaktNew)
        printButton()->setEnabled(false);  // until the invoice has its number
    else
        m_fakt->setEnabled(false);  // an issued invoice keeps its number
    if (m_mode == FakturaMode::EditFakt) {
        // An issued invoice keeps the currency it was issued in, corrected on whatever day.
        const Checked<bool> euro = isEuroInvoice(m_db, m_number);
        if (!euro) {
            MessageService::instance().inform(euro.message());
            return;
        }
        m_invoiceCurrency = euro.value() ? Currency::Euro : Currency::Leva;
        const Checked<qint64> taxInvoice = TaxInvoiceStore(m_db).invoiceId(m_number);
        if (!taxInvoice) {
            MessageService::instance().inform(taxInvoice.message());
            return;
        }
        m_taxInvoiceId = taxInvoice.value();
        if (m_taxInvoiceId > 0) {
            const Checked<TaxDocument> issued = loadTaxDocument(m_db, m_taxInvoiceId);
            if (issued)
                m_invoiceCurrency = issued.value().currency;
        }
    }
    askReason = [this]() -> std::optional<QString> {
        bool ok = false;
        const QString reason = QInputDialog::getText(
            this, QStringLiteral("Кредитно известие"),
            QStringLiteral("Курсовете, махнати от фактура №%1, се кредитират с кредитно известие.\n"
                           "Основание (причина):").arg(m_number),
            QLineEdit::Normal, QStringLiteral("Отказ от услуга"), &ok);
        if (!ok || reason.trimmed().isEmpty())
            return std::nullopt;
        return reason.trimmed();
    };

    Checked<RowSet> rows = [&] {
        WaitCursor wait;
        return InvoiceStore(m_db).courses(m_selection);
    }();
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return;
    }
    setRows(rows.value());
    if (m_mode == FakturaMode::EditFakt)
        setRunningTotal(marksTotal(), false);  // every course comes in marked; shown from the first Space on
}

// An issued invoice keeps the currency it was issued in; a new one is issued today, in today's
// currency (or in euro when any course is).
Currency Faktura::totalsCurrencyOf(bool anyEuro) const
{
    if (m_invoiceCurrency)
        return *m_invoiceCurrency;
    return zarek::totalsCurrency(anyEuro, books().currencyOn(clock().date()));  // issued today, in today's currency
}

Money Faktura::marksTotal() const
{
    return statementMoney(statementLines(model()->rows(), {books().changeover, clock().date()}), std::nullopt, totalsCurrency()).sum;
}

QString Faktura::text1() const
{
    QString text = ResultGridScreen::config().text1;
    if (m_mode == FakturaMode::FaktNew && m_chosen)
        text += QStringLiteral(" за фактура №") + m_number;
    return text;
}

void Faktura::chooseNumber()
{
    DiaFakt dialog(m_db, this);
    dialog.exec();
    // Cancelling keeps a number chosen earlier: a printed invoice never loses its number.
    if (!dialog.FaktChosen())
        return;
    if (dialog.NomFakt() != m_number)
        m_statement.clear();  // a statement printed under another number makes no invoice of this one
    m_number = dialog.NomFakt();
    m_choices = dialog.choices();
    m_chosen = true;
    printButton()->setEnabled(true);
    setText1(text1());
}

void Faktura::print()
{
    m_printed = true;
    const QList<StatementLine> lines = statementLines(model()->rows(), {books().changeover, clock().date()});
    if (lines.isEmpty()) {
        m_statement.clear();
        MessageService::instance().inform(
            UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма курсове за фактуриране!")});
        return;
    }
    StatementMoney money = m_mode == FakturaMode::EditFakt
                               ? statementMoney(lines, std::nullopt, m_invoiceCurrency)
                               : statementMoney(lines, books().currencyOn(clock().date()));
    money.changeover = books().changeover;
    Checked<Report> report = [&]() -> Checked<Report> {
        WaitCursor wait;
        if (const auto refusal = fillTempPlaten(m_scratch, lines, money.mixed))
            return *refusal;
        return ReportFaktura({m_mode, m_conditions.SeekKlient, m_conditions.period, m_number}, money, m_scratch,
                             m_firm);
    }();
    if (!report) {
        MessageService::instance().inform(report.message());
        return;
    }
    m_statement = markedCourses();
    m_printedCurrency = money.currency;
    if (showStatement)
        showStatement(report.value());
}

QList<qint64> Faktura::markedCourses() const
{
    const RowSet &rows = model()->rows();
    const int id = rows.column(QStringLiteral("id"));
    QList<qint64> ids;
    for (int row = 0; row < rows.rowCount(); ++row) {
        if (model()->isMarked(row))
            ids.append(rows.value(row, id).toLongLong());
    }
    return ids;
}

bool Faktura::settle()
{
    const RowSet &rows = model()->rows();
    const int id = rows.column(QStringLiteral("id"));
    const int version = rows.column(QStringLiteral("row_version"));
    QList<HeldCourse> held;
    held.reserve(rows.rowCount());
    for (int row = 0; row < rows.rowCount(); ++row)
        held.append({rows.value(row, id).toLongLong(), rows.value(row, version).toLongLong(), model()->isMarked(row)});
    const Checked<QList<CourseWrite>> writes =
        closingWrites({m_mode, changed(), m_printed, m_number, m_statement}, held);
    if (!writes) {
        MessageService::instance().inform(writes.message());
        return false;
    }
    if (writes.value().isEmpty())
        return true;
    bool numbering = false;
    for (const CourseWrite &write : writes.value())
        numbering = numbering || write.fakt;
    if (m_mode == FakturaMode::FaktNew && !m_statement.isEmpty()) {
        QList<qint64> marked = markedCourses();
        QList<qint64> printed = m_statement;
        std::sort(marked.begin(), marked.end());
        std::sort(printed.begin(), printed.end());
        // The invoice is what its client was handed: marks changed since are asked about first.
        if (marked != printed
            && !MessageService::instance().askYesNo(UserMessage::twoLines(
                QStringLiteral("ВНИМАНИЕ!"),
                QStringLiteral("Маркировката е променена след печата на справката за фактура №%1!").arg(m_number),
                QStringLiteral("Фактурират се само маркираните курсове от справката. Да затворя ли екрана? "
                               "(\"Не\": отпечатайте справката отново)"),
                UserMessage::Icon::Question)))
            return false;
    }
    InvoiceRecord invoice;
    if (m_mode == FakturaMode::EditFakt) {
        invoice = InvoiceRecord::correct(m_number);
        QSet<qint64> takenOff;
        for (const CourseWrite &write : writes.value()) {
            if (!write.fakt)
                takenOff.insert(write.id);
        }
        if (m_taxInvoiceId > 0 && !takenOff.isEmpty()) {
            // An issued tax invoice stays as it is: what is taken off it is credited.
            const std::optional<QString> reason = askReason ? askReason() : std::nullopt;
            if (!reason)
                return false;
            invoice.taxInvoiceId = m_taxInvoiceId;
            invoice.takenOff = invoiceCourses(takenOff, m_invoiceCurrency.value_or(Currency::Leva));
            invoice.reason = *reason;
            invoice.noteDate = clock().date();
        }
    } else if (numbering) {
        // The invoice's currency is that of the statement its courses stand on.
        invoice = InvoiceRecord::issue(m_number, m_conditions.SeekKlient, m_printedCurrency == Currency::Euro);
        bool refused = false;
        invoice.taxInvoice = taxInvoiceOf(writes.value(), refused);
        if (refused)
            return false;
    }

    SettleOutcome outcome = [&] {
        WaitCursor wait;
        return InvoiceStore(m_db).settle(writes.value(), clock(), invoice);
    }();
    switch (outcome.kind) {
    case SettleOutcome::Kind::Written:
        m_issuedDocument = outcome.documentId;
        return true;
    case SettleOutcome::Kind::Refused:
        MessageService::instance().inform(
            outcome.message.value_or(UserMessage{QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Нищо не е записано.")}));
        return false;
    case SettleOutcome::Kind::Conflict: {
        QHash<qint64, int> rowOf;
        for (int row = 0; row < rows.rowCount(); ++row)
            rowOf.insert(rows.value(row, id).toLongLong(), row);
        QList<ChangedCourse> changedCourses;
        for (const qint64 changedId : outcome.changed) {
            const int row = rowOf.value(changedId, -1);
            if (row >= 0)
                changedCourses.append({dateOfValue(rows.value(row, QStringLiteral("Data"))),
                                       rows.value(row, QStringLiteral("Marsh")).toString(),
                                       rows.value(row, QStringLiteral("Klient")).toString()});
        }
        // What was printed no longer matches what can be written: it is printed again.
        const bool printAgain = m_mode == FakturaMode::FaktNew && m_printed;
        m_printed = false;
        m_statement.clear();
        MessageService::instance().inform(changedCoursesMessage(changedCourses, printAgain));
        readAgain();
        return false;
    }
    case SettleOutcome::Kind::NumberTaken:
        // Another workstation issued the number meanwhile: nothing is written, the marks stay,
        // and the invoice gets another number and is printed again.
        m_printed = false;
        m_statement.clear();
        m_chosen = false;
        m_number = noDocumentNumber();
        printButton()->setEnabled(false);
        setText1(text1());
        MessageService::instance().inform(invoiceNumberUsedMessage());
        return false;
    case SettleOutcome::Kind::Failed:
        break;
    }
    if (invoice.kind == InvoiceRecord::Kind::Issue) {
        // A printed invoice is never left unrecorded by a question answered in haste.
        UserMessage failure = outcome.message.value_or(UserMessage{QStringLiteral("ГРЕШКА при запис!"), QString()});
        failure.text += QStringLiteral("\nНищо не е записано. Опитайте да затворите отново; за да се откажете от "
                                       "фактурата, махнете маркировката.");
        MessageService::instance().inform(failure);
        return false;
    }
    UserMessage question = outcome.message.value_or(UserMessage{QStringLiteral("ГРЕШКА при запис!"), QString()});
    question.text += QStringLiteral("\nНищо не е записано. Да затворя ли екрана без запис?");
    question.icon = UserMessage::Icon::Question;
    return MessageService::instance().askYesNo(question);
}

QList<InvoiceCourse> Faktura::invoiceCourses(const QSet<qint64> &ids, Currency currency) const
{
    const RowSet &rows = model()->rows();
    const int id = rows.column(QStringLiteral("id"));
    QList<InvoiceCourse> courses;
    for (int row = 0; row < rows.rowCount(); ++row) {
        const qint64 courseId = rows.value(row, id).toLongLong();
        if (!ids.contains(courseId))
            continue;
        InvoiceCourse course;
        course.id = courseId;
        course.date = dateOfValue(rows.value(row, QStringLiteral("Data")));
        course.marsh = rows.value(row, QStringLiteral("Marsh")).toString().trimmed();
        course.tovar = rows.value(row, QStringLiteral("Tovar")).toString().trimmed();
        course.kola = rows.value(row, QStringLiteral("kola")).toString().trimmed();
        course.km = rows.value(row, QStringLiteral("KM")).toDouble();
        course.ton = rows.value(row, QStringLiteral("Ton")).toDouble();
        course.tarifa = rows.value(row, QStringLiteral("Tarifa")).toDouble();
        // Each course converted on its own, as the statement adds them up.
        course.amount = convertAmount(Money::fromAmount(rows.value(row, QStringLiteral("bruto")).toDouble()),
                                      books().currencyOn(course.date), currency);
        courses.append(course);
    }
    return courses;
}

std::optional<TaxDocument> Faktura::taxInvoiceOf(const QList<CourseWrite> &writes, bool &refused)
{
    refused = false;
    QSet<qint64> numbered;
    for (const CourseWrite &write : writes) {
        if (write.fakt)
            numbered.insert(write.id);
    }
    InvoiceDraftInput input;
    input.issued = clock().date();
    input.currency = m_printedCurrency;
    input.courses = invoiceCourses(numbered, m_printedCurrency);
    input.choices = m_choices;
    input.firm = m_firm;
    input.recipient.name = m_conditions.SeekKlient.trimmed();
    // The client as the register has it that day; a client not in it gets its name only.
    const Checked<std::optional<RegisterClient>> client = TaxInvoiceStore(m_db).client(m_conditions.SeekKlient);
    if (!client) {
        MessageService::instance().inform(client.message());
        refused = true;
        return std::nullopt;
    }
    if (client.value()) {
        input.clientId = client.value()->id;
        input.recipient = client.value()->party;
        input.termDays = client.value()->termDays;
    }
    const Checked<TaxDocument> draft = draftInvoice(input);
    if (!draft) {
        MessageService::instance().inform(draft.message());
        refused = true;
        return std::nullopt;
    }
    return draft.value();
}

void Faktura::readAgain()
{
    Checked<RowSet> rows = [&] {
        WaitCursor wait;
        return InvoiceStore(m_db).courses(m_selection);
    }();
    if (!rows) {
        MessageService::instance().inform(rows.message());
        return;
    }
    reloadRows(rows.value(), QStringLiteral("id"), QStringLiteral("row_version"));
}

}
