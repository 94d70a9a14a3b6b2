#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "moneybench.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QRegularExpression>
#include <QTime>
#include <QtTest/QtTest>

using zvtest::TicketBench;

namespace {

const QString noneIsTicked = QStringLiteral("当前未选中任何预埋单");

QString sendCall(const QString &md5, const QString &rest)
{
    return QStringLiteral("ZvServerActionResult::sendRequest_prepay_send(\"%1\", %2)")
        .arg(md5, rest);
}

} // namespace

// Orders that are written down and sent later, from the ticket to the answers.
class DealWidgetBuySellPrepayTest : public QObject
{
    Q_OBJECT

private:
    static void choose(const QString &id)
    {
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_collectionTableView_clicked(id);
    }

    // The rows without their times, the first column being the tick.
    static QStringList rows(const TicketBench &bench)
    {
        QStringList lines;
        const QAbstractItemModel *model = bench.prepared()->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            const bool ticked
                = model->index(row, 0).data(Qt::CheckStateRole).toInt() == Qt::Checked;
            QStringList cells{ticked ? "x" : "-"};
            for (const int column : {1, 2, 3, 4, 5, 7})
                cells << model->index(row, column).data().toString();
            lines << cells.join(' ');
        }
        return lines;
    }

    static QString keyOf(const TicketBench &bench, int row)
    {
        return static_cast<DealWidget_PrePay_TableModel *>(bench.prepared()->model())
            ->itemAt(row)
            .md5;
    }

    static void tick(const TicketBench &bench, int row)
    {
        QTableView *view = bench.prepared();
        const QPoint middle = view->visualRect(view->model()->index(row, 0)).center();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, middle);
    }

    // Three orders, the newest on top: a sale, and two buys.
    static void prepareThree(TicketBench *bench)
    {
        bench->page->setTicketMode(DealWidget_BuySell::PreparedMode);
        bench->enter("100.02", "1");
        bench->order();
        bench->enter("99.98", "2");
        bench->order();
        bench->click("pushButton_out");
        bench->enter("101", "3");
        bench->order();
        bench->calls();
        QCOMPARE(bench->prepared()->model()->rowCount(), 3);
    }

