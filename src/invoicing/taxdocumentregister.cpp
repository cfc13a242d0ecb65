#include "taxdocumentregister.h"

#include "core/money.h"
#include "core/valueformat.h"
#include "data/query.h"
#include "invoicing/paymentstate.h"
#include "invoicing/taxdocument.h"

#include <QVariant>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене на фактурите!");

}

Checked<RowSet> taxDocumentRegister(QSqlDatabase db, const TaxRegisterConditions &conditions)
{
    // Payments settle a document by PlashtaneID; a credit note by KreditID. A credit note against
    // the invoice with no settlement of its own still lowers what the invoice owes.
    Query query(db, QStringLiteral(
                        "SELECT d.id, d.Nomer, d.Vid, d.Data, d.DataDan, d.Klient, d.PolEIK, d.Osnova, d.DDS, d.Obshto, "
                        "d.Valuta, d.DataPadej, s.Plateno, s.Kredit, k.Izvestia "
                        "FROM FaktDok d "
                        "LEFT JOIN (SELECT DokID, SUM(CASE WHEN PlashtaneID IS NOT NULL THEN Suma ELSE 0 END) AS Plateno, "
                        "SUM(CASE WHEN KreditID IS NOT NULL THEN Suma ELSE 0 END) AS Kredit "
                        "FROM Pogasiavania GROUP BY DokID) s ON s.DokID = d.id "
                        "LEFT JOIN (SELECT n.KamID, SUM(n.Obshto) AS Izvestia FROM FaktDok n WHERE n.Vid = 'K' "
                        "AND NOT EXISTS (SELECT 1 FROM Pogasiavania q WHERE q.KreditID = n.id) GROUP BY n.KamID) k "
                        "ON k.KamID = d.id "
                        "WHERE d.Data BETWEEN ? AND ? ORDER BY d.Data, d.Nomer"));
    if (auto failure = query.run(readTitle, {conditions.period.from, conditions.period.to}))
        return *failure;
    RowSet rows({QStringLiteral("id"), QStringLiteral("Nomer"), QStringLiteral("Vid"), QStringLiteral("Data"),
                 QStringLiteral("DataDan"), QStringLiteral("Klient"), QStringLiteral("EIK"), QStringLiteral("Osnova"),
                 QStringLiteral("DDS"), QStringLiteral("Obshto"), QStringLiteral("Valuta"), QStringLiteral("Plateno"),
                 QStringLiteral("Ostatak"), QStringLiteral("Sastoianie"), QStringLiteral("Padej"),
                 QStringLiteral("Prosrochena")});
    const QString prefix = conditions.clientPrefix.trimmed();
    const auto amount = [](qint64 cents) { return Money::fromCents(cents).toDouble(); };
    while (query.next()) {
        const QString klient = query.value(5).toString();
        if (!prefix.isEmpty() && !klient.trimmed().startsWith(prefix, Qt::CaseInsensitive))
            continue;
        const TaxDocumentKind kind = kindFromCode(query.value(2).toString());
        const qint64 base = query.value(7).toLongLong();
        const qint64 vat = query.value(8).toLongLong();
        const qint64 total = query.value(9).toLongLong();
        const QDate due = dateOfValue(query.value(11));
        QVariant paid, rest, state;
        bool overdue = false;
        const int sign = kind == TaxDocumentKind::CreditNote ? -1 : 1;
        if (kind != TaxDocumentKind::CreditNote) {
            const qint64 payments = query.value(12).toLongLong();
            const qint64 credited = query.value(13).toLongLong() + query.value(14).toLongLong();
            const qint64 owed = std::max<qint64>(0, total - credited);
            const PaymentState where = paymentState(Money::fromCents(owed), Money::fromCents(payments), due,
                                                    conditions.today);
            paid = amount(payments);
            rest = amount(std::max<qint64>(0, owed - payments));
            // An invoice its credit notes took back whole owes nothing, and was not paid either.
            state = owed == 0 && credited > 0 && payments == 0 ? QStringLiteral("кредитирана")
                                                               : paymentStateName(where);
            overdue = where == PaymentState::Overdue;
        }
        rows.appendRow({query.value(0).toLongLong(), query.value(1).toString(), kindName(kind),
                        dateOfValue(query.value(3)), dateOfValue(query.value(4)), klient, query.value(6).toString(),
                        amount(sign * base), amount(sign * vat), amount(sign * total), query.value(10).toString(), paid,
                        rest, state, due, overdue});
    }
    if (auto failure = query.readFailure(readTitle))
        return *failure;
    return rows;
}

}
