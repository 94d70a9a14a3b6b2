#include "BreltWidgetToolKit/breltdoublespinbox.h"
#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "BreltWidgetToolKit/breltspinbox.h"
#include "support/testregistry.h"

#include <QApplication>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <QtTest/QtTest>

#include <functional>

namespace {

// A keyboard as an X server tells of it: what it sends goes to the window that has the keys.
class Keyboard
{
public:
    void press(int key) { send(QEvent::KeyPress, key); }
    void release(int key) { send(QEvent::KeyRelease, key); }
    void wait(int milliseconds) { m_time += ulong(milliseconds); }

    void strike(int key, int milliseconds)
    {
        press(key);
        wait(milliseconds);
        release(key);
    }

    // The key goes down and stays there for some repeats, each of which is told as a release and a
    // press at one time.
    void hold(int key, int repeats)
    {
        press(key);
        wait(660);
        for (int i = 0; i < repeats; ++i) {
            release(key);
            press(key);
            wait(40);
        }
    }

private:
    void send(QEvent::Type type, int key)
    {
        QKeyEvent event(type, key, Qt::NoModifier, QStringLiteral("\r"));
        event.setTimestamp(m_time);
        QCoreApplication::sendEvent(QApplication::activeWindow()->windowHandle(), &event);
    }

    ulong m_time = 54045079;
};

struct Form {
    explicit Form(QAbstractSpinBox *field)
    {
        auto *rows = new QVBoxLayout(&window);
        rows->addWidget(field);
        button = new QPushButton(QStringLiteral("撤单"), &window);
        rows->addWidget(button);
        window.show();
        window.activateWindow();
        field->setFocus();
    }

    QWidget window;
    QPushButton *button;
};

// Counts what is told as the end of a press.
struct Releases : QObject {
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::KeyRelease && !static_cast<QKeyEvent *>(event)->isAutoRepeat())
            ++seen;
        return false;
    }

    int seen = 0;
};

} // namespace

class TestBreltHeldKeys : public QObject
{
    Q_OBJECT

private slots:
    void heldReturnIsOneReturn();
    void heldReturnLeavesTheBoxThatItOpens();
    void heldSpacePressesOnce();
    void heldKeyIsReleasedOnce();
    void releaseGoesBeforeTheNextKey();
    void strikesCountEach_data();
    void strikesCountEach();
    void anotherKeyMeanwhileCounts();
};

void TestBreltHeldKeys::heldReturnIsOneReturn()
{
    auto *price = new BreltDoubleSpinBox;
    Form form(price);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    QSignalSpy returns(price, &BreltDoubleSpinBox::signal_returnClicked);
    Keyboard keyboard;
    keyboard.hold(Qt::Key_Return, 50);
    keyboard.release(Qt::Key_Return);
    QCOMPARE(returns.count(), 1);

    keyboard.wait(60);
    keyboard.strike(Qt::Key_Return, 80);
    QCOMPARE(returns.count(), 2);
}

// The order box opens with the press, and the repeats go to it.
void TestBreltHeldKeys::heldReturnLeavesTheBoxThatItOpens()
{
    auto *count = new BreltSpinBox;
    Form form(count);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    Keyboard keyboard;
    int asked = 0;
    int confirmed = 0;
    connect(count, &BreltSpinBox::signal_returnClicked, &form.window, [&] {
        ++asked;
        BreltFramlessMessageBox box(QStringLiteral("买入？"), QStringLiteral("确认"),
                                    QStringLiteral("取消"), QStringLiteral("买前信息确认"), 40,
                                    nullptr);
        QTimer::singleShot(0, &box, [&] {
            QVERIFY(QTest::qWaitForWindowActive(&box));
            keyboard.wait(660);
            for (int i = 0; i < 50 && box.isVisible(); ++i) {
                keyboard.release(Qt::Key_Return);
                keyboard.press(Qt::Key_Return);
                keyboard.wait(40);
            }
            box.reject();
        });
        confirmed += box.exec();
    });
    keyboard.press(Qt::Key_Return);
    QCOMPARE(asked, 1);
    QCOMPARE(confirmed, 0);
}

void TestBreltHeldKeys::heldSpacePressesOnce()
{
    Form form(new BreltSpinBox);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    form.button->setFocus();
    QSignalSpy clicks(form.button, &QPushButton::clicked);
    Keyboard keyboard;
    keyboard.hold(Qt::Key_Space, 50);
    QCOMPARE(clicks.count(), 0);
    keyboard.release(Qt::Key_Space);
    QTRY_COMPARE(clicks.count(), 1);
}

// A table goes to the row at the end of the way, and a field turns by one step for each repeat.
void TestBreltHeldKeys::heldKeyIsReleasedOnce()
{
    auto *count = new BreltSpinBox;
    Form form(count);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    Releases releases;
    count->installEventFilter(&releases);
    Keyboard keyboard;
    keyboard.hold(Qt::Key_Down, 20);
    QCOMPARE(releases.seen, 0);
    keyboard.release(Qt::Key_Down);
    QTRY_COMPARE(releases.seen, 1);
}

void TestBreltHeldKeys::releaseGoesBeforeTheNextKey()
{
    auto *count = new BreltSpinBox;
    Form form(count);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    Releases releases;
    count->installEventFilter(&releases);
    Keyboard keyboard;
    keyboard.strike(Qt::Key_Down, 300);
    keyboard.wait(2);
    keyboard.press(Qt::Key_Up);
    QCOMPARE(releases.seen, 1);
    QCOMPARE(count->value(), 1);
}

void TestBreltHeldKeys::strikesCountEach_data()
{
    QTest::addColumn<int>("down");
    QTest::addColumn<int>("between");
    QTest::newRow("by hand") << 80 << 120;
    QTest::newRow("in haste") << 40 << 20;
    QTest::newRow("pressed for long") << 3000 << 30;
    QTest::newRow("by a program") << 0 << 0;
    QTest::newRow("by a scanner") << 10 << 0;
}

void TestBreltHeldKeys::strikesCountEach()
{
    QFETCH(int, down);
    QFETCH(int, between);
    auto *count = new BreltSpinBox;
    Form form(count);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    QSignalSpy returns(count, &BreltSpinBox::signal_returnClicked);
    Keyboard keyboard;
    for (int i = 0; i < 5; ++i) {
        keyboard.strike(Qt::Key_Enter, down);
        keyboard.wait(between);
    }
    QCOMPARE(returns.count(), 5);
}

// A key that goes down while another one is held is a press of its own.
void TestBreltHeldKeys::anotherKeyMeanwhileCounts()
{
    auto *count = new BreltSpinBox;
    Form form(count);
    QVERIFY(QTest::qWaitForWindowActive(&form.window));
    QSignalSpy returns(count, &BreltSpinBox::signal_returnClicked);
    Keyboard keyboard;
    keyboard.hold(Qt::Key_Up, 5);
    keyboard.release(Qt::Key_Up);
    keyboard.press(Qt::Key_Return);
    QCOMPARE(returns.count(), 1);
}

ZV_TEST(TestBreltHeldKeys)
#include "test_breltheldkeys.moc"
