#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "marketpage.h"
#include "marketrows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QContextMenuEvent>
#include <QMenu>
#include <QTableView>
#include <QtTest/QtTest>

using namespace zvtest;

namespace {

QStringList notices()
{
    return BreltGlobalFunction::getBreltGlobalFunciton()->notices();
}

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

QByteArray favourites(const QByteArray &ids)
{
    return ZvScriptedTransport::ok("{\"collections\": [" + ids + "]}");
}

} // namespace

// The favourites: local without a sign-in, the server's with one.
class MarketTableWidgetFavouritesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<MarketPage> m_page;

    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    static QStringList stored() { return cache()->getMarketListOption(QString()); }

    // Takes an entry of the table's menu on the row of a collection.
    void useMenu(const QString &id, const QString &text)
    {
        QTableView *table = m_page->table();
        const int row = m_page->ids().indexOf(id);
        QVERIFY2(row >= 0, qPrintable(id));
        const QPoint place = table->visualRect(table->model()->index(row, 1)).center();
        QTest::mouseClick(table->viewport(), Qt::RightButton, Qt::NoModifier, place);
        QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                                table->viewport()->mapToGlobal(place));
        QApplication::sendEvent(table->viewport(), &event);
        const QPointer<QMenu> menu = table->findChild<QMenu *>();
        QVERIFY(menu);
        QTRY_VERIFY(menu->isVisible());
        for (QAction *action : menu->actions()) {
            if (action->text() == text) {
                QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                  menu->actionGeometry(action).center());
                QTRY_VERIFY(!menu);
                return;
            }
        }
        QFAIL(qPrintable(text));
    }

    void signIn()
    {
        engine()->isLogged = true;
        pool()->slot_login_succeed();
    }

