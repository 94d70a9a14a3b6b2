#include "exchange/core/actionlog.h"

#include <algorithm>

namespace zvx::core {

const ActionLog::Entry *ActionLog::find(std::uint32_t account, ActionKey key) const
{
    if (m_slots.empty())
        return nullptr;
    const std::uint64_t hash = hashOf(account, key);
    const auto tag = static_cast<std::uint32_t>(hash >> 32);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t at = hash & mask; m_slots[at].index != kNone; at = (at + 1) & mask) {
        if (m_slots[at].tag != tag)
            continue;
        const Entry &entry = m_entries[m_slots[at].index];
        if (entry.account == account && entry.key == key)
            return &entry;
    }
    return nullptr;
}

void ActionLog::add(const Entry &entry)
{
    m_entries.push_back(entry);
    if (m_entries.size() * 2 > m_slots.size())
        rebuild(std::max<std::size_t>(32, m_slots.size() * 2));
    else
        link(static_cast<std::uint32_t>(m_entries.size() - 1));
}

void ActionLog::dropBefore(Sequence session)
{
    const auto kept = std::find_if(m_entries.begin(), m_entries.end(),
                                   [session](const Entry &e) { return e.session >= session; });
    m_entries.erase(m_entries.begin(), kept);
    rebuild(m_slots.size());
}

std::uint64_t ActionLog::hashOf(std::uint32_t account, ActionKey key) const
{
    return mix(mix(mix(m_salt ^ key.high) ^ key.low ^ m_salt) + account);
}

void ActionLog::link(std::uint32_t index)
{
    const Entry &entry = m_entries[index];
    const std::uint64_t hash = hashOf(entry.account, entry.key);
    const std::size_t mask = m_slots.size() - 1;
    std::size_t at = hash & mask;
    while (m_slots[at].index != kNone)
        at = (at + 1) & mask;
    m_slots[at] = {index, static_cast<std::uint32_t>(hash >> 32)};
}

void ActionLog::rebuild(std::size_t slots)
{
    m_slots.assign(slots, Slot());
    for (std::size_t i = 0; i < m_entries.size(); ++i)
        link(static_cast<std::uint32_t>(i));
}

} // namespace zvx::core
