#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "marketpage.h"
#include "marketrows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QPushButton>
#include <QTableView>
#include <QtTest/QtTest>

using namespace zvtest;

namespace {

const QList<QPair<QString, QString>> twoServers{{QStringLiteral("邮币"), QStringLiteral("/lc/a/")},
                                                {QStringLiteral("茶酒"), QStringLiteral("/lc/b/")}};

QByteArray typesOf(const QByteArray &names)
{
    return ZvScriptedTransport::ok("{\"types\": [" + names + "]}");
}

} // namespace

// The strip of servers over the page, and a change of server with answers that come late.
class MarketTableWidgetServersTest : public QObject
{
    Q_OBJECT

private:
    // Asserts, after every turn of the event loop, that no row of another market is on view.
    static void settleWithout(KitBench &bench, const MarketPage &page, const QStringList &foreign)
    {
        for (int i = 0; i < 3; ++i) {
            bench.settle();
            for (const QString &id : page.ids())
                QVERIFY2(!foreign.contains(id), qPrintable(id));
        }
    }

    // The server's button in the strip, by the first character of its name.
    static QPushButton *serverButton(const MarketPage &page, const QString &first)
    {
        for (QPushButton *button : page.guide()->findChildren<QPushButton *>()) {
            if (button->text().startsWith(first))
                return button;
        }
        return nullptr;
    }

private slots:
    void guideIsShownFromTheStart()
    {
        MarketPage page;
        QVERIFY(page.guide()->isVisible());
        QCOMPARE(page.guide()->parentWidget(), &page.widget);
        QCOMPARE(page.guide()->pos(), QPoint(0, 0));
        QCOMPARE(page.widget.childAt(5, 5)->parentWidget(), page.guide());
    }

    void guideIsThereForTwoServersOrMore()
    {
        MarketPage page;
        const QList<QPair<QString, QString>> three
            = twoServers + QList<QPair<QString, QString>>{{"玉石", "/lc/c/"}};
        cache()->storeMarketInfo({});
        QVERIFY(page.guide()->isHidden());
        cache()->storeMarketInfo(twoServers);
        QVERIFY(page.guide()->isVisible());
        QCOMPARE(page.guide()->getCurrentServer(), QStringLiteral("/lc/a/"));
        QVERIFY(serverButton(page, "茶"));
        cache()->storeMarketInfo({twoServers.first()});
        QVERIFY(page.guide()->isHidden());
        cache()->storeMarketInfo(three);
        QVERIFY(page.guide()->isVisible());
        QVERIFY(serverButton(page, "玉"));
        cache()->storeMarketInfo({});
        QVERIFY(page.guide()->isHidden());
    }

    void codesStandClearOfTheGuide()
    {
        MarketPage page;
        const int before = page.table()->columnWidth(1);
        cache()->storeMarketInfo({twoServers.first()});
        QCOMPARE(page.table()->columnWidth(1), before);
        cache()->storeMarketInfo(twoServers);
        ZvUBObject::Data data = collectionData(1001);
        data.code = QStringLiteral("101001");
        cache()->storeMarketList(QList<ZvUBObject>{ZvUBObject(data)});
        const QModelIndex code = page.table()->model()->index(0, 1);
        const int text = page.table()->fontMetrics().horizontalAdvance(code.data().toString());
        const int left = page.table()->visualRect(code).center().x() - text / 2;
        QVERIFY2(left > page.guide()->geometry().right(), qPrintable(QString::number(left)));
        // A column that is wide enough is left as it is.
        page.table()->setColumnWidth(1, 200);
        cache()->storeMarketInfo(twoServers);
        QCOMPARE(page.table()->columnWidth(1), 200);
    }

    void aSingleServerIsNotHandedOn()
    {
        MarketPage page;
        cache()->storeMarketInfo({{"邮币", "/lc/a/"}});
        QCOMPARE(page.guide()->getCurrentServer(), QString());
    }

    void guideReturnsToItsPlaceHalfASecondAfterAResize()
    {
        MarketPage page;
        // The first show is a resize, too.
        QTest::qWait(600);
        page.guide()->move(40, 30);
        page.guide()->lower();
        QWidget *over = page.widget.childAt(45, 300);
        QVERIFY(over != page.guide() && !page.guide()->isAncestorOf(over));
        QElapsedTimer elapsed;
        elapsed.start();
        page.widget.resize(1000, 650);
        QTRY_COMPARE(page.guide()->pos(), QPoint(0, 0));
        QVERIFY2(elapsed.elapsed() >= 450, qPrintable(QString::number(elapsed.elapsed())));
        QCOMPARE(page.widget.childAt(5, 5)->parentWidget(), page.guide());
    }

