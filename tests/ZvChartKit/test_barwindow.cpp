#include "ZvChartKit/barwindow.h"
#include "support/testregistry.h"

using zvplot::BarWindow;

namespace {

BarWindow windowOf(int bars, int width = 400, int step = 8)
{
    BarWindow window;
    window.setWidth(width);
    window.setUsualStep(step);
    window.reset(bars);
    return window;
}

int middleOf(const BarWindow &window, int bar)
{
    return window.middleOf(window.columnOf(bar));
}

} // namespace

class BarWindowTest : public QObject
{
    Q_OBJECT

private slots:
    void theNewestBarsStandAtTheRight()
    {
        const BarWindow window = windowOf(1000);
        QCOMPARE(window.leftOf(window.columnOf(999)) + window.step(), 400);
        QCOMPARE(window.lastColumn() - window.firstColumn() + 1, 50);
        QCOMPARE(window.barAt(399), 999);
        QCOMPARE(window.barAt(0), 950);
        QCOMPARE(window.barAt(-50), 943); // beyond the edge, still a bar
        QCOMPARE(window.barAt(100000), 999);
    }

    void fewBarsBeginAtTheLeft()
    {
        const BarWindow window = windowOf(3);
        QCOMPARE(window.leftOf(window.columnOf(0)), 0);
        QCOMPARE(window.barAt(399), 2);
        QVERIFY(window.isLastVisible());
        QCOMPARE(window.lastColumn(), window.columnOf(2));
    }

    void noBars()
    {
        BarWindow window = windowOf(0);
        QCOMPARE(window.barAt(10), -1);
        QVERIFY(window.lastColumn() < window.firstColumn());
        QVERIFY(!window.zoom(1, 0));
        window.panBy(30);
        window.showFirst();
        window.showLast();
        window.grow(1);
        QCOMPARE(window.barAt(10), 0);
        window.setWidth(0);
        QVERIFY(window.lastColumn() < window.firstColumn());
        window.setWidth(-5);
        QVERIFY(window.lastColumn() < window.firstColumn());
    }

    void zoomKeepsTheMiddleOfItsBar_data()
    {
        QTest::addColumn<int>("x");
        for (const int x : {0, 1, 77, 200, 399})
            QTest::newRow(qPrintable(QString::number(x))) << x;
    }
    void zoomKeepsTheMiddleOfItsBar()
    {
        QFETCH(int, x);
        BarWindow window = windowOf(3000);
        const int bar = window.barAt(x);
        const int middle = middleOf(window, bar);
        int steps = 0;
        while (window.zoom(1, bar)) {
            QCOMPARE(middleOf(window, bar), middle);
            ++steps;
        }
        QVERIFY(steps > 10);
        QVERIFY(window.step() <= 100);
        int back = 0;
        while (window.zoom(-1, bar)) {
            QCOMPARE(middleOf(window, bar), middle);
            ++back;
        }
        QVERIFY(back > steps);
        QVERIFY(window.barsPerColumn() > 1);
    }

    void zoomingOutEndsWhereAllBarsShow()
    {
        BarWindow window = windowOf(3000);
        while (window.zoom(-1, 1500))
            QVERIFY(window.barsPerColumn() <= 512);
        QVERIFY(3000 / window.barsPerColumn() <= 400);
        QVERIFY(3000 / window.barsPerColumn() > 100);
        QVERIFY(!window.zoom(-1, 0));
    }

    void oneBarCannotBeZoomedOut()
    {
        BarWindow window = windowOf(1);
        const int step = window.step();
        QVERIFY(!window.zoom(-1, 0));
        QCOMPARE(window.step(), step);
        QVERIFY(window.zoom(2, 0));
        QVERIFY(window.step() > step);
    }

    void panningEndsAtTheEnds()
    {
        BarWindow window = windowOf(1000);
        window.panBy(-500); // to newer bars, of which there are none
        QCOMPARE(window.barAt(399), 999);
        window.panBy(24);
        QCOMPARE(window.barAt(399), 996);
        window.panBy(1000000);
        QCOMPARE(window.leftOf(window.columnOf(0)), 0);
        window.panBy(-1000000);
        QCOMPARE(window.leftOf(window.columnOf(999)) + window.step(), 400);
    }

