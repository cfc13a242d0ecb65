#include "examplefirm.h"
#include "core/formats.h"
#include "data/scratchdatabase.h"
#include "invoicing/invoicestatement.h"
#include "reports/reportlayout.h"
#include "reports/reportpreview.h"
#include "testdatabase.h"

#include <QFontInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace zarek;
using namespace zarek::invoicing;
using zarek::test::exampleFirm;

namespace {

StatementLine line(int red, QDate date, const QString &marsh, qint64 cents)
{
    StatementLine l;
    l.red = red;
    l.data = date;
    l.marsh = marsh;
    l.vidTovar = QStringLiteral("Пясък");
    l.kolaId = QStringLiteral("СА 1234 ВК");
    l.km = 25;
    l.ton = 10;
    l.tarifa = 0.125;
    l.suma = Money::fromCents(cents);
    return l;
}

const StatementHeading newInvoice{FakturaMode::FaktNew, QStringLiteral("Д'Аргос ООД"),
                                  {QDate(2006, 3, 1), QDate(2006, 3, 31)}, QStringLiteral("0000000130")};

}

class RptFakturaTest : public QObject {
    Q_OBJECT
private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_scratch = std::make_unique<ScratchDatabase>(m_folder->path());
        QVERIFY(!m_scratch->RebuildScratchTable(QStringLiteral("TempPlaten")));
    }
    void cleanup()
    {
        m_scratch.reset();
        m_folder.reset();
    }

    void theStatementOfANewInvoice()
    {
        const QList<StatementLine> lines = {line(1, QDate(2006, 3, 2), QStringLiteral("София - Перник"), 3125),
                                            line(2, QDate(2006, 3, 9), QStringLiteral("Батановци - Перник"), 6875)};
        QVERIFY(!fillTempPlaten(m_scratch->db(), lines));
        const Checked<Report> report = ReportFaktura(newInvoice, statementSum(lines), m_scratch->db(), exampleFirm());
        QVERIFY(report);
        QCOMPARE(report.value().windowCaption(), QStringLiteral("Зарек 2.3 - Справка за курсовете във фактура"));
        const LaidOutReport laid = layoutReport(report.value());
        QCOMPARE(laid.pageCount(), 1);
        const QStringList expected = QStringLiteral(
            "Транспорт Петров ЕООД\nСофия, ул. Искър 12\n"
            "тел:02 987 65 43, факс:0888 123 456, E-mail:office@petrov.bg, URL:http//www.petrov.bg\n"
            "Справка\nза курсовете на Д'Аргос ООД по издадена фактура №0000000130\n"
            "за периода от 01.03.2006 до 31.03.2006\n"
            "Дата | Кола | Маршрут | Товар | Тон. | КМ | Тар. | Сума\n"
            "1 | 02.03.2006 | СА 1234 ВК | София - Перник | Пясък | 10,000 | 25 | 0,125 | 31,25\n"
            "2 | 09.03.2006 | СА 1234 ВК | Батановци - Перник | Пясък | 10,000 | 25 | 0,125 | 68,75\n"
            "Сума без ДДС: 100,00 лв.\n"
            "         ДДС: 20,00 лв.\n"
            "      Всичко: 120,00 лв.\n"
            "Зарек 2.3 | Страница 1 от 1 | Orvenn Ltd.").split(QLatin1Char('\n'));
        QCOMPARE(laid.textLines(), expected);
    }

    void theVatLinesReadBackFromThePage_data()
    {
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<QString>("sum");
        QTest::addColumn<QString>("vat");
        QTest::addColumn<QString>("total");
        QTest::newRow("100.00") << qint64(10000) << "100,00" << "20,00" << "120,00";
        QTest::newRow("33.33: 6.666 and 39.996") << qint64(3333) << "33,33" << "6,67" << "40,00";
        QTest::newRow("0.01: 0.002 and 0.012") << qint64(1) << "0,01" << "0,00" << "0,01";
    }
    void theVatLinesReadBackFromThePage()
    {
        QFETCH(qint64, cents);
        QFETCH(QString, sum);
        QFETCH(QString, vat);
        QFETCH(QString, total);
        const LaidOutReport laid = statementOf({line(1, QDate(2006, 3, 2), QStringLiteral("София - Перник"), cents)});
        QCOMPARE(laid.textLines().mid(8, 3), (QStringList{"Сума без ДДС: " + sum + " лв.", "         ДДС: " + vat + " лв.",
                                                          "      Всичко: " + total + " лв."}));
    }

    void theThreeTotalsStandOnTheColon()
    {
        const LaidOutReport laid = statementOf({line(1, QDate(2006, 3, 2), QStringLiteral("София - Перник"), 123456)});
        QList<const ReportPrimitive *> totals;
        for (const ReportPrimitive &p : laid.pages.last().primitives) {
            if (p.kind == ReportPrimitive::Kind::Text && p.text.contains(QStringLiteral(": ")))
                totals.append(&p);
        }
        QCOMPARE(totals.size(), 3);
        // Set in a font of fixed pitch from one left edge, the colon stands after twelve characters each time.
        for (const ReportPrimitive *p : totals) {
            QCOMPARE(p->rect.left(), totals.first()->rect.left());
            QCOMPARE(p->text.indexOf(QLatin1Char(':')), 12);
            QFont font(laid.fonts.at(p->font).family);
            font.setBold(laid.fonts.at(p->font).bold);
            QVERIFY(QFontInfo(font).fixedPitch());
        }
        // The totals' unit is the one the formats give.
        QCOMPARE(statementTotals(Money::fromCents(100)).first(), QStringLiteral("Сума без ДДС: 1,00 ") + amountUnit(Currency::Leva));
    }

    // The PDF of an invoice was offered as "rptFaktura.pdf": it is offered under the invoice's number
    // and client.
    void thePdfWasOfferedUnderTheDesignsName_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("klient");
        QTest::addColumn<QString>("fileName");
        QTest::newRow("new invoice") << int(FakturaMode::FaktNew) << "Д'Аргос ООД" << "Фактура 0000000130 Д'Аргос ООД.pdf";
        QTest::newRow("a slash becomes a dash") << int(FakturaMode::FaktNew) << "Бетон/Инерт АД"
                                                << "Фактура 0000000130 Бетон-Инерт АД.pdf";
        QTest::newRow("corrected, no client") << int(FakturaMode::EditFakt) << "" << "Фактура 0000000130.pdf";
    }
    void thePdfWasOfferedUnderTheDesignsName()
    {
        QFETCH(int, mode);
        QFETCH(QString, klient);
        QFETCH(QString, fileName);
        const StatementHeading heading{FakturaMode(mode), klient, {QDate(2006, 3, 1), QDate(2006, 3, 31)},
                                       QStringLiteral("0000000130")};
        const ReportPreview preview(statementOf({line(1, QDate(2006, 3, 2), QStringLiteral("София - Перник"), 3125)}, heading));
        QCOMPARE(preview.suggestedPdfName(), fileName);
    }

    void aCorrectedInvoiceHasNoPeriodLine()
    {
        const StatementHeading heading{FakturaMode::EditFakt, {}, {}, QStringLiteral("0000000120")};
        const LaidOutReport laid = statementOf({line(1, QDate(2006, 2, 10), QStringLiteral("София - Перник"), 3125)}, heading);
        QCOMPARE(laid.textLines().mid(3, 3), (QStringList{"Справка", "за курсовете по издадена фактура №0000000120",
                                                          "Дата | Кола | Маршрут | Товар | Тон. | КМ | Тар. | Сума"}));
    }

    void aSecondFillListsEachCourseOnce()
    {
        const QList<StatementLine> first = {line(1, QDate(2006, 3, 2), QStringLiteral("София - Перник"), 3125),
                                            line(2, QDate(2006, 3, 3), QStringLiteral("Перник - София"), 5000)};
        QVERIFY(!fillTempPlaten(m_scratch->db(), first));
        const QList<StatementLine> second = {line(1, QDate(2006, 3, 2), QStringLiteral("София - Перник"), 3125)};
        QVERIFY(!fillTempPlaten(m_scratch->db(), second));
        QCOMPARE(test::rowsText(m_scratch->db(), "SELECT COUNT(*), MAX(Suma) FROM TempPlaten"), "1|31,25");
    }

private:
    // The statement of the lines, written to the scratch table and laid out.
    LaidOutReport statementOf(const QList<StatementLine> &lines, const StatementHeading &heading = newInvoice)
    {
        [&] { QVERIFY(!fillTempPlaten(m_scratch->db(), lines)); }();
        return layoutReport(ReportFaktura(heading, statementSum(lines), m_scratch->db(), exampleFirm()).value());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScratchDatabase> m_scratch;
};

QTEST_MAIN(RptFakturaTest)
#include "tst_rptfaktura.moc"
