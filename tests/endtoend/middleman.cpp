#include "endtoend/middleman.h"

#include <QTcpSocket>
#include <QTimer>

namespace endtoend {

namespace {

constexpr qint64 floodBytes = 100 * 1024 * 1024;
constexpr int blockBytes = 256 * 1024;

// Writes the flood as fast as the other side takes it.
class Flood : public QObject
{
public:
    explicit Flood(QTcpSocket *socket) : QObject(socket), m_socket(socket)
    {
        m_socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n[");
        connect(m_socket, &QTcpSocket::bytesWritten, this, [this] { more(); });
    }

private:
    void more()
    {
        if (m_socket->bytesToWrite() > 0)
            return;
        if (m_left <= 0) {
            m_socket->disconnectFromHost();
            return;
        }
        m_left -= blockBytes;
        m_socket->write(QByteArray(blockBytes, ' '));
    }

    QTcpSocket *m_socket;
    qint64 m_left = floodBytes;
};

} // namespace

Middleman::Middleman(int servicePort) : m_servicePort(servicePort)
{
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *client = m_server.nextPendingConnection())
            take(client);
    });
}

QUrl Middleman::address() const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_server.serverPort()));
}

void Middleman::spoilNextPoll(const QByteArray &answer)
{
    m_answer = answer;
    m_spoiled = false;
}

void Middleman::loseAnswers(const QByteArray &path, int count, Loss loss)
{
    m_losePath = path;
    m_toLose = count;
    m_loss = loss;
    m_lost = 0;
}

void Middleman::delayAnswers(int most, quint32 seed)
{
    m_longestDelay = most;
    m_chance.seed(seed);
}

// What is not read yet stays in its order, so a delay that ends early hands on all that is there.
void Middleman::handOn(QTcpSocket *service, QTcpSocket *client)
{
    const auto write = [service, client] { client->write(service->readAll()); };
    if (m_longestDelay == 0) {
        write();
        return;
    }
    ++m_delayed;
    QTimer::singleShot(m_chance.bounded(m_longestDelay + 1), service, write);
}

void Middleman::take(QTcpSocket *client)
{
    auto *service = new QTcpSocket(client);
    connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    connect(service, &QTcpSocket::disconnected, client, [client, service] {
        client->write(service->readAll());
        client->disconnectFromHost();
    });
    connect(service, &QTcpSocket::readyRead, client,
            [this, client, service] { handOn(service, client); });
    connect(client, &QTcpSocket::readyRead, this, [this, client, service] {
        const QByteArray request = client->readAll();
        if (!m_answer.isEmpty() && request.contains("/sync.html")) {
            service->disconnect(client);
            service->abort();
            spoil(client);
        } else {
            if (m_toLose > 0 && request.contains('/' + m_losePath + ' '))
                lose(client, service);
            service->write(request);
        }
    });
    service->connectToHost(QHostAddress(QHostAddress::LocalHost), quint16(m_servicePort));
}

void Middleman::lose(QTcpSocket *client, QTcpSocket *service)
{
    --m_toLose;
    const Loss loss = m_loss;
    service->disconnect(client);
    connect(service, &QTcpSocket::readyRead, client, [this, client, service, loss] {
        ++m_lost;
        service->disconnect(client);
        service->abort();
        if (loss == Closed)
            client->disconnectFromHost();
    });
}

void Middleman::spoil(QTcpSocket *client)
{
    const QByteArray answer = m_answer;
    m_answer.clear();
    m_spoiled = true;
    if (answer == "flood") {
        new Flood(client);
        return;
    }
    if (answer != "close")
        client->write(answer);
    client->disconnectFromHost();
}

} // namespace endtoend
