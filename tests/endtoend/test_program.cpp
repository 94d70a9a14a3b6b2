#include "endtoend/programs.h"
#include "support/testregistry.h"

#include <QImage>
#include <QSet>
#include <QtTest/QtTest>

using endtoend::patience;

// zvclient as a program: its options, its picture, its exit codes, and the service that it leaves
// or does not leave behind.
class ProgramTest : public QObject
{
    Q_OBJECT

private slots:
    void takesAPictureWithoutADisplayAndStopsItsService_data()
    {
        QTest::addColumn<QString>("platform");
        QTest::newRow("first platform by itself") << QString();
        QTest::newRow("ch") << "ch";
        // Qt has an option of the same name and would look for a display plugin.
        QTest::newRow("lc") << "lc";
    }
    void takesAPictureWithoutADisplayAndStopsItsService()
    {
        QFETCH(QString, platform);
        endtoend::StateFolder state;
        const QString picture = state.file("picture.png");
        QStringList arguments{"--screenshot", picture, "--after", "3", "--state", state.path()};
        if (!platform.isEmpty())
            arguments << "--platform" << platform;
        endtoend::Client client;
        client.start(arguments);
        QVERIFY2(client.wait() == 0, qPrintable(client.errors()));
        checkPicture(picture);
        QVERIFY(endtoend::until([&] { return !state.isHeld(); }));
        QCOMPARE(state.servicesStarted(), 1);
        QVERIFY(state.log().contains("ending reason=\"nobody attached\""));
    }

    void twoAtTheSameInstantEndUpOnOneService()
    {
        endtoend::StateFolder state;
        endtoend::Client one;
        endtoend::Client other;
        one.start({"--screenshot", state.file("1.png"), "--after", "4", "--state", state.path()});
        other.start({"--screenshot", state.file("2.png"), "--after", "6", "--state", state.path()});
        QVERIFY2(one.wait() == 0, qPrintable(one.errors()));
        QVERIFY2(other.wait() == 0, qPrintable(other.errors()));
        checkPicture(state.file("1.png"));
        checkPicture(state.file("2.png"));
        QCOMPARE(state.servicesStarted(), 1);
        QVERIFY(endtoend::until([&] { return !state.isHeld(); }));
    }

    void aKilledClientLeavesNoService()
    {
        endtoend::StateFolder state;
        endtoend::Client client;
        client.start(
            {"--screenshot", state.file("never.png"), "--after", "600", "--state", state.path()});
        QVERIFY(endtoend::until([&] { return state.servicePort() != 0; }));
        const qint64 pid = state.servicePid();
        QVERIFY(endtoend::isAlive(pid));
        client.kill();
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(endtoend::until([&] { return !endtoend::isAlive(pid); }));
        QVERIFY2(elapsed.elapsed() < 15000, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY(!state.isHeld());
        QVERIFY(state.log().contains("ending reason=\"nobody attached\""));
        QVERIFY(!QFile::exists(state.file("never.png")));
    }

    void aNamedServiceIsUsedAndLeftAlone()
    {
        endtoend::StateFolder state;
        endtoend::Exchange exchange;
        QVERIFY(exchange.start(state));
        endtoend::Client client;
        client.start({"--exchange", exchange.address().toString(), "--screenshot",
                      state.file("picture.png"), "--after", "2"});
        QVERIFY2(client.wait() == 0, qPrintable(client.errors()));
        checkPicture(state.file("picture.png"));
        QVERIFY(exchange.isRunning());
    }

    void badOptionsEndWithOneSentence_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::newRow("unknown") << QStringList{"--frobnicate"};
        QTest::newRow("platform") << QStringList{"--platform", "xx"};
        QTest::newRow("after alone") << QStringList{"--after", "3"};
        QTest::newRow("no folder") << QStringList{"--screenshot", "/no/such/folder/a.png"};
    }
    void badOptionsEndWithOneSentence()
    {
        QFETCH(QStringList, arguments);
        endtoend::Client client;
        client.start(arguments);
        QCOMPARE(client.wait(), 2);
        QCOMPARE(client.errors().trimmed().split('\n').size(), 1);
        QVERIFY2(client.errors().startsWith("zvclient: "), qPrintable(client.errors()));
        QCOMPARE(client.output(), QString());
    }

    void aPictureThatCannotBeWrittenEndsWithOne()
    {
        endtoend::StateFolder state;
        QVERIFY(QDir().mkpath(state.file("folder.png")));
        endtoend::Client client;
        client.start(
            {"--screenshot", state.file("folder.png"), "--after", "0", "--state", state.path()});
        QCOMPARE(client.wait(), 1);
        QVERIFY2(client.errors().contains("folder.png"), qPrintable(client.errors()));
    }

    void withoutADisplayItSaysSo_data()
    {
        QTest::addColumn<QString>("display");
        QTest::newRow("none") << QString();
        QTest::newRow("nobody there") << ":4711";
        QTest::newRow("no number") << "somewhere";
    }
    void withoutADisplayItSaysSo()
    {
        QFETCH(QString, display);
        endtoend::Client client;
        client.start({}, display);
        QCOMPARE(client.wait(), 2);
        QCOMPARE(client.errors().trimmed().split('\n').size(), 1);
        QVERIFY2(client.errors().contains("./run --screenshot FILE --after SECONDS"),
                 qPrintable(client.errors()));
    }

    void helpAndVersionNeedNoDisplay()
    {
        endtoend::Client help;
        help.start({"--help"});
        QCOMPARE(help.wait(), 0);
        QVERIFY(help.output().contains("--screenshot"));
        endtoend::Client version;
        version.start({"--version"});
        QCOMPARE(version.wait(), 0);
        QVERIFY(version.output().startsWith("zvclient "));
    }

private:
    // The picture shows rows: text in the table's place, in the colours of figures.
    static void checkPicture(const QString &file)
    {
        QImage picture;
        QVERIFY2(picture.load(file, "PNG"), qPrintable(file));
        QVERIFY(picture.width() >= 1000 && picture.height() >= 500);
        QSet<int> linesWithText;
        QSet<QRgb> colours;
        for (int y = 40; y < picture.height() - 40; ++y) {
            for (int x = 0; x < picture.width(); ++x) {
                const QRgb pixel = picture.pixel(x, y);
                colours.insert(pixel);
                // Yellow, red and white figures; the surfaces are nearly black.
                if (qRed(pixel) > 200)
                    linesWithText.insert(y);
            }
        }
        QVERIFY2(colours.size() > 50, qPrintable(QString::number(colours.size())));
        QVERIFY2(linesWithText.size() > 40, qPrintable(QString::number(linesWithText.size())));
    }
};

ZV_TEST(ProgramTest)
#include "test_program.moc"