private slots:
    void theButtonAddsARow()
    {
        TicketBench bench;
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        bench.enter("100.02", "7");
        const QTime before = QTime::currentTime();
        for (const char *way : {"button", "price", "count"}) {
            const auto boxes = zvtest::boxesIn([&] {
                if (way == QLatin1String("button"))
                    bench.click("pushButton_buysell");
                else if (way == QLatin1String("price"))
                    QTest::keyClick(bench.price(), Qt::Key_Return);
                else
                    QTest::keyClick(bench.count(), Qt::Key_Return);
            });
            QCOMPARE(boxes.size(), 0);
        }
        const QString row = QStringLiteral("- 600137 庚申猴票 买入 100.02 7 未发送");
        QCOMPARE(rows(bench), (QStringList{row, row, row}));
        const QSet<QString> keys{keyOf(bench, 0), keyOf(bench, 1), keyOf(bench, 2)};
        QCOMPARE(keys.size(), 3);
        const QString time = bench.prepared()->model()->index(0, 6).data().toString();
        QVERIFY(QRegularExpression("^\\d\\d:\\d\\d:\\d\\d$").match(time).hasMatch());
        QVERIFY(before.secsTo(QTime::fromString(time, "hh:mm:ss")) >= -1 || before.hour() == 23);
        // Nothing leaves, and the ticket keeps what it shows.
        QCOMPARE(bench.calls(), QStringList());
        QCOMPARE(bench.price()->text(), QStringLiteral("100.02"));
        QCOMPARE(bench.count()->value(), 7);
    }

    void theNewestStandsOnTop()
    {
        TicketBench bench;
        prepareThree(&bench);
        QCOMPARE(rows(bench),
                 (QStringList{"- 600137 庚申猴票 卖出 101.00 3 未发送",
                              "- 600137 庚申猴票 买入 99.98 2 未发送",
                              "- 600137 庚申猴票 买入 100.02 1 未发送"}));
    }

    // The same checks but for the count, which only has to be there.
    void checks()
    {
        TicketBench bench;
        bench.storeMoney(0);
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        const auto fault = [&] {
            const auto boxes = bench.order();
            return boxes.isEmpty() ? QString() : boxes.first().title + boxes.first().text;
        };
        bench.enter("100", "0");
        QCOMPARE(fault(), "错误提示<p align='center'>请输入正确的商品数量!</p>");
        bench.enter("110.01", "1");
        QCOMPARE(fault(), "错误提示<p align='center'>请输入正确的商品价格!</p>");
        bench.enter("110", "100000000");
        QCOMPARE(fault(), QString());
        bench.type(bench.codes(), "1");
        bench.count()->setFocus();
        QCOMPARE(fault(), "错误提示<p align='center'>请输入正确的商品代码!</p>");
        QCOMPARE(bench.prepared()->model()->rowCount(), 1);
    }

    void nothingTicked()
    {
        TicketBench bench;
        prepareThree(&bench);
        for (const char *button : {"pushButton_deletePrePayItem", "pushButton_sendPrePayItem"}) {
            QVERIFY(zvtest::boxesIn([&] { bench.click(button); }).isEmpty());
            QCOMPARE(zvtest::notices(), QStringList{noneIsTicked});
            zvtest::dropNotices();
        }
        QCOMPARE(bench.prepared()->model()->rowCount(), 3);
        QCOMPARE(bench.calls(), QStringList());
    }

    void allAndNone()
    {
        TicketBench bench;
        prepareThree(&bench);
        const auto ticks = [&] { return rows(bench).filter(QRegularExpression("^x")).size(); };
        bench.click("pushButton_selectAllPrePayItem");
        QCOMPARE(ticks(), 3);
        QCOMPARE(bench.calls(), QStringList{"全选"});
        bench.click("pushButton_deselectAllPrePayItem");
        QCOMPARE(ticks(), 0);
        tick(bench, 1);
        QCOMPARE(ticks(), 1);
        // A new row comes on top, and the tick goes down with its row.
        bench.order();
        QVERIFY(rows(bench).at(2).startsWith(QStringLiteral("x 600137 庚申猴票 买入 99.98")));
    }

    void deletes()
    {
        TicketBench bench;
        prepareThree(&bench);
        tick(bench, 0);
        tick(bench, 2);
        const auto remove = [&](const QString &answer) {
            return zvtest::boxesIn([&] { bench.click("pushButton_deletePrePayItem"); }, {}, answer);
        };
        auto boxes = remove("取消");
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>删除选中的预埋单？</p>"));
        QCOMPARE(boxes.first().buttons, (QStringList{"确认", "取消"}));
        QCOMPARE(boxes.first().title, QStringLiteral("信息确认"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(bench.prepared()->model()->rowCount(), 3);
        remove("确认");
        QCOMPARE(rows(bench), QStringList{"- 600137 庚申猴票 买入 99.98 2 未发送"});
        QCOMPARE(bench.calls(), QStringList());
    }

    // From the last row to the first; the collection is that of the newest list.
    void sends()
    {
        TicketBench bench;
        prepareThree(&bench);
        choose("1002");
        bench.storeQuote([] {
            ZvUBTopFive::Data data;
            data.collectionId = QStringLiteral("1002");
            data.lowerLimit = 1;
            data.upperLimit = 100000;
            return data;
        }());
        bench.enter("12.34", "4");
        bench.order();
        tick(bench, 0);
        tick(bench, 1);
        tick(bench, 3);
        const QString newest = keyOf(bench, 0);
        const QString sale = keyOf(bench, 1);
        const QString oldest = keyOf(bench, 3);
        bench.calls();
        const auto send = [&](const QString &answer) {
            return zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); }, {}, answer);
        };
        auto boxes = send("取消");
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>发送选中的预埋单？</p>"));
        QCOMPARE(boxes.first().buttons, (QStringList{"确认", "取消"}));
        QCOMPARE(boxes.first().title, QStringLiteral("信息确认"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(bench.calls(), QStringList());

        const QStringList before = rows(bench);
        send("确认");
        QCOMPARE(bench.calls(),
                 (QStringList{sendCall(oldest, "1, \"1001\", 100.02, 1"),
                              sendCall(sale, "2, \"1001\", 101, 3"),
                              sendCall(newest, "2, \"1002\", 12.34, 4")}));
        // They wait as they are, ticks included.
        QCOMPARE(rows(bench), before);
    }

    void aBoxThatIsClosedDoesNothing_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("byItsCross");
        for (const char *button : {"pushButton_deletePrePayItem", "pushButton_sendPrePayItem"}) {
            QTest::addRow("%s by Escape", button) << button << false;
            QTest::addRow("%s by the cross", button) << button << true;
        }
    }

    void aBoxThatIsClosedDoesNothing()
    {
        QFETCH(QString, button);
        QFETCH(bool, byItsCross);
        TicketBench bench;
        prepareThree(&bench);
        bench.click("pushButton_selectAllPrePayItem");
        bench.calls();
        const QStringList before = rows(bench);
        const auto boxes
            = zvtest::boxesIn([&] { bench.click(button); }, [&] { zvtest::closeBox(byItsCross); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(bench.calls(), QStringList());
        QCOMPARE(rows(bench), before);
    }

    // Such an order is the server's to refuse; it does not keep the others of its batch back.
    void aCodeThatHasLeftTheList()
    {
        TicketBench bench;
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        bench.enter("100.02", "1");
        bench.order();
        choose("1002");
        ZvUBTopFive::Data quote;
        quote.collectionId = QStringLiteral("1002");
        quote.lowerLimit = 1;
        quote.upperLimit = 100000;
        bench.storeQuote(quote);
        bench.enter("12.34", "4");
        bench.order();
        bench.storeBrief({{"1002", "600138", "辛酉鸡票"}});
        bench.click("pushButton_selectAllPrePayItem");
        const QString lost = keyOf(bench, 1);
        const QString other = keyOf(bench, 0);
        bench.calls();
        zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); });
        QCOMPARE(bench.calls(),
                 (QStringList{sendCall(lost, "1, \"\", 100.02, 1"),
                              sendCall(other, "1, \"1002\", 12.34, 4")}));
        zvtest::dropNotices();
        emit zvtest::actions()->signal_trade_buy_succeed();
        emit zvtest::actions()->signal_trade_buy_failed(QStringLiteral("甲"));
        emit zvtest::actions()->signal_trade_sell_succeed();
        emit zvtest::actions()->signal_trade_sell_failed(QStringLiteral("乙"));
        QCOMPARE(zvtest::notices(), (QStringList{"买入委托成功", "甲", "卖出委托成功", "乙"}));
    }

    // Ticks are looked at again once the box has closed.
    void answersWhileTheBoxAsks()
    {
        TicketBench bench;
        prepareThree(&bench);
        bench.click("pushButton_selectAllPrePayItem");
        const QString sale = keyOf(bench, 0);
        const QString second = keyOf(bench, 1);
        const QString oldest = keyOf(bench, 2);
        bench.calls();
        zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); },
                        [&] { emit zvtest::actions()->signal_prepay_send_succeed(second); });
        QCOMPARE(bench.calls(),
                 (QStringList{sendCall(oldest, "1, \"1001\", 100.02, 1"),
                              sendCall(sale, "2, \"1001\", 101, 3")}));
        zvtest::boxesIn([&] { bench.click("pushButton_deletePrePayItem"); },
                        [&] { emit zvtest::actions()->signal_prepay_send_succeed(sale); });
        QCOMPARE(rows(bench), QStringList());
    }

    void thePageMayGoWhileTheBoxAsks()
    {
        for (const char *button : {"pushButton_deletePrePayItem", "pushButton_sendPrePayItem"}) {
            TicketBench bench;
            prepareThree(&bench);
            bench.click("pushButton_selectAllPrePayItem");
            bench.calls();
            const auto boxes
                = zvtest::boxesIn([&] { bench.click(button); }, [&] { bench.page.reset(); });
            QCOMPARE(boxes.size(), 1);
            QCOMPARE(bench.calls(), QStringList());
        }
    }

    // While a batch goes out, the answers of other orders are not told; afterwards they are again.
    void fourSignalsAreCutDuringABatch()
    {
        TicketBench bench;
        prepareThree(&bench);
        bench.click("pushButton_selectAllPrePayItem");
        ZvServerActionResult *actions = zvtest::actions();
        const auto answerAll = [actions] {
            emit actions->signal_trade_buy_succeed();
            emit actions->signal_trade_buy_failed(QStringLiteral("甲"));
            emit actions->signal_trade_sell_succeed();
            emit actions->signal_trade_sell_failed(QStringLiteral("乙"));
        };
        int batches = 0;
        {
            const zvtest::OnTrace middle("sendRequest_prepay_send", [&] {
                ++batches;
                answerAll();
            });
            zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); });
        }
        QCOMPARE(batches, 1);
        QCOMPARE(zvtest::notices(), QStringList());
        answerAll();
        // Each of them once: they were connected again, and not twice.
        QCOMPARE(zvtest::notices(), (QStringList{"买入委托成功", "甲", "卖出委托成功", "乙"}));
    }

    // The answers of the batch itself still come in between.
    void theAnswersOfTheBatchAreNotCut()
    {
        TicketBench bench;
        prepareThree(&bench);
        tick(bench, 2);
        {
            const QString key = keyOf(bench, 2);
            const zvtest::OnTrace middle("sendRequest_prepay_send", [key] {
                emit zvtest::actions()->signal_prepay_send_failed(key, QStringLiteral("停牌"));
            });
            zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); });
        }
        QCOMPARE(rows(bench).last(),
                 QStringLiteral("x 600137 庚申猴票 买入 100.02 1 发送失败：停牌"));
    }

    void answers()
    {
        TicketBench bench;
        prepareThree(&bench);
        tick(bench, 1);
        emit zvtest::actions()->signal_prepay_send_failed(keyOf(bench, 1),
                                                          QStringLiteral("资金不足"));
        QCOMPARE(rows(bench).at(1),
                 QStringLiteral("x 600137 庚申猴票 买入 99.98 2 发送失败：资金不足"));
        emit zvtest::actions()->signal_prepay_send_succeed(QStringLiteral("unknown"));
        emit zvtest::actions()->signal_prepay_send_failed(QStringLiteral("unknown"), QString());
        QCOMPARE(rows(bench).size(), 3);
        emit zvtest::actions()->signal_prepay_send_succeed(keyOf(bench, 0));
        QCOMPARE(rows(bench).size(), 2);
        QVERIFY(rows(bench).first().startsWith(QStringLiteral("x 600137 庚申猴票 买入 99.98")));
        // Answers of prepared orders are not told.
        QCOMPARE(zvtest::notices(), QStringList());
    }

    // To the exchange and back: one is taken, one refused, and that one goes out again.
    void theExchangeAnswers()
    {
        TicketBench bench;
        prepareThree(&bench);
        tick(bench, 0);
        tick(bench, 1);
        zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); });
        bench.exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
        bench.settle();
        bench.exchange()->answer(zvPath_trade_sell,
                                 ZvScriptedTransport::refusal("refused", QStringLiteral("停牌")));
        bench.settle();
        QTRY_COMPARE(rows(bench),
                     (QStringList{"x 600137 庚申猴票 卖出 101.00 3 发送失败：停牌",
                                  "- 600137 庚申猴票 买入 100.02 1 未发送"}));
        bench.exchange()->takeRequests();
        zvtest::boxesIn([&] { bench.click("pushButton_sendPrePayItem"); });
        bench.settle();
        QCOMPARE(bench.exchange()->lastRequest(zvPath_trade_sell).path, QString(zvPath_trade_sell));
    }

    // A change of the server's list, and other modes, keep what is written down.
    void theRowsStay()
    {
        TicketBench bench;
        prepareThree(&bench);
        bench.page->setTicketMode(DealWidget_BuySell::BuyMode);
        bench.storeBrief({{"2001", "700001", "甲"}});
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        QCOMPARE(bench.prepared()->model()->rowCount(), 3);
    }
};

ZV_TEST(DealWidgetBuySellPrepayTest)
#include "test_dealwidget_buysell_prepay.moc"
