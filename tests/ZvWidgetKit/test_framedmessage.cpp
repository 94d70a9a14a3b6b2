#include "ZvWidgetKit/framedmessage.h"
#include "messageboxes.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

class FramedMessageTest : public QObject
{
    Q_OBJECT

private slots:
    void paragraphIsCentred()
    {
        QCOMPARE(framedmessage::paragraph(QStringLiteral("余额不足")),
                 QStringLiteral("<p align='center'>余额不足</p>"));
        // A server's text is no pattern.
        QCOMPARE(framedmessage::paragraph(QStringLiteral("%1 %2 100%")),
                 QStringLiteral("<p align='center'>%1 %2 100%</p>"));
        QCOMPARE(framedmessage::paragraph(QString()), QStringLiteral("<p align='center'></p>"));
    }

    void boxIsMadeOfItsArguments_data()
    {
        QTest::addColumn<QString>("second");
        QTest::addColumn<QStringList>("buttons");
        QTest::newRow("one button") << QString() << QStringList{QStringLiteral("确认")};
        QTest::newRow("two buttons") << QStringLiteral("取消")
                                     << QStringList{QStringLiteral("确认"), QStringLiteral("取消")};
    }

    void boxIsMadeOfItsArguments()
    {
        QFETCH(QString, second);
        QFETCH(QStringList, buttons);
        const QString html = QStringLiteral("<p align='center'>甲</p><p align='center'>乙</p>");
        const QList<zvtest::ShownBox> boxes = zvtest::boxesIn(
            [&] { framedmessage::show(html, QStringLiteral("信息确认"), second); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, html);
        QCOMPARE(boxes.first().buttons, buttons);
        QCOMPARE(boxes.first().title, QStringLiteral("信息确认"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
    }

    void answerIsReturned_data()
    {
        QTest::addColumn<QString>("answer");
        QTest::addColumn<bool>("isConfirmed");
        QTest::newRow("first button") << QStringLiteral("确认") << true;
        QTest::newRow("second button") << QStringLiteral("取消") << false;
    }

    void answerIsReturned()
    {
        QFETCH(QString, answer);
        QFETCH(bool, isConfirmed);
        bool result = !isConfirmed;
        const QList<zvtest::ShownBox> boxes = zvtest::boxesIn(
            [&] {
                result = framedmessage::show(QStringLiteral("删除？"), QStringLiteral("信息确认"),
                                             QStringLiteral("取消"));
            },
            {}, answer);
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(result, isConfirmed);
    }
};

ZV_TEST(FramedMessageTest)
#include "test_framedmessage.moc"
