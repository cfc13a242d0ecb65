#include "taxinvoicestore.h"

#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "data/dialect.h"
#include "data/query.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QHash>
#include <QRegularExpression>
#include <QSet>
#include <QTime>
#include <QVariant>
#include <cmath>

namespace zarek {

namespace {

const QString readError = QStringLiteral("ГРЕШКА при четене!");
const QString saveError = QStringLiteral("ГРЕШКА при запис!");

constexpr qint64 highestNumber = 9'999'999'999LL;

RecordOutcome refusedWith(const UserMessage &message)
{
    RecordOutcome outcome;
    outcome.kind = RecordOutcome::Kind::Refused;
    outcome.message = message;
    return outcome;
}

RecordOutcome refused(const QString &fault, const QString &request)
{
    return refusedWith(UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), fault, request, UserMessage::Icon::Exclamation));
}

RecordOutcome failedWith(const UserMessage &message)
{
    RecordOutcome outcome;
    outcome.kind = RecordOutcome::Kind::Failed;
    outcome.message = message;
    return outcome;
}

RecordOutcome failedWith(const QSqlError &error)
{
    return failedWith(sqlErrorMessage(saveError, error));
}

bool isUniqueViolation(const QSqlError &error)
{
    const QString code = error.nativeErrorCode();
    return code == QLatin1String("23505") || code == QLatin1String("19") || code == QLatin1String("2067");
}

// A number of exactly ten digits, or -1.
qint64 numberValue(const QString &text)
{
    static const QRegularExpression tenDigits(QStringLiteral("^[0-9]{10}$"));
    const QString trimmed = text.trimmed();
    if (!tenDigits.match(trimmed).hasMatch())
        return -1;
    return trimmed.toLongLong();
}

QString padded(qint64 value)
{
    return QString::number(value).rightJustified(documentNumberLength, QLatin1Char('0'));
}

QVariant dateOrNull(const QDate &date)
{
    return date.isValid() ? QVariant(date) : QVariant(QMetaType(QMetaType::QDate));
}

QVariant idOrNull(qint64 id)
{
    return id > 0 ? QVariant(id) : QVariant(QMetaType(QMetaType::LongLong));
}

std::optional<UserMessage> checkDocument(const TaxDocument &doc)
{
    const auto refusal = [](const QString &fault, const QString &request) {
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), fault, request, UserMessage::Icon::Exclamation);
    };
    if (doc.lines.isEmpty())
        return refusal(QStringLiteral("Документът няма редове!"), QStringLiteral("Моля, маркирайте курсове и опитайте отново."));
    if (doc.recipient.name.trimmed().isEmpty())
        return refusal(QStringLiteral("Няма получател на документа!"), QStringLiteral("Моля, изберете клиент."));
    if (doc.vatPercent < 0 || doc.vatPercent > 100)
        return refusal(QStringLiteral("Ставката на ДДС трябва да е от 0 до 100 %!"), QStringLiteral("Моля, поправете я."));
    if (doc.vatPercent == 0 && doc.zeroVatGround.trimmed().isEmpty())
        return refusal(QStringLiteral("При ставка 0 % се посочва основанието за неначисляване на ДДС!"),
                       QStringLiteral("Моля, изберете или въведете основанието и опитайте отново."));
    Money sum;
    for (const TaxLine &line : doc.lines) {
        if (!line.amount.isValid() || line.amount < Money() || !std::isfinite(line.quantity)
            || !std::isfinite(line.unitPrice) || line.description.trimmed().isEmpty())
            return refusal(QStringLiteral("Ред %1 на документа е с невалидна сума!").arg(line.position),
                           QStringLiteral("Моля, проверете курсовете."));
        sum += line.amount;
    }
    if (!sum.isValid() || sum != doc.base || !doc.vat.isValid() || !doc.total.isValid() || doc.base + doc.vat != doc.total
        || doc.vat < Money())
        return refusal(QStringLiteral("Сумите на документа не се събират!"), QStringLiteral("Моля, проверете редовете."));
    if (!doc.issued.isValid() || !doc.taxEvent.isValid() || !doc.due.isValid() || doc.due < doc.issued)
        return refusal(QStringLiteral("Датите на документа не са верни!"), QStringLiteral("Моля, поправете ги."));
    if (doc.taxEvent > doc.issued)
        return refusal(QStringLiteral("Датата на данъчното събитие е след датата на издаване!"),
                       QStringLiteral("Моля, поправете я."));
    return std::nullopt;
}

}

