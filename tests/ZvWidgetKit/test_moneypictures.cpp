#include "BreltWidgetToolKit/breltlabelurl.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "marketbench.h"
#include "moneybench.h"
#include "pictures.h"
#include "support/testregistry.h"

#include <QTimer>
#include <QtTest/QtTest>

// What the dialog for money in and out and the title row of the market half look like, after they
// were looked at.
class MoneyPicturesTest : public QObject
{
    Q_OBJECT

private:
    static void hold(QWidget *widget, const QString &name)
    {
        QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(widget, name);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    // The same pictures on both platforms.
    void inAndOut_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<QString>("state");
        for (const char *state : {"in", "in_prompt", "in_waiting", "out_unticked"}) {
            QTest::addRow("%s_ch", state) << ZvServerConfig::ChengHu << state;
            QTest::addRow("%s_lc", state) << ZvServerConfig::LanChuan << state;
        }
    }
    void inAndOut()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(QString, state);
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(platform);
        zvtest::MoneyBench bench;
        auto *bank = qobject_cast<BreltLabelURL *>(bench.label("label_bank_pictrue"));
        QTRY_VERIFY(!bank->pixmap(Qt::ReturnByValue).isNull());
        if (state == QLatin1String("in_prompt")) {
            bench.click("pushButton_ok");
        } else if (state == QLatin1String("in_waiting")) {
            bench.typeAmount("9999999.99");
            bench.typeCode("12345");
            bench.click("pushButton_ok");
            emit zvtest::actions()->signal_inMoney_sendCode_succeed("a", "b");
            QVERIFY(QMetaObject::invokeMethod(bench.dialog->findChild<QTimer *>(), "timeout"));
        } else if (state == QLatin1String("out_unticked")) {
            bench.click("pushButton_out");
            bench.click("toolButton_agree");
            ZvServerCache::getZvServerCacheInstance()->storeCapInfo(
                zvtest::availableMoney(123456789));
        }
        // Neither the mouse nor the text cursor is in the picture.
        QTest::mouseMove(bench.dialog, QPoint(10, 300));
        bench.dialog->setFocus();
        hold(bench.dialog, QStringLiteral("moneyinout_") + state);
    }

    void titleRow_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<bool>("isSigned");
        QTest::newRow("ch_unsigned") << ZvServerConfig::ChengHu << false;
        QTest::newRow("ch_signed") << ZvServerConfig::ChengHu << true;
        QTest::newRow("lc_unsigned") << ZvServerConfig::LanChuan << false;
        QTest::newRow("lc_signed") << ZvServerConfig::LanChuan << true;
    }
    void titleRow()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(bool, isSigned);
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(platform);
        zvtest::MarketBench bench;
        bench.call(isSigned ? "showButtonsNeedLog" : "hideButtonsNeedLog");
        bench.call("slot_changeToPage_KLine_day");
        hold(bench.button(QStringLiteral("分时"))->parentWidget(),
             QStringLiteral("marketrow_") + QTest::currentDataTag());
    }
};

ZV_TEST(MoneyPicturesTest)
#include "test_moneypictures.moc"
