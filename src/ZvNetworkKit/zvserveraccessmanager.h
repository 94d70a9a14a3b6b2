#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QObject>
#include <QString>
#include <QUrl>

#include <memory>

class ZvClock;
class ZvExchangeLink;
class ZvTransport;
enum class ZvKitEnd;
template <typename T, ZvKitEnd End>
struct ZvKitSingleton;

// How the kit reaches the exchange: the address, the server prefix of all requests, the transport,
// and whether the exchange answers.
//
// Until start() nothing is polled. Without a transport no request goes out at all: a query logs
// one line, an action fails with a text.
class ZVNETWORKKIT_EXPORT ZvServerAccessManager : public QObject
{
    Q_OBJECT

public:
    static ZvServerAccessManager *getZvServerAccessManagerInstance();

    // The prefix of a server, such as "/lc/youbika/", for all later requests. Answers that belong
    // to the server before are dropped, and the old rows of this one are forgotten. The prefix
    // that is set already changes nothing.
    void setUrlPrefix(QString prefix);
    QString urlPrefix() const;

    // Scheme, host and port of the exchange, such as "http://127.0.0.1:8080".
    void setExchangeAddress(const QUrl &address);
    QUrl exchangeAddress() const;

    // Takes another transport than HTTP; the old one ends with its open calls. Null takes none.
    void setTransport(std::unique_ptr<ZvTransport> transport);

    // Takes the time from another clock, which the caller keeps alive; null for the machine's. To
    // be set before start().
    void setClock(ZvClock *clock);

    // Starts to poll. Without a transport, HTTP to the exchange address is taken; without a prefix,
    // the platform of ZvServerConfig is asked for its servers and the first one is taken.
    void start();

    // Ends polls and open queries. start() begins anew.
    void stop();
    bool isStarted() const;

    // True from an answer to a poll until a poll fails.
    bool isConnected() const;

    // Milliseconds since the connection was lost, or since start() where there never was one; 0
    // while connected or stopped.
    qint64 awayFor() const;

    // Milliseconds since the exchange last answered a poll; -1 when it never did. While connected,
    // data are as the exchange has them, whatever their age.
    qint64 dataAge() const;

    // What the other parts of the kit send through.
    ZvExchangeLink *link() const;

signals:
    void signal_connection_changed(bool connected);

private:
    template <typename T, ZvKitEnd End>
    friend struct ZvKitSingleton;

    ZvServerAccessManager();
    ~ZvServerAccessManager() override;
    Q_DISABLE_COPY(ZvServerAccessManager)

    std::unique_ptr<ZvExchangeLink> m_link;
};
