#include "reports/reportexport.h"
#include "data/tableexport.h"
#include "testdatabase.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

using namespace zarek;

namespace {

// Three courses of a client: a date, a name with an apostrophe and a semicolon, tonnes and money.
ExportTable courseTable()
{
    ExportTable table;
    table.titleLines = {QStringLiteral("Транспорт Петров ЕООД"), QStringLiteral("за курсовете на клиент Д'Аргос ООД")};
    table.columns = {exportColumnOf(QStringLiteral("Дата"), QStringLiteral("Short Date")),
                     exportColumnOf(QStringLiteral("Клиент"), QString()),
                     exportColumnOf(QStringLiteral("Тон."), QStringLiteral("###0.000")),
                     exportColumnOf(QStringLiteral("Сума"), QStringLiteral("0,00")),
                     exportColumnOf(QStringLiteral("Платен"), QStringLiteral("Yes/No"))};
    static const QList<QList<QVariant>> rows = {
        {QDate(2026, 3, 1), QStringLiteral("Д'Аргос ООД"), 10.0, 31.25, true},
        {QDate(2026, 3, 5), QStringLiteral("Бетон; \"Север\" АД"), 12.5, 50.0, false},
        {QDate(2026, 3, 31), QStringLiteral("  Пясък"), 7.25, 26.1, false},
    };
    table.rowCount = static_cast<int>(rows.size());
    table.cell = [](int row, int column) { return rows.at(row).at(column); };
    table.totals = {QVariant(), QVariant(), 29.75, 107.35, QVariant()};
    table.noteLines = {QStringLiteral("Бележка под сумите")};
    return table;
}

// What unzip says with the option given about the workbook (and the entry named).
QString unzipped(const QString &option, const QString &xlsx, const QString &entry = {})
{
    QProcess unzip;
    unzip.start(QStringLiteral("unzip"), QStringList{option, xlsx} + (entry.isEmpty() ? QStringList() : QStringList{entry}));
    unzip.waitForFinished();
    return QString::fromUtf8(unzip.readAllStandardOutput());
}

}

