#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"

#include "support/testregistry.h"

#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>

namespace {

// A dialog that, as several of the client do, replaces showEvent() without calling the base class.
class Page : public BreltFramlessMoveableDialog
{
public:
    explicit Page(QWidget *parent = nullptr) : BreltFramlessMoveableDialog(parent)
    {
        setTitleHeight(50);
        resize(300, 200);
    }

protected:
    void showEvent(QShowEvent *) override { }
};

void drag(QWidget *widget, const QPoint &from, const QPoint &by,
          Qt::MouseButton button = Qt::LeftButton)
{
    QWidget *window = widget->window();
    const QPoint start = widget->mapToGlobal(from);
    QTest::mousePress(widget, button, Qt::NoModifier, from);
    // QTest moves with no button in the event; the real ones carry it.
    for (int step = 1; step <= 4; ++step) {
        const QPoint global = start + by * step / 4;
        QMouseEvent move(QEvent::MouseMove, widget->mapFromGlobal(global),
                         window->mapFromGlobal(global), global, Qt::NoButton, button,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(widget, &move);
    }
    const QPoint global = start + by;
    QMouseEvent release(QEvent::MouseButtonRelease, widget->mapFromGlobal(global), global, button,
                        Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &release);
}

} // namespace

class TestBreltFramlessMoveableDialog : public QObject
{
    Q_OBJECT

private slots:
    void hasNoFrame();
    void bandMovesTheDialog();
    void captionInTheBandMovesItToo();
    void belowTheBandNothingMoves();
    void controlsKeepTheMouse();
    void otherButtonsDoNotDrag();
    void noBandNoDrag();
    void lostReleaseDoesNotStick();
    void hidingEndsTheDrag();
    void draggedOutItStaysReachable();
    void shownOutsideItComesBack();
    void standsInTheMiddleOfItsOwner();
    void standsOnTheScreenBesideAnOwnerAtItsEdge();
    void standsInTheMiddleOfTheScreen();
    void staysWhereItWasPut();
    void escapeRejects();
};

void TestBreltFramlessMoveableDialog::hasNoFrame()
{
    Page page;
    QVERIFY(page.windowFlags() & Qt::FramelessWindowHint);
    QCOMPARE(page.windowType(), Qt::Dialog);
    QWidget owner;
    Page child(&owner);
    QVERIFY(child.isWindow());
    page.setTitleHeight(-5);
    QCOMPARE(page.titleHeight(), 0);
}

void TestBreltFramlessMoveableDialog::bandMovesTheDialog()
{
    Page page;
    page.move(100, 100);
    page.show();
    drag(&page, QPoint(20, 49), QPoint(60, 40));
    QCOMPARE(page.pos(), QPoint(160, 140));
    drag(&page, QPoint(200, 0), QPoint(-30, -20));
    QCOMPARE(page.pos(), QPoint(130, 120));
}

void TestBreltFramlessMoveableDialog::captionInTheBandMovesItToo()
{
    Page page;
    QLabel caption(QStringLiteral("用户登录"), &page);
    caption.setGeometry(10, 10, 120, 30);
    QWidget panel(&page);
    panel.setGeometry(140, 0, 60, 50);
    page.move(100, 100);
    page.show();
    drag(&caption, QPoint(5, 5), QPoint(40, 30));
    QCOMPARE(page.pos(), QPoint(140, 130));
    drag(&panel, QPoint(5, 5), QPoint(10, 10));
    QCOMPARE(page.pos(), QPoint(150, 140));
}

void TestBreltFramlessMoveableDialog::belowTheBandNothingMoves()
{
    Page page;
    QLabel label(QStringLiteral("文字"), &page);
    label.setGeometry(10, 80, 100, 30);
    page.move(100, 100);
    page.show();
    drag(&page, QPoint(20, 50), QPoint(60, 40));
    QCOMPARE(page.pos(), QPoint(100, 100));
    drag(&label, QPoint(5, 5), QPoint(40, -40));
    QCOMPARE(page.pos(), QPoint(100, 100));
}

void TestBreltFramlessMoveableDialog::controlsKeepTheMouse()
{
    Page page;
    QPushButton close(QStringLiteral("关"), &page);
    close.setFocusPolicy(Qt::NoFocus);
    close.setGeometry(250, 5, 40, 40);
    QPushButton disabled(QStringLiteral("停"), &page);
    disabled.setEnabled(false);
    disabled.setGeometry(200, 5, 40, 40);
    QLineEdit field(&page);
    field.setGeometry(20, 5, 80, 40);
    QLineEdit resting(&page); // disabled fields let the mouse through to what is below them
    resting.setEnabled(false);
    resting.setGeometry(110, 5, 80, 40);
    page.move(100, 100);
    page.show();
    QSignalSpy clicked(&close, &QPushButton::clicked);
    drag(&close, QPoint(5, 5), QPoint(60, 40));
    drag(&disabled, QPoint(5, 5), QPoint(60, 40));
    drag(&field, QPoint(5, 5), QPoint(60, 40));
    drag(&resting, QPoint(5, 5), QPoint(60, 40));
    QCOMPARE(page.pos(), QPoint(100, 100));
    QTest::mouseClick(&close, Qt::LeftButton);
    QCOMPARE(clicked.count(), 1);
}

void TestBreltFramlessMoveableDialog::otherButtonsDoNotDrag()
{
    Page page;
    page.move(100, 100);
    page.show();
    drag(&page, QPoint(20, 10), QPoint(60, 40), Qt::RightButton);
    drag(&page, QPoint(20, 10), QPoint(60, 40), Qt::MiddleButton);
    QCOMPARE(page.pos(), QPoint(100, 100));
}

void TestBreltFramlessMoveableDialog::noBandNoDrag()
{
    Page page;
    page.setTitleHeight(0);
    page.move(100, 100);
    page.show();
    drag(&page, QPoint(20, 0), QPoint(60, 40));
    QCOMPARE(page.pos(), QPoint(100, 100));
}

void TestBreltFramlessMoveableDialog::lostReleaseDoesNotStick()
{
    for (const bool tracking : {false, true}) {
        Page page;
        page.setMouseTracking(tracking);
        page.move(100, 100);
        page.show();
        // The release of this press goes to a window that opened meanwhile.
        QMouseEvent press(QEvent::MouseButtonPress, QPoint(20, 10), page.pos() + QPoint(20, 10),
                          Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&page, &press);
        QMouseEvent hover(QEvent::MouseMove, QPoint(80, 60), page.pos() + QPoint(80, 60),
                          Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&page, &hover);
        QCOMPARE(page.pos(), QPoint(100, 100));
        drag(&page, QPoint(20, 120), QPoint(60, 40));
        QCOMPARE(page.pos(), QPoint(100, 100));
    }
}

void TestBreltFramlessMoveableDialog::hidingEndsTheDrag()
{
    Page page;
    page.move(100, 100);
    page.show();
    QTest::mousePress(&page, Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
    page.hide();
    page.show();
    QMouseEvent event(QEvent::MouseMove, QPoint(80, 60), page.pos() + QPoint(80, 60), Qt::NoButton,
                      Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&page, &event);
    QCOMPARE(page.pos(), QPoint(100, 100));
    QTest::mouseRelease(&page, Qt::LeftButton, Qt::NoModifier, QPoint(20, 10));
}

void TestBreltFramlessMoveableDialog::draggedOutItStaysReachable()
{
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    Page page;
    page.move(100, 100);
    page.show();
    for (const QPoint &by : {QPoint(5000, 0), QPoint(-5000, 0), QPoint(0, 5000), QPoint(0, -5000),
                             QPoint(-5000, 5000)}) {
        drag(&page, QPoint(20, 10), by);
        const QRect band(page.pos(), QSize(page.width(), 50));
        const QRect seen = band & area;
        QVERIFY2(seen.width() >= 80 && seen.height() == 50, qPrintable(QString::number(by.x())));
    }
}

void TestBreltFramlessMoveableDialog::shownOutsideItComesBack()
{
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    Page page;
    page.move(area.right() + 500, area.top() - 300);
    page.show();
    const QRect band(page.pos(), QSize(page.width(), 50));
    QVERIFY((band & area).width() >= 80);
    QVERIFY(page.y() >= area.top());
}

void TestBreltFramlessMoveableDialog::standsInTheMiddleOfItsOwner()
{
    QWidget owner;
    owner.setGeometry(120, 90, 500, 400);
    owner.show();
    auto *part = new QWidget(&owner);
    part->setGeometry(300, 200, 100, 100);
    Page page(part);
    page.show();
    QCOMPARE(page.geometry().center(), owner.geometry().center());

    // An owner that has moved meanwhile takes it along to the next show.
    page.hide();
    owner.move(240, 150);
    page.show();
    QCOMPARE(page.geometry().center(), owner.geometry().center());
}

void TestBreltFramlessMoveableDialog::standsOnTheScreenBesideAnOwnerAtItsEdge()
{
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
    QWidget owner;
    owner.resize(60, 60);
    owner.show();
    Page page(&owner);
    const auto standsOver = [&](const QPoint &corner) {
        page.hide();
        owner.move(corner);
        page.show();
        return page.geometry();
    };
    QCOMPARE(standsOver(area.topLeft()).topLeft(), area.topLeft());
    QCOMPARE(standsOver(area.bottomRight() - QPoint(59, 59)).bottomRight(), area.bottomRight());
    page.resize(area.size() + QSize(100, 100));
    QCOMPARE(standsOver(area.center()).topLeft(), area.topLeft());
}

void TestBreltFramlessMoveableDialog::standsInTheMiddleOfTheScreen()
{
    Page page;
    page.show();
    QCOMPARE(page.geometry().center(),
             QGuiApplication::primaryScreen()->availableGeometry().center());
}

void TestBreltFramlessMoveableDialog::staysWhereItWasPut()
{
    QWidget owner;
    owner.setGeometry(120, 90, 500, 400);
    owner.show();
    Page page(&owner);
    page.move(33, 44);
    page.show();
    QCOMPARE(page.pos(), QPoint(33, 44));
    page.hide();
    page.show();
    QCOMPARE(page.pos(), QPoint(33, 44));
}

void TestBreltFramlessMoveableDialog::escapeRejects()
{
    Page page;
    page.show();
    QSignalSpy rejected(&page, &QDialog::rejected);
    QTest::keyClick(&page, Qt::Key_Escape);
    QCOMPARE(rejected.count(), 1);
    QVERIFY(!page.isVisible());
}

ZV_TEST(TestBreltFramlessMoveableDialog)
#include "test_breltframlessmoveabledialog.moc"
