#include "demodata.h"

#include "core/dates.h"
#include "core/docnumber.h"
#include "core/formats.h"
#include "app/passwordhash.h"
#include "core/rounding.h"
#include "core/valueformat.h"
#include "courses/coursestore.h"
#include "courses/tariffbands.h"
#include "app/firststart.h"
#include "clients/clientstore.h"
#include "core/eik.h"
#include "invoicing/taxinvoicestore.h"
#include "documents/documentstore.h"
#include "invoicing/taxdocument.h"
#include "receivables/receivablesstore.h"
#include "data/changeoverstore.h"
#include "data/firmstore.h"
#include "data/query.h"
#include "data/schema.h"
#include "data/sqlerror.h"
#include "data/transaction.h"
#include "international/tripstore.h"
#include "invoicing/taxdocumentreport.h"
#include "warehouse/warehousestore.h"
#include "waybills/fuelnorm.h"

#include <QSqlError>
#include <QTime>
#include <QVariant>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace zarek {

namespace {

const QString demoTitle = QStringLiteral("ГРЕШКА при създаване на демонстрационни данни!");

struct Truck {
    QString plate;
    double norm;
    double percent;
    double load;
};

struct Driver {
    QString kod;
    QString ime;
};

struct Route {
    QString name;
    int minKm;
    int maxKm;
};

class Generator {
public:
    Generator(QSqlDatabase &db, const DemoOptions &options) : m_db(db), m_options(options), m_random(options.seed) {}

    Checked<DemoSummary> run();

private:
    int between(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_random); }
    double uniform(double low, double high) { return std::uniform_real_distribution<double>(low, high)(m_random); }
    template <typename T>
    const T &pick(const std::vector<T> &items) { return items[static_cast<size_t>(between(0, int(items.size()) - 1))]; }

    bool run(Query &query, const QVariantList &values);
    bool insert(const QString &sql, const QVariantList &values);

    bool firmAndUsers();
    bool euro();
    bool trucks();
    bool drivers();
    bool tariffs();
    bool courses();
    bool history();
    bool warehouse();
    bool waybills();
    bool trips();
    bool documents();
    bool clientRegister();
    bool receivables();
    bool taxDocuments();

    QString plate();
    QString egn(QDate birth);

    QSqlDatabase &m_db;
    DemoOptions m_options;
    std::mt19937 m_random;
    std::optional<UserMessage> m_error;
    DemoSummary m_summary;
    std::vector<Truck> m_trucks;
    std::vector<Driver> m_drivers;
    TariffBands m_bands;  // in leva, as the firm priced before the euro
    Changeover m_changeover;

    // What the demo firm asks on a day: leva before its changeover, euro from it.
    Currency currencyOn(const QDate &day) const { return m_changeover.currencyOn(day, m_options.today); }
    double priceOn(double leva, const QDate &day) const { return convertPrice(leva, Currency::Leva, currencyOn(day)); }
};

bool Generator::run(Query &query, const QVariantList &values)
{
    m_error = query.run(demoTitle, values);
    return !m_error;
}

bool Generator::insert(const QString &sql, const QVariantList &values)
{
    Query query(m_db, sql);
    return run(query, values);
}

QString Generator::plate()
{
    static const std::vector<QString> regions = {QStringLiteral("СА"), QStringLiteral("СВ"), QStringLiteral("РВ"),
                                                 QStringLiteral("В"),  QStringLiteral("ВТ"), QStringLiteral("СТ"),
                                                 QStringLiteral("Е"),  QStringLiteral("Х"),  QStringLiteral("ЕН")};
    static const QString letters = QStringLiteral("АВЕКМНОРСТУХ");
    const QString series = QString(letters[between(0, 11)]) + letters[between(0, 11)];
    return QStringLiteral("%1 %2 %3").arg(pick(regions)).arg(between(1000, 9999)).arg(series);
}

QString Generator::egn(QDate birth)
{
    const int month = birth.month() + (birth.year() >= 2000 ? 40 : 0);
    QString digits = QStringLiteral("%1%2%3%4")
                         .arg(birth.year() % 100, 2, 10, QLatin1Char('0'))
                         .arg(month, 2, 10, QLatin1Char('0'))
                         .arg(birth.day(), 2, 10, QLatin1Char('0'))
                         .arg(between(0, 999), 3, 10, QLatin1Char('0'));
    static const int weights[] = {2, 4, 8, 5, 10, 9, 7, 3, 6};
    int sum = 0;
    for (int i = 0; i < 9; ++i)
        sum += digits[i].digitValue() * weights[i];
    const int check = sum % 11 == 10 ? 0 : sum % 11;
    return digits + QString::number(check);
}

bool Generator::firmAndUsers()
{
    if (!insert(QStringLiteral("INSERT INTO ZarekCfg (UserName, UserAdres, UserCity, UserCountry, UserDanN, "
                               "UserBULSTAT, UserMOL, UserEmail, UserTel, UserGSM, UserURL) "
                               "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                {QStringLiteral("Зарек Транс ЕООД"), QStringLiteral("ул. Индустриална 12"),
                 QStringLiteral("Пловдив"), QStringLiteral("България"), QStringLiteral("BG204518736"),
                 QStringLiteral("204518736"), QStringLiteral("Стоян Георгиев Колев"),
                 QStringLiteral("office@zarektrans.bg"), QStringLiteral("032 604 118"),
                 QStringLiteral("0888 604 118"), QStringLiteral("www.zarektrans.bg")}))
        return false;
    if (!insert(QStringLiteral("INSERT INTO Users (Ime, Password, Vid) VALUES (?, ?, 'A')"),
                {QString::fromLatin1(demoAdministratorName), hashPassword(QString::fromLatin1(demoAdministratorPassword))}))
        return false;
    return insert(QStringLiteral("INSERT INTO Users (Ime, Password, Vid) VALUES (?, ?, 'C')"),
                  {QStringLiteral("диспечер"), hashPassword(QStringLiteral("курс"))});
}

bool Generator::trucks()
{
    const int count = between(8, 10);
    for (int i = 0; i < count; ++i) {
        Truck truck{plate(), double(between(250, 380)) / 10.0, double(between(10, 15)), double(between(12, 25))};
        m_trucks.push_back(truck);
        if (!insert(QStringLiteral("INSERT INTO Config (kola, Razhod, Procent, Ton) VALUES (?, ?, ?, ?)"),
                    {truck.plate, truck.norm, truck.percent, truck.load}))
            return false;
    }
    m_summary.trucks = count;
    return true;
}

