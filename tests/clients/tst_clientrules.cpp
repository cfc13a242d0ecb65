#include "clients/clientrules.h"
#include "core/eik.h"

#include <QtTest>

using namespace zarek;
using namespace zarek::clients;

class ClientRulesTest : public QObject {
    Q_OBJECT
private slots:
    // ЕИК/БУЛСТАТ: public ЕИКs of well-known firms, computed ones whose first weights give 10, and
    // the same numbers with a digit changed.
    void eikControlDigits_data()
    {
        QTest::addColumn<QString>("eik");
        QTest::addColumn<bool>("valid");
        QTest::newRow("Виваком България") << "831642181" << true;
        QTest::newRow("Йеттел България") << "130460283" << true;
        QTest::newRow("Български пощи") << "121396123" << true;
        QTest::newRow("Лукойл Нефтохим Бургас") << "812114069" << true;
        QTest::newRow("Софарма") << "831902088" << true;
        QTest::newRow("НЕК") << "000649348" << true;
        QTest::newRow("Български пощи, клон (13 цифри)") << "1213961230342" << true;
        QTest::newRow("spaces and a space-grouped number") << " 831 642 181 " << true;
        // 1..8 weights give 10 for 10000008: 3..10 give 6; for 10000055 they give 10 again: 0.
        QTest::newRow("second weights") << "100000086" << true;
        QTest::newRow("second weights, 10 taken for 0") << "100000080" << false;
        QTest::newRow("second weights give 10 again") << "100000550" << true;
        // 13 digits whose 2,7,3,5 weights give 10: 4,9,5,7 give the 13th; 10 again gives 0.
        QTest::newRow("13 digits, second weights") << "1213961230193" << true;
        QTest::newRow("13 digits, second weights, 10 taken for 0") << "1213961230190" << false;
        QTest::newRow("13 digits, second weights give 10 again") << "1213961230710" << true;
        QTest::newRow("wrong control digit") << "831642182" << false;
        QTest::newRow("two digits swapped") << "836142181" << false;
        QTest::newRow("13 digits, wrong 13th") << "1213961230343" << false;
        QTest::newRow("13 digits, wrong 9th") << "1213961240342" << false;
        QTest::newRow("8 digits") << "83164218" << false;
        QTest::newRow("10 digits") << "8316421810" << false;
        QTest::newRow("letters") << "83164218A" << false;
        QTest::newRow("blank") << "" << false;
    }
    void eikControlDigits()
    {
        QFETCH(QString, eik);
        QFETCH(bool, valid);
        QCOMPARE(isValidEik(eik), valid);
        QCOMPARE(!checkEik(eik).has_value(), valid);
    }

    // A bad ЕИК says which fault it has.
    void eikMessages_data()
    {
        QTest::addColumn<QString>("eik");
        QTest::addColumn<QString>("text");
        QTest::newRow("length") << "12345" << "ЕИК/БУЛСТАТ „12345“ не е от 9 или 13 цифри!\nМоля, въведете ЕИК/БУЛСТАТ от 9 или 13 цифри.";
        QTest::newRow("control digit") << "831642182" << "Контролната цифра на ЕИК/БУЛСТАТ 831642182 не е вярна!\nМоля, проверете ЕИК/БУЛСТАТ.";
    }
    void eikMessages()
    {
        QFETCH(QString, eik);
        QFETCH(QString, text);
        const auto message = checkEik(eik);
        QVERIFY(message);
        QCOMPARE(message->text, text);
        QCOMPARE(message->title, QStringLiteral("ВНИМАНИЕ!"));
    }

    void vatNumbers_data()
    {
        QTest::addColumn<QString>("vat");
        QTest::addColumn<QString>("eik");
        QTest::addColumn<bool>("valid");
        QTest::newRow("BG and the ЕИК") << "BG831642181" << "831642181" << true;
        QTest::newRow("small letters and spaces") << "bg 831642181" << "831642181" << true;
        QTest::newRow("BG, no ЕИК known") << "BG130460283" << "" << true;
        QTest::newRow("BG and the first nine of a branch's ЕИК") << "BG121396123" << "1213961230342" << true;
        QTest::newRow("BG and another firm's ЕИК") << "BG130460283" << "831642181" << false;
        QTest::newRow("BG, bad control digit") << "BG831642182" << "" << false;
        QTest::newRow("BG and a person's ЕГН") << "BG7523169263" << "" << true;
        QTest::newRow("BG and a bad ЕГН") << "BG7523169264" << "" << false;
        QTest::newRow("BG and 13 digits") << "BG1213961230342" << "" << false;
        QTest::newRow("ЕИК without BG") << "831642181" << "831642181" << false;
        QTest::newRow("Germany") << "DE811569869" << "" << true;
        QTest::newRow("Romania") << "RO18547290" << "" << true;
        QTest::newRow("Greece is EL") << "EL094014201" << "" << true;
        QTest::newRow("Greece as GR") << "GR094014201" << "" << false;
        QTest::newRow("Netherlands with letters") << "NL004495445B01" << "" << true;
        QTest::newRow("not an EU state") << "US123456789" << "" << false;
        QTest::newRow("prefix only") << "DE" << "" << false;
        QTest::newRow("too long") << "DE1234567890123" << "" << false;
        QTest::newRow("no digit") << "FRABCDEFGHIJ" << "" << false;
    }
    void vatNumbers()
    {
        QFETCH(QString, vat);
        QFETCH(QString, eik);
        QFETCH(bool, valid);
        const auto message = checkVatNumber(vat, eik);
        QVERIFY2(message.has_value() != valid, message ? qPrintable(message->text) : "accepted");
    }

