#include "client/connectionstrip.h"

#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/pictures.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QtTest/QtTest>

// What the strip above the status bar looks like, after it was looked at.
class StripPicturesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void strip_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<QString>("state");
        QTest::addColumn<int>("width");
        for (const char *state : {"unsigned", "connected", "checking", "away", "long"}) {
            for (const int width : {1366, 1760, 1920}) {
                QTest::addRow("%s_ch_%d", state, width)
                    << ZvServerConfig::ChengHu << state << width;
                QTest::addRow("%s_lc_%d", state, width)
                    << ZvServerConfig::LanChuan << state << width;
            }
        }
    }
    void strip()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(QString, state);
        QFETCH(int, width);
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(platform);
        KitBench bench;
        bench.startOn(QStringLiteral("/ch/strip/"));
        if (state != QLatin1String("unsigned")) {
            bench.signIn("t1");
            bench.answerAccount(KitBench::cap(1000));
        }
        ConnectionStrip strip;
        strip.resize(width, strip.height());
        strip.show();
        QVERIFY(QTest::qWaitForWindowActive(&strip));
        strip.setFocus(); // and not the account
        const bool isAway = state == QLatin1String("away") || state == QLatin1String("long");
        if (isAway) {
            bench.exchange->fail(zvPath_sync, ZvAnswer::Failed);
            bench.settle();
            bench.clock.advance(state == QLatin1String("away") ? 59'000 : 90'000'000);
            bench.settle();
        }
        auto *checks = ZvServerActionResult::getZvServerActionResultInstance()->checks();
        const QString key = QStringLiteral("00112233445566778899aabbccddeef");
        QList<int> matters;
        if (state == QLatin1String("checking"))
            matters = {ZvIntent::Order};
        else if (state == QLatin1String("long"))
            matters
                = {ZvIntent::Withdrawal, ZvIntent::Order, ZvIntent::Transfer, ZvIntent::Delivery};
        for (int i = 0; i < matters.size(); ++i) {
            ZvIntent intent;
            intent.matter = ZvIntent::Matter(matters.at(i));
            checks->begin(key + QString::number(i), intent);
        }
        if (state == QLatin1String("long"))
            strip.setServiceNotice(QStringLiteral("交易所服务已停止，正在重新启动，这是第 3 次"));
        strip.refresh();
        const QString difference = zvtest::differenceFromPictures(
            &strip, QStringLiteral("strip_") + QTest::currentDataTag(), width == 1366);
        for (int i = 0; i < matters.size(); ++i)
            checks->end(key + QString::number(i));
        bench.endActions();
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

ZV_TEST(StripPicturesTest)
#include "test_strippictures.moc"