bool Generator::drivers()
{
    static const std::vector<QString> first = {
        QStringLiteral("Иван"),   QStringLiteral("Георги"), QStringLiteral("Димитър"), QStringLiteral("Петър"),
        QStringLiteral("Николай"), QStringLiteral("Стоян"),  QStringLiteral("Христо"),  QStringLiteral("Тодор"),
        QStringLiteral("Васил"),  QStringLiteral("Красимир"), QStringLiteral("Пламен"), QStringLiteral("Атанас")};
    static const std::vector<QString> last = {
        QStringLiteral("Иванов"),  QStringLiteral("Петров"),   QStringLiteral("Георгиев"), QStringLiteral("Димитров"),
        QStringLiteral("Стоянов"), QStringLiteral("Николов"),  QStringLiteral("Христов"),  QStringLiteral("Тодоров"),
        QStringLiteral("Колев"),   QStringLiteral("Ангелов"),  QStringLiteral("Маринов"),  QStringLiteral("Костов")};
    static const std::vector<QString> streets = {QStringLiteral("ул. Васил Левски"), QStringLiteral("бул. България"),
                                                 QStringLiteral("ул. Христо Ботев"), QStringLiteral("ул. Шипка"),
                                                 QStringLiteral("ж.к. Тракия бл.")};
    const int count = between(10, 14);
    for (int i = 0; i < count; ++i) {
        const QString father = pick(first);
        Driver driver{QStringLiteral("%1").arg(i + 1, 3, 10, QLatin1Char('0')),
                      QStringLiteral("%1 %2%3 %4").arg(pick(first), father, QStringLiteral("ов"), pick(last))};
        m_drivers.push_back(driver);
        // Drivers of 23 to 62 years: the attestation reads the birth date back from the personal number.
        const QDate birth(m_options.today.year() - between(23, 62), between(1, 12), between(1, 28));
        if (!insert(QStringLiteral("INSERT INTO shof (kod, ime, adres, tel, mob, EGN, LKarta) VALUES (?, ?, ?, ?, ?, ?, ?)"),
                    {driver.kod, driver.ime,
                     QStringLiteral("Пловдив, %1 %2").arg(pick(streets)).arg(between(1, 120)),
                     QStringLiteral("032%1").arg(between(100000, 999999)),
                     QStringLiteral("08%1%2").arg(pick(std::vector<int>{7, 8, 9})).arg(between(1000000, 9999999)),
                     egn(birth), QStringLiteral("6%1").arg(between(10000000, 99999999))}))
            return false;
    }
    m_summary.drivers = count;
    return true;
}

// A demo whose two years reach the euro has changed over on the day it came: its leva documents
// before, its euro documents after, and its prices standing in euro.
bool Generator::euro()
{
    if (m_options.today <= euroAdoptionDate())
        return true;
    m_changeover = Changeover{euroAdoptionDate()};
    if (auto failure = recordChangeover(m_db, m_changeover.date, QDateTime(m_changeover.date, QTime(7, 0)))) {
        m_error = failure;
        return false;
    }
    return true;
}

bool Generator::tariffs()
{
    m_bands = TariffBands{{0.350, 0.250, 0.180, 0.140, 0.120, 0.100}};
    QVariantList values;
    for (double rate : m_bands.rates)
        values.append(convertRate(rate, Currency::Leva, m_changeover.priceCurrency()));
    values << m_options.today << QTime(9, 30);
    return insert(QStringLiteral("INSERT INTO Tarifi (\"Trf_20\", \"Trf_20-30\", \"Trf_30-50\", \"Trf_50-100\", "
                                 "\"Trf_100-200\", \"Trf_200\", DateMod, TimeMod) VALUES (?, ?, ?, ?, ?, ?, ?, ?)"),
                  values);
}

bool Generator::courses()
{
    static const std::vector<QString> clients = {
        QStringLiteral("Агрополис ООД"),     QStringLiteral("Строймат ЕАД"),     QStringLiteral("Д'Аргос ООД"),
        QStringLiteral("Мел и Камък АД"),    QStringLiteral("Тракия Зърно ЕООД"), QStringLiteral("Бетон Юг ООД"),
        QStringLiteral("ЕТ Петров - 91"),    QStringLiteral("Марица Агро ООД"),   QStringLiteral("Родопа Дърво ЕООД"),
        QStringLiteral("Пирин Инвест АД"),   QStringLiteral("Хемус Торове ЕАД"),  QStringLiteral("Стара Планина ООД"),
        QStringLiteral("Булмел ЕООД"),       QStringLiteral("Асарел Строй ООД"),  QStringLiteral("Дунав Лоджистик АД"),
        QStringLiteral("ЕТ Колев и синове"), QStringLiteral("Тухларна Изток АД")};
    static const std::vector<Route> routes = {
        {QStringLiteral("Пловдив - Асеновград"), 18, 24},   {QStringLiteral("Пловдив - Пазарджик"), 36, 42},
        {QStringLiteral("Пловдив - Стара Загора"), 92, 102}, {QStringLiteral("Пловдив - София"), 140, 150},
        {QStringLiteral("Пловдив - Хасково"), 78, 85},      {QStringLiteral("Пловдив - Карлово"), 58, 64},
        {QStringLiteral("Пловдив - Бургас"), 250, 270},     {QStringLiteral("Пловдив - Варна"), 340, 360},
        {QStringLiteral("Раковски - Пловдив"), 20, 28},     {QStringLiteral("Кричим - Пловдив"), 26, 30},
        {QStringLiteral("Пещера - Пловдив"), 45, 52},       {QStringLiteral("Пловдив - Кърджали"), 95, 105},
        {QStringLiteral("Пловдив - Русе"), 300, 320},       {QStringLiteral("Първомай - Пловдив"), 40, 48},
        {QStringLiteral("Пловдив - Смолян"), 100, 110},     {QStringLiteral("Стамболийски - Пловдив"), 14, 19},
        {QStringLiteral("Пловдив - Ямбол"), 170, 180},      {QStringLiteral("Пловдив - Велико Търново"), 190, 205},
        {QStringLiteral("Садово - Пловдив"), 22, 26},       {QStringLiteral("Пловдив - Сливен"), 145, 155}};
    static const std::vector<QString> cargoes = {
        QStringLiteral("Пясък"),  QStringLiteral("Чакъл"),   QStringLiteral("Цимент"),          QStringLiteral("Зърно"),
        QStringLiteral("Тухли"),  QStringLiteral("Торове"),  QStringLiteral("Дървен материал"), QStringLiteral("Бетонови блокове"),
        QStringLiteral("Царевица"), QStringLiteral("Слънчоглед"), QStringLiteral("Стоманени профили"), QStringLiteral("Баластра")};

    CourseStore store(m_db);
    const int total = m_options.courses;
    const QDate start = m_options.today.addYears(-2);
    const qint64 span = start.daysTo(m_options.today);
    for (int i = 0; i < total; ++i) {
        const Truck &truck = pick(m_trucks);
        const Driver &driver = pick(m_drivers);
        const Route &route = pick(routes);
        const double km = between(1, 100) <= 5 ? 1.0 : double(between(route.minKm, route.maxKm));
        const double ton = double(between(int(truck.load * 5), int(truck.load * 10))) / 10.0;
        const QDate date = start.addDays(total > 1 ? span * i / (total - 1) : 0);

        CourseEntry entry;
        entry.driver = driver.kod + QLatin1Char(',') + driver.ime;
        entry.kola = truck.plate;
        entry.date = formatDate(date);
        entry.ton = formatFixed(ton, 1);
        entry.km = formatKm(km);
        entry.tarifa = formatRate(convertRate(m_bands.rateFor(km), Currency::Leva, currencyOn(date)));
        entry.marsh = route.name;
        entry.klient = pick(clients);
        entry.tovar = pick(cargoes);
        entry.nomFakt = noDocumentNumber();
        if (between(1, 10) == 1)
            entry.razhod = formatAmount(priceOn(double(between(1000, 9000)) / 100.0, date));
        const CourseSaveOutcome outcome = store.save(entry, {CourseMode::NewKurs, true, {}}, {m_changeover, m_options.today});
        if (!outcome.ok()) {
            m_error = outcome.message;
            return false;
        }
        if (m_options.progress && (i % 100 == 99 || i + 1 == total))
            m_options.progress(i + 1, total);
    }
    m_summary.courses = total;
    return true;
}

