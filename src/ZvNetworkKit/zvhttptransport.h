#pragma once

#include "ZvNetworkKit/zvtransport.h"

#include <QHash>
#include <QUrl>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

// HTTP/1.1 to one exchange.
//
// Queries and actions have network managers of their own, since polls that are held back fill the
// six connections of a manager. An action's body can be read once only, so that the network code
// cannot send it a second time when a connection breaks. No redirects, cookies, caches or proxies;
// answers come uncompressed or not at all.
class ZVNETWORKKIT_EXPORT ZvHttpTransport : public ZvTransport
{
    Q_OBJECT

public:
    // `address` is scheme, host and port of the exchange.
    explicit ZvHttpTransport(const QUrl &address, QObject *parent = nullptr);
    ~ZvHttpTransport() override;

protected:
    void start(ZvCallId id, const ZvRequest &request) override;
    void abandon(ZvCallId id) override;

private:
    struct Transfer {
        QNetworkReply *reply = nullptr;
        qint64 bodyBound = 0;
        QByteArray body;
    };

    void readHeaders(ZvCallId id);
    void readBody(ZvCallId id);
    void readEnd(ZvCallId id);
    void refuse(ZvCallId id, ZvAnswer::Ending ending, const QString &reason);

    QUrl m_address;
    std::unique_ptr<QNetworkAccessManager> m_queries;
    std::unique_ptr<QNetworkAccessManager> m_actions;
    QHash<ZvCallId, Transfer> m_transfers;
};
