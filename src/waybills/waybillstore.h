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

    // The lists of the header's combo boxes, sorted; the trucks are those every truck list offers.
    Checked<QStringList> driverNames() const;
    Checked<QStringList> truckNumbers() const;

    // Writes a header. Its lines go with its number: a corrected number takes the lines stored
    // under linesNumber along, and the lines saved for a new waybill (newLines) follow it.
    Checked<RecordRow> saveHeader(RecordRow row, bool adding, const QString &linesNumber,
                                  const QList<qint64> &newLines) const;
    // Deletes a header with its lines (lines another waybill of the same number still shows stay).
    std::optional<UserMessage> deleteWaybill(const RecordRow &row, const QString &errorTitle) const;
    // A route line written through the editor's line store, and the sums of the waybills of its
    // number made anew from their lines, in one transaction: a header's totals always equal its
    // lines. The sums the header now holds come back with the line.
    struct SavedLine {
        RecordRow line;
        Sums sums;
    };
    Checked<SavedLine> saveLine(const RecordStore &lines, RecordRow line, bool adding, const QString &errorTitle) const;
    // A route line deleted and the sums of its number made anew, in one transaction.
    Checked<Sums> removeLine(const RecordStore &lines, const RecordRow &line, const QString &errorTitle) const;

    // The sums "Изчисли" found, stored on a waybill that is not being corrected.
    Checked<RecordRow> storeSums(RecordRow row, const Sums &sums, const QString &errorTitle) const;

    // The lines saved for a new waybill that was then not saved.
    std::optional<UserMessage> deleteLines(const QList<qint64> &ids, const QString &errorTitle) const;
    // The lines saved for a new waybill follow its number when it is changed.
    std::optional<UserMessage> moveLines(const QList<qint64> &ids, const QString &listId,
                                         const QString &errorTitle) const;

private:
    // The headers of the number take the sums of its stored lines (0 without lines). The sums
    // follow the lines whatever version a header is at, so the row version is left alone: a
    // header saved from an older reading has its sums made anew in its own transaction.
    Checked<Sums> refreshSums(const QString &listId, const QString &errorTitle) const;

    QSqlDatabase m_db;
};

}