bool Generator::history()
{
    Transaction transaction(m_db);
    // Invoices: one per client and month for courses older than a month, numbered in date order.
    Query groups(m_db, QStringLiteral("SELECT Klient, data FROM tabl WHERE data < ? ORDER BY data, id"));
    if (!run(groups, {m_options.today.addDays(-30)}))
        return false;
    QHash<QString, QString> numbers;  // client|yyyy-MM -> invoice number
    std::vector<std::pair<QString, QDate>> keys;
    while (groups.next()) {
        const QString client = groups.value(0).toString();
        const QDate date = groups.value(1).toDate();
        const QString key = client + QLatin1Char('|') + date.toString(QStringLiteral("yyyy-MM"));
        if (!numbers.contains(key)) {
            numbers.insert(key, QStringLiteral("%1").arg(numbers.size() + 1, documentNumberLength, 10, QLatin1Char('0')));
            keys.emplace_back(key, QDate(date.year(), date.month(), 1));
        }
    }
    Query invoice(m_db,
                  QStringLiteral("UPDATE tabl SET Fakt = ?, NomFakt = ?, DateMod = ?, TimeMod = ? "
                                 "WHERE Klient = ? AND data BETWEEN ? AND ? AND data < ?"));
    for (const auto &[key, month] : keys) {
        if (!run(invoice,
                 {true, numbers.value(key), month.addMonths(1), QTime(10, 15), key.section(QLatin1Char('|'), 0, 0),
                  month, month.addMonths(1).addDays(-1), m_options.today.addDays(-30)}))
            return false;
    }
    m_summary.invoices = int(keys.size());
    // Every number issued is held once, as the invoicing screen records it at closing.
    Query issued(m_db, QStringLiteral("INSERT INTO Fakturi (NomFakt, Klient, Data) VALUES (?, ?, ?)"));
    for (const auto &[key, month] : keys) {
        if (!run(issued, {numbers.value(key), key.section(QLatin1Char('|'), 0, 0), month.addMonths(1)}))
            return false;
    }
    // The invoices issued from the changeover on were issued in euro.
    if (m_changeover.isSet()) {
        Query euroInvoice(m_db, QStringLiteral("INSERT INTO EvroFakt (NomFakt) VALUES (?)"));
        for (const auto &[key, month] : keys) {
            if (month.addMonths(1) < m_changeover.date)
                continue;
            if (!run(euroInvoice, {numbers.value(key)}))
                return false;
        }
    }
    // Drivers are paid for most courses older than three weeks.
    Query paid(m_db, QStringLiteral("UPDATE tabl SET plat = ? WHERE data < ? AND id % 17 <> 0"));
    if (!run(paid, {true, m_options.today.addDays(-20)}))
        return false;
    return transaction.commit() || (m_error = sqlErrorMessage(demoTitle, m_db.lastError()), false);
}

bool Generator::warehouse()
{
    struct Article {
        QString name;
        double price;
        int lot;
    };
    const std::vector<Article> articles = {
        {QStringLiteral("Масло двигателно 15W40"), 9.80, 40}, {QStringLiteral("Филтър маслен"), 24.50, 10},
        {QStringLiteral("Филтър горивен"), 31.20, 10},       {QStringLiteral("Гума 315/80 R22.5"), 612.00, 4},
        {QStringLiteral("Накладки спирачни"), 148.00, 6},    {QStringLiteral("Антифриз"), 6.40, 30},
        {QStringLiteral("Крушка 24V H7"), 7.90, 20},         {QStringLiteral("Акумулатор 180Ah"), 385.00, 2},
        {QStringLiteral("Шайба M12"), 0.35, 100},            {QStringLiteral("Предпазител 10A"), 0.60, 50}};
    // Every movement goes through the warehouse store, as the screens save them: each issue takes
    // first in, first out and records its lots, so the stock on hand is always the open receipts.
    QDateTime clock;
    const WarehouseStore store(m_db, [&clock] { return clock; });
    const auto failed = [this](const UserMessage &message) {
        m_error = message;
        return false;
    };
    int rows = 0;
    int invoiceNo = 3100;
    for (const Article &article : articles) {
        QDate day = m_options.today.addDays(-between(300, 360));
        while (day < m_options.today) {
            StockMovement receipt;
            receipt.data = day;
            receipt.docVid = pick(std::vector<QString>{QStringLiteral("Фактура"), QStringLiteral("Фактура"),
                                                       QStringLiteral("Разписка")});
            receipt.docNom = QString::number(++invoiceNo);
            receipt.name = article.name;
            receipt.kol = article.lot;
            receipt.edin = priceOn(roundHalfEven(article.price * uniform(0.95, 1.08), 2), day);
            clock = QDateTime(day, QTime(8, 30));
            const Checked<StockMovement> received = store.addReceipt(receipt);
            if (!received)
                return failed(received.message());
            ++rows;
            for (int issue = between(1, 3); issue > 0; --issue) {
                day = day.addDays(between(5, 25));
                if (day >= m_options.today)
                    break;
                const Checked<std::optional<StockOnHand>> stock = store.onHand(article.name);
                if (!stock)
                    return failed(stock.message());
                const double onHand = stock.value() ? quantityValue(stock.value()->broi) : 0;
                const double wanted = std::min(onHand, std::max(1.0, std::floor(article.lot * uniform(0.2, 0.5))));
                if (wanted <= 0)
                    continue;
                StockMovement out;
                out.data = day;
                out.docVid = pick(m_trucks).plate;
                out.docNom = QStringLiteral("%1").arg(between(1, 999), documentNumberLength, 10, QLatin1Char('0'));
                out.name = article.name;
                out.kol = wanted;
                // The latest receipt's price, as the dispatcher types it: in the currency of the issue's day.
                out.edin = convertPrice(stock.value()->edin, m_changeover.priceCurrency(), currencyOn(day));
                clock = QDateTime(day, QTime(14, 0));
                const Checked<StockMovement> issued = store.addIssue(out);
                if (!issued)
                    return failed(issued.message());
                ++rows;
            }
            day = day.addDays(between(20, 60));
        }
    }
    // A few repairs: cost entries of a truck with no stock behind them.
    for (int i = between(4, 8); i > 0; --i) {
        StockMovement repair;
        repair.data = m_options.today.addDays(-between(5, 330));
        repair.docVid = pick(m_trucks).plate;
        repair.docNom = QString::number(between(100, 999));
        repair.name = repairName();
        repair.kol = 1;
        repair.edin = priceOn(roundHalfEven(uniform(80, 1400), 2), repair.data);
        clock = QDateTime(repair.data, QTime(16, 0));
        const Checked<StockMovement> written = store.addIssue(repair);
        if (!written)
            return failed(written.message());
        ++rows;
    }
    m_summary.stockRows = rows;
    return true;
}

