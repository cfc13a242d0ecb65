#include "dashboard/dashboardreport.h"

#include "core/dates.h"
#include "core/formats.h"

namespace zarek::dashboard {

namespace {

QString count(int value) { return QString::number(value); }

QString money(Money amount, Currency currency) { return amountText(amount, currency); }

}

QString monthText(const Period &month) { return month.from.toString(QStringLiteral("MM.yyyy")); }

QString periodText(const Period &period) { return formatDate(period.from) + QStringLiteral(" - ") + formatDate(period.to); }

TileSheet monthSheet(const MonthComparison &months)
{
    TileSheet sheet;
    sheet.title = QStringLiteral("Месецът");
    const QList<const MonthFigures *> columns = {&months.current, &months.previous, &months.yearAgo};
    sheet.period = periodText(months.current.period) + QStringLiteral(" срещу ") + monthText(months.previous.period)
                   + QStringLiteral(" и ") + monthText(months.yearAgo.period);
    sheet.headers = {QString(), monthText(months.current.period), monthText(months.previous.period),
                     monthText(months.yearAgo.period)};
    QStringList courses = {QStringLiteral("Курсове")}, tonneKm = {QStringLiteral("Тонкилометри")},
                gross = {QStringLiteral("Бруто")}, perKm = {QStringLiteral("Бруто на км")};
    for (const MonthFigures *figures : columns) {
        courses.append(count(figures->courses));
        tonneKm.append(formatKm(figures->tonneKm));
        gross.append(money(figures->gross, figures->currency));
        perKm.append(amountText(figures->grossPerKm(), figures->currency));
    }
    sheet.rows = {courses, tonneKm, gross, perKm};
    const bool converted = std::any_of(columns.cbegin(), columns.cend(), [](const MonthFigures *f) { return f->converted; });
    if (converted)
        sheet.note = QStringLiteral("Бруто в лева преди прехода е преизчислено в евро.");
    return sheet;
}

TileSheet uninvoicedSheet(const QList<UninvoicedClient> &clients, const BooksDay &books)
{
    TileSheet sheet;
    sheet.title = QStringLiteral("За фактуриране");
    sheet.period = QStringLiteral("до ") + formatDate(books.today);
    sheet.headers = {QStringLiteral("Клиент"), QStringLiteral("Курсове"), QStringLiteral("Бруто"), QStringLiteral("От")};
    int total = 0;
    for (const UninvoicedClient &client : clients) {
        sheet.rows.append({client.klient, count(client.courses), money(client.gross, client.currency),
                           formatDate(client.period.from)});
        total += client.courses;
    }
    sheet.note = clients.isEmpty() ? QStringLiteral("Няма нефактурирани курсове.")
                                   : QStringLiteral("Нефактурирани курсове: %1").arg(total);
    return sheet;
}

TileSheet unpaidSheet(const QList<UnpaidDriver> &drivers, const BooksDay &books)
{
    TileSheet sheet;
    sheet.title = QStringLiteral("Неплатени шофьори");
    sheet.period = QStringLiteral("до ") + formatDate(books.today);
    sheet.headers = {QStringLiteral("Шофьор"), QStringLiteral("Курсове"), QStringLiteral("За плащане"), QStringLiteral("От")};
    for (const UnpaidDriver &driver : drivers) {
        const QString name = driver.name.isEmpty() ? driver.kod : driver.name;
        sheet.rows.append({name, count(driver.courses), driver.failure.isEmpty() ? money(driver.pay, driver.currency) : driver.failure,
                           formatDate(driver.period.from)});
    }
    if (drivers.isEmpty())
        sheet.note = QStringLiteral("Няма неплатени курсове.");
    return sheet;
}

TileSheet receivablesSheet(const Receivables &receivables, const BooksDay &books)
{
    TileSheet sheet;
    sheet.title = QStringLiteral("Вземания");
    sheet.period = QStringLiteral("към ") + formatDate(books.today);
    sheet.headers = {QStringLiteral("Клиент"), QStringLiteral("Просрочено"), QStringLiteral("Падеж от")};
    for (const OverdueClient &client : receivables.largest)
        sheet.rows.append({client.klient, money(client.overdue, receivables.currency), formatDate(client.oldestDue)});
    sheet.note = QStringLiteral("Открити: %1, просрочени: %2")
                     .arg(money(receivables.open, receivables.currency), money(receivables.overdue, receivables.currency));
    return sheet;
}

TileSheet documentsSheet(const DueDocuments &documents, const BooksDay &books)
{
    TileSheet sheet;
    sheet.title = QStringLiteral("Изтичащи документи");
    sheet.period = QStringLiteral("към ") + formatDate(books.today);
    sheet.headers = {QStringLiteral("Документ"), QStringLiteral("Номер"), QStringLiteral("Срок"), QStringLiteral("Остават")};
    for (const DueDocument &document : documents.nearest) {
        sheet.rows.append({document.vid + QStringLiteral(", ") + document.holder, document.nomer, formatDate(document.doKoga),
                           document.expired ? QStringLiteral("изтекъл") : QStringLiteral("%1 дни").arg(document.daysLeft)});
    }
    sheet.note = QStringLiteral("Всичко: %1, изтекли: %2").arg(documents.count).arg(documents.expired);
    return sheet;
}

TileSheet profitSheet(const TruckProfits &profits)
{
    TileSheet sheet;
    sheet.title = QStringLiteral("Печалба по коли");
    sheet.period = periodText(profits.period);
    sheet.headers = {QStringLiteral("Кола"), QStringLiteral("Приход"), QStringLiteral("Разход"), QStringLiteral("Печалба")};
    Money total;
    for (const TruckProfit &truck : profits.trucks) {
        sheet.rows.append({truck.kola, money(truck.income, profits.currency), money(truck.cost, profits.currency),
                           money(truck.profit(), profits.currency)});
        total += truck.profit();
    }
    sheet.note = QStringLiteral("Общо печалба: ") + money(total, profits.currency);
    return sheet;
}

Checked<Report> tileReport(const TileSheet &sheet, const FirmProfile &firm)
{
    Checked<Report> loaded = Report::fromDesign(QStringLiteral("rptTablo"));
    if (!loaded)
        return loaded;
    Report report = loaded.value();
    RowSet rows({QStringLiteral("c1"), QStringLiteral("c2"), QStringLiteral("c3"), QStringLiteral("c4")});
    for (const QStringList &cells : sheet.rows) {
        QList<QVariant> values;
        for (int i = 0; i < 4; ++i)
            values.append(cells.value(i));
        rows.appendRow(values);
    }
    report.setDataSource(rows);
    report.setFirm(firm);
    report.setValue(QStringLiteral("title"), sheet.title);
    report.setValue(QStringLiteral("tilePeriod"), sheet.period);
    for (int i = 0; i < 4; ++i)
        report.setValue(QStringLiteral("h%1").arg(i + 1), sheet.headers.value(i));
    report.setValue(QStringLiteral("note"), sheet.note);
    report.setSuggestedFileName(QStringLiteral("Табло - ") + sheet.title);
    return report;
}

}
