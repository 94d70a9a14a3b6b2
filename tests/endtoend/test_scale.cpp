#include "endtoend/programs.h"
#include "support/testregistry.h"

#include <QImage>
#include <QtTest/QtTest>

namespace {

constexpr QSize windowSize(1760, 900);

} // namespace

// At which scale the program draws itself. Also run on X11, whose server without a screen tells of
// 100 dots per inch.
class ScaleTest : public QObject
{
    Q_OBJECT

private:
    // Takes a picture of the window, at the user's own scale where there is one.
    void takePicture(const char *userScale = nullptr)
    {
        if (userScale)
            qputenv("QT_SCALE_FACTOR", userScale);
        const QString display = qEnvironmentVariable("DISPLAY");
        const endtoend::StateFolder state;
        const QString file = state.file("picture.png");
        endtoend::Exchange exchange;
        QVERIFY(exchange.start(state));
        endtoend::Client client;
        client.start(
            {"--exchange", exchange.address().toString(), "--screenshot", file, "--after", "1"},
            display, display.isEmpty() ? "offscreen" : "xcb");
        QVERIFY2(client.wait() == 0, qPrintable(client.errors()));
        m_size = QImage(file).size();
    }

    QSize m_size; // of the last picture, in pixels

private slots:
    void cleanup() { qunsetenv("QT_SCALE_FACTOR"); }

    void screenWithoutAScaleGivesNone()
    {
        takePicture();
        QCOMPARE(m_size, windowSize);
    }

    void userHasTheScaleThatTheyAskFor()
    {
        takePicture("1.5");
        QCOMPARE(m_size, windowSize * 1.5);
    }
};

ZV_TEST(ScaleTest)
#include "test_scale.moc"
