#include "exchange/core/actionlog.h"

#include <algorithm>

namespace zvx::core {

const ActionLog::Entry *ActionLog::find(std::uint32_t account, ActionKey key) const
{
    if (m_buckets.empty())
        return nullptr;
    for (std::uint32_t at = m_buckets[bucketOf(account, key)]; at != kNone;) {
        const Entry &entry = m_entries[at];
        if (entry.account == account && entry.key == key)
            return &entry;
        at = entry.next;
    }
    return nullptr;
}

void ActionLog::add(const Entry &entry)
{
    m_entries.push_back(entry);
    if (m_entries.size() > m_buckets.size())
        rebuild(std::max<std::size_t>(16, m_buckets.size() * 2));
    else
        link(static_cast<std::uint32_t>(m_entries.size() - 1));
}

void ActionLog::dropBefore(Sequence session)
{
    const auto kept = std::find_if(m_entries.begin(), m_entries.end(),
                                   [session](const Entry &e) { return e.session >= session; });
    m_entries.erase(m_entries.begin(), kept);
    rebuild(m_buckets.size());
}

std::size_t ActionLog::bucketOf(std::uint32_t account, ActionKey key) const
{
    const std::uint64_t hash = mix(mix(mix(m_salt ^ key.high) ^ key.low ^ m_salt) + account);
    return hash & (m_buckets.size() - 1);
}

void ActionLog::link(std::uint32_t index)
{
    Entry &entry = m_entries[index];
    std::uint32_t &bucket = m_buckets[bucketOf(entry.account, entry.key)];
    entry.next = bucket;
    bucket = index;
}

void ActionLog::rebuild(std::size_t buckets)
{
    m_buckets.assign(buckets, kNone);
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        link(static_cast<std::uint32_t>(i));
}

} // namespace zvx::core
