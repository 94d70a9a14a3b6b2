#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvguidetabpage.h"

#include <QContextMenuEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

constexpr int codeColumn = 1;
constexpr int idColumn = 21;

} // namespace

// The window on a platform with two servers: types, favourites, totals, and the change of server.
class ServersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(m_exchange.start(m_state, 0, 60));
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1600, 700);
        m_window->show();
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void footerHasTheTypesOfTheServer()
    {
        QCOMPARE(endtoend::choices(*m_window), (QStringList{"行情", "邮票", "电话卡", "自选"}));
        QVERIFY(endtoend::choose(*m_window, "电话卡"));
        QCOMPARE(endtoend::textsOfColumn(*m_window, codeColumn),
                 (QStringList{"212005", "212006", "212007", "212008"}));
        QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID(),
                 endtoend::textsOfColumn(*m_window, idColumn).first());
        QVERIFY(endtoend::choose(*m_window, "行情"));
        QCOMPARE(endtoend::textsOfColumn(*m_window, codeColumn).size(), 9);
    }

    void totalsGrowWithTheDeals()
    {
        const auto quantity = [this] {
            int sum = 0;
            double amount = 0;
            double value = 0;
            ZvServerCache::getZvServerCacheInstance()->getTotalQtyAndAmount(sum, amount, value);
            return sum;
        };
        QTRY_VERIFY_WITH_TIMEOUT(quantity() > 0, patience);
        QTRY_VERIFY_WITH_TIMEOUT(hasLabel(QString::number(quantity())), patience);
    }

    void favouriteWithoutASignInIsLocal()
    {
        QVERIFY(endtoend::choose(*m_window, "邮票"));
        auto *table = endtoend::marketTable(*m_window);
        const QPoint place = table->visualRect(table->model()->index(1, codeColumn)).center();
        QTest::mouseClick(table->viewport(), Qt::RightButton, Qt::NoModifier, place);
        QContextMenuEvent ask(QContextMenuEvent::Mouse, place,
                              table->viewport()->mapToGlobal(place));
        QApplication::sendEvent(table->viewport(), &ask);
        const QPointer<QMenu> menu = table->findChild<QMenu *>();
        QVERIFY(menu);
        QTRY_VERIFY(menu->isVisible());
        QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                          menu->actionGeometry(menu->actions().at(1)).center());
        QVERIFY(endtoend::choose(*m_window, "自选"));
        QCOMPARE(endtoend::textsOfColumn(*m_window, codeColumn), QStringList{"211002"});
        // And it moves with the market.
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 3, patience);
        QCOMPARE(endtoend::textsOfColumn(*m_window, codeColumn), QStringList{"211002"});
        QCOMPARE(endtoend::chosen(*m_window), QStringLiteral("自选"));
    }

    void changeOfServerShowsOneMarketAtATime()
    {
        QVERIFY(endtoend::showWholeMarket(*m_window));
        move("茶", "31", {"行情", "茶", "酒", "自选"});
        QCOMPARE(endtoend::chosen(*m_window), QStringLiteral("茶"));
        move("邮", "21", {"行情", "邮票", "电话卡", "自选"});
        // There and back the types are known, and the first one is shown at once.
        QCOMPARE(endtoend::chosen(*m_window), QStringLiteral("邮票"));
        // The favourites of this server are still there, and none of them on the other.
        QVERIFY(endtoend::choose(*m_window, "自选"));
        QCOMPARE(endtoend::textsOfColumn(*m_window, codeColumn), QStringList{"211002"});
        move("茶", "31", {"行情", "茶", "酒", "自选"});
        QVERIFY(endtoend::choose(*m_window, "自选"));
        QCOMPARE(endtoend::textsOfColumn(*m_window, codeColumn), QStringList());
    }

private:
    bool hasLabel(const QString &text) const
    {
        for (const QLabel *label : m_window->findChildren<QLabel *>()) {
            if (label->text() == text)
                return true;
        }
        return false;
    }

    // Moves to the server whose button begins with `character`. From the click on there are no rows
    // but those whose codes begin with `codes`, and after a while some.
    void move(const QString &character, const QString &codes, const QStringList &choices)
    {
        const auto *guide = m_window->findChild<ZvGuideTabPage *>();
        QVERIFY(guide->isVisible());
        QPushButton *button = nullptr;
        for (QPushButton *each : guide->findChildren<QPushButton *>()) {
            if (each->text().startsWith(character))
                button = each;
        }
        QVERIFY(button);
        QTRY_VERIFY(button->isEnabled());
        QStringList foreign;
        const auto look = [&] {
            for (const QString &code : endtoend::textsOfColumn(*m_window, codeColumn)) {
                if (!code.startsWith(codes) && code != compositeCode())
                    foreign << code;
            }
        };
        QTest::mouseClick(button, Qt::LeftButton);
        look();
        QVERIFY(endtoend::until([&] {
            look();
            return endtoend::choices(*m_window) == choices
                && endtoend::textsOfColumn(*m_window, codeColumn).size() == 4;
        }));
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        QVERIFY(endtoend::until([&] {
            look();
            return ticks.count() >= 3;
        }));
        QVERIFY2(foreign.isEmpty(), qPrintable(foreign.join(' ')));
    }

    static QString compositeCode()
    {
        ZvUBObject row;
        ZvServerCache::getZvServerCacheInstance()->getCompsite(row, QString());
        return row.displayDataForModelUse(codeColumn);
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
};

ZV_TEST(ServersTest)
#include "test_servers.moc"
