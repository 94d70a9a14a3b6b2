#include "BreltWidgetToolKit/breltlabelurl.h"

#include "support/testregistry.h"

#include <QBuffer>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QPointer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

namespace {

QByteArray png(const QSize &size, const QColor &colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

QByteArray bigEndian(quint32 number)
{
    QByteArray bytes(4, 0);
    for (int i = 0; i < 4; ++i)
        bytes[i] = char(number >> (24 - 8 * i));
    return bytes;
}

quint32 crc(const QByteArray &bytes)
{
    quint32 sum = 0xffffffffu;
    for (const char byte : bytes) {
        sum ^= quint8(byte);
        for (int bit = 0; bit < 8; ++bit)
            sum = (sum >> 1) ^ (sum & 1 ? 0xedb88320u : 0);
    }
    return ~sum;
}

// A small picture whose header claims another size.
QByteArray pngThatClaims(quint32 width, quint32 height)
{
    QByteArray bytes = png(QSize(8, 8), Qt::red);
    const QByteArray header
        = QByteArray("IHDR") + bigEndian(width) + bigEndian(height) + bytes.mid(24, 5);
    bytes.replace(12, header.size() + 4, header + bigEndian(crc(header)));
    return bytes;
}

QByteArray answer(const QByteArray &body, const QByteArray &status = "200 OK",
                  const QByteArray &headers = {})
{
    return "HTTP/1.1 " + status + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n"
        + headers + "Connection: close\r\n\r\n" + body;
}

// Answers each path with the bytes given for it; what has none is held until answerHeld().
class PictureServer : public QTcpServer
{
public:
    PictureServer()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *socket = nextPendingConnection()) {
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { read(socket); });
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            }
        });
    }

    QString url(const QString &path) const
    {
        return QStringLiteral("http://127.0.0.1:%1%2").arg(serverPort()).arg(path);
    }

    void answerHeld(const QByteArray &path, const QByteArray &bytes)
    {
        if (QTcpSocket *socket = held.take(path)) {
            socket->write(bytes);
            socket->disconnectFromHost();
        }
    }

    QHash<QByteArray, QByteArray> answers;
    QHash<QByteArray, QPointer<QTcpSocket>> held;
    QList<QByteArray> requests;

private:
    void read(QTcpSocket *socket)
    {
        const QByteArray request = socket->readAll();
        const QByteArray path = request.split(' ').value(1);
        requests.append(request);
        if (answers.contains(path)) {
            socket->write(answers.value(path));
            socket->disconnectFromHost();
        } else {
            held.insert(path, socket);
        }
    }
};

QColor shownColour(const QLabel &label)
{
    if (!label.pixmap(Qt::ReturnByValue).isNull()) {
        const QImage image = label.pixmap(Qt::ReturnByValue).toImage();
        return image.pixelColor(image.width() / 2, image.height() / 2);
    }
    return QColor();
}

} // namespace

class TestBreltLabelURL : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void showsThePicture();
    void fitsIntoTheSizeAndKeepsProportions();
    void laterSizeFitsAgain();
    void everyCallFetchesAgain();
    void followsARedirect();
    void badAnswersLeaveTheLabel_data();
    void badAnswersLeaveTheLabel();
    void badAddressesLeaveTheLabel_data();
    void badAddressesLeaveTheLabel();
    void laterRequestReplacesTheEarlier();
    void refusedAddressDropsTheEarlierRequest();
    void deadlineEndsASilentRequest();
    void endlessBodyIsCut();
    void nobodyListens();
    void labelMayDieWhileLoading();
    void listenerMayAskForTheNextPicture();

private:
    std::unique_ptr<PictureServer> m_server;
    std::unique_ptr<BreltLabelURL> m_label;
    std::unique_ptr<QSignalSpy> m_shown;
    std::unique_ptr<QSignalSpy> m_failed;
};

void TestBreltLabelURL::init()
{
    m_server = std::make_unique<PictureServer>();
    m_server->answers["/red.png"] = answer(png(QSize(40, 20), Qt::red));
    m_server->answers["/blue.png"] = answer(png(QSize(10, 10), Qt::blue));
    m_label = std::make_unique<BreltLabelURL>();
    m_label->setText(QStringLiteral("二维码"));
    m_shown = std::make_unique<QSignalSpy>(m_label.get(), &BreltLabelURL::signal_pictureShown);
    m_failed = std::make_unique<QSignalSpy>(m_label.get(), &BreltLabelURL::signal_pictureFailed);
}

void TestBreltLabelURL::cleanup()
{
    m_shown.reset();
    m_failed.reset();
    m_label.reset();
    m_server.reset();
}

void TestBreltLabelURL::showsThePicture()
{
    m_label->setNetworkPic(m_server->url("/red.png"));
    QCOMPARE(m_label->text(), QStringLiteral("二维码")); // nothing happens inside the call
    QVERIFY(m_shown->wait());
    QCOMPARE(shownColour(*m_label), QColor(Qt::red));
    QCOMPARE(m_label->pixmap(Qt::ReturnByValue).size(), QSize(40, 20));
    QCOMPARE(m_failed->count(), 0);
}

