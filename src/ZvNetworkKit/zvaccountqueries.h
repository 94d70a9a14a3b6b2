#pragma once

#include "ZvNetworkKit/zvmoneyaddresslife.h"
#include "ZvNetworkKit/zvnewestquestion.h"

#include <QObject>

#include <map>

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

    void ask(Kind kind, const ZvRequest::Parameters &parameters = {});

    // Asks for a page of the deals of a collection. The answer counts while that one is current.
    void askDeals(const QString &collectionId, int page, int pageSize);
    void setCollection(const QString &collectionId);

    // Drops what is under way for the session that ends; the market's deals go on.
    void dropAccount();

private:
    void send(Kind kind, const ZvRequest::Parameters &parameters, ZvExchangeLink::Done done);

    ZvExchangeLink *m_link;
    std::map<Kind, ZvNewestQuestion> m_questions;
    ZvMoneyAddressLife m_addressLife;
    QString m_collection; // the current one
    QString m_dealsOf; // whose deals were last asked for
};
