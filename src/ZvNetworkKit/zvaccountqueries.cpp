#include "ZvNetworkKit/zvaccountqueries.h"

#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvservercache.h"

ZvAccountQueries::ZvAccountQueries(ZvExchangeLink *link) : m_link(link) { }

void ZvAccountQueries::ask(Kind kind, const QString &path, const ZvRequest::Parameters &parameters)
{
    m_link->cancel(m_open.value(kind));
    const quint64 number = ++m_count;
    m_newest.insert(kind, number);

    ZvDecodeTask task;
    task.shape = kind == MarketDetail ? ZvDecodeTask::Latest : ZvDecodeTask::Envelope;
    const auto fate
        = kind == MarketDetail ? ZvExchangeLink::DiesWithServer : ZvExchangeLink::DiesWithSession;
    const ZvCallId call = m_link->ask(
        m_link->makeRequest(path, parameters), fate, this,
        [this, kind, path, number](const ZvOutcome &outcome) {
            if (m_newest.value(kind) == number)
                take(kind, path, outcome);
        },
        task);
    m_open.insert(kind, call);
    if (call == 0)
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << path;
}

void ZvAccountQueries::dropAccount()
{
    for (auto open = m_open.cbegin(); open != m_open.cend(); ++open) {
        if (open.key() == MarketDetail)
            continue;
        m_link->cancel(open.value());
        m_newest.remove(open.key());
    }
}

void ZvAccountQueries::take(Kind kind, const QString &path, const ZvOutcome &outcome)
{
    m_open.remove(kind);
    if (kind == MarketDetail && outcome.isOk() && outcome.reply.latest
        && outcome.reply.latest->data) {
        ZvServerCache::getZvServerCacheInstance()->storeMarketDetail(
            outcome.reply.latest->data->value);
        return;
    }
    const QString reason = outcome.reason();
    if (!reason.isEmpty())
        qCInfo(zvNetworkLog).noquote() << path << "cannot be served:" << reason;
}