Money vatOn(Money base, int percent)
{
    return base.share(percent, 100);
}

QString courseLineText(const InvoiceCourse &c)
{
    QStringList parts{QStringLiteral("Превоз ") + formatDate(c.date)};
    for (const QString &text : {c.marsh, c.tovar, c.kola}) {
        if (!text.trimmed().isEmpty())
            parts.append(text.trimmed());
    }
    parts.append(formatTonnes(c.ton) + QStringLiteral(" т"));
    parts.append(formatKm(c.km) + QStringLiteral(" км"));
    return parts.join(QStringLiteral(", "));
}

QString summaryLineText(const QString &number)
{
    return QStringLiteral("Транспортни услуги по справка към фактура № ") + number;
}

Checked<TaxDocument> draftInvoice(const InvoiceDraftInput &in)
{
    TaxDocument doc;
    doc.kind = TaxDocumentKind::Invoice;
    doc.issued = in.issued;
    doc.currency = in.currency;
    doc.vatPercent = in.choices.vatPercent;
    doc.zeroVatGround = in.choices.vatPercent == 0 ? in.choices.zeroVatGround.trimmed() : QString();
    QDate last;
    Money base;
    for (const InvoiceCourse &course : in.courses) {
        if (!last.isValid() || course.date > last)
            last = course.date;
        base += course.amount;
    }
    doc.taxEvent = in.choices.taxEvent.value_or(last);
    if (in.choices.lines == InvoiceLines::Summary && !in.courses.isEmpty()) {
        // The number is not known yet: the store writes it into the line as it takes it.
        doc.lines.append({1, 0, QDate(), summaryLineText(QString()), 1, QStringLiteral("бр."), base.toDouble(), base});
    } else {
        int position = 0;
        for (const InvoiceCourse &course : in.courses)
            doc.lines.append({++position, course.id, course.date, courseLineText(course), 1, QStringLiteral("курс"),
                              course.amount.toDouble(), course.amount});
    }
    doc.base = base;
    doc.vat = vatOn(base, doc.vatPercent);
    doc.total = doc.base + doc.vat;
    doc.supplier = {in.firm.UserName, in.firm.UserBULSTAT, in.firm.UserDanN, in.firm.UserAdres, in.firm.UserCity,
                    in.firm.UserCountry, in.firm.UserMOL};
    doc.supplierIban = in.firm.UserIBAN;
    doc.supplierBank = in.firm.UserBank;
    doc.supplierBic = in.firm.UserBIC;
    doc.place = in.firm.UserMiasto.isEmpty() ? in.firm.UserCity : in.firm.UserMiasto;
    doc.issuer = in.firm.UserSastavil;
    doc.clientId = in.clientId;
    doc.recipient = in.recipient;
    doc.recipient.name = doc.recipient.name.trimmed();
    doc.paymentMethod = in.firm.UserIBAN.trimmed().isEmpty() ? QStringLiteral("В брой") : QStringLiteral("Банков превод");
    doc.termDays = std::clamp(in.termDays, 0, 365);
    doc.due = in.issued.addDays(doc.termDays);
    if (auto refusal = checkDocument(doc))
        return *refusal;
    return doc;
}

