#include "forms/diainf.h"
#include "forms/dialog.h"
#include "forms/messageservice.h"
#include "forms/progdialog.h"
#include "forms/waitcursor.h"
#include "courses/coursestore.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <stdexcept>

using namespace zarek;

namespace {

QStringList buttonTexts(QWidget *box)
{
    QStringList texts;
    for (QPushButton *button : box->findChildren<QPushButton *>())
        texts.append(button->objectName() + QLatin1Char('=') + button->text());
    texts.sort();
    return texts;
}

QString labelText(QWidget *box)
{
    return box->findChild<QLabel *>(QStringLiteral("Label1"))->text();
}

// Runs once the modal box is up: reads it, then lets act close it.
template <typename Box>
void whenShown(std::function<void(Box *)> act)
{
    QTimer::singleShot(0, [act] {
        auto *box = qobject_cast<Box *>(QApplication::activeModalWidget());
        QVERIFY(box);
        act(box);
    });
}

}

class CommonDialogsTest : public QObject {
    Q_OBJECT
private slots:
    void diaInfHasItsDesignCaptionIconAndOneCloseButtonAndAnErrorItsNumber()
    {
        DiaInf box({QString(), QStringLiteral("Няма избрани ограничения за търсене!"), UserMessage::Icon::None});
        QCOMPARE(box.objectName(), QStringLiteral("DiaInf"));
        QCOMPARE(box.windowTitle(), QStringLiteral("Информация"));
        QCOMPARE(labelText(&box), QStringLiteral("Няма избрани ограничения за търсене!"));
        QVERIFY(!box.findChild<QLabel *>(QStringLiteral("Image1"))->pixmap().isNull());
        QCOMPARE(buttonTexts(&box), QStringList{QStringLiteral("OKButton=Затвори")});
        // An error box shows its caption and "number:description".
        DiaInf error(CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(error.windowTitle(), QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(labelText(&error).startsWith(QStringLiteral("-2147217864:Записът е променен")));
    }

    void aTwoLineMessageStandsOnTwoLines()
    {
        DiaInf box(UserMessage::twoLines(QStringLiteral("ГРЕШКА при запис!"), QStringLiteral("Грешно ЕГН на шофьора!"),
                                         QStringLiteral("Моля, въведете 10 числа за ЕГН на шофьора!")));
        box.show();
        auto *label = box.findChild<QLabel *>(QStringLiteral("Label1"));
        const int line = label->fontMetrics().lineSpacing();
        QVERIFY2(label->height() >= 2 * line && label->height() < 3 * line, qPrintable(QString::number(label->height())));
        // Wide enough for the longer line, so neither line wraps.
        QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(
                                      QStringLiteral("Моля, въведете 10 числа за ЕГН на шофьора!")));
    }

    void theBoxesBeepWhenTheyShow()
    {
        RecordingMessageService messages;
        DiaInf info({QString(), QStringLiteral("Готово")});
        info.show();
        Dialog question({QString(), QStringLiteral("Сигурни ли сте?")});
        question.show();
        QCOMPARE(messages.beeps, 2);
    }

    void informShowsDiaInfModally()
    {
        WidgetMessageService boxes;
        QString seen;
        whenShown<DiaInf>([&seen](DiaInf *box) {
            seen = box->windowTitle() + QLatin1Char('|') + labelText(box);
            box->okButton()->click();
        });
        boxes.inform({QStringLiteral("ВНИМАНИЕ!"), QStringLiteral("Списъка е празен\nЩе се създаде нов!")});
        QCOMPARE(seen, QStringLiteral("ВНИМАНИЕ!|Списъка е празен\nЩе се създаде нов!"));
    }

    // The question's box: its title and buttons ("Да"/"Не" for a Да/Не question), and the answer
    // by the button that closed it.
    void askAnswersByTheButtonThatClosedTheDialog_data()
    {
        QTest::addColumn<QString>("press");
        QTest::addColumn<bool>("yesNo");
        QTest::addColumn<bool>("answer");
        QTest::addColumn<QStringList>("buttons");
        const QStringList okCancel{QStringLiteral("CancelButton=Отказ"), QStringLiteral("OKButton=OK")};
        QTest::newRow("OK") << "OKButton" << false << true << okCancel;
        QTest::newRow("Отказ") << "CancelButton" << false << false << okCancel;
        QTest::newRow("Esc") << "Esc" << false << false << okCancel;
        QTest::newRow("Да") << "OKButton" << true << true
                            << QStringList{QStringLiteral("CancelButton=Не"), QStringLiteral("OKButton=Да")};
    }
    void askAnswersByTheButtonThatClosedTheDialog()
    {
        QFETCH(QString, press);
        QFETCH(bool, yesNo);
        QFETCH(bool, answer);
        WidgetMessageService boxes;
        QString title;
        QStringList buttons;
        whenShown<Dialog>([&, press](Dialog *box) {
            title = box->windowTitle();
            buttons = buttonTexts(box);
            if (press == QLatin1String("Esc"))
                QTest::keyClick(box, Qt::Key_Escape);
            else
                box->findChild<QPushButton *>(press)->click();
        });
        const UserMessage question{yesNo ? QStringLiteral("   ВНИМАНИЕ!") : QString(),
                                   QStringLiteral("Наистна ли искате да изтриете записа?"), UserMessage::Icon::Question};
        QCOMPARE(yesNo ? boxes.askYesNo(question) : boxes.ask(question), answer);
        QCOMPARE(title, yesNo ? QStringLiteral("   ВНИМАНИЕ!") : QStringLiteral("Внимание!"));
        QTEST(buttons, "buttons");
    }

    // Enter pressed as the box opens goes to the button with the focus: it must be the default.
    // A Да/Не box opened with the focus on "Да", so Enter dropped what the question was about.
    // Enter to the box itself answers the same: OK to a question, "Не" to a Да/Не question.
    void enterOnTheFocusAnswersTheDefault_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("toTheBox");
        QTest::addColumn<bool>("answer");
        QTest::newRow("OK/Отказ") << "ask" << false << true;
        QTest::newRow("OK/Отказ that deletes") << "destructive" << false << false;
        QTest::newRow("Да/Не") << "yesNo" << false << false;
        QTest::newRow("OK/Отказ, Enter to the box") << "ask" << true << true;
        QTest::newRow("Да/Не, Enter to the box: drops, overwrites or deletes") << "yesNo" << true << false;
    }
    void enterOnTheFocusAnswersTheDefault()
    {
        QFETCH(QString, kind);
        QFETCH(bool, toTheBox);
        QFETCH(bool, answer);
        WidgetMessageService boxes;
        QString focused;
        whenShown<Dialog>([&focused, toTheBox](Dialog *box) {
            QVERIFY(QTest::qWaitForWindowActive(box));
            focused = QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
            QTest::keyClick(toTheBox ? box : QApplication::focusWidget(), Qt::Key_Return);
        });
        const UserMessage question{QString(), QStringLiteral("Да се откажа ли от промените?"), UserMessage::Icon::Question};
        const bool answered = kind == QLatin1String("ask")           ? boxes.ask(question)
                              : kind == QLatin1String("destructive") ? boxes.askDestructive(question)
                                                                     : boxes.askYesNo(question);
        QCOMPARE(answered, answer);
        QCOMPARE(focused, answer ? QStringLiteral("OKButton") : QStringLiteral("CancelButton"));
    }

