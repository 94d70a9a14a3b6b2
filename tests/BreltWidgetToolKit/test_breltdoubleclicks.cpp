#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "support/testregistry.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QWindow>
#include <QtTest/QtTest>

#include <memory>

namespace {

constexpr int halfOfADoubleClick = 80; // milliseconds
constexpr int longAfter = 3000;

// A mouse as a window system tells of it: what it sends goes to the window below it.
class Mouse
{
public:
    void click(QWidget *target, QPoint offset = QPoint())
    {
        const QPoint place = target->mapToGlobal(target->rect().center()) + offset;
        send(target->window(), QEvent::MouseButtonPress, place, Qt::LeftButton);
        send(target->window(), QEvent::MouseMove, place, Qt::LeftButton);
        send(target->window(), QEvent::MouseButtonRelease, place, Qt::NoButton);
    }

    // The second half of a double click is told as a press and a double click.
    void clickAgain(QWidget *target, QPoint offset = QPoint())
    {
        const QPoint place = target->mapToGlobal(target->rect().center()) + offset;
        send(target->window(), QEvent::MouseButtonPress, place, Qt::LeftButton);
        send(target->window(), QEvent::MouseButtonDblClick, place, Qt::LeftButton);
        send(target->window(), QEvent::MouseButtonRelease, place, Qt::NoButton);
    }

    void wait(int milliseconds) { m_time += ulong(milliseconds); }

private:
    void send(const QWidget *window, QEvent::Type type, const QPoint &place,
              Qt::MouseButtons buttons)
    {
        QWindow *handle = window->windowHandle();
        const QPointF local = handle->mapFromGlobal(place);
        const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, local, local, place, button, buttons, Qt::NoModifier);
        event.setTimestamp(m_time);
        QCoreApplication::sendEvent(handle, &event);
    }

    ulong m_time = 54045079;
};

struct Window : QWidget {
    Window()
    {
        resize(900, 700);
        button = new QPushButton(QStringLiteral("撤单"), this);
        button->setGeometry(rect());
        show();
    }

    QPushButton *button;
};

BreltFramlessMessageBox *makeBox()
{
    return new BreltFramlessMessageBox(QStringLiteral("确认撤掉全部？"), QStringLiteral("确认"),
                                       QStringLiteral("取消"), QStringLiteral("撤单前信息确认"), 40,
                                       nullptr);
}

QPushButton *confirmOf(const QDialog *box)
{
    return box->findChild<QPushButton *>();
}

} // namespace

class TestBreltDoubleClicks : public QObject
{
    Q_OBJECT

private slots:
    void doubleClickThatClosesABoxEndsThere();
    void doubleClickThatOpensABoxDoesNotAnswerIt();
    void clickInTheWindowCounts_data();
    void clickInTheWindowCounts();
    void doubleClickInOneWindowIsTwoClicks();
};

void TestBreltDoubleClicks::doubleClickThatClosesABoxEndsThere()
{
    Window window;
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicks(window.button, &QPushButton::clicked);
    Mouse mouse;
    const std::unique_ptr<QDialog> box(makeBox());
    box->show();
    box->move(window.pos() + QPoint(100, 100));
    const QPoint place = confirmOf(box.get())->mapToGlobal(confirmOf(box.get())->rect().center());
    const QPoint offset = place - window.button->mapToGlobal(window.button->rect().center());
    QVERIFY(window.geometry().contains(place));

    mouse.click(confirmOf(box.get()));
    QVERIFY(!box->isVisible());
    mouse.wait(halfOfADoubleClick);
    mouse.clickAgain(window.button, offset);
    QCOMPARE(clicks.count(), 0);

    mouse.wait(longAfter);
    mouse.click(window.button, offset);
    QCOMPARE(clicks.count(), 1);
}

void TestBreltDoubleClicks::doubleClickThatOpensABoxDoesNotAnswerIt()
{
    Window window;
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    Mouse mouse;
    const std::unique_ptr<QDialog> box(makeBox());
    connect(window.button, &QPushButton::clicked, box.get(), &QWidget::show);
    mouse.click(window.button);
    QVERIFY(box->isVisible());
    box->move(box->pos() + window.button->mapToGlobal(window.button->rect().center())
              - confirmOf(box.get())->mapToGlobal(confirmOf(box.get())->rect().center()));
    mouse.wait(halfOfADoubleClick);
    mouse.clickAgain(confirmOf(box.get()));
    QVERIFY(box->isVisible());

    mouse.wait(longAfter);
    mouse.click(confirmOf(box.get()));
    QVERIFY(!box->isVisible());
    QCOMPARE(box->result(), int(QDialog::Accepted));
}

void TestBreltDoubleClicks::clickInTheWindowCounts_data()
{
    QTest::addColumn<int>("after");
    QTest::addColumn<QPoint>("offset");
    QTest::newRow("somewhere else") << halfOfADoubleClick << QPoint(80, 40);
    QTest::newRow("later") << longAfter << QPoint();
}

void TestBreltDoubleClicks::clickInTheWindowCounts()
{
    QFETCH(int, after);
    QFETCH(QPoint, offset);
    Window window;
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicks(window.button, &QPushButton::clicked);
    Mouse mouse;
    const std::unique_ptr<QDialog> box(makeBox());
    box->show();
    box->move(window.pos() + QPoint(100, 100));
    const QPoint place = confirmOf(box.get())->mapToGlobal(confirmOf(box.get())->rect().center());
    mouse.click(confirmOf(box.get()));
    mouse.wait(after);
    mouse.click(window.button,
                place + offset - window.button->mapToGlobal(window.button->rect().center()));
    QCOMPARE(clicks.count(), 1);
}

void TestBreltDoubleClicks::doubleClickInOneWindowIsTwoClicks()
{
    Window window;
    const std::unique_ptr<QDialog> box(makeBox());
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QSignalSpy clicks(window.button, &QPushButton::clicked);
    Mouse mouse;
    mouse.click(window.button);
    mouse.wait(halfOfADoubleClick);
    mouse.click(window.button);
    QCOMPARE(clicks.count(), 2);
}

ZV_TEST(TestBreltDoubleClicks)
#include "test_breltdoubleclicks.moc"
