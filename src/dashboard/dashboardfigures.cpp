#include "dashboard/dashboardfigures.h"

#include "core/valueformat.h"
#include "data/currencyrows.h"
#include "data/query.h"
#include "documents/documentstore.h"
#include "fleet/balansstore.h"
#include "settlement/paysheettotals.h"

#include <QVariant>
#include <algorithm>

namespace zarek::dashboard {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

// The gross of the courses a condition selects, grouped by a column (or not): each course's
// bruto in the currency of its day, added up as the reports add them, each leva amount converted
// to euro on its own.
struct GrossGroup {
    int courses = 0;
    int euroCourses = 0;
    Money leva;
    Money euro;
    QDate oldest;
    QList<std::pair<Money, int>> levaAmounts;  // read only where the leva are converted to euro
};

// The groups' sums, by key (an empty key: one group): each currency's count and gross summed
// apart within one group, so the rows are grouped by the key alone (in the order of an index that
// holds it, nothing sorted).
Checked<QHash<QString, GrossGroup>> grossBy(QSqlDatabase db, const BooksDay &books, const QString &key,
                                            const QString &condition, const QVariantList &values)
{
    const QString column = QStringLiteral("data");
    const SqlPart euroCount = byRowCurrency(column, books.changeover, QStringLiteral("1"), QStringLiteral("0"));
    const SqlPart leva = byRowCurrency(column, books.changeover, QStringLiteral("0"), QStringLiteral("bruto"));
    const SqlPart euro = byRowCurrency(column, books.changeover, QStringLiteral("bruto"), QStringLiteral("0"));
    QVariantList all = euroCount.values + leva.values + euro.values;
    all.append(values);
    const QString sql = QStringLiteral("SELECT %1, COUNT(*), SUM(%2), SUM(%3), SUM(%4), MIN(data) FROM tabl WHERE %5%6")
                            .arg(key.isEmpty() ? QStringLiteral("''") : key, euroCount.sql, leva.sql, euro.sql, condition,
                                 key.isEmpty() ? QString() : QStringLiteral(" GROUP BY ") + key);
    Query query(db, sql);
    if (auto failure = query.run(readTitle, all))
        return *failure;
    QHash<QString, GrossGroup> groups;
    while (query.next()) {
        const int count = query.value(1).toInt();
        if (count == 0)
            continue;  // no rows at all, without a key
        GrossGroup &group = groups[query.value(0).toString()];
        const int euroCourses = query.value(2).toInt();
        group.courses += count;
        group.euroCourses += euroCourses;
        if (count > euroCourses)
            group.leva += Money::fromAmount(query.value(3).toDouble());
        if (euroCourses > 0)
            group.euro += Money::fromAmount(query.value(4).toDouble());
        const QDate oldest = dateOfValue(query.value(5));
        if (!group.oldest.isValid() || (oldest.isValid() && oldest < group.oldest))
            group.oldest = oldest;
    }
    if (auto failure = query.readFailure(readTitle))
        return *failure;
    return groups;
}

// Where leva are to be converted to euro, each amount on its own: the groups' leva amounts, equal
// ones read once with their count. Only the days before the changeover are read.
std::optional<UserMessage> readLevaAmounts(QSqlDatabase db, const BooksDay &books, const QString &key,
                                           const QString &condition, const QVariantList &values,
                                           QHash<QString, GrossGroup> &groups)
{
    if (!books.changedOver())
        return std::nullopt;
    QVariantList all = values;
    all.append(books.changeover.date);
    Query query(db, QStringLiteral("SELECT %1, bruto, COUNT(*) FROM tabl WHERE %2 AND data < ? GROUP BY %3")
                        .arg(key.isEmpty() ? QStringLiteral("''") : key, condition,
                             key.isEmpty() ? QStringLiteral("2") : QStringLiteral("1, 2")));
    if (auto failure = query.run(readTitle, all))
        return failure;
    while (query.next()) {
        auto group = groups.find(query.value(0).toString());
        if (group != groups.end())
            group->levaAmounts.append({Money::fromAmount(query.value(1).toDouble()), query.value(2).toInt()});
    }
    return query.readFailure(readTitle);
}

bool needsLevaAmounts(const GrossGroup &group, Currency currency)
{
    return currency == Currency::Euro && group.courses > group.euroCourses;
}

Money totalIn(const GrossGroup &group, Currency currency, bool *converted)
{
    CurrencyTotal total(currency);
    if (needsLevaAmounts(group, currency)) {
        for (const auto &[amount, count] : group.levaAmounts) {
            for (int i = 0; i < count; ++i)
                total.add(amount, Currency::Leva);
        }
    } else if (group.courses > group.euroCourses) {
        total.add(group.leva, Currency::Leva);
    }
    if (group.euroCourses > 0)
        total.add(group.euro, Currency::Euro);
    if (converted)
        *converted = total.converted();
    return total.total();
}

}