void TestBreltLabelURL::fitsIntoTheSizeAndKeepsProportions()
{
    m_label->setImageSize(200, 200);
    m_label->setNetworkPic(m_server->url("/red.png"));
    QVERIFY(m_shown->wait());
    QCOMPARE(m_label->pixmap(Qt::ReturnByValue).size(), QSize(200, 100));
}

void TestBreltLabelURL::laterSizeFitsAgain()
{
    m_label->setNetworkPic(m_server->url("/red.png"));
    QVERIFY(m_shown->wait());
    m_label->setImageSize(20, 20);
    QCOMPARE(m_label->pixmap(Qt::ReturnByValue).size(), QSize(20, 10));
    m_label->setImageSize(0, -3);
    QCOMPARE(m_label->pixmap(Qt::ReturnByValue).size(), QSize(40, 20));
}

void TestBreltLabelURL::everyCallFetchesAgain()
{
    m_label->setNetworkPic(m_server->url("/red.png"));
    QVERIFY(m_shown->wait());
    m_server->answers["/red.png"] = answer(png(QSize(4, 4), Qt::green));
    m_label->setNetworkPic(m_server->url("/red.png"));
    QVERIFY(m_shown->wait());
    QCOMPARE(shownColour(*m_label), QColor(Qt::green));
    QCOMPARE(m_server->requests.size(), 2);
}

void TestBreltLabelURL::followsARedirect()
{
    m_server->answers["/old.png"] = answer({}, "302 Found", "Location: /red.png\r\n");
    m_label->setNetworkPic(m_server->url("/old.png"));
    QVERIFY(m_shown->wait());
    QCOMPARE(shownColour(*m_label), QColor(Qt::red));
}

void TestBreltLabelURL::badAnswersLeaveTheLabel_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const QByteArray picture = png(QSize(40, 20), Qt::green);
    QTest::newRow("not found") << answer(picture, "404 Not Found");
    QTest::newRow("server error") << answer(picture, "500 Internal Server Error");
    QTest::newRow("empty") << answer({});
    QTest::newRow("no picture") << answer("<html>维护中</html>");
    QTest::newRow("half a picture") << answer(picture.left(picture.size() / 2));
    QTest::newRow("a drawing") << answer(
        "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'><path d='M0 0h9v9z'/></svg>");
    QTest::newRow("too many pixels") << answer(pngThatClaims(50000, 50000));
    QTest::newRow("too large a body") << answer(picture + QByteArray(3 * 1024 * 1024, 'x'));
    QTest::newRow("packed body") << answer(qCompress(picture).mid(4), "200 OK",
                                           "Content-Encoding: deflate\r\n");
    QTest::newRow("cut connection") << answer(picture).chopped(20);
    QTest::newRow("no HTTP") << QByteArray("220 smtp ready\r\n");
    QTest::newRow("redirect loop") << answer({}, "302 Found", "Location: /bad\r\n");
    QTest::newRow("redirect to a file")
        << answer({}, "302 Found", "Location: file:///etc/hosts\r\n");
}

void TestBreltLabelURL::badAnswersLeaveTheLabel()
{
    QFETCH(QByteArray, bytes);
    m_server->answers["/bad"] = bytes;
    m_label->setNetworkPic(m_server->url("/bad"));
    QVERIFY(m_failed->wait());
    QCOMPARE(m_label->text(), QStringLiteral("二维码"));

    // A picture that is already there stays too.
    m_label->setNetworkPic(m_server->url("/blue.png"));
    QVERIFY(m_shown->wait());
    m_label->setNetworkPic(m_server->url("/bad"));
    QVERIFY(m_failed->wait());
    QCOMPARE(shownColour(*m_label), QColor(Qt::blue));
    QCOMPARE(m_shown->count(), 1);
}

void TestBreltLabelURL::badAddressesLeaveTheLabel_data()
{
    QTest::addColumn<QString>("address");
    QTemporaryDir folder;
    QTest::newRow("empty") << QString();
    QTest::newRow("only a dot") << ".";
    QTest::newRow("a file") << "file:///etc/hosts";
    QTest::newRow("ftp") << "ftp://127.0.0.1/a.png";
    QTest::newRow("inline data") << "data:image/png;base64,AAAA";
    QTest::newRow("no address") << "http://[::1/a.png";
    QTest::newRow("unknown resource") << "qrc:/no/such.png";
}

void TestBreltLabelURL::badAddressesLeaveTheLabel()
{
    QFETCH(QString, address);
    m_label->setNetworkPic(address);
    QCOMPARE(m_failed->count(), 0); // told through the event loop, never inside the call
    QVERIFY(m_failed->wait());
    QCOMPARE(m_failed->first().first().toString(), address);
    QCOMPARE(m_label->text(), QStringLiteral("二维码"));
}

