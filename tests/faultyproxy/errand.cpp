#include "faultyproxy/errand.h"

#include <QHostAddress>

#include <utility>

namespace faultyproxy {

int bodyOffset(const QByteArray &message)
{
    return message.indexOf("\r\n\r\n") + 4;
}

QByteArray takeMessage(QByteArray &bytes)
{
    const int head = bytes.indexOf("\r\n\r\n");
    if (head < 0)
        return {};
    int length = 0;
    for (const QByteArray &line : bytes.left(head).split('\n')) {
        if (line.toLower().startsWith("content-length:"))
            length = line.mid(line.indexOf(':') + 1).trimmed().toInt();
    }
    const int size = head + 4 + length;
    if (bytes.size() < size)
        return {};
    const QByteArray message = bytes.left(size);
    bytes.remove(0, size);
    return message;
}

Errand::Errand(quint16 servicePort, const QByteArray &request, Done done, QObject *parent)
    : QObject(parent), m_done(std::move(done))
{
    connect(&m_service, &QTcpSocket::connected, this,
            [this, request] { m_service.write(request); });
    connect(&m_service, &QTcpSocket::readyRead, this, [this] {
        m_received += m_service.readAll();
        const QByteArray answer = takeMessage(m_received);
        if (!answer.isEmpty())
            end(answer);
    });
    connect(&m_service, &QTcpSocket::stateChanged, this, [this](QAbstractSocket::SocketState now) {
        if (now == QAbstractSocket::UnconnectedState)
            end({});
    });
    m_service.connectToHost(QHostAddress(QHostAddress::LocalHost), servicePort);
}

void Errand::end(const QByteArray &answer)
{
    if (const Done done = std::exchange(m_done, {})) {
        deleteLater();
        done(answer);
    }
}

} // namespace faultyproxy