bool Generator::waybills()
{
    static const std::vector<QString> lines = {QStringLiteral("Пловдив - София"), QStringLiteral("София - Пловдив"),
                                               QStringLiteral("Пловдив - Ст. Загора"), QStringLiteral("Ст. Загора - Пловдив"),
                                               QStringLiteral("Пловдив - Пазарджик"), QStringLiteral("Пазарджик - Пловдив"),
                                               QStringLiteral("Пловдив - Бургас"), QStringLiteral("Бургас - Пловдив")};
    Transaction transaction(m_db);
    int number = 0;
    for (const Truck &truck : m_trucks) {
        double odometer = between(180000, 620000);
        for (QDate day = m_options.today.addMonths(-4); day < m_options.today; day = day.addDays(between(6, 12))) {
            const QString listId = QStringLiteral("%1").arg(++number, documentNumberLength, 10, QLatin1Char('0'));
            double sumKm = 0;
            double sumFuel = 0;
            for (int line = between(2, 5); line > 0; --line) {
                const double km = between(20, 300);
                const double ton = between(0, int(truck.load));
                const double koef = between(1, 10) == 1 ? 10.0 : 0.0;
                const double fuel = fuelnorm::normFuel(truck.norm, ton, int(km), koef);
                sumKm += km;
                sumFuel += fuel;
                if (!insert(QStringLiteral("INSERT INTO Marsh (MarshID, Marshrut, KM, Ton, Koef, RazhN) VALUES (?, ?, ?, ?, ?, ?)"),
                            {listId, pick(lines), km, ton, koef, fuel}))
                    return false;
            }
            odometer += sumKm;
            const double diesel = roundHalfEven(sumFuel * uniform(0.95, 1.08), 0);
            if (!insert(QStringLiteral("INSERT INTO RowdList (ListID, Data, Kola, NameDriver, SumKM, SumRazhN, EndKM, ZarN, "
                                       "ZarM, CenaN, CenaM) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                        {listId, day, truck.plate, pick(m_drivers).ime, sumKm, fuelnorm::fuelSum(sumFuel), odometer, diesel,
                         double(between(0, 3)), priceOn(roundHalfEven(uniform(2.35, 2.65), 2), day), priceOn(9.80, day)}))
                return false;
        }
    }
    m_summary.waybills = number;
    return transaction.commit();
}

bool Generator::trips()
{
    struct Party {
        QString name, adres, city, country;
    };
    const std::vector<Party> parties = {
        {QStringLiteral("Зарек Транс ЕООД"), QStringLiteral("ул. Индустриална 12"), QStringLiteral("Пловдив"), QStringLiteral("България")},
        {QStringLiteral("Agro Trade SRL"), QStringLiteral("Str. Fabricii 8"), QStringLiteral("Bucuresti"), QStringLiteral("Румъния")},
        {QStringLiteral("Hellas Foods SA"), QStringLiteral("Odos Lagkada 140"), QStringLiteral("Thessaloniki"), QStringLiteral("Гърция")},
        {QStringLiteral("Marmara Lojistik AS"), QStringLiteral("Cumhuriyet Cad. 55"), QStringLiteral("Istanbul"), QStringLiteral("Турция")},
        {QStringLiteral("Beograd Metal DOO"), QStringLiteral("Bulevar Oslobodjenja 20"), QStringLiteral("Beograd"), QStringLiteral("Сърбия")},
        {QStringLiteral("Bau Handel GmbH"), QStringLiteral("Industriestr. 4"), QStringLiteral("Nürnberg"), QStringLiteral("Германия")},
        {QStringLiteral("Мелница Тракия АД"), QStringLiteral("ул. Първа 3"), QStringLiteral("Раковски"), QStringLiteral("България")}};
    static const std::vector<QString> goods = {QStringLiteral("Пшеница"), QStringLiteral("Слънчогледово олио"),
                                               QStringLiteral("Стоманена арматура"), QStringLiteral("Плочки"),
                                               QStringLiteral("Консерви")};
    // A few trailers the fleet pulls abroad, each trip one of them.
    std::vector<QString> trailers;
    for (int i = 0; i < 4; ++i)
        trailers.push_back(plate());
    // Each trip is saved as the trip editor saves it: its sender and receiver join the address book.
    TripStore store(m_db);
    const int count = between(10, 20);
    for (int i = 0; i < count; ++i) {
        const Party &from = parties[static_cast<size_t>(between(0, 1) ? 0 : 6)];
        const Party &to = parties[static_cast<size_t>(between(1, 5))];
        const double km = between(350, 2100);
        const double fuel = roundHalfEven(km * uniform(0.30, 0.36), 0);
        const double income = roundHalfEven(km * uniform(1.9, 2.4), 2);
        const QDate day = m_options.today.addDays(-between(5, 600));
        const QVariantList values{
            QStringLiteral("%1").arg(4100 + i, documentNumberLength, 10, QLatin1Char('0')),
            day, pick(m_drivers).ime, pick(m_trucks).plate, pick(trailers),
            pick(goods), double(between(10, 24)), fuel, km, from.name, from.adres, from.city, from.country, to.name,
            to.adres, to.city, to.country, from.city, from.country, to.city, to.country, priceOn(income, day),
            priceOn(roundHalfEven(fuel * 2.5 + km * 0.25, 2), day)};
        RecordRow trip;
        for (int column = 0; column < tripColumns().size(); ++column)
            trip.values.insert(tripColumns().at(column), values.at(column));
        const Checked<RecordRow> saved = store.save(trip, true, demoTitle);
        if (!saved) {
            m_error = saved.message();
            return false;
        }
    }
    m_summary.trips = count;
    return true;
}