void TestBreltLabelURL::laterRequestReplacesTheEarlier()
{
    m_label->setNetworkPic(m_server->url("/slow.png"));
    QTRY_VERIFY(m_server->held.contains("/slow.png"));
    m_label->setNetworkPic(m_server->url("/blue.png"));
    QVERIFY(m_shown->wait());
    m_server->answerHeld("/slow.png", answer(png(QSize(8, 8), Qt::red)));
    m_label->setNetworkPic(m_server->url("/blue.png")); // a full round trip after the late answer
    QVERIFY(m_shown->wait());
    QCOMPARE(shownColour(*m_label), QColor(Qt::blue));
    QCOMPARE(m_shown->count(), 2);
    QCOMPARE(m_failed->count(), 0);
}

void TestBreltLabelURL::refusedAddressDropsTheEarlierRequest()
{
    m_label->setNetworkPic(m_server->url("/slow.png"));
    QTRY_VERIFY(m_server->held.contains("/slow.png"));
    m_label->setNetworkPic(QString());
    m_label->setNetworkPic(m_server->url("/blue.png"));
    QVERIFY(m_shown->wait());
    QCOMPARE(m_failed->count(), 0);
    QCOMPARE(m_shown->count(), 1);
}

void TestBreltLabelURL::deadlineEndsASilentRequest()
{
    m_label->setDeadline(50);
    m_label->setNetworkPic(m_server->url("/silent.png"));
    QVERIFY(m_failed->wait());
    QCOMPARE(m_label->text(), QStringLiteral("二维码"));
    QCOMPARE(m_shown->count(), 0);
}

void TestBreltLabelURL::endlessBodyIsCut()
{
    m_label->setNetworkPic(m_server->url("/endless.png"));
    QTRY_VERIFY(m_server->held.contains("/endless.png"));
    QPointer<QTcpSocket> socket = m_server->held.value("/endless.png");
    socket->write("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n");
    qint64 sent = 0;
    const QByteArray block(64 * 1024, 'x');
    const auto feed = [&] {
        if (socket && socket->state() == QTcpSocket::ConnectedState)
            sent += socket->write(block);
    };
    connect(socket, &QTcpSocket::bytesWritten, m_label.get(), feed);
    feed();
    QVERIFY(m_failed->wait());
    QVERIFY(sent > 2 * 1024 * 1024);
    QCOMPARE(m_label->text(), QStringLiteral("二维码"));
    if (socket)
        socket->disconnect(m_label.get());
}

void TestBreltLabelURL::nobodyListens()
{
    const QString url = m_server->url("/red.png");
    m_server->close();
    m_label->setNetworkPic(url);
    QVERIFY(m_failed->wait());
    QCOMPARE(m_label->text(), QStringLiteral("二维码"));
}

void TestBreltLabelURL::labelMayDieWhileLoading()
{
    m_label->setNetworkPic(m_server->url("/slow.png"));
    QTRY_VERIFY(m_server->held.contains("/slow.png"));
    m_shown.reset();
    m_failed.reset();
    m_label.reset();
    m_server->answerHeld("/slow.png", answer(png(QSize(8, 8), Qt::red)));

    auto dying = std::make_unique<BreltLabelURL>();
    dying->setNetworkPic(QStringLiteral("ftp://nowhere")); // its ending is queued
    dying.reset();

    BreltLabelURL other;
    QSignalSpy shown(&other, &BreltLabelURL::signal_pictureShown);
    other.setNetworkPic(m_server->url("/blue.png"));
    QVERIFY(shown.wait());

    // One that dies in its own ending.
    auto *mortal = new BreltLabelURL;
    QPointer<BreltLabelURL> watch(mortal);
    connect(mortal, &BreltLabelURL::signal_pictureShown, mortal, [mortal] { delete mortal; });
    mortal->setNetworkPic(m_server->url("/blue.png"));
    QTRY_VERIFY(!watch);
}

void TestBreltLabelURL::listenerMayAskForTheNextPicture()
{
    // The first listener asks on; those behind it hear of the picture that ended all the same.
    const QString bad = QStringLiteral("ftp://nowhere");
    const QString red = m_server->url("/red.png");
    const QString blue = m_server->url("/blue.png");
    BreltLabelURL label;
    connect(&label, &BreltLabelURL::signal_pictureFailed, &label,
            [&] { label.setNetworkPic(red); });
    connect(&label, &BreltLabelURL::signal_pictureShown, &label, [&](const QString &url) {
        if (url == red)
            label.setNetworkPic(blue);
    });
    QStringList heard;
    connect(&label, &BreltLabelURL::signal_pictureFailed, &label,
            [&](const QString &url) { heard << url; });
    connect(&label, &BreltLabelURL::signal_pictureShown, &label,
            [&](const QString &url) { heard << url; });
    label.setNetworkPic(bad);
    QTRY_COMPARE(heard.size(), 3);
    QCOMPARE(heard, (QStringList{bad, red, blue}));
}

ZV_TEST(TestBreltLabelURL)
#include "test_breltlabelurl.moc"
