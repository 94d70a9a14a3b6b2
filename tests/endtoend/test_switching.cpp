#include "client/keyboardsprite.h"
#include "client/mainwindow.h"

#include "endtoend/chartpage.h"
#include "endtoend/marketpage.h"
#include "endtoend/middleman.h"
#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QAbstractButton>
#include <QProgressBar>
#include <QStackedWidget>
#include <QTableView>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

constexpr int codeColumn = 1;
constexpr int longestDelay = 500; // of an answer, milliseconds
const QString firstServer = QStringLiteral("/lc/youbika/");
const QString secondServer = QStringLiteral("/lc/chajiu/");

} // namespace

// The change of server, over a line that holds answers back by chance.
class SwitchingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(m_exchange.start(m_state, 0, 60));
        m_line = std::make_unique<endtoend::Middleman>(m_exchange.port());
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1600, 768);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_window->useExchange(m_line->address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
        m_line.reset();
    }

    void allIsToldInItsOrder()
    {
        const auto *guide = m_window->findChild<ZvGuideTabPage *>();
        QStringList order;
        zvtest::CallTrace trace;
        QObject scope;
        connect(guide, &ZvGuideTabPage::signal_updateCollectionTypes, &scope,
                [&](const QString &server) { order += trace.take() << "types of " + server; });
        connect(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                &ZvWidgetSignalSLotPool::signal_loadTradeData_fromServer, &scope,
                [&] { order += trace.take() << "trading"; });
        QTest::mouseClick(buttonOf(secondServer), Qt::LeftButton);
        order += trace.take();

        const QStringList begins{"ZvServerAccessManager::setUrlPrefix(\"/lc/chajiu/\")",
                                 "ZvServerEngine::sendRequest_Market_Collection()",
                                 "ZvServerEngine::sendRequest_Message()"};
        QCOMPARE(order.mid(0, 3).join('\n'), begins.join('\n'));
        const int types = order.indexOf("types of /lc/chajiu/");
        QVERIFY2(types > 3, qPrintable(order.join('\n')));
        // In between stands what the page does about the types, and nothing else is asked for.
        for (const QString &line : order.mid(3, types - 3)) {
            QVERIFY2(line == "ZvServerEngine::sendRequest_Collection_Type()"
                         || line == "ZvServerEngine::sendRequest_Market_List()"
                         || line.contains("::setCollectionTypeId(")
                         || line.contains("::setIsOptionalCollectionIds("),
                     qPrintable(line));
        }
        // The trading half hears of it before this test, and asks for its pages anew.
        const QStringList reloads{"RevokeList",           "Select_DealRecord",
                                  "Select_DelegateToday", "Select_DelegateRecord",
                                  "Select_ApplyRecord",   "Select_DeliveryRecord",
                                  "Select_MoneyFlow"};
        QCOMPARE(order.indexOf("trading"), types + 1 + reloads.size());
        for (int i = 0; i < reloads.size(); ++i)
            QVERIFY2(order.at(types + 1 + i)
                         .startsWith("ZvServerEngine::sendRequest_" + reloads.at(i) + '('),
                     qPrintable(order.at(types + 1 + i)));
    }

    void theBarRunsAndAllButtonsWait()
    {
        // Goes on from the click before.
        ZvGuideTabItem *clicked = itemOf(secondServer);
        auto *bar = clicked->findChild<QProgressBar *>();
        QVERIFY(bar->isVisible());
        QVERIFY(!itemOf(firstServer)->findChild<QProgressBar *>()->isVisible());
        QVERIFY(!buttonOf(firstServer)->isEnabled());
        QVERIFY(!buttonOf(secondServer)->isEnabled());
        QSignalSpy values(bar, &QProgressBar::valueChanged);
        QTRY_VERIFY(values.count() >= 3);
        QTRY_VERIFY(!bar->isVisible());
        QTRY_VERIFY(buttonOf(firstServer)->isEnabled() && buttonOf(secondServer)->isEnabled());
        // A click on the server in use asks for nothing.
        zvtest::CallTrace trace;
        QTest::mouseClick(buttonOf(secondServer), Qt::LeftButton);
        QCOMPARE(trace.take().filter("setUrlPrefix"), QStringList());
        QVERIFY(buttonOf(firstServer)->isEnabled());
    }

    void noAnswerOfTheOldServerLandsOnAPageOfTheNewOne()
    {
        m_line->delayAnswers(longestDelay);
        QStringList strangers;
        const auto look = [this, &strangers] {
            const QString digit = currentServer() == firstServer ? "2" : "3";
            for (const QString &code : endtoend::textsOfColumn(*m_window, codeColumn)) {
                if (endtoend::listed(code).isThere() && !code.startsWith(digit))
                    strangers << currentServer() + " row " + code;
            }
            if (endtoend::pageInFront(*m_window) == endtoend::ChartPage) {
                const QString code = endtoend::shownCode(*m_window);
                if (!code.isEmpty() && !code.startsWith(digit))
                    strangers << currentServer() + " panel " + code;
                strangers += endtoend::faultsOf(*m_window);
            }
        };
        QObject scope;
        connect(ZvServerCache::getZvServerCacheInstance(),
                &ZvServerCache::signal_cache_MarketList_changed, &scope, look);
        connect(ZvServerCache::getZvServerCacheInstance(),
                &ZvServerCache::signal_cache_CollectionLatestDeal_changed, &scope, look);
        connect(feed(), &ZvChartFeed::replaced, &scope, look, Qt::QueuedConnection);
        connect(feed(), &ZvChartFeed::grown, &scope, look, Qt::QueuedConnection);

        for (int round = 0; round < 6; ++round) {
            const bool isFirst = round % 2 == 0;
            const QString server = isFirst ? firstServer : secondServer;
            // Answers about the collection of the old server are under way at the click.
            QTRY_VERIFY_WITH_TIMEOUT(buttonOf(server)->isEnabled(), patience);
            QTest::mouseClick(buttonOf(server), Qt::LeftButton);
            QCOMPARE(currentServer(), server);
            QCoreApplication::processEvents();
            QVERIFY2(!endtoend::shownCode(*m_window).startsWith(isFirst ? '3' : '2'),
                     "the panel keeps what the old server said");
            QVERIFY(endtoend::until([&] {
                look();
                return endtoend::textsOfColumn(*m_window, codeColumn)
                    .contains(isFirst ? "211001" : "311001");
            }));
            // To a chart as soon as the new names are there.
            auto *table = endtoend::marketTable(*m_window);
            table->setFocus();
            QTest::keyClicks(table, isFirst ? "2" : "3");
            QVERIFY(m_window->findChild<KeyboardSprite *>()->isVisible());
            QTest::keyClicks(m_window->focusWidget(), isFirst ? "12006" : "12006");
            QTest::keyClick(m_window->focusWidget(), Qt::Key_Return);
            const QString code = isFirst ? "212006" : "312006";
            QCOMPARE(endtoend::pageInFront(*m_window), endtoend::ChartPage);
            QVERIFY(endtoend::until([&] {
                look();
                return endtoend::shownCode(*m_window) == code
                    && feed()->state() == ZvChartFeed::Ready;
            }));
            QCOMPARE(feed()->collectionId(), endtoend::listed(code).id);
            QTest::keyClick(m_window->focusWidget() ? m_window->focusWidget() : m_window.get(),
                            Qt::Key_Escape);
            QCOMPARE(endtoend::pageInFront(*m_window), endtoend::TablePage);
        }
        QVERIFY2(strangers.isEmpty(), qPrintable(strangers.mid(0, 10).join('\n')));
        QVERIFY(m_line->delayed() > 30);
    }

    void theSpriteClosesWithTheServer()
    {
        auto *sprite = m_window->findChild<KeyboardSprite *>();
        const bool isFirst = currentServer() == firstServer;
        QAbstractButton *other = buttonOf(isFirst ? secondServer : firstServer);
        QTRY_VERIFY_WITH_TIMEOUT(other->isEnabled(), patience);
        sprite->begin(Qt::Key_1);
        QVERIFY(sprite->isVisible());
        other->click(); // without the mouse, whose press would close it, too
        QVERIFY(sprite->isHidden());
    }

private:
    ZvChartFeed *feed() const { return endtoend::feedOf(*m_window); }
    static QString currentServer()
    {
        return ZvServerCache::getZvServerCacheInstance()->currentServer();
    }
    QAbstractButton *buttonOf(const QString &server) const
    {
        return endtoend::serverButton(*m_window, server);
    }
    ZvGuideTabItem *itemOf(const QString &server) const
    {
        for (auto *item : m_window->findChildren<ZvGuideTabItem *>()) {
            if (item->getServerPrefix() == server)
                return item;
        }
        return nullptr;
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<endtoend::Middleman> m_line;
    std::unique_ptr<MainWindow> m_window;
};

ZV_TEST(SwitchingTest)
#include "test_switching.moc"
