#include "chromebench.h"

#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QtTest/QtTest>

namespace zvtest {
namespace {

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

ChromeBench::ChromeBench(int platform, int width)
{
    ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(
        ZvServerConfig::Platform(platform));
    ZvServerCache::getZvServerCacheInstance()->messageList.clear();
    titleBar = std::make_unique<TitleBar>(nullptr);
    statusBar = std::make_unique<StatusBar>(nullptr);
    // A window of a host has a sheet of its own.
    setObjectName(QStringLiteral("window"));
    setStyleSheet(QStringLiteral("QWidget#window{background-color:rgb(21,21,21);}"));
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(titleBar.get());
    column->addStretch(1);
    column->addWidget(statusBar.get());
    resize(width, 120);
    show();
    if (!QTest::qWaitForWindowActive(this))
        QTest::qFail("the window does not become the active one", __FILE__, __LINE__);
    QCoreApplication::processEvents();
}

// The bars end before the kit that they listen to.
ChromeBench::~ChromeBench()
{
    statusBar.reset();
    titleBar.reset();
}

QLabel *ChromeBench::title() const
{
    return titleBar->findChild<QLabel *>();
}

QPushButton *ChromeBench::titleButton(int place) const
{
    const int first = titleBar->layout()->count() - 4;
    return qobject_cast<QPushButton *>(titleBar->layout()->itemAt(first + place)->widget());
}

void ChromeBench::stopTicker()
{
    messages()->findChild<QTimer *>()->stop();
}

void ChromeBench::step(int count)
{
    for (int i = 0; i < count; ++i)
        QVERIFY(QMetaObject::invokeMethod(messages(), "slot_stepBarByStep"));
}

void ChromeBench::signIn()
{
    pool()->slot_login_succeed();
}

void ChromeBench::signInElsewhere()
{
    pool()->slot_loggedOtherPlace();
}

void ChromeBench::adjustSize()
{
    pool()->slot_adjustSize(size());
    QCoreApplication::processEvents();
}

// The first move into a window tells it where the mouse is, the second one whom it has reached.
void ChromeBench::moveMouseTo(QPushButton *button)
{
    const auto place = [&] { return button->mapTo(this, button->rect().center()); };
    QTRY_COMPARE(childAt(place()), button);
    takeMouseAway();
    QTest::mouseMove(windowHandle(), place());
    QVERIFY(button->underMouse());
}

void ChromeBench::takeMouseAway()
{
    QTest::mouseMove(windowHandle(), QPoint(599, 60));
    QTest::mouseMove(windowHandle(), QPoint(600, 60));
}

void ChromeBench::mousePressEvent(QMouseEvent *)
{
    leftToTheWindow << QStringLiteral("press");
}

void ChromeBench::mouseDoubleClickEvent(QMouseEvent *)
{
    leftToTheWindow << QStringLiteral("double click");
}

} // namespace zvtest
