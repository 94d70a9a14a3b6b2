#include "client/screenareas.h"

#include "support/testregistry.h"

#include <QtTest/QtTest>

namespace {

const QRect mainScreen(0, 0, 1920, 1040); // with a panel of 40 lines below
const QRect otherScreen(1920, 0, 1280, 1024);

} // namespace

// Where a window may stand.
class ScreenAreasTest : public QObject
{
    Q_OBJECT

private slots:
    void rescuesWhatIsOutOfReach_data()
    {
        QTest::addColumn<QRect>("window");
        QTest::addColumn<QRect>("place");
        QTest::newRow("wholly on a screen")
            << QRect(100, 50, 1366, 768) << QRect(100, 50, 1366, 768);
        QTest::newRow("on the other screen")
            << QRect(2000, 100, 1000, 700) << QRect(2000, 100, 1000, 700);
        QTest::newRow("partly outside, as the user left it")
            << QRect(-900, 900, 1366, 768) << QRect(-900, 900, 1366, 768);
        QTest::newRow("its screen is gone")
            << QRect(3400, 200, 1000, 700) << QRect(2200, 200, 1000, 700);
        QTest::newRow("far to the left")
            << QRect(-5000, 200, 1000, 700) << QRect(0, 200, 1000, 700);
        QTest::newRow("its title bar above the screens")
            << QRect(300, -20, 1000, 700) << QRect(300, 0, 1000, 700);
        QTest::newRow("its title bar behind the panel")
            << QRect(300, 1030, 1000, 700) << QRect(300, 340, 1000, 700);
        QTest::newRow("too little of its title bar")
            << QRect(-950, 200, 1000, 700) << QRect(0, 200, 1000, 700);
        QTest::newRow("larger than its screen")
            << QRect(100, 50, 2560, 1440) << QRect(100, 50, 1920, 1040);
        QTest::newRow("large and gone")
            << QRect(9000, 9000, 2560, 1440) << QRect(1920, 0, 1280, 1024);
    }
    void rescuesWhatIsOutOfReach()
    {
        QFETCH(QRect, window);
        QFETCH(QRect, place);
        QCOMPARE(screenareas::rescued(window, {mainScreen, otherScreen}), place);
        QVERIFY(screenareas::isWithinReach(place, {mainScreen, otherScreen}));
        QCOMPARE(screenareas::isWithinReach(window, {mainScreen, otherScreen}),
                 window.topLeft() == place.topLeft());
    }

    void aDraggedWindowStopsWhereItCanStillBeCaught_data()
    {
        QTest::addColumn<QPoint>("wanted");
        QTest::addColumn<QPoint>("place");
        QTest::newRow("on the screen") << QPoint(500, 300) << QPoint(500, 300);
        QTest::newRow("half outside") << QPoint(-300, 300) << QPoint(-300, 300);
        QTest::newRow("left") << QPoint(-950, 300) << QPoint(-880, 300);
        QTest::newRow("right") << QPoint(3190, 300) << QPoint(3080, 300);
        QTest::newRow("up") << QPoint(500, -5) << QPoint(500, 0);
        QTest::newRow("down") << QPoint(500, 1039) << QPoint(500, 1005);
    }
    void aDraggedWindowStopsWhereItCanStillBeCaught()
    {
        QFETCH(QPoint, wanted);
        QFETCH(QPoint, place);
        const QRect window(wanted, QSize(1000, 700));
        QCOMPARE(screenareas::reachable(window, {mainScreen, otherScreen}), place);
    }

    void withoutAScreenNothingMoves()
    {
        const QRect window(100, 100, 500, 400);
        QCOMPARE(screenareas::rescued(window, {}), window);
        QCOMPARE(screenareas::reachable(window, {}), window.topLeft());
        QVERIFY(!screenareas::isWithinReach(window, {}));
    }

    void allAreThoseOfTheScreensThatAreThere()
    {
        QCOMPARE(screenareas::all().size(), QGuiApplication::screens().size());
        QVERIFY(!screenareas::all().first().isEmpty());
    }
};

ZV_TEST(ScreenAreasTest)
#include "test_screenareas.moc"