Period monthOf(const QDate &day)
{
    const QDate first(day.year(), day.month(), 1);
    return {first, first.addMonths(1).addDays(-1)};
}

Checked<MonthFigures> periodFigures(QSqlDatabase db, const BooksDay &books, const Period &period)
{
    MonthFigures figures;
    figures.period = period;
    Query sums(db, QStringLiteral("SELECT COUNT(*), SUM(ton * km), SUM(km) FROM tabl WHERE data BETWEEN ? AND ?"));
    if (auto failure = sums.run(readTitle, {period.from, period.to}))
        return *failure;
    if (sums.next()) {
        figures.courses = sums.value(0).toInt();
        figures.tonneKm = sums.value(1).toDouble();
        figures.km = sums.value(2).toDouble();
    }
    sums.finish();
    const QString condition = QStringLiteral("data BETWEEN ? AND ?");
    const QVariantList values = {period.from, period.to};
    Checked<QHash<QString, GrossGroup>> read = grossBy(db, books, QString(), condition, values);
    if (!read)
        return read.message();
    QHash<QString, GrossGroup> groups = read.value();
    const GrossGroup &whole = groups[QString()];
    // As the course reports: euro once any course of the period is in euro; a period without
    // courses in the currency of its last day.
    const bool euro = whole.courses > 0 ? whole.euroCourses > 0 : books.currencyOn(period.to) == Currency::Euro;
    figures.currency = euro ? Currency::Euro : Currency::Leva;
    if (needsLevaAmounts(whole, figures.currency)) {
        if (auto failure = readLevaAmounts(db, books, QString(), condition, values, groups))
            return *failure;
    }
    figures.gross = totalIn(groups[QString()], figures.currency, &figures.converted);
    return figures;
}

Checked<MonthComparison> monthComparison(QSqlDatabase db, const BooksDay &books)
{
    MonthComparison comparison;
    const Period month = monthOf(books.today);
    const Period previous = monthOf(month.from.addMonths(-1));
    const Period yearAgo = monthOf(month.from.addYears(-1));
    for (auto [period, figures] : {std::pair{month, &comparison.current}, std::pair{previous, &comparison.previous},
                                   std::pair{yearAgo, &comparison.yearAgo}}) {
        const auto read = periodFigures(db, books, period);
        if (!read)
            return read.message();
        *figures = read.value();
    }
    return comparison;
}

Checked<QList<UninvoicedClient>> uninvoiced(QSqlDatabase db, const BooksDay &books)
{
    const QString key = QStringLiteral("Klient");
    // Fakt written out: the courses not invoiced have an index of their own (tabl_uninvoiced).
    const QString condition = QStringLiteral("Fakt = FALSE AND data <= ?");
    const QVariantList values = {books.today};
    Checked<QHash<QString, GrossGroup>> read = grossBy(db, books, key, condition, values);
    if (!read)
        return read.message();
    QHash<QString, GrossGroup> groups = read.value();
    // "Фактуриране" totals as the statement is handed out: today, in today's currency.
    const Currency today = books.currencyOn(books.today);
    const auto currencyOf = [today](const GrossGroup &group) { return totalsCurrency(group.euroCourses > 0, today); };
    if (std::any_of(groups.cbegin(), groups.cend(), [&](const GrossGroup &g) { return needsLevaAmounts(g, currencyOf(g)); })) {
        if (auto failure = readLevaAmounts(db, books, key, condition, values, groups))
            return *failure;
    }
    QList<UninvoicedClient> clients;
    for (auto it = groups.cbegin(); it != groups.cend(); ++it) {
        UninvoicedClient client;
        client.klient = it.key();
        client.period = {it.value().oldest, books.today};
        client.courses = it.value().courses;
        client.currency = currencyOf(it.value());
        client.gross = totalIn(it.value(), client.currency, nullptr);
        clients.append(client);
    }
    std::sort(clients.begin(), clients.end(), [](const UninvoicedClient &a, const UninvoicedClient &b) {
        return a.period.from != b.period.from ? a.period.from < b.period.from : a.klient < b.klient;
    });
    return clients;
}

Checked<QList<UnpaidDriver>> unpaidDrivers(QSqlDatabase db, const BooksDay &books)
{
    // Each driver's pay sheet from his oldest unpaid course to today, added up by the database.
    const Checked<QList<PaySheetTotal>> read = unpaidPaySheetTotals(db, books, books.today);
    if (!read)
        return read.message();
    QList<UnpaidDriver> drivers;
    for (const PaySheetTotal &sheet : read.value()) {
        UnpaidDriver driver;
        driver.kod = sheet.kod;
        driver.name = sheet.name;
        driver.period = {sheet.from, books.today};
        driver.courses = sheet.lines;
        if (sheet.refusal) {
            driver.currency = books.currencyOn(books.today);
            driver.failure = sheet.refusal->text.section(QLatin1Char('\n'), 0, 0);
        } else {
            driver.pay = sheet.printedTotal();
            driver.currency = sheet.currency;
        }
        drivers.append(driver);
    }
    std::sort(drivers.begin(), drivers.end(), [](const UnpaidDriver &a, const UnpaidDriver &b) {
        return a.pay != b.pay ? a.pay > b.pay : a.kod < b.kod;
    });
    return drivers;
}

