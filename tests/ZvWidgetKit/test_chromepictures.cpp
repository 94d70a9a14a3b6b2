#include "ZvNetworkKit/zvservercache.h"
#include "chromebench.h"
#include "pictures.h"
#include "support/testregistry.h"

#include <QPainter>
#include <QtTest/QtTest>

namespace {

constexpr int widths[] = {1366, 1760, 2560};

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

QString centerOf(int platform)
{
    return platform == 2 ? QStringLiteral("岚川商品交易中心") : QStringLiteral("澄湖文化交易中心");
}

void signInAs(const QString &number)
{
    ZvUBMyAcount::Data data;
    data.accountNumber = number;
    cache()->storeMyAccount(ZvUBMyAcount(data));
    zvtest::ChromeBench::signIn();
}

void tellMessages(int count)
{
    QList<QPair<QString, QString>> messages;
    for (int i = 1; i <= count; ++i)
        messages.append({QStringLiteral("关于第%1期藏品 <T+1> 上市申购的公告").arg(i),
                         QStringLiteral("http://127.0.0.1/notice/%1").arg(i)});
    cache()->storeMessageList(messages);
}

} // namespace

// What the frame of the window looks like, after it was looked at.
class ChromePicturesTest : public QObject
{
    Q_OBJECT

private:
    // A wide window shows more of the same, so that its hashes are enough.
    static void hold(QWidget *bar, const QString &name)
    {
        QCoreApplication::processEvents();
        const bool isKept = bar->width() == widths[0];
        const QString difference = zvtest::differenceFromPictures(bar, name, isKept);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    static void addPlatformsAndWidths()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<int>("width");
        for (const int platform : {1, 2}) {
            for (const int width : widths)
                QTest::addRow("%s_%d", platform == 2 ? "lc" : "ch", width) << platform << width;
        }
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }
    void init() { cache()->storeMyAccount(ZvUBMyAcount()); }

    void titleBar_data() { addPlatformsAndWidths(); }
    void titleBar()
    {
        QFETCH(int, platform);
        QFETCH(int, width);
        zvtest::ChromeBench bench(platform, width);
        const QString name = QStringLiteral("titlebar_%1_").arg(QTest::currentDataTag());
        bench.titleBar->setTitle(centerOf(platform));
        bench.takeMouseAway();
        hold(bench.titleBar.get(), name + QStringLiteral("unsigned"));
        bench.signIn();
        hold(bench.titleBar.get(), name + QStringLiteral("signed"));
    }

    // The four buttons below each other, at rest, hovered, pressed and disabled from left to right.
    void titleButtons_data()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("ch") << 1;
        QTest::newRow("lc") << 2;
    }
    void titleButtons()
    {
        QFETCH(int, platform);
        zvtest::ChromeBench bench(platform);
        QList<QImage> looks[4];
        for (int i = 0; i < 4; ++i) {
            QPushButton *button = bench.titleButton(i);
            const auto look = [&] {
                looks[i] << zvtest::picture(bench.titleBar.get(), 1.0).copy(button->geometry());
            };
            bench.takeMouseAway();
            look();
            bench.moveMouseTo(button);
            look();
            QTest::mousePress(button, Qt::LeftButton);
            look();
            QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(-50, 40));
            bench.takeMouseAway();
            button->setEnabled(false);
            look();
            for (int one = 0; one < 4; ++one) {
                for (int other = 0; other < one; ++other)
                    QVERIFY2(looks[i].at(one) != looks[i].at(other), qPrintable(button->toolTip()));
            }
        }
        const QSize cell = bench.titleLogin()->size();
        QImage sheet(cell.width() * 4, cell.height() * 4, QImage::Format_RGB32);
        sheet.fill(bench.titleBar->palette().color(QPalette::Window));
        QPainter painter(&sheet);
        for (int i = 0; i < 4; ++i) {
            for (int state = 0; state < 4; ++state)
                painter.drawImage(cell.width() * state, cell.height() * i, looks[i].at(state));
        }
        painter.end();
        const QString difference = zvtest::differenceFromPicture(
            sheet, QStringLiteral("titlebuttons_") + QTest::currentDataTag());
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    void statusBar_data() { addPlatformsAndWidths(); }
    void statusBar()
    {
        QFETCH(int, platform);
        QFETCH(int, width);
        zvtest::ChromeBench bench(platform, width);
        cache()->storeGlobalTime(1577840400);
        bench.adjustSize();
        bench.stopTicker();
        bench.takeMouseAway();
        const QString name = QStringLiteral("statusbar_%1_").arg(QTest::currentDataTag());
        hold(bench.statusBar.get(), name + QStringLiteral("unknown"));

        cache()->storeMarketCheck(true);
        tellMessages(20);
        bench.stopTicker();
        bench.adjustSize();
        bench.step(220);
        hold(bench.statusBar.get(), name + QStringLiteral("open"));

        signInAs(QStringLiteral("880012345678"));
        bench.adjustSize();
        hold(bench.statusBar.get(), name + QStringLiteral("signed"));

        cache()->storeMarketCheck(false);
        signInAs(QString(30, QLatin1Char('8')));
        tellMessages(1);
        bench.stopTicker();
        bench.adjustSize();
        bench.step(60);
        hold(bench.statusBar.get(), name + QStringLiteral("closed"));
    }

    void statusButtons()
    {
        zvtest::ChromeBench bench(1);
        cache()->storeGlobalTime(1577840400);
        bench.stopTicker();
        bench.signIn();
        QCoreApplication::processEvents();
        bench.moveMouseTo(bench.hideButton());
        hold(bench.statusBar.get(), QStringLiteral("statusbar_hide_hovered"));
        bench.moveMouseTo(bench.lockButton());
        QTest::mousePress(bench.lockButton(), Qt::LeftButton);
        hold(bench.statusBar.get(), QStringLiteral("statusbar_lock_pressed"));
        QTest::mouseRelease(bench.lockButton(), Qt::LeftButton, Qt::NoModifier, QPoint(-50, -40));
    }
};

ZV_TEST(ChromePicturesTest)
#include "test_chromepictures.moc"
