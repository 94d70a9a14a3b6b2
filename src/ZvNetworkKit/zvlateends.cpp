#include "ZvNetworkKit/zvlateends.h"

#include "ZvNetworkKit/zvresolution.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QStringList>

#include <algorithm>
#include <utility>

ZvLateEnds::ZvLateEnds(ZvExchangeLink *link, ZvActionChecks *checks)
    : m_link(link), m_checks(checks), m_session(link->generation().session),
      m_retry(link, [this] { ask(); })
{
    connect(link, &ZvExchangeLink::sessionChanged, this, &ZvLateEnds::followSession);
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Myaccount_changed, this, &ZvLateEnds::followAccount);
}

void ZvLateEnds::add(const Entry &entry)
{
    m_entries.push_back(entry);
    if (isOfSession(entry))
        begin(entry);
    else
        takeUp(); // its account may be back already
}

bool ZvLateEnds::isOfSession(const Entry &entry) const
{
    return entry.session == m_session;
}

void ZvLateEnds::begin(const Entry &entry)
{
    m_checks->begin(entry.key, entry.intent);
    if (!m_isAsking && !m_retry.isWaiting())
        m_retry.later();
}

void ZvLateEnds::ask()
{
    const auto next = std::find_if(m_entries.cbegin(), m_entries.cend(),
                                   [this](const Entry &entry) { return isOfSession(entry); });
    if (next == m_entries.cend() || m_isAsking)
        return;
    ZvDecodeTask task;
    task.shape = next->shape;
    m_isAsking = true;
    const ZvCallId call = m_link->ask(
        next->question, ZvExchangeLink::Survives, this,
        [this, asked = *next](const ZvOutcome &outcome) {
            m_isAsking = false;
            take(asked, outcome);
        },
        task);
    if (call == 0) {
        m_isAsking = false;
        m_retry.later();
    }
}

void ZvLateEnds::take(const Entry &asked, const ZvOutcome &outcome)
{
    if (!isOfSession(asked)) { // a new session asks for itself
        ask();
        return;
    }
    const ZvEnvelope &envelope = outcome.reply.envelope;
    // A transfer that waits for its bank has an answer that is not its end.
    const bool isPending = envelope.reason == QLatin1String("pending");
    switch (isPending ? ZvResolution::None : zvResolutionOf(outcome)) {
    case ZvResolution::None:
        askOthersFirst(asked.key);
        m_retry.later();
        return;
    case ZvResolution::SignedOut:
        settle(asked.key, ZvActionChecks::Unknown);
        break;
    case ZvResolution::NotArrived:
        settle(asked.key, ZvActionChecks::NotArrived);
        break;
    case ZvResolution::Ended:
        if (outcome.isOk())
            settle(asked.key, ZvActionChecks::Done);
        else
            settle(asked.key, ZvActionChecks::Refused, zvRefusalOf(envelope));
        break;
    }
    m_retry.reset();
    ask();
}

void ZvLateEnds::askOthersFirst(const QString &key)
{
    const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                    [&key](const Entry &entry) { return entry.key == key; });
    if (found != m_entries.end())
        std::rotate(found, found + 1, m_entries.end());
}

void ZvLateEnds::settle(const QString &key, ZvActionChecks::Outcome outcome, const QString &message)
{
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [&key](const Entry &entry) { return entry.key == key; }),
                    m_entries.end());
    m_checks->settle(key, outcome, message);
}

void ZvLateEnds::followSession()
{
    if (m_link->generation().session == m_session)
        return;
    const quint32 old = std::exchange(m_session, m_link->generation().session);
    m_account.clear();
    const std::deque<Entry> entries = m_entries;
    for (const Entry &entry : entries) {
        if (entry.session == old)
            m_checks->settle(entry.key, ZvActionChecks::Unknown, QString());
    }
}

void ZvLateEnds::followAccount()
{
    if (m_link->token().isEmpty())
        return;
    m_account = ZvServerCache::getZvServerCacheInstance()->myAccount.accountNumber();
    takeUp();
}

// Goes on for the account that is signed in; what is of another one can be asked for by nobody.
void ZvLateEnds::takeUp()
{
    if (m_account.isEmpty())
        return;
    QStringList begun;
    for (Entry &entry : m_entries) {
        if (isOfSession(entry)) {
            entry.account = m_account;
        } else if (entry.account == m_account) {
            entry.session = m_session;
            entry.question.token = m_link->token();
            begun << entry.key;
        }
    }
    m_entries.erase(std::remove_if(m_entries.begin(), m_entries.end(),
                                   [this](const Entry &entry) { return !isOfSession(entry); }),
                    m_entries.end());
    const std::deque<Entry> entries = m_entries;
    for (const Entry &entry : entries) {
        if (begun.contains(entry.key))
            begin(entry);
    }
}
