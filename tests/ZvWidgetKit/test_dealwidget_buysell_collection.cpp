#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "detailfigures.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QPointer>
#include <QStringListModel>
#include <QtTest/QtTest>

using zvtest::TicketBench;

namespace {

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

void choose(const QString &id)
{
    pool()->slot_collectionTableView_clicked(id);
}

} // namespace

// Which collection is on the ticket: its two combo boxes, the pool and the server's list.
class DealWidgetBuySellCollectionTest : public QObject
{
    Q_OBJECT

private:
    static QString shown(const TicketBench &bench)
    {
        return QStringLiteral("%1 %2 | %3 %4 | %5 x %6")
            .arg(bench.codes()->currentIndex())
            .arg(bench.codes()->currentText())
            .arg(bench.names()->currentIndex())
            .arg(bench.names()->currentText(), bench.price()->text(), bench.count()->text());
    }

    // Whether the ticket follows the quotes of this collection.
    static bool follows(TicketBench *bench, const QString &id)
    {
        ZvUBTopFive::Data data = zvtest::quoteData(id);
        data.sells[0].quantity = 1000 + nextNumber();
        bench->storeQuote(data);
        return bench->text("label_sell1_qty") == QString::number(data.sells[0].quantity);
    }

    static int nextNumber()
    {
        static int number = 0;
        return number += 17;
    }

private slots:
    void theFirstOfTheListIsOnTheTicket()
    {
        TicketBench bench;
        QCOMPARE(shown(bench), QStringLiteral("0 600137 | 0 庚申猴票 | 0.00 x 0"));
        QVERIFY(follows(&bench, "1001"));
        QVERIFY(!follows(&bench, "1002"));
    }