Checked<TaxDocument> draftNote(TaxDocumentKind kind, const TaxDocument &invoice, const NoteTotals &already,
                               QList<TaxLine> lines, const QDate &issued, const QString &reason)
{
    TaxDocument doc = invoice;
    doc.id = 0;
    doc.number.clear();
    doc.kind = kind;
    doc.issued = issued;
    doc.taxEvent = issued;
    doc.invoiceId = invoice.id;
    doc.invoiceNumber = invoice.number;
    doc.invoiceDate = invoice.issued;
    doc.reason = reason.trimmed();
    doc.due = issued.addDays(kind == TaxDocumentKind::DebitNote ? invoice.termDays : 0);
    Money base;
    int position = 0;
    for (TaxLine &line : lines) {
        line.position = ++position;
        base += line.amount;
    }
    doc.lines = lines;
    doc.base = base;
    doc.vat = vatOn(base, doc.vatPercent);
    if (kind == TaxDocumentKind::CreditNote) {
        const Money standingBase = invoice.base + already.debitedBase - already.creditedBase;
        const Money standingVat = invoice.vat + already.debitedVat - already.creditedVat;
        if (base > standingBase)
            return UserMessage::twoLines(
                QStringLiteral("ВНИМАНИЕ!"),
                QStringLiteral("Кредитното известие е за повече от остатъка по фактура № %1!").arg(invoice.number),
                QStringLiteral("Моля, проверете курсовете."), UserMessage::Icon::Exclamation);
        // All that stands of the invoice taken off: its VAT to the cent, whatever the rounding of
        // the notes before.
        if (base == standingBase)
            doc.vat = standingVat;
    }
    doc.total = doc.base + doc.vat;
    if (doc.reason.isEmpty())
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Няма основание за известието!"),
                                     QStringLiteral("Моля, въведете причината и опитайте отново."),
                                     UserMessage::Icon::Exclamation);
    if (auto refusal = checkDocument(doc))
        return *refusal;
    if (base <= Money())
        return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Сумата на известието е нула!"),
                                     QStringLiteral("Моля, въведете сума и опитайте отново."), UserMessage::Icon::Exclamation);
    return doc;
}

TaxInvoiceStore::TaxInvoiceStore(QSqlDatabase db) : m_db(std::move(db)) {}

namespace {

// The highest ten-digit number of a column: the greatest texts first, the first that is a number.
Checked<qint64> highestUsed(QSqlDatabase db, const QString &table, const QString &column)
{
    // Through the column's index from its end: a few rows read, however many courses there are.
    Query query(db, QStringLiteral("SELECT %2 FROM %1 WHERE %2 BETWEEN ? AND ? ORDER BY %2 DESC LIMIT 200")
                        .arg(table, column));
    if (auto failure = query.run(readError, {padded(1), padded(highestNumber)}))
        return *failure;
    qint64 highest = 0;
    while (query.next()) {
        const qint64 value = numberValue(query.value(0).toString());
        if (value > 0) {
            highest = value;
            break;
        }
    }
    query.finish();
    return highest;
}

}

Checked<QString> TaxInvoiceStore::nextNumber()
{
    qint64 highest = 0;
    {
        Query counter(m_db, QStringLiteral("SELECT Posleden FROM Nomerator WHERE Ime = ?"));
        if (auto failure = counter.run(readError, {QStringLiteral("fakturi")}))
            return *failure;
        if (counter.next())
            highest = counter.value(0).toLongLong();
    }
    for (const auto &[table, column] : {std::pair{"Fakturi", "NomFakt"}, std::pair{"tabl", "NomFakt"}}) {
        const Checked<qint64> used = highestUsed(m_db, QLatin1String(table), QLatin1String(column));
        if (!used)
            return used.message();
        highest = std::max(highest, used.value());
    }
    if (highest >= highestNumber)
        return UserMessage{saveError, QStringLiteral("Номерата на фактурите са изчерпани."), UserMessage::Icon::Critical};
    return padded(highest + 1);
}

Checked<bool> TaxInvoiceStore::anyIssued()
{
    Query query(m_db, QStringLiteral("SELECT COUNT(*) FROM FaktDok"));
    if (auto failure = query.run(readError))
        return *failure;
    return query.next() && query.value(0).toLongLong() > 0;
}

