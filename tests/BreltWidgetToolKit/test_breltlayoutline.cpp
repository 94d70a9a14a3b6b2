#include "BreltWidgetToolKit/breltlayoutline.h"

#include "support/testregistry.h"

#include <QHBoxLayout>
#include <QImage>
#include <QVBoxLayout>

class TestBreltLayoutLine : public QObject
{
    Q_OBJECT

private slots:
    void verticalLineFillsTheHeight();
    void horizontalLineFillsTheWidth();
    void textThatIsNoColourChangesNothing();
    void otherShapesAreDrawnInTheColour();
};

void TestBreltLayoutLine::verticalLineFillsTheHeight()
{
    QWidget bar;
    auto *items = new QHBoxLayout(&bar);
    items->setContentsMargins(0, 0, 0, 0);
    items->addSpacing(10);
    auto *line = new BreltLayoutLine(QFrame::VLine, &bar);
    line->setColor(QStringLiteral("#ff0000"));
    items->addWidget(line);
    items->addStretch();
    bar.resize(60, 37);
    QCOMPARE(line->frameShape(), QFrame::VLine);

    const QImage picture = bar.grab().toImage();
    QCOMPARE(line->size(), QSize(1, 37));
    for (int y = 0; y < 37; ++y)
        QCOMPARE(picture.pixelColor(line->x(), y), QColor(255, 0, 0));
    QVERIFY(picture.pixelColor(line->x() - 1, 18) != QColor(255, 0, 0));
    QVERIFY(picture.pixelColor(line->x() + 1, 18) != QColor(255, 0, 0));
}

void TestBreltLayoutLine::horizontalLineFillsTheWidth()
{
    QWidget page;
    auto *items = new QVBoxLayout(&page);
    items->setContentsMargins(0, 0, 0, 0);
    auto *line = new BreltLayoutLine(QFrame::HLine, &page);
    items->addWidget(line);
    page.resize(120, 40);

    const QImage picture = page.grab().toImage();
    QCOMPARE(line->size(), QSize(120, 1));
    for (int x = 0; x < 120; ++x)
        QCOMPARE(picture.pixelColor(x, line->y()), QColor(0x24, 0x29, 0x31));
}

void TestBreltLayoutLine::textThatIsNoColourChangesNothing()
{
    BreltLayoutLine line(QFrame::VLine, nullptr);
    line.setColor(QStringLiteral("#123456"));
    line.setColor(QString());
    QCOMPARE(line.color(), QColor(0x12, 0x34, 0x56));
    line.setColor(QStringLiteral("#12345"));
    QCOMPARE(line.color(), QColor(0x12, 0x34, 0x56));
}

void TestBreltLayoutLine::otherShapesAreDrawnInTheColour()
{
    BreltLayoutLine box(QFrame::Box, nullptr);
    box.setColor(QStringLiteral("#00ff00"));
    box.resize(20, 20);
    QCOMPARE(box.grab().toImage().pixelColor(0, 10), QColor(0, 255, 0));
}

ZV_TEST(TestBreltLayoutLine)
#include "test_breltlayoutline.moc"
