#pragma once

#include <QByteArray>
#include <QObject>
#include <QTcpSocket>

#include <functional>

namespace faultyproxy {

// An HTTP message with its whole body, taken out of the front of `bytes`; empty while it is not all
// there. Bodies without a length are not spoken here.
QByteArray takeMessage(QByteArray &bytes);

// Where a message's body begins.
int bodyOffset(const QByteArray &message);

// Brings one request to the service, and its whole answer back; an empty one where the service
// closes first. Goes when that is done.
class Errand : public QObject
{
    Q_OBJECT

public:
    using Done = std::function<void(const QByteArray &answer)>;

    Errand(quint16 servicePort, const QByteArray &request, Done done, QObject *parent);

private:
    void end(const QByteArray &answer);

    QTcpSocket m_service;
    QByteArray m_received;
    Done m_done;
};

} // namespace faultyproxy
