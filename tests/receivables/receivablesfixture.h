#pragma once

#include "core/money.h"
#include "testdatabase.h"

#include <QDate>
#include <QSqlDatabase>
#include <QString>

// Issued documents written straight into FaktDok, as the issuing leaves them: amounts in cents.
namespace zarek::test {

inline qint64 issueDocument(QSqlDatabase db, const QString &number, QChar kind, const QString &client, const QDate &issued,
                            const QDate &due, qint64 cents, const QString &currency = QStringLiteral("BGN"),
                            qint64 invoiceId = 0)
{
    const QVariant kam = invoiceId > 0 ? QVariant(invoiceId) : QVariant(QMetaType(QMetaType::LongLong));
    if (!insertRow(db, QStringLiteral("FaktDok"),
                   QStringLiteral("Nomer, Vid, Data, DataDan, KamID, Klient, Valuta, DDSProcent, Osnova, DDS, Obshto, DataPadej"),
                   {number, QString(kind), issued, issued, kam, client, currency, 20, cents, 0, cents, due}))
        return 0;
    return scalar(db, QStringLiteral("SELECT id FROM FaktDok WHERE Nomer = ?"), {number}).toLongLong();
}

}
