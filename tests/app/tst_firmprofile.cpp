#include "core/firmprofile.h"
#include "data/firmstore.h"
#include "testdatabase.h"

#include <QSqlQuery>

using namespace zarek;

class FirmProfileTest : public QObject {
    Q_OBJECT
private slots:
    void initTestCase_data() { test::addEngineRows(); }

    // An empty firm table stops the program; of several rows only the first counts.
    void anEmptyFirmTableStopsTheProgramAndOnlyTheFirstRowCounts()
    {
        ZAREK_SCRATCH_DB_AS(scratch, db);
        const FirmProfileLoad none = LoadFirmProfile(db);
        QVERIFY(!none.profile);
        QCOMPARE(none.stopMessage, std::optional(UserMessage{QStringLiteral("ВНИМАНИЕ!"),
                                                             QStringLiteral("Липсват данни!\nИзлизам от програмата!"),
                                                             UserMessage::Icon::Exclamation}));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO ZarekCfg (UserName) VALUES ('Първа')")));
        QVERIFY(scratch.exec(QStringLiteral("INSERT INTO ZarekCfg (UserName) VALUES ('Втора')")));
        const FirmProfileLoad load = LoadFirmProfile(db);
        QVERIFY(!load.stopMessage);
        QCOMPARE(load.profile->UserName, QStringLiteral("Първа"));
    }

    void requiredFieldsAreTrimmedAndOptionalOnesNeverEmpty()
    {
        ZAREK_SCRATCH_DB(scratch);
        QVERIFY(test::insertRow(scratch.db(), QStringLiteral("ZarekCfg"),
                                QStringLiteral("UserName, UserAdres, UserCity, UserCountry, UserDanN, UserBULSTAT, UserMOL, "
                                               "UserEmail, UserTel, UserGSM, UserURL"),
                                {"  Д'Арт Транс ООД ", " ул. Шипка 5 ", " Пловдив", "", "   ", " 123456789 ", " Петър Петров ",
                                 "", "   ", " 0888 ", ""}));
        QSqlDatabase db = scratch.db();
        const FirmProfile profile = *LoadFirmProfile(db).profile;
        // Required fields trimmed (an all-blank one, the telephone, stays empty); optional ones
        // trimmed, or a single blank when empty.
        QCOMPARE((QStringList{profile.UserName, profile.UserAdres, profile.UserCity, profile.UserTel, profile.UserGSM,
                              profile.UserDanN, profile.UserCountry, profile.UserEmail, profile.UserURL, profile.UserBULSTAT,
                              profile.UserMOL}),
                 (QStringList{"Д'Арт Транс ООД", "ул. Шипка 5", "Пловдив", "", "0888", " ", " ", " ", " ", "123456789",
                              "Петър Петров"}));
    }
};

QTEST_GUILESS_MAIN(FirmProfileTest)
#include "tst_firmprofile.moc"
