#pragma once

#include "exchange/core/types.h"
#include "exchange/service/delivery_desk.h"
#include "exchange/service/path_call.h"

#include <string_view>

namespace zvx {

class ParcelBook;
class QueryPool;
class WireAnswers;
struct ActionForm;

/**
 * Taking goods out of one market, and the list of what was taken.
 *
 * Called on the server's thread, and never keeps it waiting: the delivery desk answers requests and
 * cancels, the pool reads lists from the market's store and the book of parcels. Both are asked by
 * account, so a parcel of somebody else is one that is not there.
 */
class DeliveryPaths
{
public:
    /// All have to outlive this and every request that it was handed.
    DeliveryPaths(const WireAnswers &answers, QueryPool &queries, DeliveryDesk &desk,
                  ParcelBook &parcels);

    /// Answers a path of PathRoom::Deliveries whose method fits, for the account that is signed in.
    void handle(PathCall call, AccountId account);

private:
    void act(PathCall call, AccountId account);
    void cancel(MarketServer &market, AccountId account, const ActionForm &form,
                HttpResponder responder);
    void request(MarketServer &market, AccountId account, const ActionForm &form,
                 HttpResponder responder);
    void list(PathCall call, AccountId account);
    void show(PathCall call, AccountId account);

    DeliveryDesk::Done answering(HttpResponder responder) const;
    HttpAnswer told(const DeliveryDesk::Outcome &outcome) const;
    HttpAnswer wrong(std::string_view field) const;

    const WireAnswers &m_answers;
    QueryPool &m_queries;
    DeliveryDesk &m_desk;
    ParcelBook &m_parcels;
};

} // namespace zvx