// The documents of every truck and driver, saved as the document form saves them: most valid for
// a while yet, a few due and one or two expired, so that the due list and the sign-in notice show.
bool Generator::documents()
{
    const documents::DocumentStore store(m_db);
    const auto kinds = store.kinds();
    if (!kinds) {
        m_error = kinds.message();
        return false;
    }
    const QDate today = m_options.today;
    int count = 0;
    const auto save = [&](const documents::DocumentKind &kind, const QString &holder, const QString &issuer,
                          const std::optional<RecordRow> &renewed = std::nullopt, int daysLeft = -1) -> std::optional<RecordRow> {
        // Mostly far ahead; now and then due (within the warning) or a few days past.
        if (daysLeft < 0) {
            const int roll = between(1, 100);
            daysLeft = roll <= 4 ? -between(1, 9) : roll <= 14 ? between(0, kind.warnDays) : between(kind.warnDays + 1, 360);
        }
        QDate valid = today.addDays(daysLeft);
        QDate issued = kind.months > 0 ? valid.addDays(1).addMonths(-kind.months) : valid.addDays(-kind.days);
        if (!kind.expires()) {
            issued = today.addDays(-between(200, 2000));
            valid = QDate();
        }
        RecordRow row;
        row.values = {{QStringLiteral("Vid"), kind.name},
                      {QStringLiteral("Kod"), holder},
                      {QStringLiteral("Nomer"), QString::number(between(100000, 999999))},
                      {QStringLiteral("Izdaden"), issued},
                      {QStringLiteral("Valid"), valid.isValid() ? QVariant(valid) : QVariant(QMetaType(QMetaType::QDate))},
                      {QStringLiteral("Izdatel"), issuer},
                      {QStringLiteral("Belejka"), QString()}};
        const Checked<RecordRow> saved = store.save(row, true, kinds.value(), today, renewed, demoTitle);
        if (!saved) {
            m_error = saved.message();
            return std::nullopt;
        }
        ++count;
        return saved.value();
    };
    for (const documents::DocumentKind &kind : kinds.value()) {
        const bool truck = kind.holder == documents::Holder::Truck;
        const QString issuer = truck ? (kind.name.contains(QStringLiteral("Застраховка")) || kind.name.contains(QStringLiteral("отговорност"))
                                            ? QStringLiteral("ЗД Бул Инс АД")
                                            : QStringLiteral("КТП Пловдив"))
                                     : QStringLiteral("ИА Автомобилна администрация");
        if (kind.name.contains(QStringLiteral("над 10 г.")) || kind.name.contains(QStringLiteral("ADR")))
            continue;  // the younger trucks' inspection and the dangerous goods stand apart below
        if (truck) {
            for (const Truck &t : m_trucks) {
                if (!save(kind, t.plate, issuer))
                    return false;
            }
        } else {
            for (const Driver &d : m_drivers) {
                if (!save(kind, d.kod, issuer))
                    return false;
            }
        }
    }
    // Two drivers carry dangerous goods; one truck's CMR insurance was renewed last year.
    for (const documents::DocumentKind &kind : kinds.value()) {
        if (kind.name.contains(QStringLiteral("ADR"))) {
            for (size_t i = 0; i < std::min<size_t>(2, m_drivers.size()); ++i) {
                if (!save(kind, m_drivers[i].kod, QStringLiteral("ИА Автомобилна администрация")))
                    return false;
            }
        }
        if (kind.name == QStringLiteral("Застраховка CMR") && !m_trucks.empty()) {
            const auto old = save(kind, m_trucks.front().plate, QStringLiteral("ЗД Бул Инс АД"), std::nullopt, 0);
            if (!old)
                return false;
            // The renewal follows on from the old policy's last day.
            const QDate from = today.addDays(1);
            RecordRow row = *old;
            row.id = 0;
            row.values.insert(QStringLiteral("Izdaden"), from);
            row.values.insert(QStringLiteral("Valid"), documents::proposedValidUntil(kind, from));
            row.values.insert(QStringLiteral("Nomer"), QString::number(between(100000, 999999)));
            const Checked<RecordRow> renewal = store.save(row, true, kinds.value(), today, *old, demoTitle);
            if (!renewal) {
                m_error = renewal.message();
                return false;
            }
            ++count;
        }
    }
    m_summary.documents = count;
    return true;
}

