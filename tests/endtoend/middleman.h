#pragma once

#include <QByteArray>
#include <QObject>
#include <QTcpServer>
#include <QUrl>

class QTcpSocket;

namespace endtoend {

// Stands between a client and the real service, hands everything on byte by byte, and answers one
// poll in the service's place when told to.
class Middleman : public QObject
{
public:
    explicit Middleman(int servicePort);

    QUrl address() const;

    // Answers the next request for sync.html with these bytes and closes the connection. "flood"
    // sends 100 MB without announcing them, "close" nothing at all.
    void spoilNextPoll(const QByteArray &answer);
    bool hasSpoiled() const { return m_spoiled; }

private:
    void take(QTcpSocket *client);
    void spoil(QTcpSocket *client);

    QTcpServer m_server;
    int m_servicePort;
    QByteArray m_answer;
    bool m_spoiled = false;
};

} // namespace endtoend
