#include "ZvNetworkKit/zvlateends.h"

#include "ZvNetworkKit/zvresolution.h"

#include <algorithm>

ZvLateEnds::ZvLateEnds(ZvExchangeLink *link) : m_link(link), m_retry(link, [this] { ask(); })
{
    connect(link, &ZvExchangeLink::sessionChanged, this, &ZvLateEnds::dropOldSessions);
}

void ZvLateEnds::add(const QString &key, const ZvRequest &question, ZvDecodeTask::Shape shape)
{
    m_entries.push_back({key, question, shape, m_link->generation().session});
    if (!m_isAsking && !m_retry.isWaiting())
        m_retry.later();
}

void ZvLateEnds::ask()
{
    if (m_entries.empty() || m_isAsking)
        return;
    const Entry &entry = m_entries.front();
    ZvDecodeTask task;
    task.shape = entry.shape;
    m_isAsking = true;
    const ZvCallId call = m_link->ask(
        entry.question, ZvExchangeLink::Survives, this,
        [this, key = entry.key](const ZvOutcome &outcome) {
            m_isAsking = false;
            take(key, outcome);
        },
        task);
    if (call == 0) {
        m_isAsking = false;
        m_retry.later();
    }
}

void ZvLateEnds::take(const QString &key, const ZvOutcome &outcome)
{
    const ZvEnvelope &envelope = outcome.reply.envelope;
    // A transfer that waits for its bank has an answer that is not its end.
    const bool isPending = envelope.reason == QLatin1String("pending");
    switch (isPending ? ZvResolution::None : zvResolutionOf(outcome)) {
    case ZvResolution::None:
        askOthersFirst(key);
        if (!m_entries.empty())
            m_retry.later();
        return;
    case ZvResolution::SignedOut:
        settle(key, ZvActionChecks::Unknown);
        break;
    case ZvResolution::NotArrived:
        settle(key, ZvActionChecks::NotArrived);
        break;
    case ZvResolution::Ended:
        if (outcome.isOk())
            settle(key, ZvActionChecks::Done);
        else
            settle(key, ZvActionChecks::Refused, zvRefusalOf(envelope));
        break;
    }
    m_retry.reset();
    ask();
}

void ZvLateEnds::askOthersFirst(const QString &key)
{
    if (!m_entries.empty() && m_entries.front().key == key)
        std::rotate(m_entries.begin(), m_entries.begin() + 1, m_entries.end());
}

void ZvLateEnds::settle(const QString &key, ZvActionChecks::Outcome outcome, const QString &message)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&key](const Entry &entry) { return entry.key == key; });
    if (found == m_entries.end()) // its session has ended meanwhile
        return;
    m_entries.erase(found);
    emit settled(key, outcome, message);
}

void ZvLateEnds::dropOldSessions()
{
    const auto old
        = std::stable_partition(m_entries.begin(), m_entries.end(), [this](const Entry &entry) {
              return entry.session == m_link->generation().session;
          });
    const std::deque<Entry> dropped(old, m_entries.end());
    m_entries.erase(old, m_entries.end());
    for (const Entry &entry : dropped)
        emit settled(entry.key, ZvActionChecks::Unknown, QString());
}
