#include "core/formats.h"
#include "core/version.h"
#include "forms/messageservice.h"
#include "reports/report.h"
#include "core/valueformat.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "reports/reportrenderer.h"
#include "laidoutpapers.h"
#include "screendriver.h"
#include "testdatabase.h"

#include <QBuffer>
#include <QComboBox>
#include <QRegularExpression>
#include <QSpinBox>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace zarek;

namespace {

// A small landscape list: a title, three columns, a total of the amounts and page numbers.
const char *listDesign = R"({
 "name": "rptTest", "caption": "Проба",
 "page": {"orientation": "landscape", "leftMargin": 1000, "rightMargin": 1000, "topMargin": 567, "bottomMargin": 600},
 "sections": {
  "ReportHeader": {"height": 800, "controls": [
    {"name": "Label1", "left": 0, "top": 0, "width": 14000, "height": 300, "caption": "Фирма"},
    {"name": "Label3", "left": 0, "top": 350, "width": 14000, "height": 400, "caption": "Справка", "align": "center"}]},
  "PageHeader": {"height": 320, "font": {"bold": true}, "controls": [
    {"name": "Label100", "left": 0, "top": 20, "width": 2000, "height": 280, "caption": "Име"},
    {"name": "Label101", "left": 2000, "top": 20, "width": 3000, "height": 280, "caption": "Бележка"},
    {"name": "Label102", "left": 5000, "top": 20, "width": 1500, "height": 280, "caption": "Сума", "align": "right"}]},
  "Detail": {"height": 260, "controls": [
    {"name": "Text100", "left": 0, "top": 0, "width": 2000, "height": 260},
    {"name": "Text101", "left": 2000, "top": 0, "width": 3000, "height": 260},
    {"name": "Text102", "left": 5000, "top": 0, "width": 1500, "height": 260, "format": "0,00", "align": "right"}]},
  "PageFooter": {"height": 300, "controls": [
    {"name": "Label6", "left": 0, "top": 20, "width": 3000, "height": 260, "caption": "Зарек"},
    {"name": "PageNumber1", "kind": "PageNumber", "left": 5000, "top": 20, "width": 4000, "height": 260,
     "caption": "Страница %1 от %2", "align": "center"}]},
  "ReportFooter": {"height": 400, "font": {"bold": true}, "controls": [
    {"name": "Label500", "left": 0, "top": 50, "width": 2000, "height": 300, "caption": "Всичко"},
    {"name": "Function102", "left": 3500, "top": 50, "width": 3000, "height": 300, "format": "0,00", "align": "right"}]}
 }
})";

// A paper declared whole in its design: the firm block, the period line, the columns, a total
// with a format handed over, a composed total line and the note under it.
const char *declaredDesign = R"({
 "name": "rptDeclared", "caption": "Зарек {version} - {title}",
 "sections": {
  "ReportHeader": {"height": 1000, "controls": [
    {"name": "Label1", "left": 0, "top": 0, "width": 9000, "height": 300, "text": "{UserName}"},
    {"name": "Label9", "left": 0, "top": 300, "width": 9000, "height": 300, "text": "{firmContact}"},
    {"name": "Label5", "left": 0, "top": 600, "width": 9000, "height": 300, "text": "{period}", "hiddenWhenEmpty": true}]},
  "Detail": {"height": 260, "controls": [
    {"name": "Text100", "left": 0, "top": 0, "width": 2000, "height": 260, "dataField": "name"},
    {"name": "Text101", "left": 2000, "top": 0, "width": 2000, "height": 260, "dataField": "amount", "format": "0,00",
     "align": "right", "amountWithUnit": true}]},
  "ReportFooter": {"height": 1000, "notesUnder": "Label8", "controls": [
    {"name": "Function101", "left": 2000, "top": 0, "width": 2000, "height": 300, "dataField": "amount",
     "functionType": 0, "format": "{totalFormat}", "align": "right"},
    {"name": "Label8", "left": 0, "top": 300, "width": 9000, "height": 300, "text": "Всичко: {total}"},
    {"name": "Label10", "left": 0, "top": 700, "width": 9000, "height": 300, "caption": "Подпис"}]}
 }
})";