    void theOkFlagStaysReadableAfterTheDialogCloses()
    {
        Dialog question({QString(), QStringLiteral("Ще загубите данните окончателно")});
        QVERIFY(!question.OkPressed());
        QTimer::singleShot(0, &question, [&question] { question.okButton()->click(); });
        question.exec();
        QVERIFY(question.OkPressed());
        QVERIFY(!question.isVisible());
    }

    void theServiceInForceCanBeReplacedAndRestored()
    {
        {
            RecordingMessageService recording;
            QCOMPARE(&MessageService::instance(), static_cast<MessageService *>(&recording));
            recording.answers = {false};
            QVERIFY(!MessageService::instance().ask({}));
            QVERIFY(MessageService::instance().askYesNo({}));  // nothing queued: OK
            QCOMPARE(recording.asked.size(), 2);
            MessageService::instance().beep();
            QCOMPARE(recording.beeps, 1);
        }
        QVERIFY(dynamic_cast<WidgetMessageService *>(&MessageService::instance()));
    }

    void progDialogHasItsCaptionBarAndAButtonEnabledToClose()
    {
        ProgDialog progress(QStringLiteral("Създавам списъка на клиентите..."), 10);
        QCOMPARE(progress.windowTitle(), QStringLiteral("Зарек 2.3 - Обработка"));
        QCOMPARE(labelText(&progress), QStringLiteral("Създавам списъка на клиентите..."));
        QCOMPARE(progress.findChild<QProgressBar *>(QStringLiteral("ProgBar"))->maximum(), 10);
        auto *button = progress.findChild<QPushButton *>(QStringLiteral("OKButton"));
        QVERIFY(button);
        QCOMPARE(button->text(), QStringLiteral("Затвори"));
        QVERIFY(!button->isEnabled());
        progress.setValue(4);
        QCOMPARE(progress.findChild<QProgressBar *>(QStringLiteral("ProgBar"))->value(), 4);
        QVERIFY(!progress.closedByUser());
        // Closing it, once allowed, is told to the caller.
        progress.show();
        progress.setCloseEnabled(true);
        button->click();
        QVERIFY(progress.closedByUser());
    }

    void theWaitCursorIsRestoredOnAnErrorPath()
    {
        try {
            WaitCursor wait;
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
            {
                WaitCursor inner;
            }
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
            throw std::runtime_error("fault");
        } catch (const std::runtime_error &) {
        }
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(CommonDialogsTest)
#include "tst_commondialogs.moc"
