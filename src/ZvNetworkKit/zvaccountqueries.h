#pragma once

#include "ZvNetworkKit/zvexchangelink.h"

#include <QHash>
#include <QObject>

// Questions of pages that are asked when a page wants to know: the deals of a market by the page,
// and what an account reads. Of two questions of one kind only the answer to the newer one counts.
class ZvAccountQueries : public QObject
{
    Q_OBJECT

public:
    // One kind for each answer that a page waits for.
    enum Kind {
        MarketDetail,
        Bankcard,
        MoneyUrls,
        OpenApplications,
        RevokeList,
        DealRecord,
        DelegateToday,
        DelegateRecord,
        ApplyRecord,
        DeliveryRecord,
        MoneyFlow
    };

    explicit ZvAccountQueries(ZvExchangeLink *link);

    void ask(Kind kind, const QString &path, const ZvRequest::Parameters &parameters = {});

    // Drops what is under way for the session that ends; the market's deals go on.
    void dropAccount();

private:
    void take(Kind kind, const QString &path, const ZvOutcome &outcome);

    ZvExchangeLink *m_link;
    QHash<int, ZvCallId> m_open;
    QHash<int, quint64> m_newest; // of the questions of a kind
    quint64 m_count = 0;
};
