#include "ZvNetworkKit/zvaccountqueries.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvservercache.h"

#include <algorithm>

namespace {

// The exchange gives no longer page of deals.
constexpr int mostDeals = 5000;

struct Query {
    const QString &path;
    ZvDecodeTask::Shape shape;
    void (*store)(const ZvReply &reply, ZvServerCache *cache);
};

void storeBankCard(const ZvReply &reply, ZvServerCache *cache)
{
    const ZvBankCard &card = *reply.bankCard;
    if (card.isBound) {
        cache->storeMyBankcard(card.picturePrefix, card.pictureName, card.pictureSuffix, card.tail);
    } else {
        cache->storeNoMyBankcard(card.code);
    }
}

void storeMoneyUrls(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeMoneyUrls(reply.moneyAddresses->in, reply.moneyAddresses->out);
}

void storeOpenApplications(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeOpenApplyList(*reply.applications);
}

void storeApplications(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeApplyList(*reply.applications);
}

void storeMoneyFlows(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeMoneyFlowList(*reply.moneyFlows);
}

void storeOpenOrders(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeRevokeList(*reply.openOrders);
}

void storeOrdersOfToday(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeDelegateToday(*reply.orders);
}

void storeOrders(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeDelegateRecord(*reply.orders);
}

void storeDealRecords(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeDealRecordList(*reply.dealRecords);
}

void storeDeliveries(const ZvReply &reply, ZvServerCache *cache)
{
    cache->storeDeliveryRecordList(*reply.deliveries);
}

// In the order of ZvAccountQueries::Kind.
const Query &queryOf(ZvAccountQueries::Kind kind)
{
    using Task = ZvDecodeTask;
    static const Query queries[] = {
        {zvPath_market_detail, Task::Detail, nullptr}, // askDeals() stores it by itself
        {zvPath_pay_hx, Task::BankCard, storeBankCard},
        {zvPath_pay_hx, Task::MoneyAddresses, storeMoneyUrls},
        {zvPath_hold_list, Task::OpenApplications, storeOpenApplications},
        {zvPath_revoke, Task::OpenOrders, storeOpenOrders},
        {zvPath_myaccount_trade, Task::DealRecords, storeDealRecords},
        {zvPath_myaccount_entrust, Task::Orders, storeOrdersOfToday},
        {zvPath_myaccount_his_entrust, Task::Orders, storeOrders},
        {zvPath_hold_list, Task::Applications, storeApplications},
        {zvPath_myaccount_take_list, Task::Deliveries, storeDeliveries},
        {zvPath_pay_list, Task::MoneyFlows, storeMoneyFlows},
    };
    return queries[kind];
}

} // namespace

ZvAccountQueries::ZvAccountQueries(ZvExchangeLink *link) : m_link(link), m_addressLife(link) { }

void ZvAccountQueries::ask(Kind kind, const ZvRequest::Parameters &parameters)
{
    send(kind, parameters, [this, kind](const ZvOutcome &outcome) {
        queryOf(kind).store(outcome.reply, ZvServerCache::getZvServerCacheInstance());
        if (kind == MoneyUrls)
            m_addressLife.begin();
    });
}

void ZvAccountQueries::askDeals(const QString &collectionId, int page, int pageSize)
{
    m_dealsOf = collectionId;
    const int size = std::clamp(pageSize, 0, mostDeals);
    send(MarketDetail,
         {{QStringLiteral("collection"), collectionId},
          {QStringLiteral("page"), QString::number(page)},
          {QStringLiteral("size"), QString::number(size)}},
         [this, collectionId, page](const ZvOutcome &outcome) {
             const ZvDealPage &told = *outcome.reply.detail;
             if (told.collectionId != collectionId || told.page != page) {
                 qCInfo(zvNetworkLog).noquote()
                     << zvPath_market_detail << "cannot be used: it is another page";
             } else if (collectionId == m_collection) {
                 ZvServerCache::getZvServerCacheInstance()->storeMarketDetail(told.deals);
             }
         });
}

void ZvAccountQueries::setCollection(const QString &collectionId)
{
    if (collectionId == m_collection)
        return;
    m_collection = collectionId;
    const auto deals = m_questions.find(MarketDetail);
    if (deals != m_questions.end() && m_dealsOf != collectionId)
        deals->second.drop();
    ZvServerCache::getZvServerCacheInstance()->dropMarketDetail();
}

void ZvAccountQueries::dropAccount()
{
    for (auto &[kind, question] : m_questions) {
        if (kind != MarketDetail)
            question.drop();
    }
}

// `done` hears of nothing but what the exchange has said in answer.
void ZvAccountQueries::send(Kind kind, const ZvRequest::Parameters &parameters,
                            ZvExchangeLink::Done done)
{
    const Query &query = queryOf(kind);
    ZvDecodeTask task;
    task.shape = query.shape;
    const auto fate
        = kind == MarketDetail ? ZvExchangeLink::DiesWithServer : ZvExchangeLink::DiesWithSession;
    const bool isSent
        = m_questions.try_emplace(kind, m_link)
              .first->second.ask(
                  m_link->makeRequest(query.path, parameters), fate, task,
                  [path = query.path, done = std::move(done)](const ZvOutcome &outcome) {
                      if (outcome.isOk()) {
                          done(outcome);
                          return;
                      }
                      const QString reason = outcome.reason();
                      if (!reason.isEmpty())
                          qCInfo(zvNetworkLog).noquote() << path << "cannot be served:" << reason;
                  });
    if (!isSent)
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << query.path;
}
