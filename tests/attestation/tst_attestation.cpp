#include "examplefirm.h"
#include "attestation/attestationreport.h"
#include "attestation/birthdate.h"
#include "reports/reportlayout.h"

#include <QtTest>

using namespace zarek;

namespace {

AttestationSheet exampleSheet(AttestationForm form, AttestationReason reason = AttestationReason::None)
{
    AttestationSheet sheet;
    sheet.form = form;
    sheet.driverName = QStringLiteral("Георги Д'Амато");
    sheet.birthDate = QStringLiteral("02.5.2001");
    sheet.card = QStringLiteral("645123987");
    sheet.periodFrom = QStringLiteral("01.03.2026");
    sheet.periodTo = QStringLiteral("15.03.2026");
    sheet.startedOn = QStringLiteral("01.06.2019");
    sheet.reason = reason;
    return sheet;
}

const QDate today(2026, 3, 16);

LaidOutReport laidOut(const AttestationSheet &sheet)
{
    const Checked<Report> report = ReportDAI(sheet, test::exampleAttestingFirm(), today);
    if (!report)
        qFatal("%s", qPrintable(report.message().text));
    return layoutReport(report.value());
}

QString caption(const AttestationSheet &sheet, const char *name)
{
    return ReportDAI(sheet, test::exampleAttestingFirm(), today).value().control("PageHeader", QString::fromLatin1(name)).caption;
}

QList<QRectF> primitives(const LaidOutReport &laid, ReportPrimitive::Kind kind)
{
    QList<QRectF> found;
    for (const ReportPrimitive &p : laid.pages.at(0).primitives) {
        if (p.kind == kind)
            found.append(p.rect);
    }
    return found;
}

// All the text of the page as one line, the breaks of the layout taken out.
QString pageText(const LaidOutReport &laid)
{
    return laid.textLines(0).join(QLatin1Char(' ')).simplified();
}

}

Q_DECLARE_METATYPE(zarek::AttestationForm)
Q_DECLARE_METATYPE(zarek::AttestationReason)

class AttestationTest : public QObject {
    Q_OBJECT
private slots:
    void theBirthDateComesFromThePersonalNumber_data()
    {
        QTest::addColumn<QString>("egn");
        QTest::addColumn<QString>("born");  // empty: the message instead
        QTest::newRow("1975") << "7501020000" << "02.01.1975";
        QTest::newRow("2001, month without its zero") << "0145020000" << "02.5.2001";
        QTest::newRow("December 2000") << "0052150000" << "15.12.2000";
        QTest::newRow("last day of 1999") << "9912319999" << "31.12.1999";
        QTest::newRow("blanks around") << " 8307154321 " << "15.07.1983";
        QTest::newRow("six digits are enough") << "750102" << "02.01.1975";
        QTest::newRow("five digits") << "75010" << "";
        QTest::newRow("empty") << "" << "";
        QTest::newRow("a letter") << "75O1020000" << "";
        QTest::newRow("ten letters") << "абвгдежзий" << "";
        QTest::newRow("month 13") << "7513020000" << "";
        QTest::newRow("31 February") << "7502310000" << "";
        QTest::newRow("born in the 1800s") << "7522020000" << "";
    }
    void theBirthDateComesFromThePersonalNumber()
    {
        QFETCH(QString, egn);
        QFETCH(QString, born);
        const Checked<QString> date = birthDateFromEgn(egn);
        if (born.isEmpty()) {
            QVERIFY(!date.ok());
            QCOMPARE(date.message().title, QStringLiteral("ВНИМАНИЕ!"));
            QCOMPARE(date.message().text.section('\n', 0, 0), QStringLiteral("Грешно ЕГН на шофьора!"));
            return;
        }
        QVERIFY(date.ok());
        QCOMPARE(date.value(), born);
    }

