#include "ZvNetworkKit/zvactionchecks.h"

#include <algorithm>

QList<ZvIntent> ZvActionChecks::open() const
{
    QList<ZvIntent> intents;
    for (const auto &check : m_open)
        intents.append(check.second);
    return intents;
}

void ZvActionChecks::begin(const QString &key, const ZvIntent &intent)
{
    if (intent.matter == ZvIntent::Other)
        return;
    m_open.append({key, intent});
    emit changed();
}

void ZvActionChecks::end(const QString &key)
{
    const auto found = std::find_if(m_open.begin(), m_open.end(),
                                    [&key](const auto &check) { return check.first == key; });
    if (found == m_open.end())
        return;
    m_open.erase(found);
    emit changed();
}

void ZvActionChecks::settle(const QString &key, Outcome outcome, const QString &message)
{
    const auto found = std::find_if(m_open.cbegin(), m_open.cend(),
                                    [&key](const auto &check) { return check.first == key; });
    if (found == m_open.cend())
        return;
    const ZvIntent intent = found->second;
    end(key);
    emit settled(intent, outcome, message);
}

void ZvActionChecks::setWaiting(int waiting)
{
    if (waiting == m_waiting)
        return;
    m_waiting = waiting;
    emit changed();
}