// The register of the clients the courses name, with their data for the invoices, and the firm's
// bank account and issuer. Each goes through the register's store, so every ЕИК passes its check.
bool Generator::clientRegister()
{
    struct DemoClient {
        const char *name, *eik, *address, *town, *mol;
        bool vat;
        int term;
    };
    static const DemoClient demoClients[] = {
        {"Агрополис ООД", "104431141", "ул. Стефан Караджа 9", "Пловдив", "Иван Петров Димов", true, 30},
        {"Строймат ЕАД", "205456230", "бул. Цар Борис III 120", "София", "Мария Георгиева Тодорова", true, 15},
        {"Д'Аргос ООД", "117191963", "ул. Шипка 14", "Русе", "Петър Николов Аргиров", true, 30},
        {"Мел и Камък АД", "170750746", "Промишлена зона Север", "Стара Загора", "Никола Иванов Стоев", true, 45},
        {"Тракия Зърно ЕООД", "169593828", "ул. Иван Вазов 3", "Асеновград", "Георги Илиев Танев", true, 30},
        {"Бетон Юг ООД", "126408120", "ул. Индустриална 40", "Хасково", "Стефан Колев Русев", true, 20},
        {"ЕТ Петров - 91", "102480200", "ул. Христо Ботев 21", "Карлово", "Димитър Петров Иванов", false, 7},
        {"Марица Агро ООД", "102599610", "ул. Марица 5", "Първомай", "Елена Стоянова Маринова", true, 30},
        {"Родопа Дърво ЕООД", "137750520", "ул. Родопи 18", "Смолян", "Васил Ангелов Кехайов", true, 30},
        {"Пирин Инвест АД", "132758082", "бул. Македония 33", "Благоевград", "Христина Методиева Стоянова", true, 60},
        {"Хемус Торове ЕАД", "112378158", "ул. Тракия 2", "Пазарджик", "Тодор Минчев Хаджиев", true, 30},
        {"Стара Планина ООД", "830651448", "ул. Възраждане 7", "Габрово", "Радослав Денев Пенчев", true, 30},
        {"Булмел ЕООД", "201477483", "ул. Гладстон 11", "Пловдив", "Калина Веселинова Ганева", true, 14},
        {"Асарел Строй ООД", "129043787", "ул. Оборище 4", "Панагюрище", "Борислав Тодоров Мишев", true, 30},
        {"Дунав Лоджистик АД", "201090536", "Пристанище Русе Изток", "Русе", "Антон Кирилов Донев", true, 45},
        {"ЕТ Колев и синове", "139108660", "ул. Шести септември 16", "Кърджали", "Колю Кирчев Колев", false, 0},
        {"Тухларна Изток АД", "100250930", "Промишлена зона", "Шумен", "Яна Петкова Добрева", true, 30},
    };
    const clients::ClientStore store(m_db);
    for (const DemoClient &client : demoClients) {
        RecordRow row;
        const QString eik = QString::fromLatin1(client.eik);
        row.values = {{QStringLiteral("Ime"), QString::fromUtf8(client.name)},
                      {QStringLiteral("EIK"), eik},
                      {QStringLiteral("DDSNomer"), client.vat ? QStringLiteral("BG") + eik : QString()},
                      {QStringLiteral("Adres"), QString::fromUtf8(client.address)},
                      {QStringLiteral("Grad"), QString::fromUtf8(client.town)},
                      {QStringLiteral("Darzhava"), QStringLiteral("България")},
                      {QStringLiteral("MOL"), QString::fromUtf8(client.mol)},
                      {QStringLiteral("Tel"), QStringLiteral("0%1 %2").arg(between(30, 99)).arg(between(100000, 999999))},
                      {QStringLiteral("Email"), QStringLiteral("office@client%1.bg").arg(eik.right(4))},
                      {QStringLiteral("SrokDni"), client.term}};
        const Checked<RecordRow> written = store.save(row, true, demoTitle);
        if (!written) {
            m_error = written.message();
            return false;
        }
    }
    return insert(QStringLiteral("UPDATE ZarekCfg SET UserIBAN = ?, UserBank = ?, UserBIC = ?, UserMiasto = ?, UserSastavil = ?"),
                  {QStringLiteral("BG05FINV91501004512345"), QStringLiteral("Първа инвестиционна банка АД"),
                   QStringLiteral("FINVBGSF"), QStringLiteral("Пловдив"), QStringLiteral("Стоян Георгиев Колев")});
}

// Payments from clients against the demo's invoices: most paid, some in part, some overdue, one
// paid twice over (the client's credit). Where no invoice was issued yet, a few are issued here,
// numbered on from the one sequence.
bool Generator::receivables()
{
    const Checked<QVariant> issued = scalar(m_db, demoTitle, QStringLiteral("SELECT COUNT(*) FROM FaktDok"));
    if (!issued)
        return (m_error = issued.message(), false);
    const QDate today = m_options.today;
    if (issued.value().toLongLong() == 0) {
        const Checked<RowSet> names = readRows(m_db, demoTitle, QStringLiteral("SELECT Ime FROM Klienti ORDER BY Ime"));
        if (!names)
            return (m_error = names.message(), false);
        const Checked<QVariant> last =
            scalar(m_db, demoTitle, QStringLiteral("SELECT Posleden FROM Nomerator WHERE Ime = 'fakturi'"));
        if (!last)
            return (m_error = last.message(), false);
        qint64 number = last.value().toLongLong();
        for (int row = 0; row < std::min(6, names.value().rowCount()); ++row) {
            const QString client = names.value().value(row, 0).toString();
            for (int invoice = 0; invoice < 8; ++invoice) {
                const QDate day = today.addDays(-between(5, 200));
                const qint64 base = qint64(between(40000, 600000));
                const qint64 vat = (base * 20 + 50) / 100;
                if (!insert(QStringLiteral("INSERT INTO FaktDok (Nomer, Vid, Data, DataDan, Klient, Valuta, DDSProcent, "
                                           "Osnova, DDS, Obshto, NachinPlashtane, SrokDni, DataPadej) "
                                           "VALUES (?, 'F', ?, ?, ?, ?, 20, ?, ?, ?, ?, 30, ?)"),
                            {QStringLiteral("%1").arg(++number, 10, 10, QLatin1Char('0')), day, day, client,
                             currencyCode(currencyOn(day)), base, vat, base + vat, QStringLiteral("По банков път"),
                             day.addDays(30)}))
                    return false;
            }
        }
        if (!insert(QStringLiteral("UPDATE Nomerator SET Posleden = ? WHERE Ime = 'fakturi'"), {number}))
            return false;
    }
    const Checked<RowSet> invoices =
        readRows(m_db, demoTitle,
                 QStringLiteral("SELECT Klient, Data, Valuta, Obshto FROM FaktDok WHERE Vid = 'F' ORDER BY Data, Nomer"));
    if (!invoices)
        return (m_error = invoices.message(), false);
    bool overpaid = false;
    for (int row = 0; row < invoices.value().rowCount(); ++row) {
        const int chance = between(1, 10);
        if (chance > 7)
            continue;  // not paid yet
        const QDate issuedOn = invoices.value().value(row, 1).toDate().isValid()
                                   ? invoices.value().value(row, 1).toDate()
                                   : QDate::fromString(invoices.value().value(row, 1).toString().left(10), Qt::ISODate);
        const QDate paidOn = issuedOn.addDays(between(3, 45));
        if (paidOn > today)
            continue;
        qint64 cents = invoices.value().value(row, 3).toLongLong();
        if (chance > 5)
            cents = cents / 2;  // in part
        else if (!overpaid && chance == 1)
            cents *= 2, overpaid = true;
        receivables::PaymentEntry entry;
        entry.date = paidOn;
        entry.client = invoices.value().value(row, 0).toString();
        entry.amount = Money::fromCents(cents);
        entry.currency = currencyFromCode(invoices.value().value(row, 2).toString());
        entry.way = between(0, 3) == 0 ? QLatin1Char('C') : QLatin1Char('B');
        entry.reference = QStringLiteral("ПН %1").arg(between(100000, 999999));
        const auto recorded = receivables::recordPayment(m_db, entry);
        if (!recorded)
            return (m_error = recorded.message(), false);
    }
    return true;
}

namespace {

// A valid nine-digit ЕИК from a seed.
QString demoEik(quint32 seed)
{
    const QString digits = QStringLiteral("%1").arg(100000000 + seed % 89999999, 8, 10, QLatin1Char('0')).right(8);
    return digits + QString::number(eikNinthDigit(digits));
}

}

