#include "client/plainnetwork.h"

#include "support/testregistry.h"

#include <QDir>
#include <QImageReader>
#include <QNetworkAccessManager>
#include <QtTest/QtTest>

// The network code without its look at the devices of the machine.
class PlainNetworkTest : public QObject
{
    Q_OBJECT

private slots:
    void noPluginWatchesTheDevices()
    {
        bool areThere = false;
        for (const QString &path : QCoreApplication::libraryPaths())
            areThere = areThere || QDir(path).exists(QStringLiteral("bearer"));
        if (!areThere)
            QSKIP("this Qt has no plugins that watch devices");
        plainnetwork::leaveDevicesAlone();
        const QNetworkAccessManager manager;
        QFile mapped(QStringLiteral("/proc/self/maps"));
        QVERIFY(mapped.open(QIODevice::ReadOnly));
        QVERIFY(!mapped.readAll().contains("bearer"));
    }

    void allOtherPluginsAreFound()
    {
        const QStringList before = QCoreApplication::libraryPaths();
        plainnetwork::leaveDevicesAlone();
        QCOMPARE(QCoreApplication::libraryPaths(), before);
        QVERIFY(QImageReader::supportedImageFormats().contains("jpeg"));
    }
};

ZV_TEST(PlainNetworkTest)
#include "test_plainnetwork.moc"
