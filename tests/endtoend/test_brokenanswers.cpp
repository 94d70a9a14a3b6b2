#include "client/connectionstrip.h"
#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/middleman.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QTableView>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

QStringList networkLines;
QtMessageHandler nextHandler = nullptr;

// Keeps what the kit's network category says.
void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type != QtDebugMsg && qstrcmp(context.category, "zv.network") == 0)
        networkLines.append(text);
    if (nextHandler)
        nextHandler(type, context, text);
}

QByteArray http(const QByteArray &body, const QByteArray &headers = QByteArray())
{
    return "HTTP/1.1 200 OK\r\nContent-Type: application/json; charset=utf-8\r\n" + headers
        + "Content-Length: " + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n"
        + body;
}

QByteArray envelope(const QByteArray &data)
{
    return "{\"protocol\":1,\"status\":\"ok\",\"boot\":\"0123456789abcdef\",\"time\":1577840400123,"
           "\"data\":"
        + data + "}";
}

} // namespace

// The real service behind somebody who spoils one answer to a poll: the window keeps its rows, one
// line is logged, and the market goes on by itself.
class BrokenAnswersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_exchange.start(m_state));
        m_middleman = std::make_unique<endtoend::Middleman>(m_exchange.port());
        m_window = std::make_unique<MainWindow>();
        m_window->show();
        auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        access->setExchangeAddress(m_middleman->address());
        access->start();
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket() && access->isConnected(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
        nextHandler = qInstallMessageHandler(collect);
    }

    void cleanupTestCase()
    {
        qInstallMessageHandler(nextHandler);
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void oneBadAnswerIsOneLine_data()
    {
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<bool>("isWarning");
        QTest::newRow("no JSON") << http("<html>502</html>") << true;
        QTest::newRow("truncated JSON") << http(envelope("{\"topics\":{}}").chopped(9)) << true;
        QTest::newRow("wrong type in the envelope")
            << http("{\"protocol\":\"one\",\"status\":7,\"data\":[]}") << true;
        QTest::newRow("wrong type in a topic")
            << http(envelope("{\"topics\":{\"check\":{\"version\":5,\"data\":{\"open\":\"perhaps\","
                             "\"tradingDay\":7,\"session\":[]}}}}"))
            << true;
        QTest::newRow("duplicate keys")
            << http(envelope("{\"topics\":{\"list\":{\"version\":1,\"version\":2}}}")) << true;
        QTest::newRow("deep nesting")
            << http(QByteArray(100000, '[') + QByteArray(100000, ']')) << true;
        QTest::newRow("a huge number")
            << http(envelope("{\"topics\":{\"list\":{\"version\":1e400,\"gap\":true}}}")) << true;
        QTest::newRow("announces 100 MB")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n{") << true;
        QTest::newRow("sends 100 MB") << QByteArray("flood") << true;
        QTest::newRow("cut off") << QByteArray(
            "HTTP/1.1 200 OK\r\nContent-Length: 500\r\n\r\n{\"protocol\":1")
                                 << false;
        QTest::newRow("gzip") << http(
            QByteArray::fromHex("1f8b0800000000000003ab562a28ca2fc94fcecf51b252303430"
                                "d0512a4b2d2ace"),
            "Content-Encoding: gzip\r\n")
                              << false;
    }
    void oneBadAnswerIsOneLine()
    {
        QFETCH(QByteArray, answer);
        QFETCH(bool, isWarning);
        auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        QTableView *table = endtoend::marketTable(*m_window);
        QTRY_VERIFY_WITH_TIMEOUT(access->isConnected(), patience);
        table->selectRow(2);
        const int rows = table->model()->rowCount();
        const QStringList codes = textsOf(table, 1);
        if (isWarning)
            zvtest::expectMessage("The answer of sync.html");
        networkLines.clear();

        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        endtoend::LoopWatch watch;
        QStringList rowsSeen;
        const auto faults
            = [&] { return networkLines.filter(isWarning ? "is refused" : "does not answer"); };
        // The window gives up a poll when it wants to watch something else, a longer list of deals
        // after its first layout for one. Nobody reads the answer then.
        for (int attempt = 0; attempt < 3 && faults().isEmpty(); ++attempt) {
            m_middleman->spoilNextPoll(answer);
            QVERIFY(endtoend::until([&] { return m_middleman->hasSpoiled(); }));
            // The next good answers bring the market on.
            const int seen = ticks.count();
            QVERIFY(endtoend::until([&] {
                if (table->model()->rowCount() != rows)
                    rowsSeen.append(QString::number(table->model()->rowCount()));
                return ticks.count() >= seen + 2 && access->isConnected();
            }));
        }
        QVERIFY2(rowsSeen.isEmpty(), qPrintable(rowsSeen.join(' ')));
        QCOMPARE(textsOf(table, 1), codes);
        QCOMPARE(table->currentIndex().row(), 2);
        QVERIFY2(watch.longestGap() < 1000, qPrintable(QString::number(watch.longestGap())));
        QVERIFY(m_window->connectionStrip()->text().contains(QStringLiteral("已连接")));

        QVERIFY2(faults().size() == 1, qPrintable(networkLines.join('\n')));
        QVERIFY(faults().first().size() < 400);
    }

    // The network code asks once more by itself, and nobody notices.
    void aConnectionThatClosesWithoutAWordIsNothing()
    {
        auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        QTRY_VERIFY_WITH_TIMEOUT(access->isConnected(), patience);
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        m_middleman->spoilNextPoll("close");
        QVERIFY(endtoend::until([&] { return m_middleman->hasSpoiled(); }));
        const int seen = ticks.count();
        QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= seen + 2 && access->isConnected(), patience);
    }

private:
    static QStringList textsOf(const QTableView *table, int column)
    {
        QStringList texts;
        for (int row = 0; row < table->model()->rowCount(); ++row)
            texts.append(table->model()->index(row, column).data().toString());
        return texts;
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<endtoend::Middleman> m_middleman;
    std::unique_ptr<MainWindow> m_window;
};

ZV_TEST(BrokenAnswersTest)
#include "test_brokenanswers.moc"
