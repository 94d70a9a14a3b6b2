#include "client/clientoptions.h"

#include "support/testregistry.h"

#include <QtTest/QtTest>

class ClientOptionsTest : public QObject
{
    Q_OBJECT

private slots:
    void defaultsAreTheEmbeddedServiceAndTheUsersPlatform()
    {
        ClientOptions options;
        QVERIFY(options.parse({"zvclient"}));
        QVERIFY(options.exchange.isEmpty());
        QVERIFY(!options.platform);
        QVERIFY(options.screenshotFile.isEmpty());
        QVERIFY(options.stateFolder.endsWith("/zvclient/exchange"));
        QVERIFY(QDir::isAbsolutePath(options.stateFolder));
    }

    void readsWhatIsGiven()
    {
        QTemporaryDir folder;
        const QString picture = folder.filePath("picture.png");
        ClientOptions options;
        QVERIFY2(
            options.parse({"zvclient", "--exchange", "http://127.0.0.1:8080", "--platform", "lc",
                           "--screenshot", picture, "--after", "0", "--state", folder.path()}),
            qPrintable(options.error));
        QCOMPARE(options.exchange, QUrl("http://127.0.0.1:8080"));
        QCOMPARE(int(options.platform.value_or(ZvServerConfig::Platform(0))), 2);
        QCOMPARE(options.screenshotFile, picture);
        QCOMPARE(options.screenshotAfterSeconds, 0);
        QCOMPARE(options.stateFolder, folder.path());
    }

    void refusesBadInputInOneSentence_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("named");
        QTest::newRow("unknown option") << QStringList{"--frobnicate"} << "frobnicate";
        QTest::newRow("stray argument") << QStringList{"market"} << "market";
        QTest::newRow("platform") << QStringList{"--platform", "xx"} << "xx";
        QTest::newRow("empty platform") << QStringList{"--platform", ""} << "--platform";
        QTest::newRow("no scheme") << QStringList{"--exchange", "127.0.0.1:80"} << "127.0.0.1:80";
        QTest::newRow("other scheme") << QStringList{"--exchange", "ftp://host/"} << "ftp://host/";
        QTest::newRow("no host") << QStringList{"--exchange", "http:///x"} << "http:///x";
        QTest::newRow("bad port") << QStringList{"--exchange", "http://h:99999"} << "99999";
        QTest::newRow("seconds") << QStringList{"--screenshot", "a.png", "--after", "soon"}
                                 << "soon";
        QTest::newRow("negative") << QStringList{"--screenshot", "a.png", "--after", "-1"} << "-1";
        QTest::newRow("too long") << QStringList{"--screenshot", "a.png", "--after", "86401"}
                                  << "86401";
        QTest::newRow("after alone") << QStringList{"--after", "5"} << "--screenshot";
        QTest::newRow("no folder")
            << QStringList{"--screenshot", "/no/such/folder/a.png"} << "/no/such/folder/a.png";
    }
    void refusesBadInputInOneSentence()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, named);
        ClientOptions options;
        QVERIFY(!options.parse(QStringList{"zvclient"} + arguments));
        QVERIFY2(options.error.contains(named), qPrintable(options.error));
        QVERIFY(!options.error.contains('\n'));
    }

    void helpNamesEveryOption()
    {
        ClientOptions options;
        QVERIFY(options.parse({"zvclient", "--help"}));
        QVERIFY(options.wantsHelp);
        for (const char *name : {"--exchange", "--platform", "--state", "--screenshot", "--after"})
            QVERIFY2(options.helpText.contains(name), name);
    }
};

ZV_TEST(ClientOptionsTest)
#include "test_clientoptions.moc"
