#include "ZvNetworkKit/zvaccountwatch.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"

#include <utility>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

} // namespace

ZvAccountWatch::ZvAccountWatch(ZvExchangeLink *link)
    : m_link(link),
      m_account(link, zvPath_myaccount, ZvDecodeTask::Account,
                [this](const ZvReply &reply, bool isAwaited) { takeAccount(reply, isAwaited); }),
      m_cap(link, zvPath_cap, ZvDecodeTask::Cap,
            [this](const ZvReply &reply, bool isAwaited) { takeCap(reply, isAwaited); }),
      m_gather(link, zvPath_myaccount_gather, ZvDecodeTask::Gather,
               [this](const ZvReply &reply, bool isAwaited) { takeGather(reply, isAwaited); })
{
    connect(link, &ZvExchangeLink::started, this, &ZvAccountWatch::restart);
    connect(link, &ZvExchangeLink::stopped, this, &ZvAccountWatch::drop);
    connect(link, &ZvExchangeLink::prefixChanged, this, &ZvAccountWatch::restart);
    connect(link, &ZvExchangeLink::sessionChanged, this, &ZvAccountWatch::restart);
}

void ZvAccountWatch::renew()
{
    if (!m_link->followsAccount())
        return;
    for (ZvAccountQuestion *question : {&m_account, &m_cap}) {
        if (!question->isOpen())
            question->ask(true);
    }
}

void ZvAccountWatch::askCap()
{
    m_cap.ask(true);
}

bool ZvAccountWatch::isWatched() const
{
    return m_link->followsAccount() && !m_cap.isOpen() && !m_isDue;
}

bool ZvAccountWatch::takePoll(const ZvTopicPart<ZvUBCapInfo> &entry)
{
    const bool isNews = entry.gap || entry.data;
    if (!isNews || !m_link->followsAccount())
        return false;
    followPoll();
    return true;
}

void ZvAccountWatch::followPoll()
{
    if (m_distance) {
        m_isDue = true;
        return;
    }
    m_cap.ask(false);
    m_distance = m_link->clock()->after(shortestDistance, [this] {
        m_distance.reset();
        if (std::exchange(m_isDue, false))
            followPoll();
    });
}

void ZvAccountWatch::restart()
{
    drop();
    renew();
}

void ZvAccountWatch::drop()
{
    m_account.drop();
    m_cap.drop();
    m_gather.drop();
    m_distance.reset();
    m_isDue = false;
    m_version = 0;
}

void ZvAccountWatch::takeAccount(const ZvReply &reply, bool isAwaited)
{
    if (reply.account && (isAwaited || *reply.account != cache()->myAccount))
        cache()->storeMyAccount(*reply.account);
}

void ZvAccountWatch::takeCap(const ZvReply &reply, bool isAwaited)
{
    if (!reply.cap || !reply.cap->data)
        return;
    m_boot = reply.envelope.boot;
    m_version = reply.cap->version;
    if (m_link->followsAccount()) {
        m_gather.ask(isAwaited);
        emit versionChanged();
    }
    if (isAwaited || *reply.cap->data != cache()->capInfo)
        cache()->storeCapInfo(*reply.cap->data);
}

void ZvAccountWatch::takeGather(const ZvReply &reply, bool isAwaited)
{
    if (reply.gather && (isAwaited || *reply.gather != cache()->gatherInfo))
        cache()->storeGatherInfo(*reply.gather);
}
