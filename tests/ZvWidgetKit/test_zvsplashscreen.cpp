#include "ZvWidgetKit/zvsplashscreen.h"

#include "pictures.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

namespace {

const QSize size(400, 200);
const QRect place(100, 120, 200, 40);

QPixmap ground()
{
    QPixmap pixmap(size);
    pixmap.fill(Qt::black);
    return pixmap;
}

// Counts the paintings of a widget.
class Paintings : public QObject
{
public:
    explicit Paintings(QObject *watched) { watched->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }

    int count = 0;
};

// The smallest rectangle around what is not the ground.
QRect inkOf(const QImage &image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != Qt::black)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

QImage look(QWidget &splash)
{
    return splash.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace

class ZvSplashScreenTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void itIsASplashScreenOfItsPicture()
    {
        const ZvSplashScreen splash(ground());
        QVERIFY(splash.inherits("QSplashScreen"));
        QCOMPARE(splash.size(), size);
        QCOMPARE(splash.pixmap().size(), size);
        QCOMPARE(splash.windowFlags(), QSplashScreen().windowFlags());
        const QMetaObject *meta = splash.metaObject();
        QCOMPARE(meta->className(), "ZvSplashScreen");
        QCOMPARE(meta->methodCount(), meta->methodOffset());
    }

    void withoutAMessageThereIsThePictureAlone()
    {
        ZvSplashScreen splash(ground());
        QVERIFY(inkOf(look(splash)).isNull());
        splash.setMessageRect(place, Qt::AlignCenter);
        QVERIFY(inkOf(look(splash)).isNull());
    }

    void aMessageWithoutAPlaceIsNotSeen()
    {
        ZvSplashScreen splash(ground());
        splash.show();
        splash.showStatusMessage(QStringLiteral("正在连接"), Qt::white);
        QCOMPARE(splash.message(), QStringLiteral("正在连接"));
        QVERIFY(inkOf(look(splash)).isNull());
        // It is there all along, and seen with the first painting that has a place for it.
        splash.setMessageRect(place, Qt::AlignCenter);
        QVERIFY(!inkOf(look(splash)).isNull());
    }

    void theMessageStandsInItsPlace_data()
    {
        QTest::addColumn<int>("alignment");
        QTest::newRow("left, top") << int(Qt::AlignLeft | Qt::AlignTop);
        QTest::newRow("right, bottom") << int(Qt::AlignRight | Qt::AlignBottom);
        QTest::newRow("centre") << int(Qt::AlignCenter);
    }
    void theMessageStandsInItsPlace()
    {
        QFETCH(int, alignment);
        ZvSplashScreen splash(ground());
        splash.setMessageRect(place, alignment);
        splash.showStatusMessage(QStringLiteral("田田"), Qt::white);
        const QRect ink = inkOf(look(splash));
        QVERIFY(place.contains(ink));
        const int left = ink.left() - place.left();
        const int right = place.right() - ink.right();
        const int top = ink.top() - place.top();
        const int bottom = place.bottom() - ink.bottom();
        if (alignment & Qt::AlignLeft)
            QVERIFY(left < 6 && right > 150 && top < bottom);
        else if (alignment & Qt::AlignRight)
            QVERIFY(right < 6 && left > 150 && bottom < top);
        else
            QVERIFY(qAbs(left - right) < 4 && qAbs(top - bottom) < 8);
    }

    void aSecondPlaceHoldsFromTheNextPaintingOn()
    {
        ZvSplashScreen splash(ground());
        splash.setMessageRect(place, Qt::AlignLeft | Qt::AlignTop);
        splash.showStatusMessage(QStringLiteral("田田"), Qt::white);
        const QRect other(10, 10, 120, 40);
        splash.setMessageRect(other, Qt::AlignRight | Qt::AlignBottom);
        const QRect ink = inkOf(look(splash));
        QVERIFY(other.contains(ink));
        QVERIFY(other.right() - ink.right() < 6);
        // The null rectangle is none again.
        splash.setMessageRect(QRect(), Qt::AlignCenter);
        QVERIFY(inkOf(look(splash)).isNull());
    }

    // A pen has no colour that is none: it draws black then.
    void aMessageWithoutAColourIsBlack()
    {
        QPixmap white(size);
        white.fill(Qt::white);
        ZvSplashScreen splash(white);
        splash.setMessageRect(place, Qt::AlignCenter);
        splash.showStatusMessage(QStringLiteral("田田"), Qt::red);
        splash.showStatusMessage(QStringLiteral("田田"), QColor());
        const QImage image = look(splash);
        int black = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor pixel = image.pixelColor(x, y);
                QCOMPARE(pixel.hslSaturation(), 0);
                black += pixel == Qt::black;
            }
        }
        QVERIFY(black > 10);
    }

    void theMessageHasItsColour()
    {
        ZvSplashScreen splash(ground());
        splash.setMessageRect(place, Qt::AlignCenter);
        for (const QColor &colour : {QColor(255, 0, 0), QColor(0, 255, 0)}) {
            splash.showStatusMessage(QStringLiteral("田田"), colour);
            const QImage image = look(splash);
            int full = 0;
            for (int y = 0; y < image.height(); ++y) {
                for (int x = 0; x < image.width(); ++x) {
                    const QColor pixel = image.pixelColor(x, y);
                    full += pixel == colour;
                    QVERIFY(colour.red() || pixel.red() == 0);
                    QVERIFY(colour.green() || pixel.green() == 0);
                }
            }
            QVERIFY(full > 10);
        }
    }

    void theFontIsSixteenPixelsHigh()
    {
        const auto inkAt = [](int pixelSize) {
            ZvSplashScreen splash(ground());
            QFont font = splash.font();
            font.setPixelSize(pixelSize);
            splash.setFont(font);
            splash.setMessageRect(QRect(QPoint(), size), Qt::AlignCenter);
            splash.showStatusMessage(QStringLiteral("田田田田"), Qt::white);
            return inkOf(look(splash));
        };
        QCOMPARE(inkAt(40), inkAt(9));
        const int width = inkAt(40).width();
        QVERIFY2(width > 3 * 16 && width <= 4 * 16, qPrintable(QString::number(width)));
    }

    // A place is kept and nothing more: the host sets it before it has anything to say.
    void aPlaceRepaintsNothing()
    {
        ZvSplashScreen splash(ground());
        splash.showStatusMessage(QStringLiteral("正在连接"), Qt::white);
        splash.show();
        QVERIFY(QTest::qWaitForWindowExposed(&splash));
        QCoreApplication::processEvents();
        const Paintings paintings(&splash);
        splash.setMessageRect(place, Qt::AlignCenter);
        QCoreApplication::processEvents();
        QCOMPARE(paintings.count, 0);
    }

    void aMessageIsPaintedAtOnce()
    {
        ZvSplashScreen splash(ground());
        splash.setMessageRect(place, Qt::AlignCenter);
        splash.show();
        QVERIFY(QTest::qWaitForWindowExposed(&splash));
        QCoreApplication::processEvents();
        const Paintings paintings(&splash);
        const QSignalSpy told(&splash, &QSplashScreen::messageChanged);
        splash.showStatusMessage(QStringLiteral("正在连接"), Qt::white);
        QCOMPARE(paintings.count, 1); // before any event loop runs
        splash.showStatusMessage(QStringLiteral("正在读取行情"), Qt::white);
        QCOMPARE(paintings.count, 2);
        QCOMPARE(told.count(), 2);
        QCOMPARE(told.at(1).at(0).toString(), QStringLiteral("正在读取行情"));
    }

    void aSecondMessageReplacesTheFirst()
    {
        const auto only = [] {
            ZvSplashScreen splash(ground());
            splash.setMessageRect(place, Qt::AlignCenter);
            splash.showStatusMessage(QStringLiteral("一"), Qt::green);
            return look(splash);
        };
        ZvSplashScreen splash(ground());
        splash.setMessageRect(place, Qt::AlignCenter);
        splash.showStatusMessage(QStringLiteral("正在读取行情"), Qt::red);
        const QImage first = look(splash);
        splash.showStatusMessage(QStringLiteral("一"), Qt::green);
        QVERIFY(look(splash) != first);
        QCOMPARE(look(splash), only());
        splash.showStatusMessage(QString(), Qt::green);
        QVERIFY(inkOf(look(splash)).isNull());
    }

    // The base would lay the message out over the whole picture, and as markup.
    void theBaseDrawsNothing()
    {
        ZvSplashScreen splash(ground());
        splash.setMessageRect(QRect(300, 10, 60, 30), Qt::AlignCenter);
        splash.showStatusMessage(QStringLiteral("<b>田</b>"), Qt::white);
        const QImage marked = look(splash);
        QVERIFY(QRect(300, 10, 60, 30).contains(inkOf(marked)));
        splash.showStatusMessage(QStringLiteral("田"), Qt::white);
        QVERIFY2(look(splash) != marked, "the signs of the markup are text here");
    }

    void aLongMessageStaysInItsPlace()
    {
        ZvSplashScreen splash(ground());
        splash.setMessageRect(place, Qt::AlignLeft | Qt::AlignVCenter);
        splash.showStatusMessage(QString(200, QChar(0x7530)), Qt::white);
        QVERIFY(place.contains(inkOf(look(splash))));
    }

    void platforms_data()
    {
        QTest::addColumn<QString>("picture");
        QTest::newRow("splash_lc") << QStringLiteral(":/icons/guidepage/lanchuan-splash.png");
        QTest::newRow("splash_ch") << QStringLiteral(":/icons/guidepage/chenghu-splash.png");
    }
    void platforms()
    {
        QFETCH(QString, picture);
        ZvSplashScreen splash{QPixmap(picture)};
        QCOMPARE(splash.size(), QSize(640, 400));
        splash.setMessageRect(QRect(40, 344, 560, 32), Qt::AlignCenter);
        splash.showStatusMessage(QStringLiteral("正在启动交易服务…"), Qt::white);
        const QString difference
            = zvtest::differenceFromPictures(&splash, QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

ZV_TEST(ZvSplashScreenTest)
#include "test_zvsplashscreen.moc"
