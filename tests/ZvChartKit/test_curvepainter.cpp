#include "ZvChartKit/curvepainter.h"
#include "ZvChartKit/plotbench.h"
#include "ZvChartKit/valueaxis.h"
#include "support/testregistry.h"

#include <cmath>

using namespace zvplot;

namespace {

constexpr QRgb ground = 0xff16181c;
constexpr QRgb ink = 0xffffffff;

std::vector<CurvePoint> pointsOf(std::initializer_list<std::pair<int, double>> values)
{
    std::vector<CurvePoint> points;
    for (const auto &value : values) {
        points.emplace_back(value.first);
        points.back().take(value.second);
    }
    return points;
}

QImage drawn(const std::vector<CurvePoint> &points, int thickness = 1)
{
    QImage image(100, 100, QImage::Format_RGB32);
    image.fill(ground);
    const ValueAxis axis(0, 100, 0, 100);
    CurvePainter painter(Pixels(&image, image.rect()), axis, 0, thickness);
    painter.draw(points, 0, int(points.size()), ink);
    return image;
}

} // namespace

class CurvePainterTest : public QObject
{
    Q_OBJECT

private slots:
    void aLevelLineIsSharp_data()
    {
        QTest::addColumn<int>("thickness");
        QTest::newRow("1") << 1;
        QTest::newRow("2") << 2;
        QTest::newRow("3") << 3;
    }
    void aLevelLineIsSharp()
    {
        QFETCH(int, thickness);
        for (const double value : {40.0, 40.3, 40.5, 40.77}) {
            const QImage image = drawn(pointsOf({{10, value}, {60, value}}), thickness);
            for (int x = 12; x < 60; ++x) {
                int touched = 0;
                for (int y = 0; y < 100; ++y) {
                    const QRgb pixel = image.pixel(x, y);
                    QVERIFY(pixel == ink || pixel == ground);
                    touched += pixel == ink ? 1 : 0;
                }
                QCOMPARE(touched, thickness);
            }
        }
    }

    void aSlopeIsSmoothAndWithoutGaps()
    {
        const QImage image = drawn(pointsOf({{10, 10}, {20, 90}}));
        for (int y = 12; y < 88; ++y) {
            int light = 0;
            for (int x = 10; x <= 20; ++x)
                light += qRed(image.pixel(x, y)) - qRed(ground);
            QVERIFY2(light > 60, qPrintable(QString::number(y)));
        }
        QVERIFY(image.pixel(5, 95) == ground);
        QVERIFY(image.pixel(25, 5) == ground);
    }

    void gapsStayGaps()
    {
        std::vector<CurvePoint> points = pointsOf({{10, 50}, {20, 50}, {30, 50}});
        points[1] = CurvePoint(20);
        const QImage image = drawn(points);
        for (int x = 11; x < 30; ++x) {
            for (int y = 0; y < 100; ++y)
                QCOMPARE(image.pixel(x, y), ground);
        }
        QVERIFY(image.pixel(10, 50) == ink || image.pixel(10, 49) == ink);
    }

    void aColumnGoesAsFarAsItsValues()
    {
        std::vector<CurvePoint> points = pointsOf({{10, 50}});
        points[0].take(80.5);
        points[0].take(20.5);
        const QImage image = drawn(points);
        const RowSpan rows = rowsOf(image, 10, ink, image.rect());
        QCOMPARE(rows.first, 19);
        QCOMPARE(rows.last, 79);
    }

    void drawnInPiecesItIsTheSame()
    {
        std::vector<CurvePoint> points;
        for (int i = 0; i < 30; ++i) {
            points.emplace_back(3 * i);
            points.back().take(50 + 40 * std::sin(i));
        }
        QImage image(100, 100, QImage::Format_RGB32);
        image.fill(ground);
        const ValueAxis axis(0, 100, 0, 100);
        CurvePainter painter(Pixels(&image, image.rect()), axis, 0, 1);
        painter.draw(points, 0, 29, ink);
        painter.draw(points, 29, 30, ink);
        QCOMPARE(image, drawn(points));
    }

    void whatIsOutsideIsCutOff()
    {
        QImage image(100, 100, QImage::Format_RGB32);
        image.fill(ground);
        const ValueAxis axis(0, 1, 20, 80);
        CurvePainter painter(Pixels(&image, QRect(10, 20, 50, 60)), axis, 0, 1);
        painter.fillDownTo(200);
        painter.draw(pointsOf({{-30, -5}, {5, 1e30}, {40, -1e30}, {300, 4}}), 0, 4, ink);
        QVERIFY(image.pixel(9, 50) == ground);
        for (int x = 0; x < 100; ++x) {
            QCOMPARE(image.pixel(x, 19), ground);
            QCOMPARE(image.pixel(x, 80), ground);
        }
    }

    void rectanglesInsideOutAreEmpty()
    {
        QImage image(20, 20, QImage::Format_RGB32);
        image.fill(ground);
        Pixels pixels(&image, image.rect());
        pixels.fill(QRect(5, 5, 4, -1), ink);
        pixels.fill(QRect(5, 5, -3, 6), ink);
        pixels.fill(QRect(), ink);
        QCOMPARE(countOf(image, ink), 0);
        pixels.fill(QRect(-5, -5, 7, 7), ink);
        QCOMPARE(countOf(image, ink), 4);
    }
};

ZV_TEST(CurvePainterTest)
#include "test_curvepainter.moc"