    void pageMayEndBeforeTheGuideIsPlaced()
    {
        auto page = std::make_unique<MarketPage>();
        page->widget.resize(1000, 650);
        page.reset();
        QTest::qWait(600);
    }

    void changeOfServerEmptiesTheTableAtOnce()
    {
        KitBench bench;
        MarketPage page;
        bench.startOn("/lc/a/");
        cache()->storeMarketInfo(twoServers);
        QCOMPARE(page.buttonTexts(), (QStringList{"行情", "邮票", "钱币", "自选"}));
        page.click("行情");
        bench.settle();
        QCOMPARE(page.ids(), (QStringList{"1001", "1002"}));

        CallTrace trace;
        QTest::mouseClick(serverButton(page, "茶"), Qt::LeftButton);
        QCOMPARE(page.ids(), QStringList());
        QCOMPARE(page.buttonTexts(), (QStringList{"行情", "自选"}));
        QCOMPARE(page.checked(), QStringLiteral("行情"));
        QCOMPARE(engine()->getCollectionTypeId(), -1);
        const QStringList lines = trace.take();
        const QStringList expected{"ZvServerAccessManager::setUrlPrefix(\"/lc/b/\")",
                                   "ZvServerEngine::sendRequest_Market_Collection()",
                                   "ZvServerEngine::sendRequest_Message()",
                                   "ZvServerEngine::sendRequest_Collection_Type()",
                                   choosesOption(false),
                                   choosesType(-1),
                                   asksForRows};
        QCOMPARE(lines.join('\n'), expected.join('\n'));
    }

    void lateRowsOfTheOldServerAreDropped_data()
    {
        QTest::addColumn<bool>("isInDecoder");
        QTest::newRow("just come") << false;
        QTest::newRow("being decoded") << true;
    }
    void lateRowsOfTheOldServerAreDropped()
    {
        QFETCH(bool, isInDecoder);
        KitBench bench;
        MarketPage page;
        bench.startOn("/lc/a/");
        cache()->storeMarketInfo(twoServers);
        const QStringList old{"1001", "1002"};
        page.click("行情");
        bench.settle();
        QCOMPARE(bench.exchange->openCount(zvPath_market_list), 1);
        bench.exchange->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(KitBench::rows({KitBench::row("1001"), KitBench::row("1002")}),
                                    9));
        if (isInDecoder)
            QCoreApplication::sendPostedEvents();
        QTest::mouseClick(serverButton(page, "茶"), Qt::LeftButton);
        settleWithout(bench, page, old);
        QCOMPARE(page.ids(), QStringList());

        bench.exchange->answer(
            zvPath_collection_type,
            typesOf("{\"id\": 7, \"name\": \"茶\"}, {\"id\": 8, \"name\": \"酒\"}"));
        settleWithout(bench, page, old);
        QCOMPARE(page.checked(), QStringLiteral("茶"));
        bench.exchange->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(
                KitBench::rows({KitBench::row("3001", 7), KitBench::row("3002", 8)}), 3));
        settleWithout(bench, page, old);
        QCOMPARE(page.ids(), QStringList{"3001"});
        page.click("行情");
        QCOMPARE(page.ids(), (QStringList{"3001", "3002"}));
    }

    // Back on a server that was left, its types are known and its rows are not taken for new.
    void wayBackShowsTheKnownTypesAndWaitsForRows()
    {
        KitBench bench;
        MarketPage page;
        bench.startOn("/lc/a/");
        cache()->storeMarketInfo(twoServers);
        QTest::mouseClick(serverButton(page, "茶"), Qt::LeftButton);
        bench.exchange->answer(zvPath_collection_type, typesOf("{\"id\": 7, \"name\": \"茶\"}"));
        bench.exchange->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(KitBench::rows({KitBench::row("3001", 7)}), 3));
        bench.settle();
        QCOMPARE(page.ids(), QStringList{"3001"});

        // The buttons of the strip are blocked for a while after a change.
        QTRY_VERIFY(serverButton(page, "邮")->isEnabled());
        QTest::mouseClick(serverButton(page, "邮"), Qt::LeftButton);
        QCOMPARE(page.buttonTexts(), (QStringList{"行情", "邮票", "钱币", "自选"}));
        QCOMPARE(page.checked(), QStringLiteral("邮票"));
        QCOMPARE(page.ids(), QStringList());
        settleWithout(bench, page, {"3001"});
        bench.exchange->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(KitBench::rows({KitBench::row("1001", 1)}), 3));
        settleWithout(bench, page, {"3001"});
        QCOMPARE(page.ids(), QStringList{"1001"});
    }
};

ZV_TEST(MarketTableWidgetServersTest)
#include "test_market_tablewidget_servers.moc"