private slots:
    void initTestCase() { BreltGlobalFunction::getBreltGlobalFunciton()->setNoticeDuration(300); }

    void init()
    {
        QTRY_VERIFY(notices().isEmpty());
        m_bench = std::make_unique<KitBench>();
        m_page = std::make_unique<MarketPage>();
        MarketPage::storeRows();
        QCoreApplication::processEvents();
        exchange()->takeRequests();
    }

    void cleanup()
    {
        m_page.reset();
        engine()->isLogged = false;
        // Ends the actions that are left: they go out one after the other.
        m_bench.reset();
    }

    void withoutASignInTheListIsLocal()
    {
        CallTrace trace;
        useMenu("1003", "添加自选");
        useMenu("1001", "添加自选");
        QCOMPARE(stored(), (QStringList{"1003", "1001"}));
        QCOMPARE(trace.take(), (QStringList{selects("1003"), selects("1001")}));
        QVERIFY(exchange()->requests().isEmpty());

        m_page->click("自选");
        QCOMPARE(trace.take(), (QStringList{choosesOption(true), selects("1001"), asksForRows}));
        QCOMPARE(m_page->ids(), (QStringList{"1001", "1003"}));
        QCOMPARE(exchange()->requestedPaths(), QStringList{zvPath_market_list});
    }

    void withoutASignInARemovedOneLeavesTheTable()
    {
        cache()->setMarketListOption({"1001", "1004"}, QString());
        m_page->click("自选");
        QCoreApplication::processEvents();
        exchange()->takeRequests();
        useMenu("1001", "删除自选");
        QTRY_COMPARE(m_page->ids(), QStringList{"1004"});
        QVERIFY(exchange()->requests().isEmpty());
    }

    void favouritesStandInTheirOwnOrder()
    {
        cache()->setMarketListOption({"1004", "1002", "9999", "1001"}, QString());
        m_page->table()->sortByColumn(-1, Qt::AscendingOrder);
        m_page->click("自选");
        QCOMPARE(m_page->ids(), (QStringList{"1004", "1002", "1001"}));
    }

    void withASignInTheClickAsksTheServer()
    {
        engine()->isLogged = true;
        CallTrace trace;
        m_page->click("自选");
        QCOMPARE(trace.take(), (QStringList{choosesOption(true), asksForOptions, asksForRows}));
        m_page->click("行情");
        QVERIFY(!trace.take().contains(asksForOptions));
    }

    void signInBringsTheServersList()
    {
        cache()->setMarketListOption({"1001"}, QString());
        m_page->click("自选");
        QCOMPARE(m_page->ids(), QStringList{"1001"});
        CallTrace trace;
        exchange()->answer(zvPath_myaccount_optional, favourites("\"1005\", \"1002\""));
        signIn();
        QCOMPARE(trace.take(), QStringList{asksForOptions});
        QTRY_COMPARE(m_page->ids(), (QStringList{"1002", "1005"}));
        QCOMPARE(stored(), (QStringList{"1005", "1002"}));
        QCOMPARE(trace.take(), (QStringList{asksForRows, selects("1002")}));
    }

    void serversListOfTheSameLengthIsAnotherListAllTheSame()
    {
        cache()->setMarketListOption({"1001", "1002"}, QString());
        m_page->click("自选");
        QTest::keyClick(m_page->table(), Qt::Key_Down);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1002"));
        engine()->isLogged = true;
        emit actions()->signal_getOption_succeed({"1004", "1005"});
        QTRY_COMPARE(m_page->ids(), (QStringList{"1004", "1005"}));
        const QModelIndex current = m_page->table()->currentIndex();
        QCOMPARE(current.sibling(current.row(), 21).data().toString(),
                 engine()->getGlobalCollectionID());
    }

    void serversListThatIsTheSameKeepsTheSelection()
    {
        cache()->setMarketListOption({"1001", "1002"}, QString());
        m_page->click("自选");
        QTest::keyClick(m_page->table(), Qt::Key_Down);
        CallTrace trace;
        emit actions()->signal_getOption_succeed({"1001", "1002"});
        QCoreApplication::processEvents();
        QCOMPARE(trace.take(), QStringList{asksForRows});
        QCOMPARE(m_page->table()->currentIndex().row(), 1);
    }

    void serversListLeavesAnotherViewAlone()
    {
        QTest::keyClick(m_page->table(), Qt::Key_Down);
        CallTrace trace;
        emit actions()->signal_getOption_succeed({"1004"});
        QCoreApplication::processEvents();
        QCOMPARE(trace.take(), QStringList{asksForRows});
        QCOMPARE(stored(), QStringList{"1004"});
        QCOMPARE(m_page->ids().size(), 5);
        QCOMPARE(m_page->table()->currentIndex().row(), 1);
    }

    void anEmptyListOfTheServerEmptiesTheFavourites()
    {
        cache()->setMarketListOption({"1001"}, QString());
        m_page->click("自选");
        engine()->isLogged = true;
        emit actions()->signal_getOption_succeed({});
        QTRY_COMPARE(m_page->ids(), QStringList());
        QCOMPARE(stored(), QStringList());
    }

    void poolsSignInWithoutASessionAsksNothing()
    {
        CallTrace trace;
        pool()->slot_login_succeed();
        QCOMPARE(trace.take(), QStringList());
    }

    void eachChangeReadsTheListBack_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QByteArray>("after");
        QTest::newRow("add") << "添加自选" << zvPath_myaccount_append
                             << QByteArray("\"1001\", \"1002\"");
        QTest::newRow("remove") << "删除自选" << zvPath_myaccount_remove << QByteArray();
    }
    void eachChangeReadsTheListBack()
    {
        QFETCH(QString, text);
        QFETCH(QString, path);
        QFETCH(QByteArray, after);
        cache()->setMarketListOption({"1001"}, QString());
        exchange()->always(zvPath_myaccount_optional,
                           [after](const ZvRequest &) { return favourites(after); });
        if (text == "删除自选") {
            m_page->click("自选");
            QCOMPARE(m_page->ids(), QStringList{"1001"});
        }
        engine()->isLogged = true;
        exchange()->answer(path, ZvScriptedTransport::ok("{}"));
        CallTrace trace;
        useMenu(text == "添加自选" ? "1002" : "1001", text);
        const QStringList expected = after.isEmpty() ? QStringList() : QStringList{"1001", "1002"};
        QTRY_COMPARE(stored(), expected);
        const QStringList lines = trace.take();
        QCOMPARE(lines.filter("Option").size(), 2);
        QVERIFY(lines.indexOf(asksForOptions) > lines.indexOf(lines.filter("Option").first()));
        QVERIFY(lines.indexOf(asksForRows) > lines.indexOf(asksForOptions));
        m_page->click("自选");
        QCOMPARE(m_page->ids(), expected);
    }

    void bothAnswersAskForTheList()
    {
        for (const auto signal : {&ZvServerActionResult::signal_addOption_succeed,
                                  &ZvServerActionResult::signal_removeOption_succeed}) {
            CallTrace trace;
            emit(actions()->*signal)();
            QCOMPARE(trace.take(), QStringList{asksForOptions});
        }
    }

    void failuresAreToldInWords_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("notice");
        QTest::newRow("add, no words") << 0 << ""
                                       << "添加自选失败";
        QTest::newRow("add") << 0 << "自选已满"
                             << "自选已满";
        QTest::newRow("remove, no words") << 1 << ""
                                          << "删除自选失败";
        QTest::newRow("remove") << 1 << "请稍后再试"
                                << "请稍后再试";
        QTest::newRow("sync, no words") << 2 << ""
                                        << "同步自选失败";
        QTest::newRow("sync") << 2 << "<b>维护中</b>"
                              << "<b>维护中</b>";
    }
    void failuresAreToldInWords()
    {
        QFETCH(int, kind);
        QFETCH(QString, message);
        QFETCH(QString, notice);
        cache()->setMarketListOption({"1001"}, QString());
        CallTrace trace;
        if (kind == 0)
            emit actions()->signal_addOption_failed(message);
        else if (kind == 1)
            emit actions()->signal_removeOption_failed(message);
        else
            emit actions()->signal_getOption_failed(message);
        QCOMPARE(notices(), QStringList{notice});
        QCOMPARE(trace.take(), QStringList());
        QCOMPARE(stored(), QStringList{"1001"});
    }

    void refusalOfTheServerIsShownAsItComes()
    {
        engine()->isLogged = true;
        exchange()->answer(zvPath_myaccount_append,
                           ZvScriptedTransport::refusal("refused", "自选数量已达上限"));
        useMenu("1002", "添加自选");
        QTRY_COMPARE(notices(), QStringList{"自选数量已达上限"});
        QCOMPARE(stored(), QStringList());
    }
};

ZV_TEST(MarketTableWidgetFavouritesTest)
#include "test_market_tablewidget_favourites.moc"
