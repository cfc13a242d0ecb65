#pragma once

// Courses for the invoicing tests: a client with an apostrophe and a few routes in March 2006,
// written straight into tabl.

#include "core/dates.h"
#include "core/firmprofile.h"
#include "data/database.h"
#include "data/dialect.h"
#include "invoicing/taxdocument.h"
#include "testdatabase.h"

#include <QDate>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QVariant>
#include <QtTest>

namespace zarek::test {

inline const QString dargos = QStringLiteral("Д'Аргос ООД");
inline const QString beton = QStringLiteral("Бетон АД");
inline const Period march2006{QDate(2006, 3, 1), QDate(2006, 3, 31)};

struct CourseRow {
    QDate date;
    QString klient;
    QString marsh;
    QString tovar = QStringLiteral("Пясък");
    QString kola = QStringLiteral("СА 1234 ВК");
    double km = 25;
    double ton = 10;
    double tarifa = 0.125;
    double bruto = 31.25;
    bool fakt = false;
    QString nomFakt = QStringLiteral("0000000000");
};

// Inserts a course; its id, or 0 (and a failed test) when the insert fails.
inline qint64 insertCourse(QSqlDatabase db, const CourseRow &c)
{
    if (!insertRow(db, QStringLiteral("tabl"), courseColumns,
                   {c.date, QStringLiteral("007"), c.kola, c.klient, c.marsh, c.tovar, c.km, c.ton, c.tarifa, c.bruto, 0,
                    c.bruto, c.fakt, c.nomFakt, false, false})) {
        QTest::qFail("the course was not inserted", __FILE__, __LINE__);
        return 0;
    }
    return scalar(db, QStringLiteral("SELECT MAX(id) FROM tabl")).toLongLong();
}

// Four uninvoiced courses of Д'Аргос in March (one of them by another truck and cargo), one in
// April, one of another client, and an issued invoice 0000000120 of two courses.
inline QList<qint64> fillMarch(QSqlDatabase db)
{
    return {
        insertCourse(db, {QDate(2006, 3, 2), dargos, QStringLiteral("София - Перник")}),
        insertCourse(db, {QDate(2006, 3, 5), dargos, QStringLiteral("Перник - Радомир"), QStringLiteral("Чакъл"),
                          QStringLiteral("РК 7777 АА"), 40, 12.5, 0.1, 50.0}),
        insertCourse(db, {QDate(2006, 3, 9), dargos, QStringLiteral("Батановци - Перник"), QStringLiteral("Пясък"),
                          QStringLiteral("СА 1234 ВК"), 100, 20, 0.05, 100.0}),
        insertCourse(db, {QDate(2006, 3, 20), dargos, QStringLiteral("София - Перник"), QStringLiteral("пясък речен"),
                          QStringLiteral("СА 1234 ВК"), 25, 10, 0.125, 31.25}),
        insertCourse(db, {QDate(2006, 4, 3), dargos, QStringLiteral("София - Перник")}),
        insertCourse(db, {QDate(2006, 3, 6), beton, QStringLiteral("София - Перник")}),
        insertCourse(db, {QDate(2006, 2, 10), dargos, QStringLiteral("София - Перник"), QStringLiteral("Пясък"),
                          QStringLiteral("СА 1234 ВК"), 25, 10, 0.125, 31.25, true, QStringLiteral("0000000120")}),
        insertCourse(db, {QDate(2006, 2, 12), dargos, QStringLiteral("Перник - София"), QStringLiteral("Пясък"),
                          QStringLiteral("СА 1234 ВК"), 25, 10, 0.125, 31.25, true, QStringLiteral("0000000120")}),
    };
}

// The firm that issues the tax invoices: its identifiers and bank account filled.
inline FirmProfile taxFirm()
{
    FirmProfile f;
    f.UserName = QStringLiteral("Транспорт Петров ЕООД");
    f.UserCity = QStringLiteral("Перник");
    f.UserAdres = QStringLiteral("ул. Индустриална 14");
    f.UserBULSTAT = QStringLiteral("123456786");
    f.UserDanN = QStringLiteral("BG123456786");
    f.UserIBAN = QStringLiteral("BG80BNBG96611020345678");
    f.UserSastavil = QStringLiteral("Иван Петров");
    return f;
}

// A tax document's base, VAT and total in cents, as "base+vat=total".
inline QString sums(const TaxDocument &doc)
{
    return QStringLiteral("%1+%2=%3").arg(doc.base.cents()).arg(doc.vat.cents()).arg(doc.total.cents());
}

inline QSqlRecord courseById(QSqlDatabase db, qint64 id)
{
    QSqlQuery query(db);
    query.prepare(QStringLiteral("SELECT * FROM tabl WHERE id = ?"));
    query.addBindValue(id);
    query.exec();
    query.next();
    return query.record();
}

// Fakt, NomFakt, row_version and DateMod of every course, by id: what a test compares before and after.
inline QStringList invoiceState(QSqlDatabase db)
{
    QStringList state;
    QSqlQuery query(db);
    query.exec(QStringLiteral("SELECT id, Fakt, NomFakt, row_version, DateMod, TimeMod FROM tabl ORDER BY id"));
    while (query.next())
        state << QStringLiteral("%1 %2 %3 v%4 %5 %6")
                     .arg(query.value(0).toLongLong())
                     .arg(query.value(1).toBool() ? 1 : 0)
                     .arg(query.value(2).toString())
                     .arg(query.value(3).toLongLong())
                     .arg(query.value(4).toString(), query.value(5).toString());
    return state;
}

inline qint64 countWhere(QSqlDatabase db, const QString &sql, const QList<QVariant> &values = {})
{
    const QVariant count = scalar(db, sql, values);
    return count.typeId() == QMetaType::QString ? -1 : count.toLongLong();
}

// Makes the database refuse an event ("UPDATE ON tabl") on the rows where the condition holds
// ("OLD.id = 5") with the error "forced failure", until dropForcedFailure().
inline void forceFailure(ScratchDatabase &scratch, const QString &event, const QString &condition)
{
    const bool sqlite = dialectOf(scratch.db()) == Dialect::SQLite;
    QVERIFY(sqlite || scratch.exec(QStringLiteral("CREATE FUNCTION forced_failure() RETURNS trigger AS $$ BEGIN "
                                                  "RAISE EXCEPTION 'forced failure'; END $$ LANGUAGE plpgsql")));
    QVERIFY(scratch.exec(
        (sqlite ? QStringLiteral("CREATE TRIGGER forced_failure BEFORE %1 WHEN %2 BEGIN SELECT RAISE(ABORT, 'forced failure'); END")
                : QStringLiteral("CREATE TRIGGER forced_failure BEFORE %1 FOR EACH ROW WHEN (%2) EXECUTE FUNCTION forced_failure()"))
            .arg(event, condition)));
}

inline bool dropForcedFailure(ScratchDatabase &scratch, const QString &table)
{
    return scratch.exec(QStringLiteral("DROP TRIGGER forced_failure")
                        + (dialectOf(scratch.db()) == Dialect::SQLite ? QString() : QStringLiteral(" ON ") + table));
}

}
