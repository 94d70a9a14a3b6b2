#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvhttptransport.h"
#include "support/testregistry.h"

#include <QElapsedTimer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest/QtTest>

namespace {

// An exchange that behaves as a test says: it reads requests and does with each connection what the
// behaviour does.
class HostileExchange : public QObject
{
public:
    using Behaviour = std::function<void(QTcpSocket *, const QByteArray &request)>;

    HostileExchange()
    {
        server.listen(QHostAddress::LocalHost);
        connect(&server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = server.nextPendingConnection()) {
                ++connections;
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QUrl address() const
    {
        return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(server.serverPort()));
    }

    static QByteArray whole(const QByteArray &body, const QByteArray &status = "200 OK",
                            const QByteArray &headers = QByteArray())
    {
        return "HTTP/1.1 " + status + "\r\nContent-Type: application/json\r\n" + headers
            + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body;
    }

    QTcpServer server;
    Behaviour behaviour;
    QByteArrayList requests;
    int connections = 0;

private:
    void read(QTcpSocket *socket)
    {
        QByteArray &buffer = m_buffers[socket];
        buffer += socket->readAll();
        const int end = buffer.indexOf("\r\n\r\n");
        if (end < 0)
            return;
        const int at = buffer.toLower().indexOf("content-length: ");
        const int length = at < 0 || at > end
            ? 0
            : buffer.mid(at + 16, buffer.indexOf('\r', at) - at - 16).toInt();
        if (buffer.size() < end + 4 + length)
            return;
        const QByteArray request = buffer.left(end + 4 + length);
        buffer.clear();
        requests.append(request);
        behaviour(socket, request);
    }

    QHash<QTcpSocket *, QByteArray> m_buffers;
};

ZvRequest query(const QString &path)
{
    ZvRequest request;
    request.prefix = QStringLiteral("/ch/youbika/");
    request.path = path;
    request.parameters = {{QStringLiteral("protocol"), QStringLiteral("1")}};
    return request;
}

ZvRequest action(const QString &path)
{
    ZvRequest request = query(path);
    request.isAction = true;
    request.parameters.append({QStringLiteral("key"), QStringLiteral("00ff")});
    return request;
}

} // namespace

class HttpTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_exchange = std::make_unique<HostileExchange>();
        m_transport = std::make_unique<ZvHttpTransport>(m_exchange->address());
        m_answers.clear();
    }

    void cleanup()
    {
        m_transport.reset();
        m_exchange.reset();
    }

    void queryIsAPlainGet()
    {
        answerWith(HostileExchange::whole("{}"));
        ZvRequest request = query(zvPath_collection_item);
        request.parameters.append({QStringLiteral("x"), QStringLiteral("a+b&c=藏 %41")});
        request.token = "abc123";
        QCOMPARE(ask(request).ending, ZvAnswer::Answered);
        const QByteArray sent = m_exchange->requests.first();
        QVERIFY2(sent.startsWith("GET /ch/youbika/collection/item.html?protocol=1&x="
                                 "a%2Bb%26c%3D%E8%97%8F%20%2541 HTTP/1.1\r\n"),
                 sent);
        QVERIFY(sent.contains("Accept-Encoding: identity\r\n"));
        QVERIFY(sent.contains("Authorization: Bearer abc123\r\n"));
        QVERIFY(!sent.toLower().contains("cookie:"));
        QCOMPARE(m_answers.first().httpStatus, 200);
        QCOMPARE(m_answers.first().body, QByteArray("{}"));
    }

    void actionIsAForm()
    {
        answerWith(HostileExchange::whole("{}"));
        ZvRequest request = action(zvPath_login);
        request.parameters.append({QStringLiteral("password"), QStringLiteral("p&=+ 密")});
        QCOMPARE(ask(request).ending, ZvAnswer::Answered);
        const QByteArray sent = m_exchange->requests.first();
        QVERIFY(sent.startsWith("POST /ch/youbika/login.html HTTP/1.1\r\n"));
        QVERIFY(sent.contains("application/x-www-form-urlencoded"));
        QVERIFY(sent.endsWith("\r\n\r\nprotocol=1&key=00ff&password=p%26%3D%2B%20%E5%AF%86"));
    }

    void everyStatusIsAnAnswer_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<int>("number");
        for (const char *status :
             {"200 OK", "400 Bad Request", "401 Unauthorized", "404 Not Found",
              "405 Method Not Allowed", "413 Payload Too Large", "500 Internal Server Error",
              "501 Not Implemented", "503 Service Unavailable"}) {
            QTest::newRow(status) << QByteArray(status) << QByteArray(status).left(3).toInt();
        }
    }

    void everyStatusIsAnAnswer()
    {
        QFETCH(QByteArray, status);
        QFETCH(int, number);
        answerWith(HostileExchange::whole("{\"a\": 1}", status));
        for (const ZvRequest &request : {query(zvPath_cap), action(zvPath_trade_buy)}) {
            const ZvAnswer answer = ask(request);
            QCOMPARE(answer.ending, ZvAnswer::Answered);
            QCOMPARE(answer.httpStatus, number);
            QCOMPARE(answer.body, QByteArray("{\"a\": 1}"));
        }
        QCOMPARE(m_exchange->requests.size(), 2);
    }

    // The network code sends a body from memory again when the exchange closes before it answers.
    void actionIsSentOnce()
    {
        m_exchange->behaviour
            = [](QTcpSocket *socket, const QByteArray &) { socket->disconnectFromHost(); };
        const ZvAnswer answer = ask(action(zvPath_trade_buy));
        QCOMPARE(answer.ending, ZvAnswer::Failed);
        QCOMPARE(m_exchange->requests.size(), 1);
    }

    void actionIsSentOnceOnAKeptConnectionToo()
    {
        answerWith(HostileExchange::whole("{}"));
        QCOMPARE(ask(action(zvPath_trade_buy)).ending, ZvAnswer::Answered);
        m_exchange->behaviour
            = [](QTcpSocket *socket, const QByteArray &) { socket->disconnectFromHost(); };
        QCOMPARE(ask(action(zvPath_trade_sell)).ending, ZvAnswer::Failed);
        int sells = 0;
        for (const QByteArray &request : m_exchange->requests)
            sells += request.contains("trade/sell.html") ? 1 : 0;
        QCOMPARE(sells, 1);
    }

    void nobodyThereIsNotSent()
    {
        m_exchange->server.close();
        QCOMPARE(ask(query(zvPath_cap)).ending, ZvAnswer::NotSent);
        QCOMPARE(ask(action(zvPath_trade_buy)).ending, ZvAnswer::NotSent);
    }

    void actionsDoNotWaitForPolls()
    {
        m_exchange->behaviour = [](QTcpSocket *socket, const QByteArray &request) {
            if (request.startsWith("POST"))
                socket->write(HostileExchange::whole("{}"));
        };
        QObject context;
        for (int i = 0; i < 8; ++i)
            m_transport->send(query(zvPath_sync), &context, [](const ZvAnswer &) {});
        QTRY_VERIFY(m_exchange->requests.size() >= 6);
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(ask(action(zvPath_trade_buy)).ending, ZvAnswer::Answered);
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
    }

    void compressedAnswerIsRefused()
    {
        answerWith(HostileExchange::whole(QByteArray::fromHex("1f8b08000000000000ff"), "200 OK",
                                          "Content-Encoding: gzip\r\n"));
        const ZvAnswer answer = ask(query(zvPath_cap));
        QCOMPARE(answer.ending, ZvAnswer::Failed);
        QVERIFY(answer.error.contains(QStringLiteral("compressed")));
        QVERIFY(answer.body.isEmpty());
    }

    void cutOffAnswerIsNoAnswer()
    {
        m_exchange->behaviour = [](QTcpSocket *socket, const QByteArray &) {
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{\"half\":");
            socket->disconnectFromHost();
        };
        QCOMPARE(ask(query(zvPath_cap)).ending, ZvAnswer::Failed);
        QCOMPARE(ask(action(zvPath_trade_buy)).ending, ZvAnswer::Failed);
    }

    void announcedLengthIsBounded()
    {
        m_exchange->behaviour = [](QTcpSocket *socket, const QByteArray &) {
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n{");
        };
        QCOMPARE(ask(query(zvPath_cap)).ending, ZvAnswer::TooLarge);

        // And where the connection breaks in the same moment.
        m_exchange->behaviour = [](QTcpSocket *socket, const QByteArray &) {
            socket->write("HTTP/1.1 200 OK\r\nContent-Length: 104857600\r\n\r\n{");
            socket->disconnectFromHost();
        };
        QCOMPARE(ask(query(zvPath_cap)).ending, ZvAnswer::TooLarge);
    }

    void endlessAnswerEndsAtTheBound()
    {
        qint64 written = 0;
        m_exchange->behaviour = [&written](QTcpSocket *socket, const QByteArray &) {
            socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
            const auto more = [socket, &written] {
                if (written < 100 * 1024 * 1024 && socket->bytesToWrite() < 1024 * 1024)
                    written += socket->write(QByteArray(256 * 1024, ' '));
            };
            connect(socket, &QTcpSocket::bytesWritten, socket, more);
            more();
        };
        ZvRequest request = query(zvPath_cap);
        request.bodyBound = 2 * 1024 * 1024;
        QCOMPARE(ask(request).ending, ZvAnswer::TooLarge);
        QVERIFY2(written < 50 * 1024 * 1024, qPrintable(QString::number(written)));
    }

    void slowAnswerEndsAtTheDeadline_data()
    {
        QTest::addColumn<QByteArray>("beginning");
        QTest::newRow("nothing") << QByteArray();
        QTest::newRow("half a header") << QByteArray("HTTP/1.1 200 OK\r\nContent-Le");
        QTest::newRow("half a body")
            << QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{");
    }

    void slowAnswerEndsAtTheDeadline()
    {
        QFETCH(QByteArray, beginning);
        m_exchange->behaviour
            = [beginning](QTcpSocket *socket, const QByteArray &) { socket->write(beginning); };
        ZvRequest request = action(zvPath_trade_buy);
        request.deadline = 200;
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(ask(request).ending, ZvAnswer::TimedOut);
        QVERIFY(timer.elapsed() >= 150);
        QCOMPARE(m_exchange->requests.size(), 1);
    }

    void redirectIsNotFollowed()
    {
        answerWith(HostileExchange::whole("", "302 Found", "Location: /elsewhere\r\n"));
        const ZvAnswer answer = ask(query(zvPath_cap));
        QCOMPARE(answer.httpStatus, 302);
        QCOMPARE(m_exchange->requests.size(), 1);
    }

    void cookiesAreNotKept()
    {
        answerWith(HostileExchange::whole("{}", "200 OK", "Set-Cookie: a=b\r\n"));
        ask(query(zvPath_cap));
        ask(query(zvPath_cap));
        QVERIFY(!m_exchange->requests.last().toLower().contains("cookie:"));
    }

    void noHttpAtAllIsNoAnswer()
    {
        m_exchange->behaviour = [](QTcpSocket *socket, const QByteArray &) {
            socket->write("SSH-2.0-OpenSSH\r\n\r\n");
            socket->disconnectFromHost();
        };
        QVERIFY(ask(query(zvPath_cap)).ending != ZvAnswer::Answered);
    }

    void transportEndsItsOpenCalls()
    {
        m_exchange->behaviour = [](QTcpSocket *, const QByteArray &) {};
        QObject context;
        QList<ZvAnswer::Ending> endings;
        const auto note = [&](const ZvAnswer &answer) { endings.append(answer.ending); };
        m_transport->send(query(zvPath_sync), &context, note);
        m_transport->send(action(zvPath_trade_buy), &context, note);
        QTRY_COMPARE(m_exchange->requests.size(), 2);
        m_transport.reset();
        QTRY_COMPARE(endings.size(), 2);
        QCOMPARE(endings.count(ZvAnswer::Cancelled), 2);
    }

    void cancelledCallLetsTheConnectionGo()
    {
        m_exchange->behaviour = [](QTcpSocket *, const QByteArray &) {};
        QObject context;
        const ZvCallId id
            = m_transport->send(query(zvPath_sync), &context, [](const ZvAnswer &) {});
        QTRY_COMPARE(m_exchange->requests.size(), 1);
        auto *socket = m_exchange->server.findChild<QTcpSocket *>();
        QVERIFY(socket);
        QSignalSpy gone(socket, &QTcpSocket::disconnected);
        m_transport->cancel(id);
        QTRY_COMPARE(gone.count(), 1);
    }

private:
    void answerWith(const QByteArray &answer)
    {
        m_exchange->behaviour
            = [answer](QTcpSocket *socket, const QByteArray &) { socket->write(answer); };
    }

    // Sends a request and waits for its end.
    ZvAnswer ask(const ZvRequest &request)
    {
        const int before = m_answers.size();
        m_transport->send(request, this,
                          [this](const ZvAnswer &answer) { m_answers.append(answer); });
        if (!QTest::qWaitFor([&] { return m_answers.size() > before; }, 20000)) {
            QTest::qFail("no ending", __FILE__, __LINE__);
            return ZvAnswer();
        }
        return m_answers.last();
    }

    std::unique_ptr<HostileExchange> m_exchange;
    std::unique_ptr<ZvHttpTransport> m_transport;
    QList<ZvAnswer> m_answers;
};

ZV_TEST(HttpTest)
#include "test_http.moc"