Checked<std::optional<RegisterClient>> TaxInvoiceStore::client(const QString &name)
{
    Query query(m_db, QStringLiteral("SELECT id, Ime, EIK, DDSNomer, Adres, Grad, Darzhava, MOL, SrokDni FROM Klienti "
                                     "WHERE Ime = ?"));
    if (auto failure = query.run(readError, {name.trimmed()}))
        return *failure;
    if (!query.next()) {
        if (auto failure = query.readFailure(readError))
            return *failure;
        return std::optional<RegisterClient>();
    }
    RegisterClient client;
    client.id = query.value(0).toLongLong();
    const auto text = [&](int column) { return query.value(column).toString().trimmed(); };
    client.party = {text(1), text(2), text(3), text(4), text(5), text(6), text(7)};
    client.termDays = query.value(8).toInt();
    return std::optional<RegisterClient>(client);
}

Checked<qint64> TaxInvoiceStore::invoiceId(const QString &number)
{
    Query query(m_db, QStringLiteral("SELECT id FROM FaktDok WHERE Nomer = ? AND Vid = 'F'"));
    if (auto failure = query.run(readError, {number}))
        return *failure;
    return query.next() ? query.value(0).toLongLong() : qint64(0);
}

Checked<NoteTotals> TaxInvoiceStore::noteTotals(qint64 invoiceId)
{
    Query query(m_db, QStringLiteral("SELECT Vid, SUM(Osnova), SUM(DDS) FROM FaktDok WHERE KamID = ? GROUP BY Vid"));
    if (auto failure = query.run(readError, {invoiceId}))
        return *failure;
    NoteTotals totals;
    while (query.next()) {
        const Money base = Money::fromCents(query.value(1).toLongLong());
        const Money vat = Money::fromCents(query.value(2).toLongLong());
        if (query.value(0).toString() == QLatin1String("K")) {
            totals.creditedBase = base;
            totals.creditedVat = vat;
        } else if (query.value(0).toString() == QLatin1String("D")) {
            totals.debitedBase = base;
            totals.debitedVat = vat;
        }
    }
    if (auto failure = query.readFailure(readError))
        return *failure;
    return totals;
}

RecordOutcome TaxInvoiceStore::takeNumber(const QString &wanted)
{
    // The counter row is locked first: every other issuer waits here until this transaction ends,
    // and then reads what it committed. On SQLite the transaction holds the write lock already.
    const bool postgres = dialectOf(m_db) == Dialect::PostgreSQL;
    qint64 last = -1;
    {
        Query counter(m_db, QStringLiteral("SELECT Posleden FROM Nomerator WHERE Ime = ?")
                                + (postgres ? QStringLiteral(" FOR UPDATE") : QString()));
        if (auto failure = counter.run(saveError, {QStringLiteral("fakturi")}))
            return failedWith(*failure);
        if (counter.next())
            last = counter.value(0).toLongLong();
        counter.finish();
    }
    if (last < 0)
        return failedWith(UserMessage{saveError, QStringLiteral("Няма номератор на фактурите."), UserMessage::Icon::Critical});
    const Checked<QString> next = nextNumber();
    if (!next)
        return failedWith(next.message());
    QString number = next.value();
    if (!wanted.isEmpty() && wanted != number) {
        // Before the first tax document the series may start anywhere free: the firm goes on
        // with the numbers of its old invoices. After it, only the next number is given.
        const Checked<bool> issued = anyIssued();
        if (!issued)
            return failedWith(issued.message());
        if (issued.value() || numberValue(wanted) <= 0) {
            RecordOutcome outcome;
            outcome.kind = RecordOutcome::Kind::NumberTaken;
            return outcome;
        }
        number = wanted;
    }
    Query update(m_db, QStringLiteral("UPDATE Nomerator SET Posleden = ?, row_version = row_version + 1 WHERE Ime = ?"));
    if (auto failure = update.run(saveError, {std::max(last, numberValue(number)), QStringLiteral("fakturi")}))
        return failedWith(*failure);
    RecordOutcome outcome;
    outcome.number = number;
    return outcome;
}