    void ibans_data()
    {
        QTest::addColumn<QString>("iban");
        QTest::addColumn<bool>("valid");
        QTest::newRow("BG") << "BG80BNBG96611020345678" << true;
        QTest::newRow("BG grouped by four, small letters") << "bg80 bnbg 9661 1020 3456 78" << true;
        QTest::newRow("BG, a digit changed") << "BG80BNBG96611020345679" << false;
        QTest::newRow("BG, check digits changed") << "BG81BNBG96611020345678" << false;
        QTest::newRow("BG, two digits swapped") << "BG80BNBG96611020345687" << false;
        QTest::newRow("BG, one character short") << "BG80BNBG9661102034567" << false;
        QTest::newRow("Germany") << "DE89370400440532013000" << true;
        QTest::newRow("Greece") << "GR1601101250000000012300695" << true;
        QTest::newRow("letters for digits") << "BGXXBNBG96611020345678" << false;
        QTest::newRow("blank") << "" << false;
    }
    void ibans()
    {
        QFETCH(QString, iban);
        QFETCH(bool, valid);
        QCOMPARE(isValidIban(iban), valid);
        QCOMPARE(!checkIban(iban).has_value(), valid);
    }

    // A client is refused for its first fault, and the box of that fault is named.
    void clientChecks_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("eik");
        QTest::addColumn<QString>("vat");
        QTest::addColumn<QString>("term");
        QTest::addColumn<QString>("fault");
        QTest::newRow("all given") << "Виваком България ЕАД" << "831642181" << "BG831642181" << "30" << "";
        QTest::newRow("only a name") << "Нов клиент" << "" << "" << "" << "";
        QTest::newRow("no name") << "  " << "831642181" << "" << "30" << "Ime";
        QTest::newRow("bad ЕИК") << "Клиент" << "831642182" << "" << "30" << "EIK";
        QTest::newRow("bad VAT number") << "Клиент" << "831642181" << "BG130460283" << "30" << "DDSNomer";
        QTest::newRow("foreign VAT number, no ЕИК") << "Spedition GmbH" << "" << "DE811569869" << "14" << "";
        QTest::newRow("term 365") << "Клиент" << "" << "" << "365" << "";
        QTest::newRow("term 366") << "Клиент" << "" << "" << "366" << "SrokDni";
        QTest::newRow("term below 0") << "Клиент" << "" << "" << "-1" << "SrokDni";
        QTest::newRow("term a fraction") << "Клиент" << "" << "" << "30.5" << "SrokDni";
        QTest::newRow("term not a number") << "Клиент" << "" << "" << "nan" << "SrokDni";
        QTest::newRow("term infinite") << "Клиент" << "" << "" << "inf" << "SrokDni";
        QTest::newRow("term a word") << "Клиент" << "" << "" << "месец" << "SrokDni";
    }
    void clientChecks()
    {
        QFETCH(QString, name);
        QFETCH(QString, eik);
        QFETCH(QString, vat);
        QFETCH(QString, term);
        QFETCH(QString, fault);
        QVariantMap entry{{"Ime", name}, {"EIK", eik}, {"DDSNomer", vat}, {"SrokDni", term}};
        QString column;
        const auto message = checkClient(entry, &column);
        QCOMPARE(message.has_value(), !fault.isEmpty());
        QCOMPARE(column, fault);
    }

    // What is typed is put right: the name trimmed, identifiers compact, a blank term 0.
    void theEntryIsPutRight()
    {
        QVariantMap entry{{"Ime", "  Виваком България ЕАД "}, {"EIK", " 831 642 181"}, {"DDSNomer", "bg831642181 "},
                          {"SrokDni", ""}};
        QVERIFY(!checkClient(entry));
        QStringList putRight;
        for (const char *box : {"Ime", "EIK", "DDSNomer", "SrokDni"})
            putRight << entry.value(QLatin1String(box)).toString();
        QCOMPARE(putRight, (QStringList{"Виваком България ЕАД", "831642181", "BG831642181", "0"}));
    }
};

QTEST_GUILESS_MAIN(ClientRulesTest)
#include "tst_clientrules.moc"
