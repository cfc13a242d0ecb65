#include "taxdocumentreport.h"

#include "core/amountwords.h"
#include "core/dates.h"
#include "core/formats.h"
#include "core/valueformat.h"
#include "data/query.h"

#include <QVariant>
#include <cmath>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене на курсовете на фактурата!");

// A quantity as counted: whole numbers without decimals, others to three places.
QString quantityText(double quantity)
{
    return std::abs(quantity - std::round(quantity)) < 0.0005 ? formatFixed(quantity, 0) : formatFixed(quantity, 3);
}

QString partyAddress(const TaxParty &party)
{
    QStringList parts;
    for (const QString &part : {party.town, party.address, party.country}) {
        if (!part.trimmed().isEmpty())
            parts.append(part.trimmed());
    }
    return parts.join(QStringLiteral(", "));
}

void setParty(Report &report, const QString &prefix, const TaxParty &party)
{
    // A blank is printed as a dash, so a missing item reads as missing and not as a gap in the form.
    const auto shown = [](const QString &text) { return text.trimmed().isEmpty() ? QStringLiteral("—") : text.trimmed(); };
    report.setValue(prefix + QStringLiteral("Name"), party.name.trimmed());
    report.setValue(prefix + QStringLiteral("Eik"), shown(party.eik));
    report.setValue(prefix + QStringLiteral("Vat"), shown(party.vatNumber));
    report.setValue(prefix + QStringLiteral("Address"), shown(partyAddress(party)));
    report.setValue(prefix + QStringLiteral("Mol"), shown(party.mol));
}

QString kindWord(TaxDocumentKind kind)
{
    return kindName(kind);
}

}

QStringList zeroVatGrounds()
{
    return {QStringLiteral("чл. 21, ал. 2 от ЗДДС — обратно начисляване"),
            QStringLiteral("чл. 30 от ЗДДС — международен превоз на стоки"),
            QStringLiteral("чл. 21, ал. 2 от ЗДДС — място на изпълнение извън ЕС")};
}

QString taxDocumentTitle(TaxDocumentKind kind)
{
    switch (kind) {
    case TaxDocumentKind::CreditNote:
        return QStringLiteral("КРЕДИТНО ИЗВЕСТИЕ");
    case TaxDocumentKind::DebitNote:
        return QStringLiteral("ДЕБИТНО ИЗВЕСТИЕ");
    case TaxDocumentKind::Invoice:
        break;
    }
    return QStringLiteral("ФАКТУРА");
}

QString taxDocumentFileName(const TaxDocument &document)
{
    // Characters a file name cannot hold become blanks.
    QString client = document.recipient.name.trimmed();
    for (QChar &c : client) {
        if (QStringLiteral("\\/:*?\"<>|").contains(c))
            c = QLatin1Char(' ');
    }
    return QStringList{kindWord(document.kind), document.number, client.simplified()}.join(QLatin1Char(' ')).trimmed();
}