// The tax documents of the newest invoices: each with its courses as lines, as issued on the first
// of the month after; a credit note taking a course off the last of them; an invoice at 0 % to a
// haulier in another EU state; a payment settling the oldest.
bool Generator::taxDocuments()
{
    const FirmProfileLoad firm = LoadFirmProfile(m_db);
    if (!firm.profile)
        return true;
    const FirmProfile &f = *firm.profile;
    TaxParty supplier{f.UserName, f.UserBULSTAT.trimmed(), f.UserDanN.trimmed(), f.UserAdres, f.UserCity,
                      f.UserCountry.trimmed(), f.UserMOL};
    const auto fill = [&](TaxDocument &doc) {
        doc.supplier = supplier;
        doc.supplierIban = f.UserIBAN.isEmpty() ? QStringLiteral("BG80BNBG96611020345678") : f.UserIBAN;
        doc.supplierBank = f.UserBank.isEmpty() ? QStringLiteral("Българска народна банка") : f.UserBank;
        doc.supplierBic = f.UserBIC.isEmpty() ? QStringLiteral("BNBGBGSD") : f.UserBIC;
        doc.place = f.UserMiasto.isEmpty() ? f.UserCity : f.UserMiasto;
        doc.issuer = f.UserSastavil.isEmpty() ? f.UserMOL : f.UserSastavil;
        doc.paymentMethod = QStringLiteral("по банков път");
    };
    Query newest(m_db, QStringLiteral("SELECT NomFakt, Klient, Data FROM Fakturi ORDER BY NomFakt DESC"));
    if (!run(newest, {}))
        return false;
    struct Issued { QString number, client; QDate date; };
    std::vector<Issued> issued;
    while (newest.next() && issued.size() < 6)
        issued.push_back({newest.value(0).toString(), newest.value(1).toString(), dateOfValue(newest.value(2))});
    if (issued.empty())
        return true;
    std::reverse(issued.begin(), issued.end());
    static const std::vector<QString> towns = {QStringLiteral("Пловдив"), QStringLiteral("София"),
                                               QStringLiteral("Стара Загора"), QStringLiteral("Пазарджик")};
    QList<TaxDocument> invoices;
    for (const Issued &one : issued) {
        TaxDocument doc;
        fill(doc);
        doc.number = one.number;
        doc.kind = TaxDocumentKind::Invoice;
        doc.issued = one.date;
        const quint32 seed = qHash(one.client);
        doc.recipient = {one.client, demoEik(seed), {}, QStringLiteral("ул. Васил Левски %1").arg(seed % 90 + 1),
                         towns[seed % towns.size()], QStringLiteral("България"), QStringLiteral("Иван Петров")};
        doc.recipient.vatNumber = QStringLiteral("BG") + doc.recipient.eik;
        // A client of the register is invoiced with its data there, as closing does.
        Query registered(m_db, QStringLiteral("SELECT id, EIK, DDSNomer, Adres, Grad, Darzhava, MOL FROM Klienti WHERE Ime = ?"));
        if (!run(registered, {one.client.trimmed()}))
            return false;
        if (registered.next()) {
            doc.clientId = registered.value(0).toLongLong();
            doc.recipient = {one.client.trimmed(), registered.value(1).toString(), registered.value(2).toString(),
                             registered.value(3).toString(), registered.value(4).toString(),
                             registered.value(5).toString(), registered.value(6).toString()};
        }
        doc.currency = currencyOn(one.date);
        doc.vatPercent = 20;
        doc.termDays = 30;
        doc.due = one.date.addDays(30);
        Query courses(m_db, QStringLiteral("SELECT id, data, Marsh, Tovar, ton, bruto FROM tabl WHERE NomFakt = ? "
                                           "ORDER BY data, id"));
        if (!run(courses, {one.number}))
            return false;
        while (courses.next()) {
            const QDate day = dateOfValue(courses.value(1));
            const Money amount = convertAmount(Money::fromAmount(courses.value(5).toDouble()), currencyOn(day),
                                               doc.currency);
            TaxLine line{static_cast<int>(doc.lines.size()) + 1, courses.value(0).toLongLong(), day,
                         QStringLiteral("Превоз на %1, %2, %3 т, %4")
                             .arg(courses.value(3).toString().toLower(), courses.value(2).toString(),
                                  formatTonnes(courses.value(4).toDouble()), formatDate(day)),
                         1, QStringLiteral("курс"), amount.toDouble(), amount};
            doc.lines.append(line);
            doc.base += amount;
            doc.taxEvent = day;
        }
        if (doc.lines.isEmpty())
            continue;
        doc.vat = vatOn(doc.base, doc.vatPercent);
        doc.total = doc.base + doc.vat;
        if (auto failure = writeTaxDocument(m_db, doc)) {
            m_error = failure;
            return false;
        }
        invoices.append(doc);
    }
    if (invoices.isEmpty())
        return true;
    qint64 last = 0;
    for (const TaxDocument &doc : invoices)
        last = std::max(last, doc.number.toLongLong());
    const auto nextNumber = [&last] { return QStringLiteral("%1").arg(++last, documentNumberLength, 10, QLatin1Char('0')); };

    // The last course of the newest invoice of most courses was not the client's: a credit note takes it off.
    const TaxDocument &wrong = *std::max_element(invoices.cbegin(), invoices.cend(), [](const TaxDocument &a, const TaxDocument &b) {
        return a.lines.size() <= b.lines.size();
    });
    TaxDocument credit;
    fill(credit);
    credit.number = nextNumber();
    credit.kind = TaxDocumentKind::CreditNote;
    credit.issued = std::min(m_options.today, wrong.issued.addDays(5));
    credit.taxEvent = credit.issued;
    credit.invoiceId = wrong.id;
    credit.invoiceNumber = wrong.number;
    credit.invoiceDate = wrong.issued;
    credit.reason = QStringLiteral("Курсът е фактуриран погрешно на този клиент");
    credit.recipient = wrong.recipient;
    credit.clientId = wrong.clientId;
    credit.currency = wrong.currency;
    credit.vatPercent = wrong.vatPercent;
    credit.lines = {wrong.lines.last()};
    credit.lines.first().position = 1;
    credit.base = credit.lines.first().amount;
    credit.vat = vatOn(credit.base, credit.vatPercent);
    credit.total = credit.base + credit.vat;
    credit.due = credit.issued;
    if (auto failure = writeTaxDocument(m_db, credit)) {
        m_error = failure;
        return false;
    }
    if (!insert(QStringLiteral("INSERT INTO Pogasiavania (DokID, KreditID, Data, Suma) VALUES (?, ?, ?, ?)"),
                {wrong.id, credit.id, credit.issued, credit.total.cents()}))
        return false;

    // International carriage for a haulier in another EU state: 0 %, the recipient accounts for the VAT.
    TaxDocument abroad;
    fill(abroad);
    abroad.number = nextNumber();
    abroad.issued = std::max(credit.issued, m_options.today.addDays(-10));
    abroad.taxEvent = abroad.issued.addDays(-2);
    abroad.recipient = {QStringLiteral("Transalp Spedition GmbH"), QStringLiteral("FN 214873k"),
                        QStringLiteral("ATU63482917"), QStringLiteral("Industriestraße 21"),
                        QStringLiteral("4020 Linz"), QStringLiteral("Австрия"), QStringLiteral("Markus Huber")};
    abroad.currency = currencyOn(abroad.issued);
    abroad.vatPercent = 0;
    abroad.zeroVatGround = zeroVatGrounds().first();
    abroad.termDays = 15;
    abroad.due = abroad.issued.addDays(15);
    const Money price = Money::fromAmount(abroad.currency == Currency::Euro ? 1850.0 : 3618.29);
    abroad.lines = {{1, 0, abroad.taxEvent, QStringLiteral("Международен превоз на стоки Пловдив - Линц, CMR 0000004711"),
                     1, QStringLiteral("курс"), price.toDouble(), price}};
    abroad.base = price;
    abroad.total = price;
    if (auto failure = writeTaxDocument(m_db, abroad)) {
        m_error = failure;
        return false;
    }

    // The oldest invoice is paid in full by bank transfer, the next one in part.
    for (int i = 0; i < std::min<int>(2, int(invoices.size()) - 1); ++i) {
        const TaxDocument &paid = invoices.at(i);
        const Money amount = i == 0 ? paid.total : Money::fromCents(paid.total.cents() / 2);
        const QDate day = std::min(m_options.today, paid.issued.addDays(12));
        if (!insert(QStringLiteral("INSERT INTO Plashtania (Data, Klient, Suma, Valuta, Nachin, Referencia) "
                                   "VALUES (?, ?, ?, ?, 'B', ?)"),
                    {day, paid.recipient.name, amount.cents(), currencyCode(paid.currency),
                     QStringLiteral("по фактура ") + paid.number}))
            return false;
        Query payment(m_db, QStringLiteral("SELECT MAX(id) FROM Plashtania"));
        if (!run(payment, {}) || !payment.next())
            return false;
        if (!insert(QStringLiteral("INSERT INTO Pogasiavania (DokID, PlashtaneID, Data, Suma) VALUES (?, ?, ?, ?)"),
                    {paid.id, payment.value(0).toLongLong(), day, amount.cents()}))
            return false;
    }
    return insert(QStringLiteral("UPDATE Nomerator SET Posleden = ? WHERE Ime = 'fakturi' AND Posleden < ?"), {last, last});
}

