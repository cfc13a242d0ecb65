#pragma once

#include "core/usermessage.h"
#include "forms/recordstore.h"

#include <QSqlDatabase>
#include <QStringList>
#include <optional>

namespace zarek {

// The waybills' SQL: a header in RowdList, its route lines in Marsh under its number. A header
// and its lines are written and deleted together, each time in one transaction.
class WaybillStore {
public:
    explicit WaybillStore(QSqlDatabase db) : m_db(std::move(db)) {}

    static QStringList headerColumns();  // ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, ZarM, CenaN, CenaM
    static QStringList lineColumns();    // MarshID, Marshrut, KM, Ton, Koef, RazhN

    // Whether a waybill other than the row exceptId carries the number.
    Checked<bool> numberTaken(const QString &listId, qint64 exceptId = 0) const;
    // The truck's fuel norm in litres per 100 km; none without a Config row or a norm in it.
    Checked<std::optional<double>> truckNorm(const QString &kola) const;

    // The totals of the stored lines of a number: kilometres whole, fuel to a tenth; none
    // without lines.
    struct Sums {
        std::optional<double> km;
        std::optional<double> fuel;
    };
    Checked<Sums> lineSums(const QString &listId) const;

    // The lists of the header's combo boxes, sorted.
    Checked<QStringList> driverNames() const;
    Checked<QStringList> truckNumbers() const;

    // Writes a header. Its lines go with its number: a corrected number takes the lines stored
    // under linesNumber along, and the lines saved for a new waybill (newLines) follow it.
    Checked<RecordRow> saveHeader(RecordRow row, bool adding, const QString &linesNumber,
                                  const QList<qint64> &newLines) const;
    // Deletes a header with its lines (lines another waybill of the same number still shows stay).
    std::optional<UserMessage> deleteWaybill(const RecordRow &row, const QString &errorTitle) const;
    // The sums "Изчисли" found, stored on a waybill that is not being corrected.
    Checked<RecordRow> storeSums(RecordRow row, const Sums &sums, const QString &errorTitle) const;

    // The lines saved for a new waybill that was then not saved.
    std::optional<UserMessage> deleteLines(const QList<qint64> &ids, const QString &errorTitle) const;
    // The lines saved for a new waybill follow its number when it is changed.
    std::optional<UserMessage> moveLines(const QList<qint64> &ids, const QString &listId,
                                         const QString &errorTitle) const;

private:
    QSqlDatabase m_db;
};

}
