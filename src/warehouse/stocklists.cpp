#include "stocklists.h"

#include "core/sharedroutines.h"
#include "core/formats.h"
#include "core/rounding.h"
#include "data/currencyrows.h"
#include "data/query.h"
#include "warehouse/fifo.h"
#include "warehouse/stockrules.h"
#include "warehouse/warehousestore.h"

#include <QHash>
#include <QVariant>
#include <algorithm>

namespace zarek {

namespace {

const QString readTitle = QStringLiteral("ГРЕШКА при четене!");

// A quantity as plain text: its decimals and no more, with a decimal comma.
QString quantityText(double quantity)
{
    return bulgarianLocale().toString(quantityValue(storedQuantity(quantity)), 'g', 15);
}

// A list's paper: its rows, the firm, the list's total ("31,25 лв.") and the note under it where it converted.
Checked<Report> listReport(const QString &design, const StockList &list, const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(design);
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    report.setDataSource(list.rows);
    report.setFirm(firm);
    report.setValue(QStringLiteral("total"), formatAmount(list.total) + QLatin1Char(' ') + amountUnit(list.currency));
    report.setAmountsWithUnits(list.mixed);
    if (list.mixed)
        report.addFooterNote(conversionNote(list.changeover, list.currency));
    return report;
}

}

UserMessage noStockArticleMessage()
{
    return UserMessage::twoLines(QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("В склада няма артикул с това име!"),
                                 QStringLiteral("Моля, изберете друго."));
}

bool priceDrawnRed(double price)
{
    return price < 1;
}

bool remainderDrawnRed(double remainder)
{
    return remainder < 1;
}

UserMessage noMovementsMessage(bool receipts)
{
    return {QStringLiteral("ВНИМАНИЕ!"), receipts ? QStringLiteral("Няма приходи в склада за периода!")
                                                  : QStringLiteral("Няма разходи в склада за периода!")};
}

Checked<StockList> stockPosition(QSqlDatabase db, const QString &articlePrefix, const BooksDay &books)
{
    Query query(db);
    if (auto failure = query.exec(readTitle, QStringLiteral("SELECT Name, Edin, Broi FROM Nalich")))
        return *failure;
    struct Item {
        QString name;
        double edin;
        double broi;
    };
    QList<Item> items;
    while (query.next()) {
        const QString name = query.value(0).toString();
        if (matchesPrefix(name, articlePrefix))
            items.append({name, query.value(1).toDouble(), query.value(2).toDouble()});
    }
    std::stable_sort(items.begin(), items.end(), [](const Item &a, const Item &b) { return nameLess(a.name, b.name); });

    // The prices on hand stand in euro once the firm has changed over.
    StockList list{RowSet({QStringLiteral("Red"), QStringLiteral("Name"), QStringLiteral("Kol"), QStringLiteral("Cena"),
                           QStringLiteral("Suma")}),
                   {}, books.priceCurrency(), false, books.changeover};
    list.rows.reserveRows(static_cast<int>(items.size()));
    int red = 0;
    for (const Item &item : std::as_const(items)) {
        // Each row's value to the cent, so the total is the sum of the column as read.
        const Money suma = Money::fromAmount(item.broi * item.edin);
        list.rows.appendRow({++red, item.name, item.broi, item.edin, suma.toDouble()});
        list.total += suma;
    }
    return list;
}

Checked<StockList> stockAudit(QSqlDatabase db, const Period &period, const BooksDay &books,
                              const std::function<void(int, int)> &progress)
{
    Query query(db);
    if (auto failure = query.exec(readTitle, QStringLiteral("SELECT DISTINCT Name FROM Sklad")))
        return *failure;
    QStringList names;
    while (query.next())
        names.append(query.value(0).toString());
    sortNames(names);

    struct Sums {
        double quantity = 0;
        Money value;   // in the audit's currency
    };
    struct Part {
        QString name;
        bool receipt;
        double quantity;
        Money value;
        Currency currency;
    };
    // Each name's movements by kind, the leva before the changeover apart from the euro after it.
    const Changeover &changeover = books.changeover;
    const SqlPart inEuro = byRowCurrency(QStringLiteral("Data"), changeover, QStringLiteral("1"), QStringLiteral("0"));
    QList<Part> parts;
    if (auto failure = query.exec(readTitle,
                                  QStringLiteral("SELECT Name, VidKol, %1, SUM(Kol), SUM(Suma) "
                                                 "FROM Sklad WHERE Data BETWEEN ? AND ? GROUP BY 1, 2, 3")
                                      .arg(inEuro.sql),
                                  inEuro.values + QVariantList{period.from, period.to}))
        return *failure;
    bool anyEuro = false;
    bool anyLeva = false;
    while (query.next()) {
        const QString kind = query.value(1).toString();
        if (kind != StockMovement::receiptKind() && kind != StockMovement::issueKind())
            continue;
        const Currency currency = query.value(2).toInt() == 1 ? Currency::Euro : Currency::Leva;
        (currency == Currency::Euro ? anyEuro : anyLeva) = true;
        parts.append({query.value(0).toString(), kind == StockMovement::receiptKind(), query.value(3).toDouble(),
                      Money::fromAmount(query.value(4).toDouble()), currency});
    }
    const Currency currency = totalsCurrency(anyEuro);
    QHash<QString, Sums> in;
    QHash<QString, Sums> out;
    for (const Part &part : std::as_const(parts)) {
        Sums &sums = (part.receipt ? in : out)[part.name];
        sums.quantity += part.quantity;
        sums.value += convertAmount(part.value, part.currency, currency);
    }
    // The price of each name is that of its oldest receipt in the period, in that receipt's currency.
    QHash<QString, QString> firstPrice;
    if (auto failure = query.exec(readTitle,
                                  QStringLiteral("SELECT Name, Edin, Data FROM Sklad WHERE VidKol = 'P' AND Data "
                                                 "BETWEEN ? AND ? ORDER BY Data, id"),
                                  {period.from, period.to}))
        return *failure;
    while (query.next()) {
        const QString name = query.value(0).toString();
        if (!firstPrice.contains(name))
            firstPrice.insert(name, amountText(Money::fromAmount(query.value(1).toDouble()),
                                               books.currencyOn(query.value(2).toDate())));
    }

    StockList list{RowSet({QStringLiteral("Red"), QStringLiteral("Name"), QStringLiteral("Cena"),
                           QStringLiteral("Prihod"), QStringLiteral("SumaP"), QStringLiteral("Razhod"),
                           QStringLiteral("SumaR"), QStringLiteral("Ostatak"), QStringLiteral("SumaO"),
                           QStringLiteral("OstatakKol")}),
                   {}, currency, currency == Currency::Euro && anyLeva, changeover};
    list.rows.reserveRows(static_cast<int>(names.size()));
    int red = 0;
    for (const QString &name : std::as_const(names)) {
        const Sums received = in.value(name);
        const Sums issued = out.value(name);
        // A name with no receipt in the period shows no price (not the name before it).
        const QString cena = firstPrice.value(name);
        const bool anyIssued = issued.quantity > 0;
        const double remainder = quantityValue(storedQuantity(received.quantity) - storedQuantity(issued.quantity));
        const Money value = received.value - issued.value;
        list.rows.appendRow({++red, name, cena, quantityText(received.quantity), amountText(received.value, currency),
                             anyIssued ? quantityText(issued.quantity) : QStringLiteral("- "),
                             anyIssued ? amountText(issued.value, currency) : QStringLiteral("- "),
                             quantityText(remainder), amountText(value, currency), remainder});
        list.total += value;
        if (progress && red % 64 == 0)
            progress(red, static_cast<int>(names.size()));
    }
    return list;
}

Checked<StockList> stockMovements(QSqlDatabase db, bool receipts, const Period &period, const QString &articlePrefix,
                                  const QString &truckPrefix, const BooksDay &books,
                                  const std::function<void(int, int)> &progress)
{
    Query query(db);
    if (auto failure
        = query.exec(readTitle,
                     QStringLiteral("SELECT DocVid, DocNom, Data, Name, Kol, Edin, Suma FROM Sklad "
                                    "WHERE VidKol = ? AND Data BETWEEN ? AND ? ORDER BY Data, id"),
                     {receipts ? StockMovement::receiptKind() : StockMovement::issueKind(), period.from, period.to}))
        return *failure;
    struct Item {
        QString docVid, docNom;
        QDate data;
        QString name;
        double kol, edin;
        Money suma;
    };
    QList<Item> items;
    while (query.next()) {
        Item item{query.value(0).toString(), query.value(1).toString(), query.value(2).toDate(),
                  query.value(3).toString(), query.value(4).toDouble(), query.value(5).toDouble(),
                  Money::fromAmount(query.value(6).toDouble())};
        if (!matchesPrefix(item.name, articlePrefix) || (!receipts && !matchesPrefix(item.docVid, truckPrefix)))
            continue;
        items.append(item);
    }
    // By name, each name's movements by date.
    QStringList order;
    for (const Item &item : std::as_const(items))
        order.append(item.name);
    order.removeDuplicates();
    sortNames(order);
    QHash<QString, int> rank;
    for (int i = 0; i < order.size(); ++i)
        rank.insert(order.at(i), i);
    std::stable_sort(items.begin(), items.end(),
                     [&rank](const Item &a, const Item &b) { return rank.value(a.name) < rank.value(b.name); });

    // Each movement's money is in the currency of its day; the total in euro once any is.
    bool anyEuro = false;
    bool anyLeva = false;
    for (const Item &item : std::as_const(items))
        (books.currencyOn(item.data) == Currency::Euro ? anyEuro : anyLeva) = true;
    CurrencyTotal total(totalsCurrency(anyEuro));
    const bool mixed = anyEuro && anyLeva;
    StockList list{RowSet({QStringLiteral("Red"), QStringLiteral("DocVid"), QStringLiteral("NomData"),
                           QStringLiteral("Name"), QStringLiteral("Broi"), QStringLiteral("Edin"),
                           QStringLiteral("Suma")}),
                   {}, total.currency(), mixed, books.changeover};
    list.rows.reserveRows(static_cast<int>(items.size()));
    int red = 0;
    for (const Item &item : std::as_const(items)) {
        const QString nomData = item.docNom + QStringLiteral(" / ")
                                + (item.data.isValid() ? QStringLiteral("%1.%2.%3")
                                                             .arg(item.data.day())
                                                             .arg(item.data.month())
                                                             .arg(item.data.year())
                                                       : QString());
        // Each amount counts as printed, so the total equals the column.
        const Money suma = item.suma;
        const Currency of = books.currencyOn(item.data);
        const QString unit = mixed ? QLatin1Char(' ') + amountUnit(of) : QString();
        list.rows.appendRow({++red, item.docVid, nomData, item.name, formatFixed(item.kol, 3),
                             formatAmount(item.edin) + unit, formatAmount(suma) + unit});
        total.add(suma, of);
        if (progress && red % 256 == 0)
            progress(red, static_cast<int>(items.size()));
    }
    list.total = total.total();
    return list;
}

Checked<Report> ReportNalich(const StockList &position, const FirmProfile &firm, QDate today)
{
    Checked<Report> report = listReport(QStringLiteral("rptNalich"), position, firm);
    if (!report)
        return report;
    Report filled = report.value();
    filled.setValue(QStringLiteral("today"), formatDate(today));
    return filled;
}

Checked<Report> ReportSklad(const StockList &audit, const FirmProfile &firm, QDate today)
{
    // The town and address give way to the subject line, which is what the audit prints.
    Checked<Report> report = listReport(QStringLiteral("rptSklad"), audit, firm);
    if (!report)
        return report;
    Report filled = report.value();
    filled.setValue(QStringLiteral("today"), formatDate(today));
    return filled;
}

Checked<Report> ReportSkladPR(const StockList &movements, bool receipts, const Period &period, const FirmProfile &firm)
{
    Checked<Report> report = listReport(QStringLiteral("rptSkladPR"), movements, firm);
    if (!report)
        return report;
    Report filled = report.value();
    filled.setPeriod(period);
    filled.setValue(QStringLiteral("movements"), receipts ? QStringLiteral("приходите") : QStringLiteral("разходите"));
    filled.setValue(QStringLiteral("movementsTitle"), receipts ? QStringLiteral("Приходи") : QStringLiteral("Разходи"));
    if (receipts)
        filled.setValue(QStringLiteral("movementHeading"), QStringLiteral("Приход"));
    return filled;
}

Checked<Report> SkladReport(bool receipts, const SearchConditions &conditions, QSqlDatabase db,
                            const FirmProfile &firm, const BooksDay &books, const std::function<void(int, int)> &progress)
{
    const QString article = receipts ? conditions.SeekArtikul : conditions.SeekMarsh;
    const Checked<StockList> movements = stockMovements(db, receipts, conditions.period, article,
                                                        receipts ? QString() : conditions.SeekKola, books, progress);
    if (!movements)
        return movements.message();
    if (movements.value().rows.isEmpty())
        return noMovementsMessage(receipts);
    return ReportSkladPR(movements.value(), receipts, conditions.period, firm);
}

}
