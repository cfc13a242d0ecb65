#include "core/textcheck.h"

#include <QtTest>

using namespace zarek;

class TextCheckTest : public QObject {
    Q_OBJECT
private slots:
    void controlCharactersAreFound_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("refused");
        QTest::newRow("NUL inside") << QStringLiteral("AB") + QChar(u'\0') + QStringLiteral("CD") << true;
        QTest::newRow("tab") << QStringLiteral("a\tb") << true;
        QTest::newRow("line break") << QStringLiteral("a\nb") << true;
        QTest::newRow("escape") << QStringLiteral("\x1b[31m") << true;
        QTest::newRow("DEL") << QStringLiteral("a\x7f") << true;
        QTest::newRow("C1 control") << QString(QChar(0x85)) << true;
        QTest::newRow("empty") << QString() << false;
        QTest::newRow("Cyrillic, apostrophe, quotes") << QStringLiteral("Д'Аргос „Ранно“ ООД") << false;
        QTest::newRow("blanks") << QStringLiteral("  София - Перник  ") << false;
        QTest::newRow("no-break space") << QStringLiteral("12\u00a0000") << false;
    }
    void controlCharactersAreFound()
    {
        QFETCH(QString, text);
        QFETCH(bool, refused);
        QCOMPARE(hasControlCharacter(text), refused);
        QCOMPARE(checkTypedTexts({QStringLiteral("ok"), text}, QStringLiteral("t")).has_value(), refused);
    }

    void theMessageIsOneAndTwoLines()
    {
        const UserMessage message = controlCharacterMessage(QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(message.title, QStringLiteral("ГРЕШКА при запис!"));
        QCOMPARE(message.text, QStringLiteral("Текстът съдържа непозволен знак!\nМоля, изтрийте управляващите знаци от текста!"));
    }
};

QTEST_APPLESS_MAIN(TextCheckTest)
#include "tst_textcheck.moc"
