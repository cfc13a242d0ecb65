#include "core/amountwords.h"

#include <QtTest>

using namespace zarek;

// The "Словом: …" line of an invoice: the amount in Bulgarian words, leva with стотинки (feminine)
// and euro (neuter) with евроцента.
class AmountWordsTest : public QObject {
    Q_OBJECT
private slots:
    void amountsReadInWords_data()
    {
        QTest::addColumn<qint64>("cents");
        QTest::addColumn<bool>("euro");
        QTest::addColumn<QString>("words");
        const auto row = [](const char *name, qint64 cents, bool euro, const char *words) {
            QTest::newRow(name) << cents << euro << QString::fromUtf8(words);
        };
        row("0,01 лв.", 1, false, "нула лева и една стотинка");
        row("0,02 лв.", 2, false, "нула лева и две стотинки");
        row("1 лв.", 100, false, "един лев");
        row("2 лв.", 200, false, "два лева");
        row("11 лв.", 1100, false, "единадесет лева");
        row("21 лв.", 2100, false, "двадесет и един лева");
        row("100 лв.", 10000, false, "сто лева");
        row("101 лв.", 10100, false, "сто и един лева");
        row("120 лв.", 12000, false, "сто и двадесет лева");
        row("1 000 лв.", 100000, false, "хиляда лева");
        row("1 200 лв.", 120000, false, "хиляда и двеста лева");
        row("2 000 лв.", 200000, false, "две хиляди лева");
        row("21 000 лв.", 2100000, false, "двадесет и една хиляди лева");
        row("1 000 000 лв.", 100000000, false, "един милион лева");
        row("2 100 000 лв.", 210000000, false, "два милиона и сто хиляди лева");
        row("1 234 567,89 лв.", 123456789, false,
            "един милион двеста тридесет и четири хиляди петстотин шестдесет и седем лева "
            "и осемдесет и девет стотинки");
        row("21,21 лв.", 2121, false, "двадесет и един лева и двадесет и една стотинки");
        row("0,01 евро", 1, true, "нула евро и един евроцент");
        row("1 евро", 100, true, "едно евро");
        row("2 евро", 200, true, "две евро");
        row("11 евро", 1100, true, "единадесет евро");
        row("21 евро", 2100, true, "двадесет и едно евро");
        row("100 евро", 10000, true, "сто евро");
        row("101 евро", 10100, true, "сто и едно евро");
        row("1 000 евро", 100000, true, "хиляда евро");
        row("2 000 евро", 200000, true, "две хиляди евро");
        row("1 000 000 евро", 100000000, true, "един милион евро");
        row("1 234 567,89 евро", 123456789, true,
            "един милион двеста тридесет и четири хиляди петстотин шестдесет и седем евро "
            "и осемдесет и девет евроцента");
        row("1 001,02 евро", 100102, true, "хиляда и едно евро и два евроцента");
        row("the largest amount", 1000000000000000LL, false, "десет трилиона лева");
    }
    void amountsReadInWords()
    {
        QFETCH(qint64, cents);
        QFETCH(bool, euro);
        QFETCH(QString, words);
        QCOMPARE(amountInWords(Money::fromCents(cents), euro ? Currency::Euro : Currency::Leva), words);
    }

    void anInvalidAmountHasNoWords()
    {
        QVERIFY(amountInWords(Money::invalid(), Currency::Leva).isEmpty());
    }
};

QTEST_APPLESS_MAIN(AmountWordsTest)
#include "tst_amountwords.moc"