class TableExportTest : public QObject {
    Q_OBJECT
private slots:
    void csvIsUtf8WithSemicolonsDecimalCommasAndQuotesWhereNeeded()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("курсове.csv"));
        QVERIFY(!writeTable(courseTable(), file));
        const QStringList lines = test::csvLines(file);
        const QStringList expected = {
            QStringLiteral("Транспорт Петров ЕООД"),
            QStringLiteral("за курсовете на клиент Д'Аргос ООД"),
            QStringLiteral("Дата;Клиент;Тон.;Сума;Платен"),
            QStringLiteral("01.03.2026;Д'Аргос ООД;10,000;31,25;Да"),
            QStringLiteral("05.03.2026;\"Бетон; \"\"Север\"\" АД\";12,500;50,00;Не"),
            QStringLiteral("31.03.2026;\"  Пясък\";7,250;26,10;Не"),
            QStringLiteral("Всичко:;;29,750;107,35;"),
            QStringLiteral("Бележка под сумите"),
            QString(),
        };
        QCOMPARE(lines, expected);
    }

    // A text a spreadsheet would run as a formula stays text; a genuine number stays a number.
    void csvCellsThatLookLikeFormulasStayText_data()
    {
        QTest::addColumn<QString>("format");
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("cell");
        QTest::newRow("equals") << QString() << QVariant(QStringLiteral("=1+2")) << "\"'=1+2\"";
        QTest::newRow("plus") << QString() << QVariant(QStringLiteral("+cmd|' /C calc'!A0")) << "\"'+cmd|' /C calc'!A0\"";
        QTest::newRow("minus") << QString() << QVariant(QStringLiteral("-2+3")) << "\"'-2+3\"";
        QTest::newRow("at") << QString() << QVariant(QStringLiteral("@SUM(A1)")) << "\"'@SUM(A1)\"";
        QTest::newRow("tab") << QString() << QVariant(QStringLiteral("\t=1")) << "\"'\t=1\"";
        QTest::newRow("quote inside") << QString() << QVariant(QStringLiteral("=\"a\"")) << "\"'=\"\"a\"\"\"";
        QTest::newRow("negative amount") << QStringLiteral("###0.00") << QVariant(-12.5) << "-12,50";
        QTest::newRow("negative text number") << QString() << QVariant(QStringLiteral("-500")) << "-500";
        QTest::newRow("signed decimal text") << QString() << QVariant(QStringLiteral("+3,25")) << "+3,25";
        QTest::newRow("plain text") << QString() << QVariant(QStringLiteral("София - Перник")) << "София - Перник";
        QTest::newRow("a number column holding a formula") << QStringLiteral("###0.00")
                                                            << QVariant(QStringLiteral("=HYPERLINK(\"x\")"))
                                                            << "\"'=HYPERLINK(\"\"x\"\")\"";
    }
    void csvCellsThatLookLikeFormulasStayText()
    {
        QFETCH(QString, format);
        QFETCH(QVariant, value);
        QFETCH(QString, cell);
        ExportTable table;
        table.columns = {exportColumnOf(QStringLiteral("Стойност"), format)};
        table.rowCount = 1;
        table.cell = [&value](int, int) { return value; };
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("клетка.csv"));
        QVERIFY(!writeTable(table, file));
        QCOMPARE(test::csvLines(file).value(1), cell);
    }

    void xlsxKeepsNumbersAsNumbersDatesAsDatesAndTheTotalsRow()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("unzip")).isEmpty())
            QSKIP("unzip is needed to read the workbook back");
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("курсове.xlsx"));
        QVERIFY(!writeTable(courseTable(), file));
        QVERIFY(!QFile::exists(file + QStringLiteral(".part")));
        const QString sheet = unzipped(QStringLiteral("-p"), file, QStringLiteral("xl/worksheets/sheet1.xml"));
        QVERIFY2(!sheet.isEmpty(), "no sheet in the workbook");
        // Row 4 is the first course (two title lines, a blank line, the header): the date is the serial
        // number of 01.03.2026 with a date style, tonnes and money are numbers.
        const QRegularExpression firstRow(QStringLiteral("<row r=\"5\"[^>]*>(.*?)</row>"));
        const QString row = firstRow.match(sheet).captured(1);
        QVERIFY2(row.contains(QStringLiteral("<c r=\"A5\" s=\"")) && row.contains(QStringLiteral("<v>46082</v>")), qPrintable(row));
        QVERIFY2(row.contains(QRegularExpression(QStringLiteral("<c r=\"C5\"( s=\"\\d+\")?><v>10</v></c>"))), qPrintable(row));
        QVERIFY2(row.contains(QRegularExpression(QStringLiteral("<c r=\"D5\"( s=\"\\d+\")?><v>31.25</v></c>"))), qPrintable(row));
        const QString totals = QRegularExpression(QStringLiteral("<row r=\"8\"[^>]*>(.*?)</row>")).match(sheet).captured(1);
        QVERIFY2(totals.contains(QRegularExpression(QStringLiteral("<c r=\"C8\" s=\"\\d+\"><v>29.75</v></c>"))), qPrintable(totals));
        QVERIFY2(totals.contains(QRegularExpression(QStringLiteral("<c r=\"D8\" s=\"\\d+\"><v>107.35</v></c>"))), qPrintable(totals));
        QVERIFY(sheet.contains(QStringLiteral("<pane ySplit=\"4\"")));
        // Texts stand in the sheet itself or in the shared strings, escaped as XML.
        const QString texts = sheet + unzipped(QStringLiteral("-p"), file, QStringLiteral("xl/sharedStrings.xml"));
        for (const char *text : {"Всичко:", "Д'Аргос ООД", "Бетон; \"Север\" АД", "Дата", "Сума", "Бележка под сумите"}) {
            const QString plain = QString::fromUtf8(text);
            QString escaped = plain;
            escaped.replace(QLatin1Char('"'), QStringLiteral("&quot;"));
            QVERIFY2(texts.contains(plain) || texts.contains(escaped), text);
        }
    }

    void aPictureOfTheTableGoesOnASheetOfItsOwn()
    {
        if (QStandardPaths::findExecutable(QStringLiteral("unzip")).isEmpty())
            QSKIP("unzip is needed to read the workbook back");
        // The smallest PNG: one white pixel.
        const QByteArray png = QByteArray::fromBase64(
            "iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAIAAACQd1PeAAAADElEQVR4nGP4//8/AAX+Av4N70a4AAAAAElFTkSuQmCC");
        ExportTable table = courseTable();
        table.pictures.append({QStringLiteral("Бруто по месеци"), png});
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("с графика.xlsx"));
        QVERIFY(!writeTable(table, file));
        const QString entries = unzipped(QStringLiteral("-l"), file);
        QVERIFY2(entries.contains(QStringLiteral("xl/worksheets/sheet2.xml")), qPrintable(entries));
        QVERIFY2(entries.contains(QStringLiteral("xl/media/image1.png")), qPrintable(entries));
    }

    void aFileThatCannotBeWrittenIsAMessage()
    {
        for (const char *path : {"/nonexistent/folder/x.csv", "/nonexistent/folder/x.xlsx"}) {
            const auto refused = writeTable(courseTable(), QString::fromLatin1(path));
            QCOMPARE(refused ? refused->title : QStringLiteral("<none>"), QStringLiteral("ГРЕШКА при запис!"));
        }
    }

    void fileNamesLoseOnlyWhatAFileSystemRefuses_data()
    {
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "Справка за кола СА 1234 ВК" << "Справка за кола СА 1234 ВК";
        QTest::newRow("period with slashes") << "Курсове 01/03/2026 до 31/03/2026" << "Курсове 01-03-2026 до 31-03-2026";
        QTest::newRow("quotes and colon") << "Клиент \"Бетон\": март" << "Клиент -Бетон-- март";
        QTest::newRow("empty") << "  " << "Справка";
    }
    void fileNamesLoseOnlyWhatAFileSystemRefuses()
    {
        QFETCH(QString, subject);
        QFETCH(QString, name);
        QCOMPARE(exportFileName(subject), name);
    }

    void aReportBecomesItsColumnsRowsAndTotals()
    {
        const char *design = R"({"name": "rptTest", "sections": {
          "ReportHeader": {"height": 600, "controls": [
            {"name": "Label1", "left": 0, "top": 0, "width": 9000, "height": 300, "caption": "Фирма"},
            {"name": "Label3", "left": 0, "top": 300, "width": 9000, "height": 300, "caption": "Справка за кола"}]},
          "PageHeader": {"height": 300, "controls": [
            {"name": "Label100", "left": 0, "top": 0, "width": 1200, "height": 300, "caption": "Дата"},
            {"name": "Label102", "left": 1200, "top": 0, "width": 1000, "height": 300, "caption": "Сума"},
            {"name": "Label101", "left": 2200, "top": 0, "width": 3000, "height": 300, "caption": "Маршрут"}]},
          "Detail": {"height": 260, "controls": [
            {"name": "Text101", "left": 2200, "top": 0, "width": 3000, "height": 260, "dataField": "Marsh"},
            {"name": "Text100", "left": 0, "top": 0, "width": 1200, "height": 260, "dataField": "data", "format": "Short Date"},
            {"name": "Text102", "left": 1200, "top": 0, "width": 1000, "height": 260, "dataField": "bruto", "format": "0,00"}]},
          "ReportFooter": {"height": 300, "controls": [
            {"name": "Function102", "left": 1000, "top": 0, "width": 1200, "height": 300, "dataField": "bruto", "format": "0,00"}]}}})";
        Report report(parseReportDesign(QByteArray(design)).value());
        RowSet rows({QStringLiteral("data"), QStringLiteral("Marsh"), QStringLiteral("bruto")});
        rows.appendRow({QDate(2026, 3, 1), QStringLiteral("София - Перник"), 10.005});
        rows.appendRow({QDate(2026, 3, 2), QStringLiteral("Перник - София"), 20.015});
        report.setDataSource(rows);
        report.setVisible(QStringLiteral("ReportHeader"), QStringLiteral("Label1"), false);
        const ExportTable table = exportTableOf(report);
        QCOMPARE(table.titleLines, QStringList{QStringLiteral("Справка за кола")});
        QStringList captions;
        for (const ExportColumn &column : table.columns)
            captions << column.caption;
        QCOMPARE(captions, (QStringList{"Дата", "Сума", "Маршрут"}));
        QCOMPARE(table.columns.at(0).kind, ExportColumn::Kind::Date);
        QCOMPARE(table.columns.at(1).decimals, 2);
        QCOMPARE(table.rowCount, 2);
        QCOMPARE(table.cell(1, 2).toString(), QStringLiteral("Перник - София"));
        // As printed: 10,00 (half to even) + 20,02.
        QCOMPARE(table.totals.at(1).toDouble(), 30.02);
        QVERIFY(table.totals.at(0).isNull());
    }
};

QTEST_GUILESS_MAIN(TableExportTest)
#include "tst_tableexport.moc"