    // One reason, one cross, in the box of that reason; no reason, no cross.
    void theCrossStandsInTheBoxOfTheReason_data()
    {
        QTest::addColumn<AttestationForm>("form");
        QTest::addColumn<AttestationReason>("reason");
        QTest::addColumn<QString>("box");
        QTest::addColumn<int>("top");
        const auto y2007 = AttestationForm::Decision2007;
        const auto y2009 = AttestationForm::Decision2009;
        QTest::newRow("2007, none") << y2007 << AttestationReason::None << "" << -1;
        QTest::newRow("2007, sick") << y2007 << AttestationReason::SickLeave << "Shape1" << 8865;
        QTest::newRow("2007, annual leave") << y2007 << AttestationReason::AnnualLeave << "Shape2" << 9195;
        QTest::newRow("2007, exempted vehicle") << y2007 << AttestationReason::ExemptVehicle << "Shape3" << 9510;
        QTest::newRow("2009, none") << y2009 << AttestationReason::None << "" << -1;
        QTest::newRow("2009, sick") << y2009 << AttestationReason::SickLeave << "Shape1" << -1;
        QTest::newRow("2009, annual leave") << y2009 << AttestationReason::AnnualLeave << "Shape2" << -1;
        QTest::newRow("2009, leave or rest") << y2009 << AttestationReason::LeaveOrRest << "Shape4" << -1;
        QTest::newRow("2009, exempted vehicle") << y2009 << AttestationReason::ExemptVehicle << "Shape3" << -1;
        QTest::newRow("2009, other work") << y2009 << AttestationReason::OtherWork << "Shape5" << -1;
        QTest::newRow("2009, available") << y2009 << AttestationReason::Available << "Shape6" << -1;
    }
    void theCrossStandsInTheBoxOfTheReason()
    {
        QFETCH(AttestationForm, form);
        QFETCH(AttestationReason, reason);
        QFETCH(QString, box);
        QFETCH(int, top);
        const AttestationSheet sheet = exampleSheet(form, reason);
        const Report report = ReportDAI(sheet, test::exampleAttestingFirm(), today).value();
        const LaidOutReport laid = layoutReport(report);
        const QList<QRectF> lines = primitives(laid, ReportPrimitive::Kind::Line);
        const QList<QRectF> boxes = primitives(laid, ReportPrimitive::Kind::Box);
        QCOMPARE(boxes.size(), form == AttestationForm::Decision2007 ? 3 : 6);
        // The ruled lines of the form (under the firm's block) are not part of a cross.
        QList<QRectF> strokes;
        for (const QRectF &line : lines) {
            if (line.height() != 0)
                strokes.append(line);
        }
        if (box.isEmpty()) {
            QVERIFY(strokes.isEmpty());
            return;
        }
        QCOMPARE(strokes.size(), 2);
        const ReportControl &shape = report.control("PageHeader", box);
        if (top >= 0) {
            QCOMPARE(shape.top, top);
            QCOMPARE(shape.left, 405);
        }
        const QRectF boxRect = [&] {
            for (const QRectF &b : boxes) {
                if (qAbs(b.top() - strokes[0].normalized().top()) < 0.01)
                    return b;
            }
            return QRectF();
        }();
        QVERIFY2(!boxRect.isNull(), "no box under the cross");
        QCOMPARE(strokes[0].normalized(), boxRect);
        QCOMPARE(strokes[1].normalized(), boxRect);
        QVERIFY(strokes[0].top() != strokes[1].top());  // one falling, one rising stroke
        // The box is the one of that reason in the design.
        const double boxTop = (report.design().page.topMargin + shape.top) / 20.0;
        QVERIFY(boxRect.top() >= boxTop - 0.01);
    }

