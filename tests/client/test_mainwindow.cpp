#include "client/accountbutton.h"
#include "client/connectionstrip.h"
#include "client/halves.h"
#include "client/keyboardsprite.h"
#include "client/windowedge.h"

#include "shownwindows.h"
#include "support/calltrace.h"
#include "support/testregistry.h"
#include "windowbench.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/market_tablewidget.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QButtonGroup>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSplitterHandle>
#include <QStackedWidget>
#include <QTableView>
#include <QWindow>
#include <QtTest/QtTest>

using zvtest::WindowBench;

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

// What the window adds to its parts.
class MainWindowTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowBench> m_bench;
    MainWindow *m_window = nullptr;

    QTableView *table() const
    {
        return m_window->findChild<Market_TableWidget *>()->findChild<QTableView *>();
    }
    QString checked() const
    {
        const QAbstractButton *button = m_window->findChild<Market_TableWidget *>()
                                            ->findChild<QButtonGroup *>()
                                            ->checkedButton();
        return button ? button->text() : QString();
    }

    // The class of the page of the market half that is in front.
    QString page() const
    {
        const auto *pages = m_window->findChild<Market_Widget *>()->findChild<QStackedWidget *>(
            QString(), Qt::FindDirectChildrenOnly);
        return pages->currentWidget()->metaObject()->className();
    }

    Transaction_Widget *transactions() const { return m_window->findChild<Transaction_Widget *>(); }

    TitleBar *titleBar() const { return m_window->findChild<TitleBar *>(); }
    StatusBar *statusBar() const { return m_window->findChild<StatusBar *>(); }

    // What the window leaves to the market half beside the bars and the higher trading half.
    int marketHeightOf(int window) const
    {
        return window - 307 - m_window->halves()->handleWidth() - titleBar()->height()
            - m_window->connectionStrip()->height() - statusBar()->height()
            - 2 * WindowEdge::thickness;
    }

    QDoubleSpinBox *ticketField() const
    {
        return transactions()->findChild<QDoubleSpinBox *>("doubleSpinBox_buysellPrice");
    }

    // The first table of the trading half that is on the screen.
    QTableView *tradingTable() const
    {
        for (QTableView *view : transactions()->findChildren<QTableView *>()) {
            if (view->isVisible())
                return view;
        }
        return nullptr;
    }

    // The button of a bar that reads so.
    static QPushButton *buttonOf(const QWidget *bar, const QString &words)
    {
        for (QPushButton *button : bar->findChildren<QPushButton *>()) {
            if (button->text() == words || button->accessibleName() == words)
                return button;
        }
        return nullptr;
    }

    void click(const QWidget *bar, const QString &words) const
    {
        QPushButton *button = buttonOf(bar, words);
        QVERIFY2(button && button->isVisible(), qPrintable(words));
        QTest::mouseClick(button, Qt::LeftButton);
    }

    LoginDialog *dialog() const { return zvtest::shownWindow<LoginDialog>(); }

    bool titleHas(const QString &words) const
    {
        for (const QLabel *label : titleBar()->findChildren<QLabel *>()) {
            if (label->text() == words)
                return true;
        }
        return false;
    }

    KeyboardSprite *sprite() const { return m_window->findChild<KeyboardSprite *>(); }

    QPushButton *marketButton(const QString &text) const
    {
        for (QPushButton *button :
             m_window->findChild<Market_Widget *>()->findChildren<QPushButton *>()) {
            if (button->text() == text)
                return button;
        }
        return nullptr;
    }

    void press(Qt::Key key) const
    {
        QWidget *focus = m_window->focusWidget();
        QTest::keyClick(focus ? focus : m_window, key);
    }

    void begin()
    {
        m_bench.reset();
        m_bench = std::make_unique<WindowBench>(QSize(1000, 700));
        m_window = m_bench->window.get();
    }

    // On the screen with the keys in it, and a market of three collections.
    void open()
    {
        m_bench->show();
        WindowBench::fill();
    }