Checked<DemoSummary> Generator::run()
{
    const bool done = firmAndUsers() && euro() && trucks() && drivers() && tariffs() && courses() && history()
                      && warehouse() && waybills() && trips() && documents() && clientRegister()
                      && taxDocuments() && receivables();
    if (!done)
        return m_error.value_or(sqlErrorMessage(demoTitle, m_db.lastError()));
    return m_summary;
}

}

Checked<DemoSummary> fillDemoDatabase(QSqlDatabase &db, const DemoOptions &options)
{
    // All or nothing: one transaction under the write lock, so a generation cut off by a kill
    // leaves the database as new as it was, and of two copies choosing the demo at once only the
    // first makes it (the second finds data by then and is refused).
    Transaction transaction(db, Transaction::Lock::Writer);
    if (!transaction.isActive())
        return transaction.timedOut() ? databaseBusyMessage() : sqlErrorMessage(demoTitle, transaction.lastError());
    if (readStartState(db).hasData)
        return databaseHoldsDataMessage();
    Generator generator(db, options);
    const Checked<DemoSummary> summary = generator.run();
    if (!summary)
        return summary;
    if (!transaction.commit())
        return sqlErrorMessage(demoTitle, transaction.lastError());
    return summary;
}

std::optional<UserMessage> writeTaxDocument(QSqlDatabase db, TaxDocument &document)
{
    const auto text = [](const QString &value) { return value.trimmed().isEmpty() ? QVariant() : QVariant(value); };
    const auto date = [](const QDate &day) { return day.isValid() ? QVariant(day) : QVariant(); };
    Query header(db, QStringLiteral(
                         "INSERT INTO FaktDok (Nomer, Vid, Data, DataDan, KamID, KamNomer, DataKam, Prichina, DostIme, "
                         "DostEIK, DostDDS, DostAdres, DostGrad, DostDarzhava, DostMOL, DostIBAN, DostBank, DostBIC, "
                         "Miasto, Sastavil, KlientID, Klient, PolEIK, PolDDS, PolAdres, PolGrad, PolDarzhava, PolMOL, "
                         "Valuta, DDSProcent, Osnova, DDS, Obshto, OsnovanieNula, NachinPlashtane, SrokDni, DataPadej) "
                         "VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                         "?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    const TaxParty &s = document.supplier;
    const TaxParty &r = document.recipient;
    if (auto failure = header.run(
            demoTitle,
            {document.number, QString(kindCode(document.kind)), document.issued, document.taxEvent,
             document.invoiceId > 0 ? QVariant(document.invoiceId) : QVariant(), text(document.invoiceNumber),
             date(document.invoiceDate), text(document.reason), text(s.name), text(s.eik), text(s.vatNumber),
             text(s.address), text(s.town), text(s.country), text(s.mol), text(document.supplierIban),
             text(document.supplierBank), text(document.supplierBic), text(document.place), text(document.issuer),
             document.clientId > 0 ? QVariant(document.clientId) : QVariant(), r.name, text(r.eik), text(r.vatNumber),
             text(r.address), text(r.town), text(r.country), text(r.mol), currencyCode(document.currency),
             document.vatPercent, document.base.cents(), document.vat.cents(), document.total.cents(),
             text(document.zeroVatGround), text(document.paymentMethod), document.termDays, document.due}))
        return failure;
    Query id(db, QStringLiteral("SELECT id FROM FaktDok WHERE Nomer = ?"));
    if (auto failure = id.run(demoTitle, {document.number}))
        return failure;
    if (!id.next())
        return UserMessage{demoTitle, QStringLiteral("Документът не е записан.")};
    document.id = id.value(0).toLongLong();
    Query line(db, QStringLiteral("INSERT INTO FaktRed (DokID, Red, KursID, DataKurs, Opisanie, Kol, Edinica, Cena, "
                                  "Suma) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    for (const TaxLine &one : document.lines) {
        if (auto failure = line.run(demoTitle, {document.id, one.position,
                                                one.courseId > 0 ? QVariant(one.courseId) : QVariant(),
                                                date(one.courseDate), one.description, one.quantity, text(one.unit),
                                                one.unitPrice, one.amount.cents()}))
            return failure;
    }
    return std::nullopt;
}

}