    // Every label of the published form reads back from the laid-out page, on one page, nothing cut.
    void theFormOf2007ReadsEveryLabel()
    {
        const LaidOutReport laid = laidOut(exampleSheet(AttestationForm::Decision2007, AttestationReason::SickLeave));
        QCOMPARE(laid.pageCount(), 1);
        QCOMPARE(laid.windowCaption, QStringLiteral("Зарек 2.3 - Удостоверение за ДАИ"));
        const QString text = pageText(laid);
        const QStringList labels = {
            "УДОСТОВЕРЕНИЕ",
            "ЗА ДЕЙНОСТИ, ПОПАДАЩИ В ОБХВАТА НА РЕГЛАМЕНТ (ЕО) №561/2006 ИЛИ НА ЕВРОПЕЙСКОТО СПОРАЗУМЕНИЕ ЗА РАБОТА НА "
            "ЕКИПАЖИТЕ НА ПРЕВОЗНИТЕ СРЕДСТВА, ИЗВЪРШВАЩИ МЕЖДУНАРОДНИ АВТОМОБИЛНИ ПРЕВОЗИ (AETR)",
            "Попълва се на машина и се подписва преди пътуване",
            "Прилага се към оригиналните тахографски листове, когато те са задължителни",
            "Подправени удостоверения представляват нарушение",
            "1. Име на предприятието/фирмата:", "2.Адрес, пощенски код, град, държава:", "3.Телефонен номер:",
            "4. Номер на факс:", "5. Адрес на електронната поща:", "Аз, долуподписаният", "6. Име:",
            "7. Длъжност в предприятието/фирмата:", "декларирам, че водачът", "8. Име:", "9. Дата на раждане:",
            "10. Номер на лична карта:", "за периода", "11. от", "12. до", "13.", "14.", "15.",
            "е бил в отпуск по болест", "е бил в годишен отпуск",
            "е управлявал превозно средство, попадащо извън обхвата на Регламент (ЕО) №561/2006 или AETR",
            "16. За предприятието/фирмата, място", "дата", "подпис",
            "17. Аз, водач на превозно средство, подвърждавам, че по време на горепосочения период не съм управлявал",
            ". превозно средство, попадащо в обхвата на Регламент (ЕО) №561/2006 или AETR", "18. Място",
            "подпис на водача", "Зарек 2.3",
            // the firm, the driver and the period
            "Транспорт Петров ЕООД", "София, ул. Искър 12",
            "тел:02 987 65 43, факс:0888 123 456, E-mail:office@petrov.bg, URL:http//www.petrov.bg",
            "ул. Искър 12, София, България", "02 987 65 43", "0888 123 456", "office@petrov.bg", "Петър Петров",
            "Управител", "Георги Д'Амато", "02.5.2001 г.", "645123987", "00:00 на 01.03.2026 г.",
            "24:00 на 15.03.2026 г.", "16.03.2026"};
        for (const QString &label : labels)
            QVERIFY2(text.contains(label), qPrintable(label));
        QVERIFY(!text.contains(QChar(0x2026)));  // nothing cut short with "…"
        QVERIFY(laid.textLines(0).join('\n').contains(QStringLiteral("_______________________        ")));
        // The leading point and the blanks of item 17's second line stay as the form writes them.
        QVERIFY(laid.textLines(0).join('\n').contains(QStringLiteral(".      превозно средство")));
        for (const ReportPrimitive &p : laid.pages.at(0).primitives)
            QVERIFY2(p.rect.bottom() < laid.pageSize.height() - 567 / 20.0 + 0.01, qPrintable(p.text));
    }

