#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"
#include "deliveryrows.h"
#include "pictures.h"
#include "support/testregistry.h"
#include "transactionbench.h"

#include <QSpinBox>
#include <QTableView>
#include <QtTest/QtTest>

using zvtest::capItem;
using zvtest::capOf;

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// Holdings that win, lose and stand, one with the longest texts and the largest figures.
ZvUBCapInfo holdings()
{
    ZvUBCapItem::Data longest;
    longest.collectionId = QStringLiteral("2147483647");
    longest.code = QStringLiteral("6018888888");
    longest.name = QStringLiteral("一九八〇年庚申年猴票整版八十枚原胶全品带边纸特别纪念珍藏版");
    longest.quantity = 999999999;
    longest.sellable = 999999998;
    longest.cost = 899999999999999;
    longest.latest = 13107199;
    QList<ZvUBCapItem> items{ZvUBCapItem(longest)};
    for (int number = 1; number <= 9; ++number)
        items << capItem({number, number * 3, number, number * qint64(3000), 900 + number * 20});
    return capOf(items);
}

} // namespace

// What the frame of the trading half, its lock page and the pages about deliveries look like, after
// they were looked at.
class TransactionPicturesTest : public QObject
{
    Q_OBJECT

private:
    static void hold(QWidget *widget, const QString &name)
    {
        QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(widget, name);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    static void addPlatformsAndSizes()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QSize>("size");
        QTest::newRow("ch_low") << 1 << QSize(1366, 226);
        QTest::newRow("ch_high") << 1 << QSize(1366, 307);
        QTest::newRow("lc_low") << 2 << QSize(1366, 226);
        QTest::newRow("lc_high") << 2 << QSize(1366, 307);
    }

    // The mouse is nowhere.
    static void takeMouseAway(const zvtest::TransactionBench &bench)
    {
        QTest::mouseMove(bench.trading.get(), QPoint(1300, bench.trading->height() - 5));
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }
    void cleanup() { cache()->storeCapInfo(ZvUBCapInfo()); }

    void navigation_data() { addPlatformsAndSizes(); }
    void navigation()
    {
        QFETCH(int, platform);
        QFETCH(QSize, size);
        zvtest::TransactionBench bench(platform, size);
        QWidget *column = bench.named<QWidget>("scrollArea");
        const QString name = QStringLiteral("navigation_%1_").arg(QTest::currentDataTag());
        hold(column, name + QStringLiteral("buy"));
        bench.click("pushButton_select");
        takeMouseAway(bench);
        hold(column, name + QStringLiteral("queries"));
        QTest::mousePress(bench.button("pushButton_sell"), Qt::LeftButton);
        hold(column, name + QStringLiteral("pressed"));
        QTest::mouseRelease(bench.button("pushButton_sell"), Qt::LeftButton);
    }

    // The same pictures on both platforms.
    void lockPage_data() { addPlatformsAndSizes(); }
    void lockPage()
    {
        QFETCH(int, platform);
        QFETCH(QSize, size);
        zvtest::TransactionBench bench(platform, size);
        bench.call("slot_showTransctionLock");
        takeMouseAway(bench);
        const QString name = QStringLiteral("lock_%1_").arg(size.height() < 300 ? "low" : "high");
        hold(bench.trading.get(), name + QStringLiteral("empty"));
        QTest::keyClicks(bench.password(), "secret1");
        emit ZvServerActionResult::getZvServerActionResultInstance()->signal_login_failed(
            QStringLiteral("手机号或密码错误，还可以尝试四次，请您核对之后再输入，或者找回密码"));
        QTest::keyClicks(bench.password(), "abcdefghij0123456789");
        hold(bench.trading.get(), name + QStringLiteral("refused"));
    }

    void deliveryPage_data() { addPlatformsAndSizes(); }
    void deliveryPage()
    {
        QFETCH(int, platform);
        QFETCH(QSize, size);
        zvtest::TransactionBench bench(platform, size);
        bench.click("pushButton_deliveryHandling");
        takeMouseAway(bench);
        const QString name = QStringLiteral("delivery_%1_").arg(QTest::currentDataTag());
        if (platform == 1)
            hold(bench.trading.get(), name + QStringLiteral("empty"));
        cache()->storeCapInfo(holdings());
        hold(bench.trading.get(), name + QStringLiteral("full"));
        if (platform == 2)
            return; // the rest is the same there
        auto *table = bench.pages()->currentWidget()->findChild<QTableView *>();
        table->scrollTo(table->model()->index(1, 11));
        const QPoint button = table->visualRect(table->model()->index(1, 11)).center();
        QTest::mouseMove(bench.trading->windowHandle(),
                         table->viewport()->mapTo(bench.trading.get(), button));
        hold(bench.trading.get(), name + QStringLiteral("hovered"));
    }

    // The same pictures on both platforms.
    void form_data()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QString>("state");
        for (const char *state : {"new", "long", "amount", "name", "phone", "address"}) {
            QTest::addRow("%s_ch", state) << 1 << state;
            QTest::addRow("%s_lc", state) << 2 << state;
        }
    }
    void form()
    {
        QFETCH(int, platform);
        QFETCH(QString, state);
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(
            ZvServerConfig::Platform(platform));
        KitBench kit;
        Small_DeliveryHandling_Dialog dialog(nullptr);
        dialog.setCollectionId("1001");
        dialog.setCollectionCode("601001");
        dialog.setCollectionName("庚申年猴票");
        dialog.setAvailableNum(30);
        const auto edit = [&](const char *name) { return dialog.findChild<QLineEdit *>(name); };
        const bool isFilled = state != "new" && state != "name";
        if (isFilled)
            edit("lineEdit_userName")->setText("张三");
        if (isFilled && state != "phone")
            edit("lineEdit_userPhone")->setText("13912345678");
        if (isFilled && state != "address")
            edit("lineEdit_userAddr")->setText("北京市海淀区中关村大街1号");
        if (state == "long") {
            dialog.setCollectionCode("6018888888");
            dialog.setCollectionName(
                "一九八〇年庚申年猴票整版八十枚原胶全品带边纸特别纪念珍藏版第一辑编号零零零一");
            dialog.setAvailableNum(2147483647);
            edit("lineEdit_userName")->setText("阿卜杜拉·买买提·吐尔逊·艾合买提江");
            edit("lineEdit_userAddr")
                ->setText("新疆维吾尔自治区巴音郭楞蒙古自治州库尔勒市人民东路一百二十三号"
                          "天山花园小区第十八栋三单元二五零一室");
            edit("lineEdit_userAddr")->setCursorPosition(0);
        } else if (state == "amount") {
            dialog.findChild<QSpinBox *>()->setValue(0);
        }
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        if (state != "new" && state != "long")
            QTest::mouseClick(dialog.findChild<QPushButton *>(), Qt::LeftButton);
        QTest::mouseMove(&dialog, QPoint(10, 300));
        dialog.setFocus();
        hold(&dialog, QStringLiteral("deliveryform_") + state);
        kit.endActions();
    }
};

ZV_TEST(TransactionPicturesTest)
#include "test_transactionpictures.moc"
