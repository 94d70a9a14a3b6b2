#include "client/startscreen.h"

#include "client/embeddedexchange.h"
#include "client/mainwindow.h"
#include "shownwindows.h"
#include "support/testregistry.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/zvplatformselectdialog.h"
#include "ZvWidgetKit/zvsplashscreen.h"

#include <QPointer>
#include <QPushButton>
#include <QtTest/QtTest>

namespace {

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

} // namespace

// What comes before the window: the choice of the platform, then its splash.
class StartScreenTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<StartScreen> m_start;
    std::unique_ptr<QSignalSpy> m_over;

    // Answers the platform dialog when it has come up.
    template <typename Answer>
    static bool chooseBy(Answer answer)
    {
        QTimer watch;
        connect(&watch, &QTimer::timeout, [&] {
            if (auto *dialog = zvtest::shownWindow<ZvPlatformSelectDialog>())
                answer(dialog);
        });
        watch.start(20);
        return StartScreen::choosePlatform();
    }

    void open()
    {
        m_start = std::make_unique<StartScreen>();
        m_over = std::make_unique<QSignalSpy>(m_start.get(), &StartScreen::over);
        m_start->show();
    }

    static ZvUBObject someRow()
    {
        ZvUBObject::Data data;
        data.collectionId = QStringLiteral("1001");
        return ZvUBObject(data);
    }

private slots:
    void init()
    {
        access()->setTransport(std::make_unique<ZvScriptedTransport>());
        static int starts = 0;
        access()->setUrlPrefix(QStringLiteral("/start/%1/").arg(++starts));
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
    }

    void cleanup()
    {
        m_over.reset();
        m_start.reset();
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
        access()->stop();
        access()->setTransport(nullptr);
    }

    void thePlatformIsChosenBeforeTheStylesAreRead_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<int>("platform");
        QTest::newRow("left") << "pushButton_LC" << int(ZvServerConfig::LanChuan);
        QTest::newRow("right") << "pushButton_CH" << int(ZvServerConfig::ChengHu);
    }
    void thePlatformIsChosenBeforeTheStylesAreRead()
    {
        QFETCH(QString, button);
        QFETCH(int, platform);
        // The other one stands before the choice.
        config()->setCurrentPlatform(ZvServerConfig::Platform(3 - platform));
        const QString before = config()->getStyleOf_TitleBarPaletteColor();
        QVERIFY(chooseBy([&](ZvPlatformSelectDialog *dialog) {
            QTest::mouseClick(dialog->findChild<QPushButton *>(button), Qt::LeftButton);
        }));
        QCOMPARE(int(config()->getCurrentPlatform()), platform);
        const MainWindow window;
        const QColor colour = window.findChild<TitleBar *>()->palette().color(QPalette::Window);
        QCOMPARE(colour, QColor(config()->getStyleOf_TitleBarPaletteColor()));
        QVERIFY(colour != QColor(before));
    }

    void whoeverClosesTheChoiceLeaves()
    {
        QVERIFY(!chooseBy(
            [](ZvPlatformSelectDialog *dialog) { QTest::keyClick(dialog, Qt::Key_Escape); }));
        QCOMPARE(config()->getCurrentPlatform(), ZvServerConfig::ChengHu);
        QVERIFY(!zvtest::shownWindow<ZvPlatformSelectDialog>());
    }

    void theSplashIsThePlatforms()
    {
        open();
        const QImage chenghu = zvtest::shownWindow<ZvSplashScreen>()->pixmap().toImage();
        m_start.reset();
        config()->setCurrentPlatform(ZvServerConfig::LanChuan);
        open();
        const QImage lanchuan = zvtest::shownWindow<ZvSplashScreen>()->pixmap().toImage();
        QCOMPARE(chenghu.size(), QSize(640, 400));
        QCOMPARE(lanchuan.size(), QSize(640, 400));
        QVERIFY(chenghu != lanchuan);
    }

    void itsWordsAreToBeSeen()
    {
        open();
        const auto *splash = zvtest::shownWindow<ZvSplashScreen>();
        const QImage said = const_cast<ZvSplashScreen *>(splash)->grab().toImage();
        const QImage bare = splash->pixmap().toImage().convertToFormat(said.format());
        QRect changed;
        for (int y = 0; y < said.height(); ++y) {
            for (int x = 0; x < said.width(); ++x) {
                if (said.pixel(x, y) != bare.pixel(x, y))
                    changed |= QRect(x, y, 1, 1);
            }
        }
        QVERIFY(!changed.isNull());
        // In the middle of the free band below the name.
        QVERIFY(changed.top() > 330 && changed.bottom() < 390);
        QVERIFY(qAbs(changed.center().x() - 320) < 12);
    }

    void saysWhatItWaitsFor()
    {
        open();
        QCOMPARE(m_start->words(), QStringLiteral("正在连接…"));
        EmbeddedExchange exchange(QStringLiteral("/no/program"), QStringLiteral("/no/folder"));
        m_start->followExchange(&exchange);
        QCOMPARE(m_start->words(), QStringLiteral("正在启动交易服务…"));
        emit exchange.available(QUrl("http://127.0.0.1:4711"));
        QCOMPARE(m_start->words(), QStringLiteral("正在连接…"));
        emit access()->signal_connection_changed(true);
        QCOMPARE(m_start->words(), QStringLiteral("正在读取行情…"));
        QVERIFY(m_over->isEmpty());
        cache()->storeMarketList(QList<ZvUBObject>{});
        QVERIFY(m_over->isEmpty());
        cache()->storeMarketList(QList<ZvUBObject>{someRow()});
        QCOMPARE(m_over->count(), 1);
        // Whatever comes later is the window's to show.
        emit exchange.lost(QStringLiteral("交易所服务已停止"));
        emit access()->signal_connection_changed(true);
        QCOMPARE(m_over->count(), 1);
        QCOMPARE(m_start->words(), QStringLiteral("正在读取行情…"));
    }

    void badNewsOpenTheWindowAtOnce()
    {
        open();
        EmbeddedExchange exchange(QStringLiteral("/no/program"), QStringLiteral("/no/folder"));
        m_start->followExchange(&exchange);
        emit exchange.lost(QStringLiteral("无法启动交易所服务"));
        QCOMPARE(m_over->count(), 1);
    }

    void waitsForAWhileOnly()
    {
        open();
        QVERIFY(m_over->wait(8000));
        QCOMPARE(m_over->count(), 1);
    }

    void aClickOrAKeyAsksForTheWindow_data()
    {
        QTest::addColumn<bool>("isKey");
        QTest::newRow("click") << false;
        QTest::newRow("key") << true;
    }
    void aClickOrAKeyAsksForTheWindow()
    {
        QFETCH(bool, isKey);
        open();
        const QPointer<ZvSplashScreen> splash = zvtest::shownWindow<ZvSplashScreen>();
        if (isKey)
            QTest::keyClick(splash, Qt::Key_Escape);
        else
            QTest::mouseClick(splash, Qt::LeftButton);
        QCOMPARE(m_over->count(), 1);
        // And it stays until the window is there.
        QVERIFY(splash->isVisible());
        QWidget window;
        window.show();
        m_start->leaveTo(&window);
        QVERIFY(!splash->isVisible());
        QTRY_VERIFY(!splash);
        QVERIFY(window.isVisible());
    }
};

ZV_TEST(StartScreenTest)
#include "test_startscreen.moc"
