#include "client/windowframe.h"

#include "client/windowedge.h"
#include "support/testregistry.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>
#include <QtTest/QtTest>

Q_DECLARE_METATYPE(QMargins)

namespace {

constexpr QRect first(150, 120, 420, 320);
constexpr QSize least(240, 160);

} // namespace

// A window without a frame, moved and drawn by the mouse. The events go in where the platform's do.
class WindowFrameTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    QWidget *m_titleBar = nullptr;
    QLabel *m_title = nullptr;
    QPushButton *m_titleButton = nullptr;
    QPushButton *m_body = nullptr; // fills the rest
    WindowFrame *m_frame = nullptr;

    QWindow *handle() const { return m_window->windowHandle(); }
    QPoint global(const QWidget *widget, const QPoint &place) const
    {
        return widget->mapToGlobal(place);
    }

    void press(const QPoint &place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mousePress(handle(), button, Qt::NoModifier, handle()->mapFromGlobal(place));
    }
    void moveTo(const QPoint &place) const
    {
        QTest::mouseMove(handle(), handle()->mapFromGlobal(place));
    }
    void release(const QPoint &place, Qt::MouseButton button = Qt::LeftButton) const
    {
        QTest::mouseRelease(handle(), button, Qt::NoModifier, handle()->mapFromGlobal(place));
    }
    void drag(const QPoint &from, const QPoint &by, Qt::MouseButton button = Qt::LeftButton) const
    {
        press(from, button);
        for (int step = 1; step <= 4; ++step)
            moveTo(from + by * step / 4);
        release(from + by, button);
    }

    QList<WindowEdge *> edges() const { return m_window->findChildren<WindowEdge *>(); }

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_titleBar = new QWidget;
        m_titleBar->setFixedHeight(35);
        m_title = new QLabel(QStringLiteral("Title"));
        m_titleButton = new QPushButton(QStringLiteral("x"));
        auto *row = new QHBoxLayout(m_titleBar);
        row->setContentsMargins(0, 0, 0, 0);
        row->addWidget(m_title, 1);
        row->addSpacing(100);
        row->addWidget(m_titleButton);
        m_body = new QPushButton;
        m_body->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        m_body->setMinimumSize(least
                               - QSize(2 * WindowEdge::thickness, 2 * WindowEdge::thickness + 35));
        auto *column = new QVBoxLayout(m_window.get());
        column->setSpacing(0);
        column->addWidget(m_titleBar);
        column->addWidget(m_body);
        m_frame = new WindowFrame(m_window.get(), m_titleBar);
        m_window->setGeometry(first);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        QTRY_COMPARE(m_window->geometry(), first);
    }

    void cleanup() { m_window.reset(); }

    void theFrameIsTheWindowsOwn()
    {
        QVERIFY(m_window->windowFlags() & Qt::FramelessWindowHint);
        QCOMPARE(edges().size(), 4);
        QRegion margin(m_window->rect());
        for (const WindowEdge *edge : edges()) {
            QVERIFY(edge->isVisible());
            margin -= edge->geometry();
        }
        // The four of them are all that the content leaves.
        QCOMPARE(margin.boundingRect(), m_titleBar->geometry() | m_body->geometry());
        QCOMPARE(m_window->minimumSize(), least);
    }

    void theTitleBarMovesTheWindow_data()
    {
        QTest::addColumn<bool>("isLabel");
        QTest::newRow("free space") << false;
        QTest::newRow("title") << true;
    }
    void theTitleBarMovesTheWindow()
    {
        QFETCH(bool, isLabel);
        const QPoint free = m_title->geometry().topRight() + QPoint(50, 10);
        const QPoint from
            = isLabel ? global(m_title, m_title->rect().center()) : global(m_titleBar, free);
        drag(from, QPoint(40, 60));
        QCOMPARE(m_window->geometry(), first.translated(40, 60));
        // The next one begins where this one ended.
        drag(from + QPoint(40, 60), QPoint(-10, 5));
        QCOMPARE(m_window->geometry(), first.translated(30, 65));
    }

    void onlyTheLeftButtonMovesIt()
    {
        drag(global(m_title, QPoint(9, 9)), QPoint(40, 60), Qt::RightButton);
        QCOMPARE(m_window->geometry(), first);
    }

    void aHandThatShakesMovesNothing()
    {
        const QPoint from = global(m_title, QPoint(9, 9));
        drag(from, QPoint(QApplication::startDragDistance() - 1, 0));
        QCOMPARE(m_window->geometry(), first);
    }

    void buttonsOfTheTitleBarKeepTheMouse()
    {
        QSignalSpy clicked(m_titleButton, &QPushButton::clicked);
        const QPoint from = global(m_titleButton, m_titleButton->rect().center());
        drag(from, QPoint(40, 60));
        QCOMPARE(m_window->geometry(), first);
        drag(from, QPoint(2, 2));
        QCOMPARE(clicked.count(), 1);
    }

    void belowTheTitleBarNothingMovesIt()
    {
        drag(global(m_body, m_body->rect().center()), QPoint(40, 60));
        QCOMPARE(m_window->geometry(), first);
    }

    void aReleaseThatWentElsewhereEndsTheMove()
    {
        const QPoint from = global(m_title, QPoint(9, 9));
        press(from);
        moveTo(from + QPoint(30, 30));
        QCOMPARE(m_window->geometry(), first.translated(30, 30));
        QMouseEvent move(QEvent::MouseMove, QPointF(9, 9), QPointF(9, 9), QPointF(0, 0),
                         Qt::NoButton, Qt::RightButton, Qt::NoModifier);
        QApplication::sendEvent(m_titleBar, &move);
        QCOMPARE(m_window->geometry(), first.translated(30, 30));
        moveTo(from + QPoint(80, 80));
        QCOMPARE(m_window->geometry(), first.translated(30, 30));
        release(from);
    }

    void draggedOutItCanStillBeCaught()
    {
        const QRect area = m_window->screen()->availableGeometry();
        const QPoint from = global(m_title, QPoint(9, 9));
        drag(from, QPoint(-2000, -2000));
        QVERIFY(m_window->geometry().right() >= area.left() + 100);
        QCOMPARE(m_window->y(), area.top());
    }

    void theEdgesDrawIt_data()
    {
        QTest::addColumn<QPoint>("grip"); // in halves of the window
        QTest::addColumn<QMargins>("grows");
        QTest::newRow("left") << QPoint(0, 1) << QMargins(-20, 0, 0, 0);
        QTest::newRow("right") << QPoint(2, 1) << QMargins(0, 0, 20, 0);
        QTest::newRow("top") << QPoint(1, 0) << QMargins(0, -30, 0, 0);
        QTest::newRow("bottom") << QPoint(1, 2) << QMargins(0, 0, 0, 30);
        QTest::newRow("top left") << QPoint(0, 0) << QMargins(-20, -30, 0, 0);
        QTest::newRow("top right") << QPoint(2, 0) << QMargins(0, -30, 20, 0);
        QTest::newRow("bottom left") << QPoint(0, 2) << QMargins(-20, 0, 0, 30);
        QTest::newRow("bottom right") << QPoint(2, 2) << QMargins(0, 0, 20, 30);
    }
    void theEdgesDrawIt()
    {
        QFETCH(QPoint, grip);
        QFETCH(QMargins, grows);
        // QtTest takes the very first pixel for no place at all.
        const QPoint place(qMax(1, grip.x() * (first.width() - 1) / 2),
                           qMax(1, grip.y() * (first.height() - 1) / 2));
        drag(first.topLeft() + place, QPoint(20, 30));
        QCOMPARE(m_window->geometry(), first.marginsAdded(grows));
        // And no further once the mouse is up.
        moveTo(first.center());
        QCOMPARE(m_window->geometry(), first.marginsAdded(grows));
    }

    void cornersReachAlongTheEdges()
    {
        const QPoint nearCorner(WindowEdge::cornerLength - 1, 0);
        drag(first.topLeft() + nearCorner, QPoint(-20, -30));
        QCOMPARE(m_window->geometry(), first.marginsAdded(QMargins(20, 30, 0, 0)));
    }

    void drawnSmallerItKeepsItsLeastSizeAndTheEdgeAcross()
    {
        drag(first.topLeft() + QPoint(1, 1), QPoint(600, 600));
        QCOMPARE(m_window->size(), least);
        QCOMPARE(m_window->geometry().bottomRight(), first.bottomRight());
        drag(m_window->geometry().bottomRight(), QPoint(-400, -400));
        QCOMPARE(m_window->size(), least);
    }

    void edgesShowWhatTheyDo()
    {
        const auto shapeAt = [this](const QPoint &place) {
            moveTo(first.topLeft() + place);
            const QWidget *under = m_window->childAt(place);
            return under->cursor().shape();
        };
        const int right = first.width() - 1;
        const int bottom = first.height() - 1;
        QCOMPARE(shapeAt(QPoint(0, bottom / 2)), Qt::SizeHorCursor);
        QCOMPARE(shapeAt(QPoint(right, bottom / 2)), Qt::SizeHorCursor);
        QCOMPARE(shapeAt(QPoint(right / 2, 0)), Qt::SizeVerCursor);
        QCOMPARE(shapeAt(QPoint(right / 2, bottom)), Qt::SizeVerCursor);
        QCOMPARE(shapeAt(QPoint(1, 1)), Qt::SizeFDiagCursor);
        QCOMPARE(shapeAt(QPoint(right, bottom)), Qt::SizeFDiagCursor);
        QCOMPARE(shapeAt(QPoint(right, 0)), Qt::SizeBDiagCursor);
        QCOMPARE(shapeAt(QPoint(0, bottom)), Qt::SizeBDiagCursor);
        QCOMPARE(shapeAt(QPoint(right / 2, bottom / 2)), Qt::ArrowCursor);
    }

    // What lies at the very rim of the content is still the content's.
    void edgesLeaveTheControlsTheirClicks()
    {
        QSignalSpy clicked(m_body, &QPushButton::clicked);
        const QRect body = m_body->rect();
        const QList<QPoint> rim{QPoint(0, body.center().y()), QPoint(body.right(), 9),
                                QPoint(body.center().x(), body.bottom()), body.bottomRight(),
                                body.bottomLeft()};
        for (const QPoint &place : rim)
            drag(global(m_body, place), QPoint());
        QCOMPARE(clicked.count(), rim.size());
        QCOMPARE(m_window->geometry(), first);
    }

    void fillsItsScreenAndComesBack()
    {
        const QRect area = m_window->screen()->availableGeometry();
        m_frame->toggleMaximized();
        QVERIFY(m_frame->isMaximized());
        QTRY_COMPARE(m_window->geometry(), area);
        // Without an edge to be drawn by, to the last pixel.
        for (const WindowEdge *edge : edges())
            QVERIFY(!edge->isVisible());
        QTRY_COMPARE(m_titleBar->geometry(), QRect(0, 0, area.width(), 35));
        QCOMPARE(m_frame->normalGeometry(), first);
        m_frame->maximize();
        QCOMPARE(m_frame->normalGeometry(), first);

        m_frame->toggleMaximized();
        QVERIFY(!m_frame->isMaximized());
        QTRY_COMPARE(m_window->geometry(), first);
        for (const WindowEdge *edge : edges())
            QVERIFY(edge->isVisible());
        QCOMPARE(m_titleBar->x(), WindowEdge::thickness);
    }

    void draggedOffTheScreenItComesUnderThePointer()
    {
        const QRect area = m_window->screen()->availableGeometry();
        m_frame->maximize();
        QTRY_COMPARE(m_window->geometry(), area);
        const QPoint from = area.topLeft() + QPoint(area.width() / 4, 15);
        drag(from, QPoint(100, 200));
        QVERIFY(!m_frame->isMaximized());
        QTRY_COMPARE(m_window->size(), first.size());
        const QPoint grip = from + QPoint(100, 200) - m_window->pos();
        QVERIFY2(qAbs(grip.x() - first.width() / 4) <= 1, qPrintable(QString::number(grip.x())));
        QCOMPARE(grip.y(), 15);
    }

    void maximizedBeforeItIsShown()
    {
        m_window->hide();
        m_frame->maximize();
        m_window->show();
        QVERIFY(m_window->isMaximized());
        QTRY_COMPARE(m_window->geometry(), m_window->screen()->availableGeometry());
        QCOMPARE(m_frame->normalGeometry(), first);
    }

    void minimizes()
    {
        m_frame->minimize();
        QVERIFY(m_window->isMinimized());
        m_window->showNormal();
        QTRY_COMPARE(m_window->geometry(), first);
    }

    void theKeysComeBackFromADialog()
    {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QDialog dialog;
        dialog.setModal(true);
        dialog.show();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        dialog.accept();
        QTRY_VERIFY(m_window->isActiveWindow());
    }

    // The box that tells of a success ends, and the dialog below it with it.
    void theKeysComeBackFromADialogUnderABox()
    {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QDialog dialog;
        dialog.setModal(true);
        dialog.show();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        auto box = std::make_unique<QDialog>();
        box->setModal(true);
        box->show();
        box->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(box.get()));
        box.reset();
        dialog.accept();
        QTRY_VERIFY(m_window->isActiveWindow());
    }

    void aWindowThatIsHiddenInADragIsNotDraggedOn()
    {
        const QPoint from = global(m_title, QPoint(9, 9));
        press(from);
        moveTo(from + QPoint(30, 30));
        m_window->hide();
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        const QRect place = m_window->geometry();
        moveTo(from + QPoint(90, 90));
        QCOMPARE(m_window->geometry(), place);
        release(from + QPoint(90, 90));
    }
};

ZV_TEST(WindowFrameTest)
#include "test_windowframe.moc"