    void aDragNeverJumps()
    {
        // Zooming out around a bar at the left leaves room at the right; a drag goes on from there.
        BarWindow window = windowOf(100);
        window.zoom(-4, window.barAt(0));
        const int before = window.leftOf(0);
        QVERIFY(window.leftOf(window.columnOf(99)) + window.step() < 400);
        window.panBy(-1);
        QVERIFY(window.leftOf(0) == before || window.leftOf(0) == before - 1);
        window.panBy(1);
        QVERIFY(qAbs(window.leftOf(0) - before) <= 1);
    }

    void aNewBarShiftsOnlyWhereTheLastOneIsSeen()
    {
        BarWindow window = windowOf(1000);
        const int left = window.leftOf(window.columnOf(990));
        window.grow(1001);
        QCOMPARE(window.leftOf(window.columnOf(990)), left - window.step());
        QCOMPARE(window.barAt(399), 1000);

        window.panBy(200);
        QVERIFY(!window.isLastVisible());
        const int stays = window.leftOf(window.columnOf(950));
        window.grow(1002);
        QCOMPARE(window.leftOf(window.columnOf(950)), stays);
        QVERIFY(!window.isLastVisible());
    }

    void aNewBarThatHasRoomShiftsNothing()
    {
        BarWindow window = windowOf(10);
        window.grow(11);
        QCOMPARE(window.leftOf(window.columnOf(0)), 0);
        for (int bars = 12; bars <= 60; ++bars) {
            window.grow(bars);
            QVERIFY(window.isLastVisible());
        }
        QCOMPARE(window.leftOf(window.columnOf(59)) + window.step(), 400);
    }

    void barsInFrontMoveNothing_data()
    {
        QTest::addColumn<int>("zoom");
        QTest::newRow("bars") << 0;
        QTest::newRow("columns of several") << -10;
    }
    void barsInFrontMoveNothing()
    {
        QFETCH(int, zoom);
        BarWindow window = windowOf(4000);
        window.zoom(zoom, 3990);
        const int perColumn = window.barsPerColumn();
        QCOMPARE(perColumn > 1, zoom < 0);
        const int x = middleOf(window, 3977);
        const int first = window.firstBarOf(window.columnOf(3977));
        window.prepend(777);
        QCOMPARE(window.barCount(), 4777);
        QCOMPARE(middleOf(window, 3977 + 777), x);
        QCOMPARE(window.firstBarOf(window.columnOf(3977 + 777)), first + 777);
        QCOMPARE(window.firstBarOf(window.columnOf(0)), 0);
    }

    void columnsHoldAllBarsOnce()
    {
        BarWindow window = windowOf(2500);
        window.zoom(-11, 2400);
        window.prepend(37);
        window.showFirst();
        int next = 0;
        for (int column = window.columnOf(0); column <= window.columnOf(2536); ++column) {
            QCOMPARE(window.firstBarOf(column), next);
            next = window.firstBarOf(column + 1);
            QVERIFY(next > window.firstBarOf(column));
            for (int bar = window.firstBarOf(column); bar < next; ++bar)
                QCOMPARE(window.columnOf(bar), column);
        }
        QCOMPARE(next, 2537);
    }

    void anotherWidthKeepsTheRightEdge()
    {
        BarWindow window = windowOf(1000);
        window.setWidth(600);
        QCOMPARE(window.barAt(599), 999);
        window.panBy(80);
        const int bar = window.barAt(599);
        window.setWidth(300);
        QCOMPARE(window.barAt(299), bar);
        window.setWidth(0);
        window.setWidth(300);
        QCOMPARE(window.barAt(299), bar);
    }

    void showMovesNoFurtherThanNeeded()
    {
        BarWindow window = windowOf(1000);
        window.show(960);
        QCOMPARE(window.barAt(399), 999); // was in view
        window.show(900);
        QCOMPARE(window.leftOf(window.columnOf(900)), 0);
        window.show(970);
        QCOMPARE(window.leftOf(window.columnOf(970)) + window.step(), 400);
    }

    void earlierBarsAreWantedBeforeTheEdge()
    {
        BarWindow window = windowOf(1000);
        QVERIFY(!window.isNearFirst());
        window.showFirst();
        QVERIFY(window.isNearFirst());
        window.prepend(500);
        QVERIFY(!window.isNearFirst());
    }
};

ZV_TEST(BarWindowTest)
#include "test_barwindow.moc"