    void aChoiceElsewhereComesOntoTheTicket()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        QSignalSpy codeChanged(bench.codes(), &QComboBox::currentTextChanged);
        QSignalSpy nameChanged(bench.names(), &QComboBox::currentTextChanged);
        choose("1003");
        QCOMPARE(shown(bench), QStringLiteral("2 600139 | 2 壬戌狗票 | 0.00 x 0"));
        QCOMPARE(bench.names()->lineEdit()->cursorPosition(), 0);
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
        QCOMPARE(codeChanged.count() + nameChanged.count(), 0);
        QVERIFY(!bench.codes()->signalsBlocked());
        QVERIFY(!bench.names()->signalsBlocked());
        QVERIFY(follows(&bench, "1003"));
        QVERIFY(!follows(&bench, "1001"));
    }

    // The composite, what no list knows, and what is there already: price and count stay.
    void otherChoicesLeaveTheTicket()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        const QString before = shown(bench);
        for (const char *id : {"-1", "9999", "x", "1001"}) {
            choose(id);
            QCOMPARE(shown(bench), before);
            QVERIFY(!bench.codes()->signalsBlocked());
            QVERIFY(!bench.names()->signalsBlocked());
            QVERIFY(follows(&bench, "1001"));
        }
    }

    void aCodeFromTheList_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way : {"down", "typed", "typed and offered", "completed"})
            QTest::newRow(way) << way;
    }

    void aCodeFromTheList()
    {
        QFETCH(QString, way);
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        QSignalSpy selected(pool(), &ZvWidgetSignalSLotPool::signal_global_colletionId_changed);
        QSignalSpy timeLine(pool(), &ZvWidgetSignalSLotPool::signal_collectionTimeLine_action);
        if (way == "down") {
            QTest::keyClick(bench.codes(), Qt::Key_Down);
        } else {
            bench.type(bench.codes(), way == "completed" ? "6001" : "600138");
            QAbstractItemView *offers = bench.codes()->completer()->popup();
            QTRY_VERIFY(offers->isVisible());
            if (way == "typed") {
                offers->hide();
                QTest::keyClick(bench.codes()->lineEdit(), Qt::Key_Return);
            } else {
                if (way == "completed") {
                    QTest::keyClick(offers, Qt::Key_Down);
                    QTest::keyClick(offers, Qt::Key_Down);
                }
                QTest::keyClick(offers, Qt::Key_Return);
                QVERIFY(!offers->isVisible());
            }
        }
        QCOMPARE(shown(bench), QStringLiteral("1 600138 | 1 辛酉鸡票 | 0.00 x 0"));
        QCOMPARE(bench.names()->lineEdit()->cursorPosition(), 0);
        QVERIFY(!bench.names()->signalsBlocked());
        QVERIFY(selected.count() >= 1);
        QCOMPARE(selected.first().first().toString(), QStringLiteral("1002"));
        QCOMPARE(timeLine.count(), selected.count());
        QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID(),
                 QStringLiteral("1002"));
        QVERIFY(bench.calls().contains("ZvServerEngine::setGlobalCollectionID(\"1002\")"));
        QVERIFY(follows(&bench, "1002"));
    }

    void aNameFromTheList()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        QSignalSpy timeLine(pool(), &ZvWidgetSignalSLotPool::signal_collectionTimeLine_action);
        QSignalSpy codeChanged(bench.codes(), &QComboBox::currentTextChanged);
        QTest::keyClick(bench.names(), Qt::Key_Down);
        QCOMPARE(shown(bench), QStringLiteral("1 600138 | 1 辛酉鸡票 | 0.00 x 0"));
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::setGlobalCollectionID(\"1002\")"});
        QCOMPARE(timeLine.count(), 1);
        QCOMPARE(codeChanged.count(), 0);
        QVERIFY(!bench.codes()->signalsBlocked());
        QVERIFY(follows(&bench, "1002"));
    }

    void aNameThatIsActivatedLeavesTheCursors()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        bench.names()->lineEdit()->setCursorPosition(2);
        bench.codes()->lineEdit()->setCursorPosition(3);
        bench.calls();
        QVERIFY(QMetaObject::invokeMethod(bench.page.get(), "slot_comboxName_activated"));
        QCOMPARE(bench.names()->lineEdit()->cursorPosition(), 2);
        QCOMPARE(bench.codes()->lineEdit()->cursorPosition(), 3);
        QCOMPARE(shown(bench), QStringLiteral("0 600137 | 0 庚申猴票 | 0.00 x 0"));
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::setGlobalCollectionID(\"1001\")"});
    }

    // The same once more: the pool is told all the same, and price and count begin anew.
    void theCodeThatIsThereAlready()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        QVERIFY(QMetaObject::invokeMethod(bench.page.get(), "slot_comboxCode_activated"));
        QCOMPARE(bench.calls(), QStringList{"ZvServerEngine::setGlobalCollectionID(\"1001\")"});
        QCOMPARE(shown(bench), QStringLiteral("0 600137 | 0 庚申猴票 | 0.00 x 0"));
    }

    void unknownTextsOnlyResetPriceAndCount()
    {
        for (const char *slot : {"slot_comboxCode_activated", "slot_comboxName_activated"}) {
            TicketBench bench;
            bench.clickPrice(10000);
            bench.type(bench.codes(), "7");
            bench.type(bench.names(), "猴");
            bench.typeCount("3");
            QVERIFY(QMetaObject::invokeMethod(bench.page.get(), slot));
            QCOMPARE(shown(bench), QStringLiteral("0 7 | 0 猴 | 0.00 x 0"));
            QCOMPARE(bench.calls(), QStringList());
            QVERIFY(!bench.codes()->signalsBlocked());
            QVERIFY(!bench.names()->signalsBlocked());
            QVERIFY(follows(&bench, "1001"));
        }
    }

    // What a user types is not put into the lists.
    void typedTextsStayOutOfTheLists()
    {
        TicketBench bench;
        bench.type(bench.codes(), "700000");
        QTest::keyClick(bench.codes()->lineEdit(), Qt::Key_Return);
        QCOMPARE(bench.codes()->count(), 3);
        QCOMPARE(bench.codes()->currentIndex(), 0);
    }

    void aNewList()
    {
        TicketBench bench;
        const QPointer<QAbstractItemModel> codes = bench.codes()->model();
        const QPointer<QAbstractItemModel> names = bench.names()->model();
        bench.clickPrice(10000);
        bench.typeCount("3");
        choose("1002");
        bench.storeBrief({{"2001", "700001", "甲"}, {"2002", "700002", "乙"}});
        QCOMPARE(bench.codes()->count(), 2);
        QCOMPARE(bench.names()->itemText(1), QStringLiteral("乙"));
        QCOMPARE(bench.codes()->currentText(), QStringLiteral("700001"));
        QCOMPARE(bench.names()->currentText(), QStringLiteral("甲"));
        QCOMPARE(bench.names()->lineEdit()->cursorPosition(), 0);
        for (const QComboBox *combo : {bench.codes(), bench.names()}) {
            QVERIFY(qobject_cast<QStringListModel *>(combo->model()));
            QVERIFY(!combo->model()->parent());
        }
        // The old lists stay.
        QVERIFY(codes);
        QVERIFY(names);
        QVERIFY(bench.codes()->model() != codes);
        QVERIFY(follows(&bench, "2001"));
        QVERIFY(!follows(&bench, "1002"));
        // And the completer offers the new ones.
        bench.type(bench.codes(), "700002");
        QCOMPARE(bench.codes()->completer()->completionCount(), 1);
    }

    // A list that arrives is no choice: what was entered stays, and so does the last quote.
    void aNewListKeepsWhatWasEntered()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("3");
        const QString level = bench.text("label_sell1_price");
        bench.storeBrief({{"2001", "700001", "甲"}, {"2002", "700002", "乙"}});
        QCOMPARE(shown(bench), QStringLiteral("0 700001 | 0 甲 | 100.00 x 3"));
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
        QCOMPARE(bench.text("label_sell1_price"), level);
        QCOMPARE(bench.text("label_latest_value"), QStringLiteral("100.00"));
        for (const char *price : {"90", "110"}) {
            bench.typePrice(price);
            QCOMPARE(bench.order(QStringLiteral("取消")).first().title,
                     QStringLiteral("买前信息确认"));
        }
        for (const char *price : {"89.99", "110.01"}) {
            bench.typePrice(price);
            QCOMPARE(bench.order().first().text,
                     QStringLiteral("<p align='center'>请输入正确的商品价格!</p>"));
        }
    }

    void theOldLimitsHoldUntilTheNewQuote()
    {
        TicketBench bench;
        choose("1002");
        bench.typePrice("5000");
        bench.click("pushButton_price_sub");
        QCOMPARE(bench.price()->text(), QStringLiteral("110.00"));
        ZvUBTopFive::Data quote = zvtest::quoteData("1002");
        quote.upperLimit = 20000;
        bench.storeQuote(quote);
        bench.typePrice("5000");
        bench.click("pushButton_price_sub");
        QCOMPARE(bench.price()->text(), QStringLiteral("200.00"));
    }

    // The composite's kind of identifier is never on the ticket, not even where a list has it.
    void negativeIdentifiersOfAList()
    {
        TicketBench bench;
        bench.storeBrief({{"2001", "700001", "甲"}, {"-5", "600150", "x"}});
        bench.clickPrice(10000);
        const QString before = shown(bench);
        choose("-5");
        QCOMPARE(shown(bench), before);
        QVERIFY(follows(&bench, "2001"));
        bench.storeBrief({{"-5", "600150", "x"}, {"2001", "700001", "甲"}});
        QCOMPARE(bench.codes()->currentText(), QStringLiteral("600150"));
        QVERIFY(!follows(&bench, "-5"));
        QVERIFY(!follows(&bench, "2001"));
    }

    void aListOfAnotherServerIsTakenToo()
    {
        const TicketBench bench;
        ZvServerCache::getZvServerCacheInstance()->storeBriefInfo(
            zvtest::briefInfo({{"3001", "800001", "丙"}}), QStringLiteral("/lc/wenwan/"));
        QCOMPARE(bench.codes()->currentText(), QStringLiteral("800001"));
    }

    void anEmptyList()
    {
        TicketBench bench;
        bench.storeBrief({});
        QCOMPARE(bench.codes()->count(), 0);
        QCOMPARE(bench.names()->count(), 0);
        QVERIFY(!follows(&bench, "1001"));
        QCOMPARE(bench.order().first().text,
                 QStringLiteral("<p align='center'>请输入正确的商品代码!</p>"));
    }
};

ZV_TEST(DealWidgetBuySellCollectionTest)
#include "test_dealwidget_buysell_collection.moc"
