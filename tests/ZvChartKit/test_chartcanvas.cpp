#include "ZvChartKit/chartcanvas.h"
#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/plotbench.h"
#include "support/testregistry.h"

#include <QPaintEvent>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

#include <limits>
#include <memory>

using namespace zvplot;

namespace {

constexpr QRgb crossColour = 0xff8b93a1;

// Collects what is painted of a widget.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QWidget *widget) { widget->installEventFilter(this); }

    QRegion take() { return std::exchange(m_region, QRegion()); }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            m_region += static_cast<QPaintEvent *>(event)->region();
        return false;
    }

private:
    QRegion m_region;
};

// Keeps the keys and wheel turns that reach the page.
class Page : public QWidget
{
public:
    QList<int> keys;
    int wheelTurns = 0;

protected:
    void keyPressEvent(QKeyEvent *event) override { keys.append(event->key()); }
    void wheelEvent(QWheelEvent *) override { ++wheelTurns; }
};

void turnWheel(QWidget *widget, const QPoint &at, int delta, Qt::KeyboardModifiers modifiers)
{
    QWheelEvent event(at, widget->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton,
                      modifiers, Qt::NoScrollPhase, false);
    // Only a turn that comes from outside goes on to the parent.
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget, &event);
}

int areaOf(const QRegion &region)
{
    int area = 0;
    for (const QRect &rect : region)
        area += rect.width() * rect.height();
    return area;
}

} // namespace

class ChartCanvasTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Page> m_page;
    ChartCanvas *m_canvas = nullptr;

    void turn() const
    {
        for (int i = 0; i < 3; ++i)
            QCoreApplication::processEvents();
    }

    QImage picture() const
    {
        return m_canvas->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    // The column and the row that the crosshair's lines stand on; -1 where there are none.
    static int crossColumn(const QImage &image)
    {
        int found = -1;
        int most = 0;
        for (int x = 0; x < image.width() - 50; ++x) {
            const int count = countOf(image, crossColour, QRect(x, 30, 1, image.height() - 60));
            if (count > most) {
                most = count;
                found = x;
            }
        }
        return most > image.height() / 2 ? found : -1;
    }
    static int crossRow(const QImage &image)
    {
        for (int y = 25; y < image.height() - 22; ++y) {
            if (countOf(image, crossColour, QRect(0, y, image.width() - 60, 1))
                > image.width() * 2 / 3)
                return y;
        }
        return -1;
    }

    static bool holds(const QImage &image, QRgb colour, const QRect &area)
    {
        return countOf(image, colour, area) > 0;
    }

private slots:
    void init()
    {
        m_page = std::make_unique<Page>();
        m_page->resize(900, 600);
        auto *layout = new QVBoxLayout(m_page.get());
        layout->setContentsMargins(0, 0, 0, 0);
        m_canvas = new ChartCanvas;
        layout->addWidget(m_canvas);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
        m_canvas->setFocus();
        // Away from where the test before has left it: a mouse that stays tells nothing.
        QTest::mouseMove(m_page.get(), QPoint(898, 2));
        turn();
    }

    void cleanup() { m_page.reset(); }

    void keysOfPageAndHostAreLeftToThem()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QTest::mouseMove(m_canvas, QPoint(300, 200));
        const QList<int> keys{Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Escape, Qt::Key_F5,
                              Qt::Key_F6,     Qt::Key_0,        Qt::Key_9,      Qt::Key_A,
                              Qt::Key_Z,      Qt::Key_Return,   Qt::Key_Space};
        for (const int key : keys)
            QTest::keyClick(m_canvas, static_cast<Qt::Key>(key));
        QCOMPARE(m_page->keys, keys);
        QTest::keyClick(m_canvas, Qt::Key_Left, Qt::ControlModifier);
        QTest::keyClick(m_canvas, Qt::Key_Plus, Qt::AltModifier);
        QVERIFY(m_page->keys.contains(Qt::Key_Left));
        QVERIFY(m_page->keys.contains(Qt::Key_Plus));

        // The tabs pass them on, too.
        auto *tab = m_canvas->findChild<QPushButton *>(QStringLiteral("pushButton_kdj"));
        m_page->keys.clear();
        for (const int key : {Qt::Key_PageUp, Qt::Key_Escape, Qt::Key_F5, Qt::Key_7, Qt::Key_K})
            QTest::keyClick(tab, static_cast<Qt::Key>(key));
        QCOMPARE(m_page->keys.size(), 5);
    }

    void itsOwnKeysStay()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        for (const Qt::Key key : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End,
                                  Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Up, Qt::Key_Down})
            QTest::keyClick(m_canvas, key);
        QVERIFY(m_page->keys.isEmpty());
        // Without figures there is nothing to move through.
        m_canvas->showKLine(ZvUBKLine(), KLinePlot::Period::Day);
        QTest::keyClick(m_canvas, Qt::Key_Left);
        QTest::keyClick(m_canvas, Qt::Key_Plus);
        QCOMPARE(m_page->keys.size(), 2);
    }

    void thePlainWheelIsLeftToThePage()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        const QImage before = picture();
        turnWheel(m_canvas, QPoint(300, 200), 120, Qt::NoModifier);
        turnWheel(m_canvas, QPoint(300, 200), -120, Qt::ShiftModifier);
        QCOMPARE(m_page->wheelTurns, 2);
        QCOMPARE(picture(), before);
        turnWheel(m_canvas, QPoint(300, 200), 120, Qt::ControlModifier);
        QCOMPARE(m_page->wheelTurns, 2);
        QVERIFY(picture() != before);
    }

    void theWheelZoomsAroundTheBarUnderTheCursor_data()
    {
        QTest::addColumn<int>("x");
        for (const int x : {5, 250, 500, 830})
            QTest::newRow(qPrintable(QString::number(x))) << x;
    }
    void theWheelZoomsAroundTheBarUnderTheCursor()
    {
        QFETCH(int, x);
        m_canvas->showKLine(chartsamples::kLine(2000), KLinePlot::Period::Day);
        QTest::mouseMove(m_canvas, QPoint(x, 200));
        turn();
        int column = crossColumn(picture());
        QVERIFY(qAbs(column - x) <= 8);
        for (const int delta : {120, 120, -120, -120, -120, -240, 120}) {
            turnWheel(m_canvas, QPoint(x, 200), delta, Qt::ControlModifier);
            turn();
            const int now = crossColumn(picture());
            QVERIFY2(qAbs(now - column) <= 1, qPrintable(QString::number(now - column)));
            column = now;
        }
    }

    void halfNotchesAddUp()
    {
        m_canvas->showKLine(chartsamples::kLine(2000), KLinePlot::Period::Day);
        QTest::mouseMove(m_canvas, QPoint(400, 200));
        turn();
        const QImage before = picture();
        turnWheel(m_canvas, QPoint(400, 200), 60, Qt::ControlModifier);
        QCOMPARE(picture(), before);
        turnWheel(m_canvas, QPoint(400, 200), 60, Qt::ControlModifier);
        QVERIFY(picture() != before);
    }

    void theCrosshairSnapsToTheBar()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QSet<int> columns;
        for (int x = 400; x < 424; ++x) {
            QTest::mouseMove(m_canvas, QPoint(x, 200));
            turn();
            columns.insert(crossColumn(picture()));
        }
        // Bars are 8 pixels apart: 24 places of the mouse, three or four of the crosshair.
        QVERIFY(!columns.contains(-1));
        QVERIFY2(columns.size() == 3 || columns.size() == 4,
                 qPrintable(QString::number(columns.size())));
        QList<int> sorted = columns.values();
        std::sort(sorted.begin(), sorted.end());
        QCOMPARE(sorted.at(1) - sorted.at(0), 8);
    }

    void theCrosshairSnapsToAFigureWithinReach()
    {
        QVector<ZvUBBar> bars(100, chartsamples::bar("2019-12-31", 10, 20, 5, 12));
        ZvUBKLine line;
        line.bars = bars;
        m_canvas->showKLine(line, KLinePlot::Period::Day);
        // Prices from 4.25 to 20.75 fill the pane; its top is 24 and its height that of the layout.
        QTest::mouseMove(m_canvas, QPoint(400, 50));
        turn();
        QTest::keyClick(m_canvas, Qt::Key_Right); // the keys put it on the close
        const int close = crossRow(picture());
        QVERIFY(close > 0);
        for (int away = -14; away <= 14; ++away) {
            QTest::mouseMove(m_canvas, QPoint(400, close + away));
            turn();
            const int row = crossRow(picture());
            if (qAbs(away) <= 6)
                QCOMPARE(row, close);
            else
                QCOMPARE(row, close + away);
        }
    }

    void arrowsMoveTheCrosshair()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QCOMPARE(crossColumn(picture()), -1);
        QTest::keyClick(m_canvas, Qt::Key_Left);
        const int last = crossColumn(picture());
        QVERIFY(last > 800);
        QTest::keyClick(m_canvas, Qt::Key_Left);
        QCOMPARE(crossColumn(picture()), last - 8);
        QTest::keyClick(m_canvas, Qt::Key_Right);
        QTest::keyClick(m_canvas, Qt::Key_Right); // no bar beyond the last
        QCOMPARE(crossColumn(picture()), last);
        const int row = crossRow(picture());
        QTest::keyClick(m_canvas, Qt::Key_Up);
        QVERIFY(crossRow(picture()) <= row);
        for (int i = 0; i < 8; ++i)
            QTest::keyClick(m_canvas, Qt::Key_Down);
        QVERIFY(crossRow(picture()) > row);
    }

    void arrowsScrollAtTheEdge()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        for (int i = 0; i < 150; ++i)
            QTest::keyClick(m_canvas, Qt::Key_Left);
        const int column = crossColumn(picture());
        QVERIFY(column >= 0 && column < 8);
    }

    void homeAndEndJump()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        const QImage atEnd = picture();
        QTest::keyClick(m_canvas, Qt::Key_Home);
        QVERIFY(crossColumn(picture()) < 8);
        QTest::keyClick(m_canvas, Qt::Key_End);
        QVERIFY(crossColumn(picture()) > 800);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(m_canvas, &leave);
        QCOMPARE(picture(), atEnd);

        m_canvas->showTimeLine(chartsamples::timeLine(100));
        QTest::keyClick(m_canvas, Qt::Key_End);
        const int end = crossColumn(picture());
        QTest::keyClick(m_canvas, Qt::Key_Home);
        QVERIFY(crossColumn(picture()) < end);
    }

    void theCrosshairGoesWithTheMouse()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        const QImage before = picture();
        QTest::mouseMove(m_canvas, QPoint(300, 200));
        QVERIFY(picture() != before);
        QTest::mouseMove(m_canvas, QPoint(890, 200)); // over the axis
        QCOMPARE(picture(), before);
        QTest::mouseMove(m_canvas, QPoint(300, 200));
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(m_canvas, &leave);
        QCOMPARE(picture(), before);
    }

    void fewerBarsThanBeforeAreNoTrap()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QTest::mouseMove(m_canvas, QPoint(800, 200));
        turn();
        QVERIFY(crossColumn(picture()) > 700);
        m_canvas->showKLine(chartsamples::kLine(10), KLinePlot::Period::Day);
        QVERIFY(crossColumn(picture()) < 80); // on the nearest bar
        QTest::keyClick(m_canvas, Qt::Key_Left);
        m_canvas->showKLine(chartsamples::kLine(2), KLinePlot::Period::Day);
        QVERIFY(crossColumn(picture()) < 16);
        m_canvas->showKLine(ZvUBKLine(), KLinePlot::Period::Day);
        QCOMPARE(crossColumn(picture()), -1);
        m_canvas->showTimeLine(chartsamples::timeLine(200));
        QTest::mouseMove(m_canvas, QPoint(600, 200));
        turn();
        m_canvas->showTimeLine(chartsamples::timeLine(3));
        QVERIFY(crossColumn(picture()) < 100);
    }

    // What the crosshair leaves behind is what stood there.
    void theCrosshairRepaintsOnlyItself_data()
    {
        QTest::addColumn<bool>("isTimeLine");
        QTest::newRow("K line") << false;
        QTest::newRow("time line") << true;
    }
    void theCrosshairRepaintsOnlyItself()
    {
        QFETCH(bool, isTimeLine);
        if (isTimeLine)
            m_canvas->showTimeLine(chartsamples::timeLine(240));
        else
            m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QTest::mouseMove(m_canvas, QPoint(300, 200));
        turn();
        PaintWatch watch(m_canvas);
        for (const QPoint at : {QPoint(301, 260), QPoint(360, 261), QPoint(700, 400),
                                QPoint(500, 500), QPoint(500, 520), QPoint(100, 40)}) {
            QTest::mouseMove(m_canvas, at);
            turn();
            const QRegion painted = watch.take();
            QVERIFY(!painted.isEmpty());
            QVERIFY2(areaOf(painted) < 900 * 600 / 4, qPrintable(QString::number(areaOf(painted))));
            // The window shows what a whole repaint shows.
            const QImage shown = m_page->windowHandle()
                                     ->screen()
                                     ->grabWindow(m_page->winId())
                                     .toImage()
                                     .convertToFormat(QImage::Format_RGB32);
            if (!shown.isNull())
                QCOMPARE(shown, picture());
            watch.take();
        }
        // Up and down on one bar, neither words nor box are painted again.
        QTest::mouseMove(m_canvas, QPoint(101, 100));
        turn();
        watch.take();
        QTest::mouseMove(m_canvas, QPoint(101, 130));
        turn();
        QVERIFY(areaOf(watch.take()) < 2 * (900 + 140 * 20));
    }

    void aNewPriceRepaintsLittle()
    {
        ZvUBKLine line = chartsamples::kLine(500);
        m_canvas->showKLine(line, KLinePlot::Period::Day);
        turn();
        PaintWatch watch(m_canvas);
        line.bars.last().close += 0.01;
        line.bars.last().high = std::max(line.bars.last().high, line.bars.last().close);
        m_canvas->growKLine(line, 499);
        turn();
        const QRegion painted = watch.take();
        QVERIFY(!painted.isEmpty());
        QVERIFY2(areaOf(painted) < 900 * 600 / 6, qPrintable(QString::number(areaOf(painted))));
        const QImage after = picture();
        m_canvas->showKLine(line, KLinePlot::Period::Day);
        QCOMPARE(after, picture());
    }

    void draggingPans()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        const QImage before = picture();
        QTest::mousePress(m_canvas, Qt::LeftButton, Qt::NoModifier, QPoint(300, 200));
        QMouseEvent first(QEvent::MouseMove, QPointF(340, 200), Qt::NoButton, Qt::LeftButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(m_canvas, &first);
        QMouseEvent second(QEvent::MouseMove, QPointF(460, 200), Qt::NoButton, Qt::LeftButton,
                           Qt::NoModifier);
        QCoreApplication::sendEvent(m_canvas, &second);
        QCOMPARE(m_canvas->cursor().shape(), Qt::ClosedHandCursor);
        QTest::mouseRelease(m_canvas, Qt::LeftButton, Qt::NoModifier, QPoint(460, 200));
        QVERIFY(m_canvas->cursor().shape() != Qt::ClosedHandCursor);
        QEvent leave(QEvent::Leave);
        QCoreApplication::sendEvent(m_canvas, &leave);
        const QImage after = picture();
        QVERIFY(after != before);
        // The volumes have moved by 160 pixels, as far as the mouse; their axis may differ.
        QTest::keyClick(m_canvas, Qt::Key_End);
        QCoreApplication::sendEvent(m_canvas, &leave);
        QCOMPARE(picture(), before);
    }

    void aTrembleIsNoDrag()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QTest::mouseMove(m_canvas, QPoint(300, 200));
        const QImage before = picture();
        QTest::mousePress(m_canvas, Qt::LeftButton, Qt::NoModifier, QPoint(300, 200));
        QMouseEvent move(QEvent::MouseMove, QPointF(301, 200), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(m_canvas, &move);
        QTest::mouseRelease(m_canvas, Qt::LeftButton, Qt::NoModifier, QPoint(300, 200));
        QTest::mouseMove(m_canvas, QPoint(300, 200));
        QCOMPARE(picture(), before);
    }

    void earlierBarsAreWantedNearTheEdge()
    {
        m_canvas->showKLine(chartsamples::kLine(1000), KLinePlot::Period::Day);
        QSignalSpy wanted(m_canvas, &ChartCanvas::earlierWanted);
        QTest::keyClick(m_canvas, Qt::Key_Left);
        QCOMPARE(wanted.count(), 0);
        QTest::keyClick(m_canvas, Qt::Key_Home);
        QVERIFY(wanted.count() > 0);

        // The crosshair stays on its bar when they come.
        const ZvUBKLine whole = chartsamples::kLine(1500);
        ZvUBKLine part = whole;
        part.bars = whole.bars.mid(500);
        m_canvas->showKLine(part, KLinePlot::Period::Day);
        QTest::keyClick(m_canvas, Qt::Key_Home);
        const int column = crossColumn(picture());
        m_canvas->prependKLine(whole, 500);
        QCOMPARE(crossColumn(picture()), column);
        wanted.clear();
        QTest::keyClick(m_canvas, Qt::Key_Left);
        QCOMPARE(wanted.count(), 0);
    }

    void studiesAreChosenByClick()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        QList<QPushButton *> tabs = m_canvas->findChildren<QPushButton *>();
        QCOMPARE(tabs.size(), 3);
        const QImage macd = picture();
        QVERIFY(tabs.at(0)->isChecked());
        QTest::mouseClick(tabs.at(1), Qt::LeftButton);
        QVERIFY(tabs.at(1)->isChecked() && !tabs.at(0)->isChecked());
        const QImage kdj = picture();
        QTest::mouseClick(tabs.at(2), Qt::LeftButton);
        QVERIFY(kdj != macd && kdj != picture());
        QTest::mouseClick(tabs.at(2), Qt::LeftButton); // one of them is always chosen
        QVERIFY(tabs.at(2)->isChecked());
        QTest::mouseClick(tabs.at(0), Qt::LeftButton);
        QTest::mouseMove(m_canvas, QPoint(895, 5));
        QCOMPARE(picture(), macd);

        m_canvas->showTimeLine(chartsamples::timeLine(10));
        QVERIFY(!tabs.at(0)->isVisible());
    }

    void noticesStandWhereNothingElseDoes()
    {
        m_canvas->showTimeLine(ZvUBTimeLine());
        const QImage bare = picture();
        m_canvas->setNotice(ChartNotice(ChartNotice::Waiting));
        const QImage waiting = picture();
        m_canvas->setNotice(ChartNotice(ChartNotice::NoData));
        const QImage none = picture();
        QVERIFY(bare != waiting && waiting != none && bare != none);

        m_canvas->showTimeLine(chartsamples::timeLine(50));
        const QImage figures = picture();
        m_canvas->setNotice(ChartNotice(ChartNotice::Waiting));
        QCOMPARE(picture(), figures);
        m_canvas->setNotice(ChartNotice(ChartNotice::Stale, 3000));
        const QImage stale = picture();
        QVERIFY(stale != figures);
        turn();
        PaintWatch watch(m_canvas);
        m_canvas->setNotice(ChartNotice(ChartNotice::Stale, 3400));
        turn();
        QVERIFY(watch.take().isEmpty());
        m_canvas->setNotice(ChartNotice(ChartNotice::Stale, 4000));
        turn();
        QVERIFY(areaOf(watch.take()) <= 900 * 24);
        QVERIFY(picture() != stale);
    }

    // The line of the previous close runs through the middle, where the words stand.
    void wordsInsteadOfFiguresAreNotCrossed_data()
    {
        QTest::addColumn<int>("kind");
        QTest::newRow("no data") << int(ChartNotice::NoData);
        QTest::newRow("waiting") << int(ChartNotice::Waiting);
    }
    void wordsInsteadOfFiguresAreNotCrossed()
    {
        QFETCH(int, kind);
        m_canvas->showTimeLine(chartsamples::timeLine(0));
        const QImage bare = picture();
        const int middle = bare.width() / 2;
        int line = -1;
        for (int y = 0; y < bare.height() && line < 0; ++y) {
            if (bare.pixel(200, y) == crossColour && bare.pixel(middle, y) == crossColour)
                line = y;
        }
        QVERIFY(line > 0);
        m_canvas->setNotice(ChartNotice(static_cast<ChartNotice::Kind>(kind)));
        const QImage told = picture();
        QCOMPARE(told.pixel(200, line), crossColour);
        // The words and a little room on either side.
        for (int y = line - 6; y <= line + 6; ++y)
            QCOMPARE(countOf(told, crossColour, QRect(middle - 30, y, 60, 1)), 0);
        m_canvas->showTimeLine(chartsamples::timeLine(0));
        m_canvas->setNotice(ChartNotice());
        QCOMPARE(picture(), bare);
    }

    void theWheelMayTurnAsFarAsItCan()
    {
        m_canvas->showKLine(chartsamples::kLine(2000), KLinePlot::Period::Day);
        const int most = std::numeric_limits<int>::max();
        for (const int delta : {60, most, -60, -most, 0, most, most, -most}) {
            turnWheel(m_canvas, QPoint(400, 200), delta, Qt::ControlModifier);
            picture();
        }
        turnWheel(m_canvas, QPoint(400, 200), most, Qt::ControlModifier);
        const QImage widest = picture();
        turnWheel(m_canvas, QPoint(400, 200), 120, Qt::ControlModifier);
        QCOMPARE(picture(), widest);
    }

    void nothingMovesNothingIsPainted()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        m_canvas->setNotice(ChartNotice(ChartNotice::None));
        turn();
        PaintWatch watch(m_canvas);
        m_canvas->setNotice(ChartNotice(ChartNotice::None));
        m_canvas->setRedUp(true);
        QTest::qWait(50);
        QVERIFY(watch.take().isEmpty());
    }

    void allSizesAreClean()
    {
        m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        for (const QSize &size : {QSize(0, 0), QSize(1, 1), QSize(30, 500), QSize(500, 30),
                                  QSize(120, 120), QSize(300, 200), QSize(1600, 900)}) {
            m_page->resize(size);
            m_canvas->resize(size);
            QTest::mouseMove(m_canvas, QPoint(size.width() / 2, size.height() / 2));
            for (const Qt::Key key :
                 {Qt::Key_Left, Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Home, Qt::Key_End})
                QTest::keyClick(m_canvas, key);
            turn();
            picture();
            m_canvas->showTimeLine(chartsamples::timeLine(100));
            turn();
            picture();
            m_canvas->showKLine(chartsamples::kLine(500), KLinePlot::Period::Day);
        }
    }

    void aNewBarShiftsOnlyWhereTheLastOneIsSeen()
    {
        const ZvUBKLine line = chartsamples::kLine(501, 2);
        ZvUBKLine before = line;
        before.bars.removeLast();
        m_canvas->showKLine(before, KLinePlot::Period::Day);
        QTest::keyClick(m_canvas, Qt::Key_End);
        const int last = crossColumn(picture());
        m_canvas->growKLine(line, 499);
        QCOMPARE(crossColumn(picture()), last - 8); // the bar has moved, and the crosshair with it

        m_canvas->showKLine(before, KLinePlot::Period::Day);
        QTest::keyClick(m_canvas, Qt::Key_Home);
        const QImage atHome = picture();
        m_canvas->growKLine(line, 499);
        QCOMPARE(picture(), atHome);
    }
};

ZV_TEST(ChartCanvasTest)
#include "test_chartcanvas.moc"