    void theFormOf2009ReadsItsTwentyTwoItems()
    {
        const LaidOutReport laid = laidOut(exampleSheet(AttestationForm::Decision2009, AttestationReason::OtherWork));
        QCOMPARE(laid.pageCount(), 1);
        const QString text = pageText(laid);
        const QStringList labels = {
            "УДОСТОВЕРЕНИЕ ЗА ДЕЙНОСТИ", "(РЕГЛАМЕНТ (ЕО) № 561/2006 ИЛИ AETR (1))",
            "Да се попълни на машина и да се подпише преди пътуване.",
            "Фалшифицираните удостоверения представляват нарушение.",
            "Част, която се попълва от предприятието/фирмата",
            "1. Име на предприятието/фирмата:", "2. Улица, номер, пощенски код, град, държава:",
            "3. Телефонен номер (включително международния код):", "4. Номер на факс (включително международния код):",
            "5. Адрес на електронна поща:", "Аз, долуподписаният:", "6. Име и фамилия:",
            "7. Длъжност в предприятието/фирмата:", "декларирам, че водачът:", "8. Име и фамилия:",
            "9. Дата на раждане (ден/месец/година):",
            "10. Номер на свидетелството за управление,", "на личната карта или на паспорта:",
            "11. който е започнал работа в", "предприятието/фирмата на (ден/месец/година):", "за периода:",
            "12. от (час/ден/месец/година):", "13. до (час/ден/месец/година):", "14.", "е бил в отпуск по болест (**)",
            "15.", "е бил в годишен отпуск (**)", "16.", "е бил в отпуск или почивка (**)", "17.",
            "е управлявал превозно средство, изключено от обхвата на Регламент (ЕО) № 561/2006 или AETR (**)", "18.",
            "е извършвал друга работа, различна от управлението на превозно средство (**)", "19.",
            "е бил на разположение (**)", "20. За предприятието/фирмата, място:",
            "21. Аз, в качеството си на водач, потвърждавам, че през горепосочения период не съм управлявал превозно "
            "средство, попадащо в обхвата на Регламент (ЕО) № 561/2006 или AETR.",
            "22. Място:", "подпис на водача", "(**) Изберете само една от клетките.",
            "(1) Европейско споразумение за работата на екипажите на превозните средства, извършващи международни "
            "автомобилни превози.",
            "Георги Д'Амато", "02.5.2001 г.", "645123987", "01.06.2019", "00:00 на 01.03.2026 г.", "Управител"};
        for (const QString &label : labels)
            QVERIFY2(text.contains(label), qPrintable(label));
        QVERIFY(!text.contains(QChar(0x2026)));
        for (const ReportPrimitive &p : laid.pages.at(0).primitives)
            QVERIFY2(p.rect.bottom() < laid.pageSize.height() - 567 / 20.0 + 0.01, qPrintable(p.text));
    }

