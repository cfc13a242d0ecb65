#include "taxdocument.h"

#include "data/query.h"

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

// Either engine's date: a date on PostgreSQL, ISO text on SQLite.
QDate dateOf(const QVariant &value)
{
    return value.isNull() ? QDate() : QDate::fromString(value.toString().left(10), Qt::ISODate);
}

TaxParty partyOf(const Query &row, const QString &prefix, const QString &nameColumn)
{
    const auto text = [&](const char *column) { return row.value(prefix + QLatin1String(column)).toString(); };
    return {row.value(nameColumn).toString(), text("EIK"), text("DDS"), text("Adres"), text("Grad"), text("Darzhava"), text("MOL")};
}

}

QChar kindCode(TaxDocumentKind kind)
{
    switch (kind) {
    case TaxDocumentKind::CreditNote:
        return QLatin1Char('K');
    case TaxDocumentKind::DebitNote:
        return QLatin1Char('D');
    case TaxDocumentKind::Invoice:
        break;
    }
    return QLatin1Char('F');
}

TaxDocumentKind kindFromCode(const QString &code)
{
    if (code == QLatin1String("K"))
        return TaxDocumentKind::CreditNote;
    if (code == QLatin1String("D"))
        return TaxDocumentKind::DebitNote;
    return TaxDocumentKind::Invoice;
}

QString kindName(TaxDocumentKind kind)
{
    switch (kind) {
    case TaxDocumentKind::CreditNote:
        return QStringLiteral("Кредитно известие");
    case TaxDocumentKind::DebitNote:
        return QStringLiteral("Дебитно известие");
    case TaxDocumentKind::Invoice:
        break;
    }
    return QStringLiteral("Фактура");
}

QString currencyCode(Currency currency)
{
    return currency == Currency::Euro ? QStringLiteral("EUR") : QStringLiteral("BGN");
}

Currency currencyFromCode(const QString &code)
{
    return code == QLatin1String("EUR") ? Currency::Euro : Currency::Leva;
}

Checked<TaxDocument> loadTaxDocument(QSqlDatabase db, qint64 id)
{
    TaxDocument doc;
    {
        Query row(db, QStringLiteral("SELECT * FROM FaktDok WHERE id = ?"));
        if (auto failure = row.run(readTitle, {id}))
            return *failure;
        if (!row.next()) {
            if (auto failure = row.readFailure(readTitle))
                return *failure;
            return UserMessage{readTitle, QStringLiteral("Документът не е намерен."), UserMessage::Icon::Critical};
        }
        const auto text = [&](const char *column) { return row.value(QLatin1String(column)).toString(); };
        const auto cents = [&](const char *column) { return Money::fromCents(row.value(QLatin1String(column)).toLongLong()); };
        doc.id = id;
        doc.number = text("Nomer");
        doc.kind = kindFromCode(text("Vid"));
        doc.issued = dateOf(row.value(QStringLiteral("Data")));
        doc.taxEvent = dateOf(row.value(QStringLiteral("DataDan")));
        doc.invoiceId = row.value(QStringLiteral("KamID")).toLongLong();
        doc.invoiceNumber = text("KamNomer");
        doc.invoiceDate = dateOf(row.value(QStringLiteral("DataKam")));
        doc.reason = text("Prichina");
        doc.supplier = partyOf(row, QStringLiteral("Dost"), QStringLiteral("DostIme"));
        doc.supplierIban = text("DostIBAN");
        doc.supplierBank = text("DostBank");
        doc.supplierBic = text("DostBIC");
        doc.place = text("Miasto");
        doc.issuer = text("Sastavil");
        doc.clientId = row.value(QStringLiteral("KlientID")).toLongLong();
        doc.recipient = partyOf(row, QStringLiteral("Pol"), QStringLiteral("Klient"));
        doc.currency = currencyFromCode(text("Valuta"));
        doc.vatPercent = row.value(QStringLiteral("DDSProcent")).toInt();
        doc.base = cents("Osnova");
        doc.vat = cents("DDS");
        doc.total = cents("Obshto");
        doc.zeroVatGround = text("OsnovanieNula");
        doc.paymentMethod = text("NachinPlashtane");
        doc.termDays = row.value(QStringLiteral("SrokDni")).toInt();
        doc.due = dateOf(row.value(QStringLiteral("DataPadej")));
    }
    Query lines(db, QStringLiteral("SELECT Red, KursID, DataKurs, Opisanie, Kol, Edinica, Cena, Suma FROM FaktRed "
                                   "WHERE DokID = ? ORDER BY Red"));
    if (auto failure = lines.run(readTitle, {id}))
        return *failure;
    while (lines.next()) {
        doc.lines.append({lines.value(0).toInt(), lines.value(1).toLongLong(), dateOf(lines.value(2)),
                          lines.value(3).toString(), lines.value(4).toDouble(), lines.value(5).toString(),
                          lines.value(6).toDouble(), Money::fromCents(lines.value(7).toLongLong())});
    }
    if (auto failure = lines.readFailure(readTitle))
        return *failure;
    return doc;
}

}
