#include "changeoverstore.h"

#include "core/dates.h"
#include "core/formats.h"
#include "data/query.h"
#include "data/schema.h"
#include "data/sqlerror.h"
#include "data/transaction.h"

#include <QVariant>
#include <algorithm>
#include <cmath>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

std::optional<UserMessage> readTariffs(QSqlDatabase db, ChangeoverReview &review)
{
    QString sql = QStringLiteral("SELECT id, row_version");
    for (const QString &column : tariffColumns())
        sql += QStringLiteral(", ") + column;
    Query query(db, sql + QStringLiteral(" FROM Tarifi ORDER BY id"));
    if (auto failure = query.run(readTitle))
        return failure;
    if (!query.next())
        return std::nullopt;
    ChangeoverReview::Tariffs tariffs;
    tariffs.id = query.value(0).toLongLong();
    tariffs.rowVersion = query.value(1).toInt();
    for (size_t i = 0; i < 6; ++i) {
        tariffs.leva[i] = query.value(static_cast<int>(i) + 2).toDouble();
        tariffs.euro[i] = convertRate(tariffs.leva[i], Currency::Leva, Currency::Euro);
    }
    review.tariffs = tariffs;
    return std::nullopt;
}

std::optional<UserMessage> readStock(QSqlDatabase db, ChangeoverReview &review)
{
    Query query(db, QStringLiteral("SELECT id, row_version, Name, Broi, Edin FROM Nalich ORDER BY Name, id"));
    if (auto failure = query.run(readTitle))
        return failure;
    while (query.next()) {
        ChangeoverReview::Stock stock{query.value(0).toLongLong(), query.value(1).toInt(), query.value(2).toString(),
                                      query.value(3).toDouble(), query.value(4).toDouble(), 0};
        stock.euro = convertPrice(stock.leva, Currency::Leva, Currency::Euro);
        review.stock.append(stock);
    }
    return std::nullopt;
}

std::optional<UserMessage> readReceipts(QSqlDatabase db, ChangeoverReview &review)
{
    Query query(db,
                QStringLiteral("SELECT id, row_version, Data, DocVid, DocNom, Name, Ostat, Edin FROM Sklad "
                               "WHERE VidKol = 'P' AND Lipsa = ? AND Ostat > 0 AND Data < ? "
                               "ORDER BY Name, Data, id"));
    if (auto failure = query.run(readTitle, {false, review.date}))
        return failure;
    while (query.next()) {
        ChangeoverReview::Receipt receipt{query.value(0).toLongLong(), query.value(1).toInt(), query.value(2).toDate(),
                                          query.value(3).toString(), query.value(4).toString(),
                                          query.value(5).toString(), query.value(6).toDouble(),
                                          query.value(7).toDouble(), 0};
        receipt.euro = convertPrice(receipt.leva, Currency::Leva, Currency::Euro);
        review.receipts.append(receipt);
    }
    return std::nullopt;
}

Checked<int> countFrom(QSqlDatabase db, const QString &table, const QString &dateColumn, const QDate &date)
{
    const Checked<QVariant> count
        = scalar(db, readTitle, QStringLiteral("SELECT COUNT(*) FROM %1 WHERE %2 >= ?").arg(table, dateColumn), {date});
    if (!count)
        return count.message();
    return count.value().toInt();
}

// The reviewed rows against what stands now: the same rows at the same versions.
template <typename Row>
bool sameRows(const QList<Row> &reviewed, const QList<Row> &now)
{
    if (reviewed.size() != now.size())
        return false;
    for (qsizetype i = 0; i < reviewed.size(); ++i) {
        if (reviewed[i].id != now[i].id || reviewed[i].rowVersion != now[i].rowVersion)
            return false;
    }
    return true;
}

UserMessage changedSinceReviewMessage()
{
    return UserMessage::twoLines(changeoverTitle(), QStringLiteral("Данните са променени след прегледа!"),
                                 QStringLiteral("Нищо не е записано. Моля, прегледайте цените отново."),
                                 UserMessage::Icon::Exclamation);
}

std::optional<UserMessage> readOpenValues(QSqlDatabase db, ChangeoverReview &review)
{
    if (auto failure = readTariffs(db, review))
        return failure;
    if (auto failure = readStock(db, review))
        return failure;
    return readReceipts(db, review);
}

}

QString changeoverTitle()
{
    return QStringLiteral("Преминаване към евро");
}

UserMessage changeoverDoneMessage(const Changeover &changeover)
{
    return UserMessage::twoLines(changeoverTitle(),
                                 QStringLiteral("Фирмата води сметките си в евро от %1!").arg(formatDate(changeover.date)),
                                 QStringLiteral("Преминаването към евро се прави само веднъж."),
                                 UserMessage::Icon::Information);
}

QDate euroStartDate(const QDate &today)
{
    return std::min(today, euroAdoptionDate());
}

Checked<Changeover> loadChangeover(QSqlDatabase db)
{
    Query query(db, QStringLiteral("SELECT Data, Kurs FROM Evro ORDER BY id"));
    if (auto failure = query.run(readTitle))
        return *failure;
    Changeover changeover;
    if (query.next()) {
        changeover.date = query.value(0).toDate();
        changeover.rateScaled = std::llround(query.value(1).toDouble() * euroRateScale);
    }
    return changeover;
}