private slots:
    void init() { begin(); }
    void cleanup() { m_bench.reset(); }

    void showTellsTheEngineAndFetchesWhatIsThere()
    {
        cache()->storeMarketList(WindowBench::rows());
        zvtest::CallTrace trace;
        m_window->show();
        QVERIFY(trace.take().contains("ZvServerEngine::changedToMarketList()"));
        // The rows that came before it was shown are not lost.
        QTRY_COMPARE(table()->model()->rowCount(), 3);
        QVERIFY(m_window->hasMarket());
    }

    void marketIsToldOnce()
    {
        QSignalSpy shown(m_window, &MainWindow::marketShown);
        m_window->show();
        QVERIFY(!m_window->hasMarket());
        cache()->storeMarketList(QList<ZvUBObject>{});
        QVERIFY(!m_window->hasMarket());
        cache()->storeMarketList(WindowBench::rows());
        QCOMPARE(shown.count(), 1);
        QVERIFY(m_window->hasMarket());
        // An empty list of favourites is no loss of the market.
        cache()->storeMarketList(QList<ZvUBObject>{});
        cache()->storeMarketList(WindowBench::rows());
        QVERIFY(m_window->hasMarket());
        QCOMPARE(shown.count(), 1);
    }

    void f6TurnsOver()
    {
        open();
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

    void f5TurnsBetweenTheCharts()
    {
        open();
        press(Qt::Key_F5);
        QCOMPARE(page(), QStringLiteral("Market_KTimeWidget"));
        QVERIFY(marketButton("分时")->isChecked());
        press(Qt::Key_F5);
        QVERIFY(marketButton("日K")->isChecked());
        press(Qt::Key_F5);
        QVERIFY(marketButton("分时")->isChecked());
    }

    void escapeGoesBackStepByStep()
    {
        open();
        press(Qt::Key_Return);
        QTest::mouseClick(marketButton("月K"), Qt::LeftButton);
        pool()->slot_marketDeatil_clicked();
        QCOMPARE(page(), QStringLiteral("Market_DetailWidget"));
        press(Qt::Key_Escape);
        QCOMPARE(page(), QStringLiteral("Market_KTimeWidget"));
        QVERIFY(marketButton("月K")->isChecked());
        press(Qt::Key_Escape);
        QCOMPARE(page(), QStringLiteral("Market_TableWidget"));
        QVERIFY(table()->hasFocus());
        zvtest::CallTrace trace;
        press(Qt::Key_Escape);
        QCOMPARE(page(), QStringLiteral("Market_TableWidget"));
        QCOMPARE(trace.take(), QStringList());
    }

    void pageKeysWalkOnTheChartAlone()
    {
        open();
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1001"));
        press(Qt::Key_Return);
        press(Qt::Key_PageDown);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1002"));
        press(Qt::Key_PageDown);
        press(Qt::Key_PageDown);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1003"));
        press(Qt::Key_PageUp);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1002"));
        // The table follows behind the chart.
        press(Qt::Key_Escape);
        QCOMPARE(table()->currentIndex().row(), 1);
    }

    void aTypedCodeOpensItsChart()
    {
        open();
        QSignalSpy typed(pool(), &ZvWidgetSignalSLotPool::signal_keyboardFairy_clicked);
        QTest::keyClick(table(), Qt::Key_1);
        QCOMPARE(typed.count(), 1);
        QCOMPARE(typed.first().first().toInt(), int(Qt::Key_1));
        QVERIFY(sprite()->isVisible());
        QTest::keyClicks(m_window->focusWidget(), "003");
        zvtest::CallTrace trace;
        press(Qt::Key_Return);
        QVERIFY(sprite()->isHidden());
        QCOMPARE(page(), QStringLiteral("Market_KTimeWidget"));
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1003"));
        const QStringList calls = trace.take();
        QVERIFY2(calls.indexOf("ZvServerEngine::setGlobalCollectionID(\"1003\")")
                     < calls.indexOf("ZvServerEngine::changedToTimeLine()"),
                 qPrintable(calls.join('\n')));
        // On the chart the mode stays.
        QTest::mouseClick(marketButton("周K"), Qt::LeftButton);
        press(Qt::Key_C);
        press(Qt::Key_P);
        press(Qt::Key_Return);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1001"));
        QVERIFY(marketButton("周K")->isChecked());
    }

    void theSpriteClosesWithTheServer()
    {
        open();
        sprite()->begin(Qt::Key_1);
        QVERIFY(sprite()->isVisible());
        emit pool()->signal_loadTradeData_fromServer();
        QVERIFY(sprite()->isHidden());
    }

    void theSpriteStandsAboveTheStrip()
    {
        open();
        sprite()->begin(Qt::Key_1);
        const QRect place(sprite()->mapTo(m_window, QPoint()), sprite()->size());
        QVERIFY(place.bottom() < m_window->connectionStrip()->y());
        QVERIFY(m_window->rect().contains(place));
        QCOMPARE(m_window->childAt(place.center())->window(), m_window);
        QVERIFY(sprite()->isAncestorOf(m_window->childAt(place.center())));
    }

    void buttonsOfTheAccountComeAndGoWithIt()
    {
        open();
        const QStringList names{"资金总览", "藏品申购", "入金", "出金"};
        const auto shown = [&] {
            QStringList found;
            for (const QString &name : names) {
                if (marketButton(name)->isVisible())
                    found << name;
            }
            return found;
        };
        QCOMPARE(shown(), QStringList());
        WindowBench::signIn();
        QCOMPARE(shown(), names);
        engine()->isLogged = false;
        pool()->slot_loggedOtherPlace();
        QCOMPARE(shown(), QStringList());
        WindowBench::signIn();
        // And with a sign-out by hand.
        m_window->findChild<AccountButton *>()->findChild<QMenu *>()->actions().last()->trigger();
        QCOMPARE(shown(), QStringList());
        QVERIFY(!engine()->isLogged);
    }

    void theMenuOfTheAccountAsksForTheBankCard()
    {
        open();
        zvtest::CallTrace trace;
        m_window->findChild<AccountButton *>()->findChild<QMenu *>()->actions().first()->trigger();
        QCOMPARE(trace.take(), QStringList("ZvServerEngine::sendRequest_Mybankcard()"));
    }

    void aWindowThatComesBackTellsThePageInFront()
    {
        open();
        press(Qt::Key_Return);
        m_window->hide();
        zvtest::CallTrace trace;
        m_window->show();
        QVERIFY(!trace.take().contains("ZvServerEngine::changedToMarketList()"));
    }

    void accountStandsAtTheEndOfTheStrip()
    {
        m_window->show();
        const auto *button = m_window->connectionStrip()->findChild<AccountButton *>();
        QVERIFY(button->isHidden());
        WindowBench::signIn();
        QVERIFY(button->isVisible());
        const QRect strip = m_window->connectionStrip()->rect();
        const QRect place(button->mapTo(m_window->connectionStrip(), QPoint()), button->size());
        QVERIFY(strip.contains(place));
        QVERIFY(place.right() > strip.right() - 40);
    }

    void tabGoesAsTheEyeDoes()
    {
        m_window->resize(1366, 768);
        open();
        WindowBench::signIn();
        // Everything that the keys reach, once around, by the part in which it lies.
        const QList<QWidget *> parts{titleBar(), m_window->findChild<Market_Widget *>(),
                                     transactions(), m_window->connectionStrip(), statusBar()};
        QList<int> order;
        QWidget *first = table();
        first->setFocus();
        do {
            const QWidget *focus = m_window->focusWidget();
            for (int i = 0; i < parts.size(); ++i) {
                if (parts.at(i)->isAncestorOf(focus) && (order.isEmpty() || order.last() != i))
                    order << i;
            }
            QTest::keyClick(m_window->focusWidget(), Qt::Key_Tab);
        } while (m_window->focusWidget() != first && order.size() < 20);
        // The buttons of the title bar leave the focus where it is.
        if (order.size() > 4 && order.last() == order.first())
            order.removeLast(); // the table need not be the first in its half
        QCOMPARE(order, (QList<int>{1, 2, 3, 4}));
    }

    void everyControlHasAName()
    {
        m_window->resize(1366, 768);
        open();
        WindowBench::signIn();
        for (const QWidget *part :
             QList<QWidget *>{titleBar(), statusBar(), m_window->connectionStrip()}) {
            for (const QPushButton *button : part->findChildren<QPushButton *>()) {
                QVERIFY2(!button->text().isEmpty() || !button->accessibleName().isEmpty(),
                         part->metaObject()->className());
            }
        }
        QVERIFY(!m_window->halves()->handle(1)->accessibleName().isEmpty());
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

    void halvesShareASmallScreen()
    {
        m_window->resize(1366, 768);
        m_window->show();
        QCOMPARE(m_window->size(), QSize(1366, 768));
        QVERIFY2(m_window->minimumSizeHint().width() <= 1366
                     && m_window->minimumSizeHint().height() <= 768,
                 qPrintable(QStringLiteral("%1x%2")
                                .arg(m_window->minimumSizeHint().width())
                                .arg(m_window->minimumSizeHint().height())));
        QCOMPARE(transactions()->height(), 226);
        const auto *market = m_window->findChild<Market_Widget *>();
        QCOMPARE(market->height(), marketHeightOf(768) + 307 - 226);
        QVERIFY(market->height() >= 430);
        QVERIFY(market->geometry().bottom() < transactions()->geometry().top());
        QCOMPARE(transactions()->width(), market->width());
    }

    void fitsSmallScreens_data()
    {
        QTest::addColumn<QSize>("size"); // what a screen has at its scale
        QTest::newRow("1366x768") << QSize(1366, 768);
        QTest::newRow("1366x768 at 125 %") << QSize(1093, 614);
        QTest::newRow("1920x1080 at 150 %") << QSize(1280, 720);
    }
    void fitsSmallScreens()
    {
        QFETCH(QSize, size);
        // Also from a size at which the trading half asks for more.
        m_window->resize(1600, 1000);
        m_window->show();
        QCOMPARE(transactions()->height(), 307);
        // A window that fills the screen has no margins.
        const int margins = 2 * WindowEdge::thickness;
        m_window->resize(size + QSize(margins, margins));
        QTRY_COMPARE(m_window->size(), size + QSize(margins, margins));
        QTRY_COMPARE(transactions()->height(), 226);
        QCOMPARE(statusBar()->geometry().bottom() + 1, size.height() + margins / 2);
    }

    void theTradingHalfFollowsTheHeightOfTheWindow()
    {
        m_window->resize(1366, 780);
        m_window->show();
        QCOMPARE(transactions()->height(), 226);
        m_window->resize(1366, 781);
        QTRY_COMPARE(transactions()->height(), 307);
        m_window->resize(1366, 900);
        QTRY_COMPARE(m_window->findChild<Market_Widget *>()->height(), marketHeightOf(900));
        QCOMPARE(transactions()->height(), 307);
        m_window->resize(1366, 700);
        QTRY_COMPARE(transactions()->height(), 226);
    }

    // Draws the bar between the halves.
    void draw(int by)
    {
        QWidget *bar = m_window->halves()->handle(1);
        const QPoint middle = bar->rect().center();
        QTest::mousePress(bar, Qt::LeftButton, Qt::NoModifier, middle);
        QMouseEvent move(QEvent::MouseMove, middle + QPoint(0, by),
                         bar->mapToGlobal(middle + QPoint(0, by)), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(bar, &move);
        QTest::mouseRelease(bar, Qt::LeftButton, Qt::NoModifier, middle);
    }

    void aHeightOfTheUsersOwnIsKept()
    {
        m_window->resize(1366, 960);
        m_window->show();
        QCOMPARE(m_window->halves()->chosenHeight(), 0);
        draw(-60);
        QCOMPARE(transactions()->height(), 367);
        QCOMPARE(m_window->halves()->chosenHeight(), 367);
        m_window->resize(1366, 980);
        QTRY_COMPARE(m_window->height(), 980);
        QCOMPARE(transactions()->height(), 367);
        // A window for which the trading half asks for less has no room for it; the next one has.
        m_window->resize(1366, 700);
        QTRY_VERIFY(transactions()->height() < 367);
        m_window->resize(1366, 980);
        QTRY_COMPARE(transactions()->height(), 367);
        // Out of sight meanwhile, it comes back as high.
        transactions()->hide();
        m_window->resize(1366, 990);
        QTRY_COMPARE(m_window->height(), 990);
        transactions()->show();
        QTRY_COMPARE(transactions()->height(), 367);
        draw(200);
        QCOMPARE(m_window->halves()->chosenHeight(), 0);
    }

    void theTradingHalfHidesAndComesBack()
    {
        m_window->resize(1366, 768);
        open();
        WindowBench::signIn();
        const int market = m_window->findChild<Market_Widget *>()->height();
        auto *price = ticketField();
        price->setFocus();
        QVERIFY(price->hasFocus());
        click(statusBar(), QStringLiteral("隐藏交易"));
        QVERIFY(!transactions()->isVisible());
        QTRY_VERIFY(m_window->findChild<Market_Widget *>()->height() > market);
        QVERIFY(!transactions()->isAncestorOf(m_window->focusWidget()));
        click(statusBar(), QStringLiteral("显示交易"));
        QVERIFY(transactions()->isVisible());
        QTRY_COMPARE(m_window->findChild<Market_Widget *>()->height(), market);
    }

    // The status bar's button starts anew with each sign-in, and the half stays as it was.
    void aNewSignInLeavesTheTradingHalfHidden()
    {
        open();
        WindowBench::signIn();
        click(statusBar(), QStringLiteral("隐藏交易"));
        QVERIFY(!transactions()->isVisible());
        WindowBench::signIn();
        QVERIFY(!transactions()->isVisible());
        click(statusBar(), QStringLiteral("隐藏交易"));
        QVERIFY(!transactions()->isVisible());
        click(statusBar(), QStringLiteral("显示交易"));
        QVERIFY(transactions()->isVisible());
    }

    void theTradingHalfIsLockedFromTheStatusBar()
    {
        open();
        WindowBench::signIn();
        auto *pages
            = transactions()->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(pages->currentIndex(), 0);
        click(statusBar(), QStringLiteral("锁定交易"));
        QCOMPARE(pages->currentIndex(), 1);
    }

    void bothBarsLeadToOneDialog()
    {
        open();
        QVERIFY(!dialog());
        click(titleBar(), QStringLiteral("登录"));
        QVERIFY(dialog());
        dialog()->close();
        QTRY_VERIFY(!dialog());
        click(statusBar(), QStringLiteral("登录"));
        QVERIFY(dialog());
        QTRY_COMPARE(m_window->findChildren<LoginDialog *>().size(), 1);
        dialog()->close();
        // Signed in, the title bar still offers another sign-in.
        WindowBench::signIn();
        QVERIFY(!buttonOf(statusBar(), QStringLiteral("登录"))->isVisible());
        click(titleBar(), QStringLiteral("重新登录"));
        QVERIFY(dialog());
    }

    void theWindowIsCalledAsThePlatform()
    {
        auto *config = ZvServerConfig::getZvServerConfigInstance();
        QCOMPARE(m_window->windowTitle(), QStringLiteral("澄湖文化交易平台"));
        QVERIFY(titleHas(m_window->windowTitle()));
        config->setCurrentPlatform(ZvServerConfig::LanChuan);
        begin();
        config->setCurrentPlatform(ZvServerConfig::ChengHu);
        QCOMPARE(m_window->windowTitle(), QStringLiteral("岚川商品交易平台"));
        QVERIFY(titleHas(m_window->windowTitle()));
    }

    void thePartsStandOneBelowTheOther()
    {
        m_window->resize(1366, 768);
        open();
        const QList<QWidget *> parts{titleBar(), m_window->halves(), m_window->connectionStrip(),
                                     statusBar()};
        int next = WindowEdge::thickness;
        for (const QWidget *part : parts) {
            QCOMPARE(part->y(), next);
            QCOMPARE(part->width(), 1366 - 2 * WindowEdge::thickness);
            next = part->geometry().bottom() + 1;
        }
        QCOMPARE(next, 768 - WindowEdge::thickness);
        QVERIFY(m_window->windowFlags() & Qt::FramelessWindowHint);
    }

    void theButtonsOfTheWindow()
    {
        open();
        click(titleBar(), QStringLiteral("最大化/还原"));
        QVERIFY(m_window->isMaximized());
        click(titleBar(), QStringLiteral("最大化/还原"));
        QVERIFY(!m_window->isMaximized());
        const QPoint free(100, titleBar()->height() / 2);
        QTest::mouseDClick(titleBar(), Qt::LeftButton, Qt::NoModifier, free);
        QVERIFY(m_window->isMaximized());
        QTest::mouseDClick(titleBar(), Qt::LeftButton, Qt::NoModifier, free);
        QVERIFY(!m_window->isMaximized());
        click(titleBar(), QStringLiteral("最小化"));
        QVERIFY(m_window->isMinimized());
        m_window->showNormal();
        click(titleBar(), QStringLiteral("关闭"));
        QVERIFY(!m_window->isVisible());
    }

    void theStripIsAlwaysInSight()
    {
        const ConnectionStrip *strip = m_window->connectionStrip();
        const auto isSeen = [strip] {
            QCoreApplication::processEvents();
            return strip->isVisible() && strip->visibleRegion().boundingRect() == strip->rect();
        };
        m_window->resize(m_window->minimumSizeHint());
        open();
        WindowBench::signIn();
        QVERIFY(isSeen());
        press(Qt::Key_F5);
        QVERIFY(isSeen());
        pool()->slot_marketDeatil_clicked();
        QCOMPARE(page(), QStringLiteral("Market_DetailWidget"));
        QVERIFY(isSeen());
        sprite()->begin(Qt::Key_1);
        QVERIFY(isSeen());
        sprite()->leave();
        click(statusBar(), QStringLiteral("锁定交易"));
        QVERIFY(isSeen());
        click(statusBar(), QStringLiteral("隐藏交易"));
        QVERIFY(isSeen());
        m_window->resize(1366, 768);
        QVERIFY(isSeen());
    }

    void theStripCountsUntilTheExchangeIsThere()
    {
        m_window->useExchange(QUrl("http://127.0.0.1:4711"));
        const ConnectionStrip *strip = m_window->connectionStrip();
        QVERIFY2(strip->text().startsWith(QStringLiteral("正在连接交易所 0 秒")),
                 qPrintable(strip->text()));
        QTRY_VERIFY(strip->text().startsWith(QStringLiteral("正在连接交易所 1 秒")));
    }

    // By its own title bar, and by an edge that lies beside the bars.
    void theMouseMovesTheWindowAndDrawsItLarger()
    {
        open();
        const QRect place = m_window->geometry();
        QWindow *handle = m_window->windowHandle();
        const auto drag = [handle](const QPoint &from, const QPoint &by) {
            const QPoint start = handle->mapToGlobal(from);
            QTest::mousePress(handle, Qt::LeftButton, Qt::NoModifier, from);
            for (int step = 1; step <= 4; ++step)
                QTest::mouseMove(handle, handle->mapFromGlobal(start + by * step / 4));
            QTest::mouseRelease(handle, Qt::LeftButton, Qt::NoModifier,
                                handle->mapFromGlobal(start + by));
        };
        drag(titleBar()->mapTo(m_window, QPoint(60, 17)), QPoint(40, 20));
        QCOMPARE(m_window->geometry(), place.translated(40, 20));
        const int right = m_window->width() - 2;
        drag(QPoint(right, statusBar()->geometry().center().y()), QPoint(60, 0));
        QCOMPARE(m_window->geometry(), place.translated(40, 20).adjusted(0, 0, 60, 0));
        QSignalSpy sizes(pool(), &ZvWidgetSignalSLotPool::signal_adjustSize);
        drag(QPoint(m_window->width() / 2, m_window->height() - 2), QPoint(0, 40));
        QCOMPARE(m_window->height(), place.height() + 40);
        QTRY_COMPARE(sizes.value(sizes.size() - 1).value(0).toSize(), m_window->size());
    }

    // A double click on a button is two clicks on it, and none on the bar.
    void aDoubleClickOnAButtonOfTheTitleBarStaysThere()
    {
        open();
        QTest::mouseDClick(buttonOf(titleBar(), QStringLiteral("登录")), Qt::LeftButton);
        QVERIFY(!m_window->isMaximized());
    }

    void theEndOfTheSessionIsToldOnce()
    {
        open();
        WindowBench::signIn();
        QSignalSpy left(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace);
        int boxes = 0;
        QStringList before;
        zvtest::CallTrace trace;
        QTimer reader;
        connect(&reader, &QTimer::timeout, this, [&] {
            QWidget *box = QApplication::activeModalWidget();
            if (!box)
                return;
            ++boxes;
            before = trace.take();
            // Another session that ends meanwhile opens no second box.
            engine()->isLogged = true;
            cache()->storeLoggedOtherPlace(QStringLiteral("登录已过期"));
            QVERIFY(!engine()->isLogged);
            QCOMPARE(QApplication::activeModalWidget(), box);
            QTest::mouseClick(box->findChild<QPushButton *>(), Qt::LeftButton);
        });
        reader.start(20);
        cache()->storeLoggedOtherPlace(QStringLiteral("您的账户已在别处登录"));
        QCOMPARE(boxes, 1);
        QVERIFY2(before.contains("ZvServerEngine::startUnloggedEngine()"),
                 qPrintable(before.join('\n')));
        QCOMPARE(left.count(), 1);
        QVERIFY(m_window->findChild<AccountButton *>()->isHidden());
        QVERIFY(buttonOf(titleBar(), QStringLiteral("登录")));
        QVERIFY(buttonOf(statusBar(), QStringLiteral("登录"))->isVisible());
    }

    void digitsTypedIntoTheTicketStayThere()
    {
        m_window->resize(1366, 768);
        open();
        press(Qt::Key_Return);
        QCOMPARE(page(), QStringLiteral("Market_KTimeWidget"));
        auto *price = ticketField();
        price->setFocus();
        price->selectAll();
        QTest::keyClicks(price, "12.34");
        QVERIFY(sprite()->isHidden());
        QCOMPARE(price->text(), QStringLiteral("12.34"));
        const QString id = engine()->getGlobalCollectionID();
        QTest::keyClick(price, Qt::Key_PageDown);
        QCOMPARE(engine()->getGlobalCollectionID(), id);
        // Escape goes back step by step, wherever the keys are.
        QTest::keyClick(price, Qt::Key_Escape);
        QCOMPARE(page(), QStringLiteral("Market_TableWidget"));
    }

    void pageKeysScrollATableOfTheTradingHalf()
    {
        m_window->resize(1366, 768);
        open();
        press(Qt::Key_Return);
        auto *records = tradingTable();
        QVERIFY(records);
        records->setFocus();
        QVERIFY(records->hasFocus());
        const QString id = engine()->getGlobalCollectionID();
        QTest::keyClick(records, Qt::Key_PageDown);
        QCOMPARE(engine()->getGlobalCollectionID(), id);
        // F5 and letters are the window's there as well.
        QTest::keyClick(records, Qt::Key_F5);
        QVERIFY(marketButton("日K")->isChecked());
        QTest::keyClick(records, Qt::Key_C);
        QVERIFY(sprite()->isVisible());
        sprite()->leave();
    }

    void theWheelOverTheTradingHalfLeavesTheChart()
    {
        m_window->resize(1366, 768);
        open();
        press(Qt::Key_Return);
        const QString id = engine()->getGlobalCollectionID();
        QSignalSpy turned(pool(), &ZvWidgetSignalSLotPool::signal_wheelOnChart_clicked);
        QWidget *viewport = tradingTable()->viewport();
        const QPoint place = viewport->rect().center();
        QWheelEvent wheel(place, viewport->mapToGlobal(place), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(viewport, &wheel);
        QCOMPARE(turned.count(), 0);
        QCOMPARE(engine()->getGlobalCollectionID(), id);
    }

    void sizeIsToldThroughThePool()
    {
        QSignalSpy sizes(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                         &ZvWidgetSignalSLotPool::signal_adjustSize);
        m_window->show();
        m_window->resize(880, 720);
        QTRY_VERIFY(!sizes.isEmpty());
        QTRY_COMPARE(sizes.last().first().toSize(), QSize(880, 720));
    }
};

ZV_TEST(MainWindowTest)
#include "test_mainwindow.moc"