Report listReport(const RowSet &rows)
{
    const Checked<ReportDesign> design = parseReportDesign(QByteArray(listDesign));
    if (!design)
        qFatal("test design: %s", qPrintable(design.message().text));
    Report report(design.value());
    report.setDataSource(rows);
    report.setDataField(QStringLiteral("Detail"), QStringLiteral("Text100"), QStringLiteral("name"));
    report.setDataField(QStringLiteral("Detail"), QStringLiteral("Text101"), QStringLiteral("note"));
    report.setDataField(QStringLiteral("Detail"), QStringLiteral("Text102"), QStringLiteral("amount"));
    report.setDataField(QStringLiteral("ReportFooter"), QStringLiteral("Function102"), QStringLiteral("AMOUNT"));
    return report;
}

RowSet rowsOf(int count, const std::function<double(int)> &amount, const std::function<QString(int)> &note = {})
{
    RowSet rows({QStringLiteral("name"), QStringLiteral("note"), QStringLiteral("amount")});
    for (int i = 0; i < count; ++i)
        rows.appendRow({QStringLiteral("Ред %1").arg(i + 1), note ? note(i) : QString(), amount(i)});
    return rows;
}

QList<const ReportPrimitive *> textsOn(const LaidOutReport &laid, int page, const QString &text)
{
    QList<const ReportPrimitive *> found;
    for (const ReportPrimitive &p : laid.pages.at(page).primitives) {
        if (p.kind == ReportPrimitive::Kind::Text && p.text == text)
            found.append(&p);
    }
    return found;
}

// The texts drawn on the page that keep holds for, in drawing order.
QStringList textsWhere(const LaidOutReport &laid, int page, const std::function<bool(const ReportPrimitive &)> &keep)
{
    QStringList texts;
    for (const ReportPrimitive &p : laid.pages.at(page).primitives) {
        if (p.kind == ReportPrimitive::Kind::Text && keep(p))
            texts.append(p.text);
    }
    return texts;
}

int pageOf(const LaidOutReport &laid, const QString &text)
{
    for (int page = 0; page < laid.pageCount(); ++page) {
        if (!textsOn(laid, page, text).isEmpty())
            return page;
    }
    return -1;
}

}

class ReportEngineTest : public QObject {
    Q_OBJECT
private slots:
    void aMissingDesignIsAMessageNotACrash()
    {
        const Checked<Report> report = Report::fromDesign(QStringLiteral("rptNone"));
        QVERIFY(!report.ok());
        QVERIFY(report.message().title.startsWith(QStringLiteral("ГРЕШКА при")));
    }

    void formatsAreBulgarian_data()
    {
        QTest::addColumn<QVariant>("value");
        QTest::addColumn<QString>("format");
        QTest::addColumn<QString>("shown");
        QTest::newRow("amount") << QVariant(1234.5) << "0,00" << "1234,50";
        QTest::newRow("half to even") << QVariant(0.125) << "0,00" << "0,12";
        QTest::newRow("tonnes") << QVariant(12.3456) << "0,000" << "12,346";
        QTest::newRow("km") << QVariant(150.0) << "0" << "150";
        QTest::newRow("legacy style") << QVariant(7.0) << "###0.000" << "7,000";
        QTest::newRow("optional decimals unused") << QVariant(0.125) << "###0.000#####" << "0,125";
        QTest::newRow("optional decimals used") << QVariant(0.06391149) << "###0.000#####" << "0,06391149";
        QTest::newRow("no decimals left") << QVariant(5.0) << "0.##" << "5";
        QTest::newRow("text behind the number") << QVariant(111.13) << "0,00\" евро\"" << "111,13 евро";
        QTest::newRow("an unquoted tail is no number format") << QVariant(1.5) << "0,00 лв" << "1,5";
        QTest::newRow("ISO text date") << QVariant(QStringLiteral("2006-03-05")) << "Short Date" << "05.03.2006";
        QTest::newRow("date value") << QVariant(QDate(2006, 3, 5)) << "" << "05.03.2006";
        QTest::newRow("paid") << QVariant(1) << "Yes/No" << "Да";
        QTest::newRow("unpaid") << QVariant(false) << "Yes/No" << "Не";
        QTest::newRow("null") << QVariant() << "0,00" << "";
    }
    void formatsAreBulgarian()
    {
        QFETCH(QVariant, value);
        QFETCH(QString, format);
        QFETCH(QString, shown);
        QCOMPARE(formatReportValue(value, format), shown);
    }

