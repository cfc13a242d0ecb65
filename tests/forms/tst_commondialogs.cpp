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
    void diaInfHasItsDesignCaptionIconAndOneCloseButton()
    {
        DiaInf box({QString(), QStringLiteral("Няма избрани ограничения за търсене!"), UserMessage::Icon::None});
        QCOMPARE(box.objectName(), QStringLiteral("DiaInf"));
        QCOMPARE(box.windowTitle(), QStringLiteral("Информация"));
        QCOMPARE(labelText(&box), QStringLiteral("Няма избрани ограничения за търсене!"));
        QVERIFY(!box.findChild<QLabel *>(QStringLiteral("Image1"))->pixmap().isNull());
        QCOMPARE(buttonTexts(&box), QStringList{QStringLiteral("OKButton=Затвори")});
    }

    void theErrorBoxShowsItsCaptionAndNumberColonDescription()
    {
        DiaInf box(CourseStore::conflictMessage(QStringLiteral("ГРЕШКА при запис!")));
        QCOMPARE(box.windowTitle(), QStringLiteral("ГРЕШКА при запис!"));
        QVERIFY(labelText(&box).startsWith(QStringLiteral("-2147217864:Записът е променен")));
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

    void askAnswersByTheButtonThatClosedTheDialog_data()
    {
        QTest::addColumn<QString>("press");
        QTest::addColumn<bool>("answer");
        QTest::newRow("OK") << "OKButton" << true;
        QTest::newRow("Отказ") << "CancelButton" << false;
        QTest::newRow("Esc") << "Esc" << false;
    }
    void askAnswersByTheButtonThatClosedTheDialog()
    {
        QFETCH(QString, press);
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
        QCOMPARE(boxes.ask({QString(), QStringLiteral("Наистна ли искате да изтриете записа?"), UserMessage::Icon::Question}),
                 answer);
        QCOMPARE(title, QStringLiteral("Внимание!"));
        QCOMPARE(buttons, (QStringList{QStringLiteral("CancelButton=Отказ"), QStringLiteral("OKButton=OK")}));
    }

    void aYesNoQuestionHasDaAndNe()
    {
        WidgetMessageService boxes;
        QStringList buttons;
        whenShown<Dialog>([&buttons](Dialog *box) {
            buttons = buttonTexts(box);
            box->okButton()->click();
        });
        QVERIFY(boxes.askYesNo({QStringLiteral("   ВНИМАНИЕ!"), QStringLiteral("Изтривате информацията за пътния лист!"),
                                UserMessage::Icon::Critical}));
        QCOMPARE(buttons, (QStringList{QStringLiteral("CancelButton=Не"), QStringLiteral("OKButton=Да")}));
    }

    void enterAnswersOkToAQuestionAndNeToAYesNoQuestion_data()
    {
        QTest::addColumn<bool>("yesNo");
        QTest::addColumn<bool>("answer");
        QTest::newRow("OK/Отказ") << false << true;
        QTest::newRow("Да/Не: drops, overwrites or deletes") << true << false;
    }
    void enterAnswersOkToAQuestionAndNeToAYesNoQuestion()
    {
        QFETCH(bool, yesNo);
        QFETCH(bool, answer);
        WidgetMessageService boxes;
        whenShown<Dialog>([](Dialog *box) { QTest::keyClick(box, Qt::Key_Return); });
        const UserMessage question{QString(), QStringLiteral("Да се откажа ли от промените?"), UserMessage::Icon::Question};
        QCOMPARE(yesNo ? boxes.askYesNo(question) : boxes.ask(question), answer);
    }

    // Enter pressed as the box opens goes to the button with the focus: it must be the default.
    // A Да/Не box opened with the focus on "Да", so Enter dropped what the question was about.
    void enterOnTheFocusAnswersTheDefault_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("answer");
        QTest::newRow("OK/Отказ") << "ask" << true;
        QTest::newRow("OK/Отказ that deletes") << "destructive" << false;
        QTest::newRow("Да/Не") << "yesNo" << false;
    }
    void enterOnTheFocusAnswersTheDefault()
    {
        QFETCH(QString, kind);
        QFETCH(bool, answer);
        WidgetMessageService boxes;
        QString focused;
        whenShown<Dialog>([&focused](Dialog *box) {
            QVERIFY(QTest::qWaitForWindowActive(box));
            focused = QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
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

    void progDialogHasItsCaptionBarAndADisabledButton()
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
    }

    void closingTheProgressBoxIsToldToTheCaller()
    {
        ProgDialog progress(QStringLiteral("Заплати"), 3);
        progress.show();
        progress.setCloseEnabled(true);
        progress.findChild<QPushButton *>(QStringLiteral("OKButton"))->click();
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