Checked<Report> ReportTaxDocument(const TaxDocument &document, PaperCopy copy)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptDanDokument"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();

    RowSet rows({QStringLiteral("Red"), QStringLiteral("Opisanie"), QStringLiteral("Edinica"), QStringLiteral("Kol"),
                 QStringLiteral("Cena"), QStringLiteral("Suma")});
    rows.reserveRows(static_cast<int>(document.lines.size()));
    for (const TaxLine &line : document.lines)
        rows.appendRow({line.position, line.description, line.unit, quantityText(line.quantity),
                        formatAmount(line.unitPrice), formatAmount(line.amount)});
    report.setDataSource(rows);

    const bool note = document.kind != TaxDocumentKind::Invoice;
    report.setValue(QStringLiteral("title"), taxDocumentTitle(document.kind));
    report.setValue(QStringLiteral("copy"), copy == PaperCopy::Original ? QStringLiteral("Оригинал") : QStringLiteral("Копие"));
    report.setValue(QStringLiteral("number"), document.number);
    report.setValue(QStringLiteral("dates"), QStringLiteral("Дата на издаване: ") + formatDate(document.issued)
                                                 + QStringLiteral("     Дата на данъчното събитие: ")
                                                 + formatDate(document.taxEvent));
    report.setValue(QStringLiteral("noteOf"), note ? QStringLiteral("към фактура № ") + document.invoiceNumber
                                                         + QStringLiteral(" от ") + formatDate(document.invoiceDate)
                                                   : QString());
    setParty(report, QStringLiteral("supplier"), document.supplier);
    setParty(report, QStringLiteral("recipient"), document.recipient);

    report.setValue(QStringLiteral("base"), amountText(document.base, document.currency));
    report.setValue(QStringLiteral("vatPercent"), QString::number(document.vatPercent));
    report.setValue(QStringLiteral("vat"), amountText(document.vat, document.currency));
    report.setValue(QStringLiteral("totalCaption"), document.kind == TaxDocumentKind::CreditNote
                                                        ? QStringLiteral("Обща сума:")
                                                        : QStringLiteral("Сума за плащане:"));
    report.setValue(QStringLiteral("total"), amountText(document.total, document.currency));
    report.setValue(QStringLiteral("words"), amountInWords(document.total, document.currency));
    report.setValue(QStringLiteral("groundLine"),
                    document.vatPercent == 0 ? QStringLiteral("Основание за неначисляване на ДДС: ")
                                                   + document.zeroVatGround.trimmed()
                                             : QString());
    report.setValue(QStringLiteral("reasonLine"), note && !document.reason.trimmed().isEmpty()
                                                      ? QStringLiteral("Основание за издаване: ") + document.reason.trimmed()
                                                      : QString());
    report.setValue(QStringLiteral("payment"), document.paymentMethod.trimmed().isEmpty()
                                                   ? QStringLiteral("по банков път")
                                                   : document.paymentMethod.trimmed());
    QStringList bank;
    if (!document.supplierIban.trimmed().isEmpty())
        bank.append(QStringLiteral("IBAN: ") + document.supplierIban.trimmed());
    if (!document.supplierBic.trimmed().isEmpty())
        bank.append(QStringLiteral("BIC: ") + document.supplierBic.trimmed());
    if (!document.supplierBank.trimmed().isEmpty())
        bank.append(QStringLiteral("Банка: ") + document.supplierBank.trimmed());
    report.setValue(QStringLiteral("bankLine"), bank.join(QStringLiteral("     ")));
    // A credit note is not paid by its client: it has no due date.
    report.setValue(QStringLiteral("dueLine"), document.kind != TaxDocumentKind::CreditNote && document.due.isValid()
                                                   ? QStringLiteral("Срок за плащане: ") + formatDate(document.due)
                                                   : QString());
    report.setValue(QStringLiteral("place"), document.place.trimmed());
    // The lines under the words stand one under the other, those a document has not left out.
    int top = 1460;
    for (const char *name : {"Label15", "Label16", "Label17", "Label18", "Label19", "Label24"}) {
        const QString control = QLatin1String(name);
        const QString text = report.control(QStringLiteral("ReportFooter"), control).caption;
        const bool shown = !text.trimmed().isEmpty();
        report.setVisible(QStringLiteral("ReportFooter"), control, shown);
        if (shown) {
            report.moveControl(QStringLiteral("ReportFooter"), control, 0, top);
            top += 280;
        }
    }
    top += 300;
    for (const auto &[name, left] : {std::pair{"Label26", 0}, std::pair{"Label27", 5100}})
        report.moveControl(QStringLiteral("ReportFooter"), QLatin1String(name), left, top);
    for (const auto &[name, left] : {std::pair{"Label28", 0}, std::pair{"Label29", 5100}})
        report.moveControl(QStringLiteral("ReportFooter"), QLatin1String(name), left, top + 280);
    report.setValue(QStringLiteral("issuer"), document.issuer.trimmed());
    report.setSuggestedFileName(taxDocumentFileName(document));
    return report;
}

Checked<TaxDocumentAnnex> taxDocumentAnnex(QSqlDatabase db, const TaxDocument &document, const BooksDay &books)
{
    TaxDocumentAnnex annex;
    if (document.kind != TaxDocumentKind::Invoice)
        return annex;
    QVariantList ids;
    for (const TaxLine &line : document.lines) {
        if (line.courseId > 0)
            ids.append(line.courseId);
    }
    QString sql = QStringLiteral("SELECT id, data, Marsh, Tovar, kola, km, ton, Tarifa, bruto FROM tabl WHERE ");
    QVariantList values;
    if (ids.isEmpty()) {
        sql += QStringLiteral("NomFakt = ?");
        values.append(document.number);
    } else {
        QStringList marks;
        for (qsizetype i = 0; i < ids.size(); ++i)
            marks.append(QStringLiteral("?"));
        // The courses come in the lines' order; the statement numbers them so.
        sql += QStringLiteral("id IN (") + marks.join(QLatin1Char(',')) + QLatin1Char(')');
        values = ids;
    }
    sql += QStringLiteral(" ORDER BY data, id");
    Query query(db, sql);
    if (auto failure = query.run(readTitle, values))
        return *failure;
    while (query.next()) {
        invoicing::StatementLine line;
        line.red = static_cast<int>(annex.lines.size()) + 1;
        line.data = dateOfValue(query.value(1));
        line.marsh = query.value(2).toString();
        line.vidTovar = query.value(3).toString();
        line.kolaId = query.value(4).toString();
        line.km = query.value(5).toDouble();
        line.ton = query.value(6).toDouble();
        line.tarifa = query.value(7).toDouble();
        line.suma = Money::fromAmount(query.value(8).toDouble());
        line.currency = books.currencyOn(line.data);
        annex.lines.append(line);
    }
    if (auto failure = query.readFailure(readTitle))
        return *failure;
    annex.money = invoicing::statementMoney(annex.lines, std::nullopt, document.currency);
    annex.money.changeover = books.changeover;
    return annex;
}

Checked<Report> ReportTaxDocumentAnnex(const TaxDocument &document, const TaxDocumentAnnex &annex,
                                       const FirmProfile &firm)
{
    invoicing::StatementHeading heading;
    heading.mode = FakturaMode::EditFakt;  // an invoice of any dates: no period line
    heading.klient = document.recipient.name;
    heading.number = document.number;
    return invoicing::ReportFaktura(heading, annex.money, invoicing::statementRows(annex.lines, annex.money.mixed), firm);
}

}
