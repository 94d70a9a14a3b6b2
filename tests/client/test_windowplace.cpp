#include "client/windowplace.h"

#include "client/halves.h"
#include "client/windowframe.h"
#include "support/testregistry.h"

#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/transaction_widget.h"

#include <QScreen>
#include <QSettings>
#include <QVBoxLayout>
#include <QtTest/QtTest>

namespace {

const QRect somewhere(120, 90, 500, 360);

} // namespace

// What the window keeps from one start to the next.
class WindowPlaceTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_folder;
    QString m_file;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<Halves> m_halves; // beside the window, which may be small then
    WindowFrame *m_frame = nullptr;
    WindowPlace *m_place = nullptr;

    QRect area() const { return m_window->screen()->availableGeometry(); }

    // What the next start of the program makes.
    void begin(const QString &file)
    {
        m_window = std::make_unique<QWidget>();
        auto *titleBar = new QWidget;
        (new QVBoxLayout(m_window.get()))->addWidget(titleBar);
        m_frame = new WindowFrame(m_window.get(), titleBar);
        m_place = new WindowPlace(m_window.get(), m_frame, m_halves.get(), file);
        m_place->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    }
    void begin() { begin(m_file); }

    void remember(const QString &key, const QVariant &value) const
    {
        QSettings(m_file, QSettings::IniFormat).setValue(key, value);
    }
    QVariant remembered(const QString &key) const
    {
        return QSettings(m_file, QSettings::IniFormat).value(key);
    }

