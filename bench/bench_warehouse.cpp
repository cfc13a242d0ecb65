// Prints how long the warehouse takes on 2,000 articles and 100,000 movements over four years:
// an issue that takes from 50 receipts, the stock position of every article, the audit of a year
// (and that its figures equal the per-name sums counted one name at a time), and the issues report
// of a year up to its first page drawn. SQLite always; PostgreSQL when ZAREK_TEST_PG names a server.
// Not a test: figures only. Run: QT_QPA_PLATFORM=offscreen bench_warehouse

#include "benchdata.h"
#include "core/formats.h"
#include "forms/messageservice.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "warehouse/fifo.h"
#include "warehouse/stocklists.h"
#include "warehouse/stockscreens.h"
#include "warehouse/warehousestore.h"

#include <QApplication>
#include <QHash>
#include <algorithm>
#include <ctime>

using namespace zarek;
using zarek::bench::ms;

namespace {

// Processor time of this process in ms: on a busy machine the wall clock tells the load, this the work.
double cpuMs()
{
    return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

constexpr int articleCount = 2000;
constexpr int receiptsPerArticle = 25;  // and as many issues: 100,000 movements
const QString boltName = QStringLiteral("Болт M8 (50 доставки)");

struct Row {
    qint64 id;
    QDate data;
    QString docVid, docNom, name;
    double kol, edin, suma;
    QString vidKol;
    QVariant ostat;
    bool lipsa;
};

struct Lot {
    qint64 issue, receipt;
    double kol, edin;
};

struct Stock {
    QString name;
    double edin;
    Quantity broi;
};

// Inserts rows many at a time: one statement carries up to 50 rows.
bool insertMany(QSqlDatabase db, const QString &head, int columns, const QList<QVariantList> &rows)
{
    const QString one = QStringLiteral("(") + QStringList(columns, QStringLiteral("?")).join(QLatin1Char(',')) +
                        QStringLiteral(")");
    for (qsizetype start = 0; start < rows.size(); start += 50) {
        const qsizetype count = std::min<qsizetype>(50, rows.size() - start);
        QSqlQuery query(db);
        query.prepare(head + QStringList(count, one).join(QLatin1Char(',')));
        for (qsizetype r = start; r < start + count; ++r) {
            for (const QVariant &value : rows.at(r))
                query.addBindValue(value);
        }
        if (!query.exec()) {
            std::fprintf(stderr, "insert: %s\n", qPrintable(query.lastError().text()));
            return false;
        }
    }
    return true;
}

// Receipts and issues of every article, issued first in, first out, with their lots and stock.
bool fill(QSqlDatabase db)
{
    static const QStringList kinds = {"Филтър", "Масло", "Накладки", "Крушка", "Гума", "Лагер", "Ремък", "Маркуч",
                                      "Семеринг", "Болт", "Гайка", "Шайба", "Предпазител", "Реле", "Четка", "Помпа",
                                      "Съединител", "Ауспух", "Амортисьор", "Свещ"};
    static const QStringList trucks = {"СА 1234 ВК", "РВ 5678 ВС", "РВ 9012 КМ", "СО 3456 АР", "ВТ 7890 ХА"};
    QList<Row> rows;
    QList<Lot> lots;
    QList<Stock> stock;
    qint64 id = 0;
    const QDate start(2022, 1, 1);
    for (int a = 0; a < articleCount; ++a) {
        const QString name = QStringLiteral("%1 %2").arg(kinds.at(a % kinds.size())).arg(a, 4, 10, QLatin1Char('0'));
        const double base = 0.3 + (a * 37 % 5000) / 10.0;
        QList<OpenReceipt> open;
        QHash<qint64, qsizetype> rowOf;
        double lastPrice = base;
        for (int i = 0; i < receiptsPerArticle; ++i) {
            const QDate day = start.addDays(i * 58 + a % 29);
            const double kol = 4 + (a + i) % 17;
            lastPrice = std::round(base * (0.95 + (i % 9) / 60.0) * 100) / 100;
            rows.append({++id, day, QStringLiteral("Фактура"), QString::number(10000 + id), name, kol, lastPrice,
                         std::round(kol * lastPrice * 100) / 100, QStringLiteral("P"), kol, false});
            open.append({id, 1, toQuantity(kol).value(), lastPrice});
            rowOf.insert(id, rows.size() - 1);

            Quantity available = 0;
            for (const OpenReceipt &r : std::as_const(open))
                available += r.ostat;
            const Quantity want = std::min<Quantity>(available, (3 + (a + i) % 11) * quantityScale);
            const Consumption taken = ConsumeReceipts(open, want);
            const qint64 issue = ++id;
            rows.append({issue, day.addDays(10 + a % 7), trucks.at((a + i) % trucks.size()),
                         QString::number(20000 + issue), name, quantityValue(want), *taken.averagePrice(),
                         std::round(taken.cost * 100) / 100, QStringLiteral("R"), QVariant(), true});
            for (const ReceiptAfter &after : taken.receipts) {
                Row &receipt = rows[rowOf.value(after.id)];
                receipt.ostat = quantityValue(after.ostat);
                receipt.lipsa = after.lipsa;
            }
            for (const IssueLot &lot : taken.lots)
                lots.append({issue, lot.receiptId, quantityValue(lot.quantity), lot.price});
            QList<OpenReceipt> still;
            for (const OpenReceipt &r : std::as_const(open)) {
                OpenReceipt left = r;
                for (const ReceiptAfter &after : taken.receipts) {
                    if (after.id == r.id)
                        left.ostat = after.lipsa ? -1 : after.ostat;
                }
                if (left.ostat >= 0)
                    still.append(left);
            }
            open = still;
        }
        Quantity broi = 0;
        for (const OpenReceipt &r : std::as_const(open))
            broi += r.ostat;
        stock.append({name, lastPrice, broi});
    }
    // One article of fifty small receipts, all still open, for the issue that takes from all of them.
    for (int i = 0; i < 50; ++i) {
        const double price = 0.10 + i / 100.0;
        rows.append({++id, QDate(2025, 1, 1).addDays(i * 7), QStringLiteral("Фактура"), QString::number(90000 + i),
                     boltName, 1.0, price, price, QStringLiteral("P"), 1.0, false});
    }
    stock.append({boltName, 0.59, 50 * quantityScale});

    if (!db.transaction())
        return false;
    QList<QVariantList> values;
    for (const Row &r : std::as_const(rows))
        values.append({r.id, r.data, r.docVid, r.docNom, r.name, r.kol, r.edin, r.suma, r.vidKol, r.ostat, r.lipsa});
    if (!insertMany(db, QStringLiteral("INSERT INTO Sklad (id, Data, DocVid, DocNom, Name, Kol, Edin, Suma, VidKol, "
                                       "Ostat, Lipsa) VALUES "),
                    11, values))
        return false;
    values.clear();
    for (const Lot &l : std::as_const(lots))
        values.append({l.issue, l.receipt, l.kol, l.edin});
    if (!insertMany(db, QStringLiteral("INSERT INTO SkladLots (IssueID, ReceiptID, Kol, Edin) VALUES "), 4, values))
        return false;
    values.clear();
    for (const Stock &s : std::as_const(stock))
        values.append({s.name, s.edin, quantityValue(s.broi)});
    if (!insertMany(db, QStringLiteral("INSERT INTO Nalich (Name, Edin, Broi) VALUES "), 3, values))
        return false;
    if (db.driverName() == QLatin1String("QPSQL")) {
        QSqlQuery sequence(db);
        sequence.exec(QStringLiteral("SELECT setval(pg_get_serial_sequence('sklad', 'id'), (SELECT MAX(id) FROM Sklad))"));
        sequence.exec(QStringLiteral("ANALYZE"));
    }
    return db.commit();
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values.at(values.size() / 2);
}

// The audit's figures against the sums of each name's receipts and issues in the period, added up
// here from the movements themselves.
int auditMismatches(QSqlDatabase db, const StockList &audit, const Period &year)
{
    struct Sums {
        Quantity kol = 0;
        Money suma;
    };
    QHash<QString, Sums> in, out;
    QSqlQuery query(db);
    query.setForwardOnly(true);
    query.prepare(QStringLiteral("SELECT Name, VidKol, Kol, Suma FROM Sklad WHERE Data >= ? AND Data <= ?"));
    query.addBindValue(year.from);
    query.addBindValue(year.to);
    query.exec();
    while (query.next()) {
        Sums &sums = (query.value(1).toString() == QLatin1String("P") ? in : out)[query.value(0).toString()];
        sums.kol += storedQuantity(query.value(2).toDouble());
        sums.suma += Money::fromAmount(query.value(3).toDouble());
    }
    const auto quantity = [](Quantity q) { return bulgarianLocale().toString(quantityValue(q), 'g', 15); };
    int wrong = 0;
    for (int r = 0; r < audit.rows.rowCount(); ++r) {
        const QString name = audit.rows.value(r, QStringLiteral("Name")).toString();
        const Sums p = in.value(name);
        const Sums i = out.value(name);
        const bool issued = i.kol > 0;
        if (quantity(p.kol) != audit.rows.value(r, QStringLiteral("Prihod")).toString()
            || amountText(p.suma, Currency::Leva) != audit.rows.value(r, QStringLiteral("SumaP")).toString()
            || (issued ? quantity(i.kol) : QStringLiteral("- ")) != audit.rows.value(r, QStringLiteral("Razhod")).toString()
            || (issued ? amountText(i.suma, Currency::Leva) : QStringLiteral("- "))
                   != audit.rows.value(r, QStringLiteral("SumaR")).toString()
            || quantity(p.kol - i.kol) != audit.rows.value(r, QStringLiteral("Ostatak")).toString())
            ++wrong;
    }
    return wrong;
}

void run(const QString &engine, QSqlDatabase db)
{
    QString error;
    if (!db.isOpen() || !migrateSchema(db, &error)) {
        std::printf("%s: %s\n", qPrintable(engine), qPrintable(error));
        return;
    }
    QElapsedTimer timer;
    timer.start();
    if (!fill(db))
        return;
    std::printf("%s: filled %d articles, %d movements in %.0f ms\n", qPrintable(engine), articleCount,
                articleCount * receiptsPerArticle * 2 + 50, ms(timer));

    // An issue of 50 that takes from 50 receipts, then its delete giving them back; five times.
    const WarehouseStore store(db);
    QList<double> issues;
    QList<double> issueCpu;
    QList<double> deletes;
    for (int i = 0; i < 5; ++i) {
        StockMovement issue;
        issue.data = QDate(2025, 12, 1);
        issue.docVid = QStringLiteral("СА 1234 ВК");
        issue.name = boltName;
        issue.kol = 50;
        issue.edin = 0.59;
        timer.restart();
        const double before = cpuMs();
        const Checked<StockMovement> written = store.addIssue(issue);
        issues.append(ms(timer));
        issueCpu.append(cpuMs() - before);
        if (!written) {
            std::printf("issue: %s\n", qPrintable(written.message().text));
            return;
        }
        timer.restart();
        store.removeIssue(written.value());
        deletes.append(ms(timer));
    }
    const Checked<QList<IssueLotRow>> lots = [&] {
        StockMovement issue;
        issue.data = QDate(2025, 12, 1);
        issue.docVid = QStringLiteral("СА 1234 ВК");
        issue.name = boltName;
        issue.kol = 50;
        issue.edin = 0.59;
        return store.lotsOf(store.addIssue(issue).value().id);
    }();
    std::printf("  issue of 50 from 50 receipts: %.1f ms (cpu %.1f ms; median of 5; %lld lots), its delete giving "
                "back: %.1f ms\n",
                median(issues), median(issueCpu), static_cast<long long>(lots.value().size()), median(deletes));

    RecordingMessageService messages;
    timer.restart();
    double cpu = cpuMs();
    {
        NalichSK position(QString(), db, {}, nullptr, QDate(2026, 1, 15));
        position.show();
        QCoreApplication::processEvents();
        std::printf("  NalichSK, all %d articles: %.1f ms (cpu %.1f ms) to the grid shown\n",
                    position.model()->rowCount(), ms(timer), cpuMs() - cpu);
    }

    const Period year{QDate(2025, 1, 1), QDate(2025, 12, 31)};
    timer.restart();
    cpu = cpuMs();
    const Checked<StockList> audit = stockAudit(db, year, {Changeover{}, QDate::currentDate()});
    const double auditMs = ms(timer);
    const double auditCpu = cpuMs() - cpu;
    timer.restart();
    cpu = cpuMs();
    {
        SkladSK screen(year, db, {}, nullptr, QDate(2026, 1, 15));
        screen.show();
        QCoreApplication::processEvents();
        std::printf("  SkladSK for 2025: audit %.1f ms (cpu %.1f ms), screen with the grid shown %.1f ms (cpu %.1f ms, "
                    "%d names)",
                    auditMs, auditCpu, ms(timer), cpuMs() - cpu, screen.model()->rowCount());
    }
    timer.restart();
    const int wrong = auditMismatches(db, audit.value(), year);
    std::printf("; figures against the per-name sums: %d of %d names differ (checked in %.0f ms)\n", wrong,
                audit.value().rows.rowCount(), ms(timer));

    for (const bool receipts : {false, true}) {
        SearchConditions conditions;
        conditions.period = year;
        timer.restart();
        cpu = cpuMs();
        const Checked<Report> report = SkladReport(receipts, conditions, db, {}, {Changeover{}, QDate::currentDate()});
        const double query = ms(timer);
        timer.restart();
        const LaidOutReport laid = layoutReport(report.value());
        const double layout = ms(timer);
        timer.restart();
        ReportPreview preview(laid);
        preview.show();
        QCoreApplication::processEvents();
        preview.grab();
        const double drawn = ms(timer);
        std::printf("  SkladReport %s of 2025 (%d rows, %d pages): rows %.1f ms, layout %.1f ms, first page drawn "
                    "%.1f ms, first page shown after %.1f ms (cpu %.1f ms)\n",
                    receipts ? "receipts" : "issues  ", report.value().data().rowCount(), laid.pageCount(), query,
                    layout, drawn, query + layout + drawn, cpuMs() - cpu);
    }
}

}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    bench::runOnEngines([](const QString &engine, QSqlDatabase db) { run(engine, db); });
    return 0;
}
