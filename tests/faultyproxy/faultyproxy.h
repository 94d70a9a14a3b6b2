#pragma once

#include "campaign/campaign.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QUrl>
#include <QUrlQuery>

#include <functional>
#include <random>

class QTcpSocket;

namespace faultyproxy {

// Stands between the kit and the real service, understands the actions that pass, and breaks some
// of them: closes connections before or after the service heard of an action, cuts answers off,
// holds answers or actions back until nobody waits for them any more, and sends actions again.
class FaultyProxy : public QObject
{
    Q_OBJECT

public:
    // What the service answered to an action, or to the question about it.
    using Heard = std::function<void(const QUrlQuery &form, const QByteArray &body)>;

    FaultyProxy(quint16 servicePort, quint32 seed, campaign::Counts &counts, Heard heard);

    QUrl address() const;

    // Until then everything is handed on.
    void beginFaults() { m_isFaulty = true; }

    // An answer or an action is held back: its deadline has to pass. Taken once for each.
    bool wantsDeadline() const { return m_deadlines > 0; }
    bool takeDeadline();

    // Lets actions arrive that nobody has asked about.
    void deliverAllOverdue();

    // Nothing is on its way to the service or held back.
    bool isQuiet() const { return m_errands == 0 && m_overdue.isEmpty(); }

    // How many different actions the kit has sent, and one that it has sent more than once.
    int actions() const { return m_sent.size(); }
    QByteArray sentTwice() const;

private:
    struct Client {
        QPointer<QTcpSocket> socket;
        QByteArray request;
        QUrlQuery form;
        QByteArray key;
    };

    void take(QTcpSocket *socket);
    void handle(const Client &client);
    void handleAction(const Client &client);
    void handleQuestion(const Client &client);
    bool breakAnswer(const Client &client, unsigned chance);

    // Sends the client's request to the service.
    void send(const Client &client, std::function<void(const QByteArray &answer)> done);
    void replay(const Client &client);
    void handOn(const Client &client);
    void closeUnread(const Client &client);
    void closeDone(const Client &client);
    void cutOff(const Client &client);
    void answerLate(const Client &client);
    void deliverOverdue(const QByteArray &key);

    unsigned chance(unsigned bound) { return static_cast<unsigned>(m_random() % bound); }

    QTcpServer m_server;
    quint16 m_servicePort;
    std::mt19937 m_random;
    campaign::Counts &m_counts;
    Heard m_heard;
    bool m_isFaulty = false;
    int m_errands = 0;
    int m_deadlines = 0;
    QHash<QByteArray, int> m_sent; // how often the kit sent the action of a key
    QHash<QByteArray, int> m_asked; // and the question about it
    QHash<QByteArray, Client> m_overdue; // actions that are held back, by key
    QList<Client> m_past;
};

} // namespace faultyproxy
