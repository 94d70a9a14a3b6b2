#include "client/programlook.h"

#include "support/testregistry.h"

#include <QFile>
#include <QWidget>
#include <QtTest/QtTest>

class ProgramLookTest : public QObject
{
    Q_OBJECT

private slots:
    // Also run on X11, which alone has a driver that it would load.
    void windowsAreDrawnWithoutOpenGl()
    {
        if (QGuiApplication::platformName() != QLatin1String("xcb"))
            QSKIP("no driver would be loaded here");
        // The scale comes too late here, the way of drawing does not.
        zvtest::expectMessage(QStringLiteral("before QCoreApplication is created"));
        programlook::followScreen();
        QWidget window;
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QFile mapped(QStringLiteral("/proc/self/maps"));
        QVERIFY(mapped.open(QIODevice::ReadOnly));
        QVERIFY(!mapped.readAll().contains("xcbglintegrations"));
    }
};

ZV_TEST(ProgramLookTest)
#include "test_programlook.moc"
