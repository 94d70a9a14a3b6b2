#pragma once

#include <QByteArray>
#include <QObject>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QUrl>

class QTcpSocket;

namespace endtoend {

// Stands between a client and the real service and hands everything on byte by byte. When told to,
// it answers one poll in the service's place, holds answers back for a while, or loses them.
class Middleman : public QObject
{
public:
    explicit Middleman(int servicePort);

    QUrl address() const;

    // Answers the next request for sync.html with these bytes and closes the connection. "flood"
    // sends 100 MB without announcing them, "close" nothing at all.
    void spoilNextPoll(const QByteArray &answer);
    bool hasSpoiled() const { return m_spoiled; }

    // The next `count` requests for a path reach the service, and their answers nobody: once the
    // service has answered, the connection is closed, or stays open in silence.
    enum Loss { Closed, Silent };
    void loseAnswers(const QByteArray &path, int count, Loss loss = Closed);

    // How many answers the service has given that were lost.
    int lost() const { return m_lost; }

    // From now on each piece of an answer is held back for a while of at most so many milliseconds,
    // by chance from `seed`: answers on different connections overtake each other. 0 ends it.
    void delayAnswers(int most, quint32 seed = 1);

    // How many pieces have been held back.
    int delayed() const { return m_delayed; }

private:
    void take(QTcpSocket *client);
    void spoil(QTcpSocket *client);
    void lose(QTcpSocket *client, QTcpSocket *service);
    void handOn(QTcpSocket *service, QTcpSocket *client);

    QTcpServer m_server;
    int m_servicePort;
    QByteArray m_answer;
    bool m_spoiled = false;
    QByteArray m_losePath;
    int m_toLose = 0;
    Loss m_loss = Closed;
    int m_lost = 0;
    int m_longestDelay = 0;
    int m_delayed = 0;
    QRandomGenerator m_chance;
};

} // namespace endtoend