Checked<bool> isEuroInvoice(QSqlDatabase db, const QString &number)
{
    const Checked<QVariant> count
        = scalar(db, readTitle, QStringLiteral("SELECT COUNT(*) FROM EvroFakt WHERE NomFakt = ?"), {number});
    if (!count)
        return count.message();
    return count.value().toInt() > 0;
}

Checked<ChangeoverReview> reviewChangeover(QSqlDatabase db, const QDate &date)
{
    const Checked<Changeover> recorded = loadChangeover(db);
    if (!recorded)
        return recorded.message();
    if (recorded.value().isSet())
        return changeoverDoneMessage(recorded.value());
    ChangeoverReview review;
    review.date = date;
    if (auto failure = readOpenValues(db, review))
        return *failure;
    const struct {
        int *count;
        const char *table;
        const char *column;
    } dated[] = {{&review.coursesFrom, "tabl", "data"},
                 {&review.movementsFrom, "Sklad", "Data"},
                 {&review.waybillsFrom, "RowdList", "Data"},
                 {&review.tripsFrom, "ExternalKurs", "Data"}};
    for (const auto &d : dated) {
        const Checked<int> count = countFrom(db, QString::fromLatin1(d.table), QString::fromLatin1(d.column), date);
        if (!count)
            return count.message();
        *d.count = count.value();
    }
    return review;
}

std::optional<UserMessage> runChangeover(QSqlDatabase db, const ChangeoverReview &review, const QDateTime &now,
                                         const std::function<std::optional<UserMessage>(int)> &beforeWrite)
{
    const QString title = changeoverTitle();
    Transaction transaction(db, Transaction::Lock::Writer);
    if (!transaction.isActive())
        return transaction.timedOut() ? databaseBusyMessage() : sqlErrorMessage(title, transaction.lastError());

    const Checked<Changeover> recorded = loadChangeover(db);
    if (!recorded)
        return recorded.message();
    if (recorded.value().isSet())
        return changeoverDoneMessage(recorded.value());
    ChangeoverReview current;
    current.date = review.date;
    if (auto failure = readOpenValues(db, current))
        return failure;
    const bool tariffsSame = review.tariffs.has_value() == current.tariffs.has_value()
                             && (!review.tariffs
                                 || (review.tariffs->id == current.tariffs->id
                                     && review.tariffs->rowVersion == current.tariffs->rowVersion));
    if (!tariffsSame || !sameRows(review.stock, current.stock) || !sameRows(review.receipts, current.receipts))
        return changedSinceReviewMessage();

    int writes = 0;
    const auto write = [&](const QString &sql, const QVariantList &values) -> std::optional<UserMessage> {
        if (beforeWrite) {
            if (auto failure = beforeWrite(++writes))
                return failure;
        }
        return execute(db, title, sql, values);
    };

    if (review.tariffs) {
        QString sql = QStringLiteral("UPDATE Tarifi SET ");
        QVariantList values;
        for (size_t i = 0; i < 6; ++i) {
            sql += tariffColumns()[i] + QStringLiteral(" = ?, ");
            values.append(review.tariffs->euro[i]);
        }
        sql += QStringLiteral("DateMod = ?, TimeMod = ?, row_version = row_version + 1 WHERE id = ?");
        values << now.date() << now.time() << review.tariffs->id;
        if (auto failure = write(sql, values))
            return failure;
    }
    for (const ChangeoverReview::Stock &stock : review.stock) {
        if (auto failure = write(QStringLiteral("UPDATE Nalich SET Edin = ?, DateMod = ?, TimeMod = ?, "
                                                "row_version = row_version + 1 WHERE id = ?"),
                                 {stock.euro, now.date(), now.time(), stock.id}))
            return failure;
    }
    for (const ChangeoverReview::Receipt &receipt : review.receipts) {
        if (auto failure = write(QStringLiteral("INSERT INTO EvroSklad (ReceiptID, Edin) VALUES (?, ?)"),
                                 {receipt.id, receipt.euro}))
            return failure;
    }
    if (auto failure = write(QStringLiteral("INSERT INTO Evro (Nomer, Data, Kurs, DateMod, TimeMod) VALUES (1, ?, ?, ?, ?)"),
                             {review.date, static_cast<double>(euroRateScaled) / euroRateScale, now.date(), now.time()}))
        return failure;
    if (!transaction.commit())
        return sqlErrorMessage(title, transaction.lastError());
    return std::nullopt;
}

std::optional<UserMessage> recordChangeover(QSqlDatabase db, const QDate &date, const QDateTime &now)
{
    return execute(db, changeoverTitle(),
                   QStringLiteral("INSERT INTO Evro (Nomer, Data, Kurs, DateMod, TimeMod) VALUES (1, ?, ?, ?, ?)"),
                   {date, static_cast<double>(euroRateScaled) / euroRateScale, now.date(), now.time()});
}

}
