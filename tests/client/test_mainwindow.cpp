#include "client/accountbutton.h"
#include "client/connectionstrip.h"
#include "client/mainwindow.h"

#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_tablewidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QButtonGroup>
#include <QTableView>
#include <QtTest/QtTest>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

QList<ZvUBObject> someRows()
{
    QList<ZvUBObject> rows;
    for (int i = 1; i <= 3; ++i) {
        ZvUBObject::Data data;
        data.collectionId = QString::number(1000 + i);
        data.code = data.collectionId;
        data.name = QStringLiteral("藏品");
        data.type = i;
        rows << ZvUBObject(data);
    }
    return rows;
}

} // namespace

// What the window adds to its parts.
class MainWindowTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<MainWindow> m_window;

    QTableView *table() const { return m_window->findChild<QTableView *>(); }
    QString checked() const
    {
        const QAbstractButton *button = m_window->findChild<Market_TableWidget *>()
                                            ->findChild<QButtonGroup *>()
                                            ->checkedButton();
        return button ? button->text() : QString();
    }

private slots:
    void init()
    {
        access()->setTransport(std::make_unique<ZvScriptedTransport>());
        static int windows = 0;
        access()->setUrlPrefix(QStringLiteral("/window/%1/").arg(++windows));
        m_window = std::make_unique<MainWindow>();
        m_window->resize(790, 500);
    }

    void cleanup()
    {
        m_window.reset();
        access()->stop();
        access()->setTransport(nullptr);
    }

    void showTellsTheEngineAndFetchesWhatIsThere()
    {
        cache()->storeMarketList(someRows());
        zvtest::CallTrace trace;
        m_window->show();
        QVERIFY(trace.take().contains("ZvServerEngine::changedToMarketList()"));
        // The rows that came before it was shown are not lost.
        QTRY_COMPARE(table()->model()->rowCount(), 3);
        QVERIFY(m_window->hasMarket());
    }

    void marketIsToldOnce()
    {
        QSignalSpy shown(m_window.get(), &MainWindow::marketShown);
        m_window->show();
        QVERIFY(!m_window->hasMarket());
        cache()->storeMarketList(QList<ZvUBObject>{});
        QVERIFY(!m_window->hasMarket());
        cache()->storeMarketList(someRows());
        QCOMPARE(shown.count(), 1);
        QVERIFY(m_window->hasMarket());
        // An empty list of favourites is no loss of the market.
        cache()->storeMarketList(QList<ZvUBObject>{});
        cache()->storeMarketList(someRows());
        QVERIFY(m_window->hasMarket());
        QCOMPARE(shown.count(), 1);
    }

    void f6TurnsOver()
    {
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        cache()->storeMarketList(someRows());
        QSignalSpy turned(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                          &ZvWidgetSignalSLotPool::signal_turnoverOption_clicked);
        QVERIFY(table()->hasFocus());
        QCOMPARE(checked(), QStringLiteral("行情"));
        QTest::keyClick(table(), Qt::Key_F6);
        QCOMPARE(turned.count(), 1);
        QCOMPARE(checked(), QStringLiteral("自选"));
        QVERIFY(ZvServerEngine::getZvServerEngineInstance()->getIsOptionalCollectionIds());
        QTest::keyClick(table(), Qt::Key_F6);
        QCOMPARE(checked(), QStringLiteral("行情"));
    }

    void accountStandsAtTheEndOfTheStrip()
    {
        m_window->show();
        const auto *button = m_window->connectionStrip()->findChild<AccountButton *>();
        QVERIFY(button);
        const QRect strip = m_window->connectionStrip()->rect();
        const QRect place(button->mapTo(m_window->connectionStrip(), QPoint()), button->size());
        QVERIFY(strip.contains(place));
        QVERIFY(place.right() > strip.right() - 40);
    }

    void tabReachesTheAccount()
    {
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        bool isReached = false;
        for (int i = 0; i < 8 && !isReached; ++i) {
            QTest::keyClick(m_window->focusWidget(), Qt::Key_Tab);
            isReached = qobject_cast<AccountButton *>(m_window->focusWidget());
        }
        QVERIFY(isReached);
    }

    void addressOfTheExchangeReachesKitAndAgreement()
    {
        m_window->useExchange(QUrl("http://127.0.0.1:4711"));
        QCOMPARE(access()->exchangeAddress(), QUrl("http://127.0.0.1:4711"));
        QVERIFY(access()->isStarted());
        const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
        QVERIFY2(config->getStyleOf_ContactUrl().contains(
                     "href=\"http://127.0.0.1:4711/ch/agreement.html\""),
                 qPrintable(config->getStyleOf_ContactUrl()));
        // A service that was started again answers elsewhere.
        zvtest::CallTrace trace;
        m_window->useExchange(QUrl("http://127.0.0.1:4712"));
        const QStringList expected{
            "ZvServerAccessManager::stop()",
            "ZvServerAccessManager::setExchangeAddress(\"http://127.0.0.1:4712\")",
            "ZvServerAccessManager::start()"};
        QCOMPARE(trace.take().filter("AccessManager").join('\n'), expected.join('\n'));
        QCOMPARE(access()->exchangeAddress(), QUrl("http://127.0.0.1:4712"));
        QVERIFY(access()->isStarted());
        QVERIFY(config->getStyleOf_ContactUrl().contains(":4712/"));
    }

    void sizeIsToldThroughThePool()
    {
        QSignalSpy sizes(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                         &ZvWidgetSignalSLotPool::signal_adjustSize);
        m_window->show();
        m_window->resize(780, 480);
        QTRY_VERIFY(!sizes.isEmpty());
        QTRY_COMPARE(sizes.last().first().toSize(), QSize(780, 480));
    }
};

ZV_TEST(MainWindowTest)
#include "test_mainwindow.moc"