private slots:
    void initTestCase() { QVERIFY(m_folder.isValid()); }

    void init()
    {
        static int runs = 0;
        m_file = m_folder.filePath(QStringLiteral("%1/window.ini").arg(++runs));
        m_halves = std::make_unique<Halves>(new Market_Widget, new Transaction_Widget);
        m_halves->resize(1366, 900);
        m_halves->fit(QSize(1366, 1000));
    }

    void cleanup()
    {
        m_window.reset();
        m_halves.reset();
    }

    void theFirstTimeItFillsTheScreen()
    {
        begin();
        QVERIFY(m_window->isMaximized());
        QTRY_COMPARE(m_window->geometry(), area());
        m_frame->toggleMaximized();
        QTRY_VERIFY(m_window->width() < area().width());
        QVERIFY(area().contains(m_window->geometry()));
    }

    void comesBackWhereItStood()
    {
        begin();
        m_frame->toggleMaximized();
        m_window->setGeometry(somewhere);
        m_window->close();
        begin();
        QVERIFY(!m_window->isMaximized());
        QTRY_COMPARE(m_window->geometry(), somewhere);
    }

    void comesBackFillingTheScreen()
    {
        begin();
        m_frame->toggleMaximized();
        m_window->setGeometry(somewhere);
        m_frame->toggleMaximized();
        m_window->close();
        begin();
        QVERIFY(m_window->isMaximized());
        QTRY_COMPARE(m_window->geometry(), area());
        m_frame->toggleMaximized();
        QTRY_COMPARE(m_window->geometry(), somewhere);
    }

    void theTradingHalfComesBackAsHigh()
    {
        begin();
        const int asked = m_halves->sizes().at(1);
        m_halves->choose(asked + 50);
        QCOMPARE(m_halves->sizes().at(1), asked + 50);
        m_window->close();
        m_halves = std::make_unique<Halves>(new Market_Widget, new Transaction_Widget);
        begin();
        QCOMPARE(m_halves->chosenHeight(), asked + 50);
        m_halves->resize(1366, 900);
        m_halves->fit(QSize(1366, 1000));
        QCOMPARE(m_halves->sizes().at(1), asked + 50);
    }

    void keepsItWithoutBeingClosed()
    {
        begin();
        m_frame->toggleMaximized();
        m_window->setGeometry(somewhere);
        QTRY_COMPARE(remembered("window/geometry").toRect(), somewhere);
        QCOMPARE(remembered("window/maximized").toBool(), false);
    }

    void keepsADrawnHeightWithoutBeingClosed()
    {
        begin();
        m_frame->toggleMaximized();
        m_window->setGeometry(somewhere);
        QTRY_COMPARE(remembered("window/geometry").toRect(), somewhere);
        QCOMPARE(remembered("window/tradingHeight").toInt(), 0);
        m_halves->show();
        QWidget *bar = m_halves->handle(1);
        const QPoint grip = bar->rect().center();
        QTest::mousePress(bar, Qt::LeftButton, Qt::NoModifier, grip);
        const QPoint up = grip - QPoint(0, 60);
        QMouseEvent move(QEvent::MouseMove, up, bar->mapToGlobal(up), Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QApplication::sendEvent(bar, &move);
        QTest::mouseRelease(bar, Qt::LeftButton, Qt::NoModifier, grip);
        QVERIFY(m_halves->chosenHeight() > 0);
        QTRY_COMPARE(remembered("window/tradingHeight").toInt(), m_halves->chosenHeight());
    }

    void aWindowWhoseScreenIsGoneIsFetched()
    {
        remember("window/geometry", QRect(9000, 5000, 500, 360));
        remember("window/maximized", false);
        begin();
        QTRY_COMPARE(m_window->size(), QSize(500, 360));
        QVERIFY(area().contains(m_window->geometry()));
    }

    void aWindowLargerThanItsScreenIsMadeToFit()
    {
        remember("window/geometry", QRect(10, 10, 9000, 7000));
        remember("window/maximized", false);
        begin();
        QTRY_COMPARE(m_window->size(), area().size());
    }

    void aScreenMayGoWhileTheWindowIsOpen()
    {
        remember("window/geometry", somewhere);
        remember("window/maximized", false);
        begin();
        m_window->move(-4000, 200);
        QVERIFY(QMetaObject::invokeMethod(m_place, "rescue"));
        QTRY_VERIFY(area().contains(m_window->geometry()));
        QCOMPARE(m_window->size(), somewhere.size());
        // One that can be caught stays where the user has put it.
        const QPoint edge(area().right() - 200, 300);
        m_window->move(edge);
        QVERIFY(QMetaObject::invokeMethod(m_place, "rescue"));
        QCOMPARE(m_window->pos(), edge);
    }

    void aChangeOfTheScreensIsHeardOf_data()
    {
        QTest::addColumn<bool>("isGone");
        QTest::newRow("one goes") << true;
        QTest::newRow("one becomes smaller") << false;
    }
    void aChangeOfTheScreensIsHeardOf()
    {
        QFETCH(bool, isGone);
        remember("window/geometry", somewhere);
        remember("window/maximized", false);
        begin();
        m_window->move(-4000, 200);
        QScreen *screen = m_window->screen();
        if (isGone)
            emit qGuiApp->screenRemoved(screen);
        else
            emit screen->availableGeometryChanged(screen->availableGeometry());
        QTRY_VERIFY(area().contains(m_window->geometry()));
    }

    void aWindowThatFillsItsScreenOrIsHiddenIsLeftAlone()
    {
        begin();
        QTRY_COMPARE(m_window->geometry(), area());
        QVERIFY(QMetaObject::invokeMethod(m_place, "rescue"));
        QVERIFY(m_window->isMaximized());
        QCOMPARE(m_window->geometry(), area());
        m_frame->toggleMaximized();
        m_window->hide();
        const QRect away(-4000, 200, 500, 360);
        m_window->setGeometry(away);
        QVERIFY(QMetaObject::invokeMethod(m_place, "rescue"));
        QCOMPARE(m_window->geometry(), away);
    }

    void badMemoriesAreNone_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("noise") << QByteArray("\x00\xff[[[window\ngeometry=@Rect(", 27);
        QTest::newRow("no rectangle") << QByteArray("[window]\ngeometry=wide\nmaximized=perhaps\n"
                                                    "tradingHeight=tall\n");
        QTest::newRow("an empty one") << QByteArray("[window]\ngeometry=@Rect(5 5 0 0)\n");
        QTest::newRow("a negative height") << QByteArray("[window]\ntradingHeight=-40\n");
    }
    void badMemoriesAreNone()
    {
        QFETCH(QByteArray, content);
        QVERIFY(QDir().mkpath(QFileInfo(m_file).path()));
        QFile file(m_file);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        begin();
        QVERIFY(m_window->isMaximized());
        QTRY_COMPARE(m_window->geometry(), area());
        QCOMPARE(m_halves->chosenHeight(), 0);
        m_window->close();
        QCOMPARE(remembered("window/maximized").toBool(), true);
    }

    void sayOnceWhereItCannotBeKept()
    {
        const QString file = QStringLiteral("/dev/null/window.ini");
        begin(file);
        zvtest::expectMessage(QStringLiteral("cannot be kept in ") + file);
        m_window->close();
        m_window->show();
        m_window->close();
    }

    void theUsualFileIsTheUsers()
    {
        const QByteArray home = qgetenv("HOME");
        const QByteArray config = qgetenv("XDG_CONFIG_HOME");
        qunsetenv("XDG_CONFIG_HOME");
        qputenv("HOME", m_folder.path().toLocal8Bit());
        const QString usual = WindowPlace::usualFile();
        qputenv("HOME", home);
        if (!config.isNull())
            qputenv("XDG_CONFIG_HOME", config);
        QCOMPARE(usual, m_folder.path() + QStringLiteral("/.config/zvclient/window.ini"));
    }
};

ZV_TEST(WindowPlaceTest)
#include "test_windowplace.moc"