    void thePageHeaderAndFooterStandOnEveryPageAndThePreviewTurnsThem()
    {
        const LaidOutReport laid = layoutReport(listReport(rowsOf(120, [](int) { return 1.0; })));
        QVERIFY(laid.pageCount() >= 3);
        for (int page = 0; page < laid.pageCount(); ++page) {
            const QStringList lines = laid.textLines(page);
            QVERIFY2(lines.contains(QStringLiteral("Име | Бележка | Сума")), qPrintable(lines.join('\n')));
            QVERIFY(lines.last().contains(QStringLiteral("Страница %1 от %2").arg(page + 1).arg(laid.pageCount())));
            QCOMPARE(lines.contains(QStringLiteral("Справка")), page == 0);
        }
        // Every row is printed once, in order.
        QStringList names;
        for (const QString &line : laid.textLines()) {
            if (line.startsWith(QStringLiteral("Ред ")))
                names.append(line.section(QStringLiteral(" | "), 0, 0));
        }
        QCOMPARE(names.size(), 120);
        QCOMPARE(names.first(), QStringLiteral("Ред 1"));
        QCOMPARE(names.last(), QStringLiteral("Ред 120"));

        // The preview turns the pages, zooms and writes them to PDF.
        ReportPreview preview(laid);
        test::showExposed(preview);
        QCOMPARE(preview.windowTitle(), QStringLiteral("Зарек – Проба"));  // "Зарек – <screen>", as every window
        QCOMPARE(preview.currentPage(), 0);
        auto *previous = preview.findChild<QToolButton *>(QStringLiteral("cmdPrevious"));
        auto *next = preview.findChild<QToolButton *>(QStringLiteral("cmdNext"));
        auto *last = preview.findChild<QToolButton *>(QStringLiteral("cmdLast"));
        QVERIFY(!previous->isEnabled());
        QTest::mouseClick(next, Qt::LeftButton);
        QCOMPARE(preview.currentPage(), 1);
        QTest::keyClick(&preview, Qt::Key_PageDown);
        QCOMPARE(preview.currentPage(), 2);
        QTest::mouseClick(last, Qt::LeftButton);
        QCOMPARE(preview.currentPage(), laid.pageCount() - 1);
        QVERIFY(!next->isEnabled());
        QCOMPARE(preview.findChild<QSpinBox *>(QStringLiteral("txtPage"))->value(), laid.pageCount());
        preview.findChild<QSpinBox *>(QStringLiteral("txtPage"))->setValue(2);
        QCOMPARE(preview.currentPage(), 1);

        QWidget *page = preview.findChild<QWidget *>(QStringLiteral("picPage"));
        preview.setZoomPercent(100);
        const int full = page->width();
        preview.setZoomPercent(50);
        QVERIFY(qAbs(page->width() * 2 - full) < 30);
        QCOMPARE(preview.findChild<QComboBox *>(QStringLiteral("cboZoom"))->currentText(), QStringLiteral("50 %"));

        RecordingMessageService messages;
        QTemporaryDir dir;
        QVERIFY(preview.exportPdfTo(dir.filePath(QStringLiteral("preview.pdf"))));
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("preview.pdf"))).size() > 1000);
        QVERIFY(!preview.exportPdfTo(dir.filePath(QStringLiteral("none/preview.pdf"))));
        QCOMPARE(messages.shown.size(), 1);
        QCOMPARE(messages.shown.first().text.count('\n'), 1);
    }

    void theTotalIsTheSumOfThePrintedRows()
    {
        // Amounts whose halves round to even: a total of the raw values would drift from the column.
        const auto amount = [](int i) { return i % 2 ? 0.125 : 10.005 + i; };
        const LaidOutReport laid = layoutReport(listReport(rowsOf(75, amount)));
        qint64 cents = 0;
        for (const QString &line : laid.textLines()) {
            if (line.startsWith(QStringLiteral("Ред ")))
                cents += qRound64(line.section(QStringLiteral(" | "), -1).replace(',', '.').toDouble() * 100);
        }
        const QString expected = QStringLiteral("Всичко | ") + formatFixed(cents / 100.0, 2);
        QVERIFY2(laid.textLines(laid.pageCount() - 1).contains(expected), qPrintable(expected));
    }

    void anEmptyResultPrintsTheFrameWithZeroTotals()
    {
        const LaidOutReport laid = layoutReport(listReport(rowsOf(0, [](int) { return 0.0; })));
        QCOMPARE(laid.pageCount(), 1);
        const QStringList lines = laid.textLines(0);
        QCOMPARE(lines, QStringList({QStringLiteral("Фирма"), QStringLiteral("Справка"),
                                     QStringLiteral("Име | Бележка | Сума"), QStringLiteral("Всичко | 0,00"),
                                     QStringLiteral("Зарек | Страница 1 от 1")}));
    }

    void aRowIsNeverSplitOverTwoPages()
    {
        // Notes that wrap onto several lines make rows of different heights.
        const auto note = [](int i) {
            QStringList words;
            for (int w = 0; w < 4 + (i % 9) * 3; ++w)
                words << QStringLiteral("р%1д%2").arg(i).arg(w);
            return words.join(' ');
        };
        Report report = listReport(rowsOf(90, [](int) { return 2.0; }, note));
        report.control(QStringLiteral("Detail"), QStringLiteral("Text101")).canGrow = true;
        const LaidOutReport laid = layoutReport(report);
        QVERIFY(laid.pageCount() >= 3);
        const double footerTop = laid.pageSize.height() - 600 / 20.0 - 300 / 20.0;
        for (int i = 0; i < 90; ++i) {
            const int rowPage = pageOf(laid, QStringLiteral("Ред %1").arg(i + 1));
            QVERIFY(rowPage >= 0);
            for (int w = 0; w < 4 + (i % 9) * 3; ++w) {
                const QString word = QStringLiteral("р%1д%2").arg(i).arg(w);
                bool found = false;
                for (const ReportPrimitive &p : laid.pages.at(rowPage).primitives) {
                    if (p.kind == ReportPrimitive::Kind::Text && p.text.split(' ').contains(word)) {
                        found = true;
                        QVERIFY2(p.rect.bottom() <= footerTop + 0.01, qPrintable(word));
                    }
                }
                QVERIFY2(found, qPrintable(QStringLiteral("%1 not on the page of its row").arg(word)));
            }
        }
    }

    void figuresAreRightAlignedWithADecimalComma()
    {
        const QList<double> amounts = {12.5, 1234, 0.05, 98765.43};
        const LaidOutReport laid = layoutReport(listReport(rowsOf(4, [&](int i) { return amounts.at(i); })));
        const QStringList shown = {QStringLiteral("12,50"), QStringLiteral("1234,00"), QStringLiteral("0,05"),
                                   QStringLiteral("98765,43")};
        double right = -1;
        for (const QString &text : shown) {
            const auto found = textsOn(laid, 0, text);
            QCOMPARE(found.size(), 1);
            if (right < 0)
                right = found.first()->rect.right();
            QVERIFY2(qAbs(found.first()->rect.right() - right) < 0.01, qPrintable(text));
        }
        // The caption of the column ends where its figures end.
        QVERIFY(qAbs(textsOn(laid, 0, QStringLiteral("Сума")).first()->rect.right() - right) < 0.01);
    }

    void longTextsStayInsideTheirBoxes()
    {
        const QString longNote = QStringLiteral("Много дълъг маршрут София - Пловдив - Бургас - Варна - Русе - Плевен");
        Report report = listReport(rowsOf(1, [](int) { return 1.0; }, [&](int) { return longNote; }));
        LaidOutReport laid = layoutReport(report);
        const double boxLeft = 1000 / 20.0 + 2000 / 20.0;
        const double boxRight = 1000 / 20.0 + 5000 / 20.0;
        bool seen = false;
        for (const ReportPrimitive &p : laid.pages.at(0).primitives) {
            if (p.kind == ReportPrimitive::Kind::Text && p.text.startsWith(QStringLiteral("Много"))) {
                seen = true;
                QVERIFY(p.text.endsWith(QChar(0x2026)));  // cut short with an ellipsis
                QVERIFY(p.rect.left() >= boxLeft && p.rect.right() <= boxRight);
            }
        }
        QVERIFY(seen);

        // Allowed to grow, the same text wraps onto more lines, each inside the box.
        report.control(QStringLiteral("Detail"), QStringLiteral("Text101")).canGrow = true;
        laid = layoutReport(report);
        const QStringList pieces = textsWhere(laid, 0, [&](const ReportPrimitive &p) {
            return p.rect.left() >= boxLeft && p.rect.right() <= boxRight && p.text != QStringLiteral("Бележка");
        });
        QVERIFY(pieces.size() >= 2);
        QCOMPARE(pieces.join(' '), longNote);
    }

    void aHiddenControlDrawsNothingAndAMovedOneLandsWhereItWasSent()
    {
        Report report = listReport(rowsOf(1, [](int) { return 1.0; }));
        report.setVisible(QStringLiteral("ReportHeader"), QStringLiteral("Label1"), false);
        report.moveControl(QStringLiteral("ReportFooter"), QStringLiteral("Label500"), 8000, 100);
        LaidOutReport laid = layoutReport(report);
        QVERIFY(textsOn(laid, 0, QStringLiteral("Фирма")).isEmpty());
        const auto moved = textsOn(laid, 0, QStringLiteral("Всичко"));
        QCOMPARE(moved.size(), 1);
        QVERIFY(qAbs(moved.first()->rect.left() - (1000 + 8000) / 20.0 - 1.5) < 0.01);

        report.setVisible(QStringLiteral("ReportHeader"), QStringLiteral("Label1"), true);
        laid = layoutReport(report);
        QCOMPARE(textsOn(laid, 0, QStringLiteral("Фирма")).size(), 1);
    }

    void linesRunInEitherDiagonal()
    {
        const char *design = R"({"name": "rptCross", "sections": {"ReportHeader": {"height": 600, "controls": [
            {"name": "Line1", "left": 400, "top": 100, "width": 300, "height": 300},
            {"name": "Line2", "left": 400, "top": 100, "width": 300, "height": 300, "direction": "rising"}]}}})";
        Report report(parseReportDesign(QByteArray(design)).value());
        const LaidOutReport laid = layoutReport(report);
        QList<QRectF> lines;
        for (const ReportPrimitive &p : laid.pages.at(0).primitives) {
            if (p.kind == ReportPrimitive::Kind::Line)
                lines.append(p.rect);
        }
        const double left = (1440 + 400) / 20.0, right = left + 15, top = (1440 + 100) / 20.0, bottom = top + 15;
        // Falling: top left to bottom right; rising: bottom left to top right, the other stroke of a cross.
        QCOMPARE(lines, (QList<QRectF>{QRectF(QPointF(left, top), QPointF(right, bottom)),
                                       QRectF(QPointF(left, bottom), QPointF(right, top))}));
    }

    void blanksAndLineBreaksStayAsWritten_data()
    {
        QTest::addColumn<bool>("canGrow");
        QTest::addColumn<QString>("caption");
        QTest::addColumn<QStringList>("lines");
        const QString signature = QString(76, QLatin1Char(' ')) + QStringLiteral("Подпис:");
        QTest::newRow("leading blanks") << false << QStringLiteral("      ДДС 20%:") << QStringList{"      ДДС 20%:"};
        QTest::newRow("three lines on the colon")
            << false << QStringLiteral("     Сума:\n  ДДС 20%:\nВсичко:")
            << QStringList{"     Сума:", "  ДДС 20%:", "Всичко:"};
        QTest::newRow("76 blanks before the signature") << true << signature << QStringList{signature};
        QTest::newRow("blanks inside a growing text")
            << true << QStringLiteral("Получих сумата   от  ........") << QStringList{"Получих сумата   от  ........"};
    }
    void blanksAndLineBreaksStayAsWritten()
    {
        QFETCH(bool, canGrow);
        QFETCH(QString, caption);
        QFETCH(QStringList, lines);
        const char *design = R"({"name": "rptReceipt", "sections": {"ReportHeader": {"height": 900, "controls": [
            {"name": "Label1", "left": 0, "top": 0, "width": 14000, "height": 260}]}}})";
        Report report(parseReportDesign(QByteArray(design)).value());
        report.setCaption(QStringLiteral("ReportHeader"), QStringLiteral("Label1"), caption);
        report.control(QStringLiteral("ReportHeader"), QStringLiteral("Label1")).canGrow = canGrow;
        const LaidOutReport laid = layoutReport(report);
        QCOMPARE(textsWhere(laid, 0, [](const ReportPrimitive &) { return true; }), lines);
        QCOMPARE(laid.textLines(0), lines);
    }

    void aGrowingTextBreaksOnlyWhereItMust()
    {
        Report report = listReport(rowsOf(1, [](int) { return 1.0; }, [](int) {
            return QStringLiteral("  Стамболийски - Пловдив - Асеновград - Смолян - Девин");
        }));
        report.control(QStringLiteral("Detail"), QStringLiteral("Text101")).canGrow = true;
        const QStringList pieces = textsWhere(layoutReport(report), 0, [](const ReportPrimitive &p) {
            return p.text.contains(QStringLiteral(" - ")) || p.text.startsWith(QStringLiteral("  Стам"))
                   || p.text.contains(QStringLiteral("Девин"));
        });
        QVERIFY(pieces.size() >= 2);
        QVERIFY(pieces.first().startsWith(QStringLiteral("  Стамболийски")));  // the leading blanks of the text stay
        QCOMPARE(pieces.join(' ').simplified(), QStringLiteral("Стамболийски - Пловдив - Асеновград - Смолян - Девин"));
    }

    // A form's paragraph in a box made for its lines stays in the box and pushes nothing down.
    void aBoxTallEnoughForItsLinesHoldsThemCentred_data()
    {
        QTest::addColumn<bool>("canGrow");
        QTest::newRow("written lines") << false;
        QTest::newRow("growing text") << true;
    }
    void aBoxTallEnoughForItsLinesHoldsThemCentred()
    {
        QFETCH(bool, canGrow);
        const char *design = R"({"name": "rptForm", "sections": {"ReportHeader": {"height": 2000, "controls": [
            {"name": "Label1", "left": 0, "top": 0, "width": 6000, "height": 1200},
            {"name": "Label2", "left": 0, "top": 1200, "width": 6000, "height": 300, "caption": "Под него"}]}}})";
        Report report(parseReportDesign(QByteArray(design)).value());
        report.setCaption(QStringLiteral("ReportHeader"), QStringLiteral("Label1"),
                          QStringLiteral("Първи ред\nВтори ред\nТрети ред"));
        report.control(QStringLiteral("ReportHeader"), QStringLiteral("Label1")).canGrow = canGrow;
        const LaidOutReport laid = layoutReport(report);
        QCOMPARE(laid.textLines(0), (QStringList{"Първи ред", "Втори ред", "Трети ред", "Под него"}));
        const double boxTop = 1440 / 20.0, boxBottom = boxTop + 1200 / 20.0;
        double first = 1e9, last = 0;
        for (const ReportPrimitive &p : laid.pages.at(0).primitives) {
            if (p.text.endsWith(QStringLiteral("ред"))) {
                first = std::min(first, p.rect.top());
                last = std::max(last, p.rect.bottom());
            }
        }
        QVERIFY(first > boxTop + 1 && last < boxBottom - 1);
        QCOMPARE(qRound(boxTop - first + boxBottom - last), 0);  // as much room above as below
        QCOMPARE(textsOn(laid, 0, QStringLiteral("Под него")).first()->rect.top() > boxBottom - 0.01, true);
        QVERIFY(textsOn(laid, 0, QStringLiteral("Под него")).first()->rect.top() < boxBottom + 5);
    }

    void aNameTheDesignLacksIsAFault_data()
    {
        QTest::addColumn<QString>("what");
        QTest::newRow("control") << "control";
        QTest::newRow("data field") << "field";
        QTest::newRow("colour field") << "colour";
    }
    void aNameTheDesignLacksIsAFault()
    {
        QFETCH(QString, what);
        // The test programs run strict, where a fault ends the program; here it is told as a warning.
        const QByteArray strict = qgetenv("ZAREK_STRICT_REPORTS");
        qunsetenv("ZAREK_STRICT_REPORTS");
        Report report = listReport(rowsOf(1, [](int) { return 1.0; }));
        if (what == QLatin1String("control")) {
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("has no control ReportHeader.Label77")));
            report.setCaption(QStringLiteral("ReportHeader"), QStringLiteral("Label77"), QStringLiteral("x"));
        } else if (what == QLatin1String("field")) {
            report.setDataField(QStringLiteral("Detail"), QStringLiteral("Text101"), QStringLiteral("nosuch"));
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Detail.Text101 is bound to nosuch")));
            layoutReport(report);
        } else {
            report.setBackColorByField(QStringLiteral("Detail"), QStringLiteral("Text100"), QStringLiteral("nosuch"),
                                       colorWhite, colorGrey);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("Detail.Text100 is coloured by nosuch")));
            layoutReport(report);
        }
        qputenv("ZAREK_STRICT_REPORTS", strict);
    }

    void aPictureGoesOnAPageOfItsOwnAfterTheReportInProportion()
    {
        QImage chart(400, 200, QImage::Format_RGB32);
        chart.fill(Qt::blue);
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        chart.save(&buffer, "PNG");
        Report report = listReport(rowsOf(3, [](int i) { return i + 1.0; }));
        report.appendPicture(QStringLiteral("Баланс на колите"), png);
        const LaidOutReport laid = layoutReport(report);
        QCOMPARE(laid.pageCount(), 2);
        QCOMPARE(laid.textLines(1), QStringList{QStringLiteral("Баланс на колите")});
        const ReportPrimitive *picture = nullptr;
        for (const ReportPrimitive &p : laid.pages.at(1).primitives) {
            if (p.kind == ReportPrimitive::Kind::Image)
                picture = &p;
        }
        QVERIFY(picture);
        QVERIFY(QRectF(QPointF(0, 0), laid.pageSize).contains(picture->rect));
        QVERIFY(qAbs(picture->rect.width() / picture->rect.height() - 2.0) < 0.01);
        // The numbered pages do not count the picture's page.
        QVERIFY(laid.textLines(0).last().contains(QStringLiteral("Страница 1 от 1")));
        const QImage drawn = renderReportPageImage(laid, 1, 30);
        const QPointF middle = picture->rect.center() * (30.0 / 72.0);
        QCOMPARE(drawn.pixelColor(middle.toPoint()), QColor(Qt::blue));
    }

    void thePreviewWritesTheReportsRowsForASpreadsheet()
    {
        RecordingMessageService messages;
        const LaidOutReport laid = layoutReport(listReport(rowsOf(3, [](int i) { return 10.005 * (i + 1); })));
        QVERIFY(laid.table);
        ReportPreview preview(laid);
        QVERIFY(preview.findChild<QToolButton *>(QStringLiteral("cmdExport"))->isEnabled());
        QTemporaryDir dir;
        const QString csv = dir.filePath(QStringLiteral("справка.csv"));
        QVERIFY(preview.exportTableTo(csv));
        QCOMPARE(test::csvLines(csv), (QStringList{"Фирма", "Справка", "Име;Бележка;Сума", "Ред 1;;10,00", "Ред 2;;20,01",
                                     "Ред 3;;30,02", "Всичко:;;60,03", ""}));
        // A laid-out page with nothing behind it offers no export.
        ReportPreview bare(LaidOutReport{});
        QVERIFY(!bare.findChild<QToolButton *>(QStringLiteral("cmdExport"))->isEnabled());
    }

    void aFigureTooWideForItsBoxIsSetSmallerNotCut()
    {
        Report report = listReport(rowsOf(1, [](int) { return 123456789012.25; }));
        const LaidOutReport laid = layoutReport(report);
        // The row, and the total under it.
        const auto found = textsOn(laid, 0, QStringLiteral("123456789012,25"));
        QCOMPARE(found.size(), 2);
        QVERIFY(found.first()->rect.left() >= 1000 / 20.0 + 5000 / 20.0 - 0.01);
        QVERIFY(laid.fonts.at(found.first()->font).size < 9);
    }

    void aRowPaintsItsCellByItsOwnFlag()
    {
        RowSet rows({QStringLiteral("name"), QStringLiteral("note"), QStringLiteral("amount"), QStringLiteral("plat")});
        rows.appendRow({QStringLiteral("А"), QString(), 1.0, false});
        rows.appendRow({QStringLiteral("Б"), QString(), 1.0, true});
        Report report = listReport(rows);
        report.setDataSource(rows);
        report.setBackColorByField(QStringLiteral("Detail"), QStringLiteral("Text100"), QStringLiteral("PLAT"),
                                   colorWhite, colorGrey);
        QCOMPARE(test::fillsOn(layoutReport(report), 0), QList<quint32>({0xFFC0C0C0u, 0xFFFFFFFFu}));
    }

    void aDesignTextNamesTheValuesHandedOver_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("a value") << "{UserName}" << "Транс ООД";
        QTest::newRow("words around it") << "Извършени от {UserName} курсове" << "Извършени от Транс ООД курсове";
        QTest::newRow("two values") << "{UserCity}, {UserAdres}" << "Пловдив, ул. Тракия 1";
        QTest::newRow("a name without a value") << "за {nosuch}" << "за ";
        QTest::newRow("the design's words") << "{heading|Приход}" << "Приход";
        QTest::newRow("the design's words replaced") << "{unit|[лв.]}" << "[евро]";
        QTest::newRow("a brace left open") << "за {UserName" << "за ";
        QTest::newRow("no names") << "Справка" << "Справка";
    }
    void aDesignTextNamesTheValuesHandedOver()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const ReportValues values = {{QStringLiteral("UserName"), QStringLiteral("Транс ООД")},
                                     {QStringLiteral("UserCity"), QStringLiteral("Пловдив")},
                                     {QStringLiteral("UserAdres"), QStringLiteral("ул. Тракия 1")},
                                     {QStringLiteral("unit"), QStringLiteral("[евро]")}};
        QCOMPARE(expandReportText(text, values), expected);
    }

    void aPaperDeclaredInItsDesignIsFilledFromTheValuesHandedOver()
    {
        const Checked<ReportDesign> design = parseReportDesign(QByteArray(declaredDesign));
        QVERIFY(design.ok());
        Report report(design.value());
        RowSet rows({QStringLiteral("name"), QStringLiteral("amount")});
        rows.appendRow({QStringLiteral("А"), 1.5});
        rows.appendRow({QStringLiteral("Б"), 2.25});
        report.setDataSource(rows);
        FirmProfile firm;
        firm.UserName = QStringLiteral("Транс ООД");
        firm.UserTel = QStringLiteral("032 1");
        firm.UserGSM = QStringLiteral("0888");
        firm.UserEmail = QStringLiteral("a@b.bg");
        firm.UserURL = QStringLiteral("t.bg");
        report.setFirm(firm);
        report.setValue(QStringLiteral("title"), QStringLiteral("Проба"));
        report.setValue(QStringLiteral("total"), QStringLiteral("3,75 лв."));
        report.setValue(QStringLiteral("totalFormat"), QStringLiteral("0,000"));
        QCOMPARE(report.windowCaption(), QStringLiteral("Зарек ") + version::majorMinor() + QStringLiteral(" - Проба"));
        QStringList lines = layoutReport(report).textLines();
        QVERIFY2(lines.contains(QStringLiteral("Транс ООД")), qPrintable(lines.join('\n')));
        // The firm's mobile number follows "факс:", and the address reads "http//".
        QVERIFY(lines.contains(QStringLiteral("тел:032 1, факс:0888, E-mail:a@b.bg, URL:http//t.bg")));
        QVERIFY(!lines.join('\n').contains(QStringLiteral("за периода")));  // no period handed over: no line
        QVERIFY(lines.contains(QStringLiteral("А | 1,50")));
        QVERIFY(lines.contains(QStringLiteral("3,750")));
        QVERIFY(lines.contains(QStringLiteral("Всичко: 3,75 лв.")));

        report.setPeriod({QDate(2026, 3, 1), QDate(2026, 3, 31)});
        report.setAmountsWithUnits(true);
        report.addFooterNote(QStringLiteral("Бележка"));
        lines = layoutReport(report).textLines();
        QVERIFY(lines.contains(QStringLiteral("за периода от 01.03.2026 до 31.03.2026")));
        // The note stands under the control the design's footer names, above what follows it.
        const int total = static_cast<int>(lines.indexOf(QStringLiteral("Всичко: 3,75 лв.")));
        QCOMPARE(lines.indexOf(QStringLiteral("Бележка")), total + 1);
        QCOMPARE(lines.indexOf(QStringLiteral("Подпис")), total + 2);
        QCOMPARE(report.design().section(QStringLiteral("Detail"))->control(QStringLiteral("Text101"))->font.size,
                 amountWithUnitFontSize);
    }

    void thePagesDrawToPdfAndPictures()
    {
        const LaidOutReport laid = layoutReport(listReport(rowsOf(60, [](int i) { return i * 1.5; })));
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("list.pdf"));
        QVERIFY(exportReportPdf(laid, file));
        QFile pdf(file);
        QVERIFY(pdf.open(QIODevice::ReadOnly));
        const QByteArray bytes = pdf.readAll();
        QVERIFY(bytes.startsWith("%PDF"));
        const QRegularExpression pageObject(QStringLiteral("/Type\\s*/Page(?!s)"));
        QCOMPARE(int(QString::fromLatin1(bytes).count(pageObject)), laid.pageCount());

        const QImage image = renderReportPageImage(laid, 0, 72);
        QCOMPARE(image.size(), QSize(842, 596));
        int dark = 0;
        for (int y = 0; y < image.height(); y += 2) {
            for (int x = 0; x < image.width(); x += 2)
                dark += qGray(image.pixel(x, y)) < 128;
        }
        QVERIFY(dark > 100);

        QString error;
        QVERIFY(!exportReportPdf(laid, dir.filePath(QStringLiteral("no/such/folder/list.pdf")), &error));
        QVERIFY(!error.isEmpty());
    }

};

QTEST_MAIN(ReportEngineTest)
#include "tst_reportengine.moc"