    // The days of the period are printed as typed, each after its hour: the period begins at 00:00
    // of its first day and ends at 24:00 of its last unless other hours are typed, so the last day
    // is covered.
    void thePeriodIsPrintedAsTyped_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("hourFrom");
        QTest::addColumn<QString>("hourTo");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::newRow("a date") << "1.3.2026" << "00:00" << "24:00" << "00:00" << "24:00";
        QTest::newRow("words") << "първи март 2026" << "00:00" << "24:00" << "00:00" << "24:00";
        QTest::newRow("nothing") << "" << "00:00" << "24:00" << "00:00" << "24:00";
        QTest::newRow("an apostrophe") << "1'3" << "00:00" << "24:00" << "00:00" << "24:00";
        QTest::newRow("hours typed") << "1.3.2026" << "8" << "17.30" << "08:00" << "17:30";
    }
    void thePeriodIsPrintedAsTyped()
    {
        QFETCH(QString, typed);
        QFETCH(QString, hourFrom);
        QFETCH(QString, hourTo);
        QFETCH(QString, from);
        QFETCH(QString, to);
        for (const AttestationForm form : {AttestationForm::Decision2007, AttestationForm::Decision2009}) {
            AttestationSheet sheet = exampleSheet(form);
            sheet.periodFrom = typed;
            sheet.periodTo = typed + QStringLiteral("!");
            sheet.hourFrom = hourFrom;
            sheet.hourTo = hourTo;
            QCOMPARE(caption(sheet, "Label36"), from + QStringLiteral(" на ") + typed + QStringLiteral(" г."));
            QCOMPARE(caption(sheet, "Label42"), to + QStringLiteral(" на ") + typed + QStringLiteral("! г."));
        }
    }

    void anHourIsWrittenAsHoursAndMinutes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("hour");  // empty: not an hour
        QTest::newRow("whole hour") << "8" << "08:00";
        QTest::newRow("with a colon") << "8:05" << "08:05";
        QTest::newRow("with a point") << "17.30" << "17:30";
        QTest::newRow("the end of a day") << "24:00" << "24:00";
        QTest::newRow("blanks around") << " 07:15 " << "07:15";
        QTest::newRow("past the end of a day") << "24:01" << "";
        QTest::newRow("sixty minutes") << "10:60" << "";
        QTest::newRow("three digits") << "123" << "";
        QTest::newRow("nothing") << "" << "";
        QTest::newRow("words") << "обед" << "";
    }
    void anHourIsWrittenAsHoursAndMinutes()
    {
        QFETCH(QString, typed);
        QFETCH(QString, hour);
        QCOMPARE(attestationHour(typed).value_or(QString()), hour);
    }

    // An attestation is printed only with one reason ticked and its item 11 filled in, and with
    // hours that are hours.
    void aSheetWithoutItsReasonOrItemElevenIsRefused_data()
    {
        QTest::addColumn<AttestationForm>("form");
        QTest::addColumn<AttestationReason>("reason");
        QTest::addColumn<QString>("startedOn");
        QTest::addColumn<QString>("periodFrom");
        QTest::addColumn<QString>("hourTo");
        QTest::addColumn<QString>("fault");  // empty: printed
        const auto r = AttestationReason::SickLeave;
        QTest::newRow("2009 complete") << AttestationForm::Decision2009 << r << "01.06.2019" << "01.03.2026" << "24:00" << "";
        QTest::newRow("2009 without a reason") << AttestationForm::Decision2009 << AttestationReason::None << "01.06.2019"
                                               << "01.03.2026" << "24:00" << "Не е отбелязана причина за удостоверението!";
        QTest::newRow("2009 without item 11") << AttestationForm::Decision2009 << r << " " << "01.03.2026" << "24:00"
                                              << "Няма въведена дата на започване на работа (точка 11)!";
        QTest::newRow("2007 complete") << AttestationForm::Decision2007 << r << "" << "01.03.2026" << "24:00" << "";
        QTest::newRow("2007 without item 11") << AttestationForm::Decision2007 << r << "01.06.2019" << "" << "24:00"
                                              << "Няма въведено начало на периода (точка 11)!";
        QTest::newRow("2007 without a reason of its own") << AttestationForm::Decision2007 << AttestationReason::OtherWork
                                                          << "" << "01.03.2026" << "24:00"
                                                          << "Не е отбелязана причина за удостоверението!";
        QTest::newRow("an hour that is none") << AttestationForm::Decision2009 << r << "01.06.2019" << "01.03.2026"
                                              << "25:00" << "Грешен час на периода!";
    }
    void aSheetWithoutItsReasonOrItemElevenIsRefused()
    {
        QFETCH(AttestationForm, form);
        QFETCH(AttestationReason, reason);
        QFETCH(QString, startedOn);
        QFETCH(QString, periodFrom);
        QFETCH(QString, hourTo);
        QFETCH(QString, fault);
        AttestationSheet sheet = exampleSheet(form, reason);
        sheet.startedOn = startedOn;
        sheet.periodFrom = periodFrom;
        sheet.hourTo = hourTo;
        const std::optional<UserMessage> refusal = attestationRefusal(sheet);
        QCOMPARE(refusal ? refusal->text.section(QLatin1Char('\n'), 0, 0) : QString(), fault);
        if (refusal)
            QCOMPARE(refusal->title, QStringLiteral("ВНИМАНИЕ!"));
    }

    // Printed before a driver is picked, the driver's items stay empty.
    void itemsEightToTenAreEmptyBeforeADriverIsPicked_data()
    {
        QTest::addColumn<AttestationForm>("form");
        QTest::newRow("2007") << AttestationForm::Decision2007;
        QTest::newRow("2009") << AttestationForm::Decision2009;
    }
    void itemsEightToTenAreEmptyBeforeADriverIsPicked()
    {
        QFETCH(AttestationForm, form);
        AttestationSheet sheet;
        sheet.form = form;
        for (const char *item : {"Label26", "Label28", "Label30"})
            QCOMPARE(caption(sheet, item), QString());
        QCOMPARE(laidOut(sheet).pageCount(), 1);
    }
};

QTEST_MAIN(AttestationTest)
#include "tst_attestation.moc"