RecordOutcome TaxInvoiceStore::record(TaxDocument &doc)
{
    if (auto refusal = checkDocument(doc))
        return refusedWith(*refusal);
    // A savepoint of the caller's transaction: a failure here takes back only what was written here.
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return failedWith(transaction.lastError());
    RecordOutcome taken = takeNumber(doc.number);
    if (!taken)
        return taken;
    doc.number = taken.number;
    if (doc.kind == TaxDocumentKind::Invoice && doc.lines.size() == 1 && doc.lines.first().courseId == 0
        && doc.lines.first().description == summaryLineText(QString()))
        doc.lines.first().description = summaryLineText(doc.number);
    RecordOutcome outcome = write(doc);
    if (!outcome)
        return outcome;
    if (!transaction.commit())
        return failedWith(transaction.lastError());
    return outcome;
}

RecordOutcome TaxInvoiceStore::write(TaxDocument &doc)
{
    const QDateTime now = QDateTime::currentDateTime();
    const QTime time(now.time().hour(), now.time().minute(), now.time().second());
    {
        // Every number issued stands in Fakturi as well: the invoicing's own check of numbers in
        // use, kept through the year close, knows the notes' numbers too.
        Query fakturi(m_db, QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient, Data) VALUES (?, ?, ?)"));
        if (fakturi.run(saveError, {doc.number, doc.recipient.name, doc.issued})) {
            if (isUniqueViolation(fakturi.lastError())) {
                RecordOutcome outcome;
                outcome.kind = RecordOutcome::Kind::NumberTaken;
                return outcome;
            }
            return failedWith(fakturi.lastError());
        }
    }
    Query insert(m_db, QStringLiteral(
        "INSERT INTO FaktDok (Nomer, Vid, Data, DataDan, KamID, KamNomer, DataKam, Prichina, DostIme, DostEIK, DostDDS, "
        "DostAdres, DostGrad, DostDarzhava, DostMOL, DostIBAN, DostBank, DostBIC, Miasto, Sastavil, KlientID, Klient, "
        "PolEIK, PolDDS, PolAdres, PolGrad, PolDarzhava, PolMOL, Valuta, DDSProcent, Osnova, DDS, Obshto, "
        "OsnovanieNula, NachinPlashtane, SrokDni, DataPadej, DateMod, TimeMod) VALUES "
        "(?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
        "?, ?) RETURNING id"));
    const QVariantList values{doc.number, QString(kindCode(doc.kind)), doc.issued, doc.taxEvent,
                             idOrNull(doc.invoiceId), doc.invoiceNumber, dateOrNull(doc.invoiceDate), doc.reason,
                             doc.supplier.name, doc.supplier.eik, doc.supplier.vatNumber, doc.supplier.address,
                             doc.supplier.town, doc.supplier.country, doc.supplier.mol, doc.supplierIban,
                             doc.supplierBank, doc.supplierBic, doc.place, doc.issuer, idOrNull(doc.clientId),
                             doc.recipient.name, doc.recipient.eik, doc.recipient.vatNumber, doc.recipient.address,
                             doc.recipient.town, doc.recipient.country, doc.recipient.mol, currencyCode(doc.currency),
                             doc.vatPercent, doc.base.cents(), doc.vat.cents(), doc.total.cents(), doc.zeroVatGround,
                             doc.paymentMethod, doc.termDays, doc.due, now.date(), time};
    if (insert.run(saveError, values)) {
        if (isUniqueViolation(insert.lastError())) {
            RecordOutcome outcome;
            outcome.kind = RecordOutcome::Kind::NumberTaken;
            return outcome;
        }
        return failedWith(insert.lastError());
    }
    if (!insert.next())
        return failedWith(insert.lastError());
    doc.id = insert.value(0).toLongLong();
    insert.finish();

    Query lines(m_db);
    for (qsizetype start = 0; start < doc.lines.size(); start += linesPerStatement) {
        const QList<TaxLine> group = doc.lines.mid(start, linesPerStatement);
        QStringList rows;
        QVariantList bound;
        for (const TaxLine &line : group) {
            rows.append(QStringLiteral("(?, ?, ?, ?, ?, ?, ?, ?, ?)"));
            bound << doc.id << line.position << idOrNull(line.courseId) << dateOrNull(line.courseDate)
                  << line.description << line.quantity << line.unit << line.unitPrice << line.amount.cents();
        }
        if (lines.exec(saveError,
                       QStringLiteral("INSERT INTO FaktRed (DokID, Red, KursID, DataKurs, Opisanie, Kol, Edinica, "
                                      "Cena, Suma) VALUES ")
                           + rows.join(QStringLiteral(", ")),
                       bound))
            return failedWith(lines.lastError());
    }
    RecordOutcome outcome;
    outcome.id = doc.id;
    outcome.number = doc.number;
    return outcome;
}

