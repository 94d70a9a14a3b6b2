#pragma once

#include <QByteArray>
#include <QObject>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QUrl>

class QTcpSocket;

namespace endtoend {

// Stands between a client and the real service and hands everything on byte by byte. When told to,
// it answers one poll in the service's place, or holds answers back for a while.
class Middleman : public QObject
{
public:
    explicit Middleman(int servicePort);

    QUrl address() const;

    // Answers the next request for sync.html with these bytes and closes the connection. "flood"
    // sends 100 MB without announcing them, "close" nothing at all.
    void spoilNextPoll(const QByteArray &answer);
    bool hasSpoiled() const { return m_spoiled; }

    // From now on each piece of an answer is held back for a while of at most so many milliseconds,
    // by chance from `seed`: answers on different connections overtake each other. 0 ends it.
    void delayAnswers(int most, quint32 seed = 1);

    // How many pieces have been held back.
    int delayed() const { return m_delayed; }

private:
    void take(QTcpSocket *client);
    void spoil(QTcpSocket *client);
    void handOn(QTcpSocket *service, QTcpSocket *client);

    QTcpServer m_server;
    int m_servicePort;
    QByteArray m_answer;
    bool m_spoiled = false;
    int m_longestDelay = 0;
    int m_delayed = 0;
    QRandomGenerator m_chance;
};

} // namespace endtoend
