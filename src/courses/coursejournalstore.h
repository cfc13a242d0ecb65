#pragma once

#include "core/currency.h"
#include "core/usermessage.h"

#include <QDate>
#include <QHash>
#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <optional>

namespace zarek {

// The conditions of the course journal. Blank texts and open dates are no condition; a text
// matches every value that contains it, whatever the case.
struct JournalFilter {
    enum class Mark { All, Yes, No };
    QDate from;
    QDate to;
    QString truck;
    QString driver;   // part of the code or the name
    QString client;
    QString text;     // part of the route or the cargo
    Mark invoiced = Mark::All;
    Mark paid = Mark::All;

    bool operator==(const JournalFilter &) const = default;
};

// The columns of the journal, in screen order.
enum class JournalColumn {
    Date, Driver, Truck, Client, Route, Cargo, Tonnes, Km, Rate, Gross, Invoice, Invoiced, Paid
};
inline constexpr int journalColumnCount = 13;

// One course as the journal shows it.
struct JournalRow {
    qint64 id = 0;
    QDate date;
    QString driverCode;
    QString driverName;
    QString truck;
    QString client;
    QString route;
    QString cargo;
    double tonnes = 0;
    double km = 0;
    double rate = 0;
    double gross = 0;
    QString invoice;
    bool invoiced = false;
    bool paid = false;

    QVariant value(JournalColumn column) const;
};

struct JournalTotals {
    int count = 0;
    double tonnes = 0;
    double km = 0;
    double gross = 0;  // in currency
    // Euro once any course is; converted: leva courses are in the euro figures (each month's once).
    Currency currency = Currency::Leva;
    bool converted = false;
};

struct JournalSummary {
    JournalTotals totals;
    QList<QPair<QString, double>> months;
};

// The journal's reading of tabl: how many courses pass the conditions, a page of them in the
// order asked (text columns in Bulgarian alphabetical order, whatever the engine; ties by date),
// the totals and the gross of each month, all worked out by the database. Every value is bound; a
// text condition becomes the list of stored values that contain it, so both engines match alike
// and use their indexes. The lists of stored values are read when a condition or an order first
// needs them, each by steps down its index.
class CourseJournalStore {
public:
    explicit CourseJournalStore(QSqlDatabase db);

    // Reads again the drivers and forgets the lists of trucks, clients, routes and cargoes the
    // text conditions are matched against (after a course was saved, say).
    std::optional<UserMessage> refreshLists();

    Checked<int> count(const JournalFilter &filter) const;
    // The courses at positions offset .. offset + limit - 1 of the order asked.
    Checked<QList<JournalRow>> page(const JournalFilter &filter, JournalColumn sortColumn, bool ascending,
                                    int offset, int limit) const;
    // The ids of every course that passes, in the order asked.
    Checked<QList<qint64>> orderedIds(const JournalFilter &filter, JournalColumn sortColumn, bool ascending) const;
    // Every course that passes the conditions, in the order asked, in one reading (for an export).
    Checked<QList<JournalRow>> allRows(const JournalFilter &filter, JournalColumn sortColumn = JournalColumn::Date,
                                       bool ascending = true) const;
    // The totals of the courses that pass, and the gross of each month ("2026-03"), in one reading;
    // the gross in euro once any course is, the leva of the months before the changeover converted.
    Checked<JournalSummary> summary(const JournalFilter &filter, const Changeover &changeover) const;

    // The stored trucks and clients in Bulgarian alphabetical order (read at the first call).
    const QStringList &trucks() const;
    const QStringList &clients() const;
    QString driverName(const QString &code) const { return m_driverNames.value(code); }

private:
    struct Where {
        QString sql;  // " WHERE …" or empty
        QVariantList values;
        bool nothing = false;  // a text condition no stored value meets
    };
    struct Order {
        QString with;  // " WITH …" ranking the values of a text column, or empty
        QString join;
        QString by;    // " ORDER BY …"
        QVariantList values;
    };
    enum List { Trucks, Clients, Routes, Cargoes, DriverCodes, ListCount };
    const QStringList &list(List which) const;
    Where where(const JournalFilter &filter) const;
    Order order(JournalColumn sortColumn, bool ascending) const;
    Checked<QList<JournalRow>> read(const QString &sql, const QVariantList &values) const;

    QSqlDatabase m_db;
    QHash<QString, QString> m_driverNames;  // code -> name
    mutable std::optional<QStringList> m_lists[ListCount];
};

}