RecordOutcome TaxInvoiceStore::recordCredit(qint64 invoiceId, const QList<InvoiceCourse> &courses, const QDate &issued,
                                            const QString &reason)
{
    const Checked<TaxDocument> invoice = loadTaxDocument(m_db, invoiceId);
    if (!invoice)
        return failedWith(invoice.message());
    const Checked<NoteTotals> already = noteTotals(invoiceId);
    if (!already)
        return failedWith(already.message());
    QHash<qint64, TaxLine> onInvoice;
    for (const TaxLine &line : invoice.value().lines) {
        if (line.courseId > 0)
            onInvoice.insert(line.courseId, line);
    }
    QList<TaxLine> lines;
    for (const InvoiceCourse &course : courses) {
        // The line as the invoice printed it; a course under a summary line at its amount.
        TaxLine line = onInvoice.value(course.id);
        if (line.courseId == 0)
            line = {0, course.id, course.date, courseLineText(course), 1, QStringLiteral("курс"),
                    course.amount.toDouble(), course.amount};
        lines.append(line);
    }
    const Checked<TaxDocument> note =
        draftNote(TaxDocumentKind::CreditNote, invoice.value(), already.value(), lines, issued, reason);
    if (!note)
        return refusedWith(note.message());
    TaxDocument doc = note.value();
    return record(doc);
}

RecordOutcome TaxInvoiceStore::issueDebit(qint64 invoiceId, const QString &description, Money amount,
                                          const QDate &issued, const QString &reason)
{
    if (description.trimmed().isEmpty())
        return refused(QStringLiteral("Няма текст на реда!"), QStringLiteral("Моля, въведете го и опитайте отново."));
    if (!amount.isValid() || amount <= Money())
        return refused(QStringLiteral("Сумата трябва да е по-голяма от нула!"),
                       QStringLiteral("Моля, въведете сума и опитайте отново."));
    Transaction transaction(m_db);
    if (!transaction.isActive())
        return failedWith(transaction.lastError());
    const Checked<TaxDocument> invoice = loadTaxDocument(m_db, invoiceId);
    if (!invoice)
        return failedWith(invoice.message());
    if (invoice.value().kind != TaxDocumentKind::Invoice)
        return refused(QStringLiteral("Известие се издава само към фактура!"), QStringLiteral("Моля, изберете фактура."));
    const Checked<NoteTotals> already = noteTotals(invoiceId);
    if (!already)
        return failedWith(already.message());
    const QList<TaxLine> lines{{1, 0, QDate(), description.trimmed(), 1, QStringLiteral("бр."), amount.toDouble(), amount}};
    const Checked<TaxDocument> note =
        draftNote(TaxDocumentKind::DebitNote, invoice.value(), already.value(), lines, issued, reason);
    if (!note)
        return refusedWith(note.message());
    TaxDocument doc = note.value();
    RecordOutcome outcome = record(doc);
    if (!outcome)
        return outcome;
    if (!transaction.commit())
        return failedWith(transaction.lastError());
    return outcome;
}

}
