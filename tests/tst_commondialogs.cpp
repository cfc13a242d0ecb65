#include "app/messageservice.h"
#include "app/progdialog.h"
#include "app/waitcursor.h"

#include <QAbstractButton>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <QtTest>
#include <stdexcept>

using namespace zarek;

namespace {

struct SeenBox {
    QString title;
    QString text;
    QStringList buttons;
};

}

class CommonDialogsTest : public QObject {
    Q_OBJECT
private slots:
    void diaInfHasOneCloseButtonAndItsDesignCaption()
    {
        WidgetMessageService boxes;
        SeenBox seen;
        QTimer::singleShot(0, [&seen] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            seen.title = box->windowTitle();
            seen.text = box->text();
            for (QAbstractButton *button : box->buttons())
                seen.buttons.append(button->text());
            box->buttons().first()->click();
        });
        boxes.inform({QString(), QStringLiteral("Няма избрани ограничения за търсене!"), UserMessage::Icon::Information});
        QCOMPARE(seen.title, QStringLiteral("Информация"));
        QCOMPARE(seen.text, QStringLiteral("Няма избрани ограничения за търсене!"));
        QCOMPARE(seen.buttons, QStringList{QStringLiteral("Затвори")});
    }

    void dialogAnswersOkOrCancel_data()
    {
        QTest::addColumn<QString>("press");
        QTest::addColumn<bool>("answer");
        QTest::newRow("OK") << "OK" << true;
        QTest::newRow("Отказ") << "Отказ" << false;
    }
    void dialogAnswersOkOrCancel()
    {
        QFETCH(QString, press);
        QFETCH(bool, answer);
        WidgetMessageService boxes;
        QString title;
        QTimer::singleShot(0, [&title, press] {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            QVERIFY(box);
            title = box->windowTitle();
            for (QAbstractButton *button : box->buttons()) {
                if (button->text() == press)
                    button->click();
            }
        });
        QCOMPARE(boxes.ask({QString(), QStringLiteral("Наистна ли искате да изтриете записа?"), UserMessage::Icon::Question}),
                 answer);
        QCOMPARE(title, QStringLiteral("Внимание!"));
    }

    void theServiceInForceCanBeReplacedAndRestored()
    {
        {
            RecordingMessageService recording;
            QCOMPARE(&MessageService::instance(), static_cast<MessageService *>(&recording));
            recording.answers = {false};
            QVERIFY(!MessageService::instance().ask({}));
            QVERIFY(MessageService::instance().ask({}));  // nothing queued: OK
            MessageService::instance().beep();
            QCOMPARE(recording.beeps, 1);
        }
        QVERIFY(dynamic_cast<WidgetMessageService *>(&MessageService::instance()));
    }

    void progDialogHasItsCaptionAndADisabledButton()
    {
        ProgDialog progress(QStringLiteral("Създавам списъка на клиентите..."), 10);
        QCOMPARE(progress.windowTitle(), QStringLiteral("Зарек 2.3 - Обработка"));
        QCOMPARE(progress.labelText(), QStringLiteral("Създавам списъка на клиентите..."));
        auto *button = progress.findChild<QPushButton *>(QStringLiteral("OKButton"));
        QVERIFY(button);
        QCOMPARE(button->text(), QStringLiteral("Затвори"));
        QVERIFY(!button->isEnabled());
    }

    void theWaitCursorIsRestoredOnAnErrorPath()
    {
        try {
            WaitCursor wait;
            QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
            throw std::runtime_error("fault");
        } catch (const std::runtime_error &) {
        }
        QVERIFY(!QApplication::overrideCursor());
    }
};

QTEST_MAIN(CommonDialogsTest)
#include "tst_commondialogs.moc"