bool keepsReceivables(QSqlDatabase db)
{
    const QStringList tables = db.tables();
    const auto has = [&tables](const QString &name) {
        return std::any_of(tables.cbegin(), tables.cend(), [&name](const QString &t) { return t.compare(name, Qt::CaseInsensitive) == 0; });
    };
    return has(QStringLiteral("FaktDok")) && has(QStringLiteral("Pogasiavania"));
}

Checked<Receivables> receivables(QSqlDatabase db, const BooksDay &books)
{
    Receivables result;
    result.currency = books.currencyOn(books.today);
    if (!keepsReceivables(db))
        return UserMessage{readTitle, QStringLiteral("Няма данни за издадени фактури."), UserMessage::Icon::None};
    // What is left of each invoice and debit note issued by today after what settled it (payments
    // and credit notes), in the document's own currency.
    Query query(db, QStringLiteral("SELECT d.Klient, d.Valuta, d.DataPadej, d.Obshto - COALESCE((SELECT SUM(p.Suma) "
                                   "FROM Pogasiavania p WHERE p.DokID = d.id), 0) FROM FaktDok d "
                                   "WHERE d.Vid IN ('F', 'D') AND d.Data <= ?"));
    if (auto failure = query.run(readTitle, {books.today}))
        return *failure;
    CurrencyTotal open(result.currency);
    CurrencyTotal overdue(result.currency);
    QHash<QString, OverdueClient> clients;
    while (query.next()) {
        const Money left = Money::fromCents(query.value(3).toLongLong());
        if (left <= Money())
            continue;
        const Currency currency = query.value(1).toString() == QLatin1String("EUR") ? Currency::Euro : Currency::Leva;
        open.add(left, currency);
        const QDate due = dateOfValue(query.value(2));
        if (due >= books.today)
            continue;
        overdue.add(left, currency);
        OverdueClient &client = clients[query.value(0).toString()];
        client.klient = query.value(0).toString();
        client.overdue += convertAmount(left, currency, result.currency);
        if (!client.oldestDue.isValid() || due < client.oldestDue)
            client.oldestDue = due;
    }
    if (auto failure = query.readFailure(readTitle))
        return *failure;
    result.open = open.total();
    result.overdue = overdue.total();
    result.largest = clients.values();
    std::sort(result.largest.begin(), result.largest.end(), [](const OverdueClient &a, const OverdueClient &b) {
        return a.overdue != b.overdue ? a.overdue > b.overdue : a.klient < b.klient;
    });
    if (result.largest.size() > 5)
        result.largest.resize(5);
    return result;
}

Checked<DueDocuments> dueDocuments(QSqlDatabase db, const BooksDay &books)
{
    const documents::DocumentStore store(db);
    const Checked<RowSet> read = store.dueList(books.today);
    if (!read)
        return read.message();
    const RowSet &rows = read.value();
    DueDocuments due;
    due.count = rows.rowCount();
    const int expired = rows.column(QStringLiteral("Iztekal"));
    for (int row = 0; row < rows.rowCount(); ++row) {
        const bool isExpired = rows.value(row, expired).toBool();
        if (isExpired)
            ++due.expired;
        if (due.nearest.size() < 5) {
            DueDocument document;
            document.id = rows.value(row, QStringLiteral("id")).toLongLong();
            document.vid = rows.value(row, QStringLiteral("Vid")).toString();
            document.holder = rows.value(row, QStringLiteral("Pritejatel")).toString();
            document.nomer = rows.value(row, QStringLiteral("Nomer")).toString();
            document.doKoga = dateOfValue(rows.value(row, QStringLiteral("DoKoga")));
            document.daysLeft = rows.value(row, QStringLiteral("Ostavat")).toInt();
            document.expired = isExpired;
            due.nearest.append(document);
        }
    }
    return due;
}

Checked<TruckProfits> truckProfits(QSqlDatabase db, const BooksDay &books, const Period &period)
{
    const Checked<QList<TruckBalance>> read = BalansStore(db).balances(BalansMode::Profit, period, books.changeover);
    if (!read)
        return read.message();
    TruckProfits profits;
    profits.period = period;
    profits.currency = balansCurrency(period, books.changeover);
    for (const TruckBalance &balance : read.value())
        profits.trucks.append({balance.kola, Money::fromCents(balance.prihod), Money::fromCents(balance.razhod)});
    return profits;
}

}
